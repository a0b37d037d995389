// What the library prints while the tool calls it: the tool's own output stays clean.
#ifndef VQ3900_TOOLS_STDOUT_CAPTURE_H
#define VQ3900_TOOLS_STDOUT_CAPTURE_H

#include <cstdio>
#include <string>

namespace vq3900::tool {

// Catches a standard stream, as C stdio and its file descriptor know it, from construction to text() or destruction.
class StreamCapture {
 public:
  explicit StreamCapture(std::FILE* stream);
  ~StreamCapture();
  StreamCapture(const StreamCapture&) = delete;
  StreamCapture& operator=(const StreamCapture&) = delete;

  // Ends the capture and answers what was printed.
  std::string text();

  // Writes past the capture to where the stream went before.
  void write_through(const std::string& text) const;

 private:
  void restore();

  std::FILE* stream_;
  std::FILE* file_ = nullptr;
  int saved_ = -1;
};

class StdoutCapture : public StreamCapture {
 public:
  StdoutCapture() : StreamCapture(stdout) {}
};

class StderrCapture : public StreamCapture {
 public:
  StderrCapture() : StreamCapture(stderr) {}
};

// Whether a stream goes to a terminal.
bool is_terminal(std::FILE* stream);

}  // namespace vq3900::tool

#endif
