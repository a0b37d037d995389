#include "image_compare.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "support/config_image_format.h"
#include "support/config_images.h"
#include "support/image_samples.h"

namespace vq3900::test {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::IsSupersetOf;
using testing::Not;
using testing::StartsWith;
using tool::compare_images;
using tool::Image;
using tool::ImageDifference;

std::vector<std::string> places(const std::vector<ImageDifference>& differences) {
  std::vector<std::string> names;
  for (const ImageDifference& difference : differences)
    names.push_back(difference.place);
  return names;
}

// What comparing finds once the file is changed.
std::vector<ImageDifference> differences(const ImageBytes& bytes, const std::function<void(ImageBytes&)>& change) {
  ImageBytes changed = bytes;
  change(changed);
  return compare_images(image_of(bytes), image_of(changed));
}

TEST(CompareImages, EqualFilesDoNotDiffer) {
  for (const ImageBytes* const bytes : {&samples().config, &samples().registers, &samples().snapshot})
    EXPECT_THAT(differences(*bytes, [](ImageBytes&) {}), IsEmpty());
}

TEST(CompareImages, NamesSectionItemRegisterAndField) {
  const std::size_t win_size = 36 + 984 + 444 + 10 * 12 + 8;
  const auto found = differences(samples().config, [&](ImageBytes& bytes) { bytes[win_size + 3] = 0x14; });
  EXPECT_THAT(places(found), ElementsAre("dpu[1].disp_calc[10].value", "dpu[1].disp_calc[10].win_size"));
  EXPECT_EQ(found.at(0).first, "0x13C01440");
  EXPECT_EQ(found.at(0).second, "0x14C01440");
  EXPECT_EQ(found.at(1).first, "19");
  EXPECT_EQ(found.at(1).second, "20");
}

TEST(CompareImages, NamesAddressAndMaskOfARegister) {
  const auto found = differences(samples().registers, [](ImageBytes& bytes) {
    bytes[116] ^= 1;
    bytes[120] ^= 1;
  });
  EXPECT_THAT(places(found), ElementsAre("prefilter[0].address", "prefilter[0].mask"));
}

TEST(CompareImages, NamesFieldsOfGroupsAndHeaders) {
  const auto found = differences(samples().config, [](ImageBytes& bytes) {
    bytes[kD2c.offset + 36 + 2 * 72 + 63] = 0x41;
    bytes[kIrPre.offset + 20] ^= 1;
  });
  EXPECT_THAT(places(found), ElementsAre("d2c[2].scale", "ir_pre.header.version_or_time"));
  EXPECT_EQ(found.at(0).first, "2.25");
  EXPECT_EQ(found.at(0).second, "9");
}

TEST(CompareImages, NamesAnItemThatOneLacks) {
  const auto found = differences(samples().config, [](ImageBytes& bytes) { put_word(bytes, kD2c.offset + 28, 2); });
  EXPECT_THAT(places(found), IsSupersetOf({"d2c.header.item_count", "d2c[2].desc", "d2c[2].extend"}));
  for (const ImageDifference& difference : found) {
    EXPECT_EQ(difference.second.empty(), difference.place != "d2c.header.item_count") << difference.place;
  }
}

TEST(CompareImages, NamesTheKinds) {
  const auto found = compare_images(image_of(samples().registers), image_of(samples().snapshot));
  EXPECT_THAT(places(found), IsSupersetOf({"kind", "size", "disparity.win_size", "gpm[28].value"}));
  EXPECT_THAT(places(found), Each(Not(StartsWith("byte"))));  // those of other kinds have nothing to do with each other
}

TEST(CompareImages, NoticesTheLastBitOfADouble) {
  const auto found = differences(samples().snapshot, [](ImageBytes& bytes) { bytes[214] ^= 1; });
  EXPECT_THAT(places(found), ElementsAre("disparity.sp_coef"));
}

TEST(CompareImages, NoticesTextBehindItsTerminator) {
  const auto found = differences(samples().config, [](ImageBytes& bytes) { bytes[kD2c.offset + 36 + 31] = 'x'; });
  EXPECT_THAT(places(found), ElementsAre("d2c[0].desc"));
}

TEST(CompareImages, NoticesEveryByteOfEveryFile) {
  for (const ImageBytes* const file : {&samples().config, &samples().registers, &samples().snapshot}) {
    const Image whole = image_of(*file);
    const std::size_t step = file->size() > 1000 ? 251 : 5;
    ImageBytes bytes = *file;
    for (std::size_t i = 0; i < bytes.size(); i += step) {
      bytes[i] ^= 0x80;
      const std::optional<Image> image = read_exactly(bytes);  // nothing when a count is wrong
      EXPECT_TRUE(!image || !compare_images(whole, *image).empty()) << file->size() << " bytes, byte " << i;
      bytes[i] ^= 0x80;
    }
  }
}

// --- differences outside every field

struct UnknownBytes {
  const char* name;
  const ImageBytes Samples::*file;
  std::size_t begin, end;  // bytes to turn into 0xA5
  const char* place;
};

class CompareUnknownBytes : public testing::TestWithParam<UnknownBytes> {};

TEST_P(CompareUnknownBytes, AreNamedByTheirOffsets) {
  const UnknownBytes& row = GetParam();
  const ImageBytes& file = samples().*row.file;
  const auto found = differences(file, [&](ImageBytes& bytes) {
    std::fill(bytes.begin() + static_cast<std::ptrdiff_t>(row.begin),
              bytes.begin() + static_cast<std::ptrdiff_t>(row.end),
              std::uint8_t{0xA5});
  });
  ASSERT_THAT(places(found), ElementsAre(row.place));
  const std::string was = file[row.begin] == 0 ? "00" : "ff";
  std::string first, second;
  for (std::size_t i = row.begin; i < row.end; ++i) {
    first += was;
    second += "a5";
  }
  EXPECT_EQ(found.at(0).first, first);
  EXPECT_EQ(found.at(0).second, second);
}

INSTANTIATE_TEST_SUITE_P(
    Places, CompareUnknownBytes,
    testing::Values(UnknownBytes{"filler_behind_a_table", &Samples::registers, 28, 32, "bytes 28 to 31"},
                    UnknownBytes{"part_of_a_filler", &Samples::registers, 97, 111, "bytes 97 to 110"},
                    UnknownBytes{"filler_of_eight", &Samples::registers, 424, 432, "bytes 424 to 431"},
                    UnknownBytes{"padding_of_a_record", &Samples::snapshot, 13, 16, "bytes 13 to 15"},
                    UnknownBytes{"last_padding", &Samples::snapshot, 459, 462, "bytes 459 to 461"},
                    UnknownBytes{
                        "filler_of_an_item", &Samples::config, 36 + 984 + 948, 36 + 984 + 960, "bytes 1968 to 1979"},
                    UnknownBytes{"behind_the_last_item", &Samples::config, 2004, 2010, "bytes 2004 to 2009"},
                    UnknownBytes{"last_byte_of_a_section", &Samples::config, 8191, 8192, "byte 8191"},
                    UnknownBytes{"last_byte_of_the_file", &Samples::config, 16383, 16384, "byte 16383"}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(CompareImages, DifferencesAreInTheOrderOfTheirOffsets) {
  const auto found = differences(samples().registers, [](ImageBytes& bytes) {
    bytes[27] ^= 1;  // the last byte of a register
    bytes[28] = bytes[29] = bytes[31] = 0;
    bytes[32 + 4] ^= 1;
  });
  EXPECT_THAT(
      places(found),
      ElementsAre(
          "d2d_params[1].value", "d2d_params[1].pbf", "bytes 28 to 29", "byte 31", "basic_d2c_d2d_ctrl[0].address"));
}

TEST(CompareImages, ManyUnknownBytesAreCutShort) {
  const auto found = differences(samples().config, [](ImageBytes& bytes) { std::fill_n(&bytes[4000], 33, 0); });
  ASSERT_THAT(places(found), ElementsAre("bytes 4000 to 4032"));
  EXPECT_EQ(found.at(0).second, std::string(64, '0') + "...");
  const auto fewer = differences(samples().config, [](ImageBytes& bytes) { std::fill_n(&bytes[4000], 32, 0); });
  EXPECT_EQ(fewer.at(0).second, std::string(64, '0'));
}

TEST(CompareImages, BytesThatOneFileLacksAreNamed) {
  const Image shorter = image_of(samples().snapshot);
  Image longer = shorter;
  longer.bytes.insert(longer.bytes.end(), {0x12, 0x34});
  const auto found = compare_images(shorter, longer);
  ASSERT_THAT(places(found), ElementsAre("size", "bytes 462 to 463"));
  EXPECT_EQ(found.at(1).first, "");
  EXPECT_EQ(found.at(1).second, "1234");
  EXPECT_EQ(compare_images(longer, shorter).at(1).first, "1234");
}

TEST(CompareImages, SectionThatIsEmptyInOneFileIsNamedByItsFieldsAlone) {
  const auto found =
      differences(samples().config, [](ImageBytes& bytes) { std::fill_n(bytes.begin(), 8192, std::uint8_t{0xFF}); });
  EXPECT_THAT(places(found), IsSupersetOf({"dpu.header.magic", "dpu[1].mode.dpu_desc"}));
  EXPECT_THAT(places(found), Each(Not(StartsWith("byte"))));
}

}  // namespace
}  // namespace vq3900::test
