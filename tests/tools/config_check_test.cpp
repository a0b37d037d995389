#include "config_check.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "accepted_values.h"
#include "config/de_input.h"
#include "support/sample_texts.h"

namespace vq3900::test {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using tool::check_config;
using tool::Finding;
using tool::Severity;

std::uint32_t line_of(const std::string& text, const std::string& start) {
  const std::size_t at = text.find("\n" + start);
  EXPECT_NE(at, std::string::npos) << start;
  return static_cast<std::uint32_t>(std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(at), '\n')) + 2;
}

auto error_at(const std::string& place, const std::string& message) {
  return AllOf(testing::Field(&Finding::severity, Severity::kError),
               testing::Field(&Finding::place, place),
               testing::Field(&Finding::message, HasSubstr(message)));
}

auto warning_at(const std::string& place, const std::string& message) {
  return AllOf(testing::Field(&Finding::severity, Severity::kWarning),
               testing::Field(&Finding::place, place),
               testing::Field(&Finding::message, HasSubstr(message)));
}

TEST(ConfigCheck, SamplesAreClean) {
  EXPECT_THAT(check_config(stereo()), IsEmpty());
  EXPECT_THAT(check_config(sample("mono_640x480.ini")), IsEmpty());
}

TEST(ConfigCheck, SamplesHoldEveryKey) {
  for (const char* const name : {"stereo_1280x800.ini", "mono_640x480.ini"}) {
    IniDocument document;
    document.parse(sample(name));
    for (const KeyDescription& key : de_input_keys()) {
      EXPECT_NE(document.section(key.section).find(key.name), nullptr) << name << " " << key.section << "." << key.name;
    }
  }
}

TEST(ConfigCheck, MissingKeyIsNamedWithWhatItAccepts) {
  EXPECT_THAT(check_config(with(stereo(), "pre_win_size", "")),
              ElementsAre(error_at("disparity.pre_win_size", "the key is missing; accepted: 5, 7 or 9")));
  EXPECT_THAT(
      check_config(with(stereo(), "d2d_params_unit_in_R_en", "")),
      ElementsAre(error_at("scheme.d2d_params_unit_in_R_en", "missing beside d2d_params_unit; accepted: 0 to 1")));
}

TEST(ConfigCheck, OptionalKeysMayBeMissing) {
  EXPECT_THAT(check_config(with(stereo(), "depth_mode", "")), IsEmpty());
  EXPECT_THAT(check_config(with(stereo(), "disp_offset", "")), IsEmpty());
}

struct BadValue {
  const char* key;
  const char* value;
  const char* place;
  const char* message;
};

class ConfigCheckBadValue : public testing::TestWithParam<BadValue> {};

TEST_P(ConfigCheckBadValue, IsReportedWithPlaceAndAcceptedValues) {
  const BadValue& bad = GetParam();
  const std::string line = std::string(bad.key) + " = " + bad.value;
  const std::string text = with(stereo(), bad.key, line);
  const std::vector<Finding> findings = check_config(text);
  ASSERT_THAT(findings, ElementsAre(error_at(bad.place, bad.message)));
  EXPECT_EQ(findings[0].line, line_of(text, line));
}

INSTANTIATE_TEST_SUITE_P(
    Values, ConfigCheckBadValue,
    testing::Values(
        BadValue{"pre_win_size", "6", "disparity.pre_win_size", "6 is out of range; accepted: 5, 7 or 9"},
        BadValue{"win_size", "32", "disparity.win_size", "32 is out of range; accepted: 0 to 31"},
        BadValue{"win_size", "nine", "disparity.win_size", "nine is not a long long; accepted: 0 to 31"},
        BadValue{"win_size", "9 # px", "disparity.win_size", "a value takes no comment behind it"},
        BadValue{"min_disparity", "-129", "disparity.min_disparity", "accepted: -128 to 127"},
        BadValue{"arm_short_mask", "0x40000000", "disparity.arm_short_mask", "accepted: 0 to 1073741823"},
        BadValue{"lrc_en", "yes", "disparity.lrc_en", "yes is not a bool; accepted: true, false, 1 or 0"},
        BadValue{"cam_mode", "256", "basic.cam_mode", "field is out of UInt8 range: 256; accepted: 0 to 1"},
        BadValue{"depth_unit", "0.3", "basic.depth_unit", "accepted: 0.1, 0.2, 0.4, 0.8 or 1.6"},
        BadValue{"start_rows", "4096", "basic.start_rows", "accepted: 0 to 4095"},
        BadValue{"d2c_recovery_expand_width", "1", "basic.d2c_recovery_expand_width", "accepted: 0 to 0.99609375"},
        BadValue{"in_ir_res", "{1280}", "mode.in_ir_res", "is not a list of 2 numbers in braces, such as {0,0}"},
        BadValue{"in_ir_res", "1280,800", "mode.in_ir_res", "2 numbers in braces, each 1 to 4095"},
        BadValue{"dpu_desc", "seventeen letters", "mode.dpu_desc", "longer than 16 characters"},
        BadValue{"sp_coef", "{4,0,0,0}", "disparity.sp_coef", "4 is out of range; accepted: -4 to 3.999023438"},
        BadValue{"sp_coef", "{0,0,0,1}", "disparity.sp_coef", "1 is out of range; accepted: -1 to 0.9990234375"},
        BadValue{"x", "{1,2,3}", "gpm.x", "16 numbers in braces, each 0 to 4095"},
        BadValue{"texture_t0", "2048", "gpm.texture_t0", "accepted: 0 to 2047"},
        BadValue{"d2d_params_unit", "1e400", "scheme.d2d_params_unit", "1e400 is not a float; accepted: a number"},
        BadValue{"hw_d2d_en", "2", "scheme.hw_d2d_en", "accepted: 0 to 1"}),
    [](const auto& test) {
      const std::string key = test.param.key;
      return key + "_" + std::to_string(test.index);
    });

