// The one source of the tool that knows file descriptors.
#include "stdout_capture.h"

#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>
#endif

#include <array>
#include <cstddef>
#include <cstdlib>
#include <memory>

namespace vq3900::tool {

namespace {

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
bool is_terminal_descriptor(int descriptor) {
  return _isatty(descriptor) != 0;
}
// The system's own tmpfile() writes to the root of the drive, which ordinary users may not. Gone when it is closed.
std::FILE* temporary_file() {
  const std::unique_ptr<char, decltype(&std::free)> name(_tempnam(nullptr, "vq3900"), &std::free);
  return name == nullptr ? nullptr : std::fopen(name.get(), "w+bTD");
}
bool write_bytes(int descriptor, const std::string& text) {
  return _write(descriptor, text.data(), static_cast<unsigned>(text.size())) >= 0;
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
bool is_terminal_descriptor(int descriptor) {
  return isatty(descriptor) != 0;
}
std::FILE* temporary_file() {
  return std::tmpfile();
}
bool write_bytes(int descriptor, const std::string& text) {
  return write(descriptor, text.data(), text.size()) >= 0;
}
#endif

}  // namespace

// Without a temporary file nothing is caught: the library's lines then go where they always go.
StreamCapture::StreamCapture(std::FILE* stream) : stream_(stream), file_(temporary_file()) {
  if (file_ == nullptr) return;
  std::fflush(stream_);
  saved_ = duplicate(descriptor_of(stream_));
  if (saved_ >= 0) replace(descriptor_of(file_), descriptor_of(stream_));
}

StreamCapture::~StreamCapture() {
  restore();
  if (file_ != nullptr) std::fclose(file_);
}

std::string StreamCapture::text() {
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

void StreamCapture::write_through(const std::string& text) const {
  if (saved_ < 0 || !write_bytes(saved_, text)) std::fputs(text.c_str(), stream_);
}

void StreamCapture::restore() {
  if (saved_ < 0) return;
  std::fflush(stream_);
  replace(saved_, descriptor_of(stream_));
  close_descriptor(saved_);
  saved_ = -1;
}

bool is_terminal(std::FILE* stream) {
  return is_terminal_descriptor(descriptor_of(stream));
}

}  // namespace vq3900::tool
