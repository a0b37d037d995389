#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "support/capture.h"
#include "support/config_image_fixture.h"
#include "support/config_image_format.h"
#include "support/config_images.h"
#include "support/de_input_text.h"
#include "support/image_files.h"
#include "support/numbers.h"
#include "support/registers.h"

namespace vq3900::test {
namespace {

constexpr std::size_t kImageSize = 16384;
constexpr std::size_t kDpuItemSize = 984;

TEST_F(ConfigImage, SamplesGiveTheGoldenBytes) {
  ConfigInput input;
  expect_same_bytes(built(input, 2 + 3 + 2), golden_image());
}

TEST_F(ConfigImage, GoldenHeadersAreSpelledOut) {
  const ImageBytes image = golden_image();
  ASSERT_EQ(image.size(), kImageSize);
  expect_words(image, {{0, 0x46447306}, {8, 36 + 2 * 984}, {12, 0x14000}, {16, 18}, {20, kSampleVersion}});
  expect_words(image, {{24, 0x46446103}, {28, 2}, {32, 984}});
  expect_words(image, {{8192, 0x46447307}, {8200, 36 + 3 * 72}, {8204, 0x16000}, {8208, 18}, {8212, kSampleVersion}});
  expect_words(image, {{8216, 0x46446104}, {8220, 3}, {8224, 72}});
  expect_words(image, {{12288, 0x4644730E}, {12296, 36 + 2 * 156}, {12300, 0x17000}, {12304, 18}});
  expect_words(image, {{12308, kSampleVersion}, {12312, 0x4644610B}, {12316, 2}, {12320, 156}});
}

TEST_F(ConfigImage, GoldenDigestsAndChecksumsHoldAndTheRestIsFiller) {
  expect_section(golden_image(), kDpu, 2);
  expect_section(golden_image(), kD2c, 3);
  expect_section(golden_image(), kIrPre, 2);
}

TEST_F(ConfigImage, GoldenConfigurationItemsHoldModeRegistersAndScheme) {
  const ImageBytes stereo = item_of(golden_image(), kDpu, 0);
  EXPECT_EQ(text_at(stereo, 16, 16), "stereo_1280x800");
  expect_words(stereo, {{32, 1}, {36, 0x03200500}, {40, 0x03200500}, {44, 0x03200500}});
  expect_registers(stereo, 48, kStereoControl);
  expect_registers(stereo, 108, kStereoRectifyCtrl);
  expect_registers(stereo, 144, kStereoPrefilter);
  expect_registers(stereo, 360, kStereoExtendChop);
  expect_registers(stereo, 444, kStereoDisparity);
  expect_registers(stereo, 588, kStereoGpm);
  expect_filler(part(stereo, 948, 12));
  expect_words(stereo, {{960, 0}, {964, 100}, {968, 0}, {972, 0x12}, {976, 0}, {980, 0}});

  const ImageBytes mono = item_of(golden_image(), kDpu, 1);
  EXPECT_EQ(text_at(mono, 16, 16), "mono_640x480");
  expect_words(mono, {{32, 3}, {36, 0x01E00280}, {40, 0x028001E0}, {44, 0x028001E0}});
  expect_registers(mono,
                   48,
                   std::array<Register, 5>{{{0x50001000, 0x00000010},
                                            {0x50001028, 0x00000400},
                                            {0x50001200, 0x14060030},
                                            {0x5000120C, 0x0000004D},  // stays from the configuration before
                                            {0x5000188C, 0x00000006}}});
  expect_registers(
      mono,
      108,
      std::array<Register, 3>{{{0x52080070, 0x00200008}, {0x52000070, 0x0020000B}, {0x520000A0, 0x0000001E}}});
  expect_filler(part(mono, 948, 12));
  expect_words(mono, {{960, 40}, {964, 0}, {968, 1000}, {972, 0x16}, {976, 0}, {980, 0}});
}

TEST_F(ConfigImage, GoldenGroupItemsHoldTheirFields) {
  const ImageBytes d2c = item_of(golden_image(), kD2c, 0);
  EXPECT_EQ(text_at(d2c, 16, 16), "720p_to_1080p");
  expect_words(d2c, {{32, 0x03200500}, {36, 0x02D00500}, {40, 0x04380780}, {44, 100}, {48, 0}});
  expect_words(d2c, {{52, 0x03200500}, {56, 0x02D00500}, {60, 0x3FC00000}, {64, 0}, {68, 0x00280028}});
  expect_words(item_of(golden_image(), kD2c, 2), {{44, 0}, {48, 1}, {60, 0x40100000}});

  const ImageBytes ir_pre = item_of(golden_image(), kIrPre, 1);
  EXPECT_EQ(text_at(ir_pre, 16, 16), "mono_640x480");
  expect_words(ir_pre, {{32, 0}, {36, 100}, {40, 4000}, {44, 100}, {48, 8000}, {52, 16}, {56, 48}, {60, 16}});
  expect_words(ir_pre, {{64, 128}, {68, 150}, {72, 900}, {76, 150}, {80, 1400}, {84, 110}, {88, 6}, {92, 2}});
  expect_words(ir_pre, {{96, 1}, {100, 2}, {104, 16}, {108, 0}, {112, 3}, {116, 0x01E00280}, {120, 0x00040004}});
  expect_words(ir_pre, {{124, 0x00020001}, {128, 0x00010002}, {132, 0x00040002}, {136, 0x00020004}});
  expect_words(ir_pre, {{140, 0x00040002}, {144, 0x00020004}, {148, 0x00020001}, {152, 0x00010002}});
}

TEST_F(ConfigImage, RegistersOfTheLastItemAreThoseOfTheLibrarysTables) {
  ConfigInput input;
  const ImageBytes item = item_of(built(input, 7), kDpu, 1);
  expect_table(item, 48, de_copy_basic_d2c_d2d_ctrl_register_table, 5);
  expect_table(item, 108, de_copy_rectify_ctrl_register_table, 3);
  expect_table(item, 144, de_copy_prefilter_register_table, 18);
  expect_table(item, 360, de_copy_extend_chop_register_table, 7);
  expect_table(item, 444, de_copy_disp_calc_register_table, 12);
  expect_table(item, 588, de_copy_gpm_register_table, 30);
}

TEST_F(ConfigImage, TwoBuildsInOneProcessAreEqualAndLeaveTheInputAlone) {
  ConfigInput input;
  const auto record = bytes_of(input.record());
  const ImageBytes first = built(input, 7);
  expect_same_bytes(built(input, 7), first);
  EXPECT_EQ(bytes_of(input.record()), record);
}

TEST_F(ConfigImage, RecordsHoldTheLastConfigurationAndTheGroups) {
  ConfigInput input;
  built(input, 7);
  dpu_mode mode{};
  unsigned int version = 0;
  de_copy_dpu_mode_config(&mode, &version);
  EXPECT_STREQ(mode.dpu_desc, "mono_640x480");
  EXPECT_EQ(engine().disparity.win_size, 19U);
  EXPECT_EQ(engine().d2c_groups.count, 3);
  EXPECT_EQ(engine().ir_pre_groups.count, 2);
}

TEST_F(ConfigImage, DigestsOfTheItemsInMemoryStayZero) {
  ConfigInput input;
  built(input, 7);
  const std::array<std::uint8_t, 16> zero{};
  for (int i = 0; i < 3; ++i)
    EXPECT_EQ(std::memcmp(engine().d2c_groups.items[static_cast<std::size_t>(i)].md5, zero.data(), 16), 0);
  for (int i = 0; i < 2; ++i)
    EXPECT_EQ(std::memcmp(engine().ir_pre_groups.items[static_cast<std::size_t>(i)].md5, zero.data(), 16), 0);
}

TEST_F(ConfigImage, DigestsCoverTheKeyOfAnItemAndNothingElse) {
  const TempFile d2c(d2c_groups_text(1));
  std::string other = d2c_groups_text(1);
  other.replace(other.find("scale = 2"), 9, "scale = 3");
  other.replace(other.find("{13,14}"), 7, "{93,94}");
  const TempFile other_d2c(other);
  const TempFile ir_pre(ir_pre_groups_text(2));
  ConfigInput first({}, d2c.path(), ir_pre.path());
  ConfigInput second({}, other_d2c.path(), ir_pre.path());
  const ImageBytes one = built(first, 3);
  const ImageBytes two = built(second, 3);
  EXPECT_EQ(part(item_of(one, kD2c, 0), 0, 52), part(item_of(two, kD2c, 0), 0, 52));
  EXPECT_NE(item_of(one, kD2c, 0), item_of(two, kD2c, 0));
  // The same description gives the same digest, whatever the other fields are.
  EXPECT_EQ(part(item_of(one, kIrPre, 0), 0, 36), part(item_of(one, kIrPre, 1), 0, 36));
  EXPECT_NE(item_of(one, kIrPre, 0), item_of(one, kIrPre, 1));
}

TEST_F(ConfigImage, StereoItemHasNoReferenceDistance) {
  const TempFile stereo(DeInputText()
                            .set("basic", "cam_mode", "1")
                            .set("basic", "rectify_mode", "2")
                            .set("basic", "rotate_90_en", "0")
                            .text());
  const TempFile mono(DeInputText().text());
  ConfigInput input({stereo.path(), mono.path()});
  const ImageBytes image = built(input, 7);
  EXPECT_EQ(word_at(item_of(image, kDpu, 0), 968), 0U);
  EXPECT_EQ(word_at(item_of(image, kDpu, 1), 968), 700U);
}

TEST_F(ConfigImage, FileWithoutSectionModeRepeatsTheConfigurationBefore) {
  const TempFile empty("[other]\nkey = 1\n");
  ConfigInput input({example("mono_640x480.ini"), empty.path()});
  const ImageBytes image = built(input, 7);
  expect_section(image, kDpu, 2);
  EXPECT_EQ(item_of(image, kDpu, 0), item_of(image, kDpu, 1));
  EXPECT_EQ(stamp_of(image, kDpu), kSampleVersion);
}

TEST_F(ConfigImage, DescriptionOf16CharactersHasNoTerminator) {
  const TempFile dpu(DeInputText().set("mode", "dpu_desc", "0123456789abcdef").text());
  ConfigInput input({dpu.path()});
  const ImageBytes item = item_of(built(input, 6), kDpu, 0);
  EXPECT_EQ(text_at(item, 16, 16), "0123456789abcdef");
  EXPECT_EQ(word_at(item, 32), 3U);
}

TEST_F(ConfigImage, DigestComesBeforeTheConversionOfItsConfiguration) {
  const TempFile dpu(DeInputText().set("disparity", "sp_coef", "{9,0,0,0}").text());
  ConfigInput input({dpu.path()});
  const std::string overflow = overflow_lines(9, 13, 10, "subpixel_coef_a0");
  EXPECT_EQ(build(input), prints_out(1, digest_trace(1) + overflow + digest_trace(5)));
  EXPECT_EQ(word_at(item_of(written(), kDpu, 0), 444 + 8), 0x00001FFFU);  // an overflow is no failure
}

TEST_F(ConfigImage, CorrectionsSwitchedOnStayOnForTheConfigurationsBehind) {
  const TempFile lut(DeInputText().set("basic", "distort_type", "1").text());
  const TempFile polynomial(DeInputText().set("basic", "distort_type", "0").text());
  ConfigInput input({lut.path(), polynomial.path()});
  const ImageBytes image = built(input, 7);
  EXPECT_EQ(word_at(item_of(image, kDpu, 0), 108 + 12 + 8), 0x01410017U);
  EXPECT_EQ(word_at(item_of(image, kDpu, 1), 108 + 12 + 8), 0x0141001FU);
}

// --- numbers of configurations and groups

TEST_F(ConfigImage, WithoutConfigurationsTheFirstSectionIsEmptyAndTheOthersAreBuilt) {
  struct Row {
    const char* name;
    bool null_array;
    std::uint8_t count;
  };
  for (const Row& row : {Row{"count 0", false, 0},
                         Row{"count 0, null array", true, 0},
                         Row{"null array, count 3", true, 3},
                         Row{"null array, count 255", true, 255}}) {
    SCOPED_TRACE(row.name);
    ConfigInput input;
    input.record().dpu_config_count = row.count;
    if (row.null_array) input.record().dpu_config_paths = nullptr;
    const ImageBytes image = built(input, 3 + 2);
    expect_filler(part(image, 0, 8192));
    expect_section(image, kD2c, 3);
    expect_section(image, kIrPre, 2);
  }
}

TEST_F(ConfigImage, OneAndEightConfigurationsFitInTheirOrder) {
  for (const std::size_t count : {1U, 8U}) {
    std::vector<std::string> dpu(count, example("stereo_1280x800.ini"));
    dpu.back() = example("mono_640x480.ini");
    ConfigInput input(dpu);
    const ImageBytes image = built(input, static_cast<int>(count) + 5);
    expect_section(image, kDpu, static_cast<std::uint32_t>(count));
    EXPECT_EQ(text_at(image, 36 + (count - 1) * kDpuItemSize + 16, 16), "mono_640x480");
    EXPECT_EQ(text_at(image, 36 + 16, 16), count == 1 ? "mono_640x480" : "stereo_1280x800");
  }
}

TEST_F(ConfigImage, NineConfigurationsAreRefusedBeforeAnythingIsBuilt) {
  ConfigInput input(std::vector<std::string>(9, example("mono_640x480.ini")));
  const auto before = bytes_of(engine());
  expect_failure(input, kDpuFailed, "");
  EXPECT_EQ(bytes_of(engine()), before);
  input.record().dpu_config_count = 255;  // the paths behind the ninth are not looked at either
  expect_failure(input, kDpuFailed, "");
}

TEST_F(ConfigImage, GroupsUpToTheRoomOfTheirSectionFit) {
  for (const auto& [d2c_count, ir_pre_count] : {std::pair{0, 0}, {1, 1}, {56, 10}}) {
    const TempFile d2c(d2c_groups_text(d2c_count));
    const TempFile ir_pre(ir_pre_groups_text(ir_pre_count));
    ConfigInput input({}, d2c.path(), ir_pre.path());
    const ImageBytes image = built(input, d2c_count + ir_pre_count);
    expect_section(image, kD2c, static_cast<std::uint32_t>(d2c_count));
    expect_section(image, kIrPre, static_cast<std::uint32_t>(ir_pre_count));
    if (d2c_count == 0) continue;
    const std::size_t last = static_cast<std::size_t>(d2c_count) - 1;
    EXPECT_EQ(text_at(item_of(image, kD2c, last), 16, 16), "d2c " + std::to_string(d2c_count));
    EXPECT_EQ(word_at(item_of(image, kIrPre, static_cast<std::size_t>(ir_pre_count) - 1), 84),
              static_cast<std::uint32_t>(ir_pre_count));
  }
}

TEST_F(ConfigImage, MoreD2cGroupsThanTheSectionHoldsAreRefused) {
  for (const int count : {57, 100}) {
    const TempFile d2c(d2c_groups_text(count));
    ConfigInput input({}, d2c.path(), example("ir_pre_groups.ini"));
    expect_failure(input, kD2cFailed, "");
    EXPECT_EQ(engine().d2c_groups.count, count);
    EXPECT_EQ(engine().ir_pre_groups.count, 0);
  }
}

TEST_F(ConfigImage, MoreGroupsThanTheirLoaderTakesAreAFailedLoad) {
  const std::string too_many = "Number of d2c cofiguration not supported\n";
  const TempFile d2c(d2c_groups_text(101));
  ConfigInput with_d2c({}, d2c.path(), example("ir_pre_groups.ini"));
  expect_failure(with_d2c, not_loaded(d2c.path()) + kD2cFailed, too_many);
  const TempFile ir_pre(ir_pre_groups_text(11));
  ConfigInput with_ir_pre({}, example("d2c_groups.ini"), ir_pre.path());
  expect_failure(with_ir_pre, digest_trace(3) + not_loaded(ir_pre.path()) + kIrPreFailed, too_many);
}

// --- versions and times

DeInputText with_version(const std::string& version) {
  return DeInputText().set("mode", "version", version);
}

struct VersionCase {
  const char* name;
  std::vector<std::string> versions;
  std::uint32_t stamp;
};

class ConfigImageVersion : public ConfigImage, public testing::WithParamInterface<VersionCase> {};

TEST_P(ConfigImageVersion, LargestOfTheFilesIsTheSectionsStamp) {
  std::vector<std::unique_ptr<TempFile>> files;
  std::vector<std::string> dpu;
  for (const std::string& version : GetParam().versions) {
    files.push_back(std::make_unique<TempFile>(with_version(version).text()));
    dpu.emplace_back(files.back()->path());
  }
  ConfigInput input(dpu);
  const ImageBytes image = built(input, static_cast<int>(dpu.size()) + 5);
  expect_section(image, kDpu, static_cast<std::uint32_t>(dpu.size()));
  EXPECT_EQ(stamp_of(image, kDpu), GetParam().stamp);
  EXPECT_EQ(stamp_of(image, kD2c), kSampleVersion);
  EXPECT_EQ(stamp_of(image, kIrPre), kSampleVersion);
}

INSTANTIATE_TEST_SUITE_P(Versions, ConfigImageVersion,
                         testing::Values(VersionCase{"one", {"1.2.3.4"}, 0x31323334},
                                         VersionCase{"then_zero", {"1.2.3.4", "."}, 0x31323334},
                                         VersionCase{"zero_then", {"..", "1.2.3.4"}, 0x31323334},
                                         VersionCase{"rising", {"1.2.3.4", "9.9"}, 0x31323334},
                                         VersionCase{"falling", {"9.9", "1.2.3.4"}, 0x31323334},
                                         VersionCase{"in_the_middle", {"1.2.3.4", "2.0.0.0", "1.9"}, 0x32303030},
                                         VersionCase{"unsigned", {"1.2.3.4", "\xF0.1.1.1"}, 0xF0313131}),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_F(ConfigImage, WithoutAVersionTheStampIsTheTimeOfBuilding) {
  const TempFile dpu(with_version(".").text());
  const TempFile d2c(d2c_groups_text(1, "."));
  const TempFile ir_pre(ir_pre_groups_text(1, ".."));
  ConfigInput input({dpu.path(), dpu.path()}, d2c.path(), ir_pre.path());
  const std::time_t before = std::time(nullptr);
  const ImageBytes image = built(input, 4);
  const std::time_t after = std::time(nullptr);
  for (const SectionFormat& format : {kDpu, kD2c, kIrPre}) {
    SCOPED_TRACE(format.name);
    EXPECT_GE(stamp_of(image, format), static_cast<std::uint32_t>(before));
    EXPECT_LE(stamp_of(image, format), static_cast<std::uint32_t>(after));
  }
  expect_section(image, kDpu, 2);
  expect_section(image, kD2c, 1);
  expect_section(image, kIrPre, 1);
}

TEST_F(ConfigImage, VersionOfAnEarlierBuildIsNotRemembered) {
  ConfigInput versioned;
  built(versioned, 7);
  const TempFile dpu(with_version(".").text());
  const TempFile d2c(d2c_groups_text(1, "."));
  const TempFile ir_pre(ir_pre_groups_text(1, "7"));
  ConfigInput input({dpu.path()}, d2c.path(), ir_pre.path());
  const ImageBytes image = built(input, 3);
  EXPECT_NE(stamp_of(image, kDpu), kSampleVersion);
  EXPECT_NE(stamp_of(image, kD2c), kSampleVersion);
  EXPECT_EQ(stamp_of(image, kIrPre), 0x37U);
}

}  // namespace
}  // namespace vq3900::test
