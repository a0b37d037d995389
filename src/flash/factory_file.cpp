#include "flash/factory_file.h"

#include <algorithm>
#include <utility>

namespace vq3900 {

namespace {

constexpr std::size_t even(std::size_t size) {
  return size + size % 2;
}

}  // namespace

FactoryFile::Added FactoryFile::add(std::string_view path, std::string_view bytes) {
  if (paths_.empty()) file_size_ = bytes.size();
  if (bytes.size() != file_size_) return Added::kOtherSize;
  const std::size_t at = kSectionHeaderSize + paths_.size() * even(file_size_);
  if (at + even(file_size_) > bytes_.size()) return Added::kNoRoom;
  std::copy(bytes.begin(), bytes.end(), bytes_.begin() + static_cast<std::ptrdiff_t>(at));
  paths_.emplace(path);
  return Added::kYes;
}

std::vector<std::uint8_t> FactoryFile::finish(const HeaderStamp& stamp) {
  const auto count = static_cast<std::uint32_t>(paths_.size());
  const auto size = static_cast<std::uint32_t>(even(file_size_));
  close_section(bytes_, kFactoryFileSection, {count, size, kSectionHeaderSize + count * size}, stamp);
  return std::move(bytes_);
}

}  // namespace vq3900
