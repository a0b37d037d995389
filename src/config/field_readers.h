// Typed readers of a field's text. A text that does not fit throws FieldError.
#ifndef VQ3900_CONFIG_FIELD_READERS_H
#define VQ3900_CONFIG_FIELD_READERS_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <string_view>

namespace vq3900 {

// A text that is no value of its type, or out of its range. The message names the text.
class FieldError : public std::domain_error {
 public:
  using std::domain_error::domain_error;
};

bool read_bool(std::string_view text);  // TRUE, FALSE in any case, 1, 0
std::int64_t read_long_long(std::string_view text);
std::uint64_t read_unsigned_long_long(std::string_view text);
std::int32_t read_int(std::string_view text);
std::int32_t read_int32(std::string_view text);  // as read_int, with a message of its own
std::int8_t read_int8(std::string_view text);
std::uint32_t read_uint32(std::string_view text);
std::uint8_t read_uint8(std::string_view text);
float read_float(std::string_view text);

// Brace lists such as {640,480}. They answer the number of elements in the text and store as many as the array holds;
// a text without its braces has none. Elements are converted from their start, without regard to what follows them;
// empty ones do not count.
std::size_t string_to_u16_array(std::string_view text, std::span<std::uint16_t> out);
std::size_t string_to_s32_array(std::string_view text, std::span<std::int32_t> out);
std::size_t string_to_double_array(std::string_view text, std::span<double> out);

// A version text: for every non-empty piece between dots, shifts left by 8 bits and takes in the piece's first
// character. "1.2.3.4" gives 0x31323334; of more than four pieces the last four remain.
std::uint32_t read_version(std::string_view text);

}  // namespace vq3900

#endif
