#include "flash/lut_file.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "support/calib_images.h"

namespace vq3900::test {
namespace {

constexpr HeaderStamp kStamp{0x65432101, {1, 2, 3}};

LutDataHeader header_of(std::uint8_t number, std::uint32_t sections, std::uint32_t words) {
  LutDataHeader header;
  header.size = sections * words * 4 + 40;
  header.md5.fill(number);
  header.key = {words, 1, number};
  header.section_words = words;
  return header;
}

// Sections of so many words: 0x100, 0x101 ... in the first, 0x200 ... in the second.
class Sections {
 public:
  Sections(std::size_t number, std::size_t words) : sections_(new HeldSection[number]), number_(number) {
    for (std::size_t i = 0; i < number; ++i) {
      EXPECT_TRUE(sections_[i].room.allocate(words));
      sections_[i].encoded = words;
      std::uint32_t word = static_cast<std::uint32_t>(i + 1) << 8;
      for (std::uint32_t& held : sections_[i].room.span())
        held = word++;
    }
  }
  ~Sections() {
    for (std::size_t i = 0; i < number_; ++i)
      sections_[i].room.release();
  }
  Sections(const Sections&) = delete;
  Sections& operator=(const Sections&) = delete;

  std::span<const HeldSection> span() const { return {sections_.get(), number_}; }

