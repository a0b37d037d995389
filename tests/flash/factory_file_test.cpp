#include "flash/factory_file.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "support/byte_strings.h"
#include "support/calib_images.h"

namespace vq3900::test {
namespace {

using Added = FactoryFile::Added;

constexpr HeaderStamp kStamp{0x65432101, {1, 2, 3}};

ImageBytes stored(const ImageBytes& file, std::size_t index, std::size_t size) {
  return part(file, 60 + index * size, size);
}

TEST(FactoryFile, WithoutFilesHasACountOfZero) {
  const ImageBytes file = FactoryFile{}.finish(kStamp);
  ASSERT_EQ(file.size(), 16384U);
  expect_flash_section(file, flash::factory_files(0), 0);
}

TEST(FactoryFile, FilesStandOneBehindTheOther) {
  FactoryFile factory;
  EXPECT_EQ(factory.add("one", "abcdef"), Added::kYes);
  EXPECT_EQ(factory.add("two", "ghijkl"), Added::kYes);
  const ImageBytes file = factory.finish(kStamp);
  expect_flash_section(file, flash::factory_files(6), 2);
  expect_words(file, {{20, 0x65432101}, {24, 1}, {32, 2}, {40, 3}});
  EXPECT_EQ(stored(file, 0, 6), bytes_of_text("abcdef"));
  EXPECT_EQ(stored(file, 1, 6), bytes_of_text("ghijkl"));
}

TEST(FactoryFile, OddFileTakesOneByteMoreWhichIsFF) {
  FactoryFile factory;
  EXPECT_EQ(factory.add("one", "abcde"), Added::kYes);
  EXPECT_EQ(factory.add("two", "fghij"), Added::kYes);
  const ImageBytes file = factory.finish(kStamp);
  expect_flash_section(file, flash::factory_files(6), 2);
  EXPECT_EQ(stored(file, 0, 6), bytes_of_text("abcde\xFF"));
  EXPECT_EQ(stored(file, 1, 6), bytes_of_text("fghij\xFF"));
}

TEST(FactoryFile, FileOfAnotherSizeIsRefusedAndNotKnown) {
  FactoryFile factory;
  EXPECT_EQ(factory.add("one", "abcde"), Added::kYes);
  EXPECT_EQ(factory.add("two", "abcdef"), Added::kOtherSize);  // the same even size, all the same
  EXPECT_EQ(factory.add("two", "abc"), Added::kOtherSize);
  EXPECT_FALSE(factory.has("two"));
  EXPECT_TRUE(factory.has("one"));
  expect_flash_section(factory.finish(kStamp), flash::factory_files(6), 1);
}

TEST(FactoryFile, FilesAreKnownByTheirWholePath) {
  FactoryFile factory;
  EXPECT_FALSE(factory.has("one"));
  EXPECT_EQ(factory.add("one", "ab"), Added::kYes);
  EXPECT_TRUE(factory.has("one"));
  EXPECT_FALSE(factory.has("on"));
  EXPECT_FALSE(factory.has("one2"));
  EXPECT_FALSE(factory.has("./one"));
}

TEST(FactoryFile, HoldsWhatFitsBehindTheHeader) {
  const std::string bytes(4081, 'x');  // 4 * 4082 = 16328 = 16384 - 56
  FactoryFile factory;
  for (const char* const name : {"1", "2", "3"})
    EXPECT_EQ(factory.add(name, bytes), Added::kYes);
  EXPECT_EQ(factory.add("4", bytes), Added::kNoRoom);
  EXPECT_FALSE(factory.has("4"));

  FactoryFile exact;
  for (const char* const name : {"1", "2", "3", "4"})
    EXPECT_EQ(exact.add(name, std::string(4080, 'x')), Added::kYes);
  EXPECT_EQ(exact.add("5", std::string(4080, 'x')), Added::kNoRoom);
  expect_flash_section(exact.finish(kStamp), flash::factory_files(4080), 4);
}

TEST(FactoryFile, LargestFileFillsTheRoom) {
  FactoryFile fits;
  EXPECT_EQ(fits.add("1", std::string(16323, 'x')), Added::kYes);
  EXPECT_EQ(fits.add("2", std::string(16323, 'x')), Added::kNoRoom);
  FactoryFile even;
  EXPECT_EQ(even.add("1", std::string(16324, 'x')), Added::kYes);
  FactoryFile odd;
  EXPECT_EQ(odd.add("1", std::string(16325, 'x')), Added::kNoRoom);
}

}  // namespace
}  // namespace vq3900::test
