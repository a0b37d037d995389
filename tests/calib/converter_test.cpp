#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <numeric>
#include <span>
#include <string>
#include <vector>

#include "state/engine.h"
#include "support/calib_rigs.h"
#include "support/calib_samples.h"
#include "support/capture.h"
#include "support/elements.h"
#include "support/engine_fixture.h"
#include "support/numbers.h"
#include "support/registers.h"

namespace vq3900::test {
namespace {

using Converter = EngineTest;
using Words = std::vector<std::uint32_t>;

// Values of register tables, read through the interface.
template <typename Copy>
Words words_of(Copy copy, std::size_t count) {
  Elements elements(count);
  EXPECT_EQ(copy(elements.data(), static_cast<std::uint8_t>(count)), 0);
  Words words;
  for (const DeRegElement_S& element : elements)
    words.push_back(element.value);
  return words;
}

Words d2d_words() {
  return words_of(de_copy_d2d_params_register_table, 2);
}

Words d2c_words() {
  return words_of(de_copy_d2c_params_register_table, 12);
}

Words rectify_words(int camera) {
  return words_of(camera == 1 ? de_copy_sbg2r_params_register_table : de_copy_rectify_params_register_table, 23);
}

Words lut_info_words(int camera) {
  return words_of(
      [camera](DeRegElement_S* out, std::uint8_t n) { return de_copy_rectify_lut_info_register_table(camera, out, n); },
      7);
}

// --- messages

TEST_F(Converter, EveryMessageGoesToStandardErrorAndToTheCallbackInOrder) {
  prepare_calibration();
  const Conversion run = converted(parallel_rig());
  EXPECT_EQ(run.outcome, prints_err(0, lines_of(step_messages())));
  EXPECT_EQ(run.passed, step_messages());
}

TEST_F(Converter, StandardErrorComesBeforeTheCallback) {
  prepare_calibration();
  DeLogCallback log = [](const char* text) { std::fprintf(stderr, "<%s>\n", text); };
  Conversion run;
  std::string expected;
  for (const std::string& message : step_messages())
    expected += message + "\n<" + message + ">\n";
  EXPECT_EQ(outcome_of([&] {
              return align_ir_ir_rgb_params_to_register_converter(
                  parallel_rig(), &run.rect, &run.d2c, &run.depth, &log);
            }),
            prints_err(0, expected));
}

TEST_F(Converter, ModelNumberIsPrintedAndTheOverrideMakesItThePolynomial) {
  prepare_calibration();
  CalibrateParamsMulti calib = parallel_rig();
  for (const auto& [model, override_flag, printed] :
       {std::tuple{0, 0, 0}, {1, 0, 1}, {2, 0, 2}, {5, 0, 5}, {-7, 0, -7}, {2, 1, 5}, {-7, 255, 5}}) {
    calib.distortion_model = model;
    calib.model_override = static_cast<std::uint8_t>(override_flag);
    EXPECT_EQ(converted(calib).passed, step_messages(printed));
  }
}

TEST_F(Converter, OverrideDerivesWithThePolynomialModel) {
  CalibrateParamsMulti calib = sample_rig();
  calib.distortion_model = 5;
  prepare_calibration();
  const Conversion polynomial = converted(calib);
  calib.distortion_model = 0;
  prepare_calibration();
  const Conversion brown = converted(calib);
  calib.model_override = 1;
  prepare_calibration();
  const Conversion overridden = converted(calib);
  EXPECT_EQ(bytes_of(overridden.rect), bytes_of(polynomial.rect));
  EXPECT_NE(bytes_of(overridden.rect), bytes_of(brown.rect));
}

// --- records

TEST_F(Converter, RectificationRecordEndsWithTemperaturesAndCoefficients) {
  prepare_calibration();
  const Conversion run = converted(sample_rig());
  ASSERT_EQ(run.outcome.code, 0);
  const Bytes bytes = bytes_of(run.rect);
  const std::array expected{0.0F, 31.5F, 32.25F, 35.75F, 0.25F, -0.5F, 0.125F};
  EXPECT_EQ(Bytes(bytes.begin() + 216, bytes.end()), bytes_of(expected));
}

TEST_F(Converter, IrCamerasAreScaledAndChoppedFirst) {
  prepare_calibration({{"src_img_scale", "0.5"},
                       {"src_img_left_chop", "8"},
                       {"src_img_right_chop", "4"},
                       {"src_img_top_chop", "2"},
                       {"src_img_bottom_chop", "6"}});
  CalibrateParamsMulti calib = parallel_rig();
  calib.right_ir.width = 644;
  const Conversion run = converted(calib);
  ASSERT_EQ(run.outcome.code, 0);
  EXPECT_EQ(bytes_of(run.rect.cam1), bytes_of(DeCameraIntrinsic_S{250, 250, 152, 98, 308, 192}));
  EXPECT_EQ(bytes_of(run.rect.cam0), bytes_of(DeCameraIntrinsic_S{250, 250, 152, 98, 310, 192}));
}

struct DepthCase {
  const char* name;
  std::vector<CalibSetting> settings;
  DepthCalcParams_S depth;
  float stored_unit;
};

class DepthValues : public EngineTest, public testing::WithParamInterface<DepthCase> {};

TEST_P(DepthValues, FollowTheConfiguration) {
  prepare_calibration(GetParam().settings);
  const Conversion run = converted(parallel_rig());
  ASSERT_EQ(run.outcome, prints_err(0, lines_of(step_messages())));
  EXPECT_EQ(bytes_of(run.depth), bytes_of(GetParam().depth));
  EXPECT_EQ(engine().calib_input.d2d_params_unit, GetParam().stored_unit);
  EXPECT_EQ(engine().calib_input.baseline, -50.0F);
  const DeBasicParams_S& basic = engine().basic;
  EXPECT_EQ(basic.cam_mode, 1U);
  EXPECT_EQ(basic.depth_mode, static_cast<std::uint8_t>(run.depth.depth_mode));
  EXPECT_EQ(basic.baseline, run.depth.baseline);
  EXPECT_EQ(basic.focal_length_pix, run.depth.focal_length);
  EXPECT_EQ(basic.ref_plane_dist, run.depth.depth_mode == 0 ? run.depth.ref_dist : 0.0F);
}

INSTANTIATE_TEST_SUITE_P(
    Calib, DepthValues,
    testing::Values(
        DepthCase{"Plain", {}, {0, -50, 1000, 500, 1, 0, -8}, 1},
        DepthCase{"Unit", {{"d2d_params_unit", "4"}, {"invalid_disp", "77"}}, {0, -12.5F, 250, 500, 4, 0, 77}, 4},
        DepthCase{"NegativeUnit", {{"d2d_params_unit", "-2"}}, {0, 25, -500, 500, -2, 0, -8}, -2},
        DepthCase{"UnitOfZeroIs1", {{"d2d_params_unit", "0"}}, {0, -50, 1000, 500, 1, 0, -8}, 1},
        DepthCase{"FocalLengthIsTheUnrectifiedOne", {{"dst_focal_scale", "0.5"}}, {0, -50, 1000, 500, 1, 0, -8}, 1},
        DepthCase{"OffsetGivesTheReference", {{"disp_offset", "-40"}}, {0, -50, 625, 500, 1, -40, -8}, 1},
        DepthCase{"OffsetGivesTheReferenceOfType3",
                  {{"disp_offset", "-16"}, {"cam_type", "3"}, {"d2d_params_unit", "2"}},
                  {0, -25, 781.25F, 500, 2, -16, -8},
                  2},
        DepthCase{"OffsetOf1GivesNone", {{"disp_offset", "1"}}, {0, -50, 1000, 500, 1, 1, -8}, 1},
        DepthCase{"OffsetOfMinus1GivesNone", {{"disp_offset", "-1"}}, {0, -50, 1000, 500, 1, -1, -8}, 1},
        DepthCase{"OffsetJustAbove1", {{"disp_offset", "-1.25"}}, {0, -50, 20000, 500, 1, -1.25F, -8}, 1},
        DepthCase{
            "OffsetOfAnotherType", {{"disp_offset", "-40"}, {"cam_type", "1"}}, {0, -50, 1000, 500, 1, -40, -8}, 1},
        DepthCase{
            "OffsetOfAnotherMode", {{"disp_offset", "-40"}, {"depth_mode", "1"}}, {1, -50, 1000, 500, 1, -40, -8}, 1},
        DepthCase{"NegativeMode", {{"depth_mode", "-2"}}, {-2, -50, 1000, 500, 1, 0, -8}, 1}),
    [](const auto& test) { return test.param.name; });

TEST_F(Converter, UnitThatIsAlmostZeroIs1AlsoInTheStoredSetting) {
  for (const float unit : {0.0F, -0.0F, 0.000009F, -0.000009F}) {
    prepare_calibration();
    engine().calib_input.d2d_params_unit = unit;
    const Conversion run = converted(parallel_rig());
    EXPECT_EQ(run.outcome.code, 0);
    EXPECT_EQ(run.depth.baseline, -50.0F);
    EXPECT_EQ(run.depth.d2d_params_unit, 1.0F);
    EXPECT_EQ(engine().calib_input.d2d_params_unit, 1.0F);
  }
}

// --- setters and tables, by hand

// 1 / 500 as a float is 8589935 / 2^32, and 1 / 25000 is 43980464 / 2^40; 1.8 as a float is 15099494 / 2^23.
TEST_F(Converter, ParallelRigFillsTheTables) {
  prepare_calibration();
  ASSERT_EQ(converted(parallel_rig()).outcome.code, 0);
  EXPECT_EQ(d2d_words(), (Words{0x10624DD3, 0xFD60E950}));
  const Words camera{0,          0,          0,          0,          0,          0,          0,          0,         0,
                     0x41893780,  // r0: 8589935 * 2^7
                     0,
                     0xD70A3D50,  // r2: -320 r0, which is -8589935 * 80 / 2^30
                     0,          0x41893780,
                     0xE6666652,  // r5: -200 r4
                     0,          0,          0x80000000, 0x1F400000, 0x1F400000, 0x14000000, 0x0C800000, 0x01900280};
  EXPECT_EQ(rectify_words(1), camera);
  EXPECT_EQ(rectify_words(0), camera);
  // W0 = W5 = 1.8, W2 = 640 - 320 * 1.8, W3 = 900 * -25, W6 = 360 - 200 * 1.8 (2.5 / 2^18), W10 = 1
  EXPECT_EQ(d2c_words(), (Words{0x39999980, 0, 0x00800002, 0xFA81C000, 0, 0x39999980, 3, 0, 0, 0, 0x40000000, 0}));
}

TEST_F(Converter, ReferenceRegisterIsKeptWhileTheDepthModeIsNot0) {
  engine().registers.d2d[0].value = 0x12345678;
  prepare_calibration({{"depth_mode", "1"}});
  ASSERT_EQ(converted(parallel_rig()).outcome.code, 0);
  EXPECT_EQ(d2d_words(), (Words{0x12345678, 0xFD60E950}));
}

TEST_F(Converter, NothingElseIsWritten) {
  prepare_calibration();
  const Elements before = library_registers();
  ASSERT_EQ(converted(sample_rig()).outcome.code, 0);
  const RegisterTables& tables = engine().registers;
  Elements expected = with_values(before, tables.d2d);
  expected = with_values(expected, tables.d2c);
  for (const auto& table : tables.rectify)
    expected = with_values(expected, table);
  EXPECT_EQ(library_registers(), expected);
}

TEST_F(Converter, NullD2cLeavesTheProjectionAsItWas) {
  prepare_calibration({{"clip_left_w_valid", "5000"}});  // would be refused
  const Conversion run = converted(parallel_rig(), false);
  EXPECT_EQ(run.outcome, prints_err(0, lines_of(step_messages())));
  EXPECT_EQ(engine().d2c.w, (std::array<double, 12>{}));
  EXPECT_EQ(d2c_words(), Words(12));  // converted all the same
}

// --- LUT status

struct StatusCase {
  const char* name;
  int status;
  bool kk, map;
};

class ConverterLutStatus : public EngineTest, public testing::WithParamInterface<StatusCase> {};

TEST_P(ConverterLutStatus, ChoosesTheCorrections) {
  const StatusCase& c = GetParam();
  engine().rectify.en0 = {1, 1};
  prepare_calibration({{"distort_type", std::to_string(c.status)}});
  EXPECT_EQ(converted(sample_rig()).outcome, (Outcome{0, c.map ? kTwoLutsConverted : "", lines_of(step_messages())}));
  for (const std::size_t camera : {0U, 1U}) {
    EXPECT_EQ(engine().rectify.camera[camera].kk_set, c.kk);
    EXPECT_EQ(engine().rectify_lut.camera[camera].map_set, c.map);
    EXPECT_EQ(engine().rectify_lut.camera[camera].grid.dx(), nullptr);  // converted and released
    EXPECT_EQ(engine().rectify_lut.camera[camera].grid.dy(), nullptr);
    EXPECT_EQ(engine().registers.rectify[camera][0].value != 0, c.kk);
    EXPECT_EQ(engine().registers.rectify_lut_info[camera][5].value, c.map ? 0x00200030U : 0U);  // 48 x 32 samples
  }
  EXPECT_EQ(engine().rectify.kk_en, c.kk ? 1 : 0);
  EXPECT_EQ(engine().rectify.lut_en0, c.map ? 1 : 0);
  EXPECT_EQ(engine().rectify.lut_en1, c.map ? 1 : 0);
}

INSTANTIATE_TEST_SUITE_P(Calib, ConverterLutStatus,
                         testing::Values(StatusCase{"PolynomialFor0", 0, true, false},
                                         StatusCase{"LutFor1", 1, false, true}, StatusCase{"BothFor2", 2, true, true}),
                         [](const auto& test) { return test.param.name; });

TEST_F(Converter, StatusOf3LeavesNothingToConvert) {
  prepare_calibration({{"distort_type", "3"}});
  const Conversion run = converted(sample_rig());
  std::vector<std::string> messages = step_messages();
  messages.resize(4);
  const char* const failed = "convert_rectify_float_to_register_elements() failed!";
  EXPECT_EQ(run.outcome, prints_err(-2, lines_of(messages) + "need to set rectify params! \n" + failed + "\n"));
  messages.emplace_back(failed);
  EXPECT_EQ(run.passed, messages);
}

TEST_F(Converter, ConfigurationWithALutIsForgottenByOneWithout) {
  prepare_calibration({{"distort_type", "0"}});
  ASSERT_EQ(converted(sample_rig()).outcome.code, 0);
  const Words expected[] = {rectify_words(0), rectify_words(1)};
  reset_engine();

  prepare_calibration({{"distort_type", "1"}});
  ASSERT_EQ(converted(sample_rig()).outcome.code, 0);
  prepare_calibration({{"distort_type", "0"}});
  EXPECT_EQ(converted(sample_rig()).outcome, prints_err(0, lines_of(step_messages())));  // no LUT is converted
  for (const std::size_t camera : {0U, 1U}) {
    EXPECT_TRUE(engine().rectify.camera[camera].kk_set);
    EXPECT_FALSE(engine().rectify_lut.camera[camera].map_set);
    EXPECT_EQ(rectify_words(static_cast<int>(camera)), expected[camera]);
  }
}

TEST_F(Converter, ConfigurationWithoutALutIsForgottenByOneWith) {
  prepare_calibration({{"distort_type", "0"}});
  ASSERT_EQ(converted(sample_rig()).outcome.code, 0);
  prepare_calibration({{"distort_type", "1"}});
  EXPECT_EQ(converted(sample_rig()).outcome, (Outcome{0, kTwoLutsConverted, lines_of(step_messages())}));
  for (const std::size_t camera : {0U, 1U}) {
    EXPECT_FALSE(engine().rectify.camera[camera].kk_set);
    EXPECT_TRUE(engine().rectify_lut.camera[camera].map_set);
    const Words words = rectify_words(static_cast<int>(camera));
    EXPECT_EQ(Words(words.begin(), words.begin() + 9), Words(9));  // images are made of the tables
  }
}

TEST_F(Converter, CorrectionsOfTheCallerAreDropped) {
  const RectifyIntrinsic intrinsic{600, 600, 320, 200, 640, 400};
  const float k[4] = {600, 600, 320, 200};
  std::vector<double> grid(16, 0.25);
  const RectifyLutInfo lut{0, 0, 600, 600, 320, 200, 4, 4, 4, grid.data(), grid.data()};
  ASSERT_EQ(set_camera_mode(1, 0), 0);
  for (const std::uint32_t camera : {0U, 1U})
    ASSERT_EQ(set_rectify_params_map(camera, &intrinsic, &lut, kNoTurn, k), 0);
  prepare_calibration();
  EXPECT_EQ(converted(sample_rig()).outcome, prints_err(0, lines_of(step_messages())));
  for (const RectifyLut& held : engine().rectify_lut.camera) {
    EXPECT_FALSE(held.map_set);
    EXPECT_EQ(held.grid.dx(), nullptr);
    EXPECT_EQ(held.grid.dy(), nullptr);
  }
}

TEST_F(Converter, SameRunTwiceGivesTheSame) {
  for (const char* const status : {"0", "1", "2"}) {
    prepare_calibration({{"distort_type", status}, {"disp_offset", "-40"}});
    const Conversion first = converted(sample_rig());
    const Elements registers = library_registers();
    const Conversion second = converted(sample_rig());  // its baseline is the calibrated one now
    EXPECT_EQ(second.outcome, first.outcome);
    EXPECT_EQ(bytes_of(second.rect), bytes_of(first.rect));
    EXPECT_EQ(bytes_of(second.d2c), bytes_of(first.d2c));
    EXPECT_EQ(bytes_of(second.depth), bytes_of(first.depth));
    EXPECT_EQ(library_registers(), registers);
  }
}

// --- the unit in R

struct UnitInRCase {
  const char* name;
  int in_r;
  float unit;
  float factor;  // of the nine entries of R
};

class UnitInR : public EngineTest, public testing::WithParamInterface<UnitInRCase> {};

TEST_P(UnitInR, ScalesTheRotationAndNotTheTranslation) {
  const UnitInRCase& c = GetParam();
  const auto projection = [&](int in_r) {
    prepare_calibration();
    engine().calib_input.d2d_params_unit = c.unit;
    engine().calib_input.d2d_params_unit_in_R_en = static_cast<std::int8_t>(in_r);
    const Conversion run = converted(parallel_rig());
    EXPECT_EQ(run.d2c.rotation[0], 1.0F);  // the record is not scaled
    EXPECT_EQ(run.d2c.rotation[8], 1.0F);
    return engine().d2c.w;
  };
  const auto plain = projection(0);
  const auto w = projection(c.in_r);
  for (const std::size_t i : {0U, 2U, 5U, 6U, 10U})
    EXPECT_NEAR(w[i], static_cast<double>(c.factor) * plain[i], 1e-3) << i;
  for (const std::size_t i : {3U, 7U, 11U})
    EXPECT_EQ(w[i], plain[i]) << i;
}

INSTANTIATE_TEST_SUITE_P(Calib, UnitInR,
                         testing::Values(UnitInRCase{"On", 1, 2, 2}, UnitInRCase{"Negative", 1, -0.5F, -0.5F},
                                         UnitInRCase{"Off", 0, 2, 1}, UnitInRCase{"OnlyOneIsOn", 2, 2, 1},
                                         UnitInRCase{"MinusOneIsOff", -1, 2, 1},
                                         UnitInRCase{"JustLargeEnough", 1, 0.11F, 0.11F},
                                         UnitInRCase{"ReplacedUnit", 1, 0, 1}),
                         [](const auto& test) { return test.param.name; });

// The baseline in such a unit is out of range: the setters refuse before R is looked at.
TEST_F(Converter, UnitTooSmallForTheBaselineIsRefused) {
  prepare_calibration({{"d2d_params_unit", "0.0001"}, {"d2d_params_unit_in_R_en", "1"}});
  const Conversion run = converted(parallel_rig());
  EXPECT_EQ(run.outcome.code, -2);
  EXPECT_EQ(run.outcome.out, "check baseline!\n");
}

// --- depth pixels in the colour image

Pixel by_projection(const Words& words, double u, double v, double z) {
  constexpr int kFraction[12] = {29, 29, 17, 12, 29, 29, 18, 12, 40, 40, 30, 27};
  const std::array vector{u * z, v * z, z, 1.0};
  Triple sum{};
  for (std::size_t i = 0; i < 12; ++i)
    sum[i / 4] += signed_number(words[i], 32, kFraction[i]) * vector[i % 4];
  return {sum[0] / sum[2], sum[1] / sum[2]};
}

// A point seen by the left camera is a pixel of the rectified, clipped and scaled depth image; the registers take that
// pixel and its depth to where the colour camera sees the point. What is left is the rounding of W0 to W2 to float:
// some 1e-7 of 1e3 pixels, a few times.
TEST_F(Converter, ProjectionTakesDepthPixelsToColourPixelsAsThePinholesDo) {
  constexpr std::uint32_t kSeed = 20240617;
  SCOPED_TRACE(kSeed);
  Random random(kSeed);
  for (int rig = 0; rig < 40; ++rig) {
    SCOPED_TRACE(rig);
    const bool in_r = rig % 2 == 0;
    const float unit = in_r ? random.between(0.5F, 1.5F) : 1.0F;
    prepare_calibration({{"ir_l_virtual_cx_offset", "-3"},
                         {"clip_left_w_depth", "16"},
                         {"clip_top_h_depth", "8"},
                         {"depth_scale", "0.75"},
                         {"clip_left_w_valid", "-24"},
                         {"clip_top_h_valid", "12"},
                         {"valid_scale", "0.75"},
                         {"clip_left_w_rgb", "6"},
                         {"clip_top_h_rgb", "4"},
                         {"d2d_params_unit_in_R_en", in_r ? "1" : "0"}});
    engine().calib_input.d2d_params_unit = unit;
    const CalibrateParamsMulti calib = random_rig(random);
    const Conversion run = converted(calib);
    ASSERT_EQ(run.outcome.code, 0) << run.outcome.out << run.outcome.err;
    const Words w = d2c_words();
    for (int i = 0; i < 25; ++i) {
      const auto coordinate = [&](float low, float high) { return static_cast<double>(random.between(low, high)); };
      const double z = coordinate(400, 6000);
      const Triple point{coordinate(-0.4F, 0.4F) * z, coordinate(-0.25F, 0.25F) * z, z};
      const Triple rectified = turned(run.rect.cam1_rotation, point);
      const Pixel virtual_pixel = projected(run.rect.cam1_rectified, rectified);
      const Pixel calibrated = projected({calib.rgb.fx, calib.rgb.fy, calib.rgb.cx, calib.rgb.cy, 0, 0},
                                         shifted(calib.rgb_translation, turned(calib.rgb_rotation, point)));
      const Pixel expected{(calibrated.u + 24) * 0.75 - 6, (calibrated.v - 12) * 0.75 - 4};
      const Pixel found = by_projection(w,
                                        (virtual_pixel.u - 16) * 0.75,
                                        (virtual_pixel.v - 8) * 0.75,
                                        rectified[2] / (in_r ? static_cast<double>(unit) : 1.0));
      EXPECT_NEAR(found.u, expected.u, 2e-3);
      EXPECT_NEAR(found.v, expected.v, 2e-3);
    }
  }
}

// --- two real rigs; words worked out by an implementation of the formulas that shares nothing with the library

void expect_near_camera(const DeCameraIntrinsic_S& camera, const DeCameraIntrinsic_S& expected) {
  EXPECT_EQ(bytes_of(camera), bytes_of(expected)) << camera.fx << " " << camera.fy << " " << camera.cx << " "
                                                  << camera.cy << " " << camera.width << " " << camera.height;
}

TEST_F(Converter, EurocRig) {
  prepare_calibration({{"baseline", "-110"},
                       {"distort_type", "2"},
                       {"src_img_left_chop", "8"},
                       {"src_img_right_chop", "4"},
                       {"src_img_top_chop", "2"},
                       {"src_img_bottom_chop", "6"},
                       {"dst_focal_scale", "0.8"},
                       {"dst_res_fixed", "1"}});
  const Conversion run = converted(euroc_rig());
  ASSERT_EQ(run.outcome, (Outcome{0, kTwoLutsConverted, lines_of(step_messages())}));
  const DeCameraIntrinsic_S camera{366.92319F, 366.92319F, 360.48041F, 251.68579F, 740, 472};
  expect_near_camera(run.rect.cam1_rectified, camera);
  expect_near_camera(run.rect.cam0_rectified, camera);
  EXPECT_EQ(run.depth.baseline, -110.07784F);
  EXPECT_EQ(d2d_words(), (Words{0x10624DD3, 0xFEB3B252}));
  EXPECT_EQ(rectify_words(1),
            (Words{0x03B77291, 0x0012EEFB, 0x00000000, 0x00001960, 0x00000377, 0x00000128, 0x0000024F, 0x00000CB0,
                   0x00002610, 0x47710180, 0x00321B2E, 0xCD4FFDBE, 0xFFCBF510, 0x47A77600, 0xDD23F25D, 0x024F1700,
                   0x0816D920, 0x7EB23397, 0x16EEC560, 0x16EEC560, 0x1687AFC0, 0x0FBAF900, 0x01D802E4}));
  EXPECT_EQ(rectify_words(0),
            (Words{0x03B76082, 0x00131346, 0x00000000, 0x03FFF246, 0x03FFF902, 0x03FFFDAB, 0x03FFFB57, 0x03FFF923,
                   0x03FFEB69, 0x479B9900, 0x00875EB6, 0xCB58DD33, 0xFF7B0FB0, 0x47D61600, 0xDD1C3207, 0x0238B314,
                   0xF7E9B2B0, 0x7FAF9A89, 0x16EEC560, 0x16EEC560, 0x1687AFC0, 0x0FBAF900, 0x01D802E4}));
  EXPECT_EQ(d2c_words(),
            (Words{0x00000000,
                   0x00000000,
                   0x00000000,
                   0x00000000,
                   0x00000000,
                   0x00000000,
                   0x00000000,
                   0x00000000,
                   0x01716E60,
                   0x01429CAA,
                   0x3F2DB65D,
                   0x00000000}));
  EXPECT_EQ(lut_info_words(1),
            (Words{0x03E003D0, 0x16EEC560, 0x16DD6380, 0x59CDC280, 0x3D980000, 0x00240038, 0x00000100}));
  EXPECT_EQ(lut_info_words(0),
            (Words{0x03E003D0, 0x16E11D20, 0x16CE83E0, 0x5CFFEF80, 0x3F4F3B80, 0x00240038, 0x00000100}));

  std::vector<Words> data(4, Words(2016));
  LutSection sections[4]{};
  for (std::size_t i = 0; i < 4; ++i)
    sections[i].data = data[i].data();
  ASSERT_EQ(de_copy_rectify_lut_register_section(sections, 4), 0);
  const std::uint32_t addresses[4] = {0x52040000, 0x52060000, 0x520C0000, 0x520E0000};
  const Words some[4] = {{0x004D01C0, 0x0049653F, 0x004CA0BC, 0x003D516F, 0x00FFDEC9, 0x00A955BC},
                         {0x0034E204, 0x003475D5, 0x003199C1, 0x0031F2C6, 0x0000127E, 0x00CC5409},
                         {0x004F340C, 0x004C14F2, 0x004F2DC4, 0x0040EAB9, 0x00FFEEA2, 0x00AA7367},
                         {0x0035EBF7,
                          0x0035D9B4,
                          0x0032E13B,
                          0x0034261C,
                          0x00001214,
                          0x00CCB135}};  // words 0, 1, 4, 16, the middle and the last
  const std::uint32_t sums[4] = {0x0866E8D3, 0xEE9050F0, 0xF6C672CB, 0xF5D38DB0};  // of all words, in 32 bits
  for (std::size_t i = 0; i < 4; ++i) {
    EXPECT_EQ(sections[i].address, addresses[i]);
    EXPECT_EQ(sections[i].count, 2016U);  // 56 x 36
    EXPECT_EQ((Words{data[i][0], data[i][1], data[i][4], data[i][16], data[i][1008], data[i][2015]}), some[i]) << i;
    EXPECT_EQ(std::accumulate(data[i].begin(), data[i].end(), std::uint32_t{0}), sums[i]) << i;
  }
}

TEST_F(Converter, KittiRig) {
  prepare_calibration({{"baseline", "-540"},
                       {"ref_dist", "5000"},
                       {"d2d_params_unit", "10"},  // 537 mm are too much in millimetres
                       {"dst_focal_scale", "0.5"},
                       {"ir_l_virtual_cx_offset", "2.5"},
                       {"ir_r_virtual_cx_offset", "-1.5"},
                       {"ir_virtual_cy_offset", "0.75"},
                       {"clip_left_w_depth", "12"},
                       {"clip_top_h_depth", "6"},
                       {"clip_right_w_depth", "20"},
                       {"clip_bottom_h_depth", "10"},
                       {"depth_scale", "0.5"},
                       {"clip_left_w_valid", "16"},
                       {"clip_top_h_valid", "8"},
                       {"clip_right_w_valid", "24"},
                       {"clip_bottom_h_valid", "12"},
                       {"valid_scale", "0.75"},
                       {"clip_left_w_rgb", "4"},
                       {"clip_top_h_rgb", "2"},
                       {"clip_right_w_rgb", "6"},
                       {"clip_bottom_h_rgb", "3"}});
  const Conversion run = converted(kitti_rig());
  ASSERT_EQ(run.outcome, prints_err(0, lines_of(step_messages())));
  expect_near_camera(run.rect.cam1_rectified, {494.76334F, 494.76334F, 689.74506F, 239.18927F, 696, 256});
  expect_near_camera(run.rect.cam0_rectified, {494.76334F, 494.76334F, 685.74506F, 239.18927F, 696, 256});
  expect_near_camera(run.d2c.depth, {247.38167F, 247.38167F, 338.87253F, 116.594635F, 332, 120});
  expect_near_camera(run.d2c.valid, {719.84326F, 717.69385F, 510.0163F, 162.13545F, 1014, 369});
  expect_near_camera(run.d2c.color, {719.84326F, 717.69385F, 506.0163F, 160.13545F, 1004, 364});
  EXPECT_EQ(run.depth.baseline, -53.716766F);
  EXPECT_EQ(run.depth.ref_dist, 500.0F);
  EXPECT_EQ(d2d_words(), (Words{0x20C49BA6, 0xFEC2AC3C}));
  EXPECT_EQ(rectify_words(1),
            (Words{0x03A08B3B, 0x003427A5, 0x03ED7B4F, 0x000122DA, 0x0001100C, 0x00005AAF, 0x0000B55E, 0x0000916D,
                   0x0001B447, 0x214A3F40, 0xFF572C5D, 0xD3C2AB9D, 0x00A7B13D, 0x21683440, 0xF09F18A2, 0xFF022FDB,
                   0xFDB685A4, 0x80CB2678, 0x1EEC36A0, 0x1EEC36A0, 0x2B1BEBC0, 0x0EF30740, 0x010002B8}));
  EXPECT_EQ(rectify_words(0),
            (Words{0x03A2B259, 0x002DD312, 0x03F26560, 0x0000967C, 0x03FF842A, 0x03FFD6B9, 0x03FFAD72, 0x00004B3E,
                   0x0000E1BA, 0x211ABF80, 0x0096BFFC, 0xD0F986CB, 0xFF67CCC0, 0x212B76C0, 0xF03AC8D6, 0x0316A740,
                   0x02586748, 0x7DB4BF30, 0x1EEC36A0, 0x1EEC36A0, 0x2ADBEBC0, 0x0EF30740, 0x010002B8}));
  EXPECT_EQ(d2c_words(),
            (Words{0x5CEB0C00,
                   0xFE87FEBA,
                   0xFC52D69F,
                   0x0AC96720,
                   0x015825DC,
                   0x5CCEA080,
                   0xFD01CBEE,
                   0x0026CD81,
                   0xFF3F4948,
                   0xFFC0AAC2,
                   0x4046E9AC,
                   0x149E1FC0}));
}

}  // namespace
}  // namespace vq3900::test
