// Characters and numbers as the C library takes them in the "C" locale, whatever locale the host has set.
#ifndef VQ3900_CONFIG_C_LOCALE_H
#define VQ3900_CONFIG_C_LOCALE_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace vq3900 {

constexpr bool is_space(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');  // tab, line feed, vertical tab, form feed, carriage return
}

constexpr char to_upper(char c) {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

std::string_view trim(std::string_view text);

// What a conversion made of the start of a text. It skips leading white space and stops at the first character that
// does not belong to the number.
template <typename Number>
struct Converted {
  Number value = 0;           // saturated when out of range
  std::size_t length = 0;     // characters used; 0: no number
  bool out_of_range = false;  // too large; a number too small for its type is no fault
};

// Integers with base auto-detection: "0x" hexadecimal, leading 0 octal, else decimal. A minus wraps the unsigned one.
Converted<std::int64_t> to_int64(std::string_view text);
Converted<std::uint64_t> to_uint64(std::string_view text);

// Decimal and hexadecimal numbers, infinities and NaN, rounded once to their type.
Converted<float> to_float(std::string_view text);
Converted<double> to_double(std::string_view text);

// What "%f" prints in the "C" locale.
std::string fixed_text(float value);

}  // namespace vq3900

#endif
