#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "state/engine.h"
#include "support/calib_samples.h"
#include "support/capture.h"
#include "support/elements.h"
#include "support/engine_fixture.h"
#include "support/failing_new.h"
#include "support/numbers.h"
#include "support/registers.h"

namespace vq3900::test {
namespace {

// --- temperatures

using Temperatures = EngineTest;

TEST_F(Temperatures, AreZeroAtLoad) {
  EXPECT_EQ(engine().calib.left_temperature, 0.0F);
  EXPECT_EQ(engine().calib.right_temperature, 0.0F);
  EXPECT_EQ(engine().calib.ldm_temperature, 0.0F);
}

TEST_F(Temperatures, AreStoredWithoutACheckUntilSetAgain) {
  const float rows[][3] = {{31.5F, 32.25F, 35.75F}, {-1, 0, 0.5F}, {kNan, kInfinity, -kInfinity}};
  for (const auto& row : rows) {
    EXPECT_EQ(outcome_of([&] {
                set_calib_temp_info(row[0], row[1], row[2]);
                return 0;
              }),
              silent_success());
    EXPECT_EQ(bits_of(engine().calib.left_temperature), bits_of(row[0]));
    EXPECT_EQ(bits_of(engine().calib.right_temperature), bits_of(row[1]));
    EXPECT_EQ(bits_of(engine().calib.ldm_temperature), bits_of(row[2]));
  }
}

struct TemperatureCase {
  const char* name;
  float left, right, ldm;
  const char* text;  // null: accepted
};

class ConverterTemperatures : public EngineTest, public testing::WithParamInterface<TemperatureCase> {
 protected:
  static Outcome expected() {
    if (GetParam().text == nullptr) return silent_success();
    return prints_out(-2, std::string("invalid calibration temperature,") + GetParam().text);
  }

  static void set() {
    prepare_calibration();
    set_calib_temp_info(GetParam().left, GetParam().right, GetParam().ldm);
  }

  // Zero but for temperatures and coefficients.
  static Bytes record() {
    DeStereoRectifyParams_S rect{};
    if (GetParam().text == nullptr) {
      rect.left_temperature = GetParam().left;
      rect.right_temperature = GetParam().right;
      rect.ldm_temperature = GetParam().ldm;
      rect.left_comp_coeff = 0.25F;
      rect.right_comp_coeff = -0.5F;
      rect.ldm_comp_coeff = 0.125F;
    }
    return bytes_of(rect);
  }
};

TEST_P(ConverterTemperatures, AreAllThatTheTemperatureConverterTakes) {
  set();
  const Bytes before = state_bytes();
  for (const char* const path : {"", "no such file", static_cast<const char*>(nullptr)}) {
    Conversion run;
    EXPECT_EQ(outcome_of(
                  [&] { return cams_calibration_params_to_register_converter(path, &run.rect, &run.d2c, &run.depth); }),
              expected());
    EXPECT_EQ(bytes_of(run.rect), record());
    EXPECT_TRUE(untouched(run.d2c));
    EXPECT_TRUE(untouched(run.depth));
    EXPECT_EQ(
        outcome_of([&] { return cams_calibration_params_to_register_converter(path, &run.rect, nullptr, nullptr); }),
        expected());
  }
  EXPECT_EQ(state_bytes(), before);
}

TEST_P(ConverterTemperatures, AreCheckedBeforeAnythingElse) {
  set();
  const Bytes before = state_bytes();
  const Conversion run = converted(sample_rig());
  if (GetParam().text == nullptr) {
    EXPECT_EQ(run.outcome, prints_err(0, lines_of(step_messages())));
    return;
  }
  EXPECT_EQ(run.outcome, expected());
  EXPECT_EQ(run.passed, std::vector<std::string>{"invalid calibration temperature"});
  EXPECT_EQ(bytes_of(run.rect), record());
  EXPECT_TRUE(untouched(run.d2c));
  EXPECT_TRUE(untouched(run.depth));
  EXPECT_EQ(state_bytes(), before);
}

INSTANTIATE_TEST_SUITE_P(
    Calib, ConverterTemperatures,
    testing::Values(TemperatureCase{"AllOf1", 1, 1, 1, nullptr}, TemperatureCase{"Usual", 30, 31.5F, 40, nullptr},
                    TemperatureCase{"LeftTooLow", 0.99F, 30, 30, "left:0.990000,right:30.000000,ldm:30.000000"},
                    TemperatureCase{"RightTooLow", 30, 0.5F, 30, "left:30.000000,right:0.500000,ldm:30.000000"},
                    TemperatureCase{"LaserTooLow", 30, 30.25F, -2, "left:30.000000,right:30.250000,ldm:-2.000000"},
                    TemperatureCase{"NeverSet", 0, 0, 0, "left:0.000000,right:0.000000,ldm:0.000000"},
                    TemperatureCase{"NoNumber", kNan, 30, 30, "left:nan,right:30.000000,ldm:30.000000"},
                    TemperatureCase{"Infinities", kInfinity, 2, -kInfinity, "left:inf,right:2.000000,ldm:-inf"},
                    TemperatureCase{
                        "Lengthy",
                        -3.4028235e38F,
                        1,
                        1,
                        "left:-340282346638528859811704183484516925440.000000,right:1.000000,ldm:1.000000"}),
    [](const auto& test) { return test.param.name; });

// --- optimized D2D entries

class OptimizedD2d : public EngineTest {
 protected:
  static std::vector<DeDepthConfig_S> entries(std::size_t count, int tag) {
    std::vector<DeDepthConfig_S> items(count);
    for (std::size_t i = 0; i < count; ++i) {
      for (std::size_t j = 0; j < 16; ++j)
        items[i].data[j] = static_cast<std::uint8_t>(static_cast<std::size_t>(tag) + i * 16 + j);
    }
    return items;
  }

