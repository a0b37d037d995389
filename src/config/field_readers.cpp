#include "config/field_readers.h"

#include <algorithm>
#include <array>
#include <limits>
#include <string>

#include "config/c_locale.h"

namespace vq3900 {

namespace {

[[noreturn]] void fail(std::string_view before, std::string_view text, std::string_view after) {
  throw FieldError(std::string(before).append(text).append(after));
}

template <typename Number>
Number whole(const Converted<Number>& converted, std::string_view text, std::string_view complaint) {
  if (converted.length == 0 || converted.length != text.size() || converted.out_of_range) fail("", text, complaint);
  return converted.value;
}

template <typename Narrow, typename Wide>
Narrow in_range(Wide value, std::string_view text, std::string_view complaint) {
  using Limits = std::numeric_limits<Narrow>;
  if (value < static_cast<Wide>(Limits::min()) || value > static_cast<Wide>(Limits::max())) fail(complaint, text, "");
  return static_cast<Narrow>(value);
}

bool equals_no_case(std::string_view text, std::string_view upper) {
  return std::ranges::equal(text, upper, {}, to_upper);
}

// Calls the visitor with every non-empty run between separators.
template <typename Visitor>
void for_each_piece(std::string_view text, char separator, Visitor visit) {
  while (!text.empty()) {
    const std::size_t length = std::min(text.find(separator), text.size());
    if (length > 0) visit(text.substr(0, length));
    text.remove_prefix(std::min(length + 1, text.size()));
  }
}

template <typename Element, typename Convert>
std::size_t read_list(std::string_view text, std::span<Element> out, Convert convert) {
  if (text.empty() || text.front() != '{' || text.back() != '}') return 0;
  std::string_view list = text.substr(1, text.size() - 2);
  list = list.substr(0, list.find('\0'));  // a list is a C text: it ends there
  std::size_t count = 0;
  for_each_piece(list, ',', [&](std::string_view piece) {
    if (count < out.size()) out[count] = static_cast<Element>(convert(piece).value);
    ++count;
  });
  return count;
}

}  // namespace

bool read_bool(std::string_view text) {
  if (equals_no_case(text, "TRUE") || text == "1") return true;
  if (equals_no_case(text, "FALSE") || text == "0") return false;
  fail("", text, " is not a bool");
}

std::int64_t read_long_long(std::string_view text) {
  return whole(to_int64(text), text, " is not a long long");
}

std::uint64_t read_unsigned_long_long(std::string_view text) {
  const std::uint64_t value = whole(to_uint64(text), text, " is not a unsigned long long");
  if (trim(text).front() == '-') throw FieldError("detect negative while parse unsigned");
  return value;
}

std::int32_t read_int(std::string_view text) {
  return in_range<std::int32_t>(read_long_long(text), text, "field is out of Int range: ");
}

std::int32_t read_int32(std::string_view text) {
  return in_range<std::int32_t>(read_long_long(text), text, "field is out of Int32 range: ");
}

std::int8_t read_int8(std::string_view text) {
  return in_range<std::int8_t>(read_long_long(text), text, "field is out of Int8 range: ");
}

std::uint32_t read_uint32(std::string_view text) {
  return in_range<std::uint32_t>(read_unsigned_long_long(text), text, "field is out of UInt32 range: ");
}

std::uint8_t read_uint8(std::string_view text) {
  return in_range<std::uint8_t>(read_unsigned_long_long(text), text, "field is out of UInt8 range: ");
}

float read_float(std::string_view text) {
  return whole(to_float(text), text, " is not a float");
}

std::size_t string_to_u16_array(std::string_view text, std::span<std::uint16_t> out) {
  return read_list(text, out, to_uint64);
}

std::size_t string_to_s32_array(std::string_view text, std::span<std::int32_t> out) {
  return read_list(text, out, to_int64);
}

std::size_t string_to_double_array(std::string_view text, std::span<double> out) {
  return read_list(text, out, to_double);
}

std::uint32_t read_version(std::string_view text) {
  std::uint32_t version = 0;
  for_each_piece(
      text, '.', [&](std::string_view piece) { version = version << 8 | static_cast<unsigned char>(piece.front()); });
  return version;
}

}  // namespace vq3900
