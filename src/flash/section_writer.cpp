#include "flash/section_writer.h"

#include <algorithm>

#include "bytes/crc32.h"

namespace vq3900 {

namespace {

constexpr std::uint32_t kCrcOffset = 4;

}  // namespace

void close_section(std::span<std::uint8_t> section, const CalibSection& kind, const SectionExtent& extent,
                   const HeaderStamp& stamp) {
  SectionHeader header;
  header.tag = kind.tag;
  header.length = extent.length;
  header.address = kind.address;
  header.time = stamp.time;
  header.serial_number = stamp.serial_number;
  header.array_tag = kind.array_tag;
  header.count = extent.count;
  header.record_size = extent.record_size;
  write_section_header(header, kind.form, section);
  store_little(crc32(0, section.data(), extent.length), &section[kCrcOffset]);
}

bool SectionWriter::has(const Md5Digest& digest) const {
  return std::find(placed_.begin(), placed_.end(), digest) != placed_.end();
}

std::span<std::uint8_t> SectionWriter::next(const Md5Digest& digest) {
  if (placed_.size() == kind_.most_records()) return {};
  const std::size_t at = kSectionHeaderSize + placed_.size() * kind_.record_size;
  placed_.push_back(digest);
  return bytes_.subspan(at, kind_.record_size);
}

void SectionWriter::close(const HeaderStamp& stamp) {
  const auto count = static_cast<std::uint32_t>(placed_.size());
  close_section(bytes_, kind_, {count, kind_.record_size, kSectionHeaderSize + count * kind_.record_size}, stamp);
}

}  // namespace vq3900
