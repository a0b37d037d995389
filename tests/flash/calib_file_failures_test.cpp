#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "state/engine.h"
#include "support/calib_file_fixture.h"
#include "support/capture.h"
#include "support/failing_new.h"
#include "support/image_files.h"
#include "support/lut_grids.h"

namespace vq3900::test {
namespace {

using CalibFileFailure = CalibFile;

std::string not_loaded(const std::string& path) {
  return "error: load_input_configs, path=" + path + " \n";
}

std::string not_converted(const std::string& path) {
  return "error: cams_calibration_params_to_register_converter for \"" + path + "\"\n";
}

std::string too_many(const char* section) {
  return std::string("error: too many records, section=") + section + "\n";
}

void expect_released() {
  EXPECT_FALSE(engine().calib.optimized_d2d.held());
  EXPECT_EQ(engine().calib.optimized_d2d_count, 0);
}

// --- before anything is created

TEST_F(CalibFileFailure, DifferentCountsAreRefusedAndNothingIsCreated) {
  CalibInput input;
  input.add("rig.xml", config()).add("rig.xml", config());
  for (const auto& [calibs, configs] : {std::pair{1, 2}, std::pair{2, 1}, std::pair{0, 2}, std::pair{2, 0}}) {
    CalibFlashInput_S record = input.record();
    record.calib_params_file_num = static_cast<std::uint8_t>(calibs);
    record.config_file_num = static_cast<std::uint8_t>(configs);
    hold_optimized_entries();
    EXPECT_EQ(build(record), prints_out(-6, "error: params error, calib_params_file_num != config_file_num\n"));
    expect_released();
    EXPECT_FALSE(std::filesystem::exists(path()));
  }
}

TEST_F(CalibFileFailure, NumbersOfTheOtherBuilderDoNotMatter) {
  CalibInput input;
  input.add("rig.xml", config());
  CalibFlashInput_S record = input.record();
  record.calib_record_num = 7;
  EXPECT_EQ(build(record), prints_out(0, digest_trace(3)));
}

TEST_F(CalibFileFailure, NullInputAndNullArraysAreRefusedSilently) {
  hold_optimized_entries();
  EXPECT_EQ(outcome_of([&] { return gen_calib_flash_file_de(nullptr, path().c_str()); }), silent(-2));
  expect_released();
  CalibInput input;
  input.add("rig.xml", config());
  CalibFlashInput_S record = input.record();
  record.config_files = nullptr;
  EXPECT_EQ(build(record), silent(-2));
  record = input.record();
  record.calib_params_files = nullptr;
  EXPECT_EQ(build(record), silent(-2));
  EXPECT_FALSE(std::filesystem::exists(path()));
}

TEST_F(CalibFileFailure, NullArraysOfNothingAreFine) {
  const CalibFlashInput_S record{};
  EXPECT_EQ(build(record), silent_success());
  EXPECT_EQ(main_image().size(), kImageSize);
}

// --- files that cannot be created

TEST_F(CalibFileFailure, ImageThatCannotBeCreatedIsNamed) {
  CalibInput input;
  input.add("rig.xml", config());
  const std::string directory = folder_.path("");
  for (const std::string& bad : {folder_.path("none/image.bin"), directory, std::string()}) {
    hold_optimized_entries();
    EXPECT_EQ(outcome_of([&] { return gen_calib_flash_file_de(&input.record(), bad.c_str()); }),
              prints_out(-1, not_created(bad)));
    expect_released();
  }
  EXPECT_EQ(outcome_of([&] { return gen_calib_flash_file_de(&input.record(), nullptr); }),
            prints_out(-1, not_created("(null)")));
  EXPECT_EQ(folder_.names(), std::vector<std::string>{"config1.ini"});
}

TEST_F(CalibFileFailure, LutFileThatCannotBeCreatedIsNamedAtItsFirstConfiguration) {
  std::filesystem::create_directory(path(kLutName));
  CalibInput input;
  input.add("1", config()).add("2", config(lut_settings()));
  EXPECT_EQ(build(input), prints_out(-1, digest_trace(4) + not_created(path(kLutName))));
  EXPECT_EQ(main_image(), ImageBytes());

  CalibInput without;
  without.add("1", config());
  EXPECT_EQ(build(without), prints_out(0, digest_trace(3)));
}

TEST_F(CalibFileFailure, FactoryFileThatCannotBeCreatedIsNamed) {
  std::filesystem::create_directory(path(kFactoryName));
  CalibInput input;
  input.add(calib("a.bin", "ab"), config());
  const Outcome outcome = build(input);
  EXPECT_EQ(outcome.code, -1);
  EXPECT_EQ(without_digest_traces(outcome.out), not_created(path(kFactoryName)));
}

#if defined(__unix__)
TEST_F(CalibFileFailure, FullDiskIsAFileThatCannotBeCreated) {
  CalibInput input;
  input.add(calib("a.bin", "ab"), config(lut_settings()));
  for (const char* const name : {kMainName, kLutName, kFactoryName}) {
    SCOPED_TRACE(name);
    std::filesystem::remove(path(name));
    std::filesystem::create_symlink("/dev/full", path(name));
    hold_optimized_entries();
    EXPECT_EQ(build(input), prints_out(-1, digest_trace(4) + not_created(path(name))));
    expect_released();
    std::filesystem::remove(path(name));
  }
  EXPECT_EQ(build(input), prints_out(0, digest_trace(4)));
}
#endif

// --- configurations that fail

struct BadConfig {
  const char* name;
  std::function<std::string(CalibFileFailure&, const TempFolder&)> path;
  std::int32_t code;
  const char* out;
  std::function<std::string(const std::string&)> err;
};

class CalibFileBadConfig : public CalibFile, public testing::WithParamInterface<BadConfig> {};

const std::vector<BadConfig>& bad_configs() {
  const auto says = [](const char* text) { return [text](const std::string&) { return std::string(text) + "\n"; }; };
  static const std::vector<BadConfig> kRows{
      {"missing",
       [](auto&, const TempFolder& folder) { return folder.path("none.ini"); },
       -1,
       "",
       [](const std::string& path) { return "Cannot open file " + path + "\n"; }},
      {"directory",
       [](auto&, const TempFolder& folder) { return folder.path(""); },
       -1,
       "",
       [](const std::string& path) { return "Cannot open file " + path + "\n"; }},
      {"long_path",
       [](auto&, const TempFolder&) { return std::string(257, 'p'); },
       4096,
       "",
       says("Error: File name exceeds the maximum length.")},
      {"missing_section",
       [](auto&, const TempFolder& folder) {
         return folder.write("bad.ini", CalibInputText().remove_section("d2d").text());
       },
       -2,
       "",
       says("d2d section not found!")},
      {"missing_key",
       [](auto&, const TempFolder& folder) {
         return folder.write("bad.ini", CalibInputText().remove("baseline").text());
       },
       -2,
       "",
       says("Field \"baseline\" not found in section \"basic\"")},
      {"bad_number",
       [](auto&, const TempFolder& folder) {
         return folder.write("bad.ini", CalibInputText().set("cam_type", "256").text());
       },
       -3,
       "Caught an exception: field is out of UInt8 range: 256\n",
       [](const std::string&) { return std::string(); }},
  };
  return kRows;
}

INSTANTIATE_TEST_SUITE_P(Configs, CalibFileBadConfig, testing::ValuesIn(bad_configs()),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_P(CalibFileBadConfig, EndsTheBuildWithTheLoadersResult) {
  for (int place = 0; place < 2; ++place) {
    SCOPED_TRACE(place);
    CalibInput input;
    if (place == 1) input.add("rig.xml", config(lut_settings()));
    const std::string bad = GetParam().path(*this, folder_);
    input.add("rig.xml", bad).add("rig.xml", config());
    hold_optimized_entries();
    EXPECT_EQ(
        build(input),
        (Outcome{GetParam().code, digest_trace(4 * place) + GetParam().out + not_loaded(bad), GetParam().err(bad)}));
    expect_released();
    EXPECT_EQ(main_image(), ImageBytes());  // closed as it stands
    EXPECT_TRUE(place == 0 || lut_file().empty());
  }
}

TEST_F(CalibFileFailure, NullPathOfAConfigurationCannotBeOpened) {
  CalibInput input;
  input.add("rig.xml", config());
  CalibFlashInput_S record = input.record();
  const char* const paths[] = {nullptr};
  record.config_files = paths;
  const Outcome outcome = build(record);
  EXPECT_EQ(outcome.code, -1);
  EXPECT_EQ(outcome.out, not_loaded("(null)"));
}

TEST_F(CalibFileFailure, InvalidTemperaturesNameTheConfiguration) {
  set_calib_temp(0.5F, 30, 31.25F);
  CalibInput input;
  const std::string first = config();
  input.add("rig.xml", first);
  hold_optimized_entries();
  EXPECT_EQ(
      build(input),
      prints_out(-2,
                 "invalid calibration temperature,left:0.500000,right:30.000000,ldm:31.250000" + not_converted(first)));
  expect_released();
  EXPECT_EQ(main_image(), ImageBytes());
  give_temperatures();
  EXPECT_EQ(build(input), prints_out(0, digest_trace(3)));
  expect_counts(1, 1, 1);
}

TEST_F(CalibFileFailure, ConfigurationIsLoadedBeforeTheTemperaturesAreLookedAt) {
  set_calib_temp(0, 0, 0);
  CalibInput input;
  input.add("rig.xml", folder_.path("none.ini"));
  EXPECT_EQ(build(input).code, -1);
}

// --- factory-align files that fail

TEST_F(CalibFileFailure, CalibrationFileThatCannotBeReadIsNamed) {
  for (const std::string& bad : {folder_.path("none.bin"), folder_.path("")}) {
    CalibInput input;
    input.add(calib("a.bin", "ab"), config()).add(bad, config());
    EXPECT_EQ(build(input), prints_out(-1, digest_trace(6) + not_created(bad)));
    EXPECT_EQ(main_image(), ImageBytes());
  }
}

TEST_F(CalibFileFailure, CalibrationFilesThatNobodyStoresNeedNotBeThere) {
  CalibInput input;
  input.add("none.xml", config()).add("none.bin", config()).add("", config());
  EXPECT_EQ(build(input), prints_out(0, digest_trace(9)));
}

TEST_F(CalibFileFailure, CalibrationFilesOfDifferentSizesAreRefused) {
  CalibInput input;
  const std::string other = calib("b.bin", "abcd");
  input.add(calib("a.bin", "abc"), config()).add(other, config());  // the same even size, all the same
  const Outcome outcome = build(input);
  EXPECT_EQ(outcome.code, -5);
  EXPECT_EQ(outcome.out, digest_trace(6) + "error: factory align file size differs, path=" + other + " \n");
  EXPECT_EQ(main_image(), ImageBytes());
}

TEST_F(CalibFileFailure, CalibrationFilesBeyondTheRoomAreRefused) {
  CalibInput large;
  large.add(calib("a.bin", std::string(16325, 'x')), config());
  EXPECT_EQ(build(large), prints_out(-5, digest_trace(3) + too_many("factory align")));
  CalibInput many;
  for (const char* const name : {"1.bin", "2.bin", "3.bin"})
    many.add(calib(name, std::string(8000, 'x')), config());
  EXPECT_EQ(build(many), prints_out(-5, digest_trace(9) + too_many("factory align")));
  EXPECT_EQ(main_image(), ImageBytes());
}

// --- sections that are full

TEST_F(CalibFileFailure, D2cSectionTakesTwentyFourRecords) {
  CalibInput input;
  for (int i = 1; i <= 24; ++i)
    input.add("1", config({{"d2d_params_unit_in_R_en", "1"}, {"d2d_params_unit", std::to_string(i)}}));
  EXPECT_EQ(build(input), prints_out(0, digest_trace(72)));
  expect_counts(1, 24, 24);
  input.add("1", config({{"d2d_params_unit_in_R_en", "1"}, {"d2d_params_unit", "25"}}));
  hold_optimized_entries();
  EXPECT_EQ(build(input), prints_out(-5, digest_trace(72 + 2) + too_many("d2c")));
  expect_released();
  EXPECT_EQ(main_image(), ImageBytes());
}

TEST_F(CalibFileFailure, D2dSectionTakesFortyEightRecords) {
  CalibInput input;
  for (int i = 0; i < 48; ++i)
    input.add("1", config({{"disp_offset", std::to_string(10 * i)}}));
  EXPECT_EQ(build(input), prints_out(0, digest_trace(144)));
  expect_counts(1, 1, 48);
  input.add("1", config({{"disp_offset", "480"}}));
  EXPECT_EQ(build(input), prints_out(-5, digest_trace(147) + too_many("d2d")));
  EXPECT_EQ(main_image(), ImageBytes());
}

TEST_F(CalibFileFailure, LutDataMustFitTheirRoom) {
  set_cam_mode(1);
  CalibInput input;
  input.add("1", config(lut_settings()));
  for (const std::uint32_t height : {204U, 208U}) {  // 4 * 4 * 208 * 208 is all of the 692224 bytes
    give_grid(1, counting_grid(208, height, 0));
    give_grid(0, counting_grid(208, height, 0));
    ASSERT_EQ(convert().code, 0);
    if (height == 204) {
      EXPECT_EQ(build(input), prints_out(0, digest_trace(4)));
      expect_lut_data_section(lut_file(), 52 + 4 * 4 * 208 * 204);
    } else {
      EXPECT_EQ(build(input), prints_out(-5, digest_trace(2) + too_many("lut data")));
      EXPECT_EQ(lut_file(), ImageBytes());
    }
  }
}

// --- after a failure, and without memory

TEST_F(CalibFileFailure, GoodBuildAfterAFailureIsAsIfNothingHadHappened) {
  CalibInput good;
  good.add("1", config(lut_settings()));
  EXPECT_EQ(build(good), prints_out(0, digest_trace(4)));
  const ImageBytes lut = lut_file();
  CalibInput bad;
  bad.add("1", config(lut_settings())).add("2", folder_.path("none.ini"));
  EXPECT_EQ(build(bad).code, -1);
  EXPECT_EQ(build(good), prints_out(0, digest_trace(4)));
  expect_counts(1, 1, 1);
  expect_flash_section(lut_file(), flash::kDirectory, 1);
  EXPECT_EQ(lut_file().size(), lut.size());
}

TEST_F(CalibFileFailure, OptimizedEntriesAreReleasedOnSuccessToo) {
  CalibInput input;
  input.add("1", config());
  hold_optimized_entries();
  EXPECT_EQ(build(input).code, 0);
  expect_released();
}

TEST_F(CalibFileFailure, NoMemoryIsNeverAnException) {
  CalibInput input;
  input.add(calib("a.bin", "ab"), config(lut_settings()));
  CalibFlashInput_S& record = input.record();
  const std::string out = path();
  bool failed = true;
  for (long successes = 0; failed; successes += 1 + successes / 16) {
    std::int32_t code = 0;
    std::filesystem::remove(out);
    printed_by([&] {
      const FailingNew failing(successes);
      code = gen_calib_flash_file_de(&record, out.c_str());
      failed = allocation_failed;
    });
    // The configuration loader answers -3 to every exception.
    ASSERT_TRUE(failed ? code == -2 || code == -3 : code == 0) << code << " after " << successes;
  }
}

}  // namespace
}  // namespace vq3900::test
