#include "image_reader.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

#include "bytes/crc32.h"
#include "bytes/md5.h"
#include "config/config_image.h"
#include "regs/snapshot.h"

namespace vq3900::tool {

namespace {

// One element of a field as text and JSON.
template <typename Number>
void add_number(ImageField& field, const std::uint8_t* from) {
  const auto number = load_little<Number>(from);
  if (!field.text.empty()) field.text += ", ";
  if constexpr (std::is_floating_point_v<Number>) {
    field.text += fmt::format("{:.9g}", number);
  } else {
    field.text += fmt::format("{}", static_cast<std::int64_t>(number));
  }
  field.json.push_back(number);
}

void add_element(ImageField& field, FieldType type, const std::uint8_t* from) {
  switch (type) {
    case FieldType::kInt8:
      return add_number<std::int8_t>(field, from);
    case FieldType::kUint16:
      return add_number<std::uint16_t>(field, from);
    case FieldType::kInt16:
      return add_number<std::int16_t>(field, from);
    case FieldType::kUint32:
      return add_number<std::uint32_t>(field, from);
    case FieldType::kInt32:
      return add_number<std::int32_t>(field, from);
    case FieldType::kUint64:
      return add_number<std::uint64_t>(field, from);
    case FieldType::kInt64:
      return add_number<std::int64_t>(field, from);
    case FieldType::kFloat:
      return add_number<float>(field, from);
    case FieldType::kDouble:
      return add_number<double>(field, from);
    default:
      return add_number<std::uint8_t>(field, from);
  }
}

// Printable characters up to the first zero; others as \xNN.
std::string text_of(Bytes bytes) {
  std::string text;
  for (const std::uint8_t byte : bytes) {
    if (byte == 0) break;
    text += byte >= 0x20 && byte < 0x7F ? std::string(1, static_cast<char>(byte)) : fmt::format("\\x{:02X}", byte);
  }
  return text;
}

ImageField read_field(const FieldLayout& layout, Bytes bytes) {
  ImageField field{layout.name, "", nlohmann::ordered_json::array(), {bytes.begin(), bytes.end()}};
  if (layout.type == FieldType::kText) {
    field.text = text_of(bytes);
    field.json = field.text;
  } else if (layout.type == FieldType::kUint8 && layout.count == 16) {  // a digest
    field.text = hex_text(bytes);
    field.json = field.text;
  } else {
    const std::size_t width = layout.size / layout.count;
    for (std::size_t i = 0; i < layout.count; ++i)
      add_element(field, layout.type, bytes.data() + i * width);
    if (layout.count == 1) field.json = nlohmann::ordered_json(field.json.front());
  }
  return field;
}

std::vector<DeRegElement_S> read_registers(Bytes bytes) {
  std::vector<DeRegElement_S> elements;
  for (std::size_t at = 0; at + sizeof(DeRegElement_S) <= bytes.size(); at += sizeof(DeRegElement_S)) {
    elements.push_back({load_little<std::uint32_t>(&bytes[at]),
                        load_little<std::uint32_t>(&bytes[at + 4]),
                        load_little<std::uint32_t>(&bytes[at + 8])});
  }
  return elements;
}

std::uint32_t word_at(Bytes bytes, std::size_t offset) {
  return load_little<std::uint32_t>(&bytes[offset]);
}

// --- the register file

bool is_register_file(Bytes bytes) {
  if (bytes.size() != kRegisterFileSize) return false;
  constexpr std::array<std::pair<std::size_t, std::uint32_t>, 6> kCounts{
      {{0, 2}, {32, 5}, {112, 18}, {336, 7}, {432, 12}, {576, 30}}};
  return std::all_of(
      kCounts.begin(), kCounts.end(), [&](const auto& count) { return word_at(bytes, count.first) == count.second; });
}

Image read_register_file(Bytes bytes) {
  ImageSection section{"registers", 0, {}, {read_item("", layouts_of(register_file_layout()), bytes)}, {}};
  return {"register file", bytes.size(), {std::move(section)}};
}

// --- the snapshot

Image read_snapshot_file(Bytes bytes) {
  ImageSection section{"records", 0, {}, {read_item("", layouts_of(snapshot_layout()), bytes)}, {}};
  return {"parameter snapshot", bytes.size(), {std::move(section)}};
}

// --- the configuration image

std::vector<FieldLayout> item_layout(const ConfigSection& kind) {
  if (kind.magic == kDpuSection.magic) return layouts_of(dpu_item_layout());
  if (kind.magic == kD2cSection.magic) return layouts_of(d2c_item_layout());
  return layouts_of(ir_pre_item_layout());
}

bool is_empty(Bytes bytes) {
  return std::all_of(bytes.begin(), bytes.end(), [](std::uint8_t byte) { return byte == 0xFF; });
}

void read_config_items(const ConfigSection& kind, Bytes room, std::uint32_t count, ImageSection& section) {
  const std::vector<FieldLayout> layout = item_layout(kind);
  for (std::uint32_t i = 0; i < count; ++i) {
    const Bytes item = room.subspan(kConfigHeaderSize + std::size_t{i} * kind.item_size, kind.item_size);
    section.items.push_back(read_item(fmt::format("{}", i), layout, item));
    section.checks.push_back(digest_check(
        fmt::format("digest of item {}", i), item.first(16), item.subspan(kind.digest_first, kind.digest_size)));
  }
}

ImageSection read_config_section(const ConfigSection& kind, Bytes image) {
  const Bytes room = image.subspan(kind.offset, kind.room);
  ImageSection section{kind.name, kind.offset, {}, {}, {}};
  const bool may_be_absent = kind.magic == kDpuSection.magic;
  if (may_be_absent && is_empty(room)) return section;

  const ConfigSectionHeader header = read_config_header(room);
  section.header = read_item("", layouts_of(config_header_layout()), room.first(kConfigHeaderSize)).fields;
  section.checks.push_back(equality_check("magic", header.magic, kind.magic));
  section.checks.push_back(equality_check("flash address", header.address, kind.address));
  section.checks.push_back(equality_check("format", header.format, ConfigSectionHeader{}.format));
  section.checks.push_back(equality_check("item magic", header.item_magic, kind.item_magic));
  section.checks.push_back(equality_check("item size", header.item_size, kind.item_size));
  const std::uint64_t expected_length = kConfigHeaderSize + std::uint64_t{header.item_count} * kind.item_size;
  section.checks.push_back(equality_check("length", header.length, expected_length));
  if (header.length >= kConfigHeaderSize && header.length <= kind.room) {
    section.checks.push_back(crc_check(room.first(header.length), 4));
  } else {
    section.checks.push_back({"CRC-32", false, fmt::format("length {} does not fit the section", header.length)});
  }
  read_config_items(kind, room, std::min(header.item_count, kind.most_items()), section);
  return section;
}

bool is_config_image(Bytes bytes) {
  if (bytes.size() != kConfigImageSize) return false;
  return std::any_of(kConfigSections.begin(), kConfigSections.end(), [&](const ConfigSection& kind) {
    return word_at(bytes, kind.offset) == kind.magic;
  });
}

Image read_config_image(Bytes bytes) {
  Image image{"configuration image", bytes.size(), {}};
  for (const ConfigSection& kind : kConfigSections)
    image.sections.push_back(read_config_section(kind, bytes));
  return image;
}

}  // namespace

bool Image::good() const {
  return std::all_of(sections.begin(), sections.end(), [](const ImageSection& section) {
    return std::all_of(
        section.checks.begin(), section.checks.end(), [](const ImageCheck& check) { return check.good; });
  });
}

std::optional<Image> read_image(Bytes bytes) {
  if (is_register_file(bytes)) return read_register_file(bytes);
  if (bytes.size() == kSnapshotSize) return read_snapshot_file(bytes);
  if (is_config_image(bytes)) return read_config_image(bytes);
  return std::nullopt;
}

ImageItem read_item(std::string name, std::span<const FieldLayout> layout, Bytes bytes) {
  ImageItem item{std::move(name), {}, {}};
  for (const FieldLayout& field : layout) {
    const Bytes field_bytes = bytes.subspan(field.offset, field.size);
    if (field.type == FieldType::kPadding || field.type == FieldType::kFiller) continue;
    if (field.type == FieldType::kRegisters) {
      item.registers.push_back({field.name, read_registers(field_bytes)});
    } else {
      item.fields.push_back(read_field(field, field_bytes));
    }
  }
  return item;
}

ImageCheck crc_check(Bytes covered, std::size_t crc_offset) {
  std::vector<std::uint8_t> copy(covered.begin(), covered.end());
  const auto stored = word_at(covered, crc_offset);
  std::fill_n(copy.begin() + static_cast<std::ptrdiff_t>(crc_offset), 4, std::uint8_t{0});
  const std::uint32_t computed = crc32(0, copy.data(), copy.size());
  const std::string detail = stored == computed ? fmt::format("0x{:08X}", stored)
                                                : fmt::format("stored 0x{:08X}, computed 0x{:08X}", stored, computed);
  return {"CRC-32", stored == computed, detail};
}

ImageCheck digest_check(const std::string& what, Bytes stored, Bytes covered) {
  const Md5Digest computed = md5(covered);
  const bool good = std::equal(stored.begin(), stored.end(), computed.begin(), computed.end());
  return {what,
          good,
          good ? hex_text(stored) : fmt::format("stored {}, computed {}", hex_text(stored), hex_text(computed))};
}

ImageCheck equality_check(const std::string& what, std::uint64_t found, std::uint64_t expected) {
  const bool good = found == expected;
  return {
      what, good, good ? fmt::format("0x{:X}", found) : fmt::format("found 0x{:X}, expected 0x{:X}", found, expected)};
}

std::string hex_text(Bytes bytes) {
  std::string text;
  for (const std::uint8_t byte : bytes)
    text += fmt::format("{:02x}", byte);
  return text;
}

}  // namespace vq3900::tool
