// The library's print routines. Every message goes out in one call, carries its own line end and is not flushed.
#ifndef VQ3900_PLATFORM_DIAGNOSTICS_H
#define VQ3900_PLATFORM_DIAGNOSTICS_H

#include <string_view>

namespace vq3900 {

// Prints to standard output: files, flash images, overflows, progress.
[[gnu::format(printf, 1, 2)]] void print_out(const char* format, ...);

// Prints to standard error: table bounds and refused input.
[[gnu::format(printf, 1, 2)]] void print_err(const char* format, ...);

// The same with a text as it stands.
void put_out(std::string_view text);
void put_err(std::string_view text);

// A path or a name as a message shows it.
inline const char* printable(const char* text) {
  return text == nullptr ? "(null)" : text;
}

}  // namespace vq3900

#endif
