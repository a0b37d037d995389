#include "lut_file_reader.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "flash/calib_image.h"
#include "image_checks.h"
#include "image_fields.h"
#include "modules/fixed_point.h"
#include "section_reader.h"

namespace vq3900::tool {

namespace {

constexpr std::uint32_t kWordSize = 4;

// A stored grid where the file has room for it.
struct Grid {
  std::size_t offset = 0;
  LutDataHeader header;

  std::uint64_t words_size() const { return std::uint64_t{header.size} + kLutDataUncounted - kLutDataHeaderSize; }
  std::uint64_t section_size() const { return std::uint64_t{header.section_words} * kWordSize; }
  std::uint64_t sections() const { return section_size() == 0 ? 0 : words_size() / section_size(); }
};

// The grids one behind the other, up to the first place that holds none. One more than there may be is enough.
std::vector<Grid> find_grids(Bytes file) {
  std::vector<Grid> grids;
  std::size_t at = kLutDataSection.offset + kShortHeaderSize;
  while (file.size() >= at + kLutDataHeaderSize && grids.size() <= kMostLutData) {
    Grid grid{at, {}};
    vq3900::read_record(lut_data_layout(), file.subspan(at), grid.header);
    const std::uint64_t size = std::uint64_t{grid.header.size} + kLutDataUncounted;
    if (grid.header.tag != LutDataHeader{}.tag || size < kLutDataHeaderSize || size > file.size() - at) break;
    grids.push_back(grid);
    at += static_cast<std::size_t>(size);
  }
  return grids;
}

std::vector<LutDirectoryRecord> directory_of(Bytes file) {
  const std::uint32_t count = std::min(read_section_header(file).count, kLutDirectorySection.most_records());
  std::vector<LutDirectoryRecord> records(count);
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t at = kSectionHeaderSize + i * kLutDirectorySection.record_size;
    vq3900::read_record(lut_directory_layout(), file.subspan(at), records[i]);
  }
  return records;
}

// A directory record names its grid by these.
bool names(const LutDirectoryRecord& record, const LutDataHeader& grid) {
  return record.camera_1.lut_width == grid.key.width && record.camera_1.lut_height == grid.key.height &&
         record.hundredfold_start_x == grid.key.hundredfold_start_x;
}

const LutDirectoryRecord* find_record(const std::vector<LutDirectoryRecord>& directory, const Grid& grid) {
  const auto found = std::find_if(
      directory.begin(), directory.end(), [&](const LutDirectoryRecord& record) { return names(record, grid.header); });
  return found == directory.end() ? nullptr : &*found;
}

// --- displacements

// Sections A and B are camera 1's, C and D camera 0's; the first of both is horizontal.
float focal_length(const LutDirectoryRecord& record, std::size_t section) {
  const RectifyLutInfo& camera = section < 2 ? record.camera_1 : record.camera_0;
  return section % 2 == 0 ? camera.lut_fx : camera.lut_fy;
}

ImageField section_field(std::size_t index, Bytes file, std::size_t offset, std::size_t size,
                         const LutDirectoryRecord* record) {
  double least = 0;
  double greatest = 0;
  for (std::size_t at = 0; at + kWordSize <= size; at += kWordSize) {
    const double displacement = decode_signed(word_at(file, offset + at), 24, 24);
    least = at == 0 ? displacement : std::min(least, displacement);
    greatest = at == 0 ? displacement : std::max(greatest, displacement);
  }
  const float f = record == nullptr ? 0.0F : focal_length(*record, index);
  const bool in_pixels = std::isfinite(f) && f > 0;
  const double scale = in_pixels ? widen(f) : 1;
  const char* const unit = in_pixels ? "pixels" : "focal lengths";
  const std::size_t words = size / kWordSize;
  ImageField field = summary_field(
      fmt::format("section_{}", "abcd"[index]),
      file,
      offset,
      size,
      fmt::format("{} words, displacements {:.4g} to {:.4g} {}", words, least * scale, greatest * scale, unit));
  field.json = {{"words", words}, {"least", least * scale}, {"greatest", greatest * scale}, {"unit", unit}};
  return field;
}

// The words of a grid, section by section; what is no section of two or four is one field.
void add_words(const Grid& grid, Bytes file, const LutDirectoryRecord* record, ImageItem& item) {
  const std::size_t offset = grid.offset + kLutDataHeaderSize;
  const auto size = static_cast<std::size_t>(grid.words_size());
  const std::uint64_t sections = grid.sections();
  if (size > 0 && ((sections != 2 && sections != 4) || sections * grid.section_size() != size)) {
    item.fields.push_back(summary_field("words", file, offset, size, bytes_summary(file.subspan(offset, size))));
    return;
  }
  const auto section_size = static_cast<std::size_t>(grid.section_size());
  for (std::size_t i = 0; i < sections; ++i)
    item.fields.push_back(section_field(i, file, offset + i * section_size, section_size, record));
}

// --- sections

void check_directory(const std::vector<LutDirectoryRecord>& directory, const std::vector<Grid>& grids,
                     ImageSection& section) {
  for (std::size_t i = 0; i < directory.size(); ++i) {
    const auto grid = std::find_if(
        grids.begin(), grids.end(), [&](const Grid& stored) { return names(directory[i], stored.header); });
    const bool found = grid != grids.end();
    section.checks.push_back({fmt::format("grid of item {} is there", i),
                              found,
                              found ? fmt::format("item {} of {}", grid - grids.begin(), kLutDataSection.name)
                                    : "none of its size and start"});
  }
}

ImageCheck size_check(const Grid& grid, std::size_t index, const LutDirectoryRecord* record) {
  const std::uint64_t sections = grid.sections();
  const bool four = record != nullptr && record->four_sections != 0;
  const bool fits = sections * grid.section_size() == grid.words_size();
  const bool good =
      fits && (four ? sections == 4 : sections == 0 || sections == 2 || (record == nullptr && sections == 4));
  return {fmt::format("size of item {}", index),
          good,
          fmt::format("{} sections of {} words in {} bytes", sections, grid.header.section_words, grid.words_size())};
}

ImageSection read_data(const std::vector<LutDirectoryRecord>& directory, const std::vector<Grid>& grids, Bytes file) {
  const CalibSection& kind = kLutDataSection;
  ImageSection section = read_header(kind, file);
  const Bytes room = file.subspan(kind.offset);
  // A short header: what follows it is no part of it.
  std::array<std::uint8_t, kSectionHeaderSize> bytes{};
  std::copy_n(room.begin(), kShortHeaderSize, bytes.begin());
  const SectionHeader header = read_section_header(bytes);
  section.checks.push_back(count_check(grids.size(), kMostLutData));
  section.checks.push_back(length_check(header, std::min<std::uint64_t>(room.size(), kLutDataRoom)));
  section.checks.push_back(section_crc_check(header, room));
  for (std::size_t i = 0; i < grids.size(); ++i) {
    const Grid& grid = grids[i];
    const LutDirectoryRecord* const record = find_record(directory, grid);
    ImageItem item = read_item(fmt::format("{}", i), layouts_of(lut_data_layout()), file, grid.offset);
    add_words(grid, file, record, item);
    section.items.push_back(std::move(item));
    const Bytes data = file.subspan(grid.offset);
    section.checks.push_back(digest_check(fmt::format("digest of item {}", i),
                                          data.subspan(kLutDataUncounted, 16),
                                          data.subspan(kLutDataKeyOffset, kLutDataKeySize)));
    section.checks.push_back(size_check(grid, i, record));
  }
  section.checks.push_back(unused_check(section, file, kind.offset, file.size()));
  return section;
}

}  // namespace

std::optional<Image> read_lut_file(Bytes bytes) {
  const std::size_t data = kLutDataSection.offset;
  if (bytes.size() < data) return std::nullopt;
  const bool has_data = bytes.size() >= data + kShortHeaderSize;
  const bool marked =
      word_at(bytes, 0) == kLutDirectorySection.tag || (has_data && word_at(bytes, data) == kLutDataSection.tag);
  if (!marked) return std::nullopt;

  Image image{"LUT file", {bytes.begin(), bytes.end()}, {}};
  const std::vector<Grid> grids = find_grids(bytes);
  const std::vector<LutDirectoryRecord> directory = directory_of(bytes);
  const RecordKind kind{kLutDirectorySection, layouts_of(lut_directory_layout()), kRectifyKeySize};
  image.sections.push_back(read_records(kind, bytes));
  check_directory(directory, grids, image.sections.back());
  if (has_data) {
    image.sections.push_back(read_data(directory, grids, bytes));
  } else {
    image.sections.back().checks.push_back({"LUT data", false, "the file ends behind the directory"});
  }
  return image;
}

}  // namespace vq3900::tool
