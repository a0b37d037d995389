// Where standard output and error go while something is measured.
#ifndef VQ3900_BENCH_SUPPORT_STREAMS_H
#define VQ3900_BENCH_SUPPORT_STREAMS_H

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstdio>
#include <thread>

namespace vq3900::bench {

// One of the two streams goes to a file descriptor as long as this lives.
class Redirected {
 public:
  Redirected(std::FILE* stream, int to) : stream_(stream), number_(fileno(stream)) {
    std::fflush(stream);
    before_ = dup(number_);
    dup2(to, number_);
  }
  ~Redirected() {
    std::fflush(stream_);
    dup2(before_, number_);
    close(before_);
  }
  Redirected(const Redirected&) = delete;
  Redirected& operator=(const Redirected&) = delete;

 private:
  std::FILE* stream_;
  int number_;
  int before_;
};

class Silenced {
 public:
  Silenced() : null_(open("/dev/null", O_WRONLY)), out_(stdout, null_), err_(stderr, null_) {}
  ~Silenced() { close(null_); }
  Silenced(const Silenced&) = delete;
  Silenced& operator=(const Silenced&) = delete;

 private:
  int null_;
  Redirected out_;
  Redirected err_;
};

// A pipe that a thread of its own empties.
class DrainedPipe {
 public:
  DrainedPipe() : opened_(pipe(ends_.data()) == 0), reader_([this] { drain(); }) {}
  ~DrainedPipe() {
    close(ends_[1]);
    reader_.join();
    close(ends_[0]);
  }
  DrainedPipe(const DrainedPipe&) = delete;
  DrainedPipe& operator=(const DrainedPipe&) = delete;

  int writing_end() const { return ends_[1]; }

 private:
  void drain() const {
    std::array<char, 65536> bytes;
    while (opened_ && read(ends_[0], bytes.data(), bytes.size()) > 0) {
    }
  }

  std::array<int, 2> ends_{-1, -1};
  bool opened_;
  std::thread reader_;
};

}  // namespace vq3900::bench

#endif
