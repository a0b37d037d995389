#include "image_reader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "bytes/crc32.h"
#include "image_compare.h"
#include "image_report.h"
#include "support/config_image_format.h"
#include "support/config_images.h"
#include "support/image_samples.h"
#include "support/numbers.h"

namespace vq3900::test {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::IsSupersetOf;
using tool::compare_images;
using tool::Image;
using tool::ImageCheck;
using tool::ImageField;
using tool::ImageItem;
using tool::ImageSection;

const std::vector<DeRegElement_S>& registers_of(const ImageItem& item, const std::string& block) {
  static const std::vector<DeRegElement_S> kNone;
  for (const tool::ImageRegisters& registers : item.registers) {
    if (registers.block == block) return registers.elements;
  }
  ADD_FAILURE() << "no registers " << block;
  return kNone;
}

template <std::size_t Size>
void expect_registers(const ImageItem& item, const std::string& block, const std::array<Register, Size>& expected,
                      std::size_t count = Size) {
  const std::vector<DeRegElement_S>& registers = registers_of(item, block);
  ASSERT_EQ(registers.size(), count) << block;
  for (std::size_t i = 0; i < count; ++i) {
    EXPECT_EQ(registers[i].address, expected[i].address) << block << " " << i;
    EXPECT_EQ(registers[i].value, expected[i].value) << block << " " << i;
  }
}

// What the checks of a section find wrong.
std::vector<std::string> faults(const ImageSection& section) {
  std::vector<std::string> names;
  for (const ImageCheck& check : section.checks) {
    if (!check.good) names.push_back(check.what);
  }
  return names;
}

// Makes the CRC of a section right again over the length that its header states.
void repair_crc(ImageBytes& image, const SectionFormat& format) {
  const std::uint32_t length = word_at(image, format.offset + 8);
  if (length < 36 || length > format.room) return;
  put_word(image, format.offset + 4, 0);
  put_word(image, format.offset + 4, crc32(0, &image[format.offset], length));
}

// --- which file it is

TEST(ReadImage, EveryKindIsRecognised) {
  struct Row {
    const ImageBytes& bytes;
    const char* kind;
    std::vector<std::string> sections;
  };
  for (const Row& row : {Row{samples().config, "configuration image", {"dpu", "d2c", "ir_pre"}},
                         Row{samples().registers, "register file", {"registers"}},
                         Row{samples().snapshot, "parameter snapshot", {"records"}}}) {
    SCOPED_TRACE(row.kind);
    const Image image = image_of(row.bytes);
    EXPECT_EQ(image.kind, row.kind);
    EXPECT_EQ(image.bytes.size(), row.bytes.size());
    EXPECT_TRUE(image.good());
    std::vector<std::string> sections;
    for (const ImageSection& section : image.sections)
      sections.push_back(section.name);
    EXPECT_EQ(sections, row.sections);
  }
}

TEST(ReadImage, OtherSizesAreNoImage) {
  for (const ImageBytes* const whole : {&samples().config, &samples().registers, &samples().snapshot}) {
    for (const std::ptrdiff_t change : {-1, 1}) {
      ImageBytes bytes = *whole;
      bytes.resize(static_cast<std::size_t>(static_cast<std::ptrdiff_t>(bytes.size()) + change), 0xFF);
      EXPECT_FALSE(read_exactly(bytes)) << bytes.size();
    }
  }
  for (const std::size_t size : {0U, 1U, 3U, 4U, 36U, 984U, 4096U, 8192U, 32768U})
    EXPECT_FALSE(read_exactly(part(ImageBytes(40000, 0x12), 0, size))) << size;
}

TEST(ReadImage, RightSizeWithoutTheMarksIsNoImage) {
  for (const std::uint8_t byte : {std::uint8_t{0x00}, std::uint8_t{0x46}, std::uint8_t{0xFF}}) {
    EXPECT_FALSE(read_exactly(ImageBytes(928, byte)));
    EXPECT_FALSE(read_exactly(ImageBytes(16384, byte)));
  }
  for (const std::size_t count : {0U, 32U, 112U, 336U, 432U, 576U}) {
    ImageBytes bytes = samples().registers;
    put_word(bytes, count, word_at(bytes, count) + 1);
    EXPECT_FALSE(read_exactly(bytes)) << count;
  }
}

TEST(ReadImage, OneSectionsMagicIsEnough) {
  for (const SectionFormat& format : {kDpu, kD2c, kIrPre}) {
    ImageBytes bytes(16384, 0xFF);
    put_word(bytes, format.offset, format.magic);
    const Image image = image_of(bytes);
    EXPECT_EQ(image.kind, "configuration image");
    EXPECT_FALSE(image.good());
  }
}

// --- what it holds

TEST(ReadImage, HeadersAreReadFieldByField) {
  const Image image = image_of(samples().config);
  const std::vector<std::string> names = {
      "magic", "length", "flash_address", "format", "version_or_time", "item_magic", "item_count", "item_size"};
  const auto texts = [&](const char* section) {
    std::vector<std::string> values;
    for (const std::string& name : names)
      values.push_back(text_of(section_of(image, section).header, name));
    return values;
  };
  EXPECT_THAT(texts("dpu"), ElementsAre("1178891014", "2004", "81920", "18", "825242165", "1178886403", "2", "984"));
  EXPECT_THAT(texts("d2c"), ElementsAre("1178891015", "252", "90112", "18", "825242165", "1178886404", "3", "72"));
  EXPECT_THAT(texts("ir_pre"), ElementsAre("1178891022", "348", "94208", "18", "825242165", "1178886411", "2", "156"));
  EXPECT_EQ(section_of(image, "dpu").offset, 0U);
  EXPECT_EQ(section_of(image, "d2c").offset, 8192U);
  EXPECT_EQ(section_of(image, "ir_pre").offset, 12288U);
}

TEST(ReadImage, ConfigurationItemHoldsFieldsAndRegisters) {
  const Image image = image_of(samples().config);
  ASSERT_EQ(section_of(image, "dpu").items.size(), 2U);
  const ImageItem& item = section_of(image, "dpu").items[0];
  EXPECT_EQ(text_of(item.fields, "mode.dpu_desc"), "stereo_1280x800");
  EXPECT_EQ(text_of(item.fields, "mode.laser_type"), "1");
  EXPECT_EQ(text_of(item.fields, "mode.in_ir_res"), "1280, 800");
  EXPECT_EQ(text_of(item.fields, "scheme.d2d_params_unit"), "100");
  EXPECT_EQ(text_of(item.fields, "scheme.scheme_flags"), "18");
  EXPECT_EQ(text_of(section_of(image, "dpu").items[1].fields, "scheme.ref_dist"), "1000");
  expect_registers(item, "basic_d2c_d2d_ctrl", kStereoControl);
  expect_registers(item, "rectify_ctrl", kStereoRectifyCtrl);
  expect_registers(item, "prefilter", kStereoPrefilter);
  expect_registers(item, "extend_chop", kStereoExtendChop);
  expect_registers(item, "disp_calc", kStereoDisparity);
  expect_registers(item, "gpm", kStereoGpm);
}

TEST(ReadImage, GroupItemsHoldTheirFields) {
  const Image image = image_of(samples().config);
  ASSERT_EQ(section_of(image, "d2c").items.size(), 3U);
  const std::vector<ImageField>& d2c = section_of(image, "d2c").items[1].fields;
  EXPECT_EQ(text_of(d2c, "desc"), "720p_to_540p");
  EXPECT_EQ(text_of(d2c, "res_rgb"), "960, 540");
  EXPECT_EQ(text_of(d2c, "scale"), "0.75");
  EXPECT_EQ(text_of(d2c, "extend"), "0, 0, 40, 40");
  ASSERT_EQ(section_of(image, "ir_pre").items.size(), 2U);
  const std::vector<ImageField>& ir_pre = section_of(image, "ir_pre").items[1].fields;
  EXPECT_EQ(text_of(ir_pre, "dpu_desc"), "mono_640x480");
  EXPECT_EQ(text_of(ir_pre, "laser_current_range"), "150, 900, 150, 1400");
  EXPECT_EQ(text_of(ir_pre, "enable_bits"), "3");
  EXPECT_EQ(text_of(ir_pre, "box_weight_16"), "1, 2, 2, 1, 2, 4, 4, 2, 2, 4, 4, 2, 1, 2, 2, 1");
}

TEST(ReadImage, RegisterFileHoldsTablesWithoutTheLostWords) {
  const ImageItem item = image_of(samples().registers).sections.at(0).items.at(0);
  expect_registers(item, "basic_d2c_d2d_ctrl", kStereoControl);
  expect_registers(item, "prefilter", kStereoPrefilter);
  expect_registers(item, "extend_chop", kStereoExtendChop);
  expect_registers(item, "disp_calc", kStereoDisparity, 11);
  expect_registers(item, "gpm", kStereoGpm, 29);
  EXPECT_EQ(text_of(item.fields, "disp_calc.last_address"), std::to_string(0x50001034));
  EXPECT_EQ(text_of(item.fields, "gpm.count"), "30");
}

TEST(ReadImage, SnapshotHoldsTheRecords) {
  const ImageItem item = image_of(samples().snapshot).sections.at(0).items.at(0);
  EXPECT_EQ(text_of(item.fields, "basic.in_ir_width"), "1280");
  EXPECT_EQ(text_of(item.fields, "prefilter.pre_win_size"), "9");
  EXPECT_EQ(text_of(item.fields, "extend_chop.chop"), "64, 32, 8, 8");
  EXPECT_EQ(text_of(item.fields, "disparity.min_disparity"), "-4");
  EXPECT_EQ(text_of(item.fields, "disparity.sp_coef"), "0.666, -0.166, 0.0205, 0.5");
  EXPECT_EQ(text_of(item.fields, "gpm.gp_ref_dy_t_neg"), "-64");
}

TEST(ReadImage, EmptyConfigurationSectionIsNoFault) {
  ImageBytes bytes = samples().config;
  std::fill_n(bytes.begin(), 8192, std::uint8_t{0xFF});
  const Image image = image_of(bytes);
  EXPECT_TRUE(image.good());
  EXPECT_THAT(section_of(image, "dpu").items, IsEmpty());
  bytes[8191] = 0;  // no longer empty, and no section either
  EXPECT_FALSE(image_of(bytes).good());
}

TEST(ReadImage, EmptyGroupSectionIsAFault) {
  for (const SectionFormat& format : {kD2c, kIrPre}) {
    ImageBytes bytes = samples().config;
    std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(format.offset), format.room, std::uint8_t{0xFF});
    EXPECT_FALSE(image_of(bytes).good()) << format.name;
  }
}

