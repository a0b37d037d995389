#include "flash/lut_file.h"

#include <algorithm>

namespace vq3900 {

namespace {

// Words of a section, little-endian; behind its end they are 0.
void write_words(const HeldSection& section, std::span<std::uint8_t> to) {
  const std::span<const std::uint32_t> words = section.words.span();
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
  const std::uint64_t needed = data_.size() + kLutDataHeaderSize + sections.size() * section_bytes;
  if (needed > kLutDataRoom) return false;

  const std::size_t at = data_.size();
  data_.resize(static_cast<std::size_t>(needed));
  std::span<std::uint8_t> room = std::span{data_}.subspan(at);
  write_record(lut_data_layout(), header, room);
  room = room.subspan(kLutDataHeaderSize);
  for (const HeldSection& section : sections) {
    write_words(section, room.first(static_cast<std::size_t>(section_bytes)));
    room = room.subspan(static_cast<std::size_t>(section_bytes));
  }
  stored_[stored_count_++] = header.md5;
  return true;
}

std::size_t LutFile::size() const {
  return directory_.empty() ? kLutDirectoryRoom : kLutDirectoryRoom + data_.size();
}

void LutFile::finish(const HeaderStamp& stamp, std::span<std::uint8_t> to) {
  directory_.close(stamp);
  close_section(data_, kLutDataSection, {0, 0, static_cast<std::uint32_t>(data_.size())}, stamp);
  std::ranges::copy(directory_bytes_, to.begin());
  std::ranges::copy(data_, to.subspan(kLutDirectoryRoom).begin());
}

}  // namespace vq3900
