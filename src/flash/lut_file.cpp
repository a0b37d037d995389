#include "flash/lut_file.h"

#include <algorithm>

namespace vq3900 {

namespace {

// Words of a section, little-endian; behind its end they are 0.
void write_words(const HeldSection& section, std::span<std::uint8_t> to) {
  const std::span<const std::uint32_t> words = section.words();
  const std::size_t count = std::min(words.size(), to.size() / 4);
  store_little_words(words.first(count), to.data());
  std::fill(to.begin() + static_cast<std::ptrdiff_t>(4 * count), to.end(), std::uint8_t{0});
}

}  // namespace

bool LutFile::has_data(const Md5Digest& digest) const {
  return std::find(stored_.begin(), stored_.end(), digest) != stored_.end();
}

bool LutFile::add_data(const LutDataHeader& header, std::span<const HeldSection> sections) {
  if (stored_count_ == stored_.size()) return false;
  const std::uint64_t section_bytes = std::uint64_t{header.section_words} * 4;
  const std::uint64_t needed = data_size_ + kLutDataHeaderSize + sections.size() * section_bytes;
  if (needed > kLutDataRoom) return false;

  stored_[stored_count_++] = header.md5;
  const std::size_t at = kLutDirectoryRoom + data_size_;
  data_size_ = static_cast<std::size_t>(needed);
  if (memory_.size() < kLutDirectoryRoom + data_size_) return true;
  std::span<std::uint8_t> room = memory_.subspan(at);
  write_record(lut_data_layout(), header, room);
  room = room.subspan(kLutDataHeaderSize);
  for (const HeldSection& section : sections) {
    write_words(section, room.first(static_cast<std::size_t>(section_bytes)));
    room = room.subspan(static_cast<std::size_t>(section_bytes));
  }
  return true;
}

void LutFile::finish(const HeaderStamp& stamp) {
  directory_.close(stamp);
  std::ranges::copy(directory_bytes_, memory_.begin());
  const std::span<std::uint8_t> data = memory_.subspan(kLutDirectoryRoom, data_size_);
  std::ranges::fill(data.first(kShortHeaderSize), std::uint8_t{0xFF});
  close_section(data, kLutDataSection, {0, 0, static_cast<std::uint32_t>(data_size_)}, stamp);
}

}  // namespace vq3900