// --- what is wrong with it

TEST(ReadImage, EveryCorruptedByteUnderTheCrcIsNoticed) {
  ImageBytes bytes = samples().small;
  for (const SectionFormat& format : {kDpu, kD2c, kIrPre}) {
    const std::size_t length = word_at(bytes, format.offset + 8);
    for (std::size_t i = 0; i < length; ++i) {
      std::uint8_t& byte = bytes[format.offset + i];
      byte ^= static_cast<std::uint8_t>(1U << i % 8);
      const Image image = image_of(bytes);
      EXPECT_FALSE(image.good()) << format.name << " " << i;
      EXPECT_FALSE(faults(section_of(image, format.name)).empty()) << format.name << " " << i;
      byte ^= static_cast<std::uint8_t>(1U << i % 8);
    }
  }
  EXPECT_TRUE(image_of(bytes).good());
}

TEST(ReadImage, DigestNamesTheItemEvenWhenTheCrcFits) {
  for (const SectionFormat& format : {kDpu, kD2c, kIrPre}) {
    const std::size_t item = format.offset + 36 + format.item_size;
    for (const std::size_t offset : {std::size_t{0}, std::size_t{15}, std::size_t{16}, 16 + format.digested - 1}) {
      ImageBytes bytes = samples().config;
      bytes[item + offset] ^= 0x10;
      repair_crc(bytes, format);
      EXPECT_THAT(faults(section_of(image_of(bytes), format.name)), ElementsAre("digest of item 1")) << offset;
    }
    ImageBytes bytes = samples().config;
    bytes[item + 16 + format.digested] ^= 0x10;  // the first byte that the digest does not cover
    repair_crc(bytes, format);
    const bool is_register = format.magic == kDpu.magic;  // the address of one
    EXPECT_THAT(faults(section_of(image_of(bytes), format.name)),
                ElementsAreArray(is_register ? std::vector<std::string>{"registers of item 1 are the block's"}
                                             : std::vector<std::string>{}));
  }
}