TEST(ConfigCheck, GrammarFaultIsTheOnlyFinding) {
  const std::vector<Finding> findings = check_config("[mode]\nversion\n");
  ASSERT_EQ(findings.size(), 1U);
  EXPECT_EQ(findings[0].line, 2U);
  EXPECT_EQ(tool::finding_line("a.ini", findings[0]), "a.ini:2: error: l2: ini parsing failed, no '=' found");
}

TEST(ConfigCheck, MissingSectionsAreNamed) {
  EXPECT_THAT(check_config(""),
              ElementsAre(error_at("[mode]", "missing or empty"),
                          error_at("[basic]", "missing or empty"),
                          error_at("[disparity]", "missing or empty"),
                          error_at("[extend_chop]", "missing or empty"),
                          error_at("[gpm]", "missing or empty"),
                          warning_at("[scheme]", "all zero")));
}

TEST(ConfigCheck, UnknownKeysAndSectionsAreWarnedOf) {
  EXPECT_THAT(check_config(stereo() + "colour = 3\n[extra]\nk = v\n"),
              ElementsAre(warning_at("scheme.colour", "no such key"), warning_at("[extra]", "no such section")));
}

TEST(ConfigCheck, OldTileKeyIsPointedToItsSuccessor) {
  EXPECT_THAT(
      check_config(with(stereo(), "tile_overlap_y_traverse", "tile_overlap_y = 16")),
      testing::UnorderedElementsAre(error_at("disparity.tile_overlap_y_traverse", "missing"),
                                    warning_at("disparity.tile_overlap_y", "the key is tile_overlap_y_traverse")));
}

TEST(ConfigCheck, RepeatedKeyIsWarnedOf) {
  EXPECT_THAT(check_config(with(stereo(), "arm_len", "arm_len = 3\narm_len = 4")),
              ElementsAre(warning_at("arm_len", "the last value counts")));
}

TEST(ConfigCheck, StereoRectifiesBothCamerasOrNone) {
  EXPECT_THAT(check_config(with(stereo(), "rectify_mode", "rectify_mode = 1")),
              ElementsAre(error_at("basic.rectify_mode", "accepted: 2 or 3")));
}

TEST(ConfigCheck, StereoIsNotRotated) {
  EXPECT_THAT(check_config(with(stereo(), "rotate_90_en", "rotate_90_en = true")),
              ElementsAre(error_at("basic.rotate_90_en", "not rotated")));
}

TEST(ConfigCheck, SingleCameraIsRectifiedAlone) {
  EXPECT_THAT(check_config(with(sample("mono_640x480.ini"), "rectify_mode", "rectify_mode = 2")),
              ElementsAre(error_at("basic.rectify_mode", "accepted: 0, 1 or 3")));
}

TEST(ConfigCheck, ReferencePlaneIsNeededForRelativeDepth) {
  EXPECT_THAT(check_config(with(sample("mono_640x480.ini"), "ref_dist", "ref_dist = 0")),
              ElementsAre(warning_at("scheme.ref_dist", "accepted: above 128")));
}

TEST(ConfigCheck, ExtendedImageMustFitTwelveBits) {
  EXPECT_THAT(check_config(with(stereo(), "extend_tar", "extend_tar = {2000,1000,8,8}")),
              ElementsAre(error_at("extend_chop.extend_tar", "the extended width is 4280; accepted: up to 4095")));
}

TEST(ConfigCheck, ChopMustLeaveAnImage) {
  EXPECT_THAT(check_config(with(stereo(), "chop", "chop = {64,32,400,500}")),
              ElementsAre(error_at("extend_chop.chop", "chops 900 off an extended height of 816")));
}

TEST(ConfigCheck, OutputSizeThatDoesNotFollowIsWarnedOf) {
  EXPECT_THAT(check_config(with(stereo(), "chop", "chop = {64,40,8,8}")),
              ElementsAre(warning_at("mode.chop_out_res", "the output width after chopping is 1272, not 1280")));
}

TEST(ConfigCheck, NumberOfEnabledColumnsIsHeldAgainstTheRows) {
  EXPECT_THAT(check_config(with(stereo(), "gp_enabled_cols", "gp_enabled_cols = 3")),
              ElementsAre(warning_at("gpm.gp_enabled_cols", "enables 4 columns, not 3")));
}

TEST(ConfigCheck, FindingsComeInTheOrderOfTheLines) {
  std::string text = with(stereo(), "texture_t0", "texture_t0 = -1");
  text = with(text, "laser_type", "laser_type = x");
  EXPECT_THAT(check_config(text), ElementsAre(error_at("mode.laser_type", ""), error_at("gpm.texture_t0", "")));
}

}  // namespace
}  // namespace vq3900::test
