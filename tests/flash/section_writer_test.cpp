#include "flash/section_writer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "flash/calib_image.h"
#include "support/calib_images.h"

namespace vq3900::test {
namespace {

struct SectionRow {
  const CalibSection& section;
  FlashSection expected;
  std::uint32_t most_records;
};

const std::vector<SectionRow>& sections() {
  static const std::vector<SectionRow> kRows{{kRectifySection, flash::kRectify, 8},
                                             {kCalibD2cSection, flash::kD2c, 24},
                                             {kCalibD2dSection, flash::kD2d, 48},
                                             {kAlignmentSection, flash::kAlignment, 4},
                                             {kLutDirectorySection, flash::kDirectory, 14}};
  return kRows;
}

Md5Digest digest(std::size_t number) {
  Md5Digest bytes{};
  bytes[0] = static_cast<std::uint8_t>(number);
  bytes[15] = 0x80;
  return bytes;
}

constexpr HeaderStamp kStamp{0x65432101, {0x1112131415161718, 0x2122232425262728, 0x3132333435363738}};

// Places so many records in an image of 0xFF, each full of its number.
ImageBytes image_with(const CalibSection& section, std::size_t count) {
  ImageBytes image(section.offset + section.room, 0xFF);
  SectionWriter writer{image, section};
  for (std::size_t i = 0; i < count; ++i) {
    const std::span<std::uint8_t> room = writer.next(digest(i));
    EXPECT_EQ(room.size(), section.record_size);
    std::ranges::fill(room, static_cast<std::uint8_t>(i + 1));
  }
  writer.close(kStamp);
  return image;
}

TEST(SectionWriter, HeaderRecordsAndChecksumOfEverySectionAreInTheirPlaces) {
  for (const SectionRow& row : sections()) {
    for (const std::uint32_t count : {0U, 1U, 3U, row.most_records}) {
      SCOPED_TRACE(testing::Message() << row.expected.name << ", " << count << " records");
      const ImageBytes image = image_with(row.section, count);
      expect_flash_section(image, row.expected, count);
      EXPECT_EQ(time_of(image, row.expected), 0x65432101U);
      for (std::uint32_t i = 0; i < count; ++i)
        EXPECT_TRUE(record_at(image, row.expected, i) ==
                    ImageBytes(row.expected.record_size, static_cast<std::uint8_t>(i + 1)));
      EXPECT_TRUE(std::ranges::all_of(part(image, 0, row.expected.offset), [](auto byte) { return byte == 0xFF; }));
    }
  }
}

TEST(SectionWriter, SerialNumberStandsInArgumentOrderLowByteFirst) {
  const ImageBytes image = image_with(kRectifySection, 0);
  const ImageBytes expected{0x18, 0x17, 0x16, 0x15, 0x14, 0x13, 0x12, 0x11, 0x28, 0x27, 0x26, 0x25,
                            0x24, 0x23, 0x22, 0x21, 0x38, 0x37, 0x36, 0x35, 0x34, 0x33, 0x32, 0x31};
  EXPECT_EQ(part(image, 24, 24), expected);
}

TEST(SectionWriter, HeaderOfAnEmptySectionIsSpelledOut) {
  ImageBytes image(kRectifySection.room, 0xFF);
  SectionWriter{image, kRectifySection}.close({});
  ImageBytes expected{0x08, 's', 'D', 'F', 0, 0, 0, 0, 60, 0, 0, 0, 0, 0, 0x0B, 0, 18, 0, 0, 0};
  expected.resize(48);
  const ImageBytes array{0x05, 'a', 'D', 'F', 0, 0, 0, 0, 0xC4, 3, 0, 0};
  expected.insert(expected.end(), array.begin(), array.end());
  put_word(expected, 4, peer_crc32(0, expected));
  EXPECT_EQ(part(image, 0, 60), expected);
}

TEST(SectionWriter, FullSectionHasNoRoomAndStaysAsItIs) {
  for (const SectionRow& row : sections()) {
    SCOPED_TRACE(row.expected.name);
    ImageBytes image(row.section.offset + row.section.room, 0xFF);
    SectionWriter writer{image, row.section};
    for (std::uint32_t i = 0; i < row.most_records; ++i)
      ASSERT_FALSE(writer.next(digest(i)).empty());
    EXPECT_TRUE(writer.next(digest(99)).empty());
    EXPECT_TRUE(writer.next(digest(99)).empty());
    EXPECT_FALSE(writer.has(digest(99)));
    writer.close(kStamp);
    expect_flash_section(image, row.expected, row.most_records);
  }
}

TEST(SectionWriter, KnowsPlacedRecordsByTheirWholeDigest) {
  ImageBytes image(kRectifySection.room, 0xFF);
  SectionWriter writer{image, kRectifySection};
  EXPECT_TRUE(writer.empty());
  EXPECT_FALSE(writer.has(Md5Digest{}));
  writer.next(digest(1));
  EXPECT_FALSE(writer.empty());
  EXPECT_TRUE(writer.has(digest(1)));
  Md5Digest other = digest(1);
  other[15] ^= 1;
  EXPECT_FALSE(writer.has(other));
  EXPECT_STREQ(writer.name(), "rectify");
}

// --- headers without an array tag

ImageBytes closed(const CalibSection& section) {
  ImageBytes bytes(200, 0xFF);
  close_section(bytes, section, {3, 40, 180}, kStamp);
  return bytes;
}

TEST(SectionHeader, OfCalibrationFilesHasCountAndSizeButNoArrayTag) {
  const ImageBytes bytes = closed(kFactoryFileSection);
  expect_words(bytes, {{0, 0x46447312}, {8, 180}, {12, 0x20A000}, {16, 18}, {20, 0x65432101}});
  expect_words(bytes, {{48, 0xFFFFFFFF}, {52, 3}, {56, 40}});
  EXPECT_EQ(word_at(bytes, 4), section_checksum(bytes, 0, 180));
  expect_filler(part(bytes, 60, 140));
}

TEST(SectionHeader, OfLutDataEndsAtItsSerialNumber) {
  const ImageBytes bytes = closed(kLutDataSection);
  expect_words(bytes, {{0, 0x46447310}, {8, 180}, {12, 0x161000}, {16, 18}, {20, 0x65432101}});
  EXPECT_EQ(part(bytes, 24, 8), (ImageBytes{0x18, 0x17, 0x16, 0x15, 0x14, 0x13, 0x12, 0x11}));
  EXPECT_EQ(word_at(bytes, 4), section_checksum(bytes, 0, 180));
  expect_filler(part(bytes, 48, 152));
}

TEST(SectionHeader, IsReadBackAsWritten) {
  const ImageBytes image = image_with(kCalibD2dSection, 2);
  const SectionHeader header = read_section_header(std::span{image}.subspan(16384));
  EXPECT_EQ(header.tag, 0x4644730AU);
  EXPECT_EQ(header.crc, word_at(image, 16388));
  EXPECT_EQ(header.length, 228U);
  EXPECT_EQ(header.address, 0xB4000U);
  EXPECT_EQ(header.time, 0x65432101U);
  EXPECT_EQ(header.serial_number, kStamp.serial_number);
  EXPECT_EQ(header.array_tag, 0x46446107U);
  EXPECT_EQ(header.count, 2U);
  EXPECT_EQ(header.record_size, 84U);
}

}  // namespace
}  // namespace vq3900::test