 private:
  std::unique_ptr<HeldSection[]> sections_;
  std::size_t number_;
};

void add_directory_record(LutFile& file, std::uint8_t number) {
  Md5Digest digest;
  digest.fill(number);
  const std::span<std::uint8_t> room = file.directory().next(digest);
  ASSERT_EQ(room.size(), 280U);
  std::ranges::fill(room, number);
}

ImageBytes finished(LutFile& file) {
  ImageBytes bytes(file.size());
  file.finish(kStamp, bytes);
  return bytes;
}

TEST(LutFile, WithoutADirectoryRecordHasTheSizeOfTheDirectory) {
  const LutFile file;
  EXPECT_EQ(file.size(), 4096U);
}

TEST(LutFile, SizeIsDirectoryHeaderAndData) {
  LutFile file;
  add_directory_record(file, 1);
  EXPECT_EQ(file.size(), 4096U + 48);
  const Sections sections(4, 16);
  EXPECT_TRUE(file.add_data(header_of(1, 4, 16), sections.span()));
  EXPECT_EQ(file.size(), 4096U + 48 + 52 + 4 * 16 * 4);
}

TEST(LutFile, FinishedFileHoldsBothSections) {
  LutFile file;
  add_directory_record(file, 0x11);
  add_directory_record(file, 0x22);
  const Sections sections(4, 3);
  EXPECT_TRUE(file.add_data(header_of(1, 4, 3), sections.span()));
  EXPECT_TRUE(file.add_data(header_of(2, 2, 2), sections.span().first(2)));
  const ImageBytes bytes = finished(file);
  expect_flash_section(bytes, flash::kDirectory, 2);
  EXPECT_EQ(record_at(bytes, flash::kDirectory, 1), ImageBytes(280, 0x22));
  expect_lut_data_section(bytes, 52 + 48 + 52 + 16);
  expect_words(bytes, {{20, 0x65432101}, {4096 + 20, 0x65432101}, {4096 + 24, 1}, {4096 + 40, 3}});

  const ImageBytes first = lut_data_record(bytes, 0, 52 + 48);
  expect_words(first, {{0, 0x4644610D}, {4, 1}, {8, 88}, {28, 3}, {32, 1}, {36, 1}, {40, 0}, {44, 0}, {48, 3}});
  EXPECT_EQ(part(first, 12, 16), ImageBytes(16, 1));
  for (std::uint32_t i = 0; i < 12; ++i)
    EXPECT_EQ(word_at(first, 52 + 4 * i), ((i / 3 + 1) << 8) + i % 3) << i;
  const ImageBytes second = lut_data_record(bytes, 100, 52 + 16);
  expect_words(second, {{8, 56}, {48, 2}, {52, 0x100}, {56, 0x101}, {60, 0x200}, {64, 0x201}});
}

TEST(LutFile, WordsThatAreNotHeldAreZeroAndWordsBeyondTheLengthStayOut) {
  LutFile file;
  add_directory_record(file, 1);
  const Sections sections(2, 3);
  EXPECT_TRUE(file.add_data(header_of(1, 2, 5), sections.span()));
  EXPECT_TRUE(file.add_data(header_of(2, 2, 1), sections.span()));
  const ImageBytes bytes = finished(file);
  expect_words(lut_data_record(bytes, 0, 92),
               {{52, 0x100}, {56, 0x101}, {60, 0x102}, {64, 0}, {68, 0}, {72, 0x200}, {80, 0x202}, {84, 0}, {88, 0}});
  expect_words(lut_data_record(bytes, 92, 60), {{52, 0x100}, {56, 0x200}});
}

// The sections of the first grid are gone when the file is finished, those of the second are not.
TEST(LutFile, KeptWordsOutliveTheirSections) {
  LutFile file;
  add_directory_record(file, 1);
  file.keep_words();  // of nothing yet
  {
    const Sections sections(4, 3);
    EXPECT_TRUE(file.add_data(header_of(1, 4, 2), sections.span()));
    file.keep_words();
    file.keep_words();
  }
  const Sections sections(2, 2);
  EXPECT_TRUE(file.add_data(header_of(2, 2, 3), sections.span()));
  const ImageBytes bytes = finished(file);
  const ImageBytes first = lut_data_record(bytes, 0, 52 + 32);
  for (std::uint32_t i = 0; i < 8; ++i)
    EXPECT_EQ(word_at(first, 52 + 4 * i), ((i / 2 + 1) << 8) + i % 2) << i;
  expect_words(lut_data_record(bytes, 52 + 32, 52 + 24),
               {{52, 0x100}, {56, 0x101}, {60, 0}, {64, 0x200}, {68, 0x201}, {72, 0}});
}

TEST(LutFile, DataWithoutSectionsAreAHeaderAlone) {
  LutFile file;
  add_directory_record(file, 1);
  EXPECT_TRUE(file.add_data(header_of(7, 0, 16), {}));
  EXPECT_EQ(file.size(), 4096U + 48 + 52);
  EXPECT_TRUE(file.has_data(header_of(7, 0, 16).md5));
}

TEST(LutFile, HasSixPlacesAndAnUnusedOneMatchesADigestOfZeros) {
  LutFile file;
  EXPECT_TRUE(file.has_data(Md5Digest{}));
  for (std::uint8_t i = 1; i <= 6; ++i) {
    EXPECT_FALSE(file.has_data(header_of(i, 0, 0).md5));
    EXPECT_TRUE(file.add_data(header_of(i, 0, 0), {}));
    EXPECT_TRUE(file.has_data(header_of(i, 0, 0).md5));
  }
  EXPECT_FALSE(file.has_data(Md5Digest{}));
  add_directory_record(file, 1);
  const std::size_t size = file.size();
  EXPECT_FALSE(file.add_data(header_of(7, 0, 0), {}));
  EXPECT_EQ(file.size(), size);
  EXPECT_FALSE(file.has_data(header_of(7, 0, 0).md5));
}

TEST(LutFile, DataFillTheirRoomAndNoMore) {
  constexpr std::uint32_t kRoom = 692224;  // up to the factory-align section in the flash
  const Sections sections(4, 1);
  LutFile fits;
  add_directory_record(fits, 1);
  EXPECT_TRUE(fits.add_data(header_of(1, 1, (kRoom - 48 - 52) / 4), sections.span().first(1)));
  EXPECT_EQ(fits.size(), 4096U + kRoom);
  LutFile full;
  add_directory_record(full, 1);
  EXPECT_FALSE(full.add_data(header_of(1, 1, (kRoom - 48 - 52) / 4 + 1), sections.span().first(1)));
  EXPECT_EQ(full.size(), 4096U + 48);
  EXPECT_FALSE(full.add_data(header_of(1, 4, 0xFFFFFFFF), sections.span()));
  EXPECT_TRUE(full.add_data(header_of(1, 4, 16), sections.span()));
}

}  // namespace
}  // namespace vq3900::test
