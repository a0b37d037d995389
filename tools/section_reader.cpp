#include "section_reader.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>

#include "image_checks.h"
#include "image_fields.h"

namespace vq3900::tool {

namespace {

constexpr std::size_t kCrcOffset = 4;
constexpr std::size_t kDigestSize = 16;

// The fields that a header has.
std::vector<FieldLayout> header_layout(HeaderForm form) {
  std::vector<FieldLayout> layout;
  for (const FieldLayout& field : section_header_layout()) {
    if (form == HeaderForm::kShort && field.offset >= kShortHeaderSize) continue;
    if (form == HeaderForm::kWithoutArrayTag && field.offset == kShortHeaderSize) continue;
    layout.push_back(field);
  }
  return layout;
}

void add_record(const RecordKind& kind, Bytes file, std::size_t index, ImageSection& section) {
  const std::size_t size = kind.section.record_size;
  const std::size_t offset = kind.section.offset + kSectionHeaderSize + index * size;
  const Bytes record = file.subspan(offset, size);
  section.items.push_back(read_item(fmt::format("{}", index), kind.layout, file, offset));
  if (kind.key_size > 0) {
    section.checks.push_back(digest_check(
        fmt::format("digest of item {}", index), record.first(kDigestSize), record.subspan(kKeyOffset, kind.key_size)));
  }
  if (!section.items.back().registers.empty()) section.checks.push_back(registers_check(section.items.back()));
}

}  // namespace

ImageSection read_header(const CalibSection& kind, Bytes file) {
  ImageSection section{kind.name, kind.offset, {}, {}, {}};
  section.header = read_item("", header_layout(kind.form), file, kind.offset).fields;
  const Bytes header = file.subspan(kind.offset);
  const auto add = [&](const char* what, std::size_t offset, std::uint32_t expected) {
    section.checks.push_back(equality_check(what, word_at(header, offset), expected));
  };
  add("tag", 0, kind.tag);
  add("flash address", 12, kind.address);
  add("format", 16, SectionHeader{}.format);
  if (kind.form == HeaderForm::kFull) {
    add("array tag", 48, kind.array_tag);
    add("record size", 56, kind.record_size);
  }
  return section;
}

ImageSection read_records(const RecordKind& kind, Bytes file) {
  const CalibSection& place = kind.section;
  const Bytes room = file.subspan(place.offset, place.room);
  const SectionHeader header = read_section_header(room);
  ImageSection section = read_header(place, file);
  section.checks.push_back(count_check(header.count, place.most_records()));
  section.checks.push_back(length_check(header, kSectionHeaderSize + std::uint64_t{header.count} * place.record_size));
  section.checks.push_back(section_crc_check(header, room));
  for (std::uint32_t i = 0; i < std::min(header.count, place.most_records()); ++i)
    add_record(kind, file, i, section);
  section.checks.push_back(unused_check(section, file, place.offset, place.offset + std::size_t{place.room}));
  return section;
}

ImageCheck length_check(const SectionHeader& header, std::uint64_t expected) {
  return equality_check("length", header.length, expected);
}

ImageCheck section_crc_check(const SectionHeader& header, Bytes room) {
  if (header.length < kShortHeaderSize || header.length > room.size()) {
    return {"CRC-32", false, fmt::format("length {} does not fit the section", header.length)};
  }
  return crc_check(room.first(header.length), kCrcOffset);
}

}  // namespace vq3900::tool
