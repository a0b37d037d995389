#include "flash/lut_file.h"

#include <algorithm>
#include <type_traits>

namespace vq3900 {

namespace {

constexpr Md5Digest kNoDigest{};

}  // namespace

void LutFile::Grid::keep_words() {
  std::size_t count = 0;
  for (const auto& section : sections)
    count += section.size();
  kept.resize(count);
  std::uint32_t* to = kept.data();
  for (auto& section : sections) {
    std::ranges::copy(section, to);
    section = {to, section.size()};
    to += section.size();
  }
}

void LutFile::Grid::write(std::span<std::uint8_t> to) const {
  write_record(lut_data_layout(), header, to);
  const std::size_t section_bytes = std::size_t{header.section_words} * 4;
  for (std::size_t i = 0; i < section_count; ++i) {
    const std::span<std::uint8_t> room = to.subspan(kLutDataHeaderSize + i * section_bytes, section_bytes);
    store_little_words(sections[i], room.data());
    std::ranges::fill(room.subspan(4 * sections[i].size()), std::uint8_t{0});
  }
}

bool LutFile::has_data(const Md5Digest& digest) const {
  const bool unused_place = grids_.size() < kMostLutData;
  const auto stored = [&](const Grid& grid) { return grid.header.md5 == digest; };
  return (unused_place && digest == kNoDigest) || std::ranges::any_of(grids_, stored);
}

bool LutFile::add_data(const LutDataHeader& header, std::span<const HeldSection> sections) {
  if (grids_.size() == kMostLutData) return false;
  const std::uint64_t section_bytes = std::uint64_t{header.section_words} * 4;
  const std::uint64_t needed = data_size_ + kLutDataHeaderSize + sections.size() * section_bytes;
  if (needed > kLutDataRoom) return false;

  data_size_ = static_cast<std::size_t>(needed);
  static_assert(std::is_nothrow_move_constructible_v<Grid>);  // kept words stay in place when the list grows
  Grid& grid = grids_.emplace_back(Grid{header, {}, sections.size(), {}});
  for (std::size_t i = 0; i < sections.size(); ++i) {
    const std::span<const std::uint32_t> words = sections[i].words();
    grid.sections[i] = words.first(std::min<std::size_t>(words.size(), header.section_words));
  }
  return true;
}

void LutFile::keep_words() {
  if (!grids_.empty() && grids_.back().kept.empty()) grids_.back().keep_words();
}

void LutFile::finish(const HeaderStamp& stamp, std::span<std::uint8_t> to) {
  directory_.close(stamp);
  std::ranges::copy(directory_bytes_, to.begin());
  const std::span<std::uint8_t> data = to.subspan(kLutDirectoryRoom, data_size_);
  std::ranges::fill(data.first(kShortHeaderSize), std::uint8_t{0xFF});
  std::size_t at = kShortHeaderSize;
  for (const Grid& grid : grids_) {
    grid.write(data.subspan(at, grid.size()));
    at += grid.size();
  }
  close_section(data, kLutDataSection, {0, 0, static_cast<std::uint32_t>(data_size_)}, stamp);
}

}  // namespace vq3900
