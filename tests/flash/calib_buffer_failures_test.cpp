#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "state/engine.h"
#include "support/calib_builds.h"
#include "support/calib_images.h"
#include "support/calib_samples.h"
#include "support/capture.h"
#include "support/engine_fixture.h"
#include "support/numbers.h"

namespace vq3900::test {
namespace {

std::string failed_load(int number, int code) {
  return "error: load_input_configs, config_num=" + std::to_string(number) + ",error_code=" + std::to_string(code) +
         " \n";
}

std::string failed_set(int number) {
  return "error: set_calibrate_params_multi for config number= " + std::to_string(number) + ", error code=-2\n";
}

std::string failed_convert(int number, int code) {
  return "error: align_ir_ir_rgb_params_to_register_converter for config number=" + std::to_string(number) +
         ", error code=" + std::to_string(code) + "\n";
}

std::string too_many(const char* section) {
  return std::string("error: too many records, section=") + section + "\n";
}

class CalibBufferFailure : public EngineTest {
 protected:
  CalibBufferFailure() { give_temperatures(); }
  ~CalibBufferFailure() override { expect_good_build(); }

  // A build that fails; the optimized entries that are held go.
  static BufferBuild failing(CalibFlashInput_S& record, const BufferSizes& sizes = {}) {
    hold_optimized_entries();
    BufferBuild build = built_in_memory(record, sizes);
    EXPECT_FALSE(engine().calib.optimized_d2d.held());
    EXPECT_EQ(engine().calib.optimized_d2d_count, 0);
    return build;
  }
  static BufferBuild failing(CalibInput& input, const BufferSizes& sizes = {}) {
    return failing(input.record(), sizes);
  }

