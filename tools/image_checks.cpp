#include "image_checks.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <vector>

#include "bytes/crc32.h"
#include "bytes/md5.h"
#include "image_fields.h"
#include "register_blocks.h"

namespace vq3900::tool {

namespace {

bool is_zero(const DeRegElement_S& element) {
  return element.address == 0 && element.mask == 0 && element.value == 0;
}

// The first element of a table that is not the block's.
std::optional<std::size_t> foreign_element(const ImageRegisters& registers, const RegisterBlock& block) {
  const std::vector<DeRegElement_S> own = block.registers();
  for (std::size_t i = 0; i < registers.elements.size(); ++i) {
    const DeRegElement_S& element = registers.elements[i];
    const bool good =
        i < own.size() ? element.address == own[i].address && element.mask == own[i].mask : is_zero(element);
    if (!good) return i;
  }
  return std::nullopt;
}

}  // namespace

ImageCheck crc_check(Bytes covered, std::size_t crc_offset) {
  std::vector<std::uint8_t> copy(covered.begin(), covered.end());
  const auto stored = word_at(covered, crc_offset);
  std::fill_n(copy.begin() + static_cast<std::ptrdiff_t>(crc_offset), 4, std::uint8_t{0});
  const std::uint32_t computed = crc32(0, copy.data(), copy.size());
  const std::string detail = stored == computed ? fmt::format("0x{:08X}", stored)
                                                : fmt::format("stored 0x{:08X}, computed 0x{:08X}", stored, computed);
  return {"CRC-32", stored == computed, detail};
}

ImageCheck digest_check(const std::string& what, Bytes stored, Bytes covered) {
  const Md5Digest computed = md5(covered);
  const bool good = std::equal(stored.begin(), stored.end(), computed.begin(), computed.end());
  return {what,
          good,
          good ? hex_text(stored) : fmt::format("stored {}, computed {}", hex_text(stored), hex_text(computed))};
}

ImageCheck equality_check(const std::string& what, std::uint64_t found, std::uint64_t expected) {
  const bool good = found == expected;
  return {
      what, good, good ? fmt::format("0x{:X}", found) : fmt::format("found 0x{:X}, expected 0x{:X}", found, expected)};
}

ImageCheck count_check(std::uint64_t count, std::uint64_t most) {
  return {"count", count <= most, fmt::format("{}, at most {}", count, most)};
}

ImageCheck registers_check(const ImageItem& item) {
  const std::string what =
      item.name.empty() ? "registers are the block's" : fmt::format("registers of item {} are the block's", item.name);
  std::size_t count = 0;
  for (const ImageRegisters& registers : item.registers) {
    const RegisterBlock* const block = block_of(registers);
    if (block == nullptr) continue;
    if (const auto at = foreign_element(registers, *block)) {
      const DeRegElement_S& element = registers.elements[*at];
      return {
          what,
          false,
          fmt::format("{}[{}]: address 0x{:08X}, mask 0x{:08X}", registers.block, *at, element.address, element.mask)};
    }
    count += registers.elements.size();
  }
  return {what, true, fmt::format("{} in {} tables", count, item.registers.size())};
}

ImageCheck unused_check(const ImageSection& section, Bytes file, std::size_t begin, std::size_t end) {
  std::vector<bool> known(end - begin);
  visit_known(section, [&](std::size_t offset, std::size_t size) {
    for (std::size_t i = std::max(offset, begin); i < std::min(offset + size, end); ++i)
      known[i - begin] = true;
  });
  std::size_t unused = 0;
  for (std::size_t i = begin; i < end; ++i) {
    if (known[i - begin]) continue;
    ++unused;
    if (file[i] != 0xFF) return {"unused bytes are 0xFF", false, fmt::format("byte {} is 0x{:02X}", i, file[i])};
  }
  return {"unused bytes are 0xFF", true, fmt::format("{} bytes", unused)};
}

bool is_unwritten(Bytes bytes) {
  return std::all_of(bytes.begin(), bytes.end(), [](std::uint8_t byte) { return byte == 0xFF; });
}

}  // namespace vq3900::tool
