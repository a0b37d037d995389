#include "flash/image_update.h"

#include <algorithm>
#include <cmath>

#include "bytes/crc32.h"
#include "modules/fixed_point.h"

namespace vq3900 {

std::optional<SectionRecords> SectionRecords::find(std::span<std::uint8_t> section, std::uint32_t least_record_size) {
  const SectionHeader header = read_section_header(section);
  const std::uint64_t end = kSectionHeaderSize + std::uint64_t{header.count} * header.record_size;
  if (end > section.size() || header.length > section.size() || header.record_size < least_record_size) return {};
  SectionRecords records;
  records.section_ = section;
  records.count_ = header.count;
  records.record_size_ = header.record_size;
  records.length_ = header.length;
  return records;
}

void SectionRecords::restamp(std::uint32_t time) const {
  SectionHeader header = read_section_header(section_);
  header.time = time;
  header.crc = 0;
  write_section_header(header, HeaderForm::kFull, section_);
  header.crc = crc32(0, section_.data(), length_);
  write_section_header(header, HeaderForm::kFull, section_);
}

void SectionRecords::clear_rest() const {
  const std::size_t end = kSectionHeaderSize + count_ * record_size_;
  std::ranges::fill(section_.subspan(end), std::uint8_t{0xFF});
}

D2dRecord read_d2d_record(std::span<const std::uint8_t> bytes) {
  D2dRecord record;
  read_record(d2d_record_layout(), bytes, record);
  return record;
}

void write_d2d_record(const D2dRecord& record, std::span<std::uint8_t> bytes) {
  write_record(d2d_record_layout(), record, bytes);
}

float d2c_focal_length(std::span<const std::uint8_t> record) {
  return load_little<float>(&record[kD2cIntrinsicOffset]);
}

void set_d2c_focal_length(float f, std::span<std::uint8_t> record) {
  store_little(f, &record[kD2cIntrinsicOffset]);
  store_little(f, &record[kD2cIntrinsicOffset + sizeof f]);
}

bool matches(float f, float other, double tolerance) {
  return std::fabs(widen(f) - widen(other)) < tolerance;
}

const FocalBaseline* find_pair(std::span<const FocalBaseline> pairs, float f) {
  const auto pair =
      std::find_if(pairs.begin(), pairs.end(), [&](const FocalBaseline& p) { return matches(f, p.f, kPairTolerance); });
  return pair == pairs.end() ? nullptr : &*pair;
}

}  // namespace vq3900
