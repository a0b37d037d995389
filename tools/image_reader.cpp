#include "image_reader.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>
#include <utility>

#include "calib_image_reader.h"
#include "config/config_image.h"
#include "image_checks.h"
#include "image_fields.h"
#include "regs/snapshot.h"

namespace vq3900::tool {

namespace {

// --- the register file

bool is_register_file(Bytes bytes) {
  if (bytes.size() != kRegisterFileSize) return false;
  constexpr std::array<std::pair<std::size_t, std::uint32_t>, 6> kCounts{
      {{0, 2}, {32, 5}, {112, 18}, {336, 7}, {432, 12}, {576, 30}}};
  return std::all_of(
      kCounts.begin(), kCounts.end(), [&](const auto& count) { return word_at(bytes, count.first) == count.second; });
}

// The last disparity register, of which address and mask alone are there, as an element of its table.
ImageItem with_cut_register(ImageItem item, Bytes bytes) {
  constexpr std::size_t kCutRegister = 568;
  for (ImageRegisters& registers : item.registers) {
    if (registers.block != "disp_calc") continue;
    registers.elements.push_back({word_at(bytes, kCutRegister), word_at(bytes, kCutRegister + 4), 0});
  }
  return item;
}

Image read_register_file(Bytes bytes) {
  ImageSection section{"registers", 0, {}, {read_item("", layouts_of(register_file_layout()), bytes, 0)}, {}};
  section.checks.push_back(registers_check(with_cut_register(section.items.front(), bytes)));
  section.checks.push_back(unused_check(section, bytes, 0, bytes.size()));
  return {"register file", {bytes.begin(), bytes.end()}, {std::move(section)}};
}

// --- the snapshot

Image read_snapshot_file(Bytes bytes) {
  ImageSection section{"records", 0, {}, {read_item("", layouts_of(snapshot_layout()), bytes, 0)}, {}};
  return {"parameter snapshot", {bytes.begin(), bytes.end()}, {std::move(section)}};
}

// --- the configuration image

std::vector<FieldLayout> item_layout(const ConfigSection& kind) {
  if (kind.magic == kDpuSection.magic) return layouts_of(dpu_item_layout());
  if (kind.magic == kD2cSection.magic) return layouts_of(d2c_item_layout());
  return layouts_of(ir_pre_item_layout());
}

void read_config_items(const ConfigSection& kind, Bytes image, std::uint32_t count, ImageSection& section) {
  const std::vector<FieldLayout> layout = item_layout(kind);
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::size_t offset = kind.offset + kConfigHeaderSize + std::size_t{i} * kind.item_size;
    const Bytes item = image.subspan(offset, kind.item_size);
    section.items.push_back(read_item(fmt::format("{}", i), layout, image, offset));
    section.checks.push_back(digest_check(
        fmt::format("digest of item {}", i), item.first(16), item.subspan(kind.digest_first, kind.digest_size)));
    if (!section.items.back().registers.empty()) section.checks.push_back(registers_check(section.items.back()));
  }
}

ImageSection read_config_section(const ConfigSection& kind, Bytes image) {
  const Bytes room = image.subspan(kind.offset, kind.room);
  ImageSection section{kind.name, kind.offset, {}, {}, {}};
  const bool may_be_absent = kind.magic == kDpuSection.magic;
  if (may_be_absent && is_unwritten(room)) return section;

  const ConfigSectionHeader header = read_config_header(room);
  section.header = read_item("", layouts_of(config_header_layout()), image, kind.offset).fields;
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
  read_config_items(kind, image, std::min(header.item_count, kind.most_items()), section);
  section.checks.push_back(unused_check(section, image, kind.offset, kind.offset + kind.room));
  return section;
}

bool is_config_image(Bytes bytes) {
  if (bytes.size() != kConfigImageSize) return false;
  return std::any_of(kConfigSections.begin(), kConfigSections.end(), [&](const ConfigSection& kind) {
    return word_at(bytes, kind.offset) == kind.magic;
  });
}

Image read_config_image(Bytes bytes) {
  Image image{"configuration image", {bytes.begin(), bytes.end()}, {}};
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
  return read_calib_image(bytes);
}

const RegisterBlock* block_of(const ImageRegisters& registers) {
  static constexpr std::array<std::pair<std::string_view, std::string_view>, 2> kOtherNames{
      {{"camera_0_registers", "rectify_lut_info_0"}, {"camera_1_registers", "rectify_lut_info_1"}}};
  for (const auto& [name, block] : kOtherNames) {
    if (registers.block == name) return find_block(block);
  }
  return find_block(registers.block);
}

}  // namespace vq3900::tool
