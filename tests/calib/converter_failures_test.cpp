#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

#include "state/engine.h"
#include "support/calib_rigs.h"
#include "support/calib_samples.h"
#include "support/capture.h"
#include "support/elements.h"
#include "support/engine_fixture.h"
#include "support/failing_new.h"
#include "support/numbers.h"
#include "support/registers.h"

namespace vq3900::test {
namespace {

// The steps, by the number of messages before theirs.
enum Step : std::size_t { kDerive = 1, kSet = 2, kD2d = 3, kRectify = 4, kD2c = 5 };

constexpr const char* kFailed[] = {"",
                                   "parse_rectify_d2c_params_from_stereo_with_rgb_calib_params() failed!",
                                   "set_rectify_d2c_params() failed!",
                                   "convert_d2d_params_to_register_elements() failed!",
                                   "convert_rectify_float_to_register_elements() failed!",
                                   "convert_d2c_params_float_to_register() failed!"};

// What a conversion writes.
struct Written {
  Elements d2d, rectify, d2c;
  bool operator==(const Written&) const = default;
};

template <typename Table>
Elements elements(const Table& table) {
  return {table.begin(), table.end()};
}

Written written() {
  const RegisterTables& tables = engine().registers;
  return {
      elements(tables.d2d), joined({elements(tables.rectify[0]), elements(tables.rectify[1])}), elements(tables.d2c)};
}

// A good run in a fresh library, to hold later good runs against.
struct GoodRun {
  Conversion run;
  Written tables;
};

GoodRun good_run() {
  prepare_calibration({{"distort_type", "2"}});
  GoodRun good{converted(sample_rig()), written()};
  EXPECT_EQ(good.run.outcome, (Outcome{0, kTwoLutsConverted, lines_of(step_messages())}));
  return good;
}

void expect_same(const GoodRun& run, const GoodRun& expected) {
  EXPECT_EQ(run.run.outcome, expected.run.outcome);
  EXPECT_EQ(run.run.passed, expected.run.passed);
  EXPECT_EQ(bytes_of(run.run.rect), bytes_of(expected.run.rect));
  EXPECT_EQ(bytes_of(run.run.d2c), bytes_of(expected.run.d2c));
  EXPECT_EQ(bytes_of(run.run.depth), bytes_of(expected.run.depth));
  EXPECT_EQ(run.tables, expected.tables);
}

class ConverterFailure : public EngineTest {
 protected:
  ConverterFailure() : good_(good_run()) { reset_engine(); }

  void expect_good_run() const { expect_same(good_run(), good_); }

 private:
  GoodRun good_;
};

// --- null pointers ---------------------------------------------------------------------------------------------------

TEST_F(ConverterFailure, NullRecordIsRefusedBeforeAnythingHappens) {
  prepare_calibration();
  const Bytes before = state_bytes();
  Conversion run;
  DeLogCallback log = [](const char* text) { ADD_FAILURE() << text; };
  EXPECT_EQ(outcome_of([&] {
              return align_ir_ir_rgb_params_to_register_converter(sample_rig(), nullptr, &run.d2c, &run.depth, &log);
            }),
            silent(-2));
  EXPECT_EQ(outcome_of([&] {
              return align_ir_ir_rgb_params_to_register_converter(sample_rig(), &run.rect, &run.d2c, nullptr, &log);
            }),
            silent(-2));
  EXPECT_EQ(outcome_of([&] {
              return align_ir_ir_rgb_params_to_register_converter(sample_rig(), nullptr, &run.d2c, nullptr, nullptr);
            }),
            silent(-2));
  EXPECT_EQ(
      outcome_of([&] { return cams_calibration_params_to_register_converter("", nullptr, &run.d2c, &run.depth); }),
      silent(-2));
  EXPECT_TRUE(untouched(run.rect));
  EXPECT_TRUE(untouched(run.d2c));
  EXPECT_TRUE(untouched(run.depth));
  EXPECT_EQ(state_bytes(), before);
  expect_good_run();
}

// --- every step ------------------------------------------------------------------------------------------------------

struct StepCase {
  const char* name;
  Step step;
  int code;
  std::string out;
  std::string reason;  // on standard error
  std::vector<CalibSetting> settings;
  void (*spoil)(CalibrateParamsMulti&);
};

void PrintTo(const StepCase& c, std::ostream* stream) {
  *stream << c.name;
}

class ConverterStep : public ConverterFailure, public testing::WithParamInterface<StepCase> {
 protected:
  static CalibrateParamsMulti calib() {
    CalibrateParamsMulti calib = parallel_rig();
    GetParam().spoil(calib);
    return calib;
  }

