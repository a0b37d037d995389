#include "platform/diagnostics.h"

#include <cstdarg>
#include <cstdio>

namespace vq3900 {

void print_out(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  std::vfprintf(stdout, format, arguments);
  va_end(arguments);
}

void print_err(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  std::vfprintf(stderr, format, arguments);
  va_end(arguments);
}

void put_out(std::string_view text) {
  std::fwrite(text.data(), 1, text.size(), stdout);
}

void put_err(std::string_view text) {
  std::fwrite(text.data(), 1, text.size(), stderr);
}

}  // namespace vq3900
