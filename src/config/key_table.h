// A configuration section as data: one row for each key, in the order of reading.
//
// A row names the key, its typed reader and the record member that takes the value. Loaders walk the rows; the tool's
// configuration check and the key reference are derived from the same rows.
#ifndef VQ3900_CONFIG_KEY_TABLE_H
#define VQ3900_CONFIG_KEY_TABLE_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "config/field_readers.h"
#include "config/ini_document.h"
#include "state/member_path.h"

namespace vq3900 {

enum class KeyType : std::uint8_t {
  kBool,
  kUint8,
  kInt8,
  kInt,
  kInt32,
  kUint32,
  kFloat,
  kText,
  kVersion,
  kUint16List,
  kInt32List,
  kDoubleList,
};

template <typename Section>
struct Key {
  const char* name = nullptr;
  KeyType type{};
  std::uint8_t count = 1;                                   // elements of a list, most characters of a text, else 1
  bool (*read)(Section&, std::string_view text) = nullptr;  // false: the fault; throws FieldError on a bad value
  const char* fault = nullptr;         // error text of a value that the reader took and the key refuses
  void (*absent)(Section&) = nullptr;  // an optional key's default; null: the key is required
  const char* beside = nullptr;        // looked at only beside this key, and then required
  std::uint8_t checked_ahead = 1;      // keys, from this one on, whose presence is checked before this one is read
};

namespace detail {

template <KeyType Type>
auto read_value(std::string_view text) {
  if constexpr (Type == KeyType::kBool) return read_bool(text);
  if constexpr (Type == KeyType::kUint8) return read_uint8(text);
  if constexpr (Type == KeyType::kInt8) return read_int8(text);
  if constexpr (Type == KeyType::kInt) return read_int(text);
  if constexpr (Type == KeyType::kInt32) return read_int32(text);
  if constexpr (Type == KeyType::kUint32) return read_uint32(text);
  if constexpr (Type == KeyType::kFloat) return read_float(text);
  if constexpr (Type == KeyType::kVersion) return read_version(text);
}

inline std::size_t read_array(std::string_view text, std::span<std::uint16_t> out) {
  return string_to_u16_array(text, out);
}
inline std::size_t read_array(std::string_view text, std::span<std::int32_t> out) {
  return string_to_s32_array(text, out);
}
inline std::size_t read_array(std::string_view text, std::span<double> out) {
  return string_to_double_array(text, out);
}

template <typename Element>
constexpr KeyType list_type() {
  if constexpr (std::is_same_v<Element, std::uint16_t>) return KeyType::kUint16List;
  if constexpr (std::is_same_v<Element, std::int32_t>) return KeyType::kInt32List;
  if constexpr (std::is_same_v<Element, double>) return KeyType::kDoubleList;
}

template <typename Section, auto... Path>
using ElementAt = std::remove_reference_t<decltype(walk<Path...>(std::declval<Section&>())[0])>;

template <typename Section, auto... Path>
constexpr std::size_t extent_at() {
  return sizeof(walk<Path...>(std::declval<Section&>())) / sizeof(ElementAt<Section, Path...>);
}

}  // namespace detail

// A key without its table: what tools and documents show of it.
struct KeyDescription {
  const char* section = nullptr;
  const char* name = nullptr;
  KeyType type{};
  std::uint8_t count = 1;
  bool required = true;
  const char* beside = nullptr;
};

template <typename Section, std::size_t Count>
void describe_keys(const char* section, const std::array<Key<Section>, Count>& keys,
                   std::vector<KeyDescription>& descriptions) {
  for (const Key<Section>& key : keys) {
    descriptions.push_back(
        {section, key.name, key.type, key.count, key.absent == nullptr && key.beside == nullptr, key.beside});
  }
}

// A key whose value goes into one member.
template <KeyType Type, auto... Path>
constexpr Key<RecordOf<Path...>> key(const char* name) {
  using Section = RecordOf<Path...>;
  return {name, Type, 1, [](Section& section, std::string_view text) {
            auto& member = walk<Path...>(section);
            member = static_cast<std::remove_reference_t<decltype(member)>>(detail::read_value<Type>(text));
            return true;
          }};
}

// A brace list that fills an array member. On a wrong number of elements the member stays as it is.
template <auto... Path>
constexpr Key<RecordOf<Path...>> list(const char* name, const char* fault) {
  using Section = RecordOf<Path...>;
  using Element = detail::ElementAt<Section, Path...>;
  constexpr std::size_t kCount = detail::extent_at<Section, Path...>();
  return {name,
          detail::list_type<Element>(),
          kCount,
          [](Section& section, std::string_view text) {
            std::array<Element, kCount> elements{};
            if (detail::read_array(text, elements) != kCount) return false;
            std::copy(elements.begin(), elements.end(), std::begin(walk<Path...>(section)));
            return true;
          },
          fault};
}

// The same for a list whose elements are read as signed numbers and cut to the member's width.
template <auto... Path>
constexpr Key<RecordOf<Path...>> signed_list(const char* name, const char* fault) {
  using Section = RecordOf<Path...>;
  using Element = detail::ElementAt<Section, Path...>;
  constexpr std::size_t kCount = detail::extent_at<Section, Path...>();
  return {name,
          KeyType::kInt32List,
          kCount,
          [](Section& section, std::string_view text) {
            std::array<std::int32_t, kCount> elements{};
            if (string_to_s32_array(text, elements) != kCount) return false;
            std::transform(
                elements.begin(), elements.end(), std::begin(walk<Path...>(section)), [](std::int32_t element) {
                  return static_cast<Element>(element);
                });
            return true;
          },
          fault};
}

// A text that goes into a zero-padded character array, without terminator.
template <auto... Path>
constexpr Key<RecordOf<Path...>> text(const char* name, const char* fault) {
  using Section = RecordOf<Path...>;
  constexpr std::size_t kRoom = detail::extent_at<Section, Path...>();
  return {name,
          KeyType::kText,
          kRoom,
          [](Section& section, std::string_view value) {
            if (value.size() > kRoom) return false;
            std::copy(value.begin(), value.end(), std::begin(walk<Path...>(section)));
            return true;
          },
          fault};
}

// The key may be absent: then the function sets the default.
template <typename Section>
constexpr Key<Section> optional(Key<Section> key, void (*absent)(std::type_identity_t<Section>&)) {
  key.absent = absent;
  return key;
}

// This key and the next ones are checked for presence together, before this one is read.
template <typename Section>
constexpr Key<Section> checked_with_next(Key<Section> key, std::uint8_t count) {
  key.checked_ahead = count;
  return key;
}

// What the absence of a required key means.
enum class MissingKey : std::uint8_t {
  kReadAsEmpty,  // its reader gets an empty text and decides
  kFault,        // the section ends with "Field %s not found in section %s"
  kQuotedFault,  // the same with key and section in double quotes
};

inline std::string missing_key_text(std::string_view key, std::string_view section) {
  return std::string("Field ").append(key).append(" not found in section ").append(section);
}

inline std::string quoted(std::string_view text) {
  return std::string("\"").append(text).append("\"");
}

// The fault of an absent key if it is required, or nothing.
template <typename Section>
std::optional<std::string> absence_fault(const Key<Section>& key, std::string_view section_name, MissingKey missing) {
  const bool required = key.beside != nullptr || (missing != MissingKey::kReadAsEmpty && key.absent == nullptr);
  if (!required) return std::nullopt;
  if (missing == MissingKey::kQuotedFault) return missing_key_text(quoted(key.name), quoted(section_name));
  return missing_key_text(key.name, section_name);
}

// Reads the rows in order into the record, which keeps what was read before a fault. The error text of the fault, or
// nothing; a bad value throws FieldError.
template <typename Section, std::size_t Count>
std::optional<std::string> read_section(const std::array<Key<Section>, Count>& keys, const IniSection& ini,
                                        std::string_view section_name, Section& section,
                                        MissingKey missing = MissingKey::kReadAsEmpty) {
  for (std::size_t i = 0; i < Count; ++i) {
    const Key<Section>& key = keys[i];
    if (key.beside != nullptr && ini.find(key.beside) == nullptr) continue;
    const IniField* const field = ini.find(key.name);
    for (const Key<Section>& checked : std::span{keys}.subspan(i, key.checked_ahead)) {
      const bool present = &checked == &key ? field != nullptr : ini.find(checked.name) != nullptr;
      if (present) continue;
      if (auto fault = absence_fault(checked, section_name, missing)) return fault;
    }
    if (field == nullptr && key.absent != nullptr) {
      key.absent(section);
    } else if (!key.read(section, field == nullptr ? std::string_view{} : field->value)) {
      return key.fault;
    }
  }
  return std::nullopt;
}

}  // namespace vq3900

#endif
