// A structure in a file or a flash image, written once: one row for each field, with offset, name and record member.
// Writer, reader, inspection and the format tables of the documentation walk the same rows. Numbers are little-endian.
#ifndef VQ3900_BYTES_LAYOUT_H
#define VQ3900_BYTES_LAYOUT_H

#include "vq3900_depth_engine.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <span>
#include <type_traits>
#include <utility>

#include "bytes/little_endian.h"
#include "state/member_path.h"

namespace vq3900 {

enum class FieldType : std::uint8_t {
  kUint8,
  kInt8,
  kUint16,
  kInt16,
  kUint32,
  kInt32,
  kUint64,
  kInt64,
  kFloat,
  kDouble,
  kText,       // characters, zero-padded
  kRegisters,  // register elements: address, mask, value as 32-bit words
  kIntrinsic,  // fx, fy, cx, cy as floats, width and height as 16-bit words
  kPadding,    // bytes of the record that mean nothing and travel along
  kFiller,     // 0xFF, in no record
};

// A row without its record: enough to look into an image.
struct FieldLayout {
  std::uint32_t offset = 0;  // from the start of the structure
  std::uint32_t size = 0;    // in bytes
  const char* name = nullptr;
  FieldType type{};
  std::uint32_t count = 1;  // elements of an array
};

template <typename Record>
struct LayoutRow : FieldLayout {
  void (*write)(const Record&, std::uint8_t* field) = nullptr;
  void (*read)(Record&, const std::uint8_t* field) = nullptr;
};

namespace detail {

template <typename Element>
constexpr FieldType field_type() {
  if constexpr (std::is_same_v<Element, std::uint8_t>) return FieldType::kUint8;
  if constexpr (std::is_same_v<Element, std::int8_t>) return FieldType::kInt8;
  if constexpr (std::is_same_v<Element, std::uint16_t>) return FieldType::kUint16;
  if constexpr (std::is_same_v<Element, std::int16_t>) return FieldType::kInt16;
  if constexpr (std::is_same_v<Element, std::uint32_t>) return FieldType::kUint32;
  if constexpr (std::is_same_v<Element, std::int32_t>) return FieldType::kInt32;
  if constexpr (std::is_same_v<Element, std::uint64_t>) return FieldType::kUint64;
  if constexpr (std::is_same_v<Element, std::int64_t>) return FieldType::kInt64;
  if constexpr (std::is_same_v<Element, float>) return FieldType::kFloat;
  if constexpr (std::is_same_v<Element, double>) return FieldType::kDouble;
  if constexpr (std::is_same_v<Element, char>) return FieldType::kText;
  if constexpr (std::is_same_v<Element, DeRegElement_S>) return FieldType::kRegisters;
  if constexpr (std::is_same_v<Element, DeCameraIntrinsic_S>) return FieldType::kIntrinsic;
}

template <typename Member>
concept ArrayMember = requires(Member& member) {
  std::begin(member);
  std::end(member);
};

template <typename Member>
struct ElementOf {
  using type = Member;
  static constexpr std::uint32_t kCount = 1;
};
template <ArrayMember Member>
struct ElementOf<Member> {
  using type = std::remove_reference_t<decltype(*std::begin(std::declval<Member&>()))>;
  static constexpr std::uint32_t kCount = sizeof(Member) / sizeof(type);
};

inline void write_element(const DeRegElement_S& element, std::uint8_t* to) {
  store_little(element.address, to);
  store_little(element.mask, to + 4);
  store_little(element.value, to + 8);
}
inline void write_element(const DeCameraIntrinsic_S& intrinsic, std::uint8_t* to) {
  store_little(intrinsic.fx, to);
  store_little(intrinsic.fy, to + 4);
  store_little(intrinsic.cx, to + 8);
  store_little(intrinsic.cy, to + 12);
  store_little(intrinsic.width, to + 16);
  store_little(intrinsic.height, to + 18);
}
template <typename Number>
requires std::is_arithmetic_v<Number>
void write_element(Number number, std::uint8_t* to) {
  store_little(number, to);
}

inline void read_element(DeRegElement_S& element, const std::uint8_t* from) {
  element = {
      load_little<std::uint32_t>(from), load_little<std::uint32_t>(from + 4), load_little<std::uint32_t>(from + 8)};
}
inline void read_element(DeCameraIntrinsic_S& intrinsic, const std::uint8_t* from) {
  intrinsic = {load_little<float>(from),
               load_little<float>(from + 4),
               load_little<float>(from + 8),
               load_little<float>(from + 12),
               load_little<std::uint16_t>(from + 16),
               load_little<std::uint16_t>(from + 18)};
}
template <typename Number>
requires std::is_arithmetic_v<Number>
void read_element(Number& number, const std::uint8_t* from) {
  number = load_little<Number>(from);
}

template <auto... Path>
void write_member(const RecordOf<Path...>& record, std::uint8_t* to) {
  const auto& member = walk<Path...>(record);
  using Member = std::remove_cvref_t<decltype(member)>;
  if constexpr (ArrayMember<Member>) {
    for (const auto& element : member) {
      write_element(element, to);
      to += sizeof element;
    }
  } else {
    write_element(member, to);
  }
}

template <auto... Path>
void read_member(RecordOf<Path...>& record, const std::uint8_t* from) {
  auto& member = walk<Path...>(record);
  using Member = std::remove_cvref_t<decltype(member)>;
  if constexpr (ArrayMember<Member>) {
    for (auto& element : member) {
      read_element(element, from);
      from += sizeof element;
    }
  } else {
    read_element(member, from);
  }
}

}  // namespace detail

// A member of the record, number or array of numbers, characters or register elements.
template <auto... Path>
constexpr LayoutRow<RecordOf<Path...>> field_at(std::uint32_t offset, const char* name) {
  using Member = std::remove_cvref_t<decltype(walk<Path...>(std::declval<RecordOf<Path...>&>()))>;
  using Element = typename detail::ElementOf<Member>::type;
  return {{offset, sizeof(Member), name, detail::field_type<Element>(), detail::ElementOf<Member>::kCount},
          detail::write_member<Path...>,
          detail::read_member<Path...>};
}

// Padding of a public record: bytes of the record itself, at an offset in the member that the path names.
template <std::size_t OffsetInMember, std::size_t Size, auto... Path>
constexpr LayoutRow<RecordOf<Path...>> padding_at(std::uint32_t offset) {
  using Record = RecordOf<Path...>;
  return {{offset, Size, "padding", FieldType::kPadding, Size},
          [](const Record& record, std::uint8_t* to) {
            const auto* const bytes = reinterpret_cast<const std::uint8_t*>(&walk<Path...>(record));
            std::copy_n(bytes + OffsetInMember, Size, to);
          },
          [](Record& record, const std::uint8_t* from) {
            auto* const bytes = reinterpret_cast<std::uint8_t*>(&walk<Path...>(record));
            std::copy_n(from, Size, bytes + OffsetInMember);
          }};
}

// Bytes that are 0xFF and read as nothing.
template <typename Record>
constexpr LayoutRow<Record> filler_at(std::uint32_t offset, std::uint32_t size) {
  return {{offset, size, "filler", FieldType::kFiller, size}, nullptr, nullptr};
}

// Checked at compile time for every structure: the rows lie one behind the other, without gap, up to the given size.
template <typename Record, std::size_t Count>
consteval bool complete(const std::array<LayoutRow<Record>, Count>& rows, std::uint32_t size) {
  std::uint32_t end = 0;
  for (const LayoutRow<Record>& row : rows) {
    if (row.offset != end) return false;
    end += row.size;
  }
  return end == size;
}

// Writes the record's fields; the bytes are at least as long as the structure.
template <typename Record>
void write_record(std::span<const LayoutRow<Record>> rows, const Record& record, std::span<std::uint8_t> to) {
  for (const LayoutRow<Record>& row : rows) {
    std::uint8_t* const field = to.subspan(row.offset, row.size).data();
    if (row.write == nullptr) {
      std::fill_n(field, row.size, std::uint8_t{0xFF});
    } else {
      row.write(record, field);
    }
  }
}

template <typename Record>
void read_record(std::span<const LayoutRow<Record>> rows, std::span<const std::uint8_t> from, Record& record) {
  for (const LayoutRow<Record>& row : rows) {
    if (row.read != nullptr) row.read(record, from.subspan(row.offset, row.size).data());
  }
}

template <typename Record, std::size_t Count>
void write_record(const std::array<LayoutRow<Record>, Count>& rows, const Record& record, std::span<std::uint8_t> to) {
  write_record(std::span<const LayoutRow<Record>>{rows}, record, to);
}

template <typename Record, std::size_t Count>
void read_record(const std::array<LayoutRow<Record>, Count>& rows, std::span<const std::uint8_t> from, Record& record) {
  read_record(std::span<const LayoutRow<Record>>{rows}, from, record);
}

}  // namespace vq3900

#endif