struct HeaderFault {
  const char* name;
  std::size_t offset;
  std::uint32_t value;
  std::vector<std::string> faults;  // these and perhaps more
};

class ReadImageHeader : public testing::TestWithParam<HeaderFault> {};

TEST_P(ReadImageHeader, FaultIsNamedInItsSectionAlone) {
  const HeaderFault& fault = GetParam();
  for (const SectionFormat& format : {kDpu, kD2c, kIrPre}) {
    SCOPED_TRACE(format.name);
    ImageBytes bytes = samples().config;
    put_word(bytes, format.offset + fault.offset, fault.value);
    if (fault.offset != 4) repair_crc(bytes, format);
    const Image image = image_of(bytes);
    EXPECT_FALSE(image.good());
    for (const ImageSection& section : image.sections) {
      if (section.name == format.name) {
        EXPECT_THAT(faults(section), IsSupersetOf(fault.faults));
        EXPECT_LE(section.items.size(), (format.room - 36) / format.item_size);
      } else {
        EXPECT_THAT(faults(section), IsEmpty());
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(
    Faults, ReadImageHeader,
    testing::Values(
        HeaderFault{"magic", 0, 0x46447308, {"magic"}}, HeaderFault{"crc", 4, 0x12345678, {"CRC-32"}},
        HeaderFault{"length_0", 8, 0, {"length", "CRC-32"}}, HeaderFault{"length_35", 8, 35, {"length", "CRC-32"}},
        HeaderFault{"length_of_the_header", 8, 36, {"length"}}, HeaderFault{"length_one_more", 8, 2005, {"length"}},
        HeaderFault{"length_behind_the_room", 8, 8193, {"length", "CRC-32"}},
        HeaderFault{"length_huge", 8, 0xFFFFFFFF, {"length", "CRC-32"}},
        HeaderFault{"address", 12, 0x15000, {"flash address"}}, HeaderFault{"format", 16, 19, {"format"}},
        HeaderFault{"item_magic", 24, 0x46446105, {"item magic"}}, HeaderFault{"item_count_0", 28, 0, {"length"}},
        HeaderFault{"item_count_1", 28, 1, {"length"}}, HeaderFault{"item_count_1000", 28, 1000, {"length"}},
        HeaderFault{"item_count_wraps", 28, 0x80000002, {"length"}},
        HeaderFault{"item_count_huge", 28, 0xFFFFFFFF, {"length"}}, HeaderFault{"item_size_0", 32, 0, {"item size"}},
        HeaderFault{"item_size_huge", 32, 0xFFFFFFFF, {"item size"}}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(ReadImage, CrcIsFollowedUpToTheEndOfTheRoomAndNotBehindIt) {
  for (const SectionFormat& format : {kDpu, kD2c, kIrPre}) {
    ImageBytes bytes = samples().config;
    put_word(bytes, format.offset + 8, static_cast<std::uint32_t>(format.room));
    repair_crc(bytes, format);
    EXPECT_THAT(faults(section_of(image_of(bytes), format.name)), ElementsAre("length"));

    put_word(bytes, format.offset + 8, static_cast<std::uint32_t>(format.room + 1));
    put_word(bytes, format.offset + 4, 0);
    ImageBytes covered = part(bytes, format.offset, format.room);
    covered.push_back(format.offset + format.room < bytes.size() ? bytes[format.offset + format.room] : 0);
    put_word(bytes, format.offset + 4, crc32(0, covered.data(), covered.size()));
    EXPECT_THAT(faults(section_of(image_of(bytes), format.name)), ElementsAre("length", "CRC-32"));
  }
}

TEST(ReadImage, VersionMayBeAnything) {
  for (const std::uint32_t stamp : {0U, 1U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
    ImageBytes bytes = samples().config;
    put_word(bytes, kD2c.offset + 20, stamp);
    repair_crc(bytes, kD2c);
    const Image image = image_of(bytes);
    EXPECT_TRUE(image.good()) << stamp;
    EXPECT_EQ(text_of(section_of(image, "d2c").header, "version_or_time"), std::to_string(stamp));
    EXPECT_THAT(image_text("a.bin", image), HasSubstr("checks, 0 bad\n"));
  }
}

TEST(ReadImage, ManyItemsThatFitTheLengthButNotTheRoomAreAFault) {
  ImageBytes bytes = samples().config;
  put_word(bytes, 28, 9);
  put_word(bytes, 8, 36 + 9 * 984);
  EXPECT_THAT(faults(section_of(image_of(bytes), "dpu")), IsSupersetOf({"CRC-32"}));
}

// --- hostile files

// Reads, prints and compares; what matters is that nothing breaks.
void look_into(const ImageBytes& bytes, bool print) {
  const std::optional<Image> image = read_exactly(bytes);
  if (!image || !print) return;
  EXPECT_FALSE(image_text("x", *image).empty());
  EXPECT_FALSE(image_json("x", *image).dump().empty());
  compare_images(*image, image_of(samples().small));
}

TEST(ReadImage, MutatedFilesNeverBreakIt) {
  constexpr std::uint32_t kSeed = 20240229;
  SCOPED_TRACE(kSeed);
  Random random(kSeed);
  constexpr std::array<std::uint32_t, 6> kWords{0, 1, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF, 0xFFFFFFDC};
  const std::array<const ImageBytes*, 3> files{&samples().small, &samples().registers, &samples().snapshot};
  for (int round = 0; round < 20000; ++round) {
    ImageBytes bytes = *files[random.word() % files.size()];
    for (std::uint32_t change = random.word() % 4 + 1; change > 0; --change) {
      const std::size_t section = bytes.size() == 16384 ? random.word() % 4 * 4096 : 0;
      const std::size_t at =
          section + random.word() % (change % 2 == 0 ? 36 : std::min<std::size_t>(bytes.size(), 1020));
      if (random.word() % 2 == 0) {
        bytes[std::min(at, bytes.size() - 1)] = static_cast<std::uint8_t>(random.word());
      } else {
        put_word(bytes, std::min(at / 4 * 4, bytes.size() - 4), kWords[random.word() % kWords.size()]);
      }
    }
    look_into(bytes, round % 200 == 0);
  }
}

TEST(ReadImage, RandomBytesNeverBreakIt) {
  constexpr std::uint32_t kSeed = 3900;
  SCOPED_TRACE(kSeed);
  Random random(kSeed);
  constexpr std::array<std::size_t, 8> kSizes{462, 928, 16384, 461, 463, 927, 929, 16385};
  for (int round = 0; round < 200; ++round) {
    ImageBytes bytes(round % 2 == 0 ? kSizes[random.word() % kSizes.size()] : random.word() % 2000);
    std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<std::uint8_t>(random.word() >> 24); });
    if (bytes.size() == 16384) put_word(bytes, kD2c.offset, kD2c.magic);
    if (bytes.size() == 928) {
      for (const auto& [offset, count] :
           {std::pair{0U, 2U}, {32U, 5U}, {112U, 18U}, {336U, 7U}, {432U, 12U}, {576U, 30U}})
        put_word(bytes, offset, count);
    }
    look_into(bytes, true);
  }
}

}  // namespace
}  // namespace vq3900::test
