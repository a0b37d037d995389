#include "calib_image_reader.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "flash/calib_image.h"
#include "image_checks.h"
#include "image_fields.h"
#include "lut_file_reader.h"
#include "section_reader.h"

namespace vq3900::tool {

namespace {

bool has_tag(Bytes bytes, std::size_t offset, std::uint32_t tag) {
  return bytes.size() >= offset + kSectionHeaderSize && word_at(bytes, offset) == tag;
}

// --- the flash image

// The alignment records mean nothing to the library.
std::vector<FieldLayout> alignment_layout() {
  const std::uint32_t size = kAlignmentSection.record_size;
  return {{0, size, "data", FieldType::kUint8, size}};
}

RecordKind d2d_records() {
  return {kCalibD2dSection, layouts_of(d2d_record_layout()), kD2dKeySize};
}

std::vector<RecordKind> image_records() {
  return {{kRectifySection, layouts_of(rectify_record_layout()), kRectifyKeySize},
          {kCalibD2cSection, layouts_of(d2c_record_layout()), kD2cKeySize},
          d2d_records(),
          {kAlignmentSection, alignment_layout(), 0}};
}

// One section's tag is enough.
bool is_calib_image(Bytes bytes) {
  if (bytes.size() != kCalibImageSize && bytes.size() != kCalibImageWithAlignmentSize) return false;
  return std::any_of(kCalibImageSections.begin(), kCalibImageSections.end(), [&](const CalibSection& kind) {
    return has_tag(bytes, kind.offset, kind.tag);
  });
}

Image read_whole_image(Bytes bytes) {
  Image image{"calibration image", {bytes.begin(), bytes.end()}, {}};
  for (const RecordKind& kind : image_records()) {
    if (kind.section.offset < bytes.size()) image.sections.push_back(read_records(kind, bytes));
  }
  return image;
}

Image read_d2d_section(Bytes bytes) {
  RecordKind alone = d2d_records();
  alone.section.offset = 0;
  return {"D2D section", {bytes.begin(), bytes.end()}, {read_records(alone, bytes)}};
}

// --- factory-align files

// The calibration-parameter files as they are, each in a place of the size that the header states.
Image read_factory_file(Bytes bytes) {
  const CalibSection& kind = kFactoryFileSection;
  ImageSection section = read_header(kind, bytes);
  const SectionHeader header = read_section_header(bytes);
  const std::uint64_t size = header.record_size;
  const std::uint64_t most = size == 0 ? 0 : (kind.room - kSectionHeaderSize) / size;
  section.checks.push_back(count_check(header.count, most));
  section.checks.push_back(length_check(header, kSectionHeaderSize + header.count * size));
  section.checks.push_back(section_crc_check(header, bytes));
  for (std::uint64_t i = 0; i < std::min<std::uint64_t>(header.count, most); ++i) {
    const auto at = static_cast<std::size_t>(kSectionHeaderSize + i * size);
    const auto length = static_cast<std::size_t>(size);
    ImageItem item{fmt::format("{}", i), {}, {}};
    item.fields.push_back(summary_field("file", bytes, at, length, bytes_summary(bytes.subspan(at, length))));
    section.items.push_back(std::move(item));
  }
  section.checks.push_back(unused_check(section, bytes, 0, bytes.size()));
  return {"factory-align file", {bytes.begin(), bytes.end()}, {std::move(section)}};
}

// The cameras of each configuration. The file ends behind the last record.
Image read_factory_section(Bytes bytes) {
  RecordKind kind{kFactoryRecordSection, layouts_of(factory_record_layout()), kFactoryKeySize};
  kind.section.room = static_cast<std::uint32_t>(std::min<std::size_t>(bytes.size(), kind.section.room));
  return {"factory-align section", {bytes.begin(), bytes.end()}, {read_records(kind, bytes)}};
}

}  // namespace

std::optional<Image> read_calib_image(Bytes bytes) {
  if (is_calib_image(bytes)) return read_whole_image(bytes);
  if (bytes.size() == kCalibD2dSection.room && has_tag(bytes, 0, kCalibD2dSection.tag)) return read_d2d_section(bytes);
  if (bytes.size() == kFactoryFileSize && has_tag(bytes, 0, kFactoryFileSection.tag)) return read_factory_file(bytes);
  if (has_tag(bytes, 0, kFactoryRecordSection.tag)) return read_factory_section(bytes);
  return read_lut_file(bytes);
}

}  // namespace vq3900::tool
