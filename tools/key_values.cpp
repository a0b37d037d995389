#include "key_values.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>

#include "config/c_locale.h"
#include "config/field_readers.h"

namespace vq3900::tool {

namespace {

// An element of a list, strictly: the library itself reads its start and cuts it to the field.
template <typename Number>
bool read_element(std::string_view text, Converted<Number> (*convert)(std::string_view), std::vector<double>& numbers) {
  text = trim(text);
  const Converted<Number> converted = convert(text);
  numbers.push_back(static_cast<double>(converted.value));
  return converted.length == text.size() && converted.length > 0 && !converted.out_of_range;
}

// A list of numbers in braces. The elements are split as the library splits them: empty ones do not count.
template <typename Number>
Reading read_list(std::string_view text, std::size_t expected, Converted<Number> (*convert)(std::string_view)) {
  Reading reading;
  const bool braces = text.size() >= 2 && text.front() == '{' && text.back() == '}';
  std::string_view rest = braces ? text.substr(1, text.size() - 2) : std::string_view{};
  while (!rest.empty()) {
    const std::size_t length = std::min(rest.find(','), rest.size());
    const std::string_view element = rest.substr(0, length);
    rest.remove_prefix(std::min(length + 1, rest.size()));
    if (element.empty()) continue;
    if (!read_element(element, convert, reading.numbers)) {
      return {{}, fmt::format("'{}' is not a number", trim(element))};
    }
  }
  if (!braces || reading.numbers.size() != expected) {
    return {{},
            fmt::format("'{}' is not a list of {} numbers in braces, such as {{{}}}",
                        text,
                        expected,
                        fmt::join(std::vector<int>(expected, 0), ","))};
  }
  return reading;
}

Reading read_text(std::string_view text, std::size_t most) {
  if (text.empty()) return {{}, "the text is empty"};
  if (text.size() <= most) return {};
  return {{}, fmt::format("'{}' is longer than {} characters", text, most)};
}

Reading read_typed(const KeyDescription& key, std::string_view text) {
  switch (key.type) {
    case KeyType::kBool:
      return {{read_bool(text) ? 1.0 : 0.0}, {}};
    case KeyType::kUint8:
      return {{static_cast<double>(read_uint8(text))}, {}};
    case KeyType::kInt8:
      return {{static_cast<double>(read_int8(text))}, {}};
    case KeyType::kInt:
      return {{static_cast<double>(read_int(text))}, {}};
    case KeyType::kInt32:
      return {{static_cast<double>(read_int32(text))}, {}};
    case KeyType::kUint32:
      return {{static_cast<double>(read_uint32(text))}, {}};
    case KeyType::kFloat:
      return {{static_cast<double>(read_float(text))}, {}};
    case KeyType::kText:
      return read_text(text, key.count);
    case KeyType::kVersion:
      return read_version(text) != 0 ? Reading{} : Reading{{}, "the version has no parts"};
    case KeyType::kUint16List:
    case KeyType::kInt32List:
      return read_list(text, key.count, to_int64);
    case KeyType::kDoubleList:
      return read_list(text, key.count, to_double);
  }
  return {};
}

}  // namespace

Reading read_key(const KeyDescription& key, std::string_view text) {
  // The library refuses such a number, ends a list there and keeps it in a text: none of it can be meant.
  if (text.find('\0') != std::string_view::npos) return {{}, "the value has a zero byte in it"};
  try {
    return read_typed(key, text);
  } catch (const FieldError& fault) {
    return {{}, fault.what()};
  }
}

std::vector<double> numbers_of(const KeyDescription& key, std::string_view text) {
  return read_key(key, text).numbers;
}

}  // namespace vq3900::tool