  // Whatever failed before, this works.
  static void expect_good_build() {
    give_temperatures();
    CalibInput input;
    input.add(record_of(parallel_rig()), plain_text(lut_settings()));
    const BufferBuild build = built_in_memory(input, {20480, kLutSize, kFactorySize});
    EXPECT_EQ(build.outcome,
              (Outcome{0, std::string(kContentMode) + kTwoLutsConverted + digest_trace(5), lines_of(step_messages())}));
    EXPECT_EQ(build.passed, passed_of());
    expect_flash_section(build.main, flash::kRectify, 1);
    expect_flash_section(build.lut, flash::kDirectory, 1);
    expect_flash_section(build.factory, flash::kFactoryRecords, 1);
  }
};

void expect_untouched(const BufferBuild& build) {
  EXPECT_TRUE(is_all(build.main, kRubbish));
  EXPECT_TRUE(is_all(build.lut, kRubbish));
  EXPECT_TRUE(is_all(build.factory, kRubbish));
}

void expect_filled(const BufferBuild& build) {
  EXPECT_TRUE(is_all(build.main, 0xFF));
  EXPECT_TRUE(is_all(build.factory, 0xFF));
}

// --- before the first configuration

TEST_F(CalibBufferFailure, DifferentCountsAreRefusedAndNoBufferIsTouched) {
  const std::string message = "error: calib params nums not match the config file num\n";
  CalibInput input;
  input.add(parallel(), plain_text()).add(parallel(), plain_text());
  for (const auto& [calibs, configs] : {std::pair{1, 2}, std::pair{2, 1}, std::pair{0, 2}, std::pair{2, 0}}) {
    CalibFlashInput_S& record = input.record();
    record.calib_record_num = static_cast<std::uint8_t>(calibs);
    record.config_file_num = static_cast<std::uint8_t>(configs);
    const BufferBuild build = failing(record, {20480, kLutSize, kFactorySize});
    EXPECT_EQ(build.outcome, prints_out(-6, message));
    EXPECT_EQ(build.passed, std::vector<std::string>{message});
    expect_untouched(build);
  }
}

TEST_F(CalibBufferFailure, NumbersOfTheOtherBuilderDoNotMatter) {
  CalibInput input;
  input.add(parallel(), plain_text());
  CalibFlashInput_S& record = input.record();
  record.calib_params_file_num = 9;
  EXPECT_EQ(built_in_memory(record).outcome.code, 0);
}

TEST_F(CalibBufferFailure, NullPointersAreRefusedSilently) {
  std::vector<std::string> passed;
  DeLogCallback log = [&passed](const char* text) { passed.emplace_back(text); };
  std::uint32_t word = 7;
  hold_optimized_entries();
  EXPECT_EQ(
      outcome_of([&] { return gen_calib_flash_param_de(nullptr, &word, &log, 20480, nullptr, 0, 1, nullptr, 0); }),
      silent(-2));
  EXPECT_FALSE(engine().calib.optimized_d2d.held());
  EXPECT_EQ(word, 7U);
  CalibInput input;
  input.add(parallel(), plain_text());
  BufferBuild build = failing(input, {-1, kLutSize, kFactorySize});
  EXPECT_EQ(build.outcome, silent(-2));
  expect_untouched(build);
  for (const bool configs : {true, false}) {
    CalibFlashInput_S& record = input.record();
    if (configs) {
      record.config_files = nullptr;
    } else {
      record.calib_records = nullptr;
    }
    build = failing(record, {20480, kLutSize, kFactorySize});
    EXPECT_EQ(build.outcome, silent(-2));
    EXPECT_TRUE(build.passed.empty());
    expect_untouched(build);
  }
  EXPECT_TRUE(passed.empty());
}

struct SmallBuffer {
  const char* name;
  BufferSizes sizes;
  std::string message;
};

TEST_F(CalibBufferFailure, BuffersThatAreTooSmallAreRefusedUntouched) {
  const std::vector<SmallBuffer> rows{
      {"main, a byte", {20479, kLutSize, kFactorySize}, "file buffer too small, size=20479, needed=20480"},
      {"main, empty", {0, kLutSize, kFactorySize}, "file buffer too small, size=0, needed=20480"},
      {"factory, a byte", {20480, kLutSize, 6347}, "factory align buffer too small, size=6347, needed=6348"},
      {"factory, empty", {20480, kLutSize, 0}, "factory align buffer too small, size=0, needed=6348"},
  };
  for (const SmallBuffer& row : rows) {
    SCOPED_TRACE(row.name);
    CalibInput input;
    input.add(parallel(), plain_text(lut_settings()));
    const BufferBuild build = failing(input, row.sizes);
    EXPECT_EQ(build.outcome, prints_out(-2, "error: " + row.message + "\n"));
    EXPECT_EQ(build.passed, std::vector<std::string>{"error: " + row.message + "\n"});
    expect_untouched(build);
  }
}

TEST_F(CalibBufferFailure, NegativeSizesAreTooSmall) {
  CalibInput input;
  input.add(parallel(), plain_text());
  std::uint32_t word = 7;
  DeLogCallback log = [](const char*) {};
  EXPECT_EQ(
      outcome_of([&] { return gen_calib_flash_param_de(&input.record(), &word, &log, -1, nullptr, 0, 1, nullptr, 0); }),
      prints_out(-2, "error: file buffer too small, size=-1, needed=20480\n"));
  EXPECT_EQ(word, 7U);
  ImageBytes main(20480);
  auto* const buffer = reinterpret_cast<std::uint32_t*>(main.data());
  EXPECT_EQ(outcome_of([&] {
              return gen_calib_flash_param_de(&input.record(), buffer, &log, 20480, nullptr, 0, 1, &word, -5);
            }),
            prints_out(-2, "error: factory align buffer too small, size=-5, needed=6348\n"));
  EXPECT_EQ(word, 7U);
}

TEST_F(CalibBufferFailure, ImageWithAlignmentNeedsItsWholeSize) {
  hold_alignment_records(1);
  CalibInput input;
  input.add(parallel(), plain_text()).alignment_switch(1);
  const BufferBuild build = failing(input, {24575});
  EXPECT_EQ(build.outcome, prints_out(-2, "error: file buffer too small, size=24575, needed=24576\n"));
  expect_untouched(build);
  EXPECT_EQ(de_release_alignment_records(), 0);
}

// --- the LUT buffer

TEST_F(CalibBufferFailure, LutWithoutALutBufferIsRefused) {
  const std::string message = "error: lut_section_buffer not initialized\n";
  CalibInput input;
  input.add(parallel(), plain_text()).add(parallel(), plain_text(lut_settings()));
  const BufferBuild build = failing(input, {20480, -1, 60 + 2 * 6288});
  EXPECT_EQ(build.outcome,
            (Outcome{-4,
                     kContentMode + digest_trace(4) + kContentMode + kTwoLutsConverted + digest_trace(1) + message,
                     lines_of(step_messages() + step_messages())}));
  EXPECT_EQ(build.passed, passed_of() + passed_of() + std::vector<std::string>{message});
  expect_filled(build);
}

TEST_F(CalibBufferFailure, LutBufferThatIsTooSmallIsFilledAndRefused) {
  for (const int size : {kLutSize - 1, 4096, 1, 0}) {
    SCOPED_TRACE(size);
    const std::string message = "error: lut_section_buffer too small, size=" + std::to_string(size) +
                                ", needed=" + std::to_string(kLutSize) + "\n";
    CalibInput input;
    input.add(parallel(), plain_text(lut_settings()));
    const BufferBuild build = failing(input, {20480, size, kFactorySize});
    EXPECT_EQ(
        build.outcome,
        (Outcome{
            -4, std::string(kContentMode) + kTwoLutsConverted + digest_trace(5) + message, lines_of(step_messages())}));
    EXPECT_EQ(build.passed, passed_of() + std::vector<std::string>{message});
    expect_filled(build);
    EXPECT_TRUE(is_all(build.lut, 0xFF));
  }
}

TEST_F(CalibBufferFailure, WithoutLutsTheSizeOfTheirBufferDoesNotMatter) {
  CalibInput input;
  input.add(parallel(), plain_text());
  ImageBytes main(20480);
  DeLogCallback log = [](const char*) {};
  auto* const buffer = reinterpret_cast<std::uint32_t*>(main.data());
  EXPECT_EQ(outcome_of([&] {
              return gen_calib_flash_param_de(&input.record(), buffer, &log, 20480, nullptr, -3, 1, nullptr, 0);
            }).code,
            0);
}

TEST_F(CalibBufferFailure, NegativeSizeOfTheLutBufferIsTooSmall) {
  CalibInput input;
  input.add(parallel(), plain_text(lut_settings()));
  ImageBytes main(20480);
  std::uint8_t byte = 7;
  DeLogCallback log = [](const char*) {};
  auto* const buffer = reinterpret_cast<std::uint32_t*>(main.data());
  EXPECT_EQ(outcome_of([&] {
              return gen_calib_flash_param_de(&input.record(), buffer, &log, 20480, &byte, -3, 1, nullptr, 0);
            }).code,
            -4);
  EXPECT_EQ(byte, 7);
}

// --- configurations that fail

TEST_F(CalibBufferFailure, ConfigurationThatDoesNotLoadIsNumbered) {
  struct Row {
    std::string entry;
    const char* mode;
    int code;
    std::string out, err;
  };
  const TempFile bad_file(CalibInputText().set("cam_type", "256").text());
  const std::vector<Row> rows{
      {CalibInputText().remove_section("d2d").text(), kContentMode, -2, "", "d2d section not found!\n"},
      {CalibInputText().remove("baseline").text(),
       kContentMode,
       -2,
       "",
       "Field \"baseline\" not found in section \"basic\"\n"},
      {bad_file.path(), kPathMode, -3, "Caught an exception: field is out of UInt8 range: 256\n", ""},
  };
  for (const Row& row : rows) {
    for (int place = 0; place < 2; ++place) {
      SCOPED_TRACE(testing::Message() << row.code << " at " << place);
      CalibInput input;
      if (place == 1) input.add(parallel(), plain_text());
      input.add(parallel(), row.entry);
      const BufferBuild build = failing(input, {20480, -1, 60 + 2 * 6288});
      const std::string before = place == 0 ? "" : kContentMode + digest_trace(4);
      EXPECT_EQ(build.outcome,
                (Outcome{row.code,
                         before + row.mode + row.out + failed_load(place, row.code),
                         (place == 0 ? "" : lines_of(step_messages())) + row.err}));
      const std::vector<std::string> tail{row.mode, "error: load_input_configs failed\n"};
      EXPECT_EQ(build.passed, place == 0 ? tail : passed_of() + tail);
      expect_filled(build);
    }
  }
}

TEST_F(CalibBufferFailure, NullEntryIsATextThatDoesNotLoad) {
  CalibInput input;
  input.add(parallel(), plain_text());
  CalibFlashInput_S& record = input.record();
  input.config_pointers()[0] = nullptr;
  EXPECT_EQ(failing(record).outcome,
            (Outcome{-2, kContentMode + failed_load(0, -2), "Error: config param is invalid.\n"}));
}

TEST_F(CalibBufferFailure, CalibrationThatIsRefusedIsNumbered) {
  DeCalibRecord_S bad = parallel();
  bad.right_ir.fy = kNan;
  const std::string passed = "error: set_calibrate_params_multi failed\n";
  for (const bool null : {false, true}) {
    CalibInput input;
    input.add(parallel(), plain_text()).add(bad, plain_text());
    CalibFlashInput_S& record = input.record();
    if (null) input.calib_pointers()[1] = nullptr;
    const BufferBuild build = failing(record, {20480, -1, 60 + 2 * 6288});
    EXPECT_EQ(build.outcome,
              (Outcome{-2, kContentMode + digest_trace(4) + kContentMode + failed_set(1), lines_of(step_messages())}));
    EXPECT_EQ(build.passed, passed_of() + std::vector<std::string>({kContentMode, passed}));
    expect_filled(build);
  }
}

TEST_F(CalibBufferFailure, ConversionThatFailsIsNumbered) {
  const std::string passed = "error: align_ir_ir_rgb_params_to_register_converter failed\n";
  set_calib_temp(0.5F, 30, 31.25F);
  CalibInput input;
  input.add(parallel(), plain_text());
  BufferBuild build = failing(input, {20480, -1, kFactorySize});
  EXPECT_EQ(build.outcome,
            prints_out(-2,
                       std::string(kContentMode) +
                           "invalid calibration temperature,left:0.500000,right:30.000000,ldm:31.250000" +
                           failed_convert(0, -2)));
  EXPECT_EQ(build.passed, (std::vector<std::string>{kContentMode, "invalid calibration temperature", passed}));
  expect_filled(build);

  give_temperatures();
  CalibInput second;
  second.add(parallel(), plain_text()).add(parallel(), plain_text(with(lut_settings(), "lut_sample_bit", "7")));
  build = failing(second);
  const char* const step = "parse_rectify_d2c_params_from_stereo_with_rgb_calib_params() failed!";
  EXPECT_EQ(build.outcome.code, -3);
  EXPECT_EQ(
      without_digest_traces(build.outcome.out),
      std::string(kContentMode) + kContentMode + "gen left camera undistortion lut error.\n" + failed_convert(1, -3));
  EXPECT_EQ(build.passed, passed_of() + std::vector<std::string>({kContentMode, step_messages()[0], step, passed}));
}

// What the first configuration has put into the buffers is not left there.
TEST_F(CalibBufferFailure, FailureBehindALutLeavesNothingInTheBuffers) {
  CalibInput input;
  input.add(parallel(), plain_text(lut_settings())).add(parallel(), "");
  const BufferBuild build = failing(input, {20480 + 100, kLutSize + 100, 60 + 2 * 6288});
  EXPECT_LT(build.outcome.code, 0);
  EXPECT_EQ(build.passed.size(), passed_of().size() + 2);
  expect_filled(build);
  EXPECT_TRUE(is_all(build.lut, 0xFF));
}

// --- sections that are full

// Builds with so many configurations, of which the last one is one too many.
void expect_full(const std::function<CalibSettings(int)>& settings, int most, const char* section,
                 const BufferSizes& sizes) {
  CalibInput input;
  for (int i = 0; i < most; ++i)
    input.add(record_of(parallel_rig()), plain_text(settings(i)));
  EXPECT_EQ(built_in_memory(input, sizes).outcome.code, 0);
  input.add(record_of(parallel_rig()), plain_text(settings(most)));
  hold_optimized_entries();
  const BufferBuild build = built_in_memory(input, sizes);
  EXPECT_FALSE(engine().calib.optimized_d2d.held());
  EXPECT_EQ(build.outcome.code, -5);
  EXPECT_TRUE(build.outcome.out.ends_with(too_many(section)));
  EXPECT_EQ(build.passed.back(), too_many(section));
  EXPECT_EQ(build.passed.size(), 7 * static_cast<std::size_t>(most + 1) + 1);
  expect_filled(build);
}

TEST_F(CalibBufferFailure, RectifySectionTakesEightRecords) {
  expect_full([](int i) { return CalibSettings{{"src_img_right_chop", std::to_string(i)}}; }, 8, "rectify", {});
}

TEST_F(CalibBufferFailure, D2cSectionTakesTwentyFourRecords) {
  expect_full([](int i) { return CalibSettings{{"clip_left_w_depth", std::to_string(i)}}; }, 24, "d2c", {});
}

TEST_F(CalibBufferFailure, D2dSectionTakesFortyEightRecords) {
  expect_full(
      [](int i) {
        return CalibSettings{{"depth_mode", "1"}, {"disp_offset", std::to_string(10 * i)}};
      },
      48,
      "d2d",
      {});
}

TEST_F(CalibBufferFailure, LutDataTakeSixGrids) {
  expect_full([](int i) { return with(lut_settings(), "src_img_right_chop", std::to_string(64 * i)); },
              6,
              "lut data",
              {20480, 200000});
}

TEST_F(CalibBufferFailure, OptimizedEntriesAreReleasedOnSuccessToo) {
  CalibInput input;
  input.add(parallel(), plain_text());
  EXPECT_EQ(failing(input).outcome.code, 0);
}

}  // namespace
}  // namespace vq3900::test
