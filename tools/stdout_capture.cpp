// The one source of the tool that knows file descriptors.
#include "stdout_capture.h"

#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>
#endif

#include <array>
#include <cstddef>

namespace vq3900::tool {

namespace {

constexpr int kStdout = 1;

#ifdef _WIN32
int duplicate(int descriptor) {
  return _dup(descriptor);
}
int descriptor_of(std::FILE* file) {
  return _fileno(file);
}
void replace(int from, int to) {
  _dup2(from, to);
}
void close_descriptor(int descriptor) {
  _close(descriptor);
}
#else
int duplicate(int descriptor) {
  return dup(descriptor);
}
int descriptor_of(std::FILE* file) {
  return fileno(file);
}
void replace(int from, int to) {
  dup2(from, to);
}
void close_descriptor(int descriptor) {
  close(descriptor);
}
#endif

}  // namespace

// Without a temporary file nothing is caught: the library's lines then go where they always go.
StdoutCapture::StdoutCapture() : file_(std::tmpfile()) {
  if (file_ == nullptr) return;
  std::fflush(stdout);
  saved_ = duplicate(kStdout);
  if (saved_ >= 0) replace(descriptor_of(file_), kStdout);
}

StdoutCapture::~StdoutCapture() {
  restore();
  if (file_ != nullptr) std::fclose(file_);
}

std::string StdoutCapture::text() {
  restore();
  std::string text;
  if (file_ == nullptr) return text;
  std::rewind(file_);
  std::array<char, 4096> buffer{};
  for (std::size_t got = 0; (got = std::fread(buffer.data(), 1, buffer.size(), file_)) > 0;) {
    text.append(buffer.data(), got);
  }
  return text;
}

void StdoutCapture::restore() {
  if (saved_ < 0) return;
  std::fflush(stdout);
  replace(saved_, kStdout);
  close_descriptor(saved_);
  saved_ = -1;
}

}  // namespace vq3900::tool
