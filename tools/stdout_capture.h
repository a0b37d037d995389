// What the library prints to standard output while the tool calls it: the tool's own output stays clean.
#ifndef VQ3900_TOOLS_STDOUT_CAPTURE_H
#define VQ3900_TOOLS_STDOUT_CAPTURE_H

#include <cstdio>
#include <string>

namespace vq3900::tool {

// Catches standard output, as C stdio and its file descriptor know it, from construction to text() or destruction.
class StdoutCapture {
 public:
  StdoutCapture();
  ~StdoutCapture();
  StdoutCapture(const StdoutCapture&) = delete;
  StdoutCapture& operator=(const StdoutCapture&) = delete;

  // Ends the capture and answers what was printed.
  std::string text();

 private:
  void restore();

  std::FILE* file_ = nullptr;
  int saved_ = -1;
};

}  // namespace vq3900::tool

#endif