  // The messages before the failure.
  static std::vector<std::string> messages() {
    std::vector<std::string> messages = step_messages(calib().distortion_model);
    messages.resize(GetParam().step);
    return messages;
  }
};

TEST_P(ConverterStep, FailsWithItsStatusAndTheLaterOnesAreNotRun) {
  const StepCase& c = GetParam();
  prepare_calibration(c.settings);
  engine().rectify.en0 = {1, 1};
  const Written before = written();
  const Conversion run = converted(calib());
  EXPECT_EQ(run.outcome, (Outcome{c.code, c.out, lines_of(messages()) + c.reason + kFailed[c.step] + "\n"}));
  std::vector<std::string> passed = messages();
  passed.emplace_back(kFailed[c.step]);
  EXPECT_EQ(run.passed, passed);
  const Written after = written();
  EXPECT_EQ(after.d2d != before.d2d, c.step >= kD2d);
  EXPECT_EQ(after.rectify != before.rectify, c.step >= kRectify);
  EXPECT_EQ(after.d2c != before.d2c, c.step >= kD2c);
  EXPECT_EQ(untouched(run.depth), c.step == kDerive);  // filled before the setters
  EXPECT_EQ(run.rect.left_temperature, 31.5F);
  expect_good_run();
}

TEST_P(ConverterStep, CallbackThatThrowsAtAnyMessagePassesThrough) {
  for (std::size_t at = 0; at <= GetParam().step; ++at) {
    prepare_calibration(GetParam().settings);
    engine().rectify.en0 = {1, 1};
    Conversion run;
    DeLogCallback log = [&](const char* text) {
      run.passed.emplace_back(text);
      if (run.passed.size() == at + 1) throw std::runtime_error("from the callback");
    };
    std::string caught;
    printed_by([&] {
      try {
        align_ir_ir_rgb_params_to_register_converter(calib(), &run.rect, &run.d2c, &run.depth, &log);
      } catch (const std::runtime_error& error) {
        caught = error.what();
      }
    });
    EXPECT_EQ(caught, "from the callback");
    EXPECT_EQ(run.passed.size(), at + 1);
  }
  expect_good_run();
}

using Calib = CalibrateParamsMulti;

void leave(Calib& /*calib*/) {}

void bend_left(Calib& calib) {
  calib.left_ir.distortion[0] = 0.1F;
}

void bend_right(Calib& calib) {
  calib.right_ir.distortion[0] = 0.1F;
}

const std::string kNoLeftLut = "gen left camera undistortion lut error.\n";
const std::string kNoRightLut = "gen right camera undistortion lut error.\n";

std::vector<StepCase> derivations_that_fail() {
  return {
      {"OppositeBaseline", kDerive, -2, "Baseline sign check error.\n", "", {{"baseline", "50"}}, leave},
      {"RotationOfZeros", kDerive, -2, "", "", {}, [](Calib& c) { std::ranges::fill(c.ir_rotation, 0.0F); }},
      {"ChopOfAll", kDerive, -2, "", "", {{"src_img_left_chop", "640"}}, leave},
      {"ClipOfMoreThanAll", kDerive, -2, "", "", {{"clip_top_h_valid", "721"}}, leave},
      {"LeftLutOutOfRange",
       kDerive,
       -3,
       kNoLeftLut,
       "lut displacement out of range\n",
       {{"distort_type", "1"}, {"dst_focal_scale", "0.25"}},
       bend_left},
      {"RightLutOutOfRange",
       kDerive,
       -3,
       kNoRightLut,
       "lut displacement out of range\n",
       {{"distort_type", "2"}, {"dst_focal_scale", "0.25"}},
       bend_right},
      {"LutSampleBitOf7",
       kDerive,
       -3,
       kNoLeftLut,
       "lut sample bit out of range\n",
       {{"distort_type", "1"}, {"lut_sample_bit", "7"}},
       leave},
      {"LutExtendedTooFar",
       kDerive,
       -3,
       kNoLeftLut,
       "lut extend ratio out of range\n",
       {{"distort_type", "1"}, {"lut_extend_ratio", "4.5"}},
       leave},
      {"LutTooLarge",
       kDerive,
       -3,
       kNoLeftLut,
       "lut grid too large\n",
       {{"distort_type", "1"}, {"lut_sample_bit", "0"}, {"lut_extend_ratio", "2"}},
       leave},
      {"LutOfAnUnknownModel",
       kDerive,
       -3,
       kNoLeftLut,
       "unsupported distortion model: 3\n",
       {{"distort_type", "1"}},
       [](Calib& c) { c.distortion_model = 3; }},
  };
}

std::vector<StepCase> setters_that_fail() {
  return {
      {"BaselineTooLong", kSet, -2, "check baseline!\n", "", {}, [](Calib& c) { c.ir_translation[0] = -501; }},
      {"NoBaseline",
       kSet,
       -2,
       "check baseline!\n",
       "",
       {{"distort_type", "2"}},
       [](Calib& c) { c.ir_translation[0] = 0; }},
      {"FocalLengthTooShort",
       kSet,
       -2,
       "",
       "focal_length_pix is incorrect! \n",
       {{"distort_type", "2"}},
       [](Calib& c) { c.left_ir.fx = 9; }},
      {"LutStatusOf3", kSet, -2, "", "", {{"distort_type", "3"}}, leave},
      {"LutSampleBitOf2",
       kSet,
       -2,
       "",
       "sample_rate_bit >=3 ! \n",
       {{"distort_type", "2"}, {"lut_sample_bit", "2"}},
       leave},
  };
}

// What does not fit its register. The baseline of 4 at 20 pixels has a factor of 1 / 80.
std::vector<StepCase> conversions_that_fail() {
  const std::string one_lut = std::string(kTwoLutsConverted).substr(0, std::strlen(kTwoLutsConverted) / 2);
  const auto too_short = [](const char* name) { return overflow_lines(static_cast<double>(0.01F), 32, 39, name); };
  const auto failed = [](const char* part, int camera) {
    return std::string("convert_rectify_") + part + "_float_to_register error!,camera id = " + std::to_string(camera) +
           " \n";
  };
  return {
      {"ReferenceTooNear",
       kD2d,
       4096,
       overflow_lines(128.0, 32, 38, "iZ0"),
       "",
       {{"ref_dist", "0.0078125"}, {"distort_type", "2"}},
       leave},
      {"FactorTooLarge",
       kD2d,
       4096,
       overflow_lines(static_cast<double>(0.0125F), 32, 40, "PBF"),
       "",
       {{"depth_mode", "1"}, {"baseline", "4"}},
       [](Calib& c) {
         c.left_ir = c.right_ir = pinhole_camera(64, 40, 20, 32, 20);
         c.ir_translation[0] = 4;
       }},
      {"LeftFocalLength",
       kRectify,
       4096,
       too_short("rectify_r4") + failed("commom", 1),
       "",
       {},
       [](Calib& c) { c.left_ir.fy = 100; }},
      {"RightFocalLength",
       kRectify,
       4096,
       too_short("rectify_r0") + failed("commom", 0),
       "",
       {},
       [](Calib& c) { c.right_ir.fx = 100; }},
      {"Coefficient",
       kRectify,
       4096,
       overflow_lines(5.0, 26, 24, "rectify_k0") + failed("kk", 1),
       "",
       {},
       [](Calib& c) { c.left_ir.distortion[0] = c.left_ir.distortion[3] = 5; }},  // k1 and k4 cancel out
      {"LutCentre",
       kRectify,
       4096,
       one_lut + overflow_lines(1100.0, 32, 22, "lut_cx") + failed("lut", 0),
       "",
       {{"distort_type", "1"}},
       [](Calib& c) { c.right_ir = pinhole_camera(2200, 400, 500, 1100, 200); }},
      {"ColourTranslation",
       kD2c,
       4096,
       kTwoLutsConverted + overflow_lines(32.0, 32, 27, "W11"),
       "",
       {{"distort_type", "2"}},
       [](Calib& c) { c.rgb_translation[2] = 32; }},
      {"UnitInR",
       kD2c,
       4096,
       overflow_lines(18.0, 32, 29, "W0") + overflow_lines(18.0, 32, 29, "W5") + overflow_lines(10.0, 32, 30, "W10"),
       "",
       {{"d2d_params_unit", "10"}, {"d2d_params_unit_in_R_en", "1"}},
       leave},
  };
}

const auto case_name = [](const auto& test) { return std::string(test.param.name); };
INSTANTIATE_TEST_SUITE_P(Derivations, ConverterStep, testing::ValuesIn(derivations_that_fail()), case_name);
INSTANTIATE_TEST_SUITE_P(Setters, ConverterStep, testing::ValuesIn(setters_that_fail()), case_name);
INSTANTIATE_TEST_SUITE_P(Conversions, ConverterStep, testing::ValuesIn(conversions_that_fail()), case_name);

TEST_F(ConverterFailure, KittiRigIsRefusedInMillimetresAndWithItsUnitInR) {
  prepare_calibration({{"baseline", "-540"}});
  Conversion run = converted(kitti_rig());
  EXPECT_EQ(run.outcome.code, -2);
  EXPECT_EQ(run.outcome.out, "check baseline!\n");
  EXPECT_EQ(run.passed.back(), kFailed[kSet]);
  prepare_calibration({{"baseline", "-540"}, {"d2d_params_unit", "10"}, {"d2d_params_unit_in_R_en", "1"}});
  run = converted(kitti_rig());
  EXPECT_EQ(run.outcome.code, 4096);
  EXPECT_EQ(run.passed.back(), kFailed[kD2c]);
}

// --- what a failing run leaves ---------------------------------------------------------------------------------------

TEST_F(ConverterFailure, RefusedBaselineStaysConfigured) {
  prepare_calibration({{"baseline", "50"}});
  EXPECT_EQ(converted(parallel_rig()).outcome.code, -2);
  EXPECT_EQ(engine().calib_input.baseline, 50.0F);
}

TEST_F(ConverterFailure, BaselineIsReplacedBeforeALaterFailure) {
  prepare_calibration({{"baseline", "-7"}, {"clip_top_h_depth", "401"}, {"d2d_params_unit", "0"}});
  engine().calib_input.d2d_params_unit = 0;
  const Conversion run = converted(parallel_rig());
  EXPECT_EQ(run.outcome.code, -2);
  EXPECT_EQ(engine().calib_input.baseline, -50.0F);
  EXPECT_EQ(engine().calib_input.d2d_params_unit, 0.0F);  // the unit is looked at after the derivation
  EXPECT_TRUE(untouched(run.d2c));
}

TEST_F(ConverterFailure, RefusedDerivationLeavesTheModulesAndTheirCorrections) {
  prepare_calibration({{"distort_type", "2"}});
  ASSERT_EQ(converted(sample_rig()).outcome.code, 0);
  const Elements registers = library_registers();
  prepare_calibration({{"baseline", "50"}});
  EXPECT_EQ(converted(sample_rig()).outcome.code, -2);
  EXPECT_EQ(library_registers(), registers);
  for (const std::size_t camera : {0U, 1U}) {
    EXPECT_TRUE(engine().rectify.camera[camera].kk_set);
    EXPECT_TRUE(engine().rectify_lut.camera[camera].map_set);
  }
}

TEST_F(ConverterFailure, FailingSetterKeepsWhatTheOnesBeforeStored) {
  prepare_calibration({{"ref_dist", "1234"}, {"depth_mode", "0"}});
  CalibrateParamsMulti calib = parallel_rig();
  calib.ir_translation[0] = -501;
  EXPECT_EQ(converted(calib).outcome.code, -2);
  EXPECT_EQ(engine().basic.cam_mode, 1U);
  EXPECT_EQ(engine().basic.baseline, 0.0F);
  EXPECT_EQ(engine().basic.ref_plane_dist, 0.0F);
  EXPECT_FALSE(engine().rectify.camera[1].kk_set);
  prepare_calibration({{"ref_dist", "1234"}, {"distort_type", "2"}, {"lut_sample_bit", "2"}});
  EXPECT_EQ(converted(parallel_rig()).outcome.code, -2);
  EXPECT_EQ(engine().basic.baseline, -50.0F);
  EXPECT_EQ(engine().basic.ref_plane_dist, 1234.0F);
  EXPECT_TRUE(engine().rectify.camera[1].kk_set);  // the polynomial goes first
  EXPECT_FALSE(engine().rectify_lut.camera[1].map_set);
  EXPECT_FALSE(engine().rectify.camera[0].kk_set);
}

// Runs the converter with a callback that does not return; what was thrown is told apart by type.
template <typename Thrown>
Outcome outcome_of_throwing(DeLogCallback* log) {
  Conversion run;
  return outcome_of([&] {
    try {
      align_ir_ir_rgb_params_to_register_converter(sample_rig(), &run.rect, &run.d2c, &run.depth, log);
      return 0;
    } catch (const Thrown&) {
      return 1;
    } catch (...) {
      return 2;
    }
  });
}

// The generators are gone with the failing call, what they generated is not.
TEST_F(ConverterFailure, GridsThatWereNotConvertedAreTheModulesOwn) {
  const auto expect_own = [](std::size_t camera) {
    EXPECT_NE(engine().rectify_lut.camera[camera].grid.dx(), nullptr) << camera;
    EXPECT_NE(engine().rectify_lut.camera[camera].grid.dy(), nullptr) << camera;
    EXPECT_FALSE(engine().rectify_lut.camera[camera].grid.kept()) << camera;
  };
  prepare_calibration({{"distort_type", "1"}});
  CalibrateParamsMulti calib = parallel_rig();
  calib.right_ir = pinhole_camera(2200, 400, 500, 1100, 200);
  EXPECT_EQ(converted(calib).outcome.code, 4096);
  EXPECT_EQ(engine().rectify_lut.camera[1].grid.dx(), nullptr);  // converted
  expect_own(0);

  prepare_calibration({{"distort_type", "1"}});
  DeLogCallback log = [](const char* text) {
    if (std::string(text) == step_messages()[2]) throw 1;
  };
  EXPECT_EQ(outcome_of_throwing<int>(&log).code, 1);
  expect_own(0);
  expect_own(1);
  EXPECT_EQ(outcome_of([] { return convert_rectify_params_to_register_elements(); }), prints_out(0, kTwoLutsConverted));
}

// --- callbacks -------------------------------------------------------------------------------------------------------

TEST_F(ConverterFailure, MissingCallbackRaisesBadFunctionCallAtTheFirstMessage) {
  DeLogCallback empty;
  for (DeLogCallback* const log : {static_cast<DeLogCallback*>(nullptr), &empty}) {
    prepare_calibration({{"distort_type", "2"}});
    EXPECT_EQ(outcome_of_throwing<std::bad_function_call>(log), prints_err(1, "calibration distortion model: 0\n"));
    set_calib_temp_info(0, 2, 3);
    EXPECT_EQ(outcome_of_throwing<std::bad_function_call>(log),
              prints_out(1, "invalid calibration temperature,left:0.000000,right:2.000000,ldm:3.000000"));
  }
  expect_good_run();
}

TEST_F(ConverterFailure, CallbackThatThrowsAtAnyMessageOfAGoodRunPassesThrough) {
  for (std::size_t at = 0; at < step_messages().size(); ++at) {
    prepare_calibration({{"distort_type", "2"}});
    std::size_t calls = 0;
    DeLogCallback log = [&](const char*) {
      if (calls++ == at) throw static_cast<int>(at);  // of no class
    };
    const Outcome outcome = outcome_of_throwing<int>(&log);
    EXPECT_EQ(outcome.code, 1);
    std::vector<std::string> printed = step_messages();
    printed.resize(at + 1);
    EXPECT_EQ(outcome.err, lines_of(printed));
    EXPECT_EQ(calls, at + 1);
  }
  expect_good_run();
}

TEST_F(ConverterFailure, CallbackThatThrowsAtTheTemperaturesPassesThrough) {
  prepare_calibration();
  set_calib_temp_info(0, 0, 0);
  DeLogCallback log = [](const char*) { throw 1; };
  EXPECT_EQ(outcome_of_throwing<int>(&log).code, 1);
  expect_good_run();
}

// The library's own lack of memory is a code, the callback's is the callback's.
TEST_F(ConverterFailure, BadAllocOfTheCallbackPassesThroughToo) {
  prepare_calibration();
  DeLogCallback log = [](const char*) { throw std::bad_alloc(); };
  EXPECT_EQ(outcome_of_throwing<std::bad_alloc>(&log).code, 1);
  expect_good_run();
}

// --- numbers that are none -------------------------------------------------------------------------------------------

TEST_F(ConverterFailure, NoNumberAnywhereInTheCalibration) {
  std::vector<std::size_t> offsets;
  for (const std::size_t camera : {8U, 72U, 136U}) {
    for (std::size_t i = 0; i < 12; ++i)
      offsets.push_back(camera + 8 + 4 * i);
  }
  for (std::size_t offset = 200; offset < 296; offset += 4)
    offsets.push_back(offset);
  for (const std::size_t offset : offsets) {
    for (const float value : {kNan, kInfinity, -kInfinity}) {
      SCOPED_TRACE(testing::Message() << offset << " " << value);
      const bool color_distortion = offset >= 160 && offset < 192;  // copied, never computed with
      CalibrateParamsMulti calib = sample_rig();
      std::memcpy(reinterpret_cast<char*>(&calib) + offset, &value, sizeof value);
      prepare_calibration({{"distort_type", "2"}});
      const Conversion run = converted(calib);
      EXPECT_EQ(run.outcome.code, color_distortion ? 0 : -2);
      EXPECT_EQ(run.passed.size(), color_distortion ? 6U : 2U);
    }
  }
  expect_good_run();
}

TEST_F(ConverterFailure, NoNumberAnywhereInTheSettings) {
  for (const char* const key : {"baseline",
                                "ref_dist",
                                "src_img_scale",
                                "src_img_left_chop",
                                "dst_focal_scale",
                                "lut_extend_ratio",
                                "ir_l_comp_coeff",
                                "ir_l_virtual_cx_offset",
                                "ir_r_virtual_cx_offset",
                                "ir_virtual_cy_offset",
                                "disp_offset",
                                "d2d_params_unit",
                                "depth_scale",
                                "valid_scale"}) {
    for (const char* const value : {"nan", "inf", "-inf", "1e30", "-1e30"}) {
      for (const char* const fixed : {"0", "1"}) {
        SCOPED_TRACE(std::string(key) + " = " + value);
        prepare_calibration(
            {{"distort_type", "2"}, {"dst_res_fixed", fixed}, {"d2d_params_unit_in_R_en", "1"}, {key, value}});
        const Conversion run = converted(sample_rig());
        EXPECT_EQ(run.outcome.code == 0, run.passed == step_messages());
        EXPECT_TRUE(run.outcome.code == 0 || run.passed.back().ends_with("failed!"));
      }
    }
  }
  expect_good_run();
}

// --- no memory -------------------------------------------------------------------------------------------------------

TEST_F(ConverterFailure, EveryAllocationThatFailsIsRefusedAndTheNextCallWorks) {
  int failures = 0;
  for (long successes = 0;; ++successes) {
    ASSERT_LT(successes, 500);
    SCOPED_TRACE(successes);
    prepare_calibration({{"distort_type", "2"}});
    Conversion run;
    DeLogCallback log = [](const char*) {};
    const Outcome outcome = outcome_of([&] {
      const FailingNew failing(successes);
      return align_ir_ir_rgb_params_to_register_converter(sample_rig(), &run.rect, &run.d2c, &run.depth, &log);
    });
    EXPECT_EQ(outcome.code, allocation_failed ? -2 : 0);
    if (!allocation_failed) break;
    ++failures;
    expect_good_run();
  }
  EXPECT_GE(failures, 12);  // two grids of two arrays, generated, held and converted
}

}  // namespace
}  // namespace vq3900::test