  static Outcome set(std::vector<DeDepthConfig_S> items) {
    return outcome_of([&] { return set_optimized_d2d_params(items.data(), static_cast<std::int32_t>(items.size())); });
  }

  static Outcome release() { return outcome_of(release_optimized_d2d_params); }

  // Count and entries as held.
  static void expect_table(std::int32_t count, const std::vector<DeDepthConfig_S>& items) {
    const auto held = engine().calib.optimized_d2d.span();
    EXPECT_EQ(engine().calib.optimized_d2d_count, count);
    ASSERT_EQ(held.size(), items.size());
    for (std::size_t i = 0; i < items.size(); ++i)
      EXPECT_EQ(bytes_of(held[i]), bytes_of(items[i])) << i;
  }

  static void expect_empty() {
    EXPECT_FALSE(engine().calib.optimized_d2d.held());
    EXPECT_EQ(engine().calib.optimized_d2d_count, 0);
  }
};

TEST_F(OptimizedD2d, IsEmptyAtLoad) {
  expect_empty();
}

TEST_F(OptimizedD2d, FirstCallOf3LeavesCount3AndASecondOf5LeavesCount0With5Entries) {
  EXPECT_EQ(set(entries(3, 1)), silent_success());
  expect_table(3, entries(3, 1));
  EXPECT_EQ(set(entries(5, 100)), silent_success());
  expect_table(0, entries(5, 100));
  EXPECT_EQ(set(entries(2, 7)), silent_success());
  expect_table(0, entries(2, 7));
}

TEST_F(OptimizedD2d, CallAfterAReleaseCountsAgain) {
  EXPECT_EQ(set(entries(3, 1)), silent_success());
  EXPECT_EQ(release(), silent_success());
  expect_empty();
  EXPECT_EQ(set(entries(4, 2)), silent_success());
  expect_table(4, entries(4, 2));
}

TEST_F(OptimizedD2d, ReleaseOfAnEmptyTableSucceedsEveryTime) {
  EXPECT_EQ(release(), silent_success());
  EXPECT_EQ(release(), silent_success());
  expect_empty();
}

TEST_F(OptimizedD2d, ReleaseAfterASecondCallDropsTheEntriesThatAreNotCounted) {
  EXPECT_EQ(set(entries(3, 1)), silent_success());
  EXPECT_EQ(set(entries(5, 1)), silent_success());
  EXPECT_EQ(release(), silent_success());
  expect_empty();
}

TEST_F(OptimizedD2d, EntriesAreCopied) {
  std::vector<DeDepthConfig_S> items = entries(2, 9);
  EXPECT_EQ(set_optimized_d2d_params(items.data(), 2), 0);
  std::ranges::fill(items, DeDepthConfig_S{});
  expect_table(2, entries(2, 9));
}

struct RefusedCase {
  const char* name;
  bool null;
  std::int32_t count;
  int code;
};

class OptimizedD2dEmptied : public OptimizedD2d, public testing::WithParamInterface<RefusedCase> {};

TEST_P(OptimizedD2dEmptied, WhateverWasHeld) {
  DeDepthConfig_S item{};
  const auto call = [&] { return set_optimized_d2d_params(GetParam().null ? nullptr : &item, GetParam().count); };
  EXPECT_EQ(outcome_of(call), silent(GetParam().code));
  expect_empty();
  EXPECT_EQ(set(entries(3, 1)), silent_success());
  expect_table(3, entries(3, 1));
  EXPECT_EQ(outcome_of(call), silent(GetParam().code));
  expect_empty();
  EXPECT_EQ(set(entries(2, 5)), silent_success());
  expect_table(2, entries(2, 5));
}

constexpr std::int32_t kLowest = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kHighest = std::numeric_limits<std::int32_t>::max();

INSTANTIATE_TEST_SUITE_P(Calib, OptimizedD2dEmptied,
                         testing::Values(RefusedCase{"CountOf0", false, 0, 0},
                                         RefusedCase{"CountOf0WithNull", true, 0, 0},
                                         RefusedCase{"NegativeCount", false, -1, -2},
                                         RefusedCase{"LowestCount", false, kLowest, -2},
                                         RefusedCase{"NegativeCountWithNull", true, -1, -2},
                                         RefusedCase{"NullAndAPositiveCount", true, 1, -2},
                                         RefusedCase{"NullAndTheHighestCount", true, kHighest, -2}),
                         [](const auto& test) { return test.param.name; });

TEST_F(OptimizedD2d, WithoutMemoryTheTableIsEmptyAndTheNextCallWorks) {
  std::vector<DeDepthConfig_S> items = entries(3, 1);
  for (const bool held : {false, true}) {
    if (held) {
      EXPECT_EQ(set(items), silent_success());
    }
    EXPECT_EQ(outcome_of([&] {
                const FailingNew failing(0);
                return set_optimized_d2d_params(items.data(), 3);
              }),
              silent(-2));
    expect_empty();
  }
  EXPECT_EQ(set(items), silent_success());
  expect_table(3, items);
}

// --- what the configuration says about the camera

using CalibGetters = EngineTest;

TEST_F(CalibGetters, CamModeIs1ForTypes2And3) {
  for (const auto& [type, mode] : {std::pair{0, 0}, {1, 0}, {2, 1}, {3, 1}, {4, 0}, {255, 0}}) {
    engine().calib_input.cam_type = static_cast<std::uint8_t>(type);
    unsigned char out = 0xAA;
    get_cam_mode(&out);
    EXPECT_EQ(out, mode) << type;
  }
}

TEST_F(CalibGetters, LutStatusIsEnabledFor1And2) {
  for (const auto& [type, enabled] :
       {std::pair{0, false}, {1, true}, {2, true}, {3, false}, {4, false}, {255, false}}) {
    engine().calib_input.distort_type = static_cast<std::uint8_t>(type);
    EXPECT_EQ(get_lut_enable_status(), enabled) << type;
  }
}

TEST_F(CalibGetters, SettingsAreWrittenAsTheyAre) {
  engine().calib_input.mipi_channel_status = 0xFE;
  engine().calib_input.d2d_params_unit_in_R_en = -2;
  unsigned char mipi = 0, in_r = 0;
  get_mipi_channel_status(&mipi);
  get_d2d_params_unit_in_R_en(&in_r);
  EXPECT_EQ(mipi, 0xFE);
  EXPECT_EQ(in_r, 0xFE);
}

TEST_F(CalibGetters, AreZeroAtLoad) {
  for (void (*const get)(unsigned char*) : {get_cam_mode, get_mipi_channel_status, get_d2d_params_unit_in_R_en}) {
    unsigned char out = 0xAA;
    get(&out);
    EXPECT_EQ(out, 0);
  }
  EXPECT_FALSE(get_lut_enable_status());
}

TEST_F(CalibGetters, NullIsLeftAlone) {
  for (void (*const get)(unsigned char*) : {get_cam_mode, get_mipi_channel_status, get_d2d_params_unit_in_R_en}) {
    EXPECT_EQ(outcome_of([get] {
                get(nullptr);
                return 0;
              }),
              silent_success());
  }
}

// --- version of the distortion-LUT library

using LutVersion = EngineTest;

TEST_F(LutVersion, ClearsEightBytesAndWritesTheText) {
  char out[16];
  std::ranges::fill(out, '#');
  EXPECT_EQ(outcome_of([&] { return get_lut_version(out); }), silent_success());
  EXPECT_EQ(std::string(out, sizeof out), std::string("1.0.0\0\0\0########", sizeof out));
}

TEST_F(LutVersion, IsTheSameByItsOtherName) {
  char out[8] = "#######";
  EXPECT_EQ(outcome_of([&] { return get_disto_lut_version(out); }), silent_success());
  EXPECT_STREQ(out, "1.0.0");
}

TEST_F(LutVersion, NullIsMinus1) {
  EXPECT_EQ(outcome_of([] { return get_lut_version(nullptr); }), silent(-1));
}

// --- virtual intrinsics of the last derivation

class VirtualIntrinsic : public EngineTest {
 protected:
  static Bytes get() {
    auto out = filled_with<DeCameraIntrinsic_S>(0xAA);
    EXPECT_EQ(outcome_of([&] {
                get_virtual_intrinsic_of_stereo_debug(&out);
                return 0;
              }),
              silent_success());
    return bytes_of(out);
  }
};

TEST_F(VirtualIntrinsic, IsZeroBeforeTheFirstDerivation) {
  EXPECT_EQ(get(), Bytes(sizeof(DeCameraIntrinsic_S)));
}

TEST_F(VirtualIntrinsic, NullIsLeftAlone) {
  EXPECT_EQ(outcome_of([] {
              get_virtual_intrinsic_of_stereo_debug(nullptr);
              return 0;
            }),
            silent_success());
}

TEST_F(VirtualIntrinsic, IsCamera1sOfTheLastDerivation) {
  prepare_calibration({{"ir_l_virtual_cx_offset", "2.5"}, {"ir_r_virtual_cx_offset", "-4"}});
  EXPECT_EQ(converted(parallel_rig()).outcome.code, 0);
  EXPECT_EQ(get(), bytes_of(DeCameraIntrinsic_S{500, 500, 322.5F, 200, 640, 400}));
  prepare_calibration({{"dst_focal_scale", "0.5"}});
  EXPECT_EQ(converted(parallel_rig()).outcome.code, 0);
  EXPECT_EQ(get(), bytes_of(DeCameraIntrinsic_S{250, 250, 320, 200, 320, 200}));
}

TEST_F(VirtualIntrinsic, StaysWhenNothingIsDerived) {
  prepare_calibration();
  EXPECT_EQ(converted(parallel_rig()).outcome.code, 0);
  const Bytes before = get();
  prepare_calibration({{"baseline", "50"}, {"dst_focal_scale", "0.5"}});
  EXPECT_EQ(converted(parallel_rig()).outcome.code, -2);
  EXPECT_EQ(get(), before);
  set_calib_temp_info(0, 0, 0);
  EXPECT_EQ(converted(parallel_rig()).outcome.code, -2);
  EXPECT_EQ(get(), before);
}

}  // namespace
}  // namespace vq3900::test
