// The sections of calibration images as their format lays them out, and looking at them.
#ifndef VQ3900_TESTS_SUPPORT_CALIB_IMAGES_H
#define VQ3900_TESTS_SUPPORT_CALIB_IMAGES_H

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <string>
#include <string_view>

#include "support/config_images.h"
#include "support/image_files.h"
#include "support/peers.h"

namespace vq3900::test {

inline constexpr std::uint32_t kNoTag = 0xFFFFFFFF;

struct FlashSection {
  const char* name;
  std::size_t offset, room;
  std::uint32_t tag, array_tag, address, record_size;
};

namespace flash {

inline constexpr FlashSection kRectify{"rectify", 0, 8192, 0x46447308, 0x46446105, 0xB0000, 964};
inline constexpr FlashSection kD2c{"d2c", 8192, 8192, 0x46447309, 0x46446106, 0xB2000, 328};
inline constexpr FlashSection kD2d{"d2d", 16384, 4096, 0x4644730A, 0x46446107, 0xB4000, 84};
inline constexpr FlashSection kAlignment{"alignment", 20480, 4096, 0x4644730B, 0x46446108, 0xB5000, 976};
inline constexpr FlashSection kDirectory{"lut directory", 0, 4096, 0x4644730D, 0x4644610A, 0x160000, 280};
inline constexpr FlashSection kFactoryRecords{"factory align", 0, 0, 0x46447316, 0x46446113, 0x218000, 6288};

// Calibration-parameter files of that even size.
inline constexpr FlashSection factory_files(std::uint32_t size) {
  return {"factory align", 0, 16384, 0x46447312, kNoTag, 0x20A000, size};
}

}  // namespace flash

inline constexpr std::size_t kImageSize = 20480;
inline constexpr std::size_t kImageWithAlignmentSize = 24576;
inline constexpr std::size_t kHeaderSize = 60;
inline constexpr std::size_t kLutDataOffset = 4096;
inline constexpr std::size_t kLutDataHeaderBytes = 48;
inline constexpr std::size_t kLutDataRecordHeader = 52;

inline std::uint32_t count_of(const ImageBytes& image, const FlashSection& section) {
  return word_at(image, section.offset + 52);
}

inline std::uint32_t time_of(const ImageBytes& image, const FlashSection& section) {
  return word_at(image, section.offset + 20);
}

inline ImageBytes record_at(const ImageBytes& image, const FlashSection& section, std::size_t index) {
  return part(image, section.offset + kHeaderSize + index * section.record_size, section.record_size);
}

inline ImageBytes bytes_of_digest(std::string_view key) {
  const std::array<std::uint8_t, 16> digest = peer_md5({reinterpret_cast<const std::uint8_t*>(key.data()), key.size()});
  return {digest.begin(), digest.end()};
}

// That the bytes from `digest_offset` on are the digest of the key.
inline void expect_digest(const ImageBytes& record, std::size_t digest_offset, std::size_t key_offset,
                          std::size_t key_size) {
  const ImageBytes key = part(record, key_offset, key_size);
  const std::array<std::uint8_t, 16> digest = peer_md5(key);
  EXPECT_EQ(part(record, digest_offset, 16), ImageBytes(digest.begin(), digest.end()));
}

// The checksum of the first `length` bytes, their own checksum taken as 0.
inline std::uint32_t section_checksum(const ImageBytes& bytes, std::size_t offset, std::size_t length) {
  ImageBytes covered = part(bytes, offset, length);
  put_word(covered, 4, 0);
  return peer_crc32(0, covered);
}

// Every word of a header but for time and serial number, its checksum, and 0xFF behind the last record.
inline void expect_flash_section(const ImageBytes& image, const FlashSection& section, std::uint32_t count) {
  SCOPED_TRACE(section.name);
  ASSERT_GE(image.size(), section.offset + kHeaderSize);
  const ImageBytes header = part(image, section.offset, kHeaderSize);
  const std::uint32_t length = 60 + count * section.record_size;
  expect_words(header, {{0, section.tag}, {8, length}, {12, section.address}, {16, 18}});
  expect_words(header, {{48, section.array_tag}, {52, count}, {56, section.record_size}});
  EXPECT_EQ(word_at(header, 4), section_checksum(image, section.offset, length));
  if (section.room > 0) expect_filler(part(image, section.offset + length, section.room - length));
}

// The same of the LUT data, of which there are so many bytes.
inline void expect_lut_data_section(const ImageBytes& file, std::size_t lut_bytes) {
  SCOPED_TRACE("lut data");
  const std::size_t length = kLutDataHeaderBytes + lut_bytes;
  ASSERT_EQ(file.size(), kLutDataOffset + length);
  const ImageBytes header = part(file, kLutDataOffset, kLutDataHeaderBytes);
  expect_words(header, {{0, 0x46447310}, {8, static_cast<std::uint32_t>(length)}, {12, 0x161000}, {16, 18}});
  EXPECT_EQ(word_at(header, 4), section_checksum(file, kLutDataOffset, length));
}

inline ImageBytes lut_data_record(const ImageBytes& file, std::size_t offset, std::size_t size) {
  return part(file, kLutDataOffset + kLutDataHeaderBytes + offset, size);
}

// The span of time in which something happens.
class Stopwatch {
 public:
  bool includes(std::uint32_t stamp) const {
    return stamp >= static_cast<std::uint32_t>(start_) && stamp <= static_cast<std::uint32_t>(std::time(nullptr));
  }

 private:
  std::time_t start_ = std::time(nullptr);
};

}  // namespace vq3900::test

#endif
