#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "state/engine.h"
#include "support/calib_builds.h"
#include "support/calib_images.h"
#include "support/calib_samples.h"
#include "support/capture.h"
#include "support/engine_fixture.h"
#include "support/failing_new.h"
#include "support/numbers.h"

namespace vq3900::test {
namespace {

class BufferSize : public EngineTest {
 protected:
  BufferSize() { give_temperatures(); }
};

constexpr std::uint32_t kUnset = 0xEEEEEEEE;
constexpr auto kGridBytes = static_cast<std::uint32_t>(kLutBytes);

// --- the main image

TEST_F(BufferSize, OfTheImageFollowsRecordsAndSwitch) {
  struct Row {
    int records, alignment_switch;  // below 0: null
    std::uint32_t size;
  };
  constexpr Row kRows[] = {
      {0, -1, 20480}, {0, 0, 20480}, {0, 1, 20480}, {1, -1, 20480}, {1, 0, 20480}, {1, 1, 24576}, {4, 200, 24576}};
  for (const Row& row : kRows) {
    SCOPED_TRACE(testing::Message() << row.records << " records, switch " << row.alignment_switch);
    EXPECT_EQ(de_release_alignment_records(), 0);
    if (row.records > 0) hold_alignment_records(row.records);
    CalibInput input;
    if (row.alignment_switch >= 0) input.alignment_switch(static_cast<std::uint8_t>(row.alignment_switch));
    std::uint32_t size = kUnset;
    EXPECT_EQ(outcome_of([&] {
                get_file_buffer_size(&input.record(), &size);
                return 0;
              }),
              silent_success());
    EXPECT_EQ(size, row.size);
    const BufferBuild build = built_in_memory(input, {size});  // just that many bytes are written
    EXPECT_EQ(build.outcome, silent_success());
    EXPECT_EQ(built_in_memory(input, {size - 1}).outcome.code, -2);
  }
}

TEST_F(BufferSize, OfTheImageDoesNothingForNullPointers) {
  const CalibFlashInput_S input{};
  std::uint32_t size = kUnset;
  EXPECT_EQ(outcome_of([&] {
              get_file_buffer_size(nullptr, &size);
              get_file_buffer_size(&input, nullptr);
              get_file_buffer_size(nullptr, nullptr);
              return 0;
            }),
            silent_success());
  EXPECT_EQ(size, kUnset);
}

// --- the LUT file

struct Query {
  std::uint32_t size = kUnset;
  Printed printed;
  std::vector<std::string> passed;
};

Query asked(const CalibFlashInput_S& record) {
  Query query;
  DeLogCallback log = [&query](const char* text) { query.passed.emplace_back(text); };
  query.printed = printed_by([&] { get_lut_section_buffer_size(&record, &query.size, &log); });
  query.printed.out = without_digest_traces(query.printed.out);
  return query;
}

Query asked(CalibInput& input) {
  return asked(input.record());
}

std::string set_success(int number) {
  return "success: set_calibrate_params_multi for config number= " + std::to_string(number) + "\n";
}

std::string convert_success(int number) {
  return "success: align_ir_ir_rgb_params_to_register_converter for config number= " + std::to_string(number) + "\n";
}

// What the callback receives of a configuration that is converted.
std::vector<std::string> asked_of(const char* mode = kContentMode) {
  return std::vector<std::string>{mode, "success: set_calibrate_params_multi successful\n"} + step_messages() +
         std::vector<std::string>{"success: align_ir_ir_rgb_params_to_register_converter successful\n"};
}

TEST_F(BufferSize, MessagesOfTheQueryAreItsOwn) {
  const TempFile file(plain_text(lut_settings()));
  CalibInput input;
  input.add(parallel(), plain_text()).add(parallel(), file.path());
  const Query query = asked(input);
  EXPECT_EQ(query.size, 4096U + 48 + kGridBytes);
  EXPECT_EQ(query.printed.out,
            kContentMode + set_success(0) + convert_success(0) + kPathMode + set_success(1) + kTwoLutsConverted +
                convert_success(1));
  EXPECT_EQ(query.printed.err, lines_of(step_messages() + step_messages()));
  EXPECT_EQ(query.passed, asked_of() + asked_of(kPathMode));
}

TEST_F(BufferSize, WithoutALutIsTheDirectorysRoom) {
  CalibInput input;
  input.add(parallel(), plain_text()).add(parallel(), plain_text({{"mipi_channel_status", "1"}}));
  EXPECT_EQ(asked(input).size, 4096U);
}

TEST_F(BufferSize, WithoutConfigurationsNeedsNoCallback) {
  const CalibFlashInput_S none{};
  std::uint32_t size = kUnset;
  EXPECT_EQ(outcome_of([&] {
              get_lut_section_buffer_size(&none, &size, nullptr);
              return 0;
            }),
            silent_success());
  EXPECT_EQ(size, 4096U);
}

struct LutCase {
  const char* name;
  std::vector<CalibSettings> configs;
  std::uint32_t size;
};

TEST_F(BufferSize, IsJustWhatTheBuilderFills) {
  const CalibSettings lut = lut_settings();
  const CalibSettings mono = with(lut, "cam_type", "1");
  const CalibSettings narrow = with(lut, "src_img_right_chop", "64");
  const std::uint32_t head = 4096 + 48;
  const std::vector<LutCase> cases{
      {"one", {lut}, head + kGridBytes},
      {"LUT alone", {lut_settings("1")}, head + kGridBytes},
      {"two sections", {mono}, head + 52 + 2 * 4 * 1536},
      {"the same twice", {lut, lut}, head + kGridBytes},
      {"two rectifications, one grid", {lut, with(lut, "mipi_channel_status", "1")}, head + kGridBytes},
      {"two grids", {lut, narrow}, head + kGridBytes + 52 + 4 * 4 * 44 * 32},
      {"some without", {{}, lut, {{"mipi_channel_status", "1"}}}, head + kGridBytes},
      {"another after one without",
       {lut, {{"src_img_right_chop", "64"}}, narrow},
       head + kGridBytes + 52 + 4 * 4 * 1408},
  };
  for (const LutCase& row : cases) {
    SCOPED_TRACE(row.name);
    CalibInput input;
    for (const CalibSettings& settings : row.configs)
      input.add(parallel(), plain_text(settings));
    EXPECT_EQ(asked(input).size, row.size);
    const BufferBuild build = built_in_memory(input, {20480, static_cast<int>(row.size)});
    ASSERT_EQ(build.outcome.code, 0) << build.outcome.out;
    expect_lut_data_section(build.lut, row.size - head);
    EXPECT_EQ(built_in_memory(input, {20480, static_cast<int>(row.size) - 1}).outcome.code, -4);
    EXPECT_EQ(asked(input).size, row.size);  // nor does a build change a query
  }
}

TEST_F(BufferSize, QueryChangesNothingOfTheNextBuild) {
  CalibInput input;
  input.add(record_of(sample_rig()), plain_text(lut_settings())).add(parallel(), plain_text());
  const BufferSizes sizes{20480, 4096 + 48 + static_cast<int>(kGridBytes)};
  const BufferBuild alone = built_in_memory(input, sizes);
  ASSERT_EQ(alone.outcome.code, 0);
  reset_engine();
  give_temperatures();
  asked(input);
  asked(input);
  const BufferBuild after = built_in_memory(input, sizes);
  EXPECT_EQ(after.outcome, alone.outcome);
  expect_same_bytes(after.main, alone.main);
  expect_same_bytes(after.lut, alone.lut);
}

TEST_F(BufferSize, QueryKeepsTheOptimizedEntriesForTheBuilder) {
  CalibInput input;
  input.add(parallel(), plain_text());
  hold_optimized_entries();
  asked(input);
  EXPECT_TRUE(engine().calib.optimized_d2d.held());
}

TEST_F(BufferSize, NullInputOrSizeDoesNothing) {
  CalibInput input;
  input.add(parallel(), plain_text());
  DeLogCallback log = [](const char* text) { ADD_FAILURE() << text; };
  std::uint32_t size = kUnset;
  EXPECT_EQ(outcome_of([&] {
              get_lut_section_buffer_size(nullptr, &size, &log);
              get_lut_section_buffer_size(&input.record(), nullptr, &log);
              get_lut_section_buffer_size(nullptr, nullptr, nullptr);
              return 0;
            }),
            silent_success());
  EXPECT_EQ(size, kUnset);
}

// --- failures

TEST_F(BufferSize, DifferentCountsGiveTheBuildersTextAndNoSize) {
  const std::string message = "error: calib params nums not match the config file num\n";
  CalibInput input;
  input.add(parallel(), plain_text());
  CalibFlashInput_S& record = input.record();
  record.calib_record_num = 2;
  const Query query = asked(record);
  EXPECT_EQ(query.size, kUnset);
  EXPECT_EQ(query.printed.out, message);
  EXPECT_EQ(query.passed, std::vector<std::string>{message});
}

TEST_F(BufferSize, NullArraysGiveNoSize) {
  CalibInput input;
  input.add(parallel(), plain_text());
  CalibFlashInput_S record = input.record();
  record.config_files = nullptr;
  EXPECT_EQ(asked(record).size, kUnset);
  record = input.record();
  record.calib_records = nullptr;
  const Query query = asked(record);
  EXPECT_EQ(query.size, kUnset);
  EXPECT_EQ(query.printed.out, "");
  EXPECT_TRUE(query.passed.empty());
}

TEST_F(BufferSize, ConfigurationThatDoesNotLoadGivesNoSize) {
  CalibInput input;
  input.add(parallel(), plain_text()).add(parallel(), CalibInputText().remove_section("d2d").text());
  const Query query = asked(input);
  EXPECT_EQ(query.size, kUnset);
  EXPECT_EQ(query.printed.out,
            kContentMode + set_success(0) + convert_success(0) + kContentMode +
                "error: load_input_configs, config_num=1, error code=-2\n");
  EXPECT_EQ(query.printed.err, lines_of(step_messages()) + "d2d section not found!\n");
  EXPECT_EQ(query.passed, asked_of() + std::vector<std::string>{kContentMode});
}

TEST_F(BufferSize, CalibrationThatIsRefusedGivesNoSize) {
  DeCalibRecord_S bad = parallel();
  bad.left_ir.width = 0;
  CalibInput input;
  input.add(bad, plain_text());
  for (const bool null : {false, true}) {
    CalibFlashInput_S& record = input.record();
    if (null) input.calib_pointers()[0] = nullptr;
    const Query query = asked(record);
    EXPECT_EQ(query.size, kUnset);
    EXPECT_EQ(query.printed.out,
              std::string(kContentMode) + "error: set_calibrate_params_multi for config number= 0, error code=-2\n");
    EXPECT_EQ(query.passed, std::vector<std::string>{kContentMode});
  }
}

TEST_F(BufferSize, ConversionThatFailsGivesNoSize) {
  set_calib_temp(0.5F, 30, 31.25F);
  CalibInput input;
  input.add(parallel(), plain_text());
  const Query query = asked(input);
  EXPECT_EQ(query.size, kUnset);
  EXPECT_EQ(query.printed.out,
            kContentMode + set_success(0) +
                "invalid calibration temperature,left:0.500000,right:30.000000,ldm:31.250000"
                "error: align_ir_ir_rgb_params_to_register_converter for config number= 0, error code=-2\n");
  EXPECT_EQ(query.passed,
            (std::vector<std::string>{
                kContentMode, "success: set_calibrate_params_multi successful\n", "invalid calibration temperature"}));
}

void expect_full(const std::function<CalibSettings(int)>& settings, int most, const std::string& section) {
  CalibInput input;
  for (int i = 0; i < most; ++i)
    input.add(parallel(), plain_text(settings(i)));
  EXPECT_NE(asked(input).size, kUnset);
  input.add(parallel(), plain_text(settings(most)));
  const Query query = asked(input);
  EXPECT_EQ(query.size, kUnset);
  EXPECT_TRUE(query.printed.out.ends_with("error: too many records, section=" + section + "\n"));
  EXPECT_EQ(query.passed.back(), "error: too many records, section=" + section + "\n");
}

TEST_F(BufferSize, MoreThanSixGridsGiveNoSize) {
  expect_full([](int i) { return with(lut_settings(), "src_img_right_chop", std::to_string(64 * i)); }, 6, "lut data");
}

TEST_F(BufferSize, MoreThanFourteenRectificationsWithALutGiveNoSize) {
  expect_full([](int i) { return with(lut_settings(), "src_img_right_chop", std::to_string(i)); }, 14, "lut directory");
}

TEST_F(BufferSize, MissingCallbackRaisesAtTheFirstMessage) {
  CalibInput input;
  input.add(parallel(), plain_text());
  DeLogCallback empty;
  for (DeLogCallback* const callback : {static_cast<DeLogCallback*>(nullptr), &empty}) {
    std::uint32_t size = kUnset;
    const Printed printed = printed_by(
        [&] { EXPECT_THROW(get_lut_section_buffer_size(&input.record(), &size, callback), std::bad_function_call); });
    EXPECT_EQ(printed.out, kContentMode);
    EXPECT_EQ(size, kUnset);
    EXPECT_EQ(asked(input).size, 4096U);
  }
}

TEST_F(BufferSize, WhatTheCallbackThrowsPassesThroughAtEveryMessage) {
  CalibInput input;
  input.add(parallel(), plain_text(lut_settings()));
  for (std::size_t before = 0; before < asked_of().size(); ++before) {
    std::size_t messages = 0;
    std::uint32_t size = kUnset;
    DeLogCallback log = [&](const char*) {
      if (messages++ == before) throw std::runtime_error("enough");
    };
    printed_by([&] { EXPECT_THROW(get_lut_section_buffer_size(&input.record(), &size, &log), std::runtime_error); });
    EXPECT_EQ(messages, before + 1);
    // The last message comes before the grid is counted.
    EXPECT_EQ(size, kUnset);
    EXPECT_EQ(asked(input).size, 4096U + 48 + kGridBytes);
  }
}

TEST_F(BufferSize, NoMemoryIsNeverAnExceptionAndGivesNoSize) {
  CalibInput input;
  input.add(parallel(), plain_text(lut_settings()));
  CalibFlashInput_S& record = input.record();
  DeLogCallback log = [](const char*) {};
  bool failed = true;
  for (long successes = 0; failed; successes += 1 + successes / 16) {
    std::uint32_t size = kUnset;
    printed_by([&] {
      const FailingNew failing(successes);
      get_lut_section_buffer_size(&record, &size, &log);
      failed = allocation_failed;
    });
    ASSERT_EQ(size, failed ? kUnset : 4096 + 48 + kGridBytes) << successes;
  }
}

}  // namespace
}  // namespace vq3900::test
