#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

#include "support/capture.h"
#include "support/engine_fixture.h"
#include "support/fields.h"
#include "support/numbers.h"
#include "support/rectify_cameras.h"
#include "support/registers.h"

namespace vq3900::test {
namespace {

using Rectify = EngineTest;

constexpr float kUnit[]{1, 1, 0, 0};
constexpr float kNoDistortion[8]{};

// --- status and common switch ---

struct StatusCase {
  const char* name;
  std::uint32_t cam_mode;
  std::int32_t cam0, cam1;
  int code;
  int common, en0, en1;  // afterwards; 7 is what was there
  bool rows_stored;
};

class RectifyStatus : public EngineTest, public testing::WithParamInterface<StatusCase> {};

TEST_P(RectifyStatus, FollowsTheCameraMode) {
  const StatusCase& c = GetParam();
  RectifyState& state = engine().rectify;
  state.rectify_common = 7;
  state.en0 = state.en1 = {7, 7};
  state.start_rows = 7;
  set_cam_mode(c.cam_mode);
  EXPECT_EQ(outcome_of([&] { return set_rectify_status(c.cam0, c.cam1, 0xFFFF0005); }), silent(c.code));
  EXPECT_EQ(state.rectify_common, c.common);
  EXPECT_EQ(state.en0[0], c.en0);
  EXPECT_EQ(state.en1[0], c.en0);
  EXPECT_EQ(state.en0[1], c.en1);
  EXPECT_EQ(state.en1[1], c.en1);
  EXPECT_EQ(state.start_rows, c.rows_stored ? 0xFFFF0005U : 7U);
}

constexpr std::int32_t kMin = std::numeric_limits<std::int32_t>::min();

INSTANTIATE_TEST_SUITE_P(Rectify, RectifyStatus,
                         testing::Values(StatusCase{"SingleCamera0", 0, 1, 0, 0, 0, 1, 0, true},
                                         StatusCase{"SingleCamera1", 0, 0, 1, 0, 0, 0, 1, true},
                                         StatusCase{"SingleNone", 0, 0, 0, 0, 0, 0, 0, true},
                                         StatusCase{"SingleBothIsRefused", 0, 1, 1, -2, 7, 7, 7, false},
                                         StatusCase{"SingleCommonBitIsRefused", 0, 3, 2, -2, 7, 7, 7, false},
                                         StatusCase{"SingleNegativeBitsAreRefused", 0, -1, kMin, -2, 7, 7, 7, false},
                                         StatusCase{"SingleTwoLeavesItsCamera", 0, 2, 1, 0, 0, 7, 1, true},
                                         StatusCase{"SingleMinusOneLeavesItsCamera", 0, 0, -1, 0, 0, 0, 7, true},
                                         StatusCase{"StereoBoth", 1, 1, 1, 0, 1, 1, 1, true},
                                         StatusCase{"StereoNone", 1, 0, 0, 0, 1, 0, 0, true},
                                         StatusCase{"StereoOneIsRefusedButCommonSet", 1, 1, 0, -2, 1, 7, 7, false},
                                         StatusCase{"StereoEqualOddValues", 1, 2, 2, 0, 1, 7, 7, true},
                                         StatusCase{"OtherModesCheckNothing", 2, 1, 0, 0, 7, 1, 0, true},
                                         StatusCase{"OtherModesTakeBoth", 0x101, 1, 1, 0, 7, 1, 1, true}),
                         [](const auto& test) { return test.param.name; });

TEST_F(Rectify, StatusRecoversAfterARefusal) {
  set_cam_mode(1);
  EXPECT_EQ(set_rectify_status(1, 0, 9), -2);
  EXPECT_EQ(set_rectify_status(1, 1, 5), 0);
  EXPECT_EQ(rectify_records().first.cam0_en, 1);
  EXPECT_EQ(rectify_records().first.cam1_en, 1);
  EXPECT_EQ(rectify_records().second.start_rows, 5U);
}

TEST_F(Rectify, CommonSwitchFollowsTheCameraMode) {
  for (const auto& [cam_mode, expected] : {std::pair{0U, 0}, {1U, 0x5A}, {2U, 7}}) {
    set_cam_mode(cam_mode);
    engine().rectify.rectify_common = 7;
    EXPECT_EQ(outcome_of([] { return set_rectify_common(0x5A); }), silent_success());
    EXPECT_EQ(engine().rectify.rectify_common, expected) << cam_mode;
  }
}

// --- correction switches ---

struct CorrectionCase {
  const char* name;
  std::uint8_t en0, en1;  // of cameras 0 and 1
  std::int32_t type;
  int code, kk_en, lut_en;
};

class RectifyCorrection : public EngineTest, public testing::WithParamInterface<CorrectionCase> {};

TEST_P(RectifyCorrection, SetsItsFlags) {
  const CorrectionCase& c = GetParam();
  engine().rectify.en0 = {c.en0, c.en1};
  EXPECT_EQ(outcome_of([&] { return set_rectify_kk_lut(c.type); }), silent(c.code));
  EXPECT_EQ(engine().rectify.kk_en, c.kk_en);
  EXPECT_EQ(engine().rectify.lut_en0, c.lut_en);
  EXPECT_EQ(engine().rectify.lut_en1, c.lut_en);
}

INSTANTIATE_TEST_SUITE_P(Rectify, RectifyCorrection,
                         testing::Values(CorrectionCase{"Polynomial", 1, 0, 0, 0, 1, 0},
                                         CorrectionCase{"Lut", 0, 1, 1, 0, 0, 1},
                                         CorrectionCase{"Both", 1, 1, 2, 0, 1, 1},
                                         CorrectionCase{"UnknownIsRefused", 1, 1, 3, -2, 0, 0},
                                         CorrectionCase{"NegativeIsRefused", 0, 1, -1, -2, 0, 0},
                                         CorrectionCase{"NothingWithoutACamera", 0, 0, 2, 0, 0, 0},
                                         CorrectionCase{"NotEvenARefusalWithoutACamera", 0, 0, 3, 0, 0, 0}),
                         [](const auto& test) { return test.param.name; });

TEST_F(Rectify, CorrectionLooksAtTheFirstEnableBitAlone) {
  engine().rectify.en1 = {1, 1};
  EXPECT_EQ(set_rectify_kk_lut(2), 0);
  EXPECT_EQ(engine().rectify.kk_en, 0);
}

TEST_F(Rectify, CorrectionFlagsAreNeverCleared) {
  set_rectify_status(0, 1, 0);
  for (const std::int32_t type : {0, 1, 0, 3}) {
    set_rectify_kk_lut(type);
    EXPECT_EQ(engine().rectify.kk_en, 1);
  }
  EXPECT_EQ(engine().rectify.lut_en0, 1);
  EXPECT_EQ(engine().rectify.lut_en1, 1);
}

// --- rotation ---

struct RotationCase {
  const char* name;
  std::uint32_t cam_mode;
  std::uint8_t camera_1_on;
  int rotate;
  bool refused;
  int sbg_en, sub_mode_sel;  // afterwards; 7 is what was there
  std::uint32_t rotation_flag;
};

class RectifyRotation : public EngineTest, public testing::WithParamInterface<RotationCase> {};

TEST_P(RectifyRotation, IsStoredAndToldToTheBasicBlock) {
  const RotationCase& c = GetParam();
  RectifyState& state = engine().rectify;
  state.sbg_en = state.sub_mode_sel = state.rotate_90_en = state.rotate_clockwise = 7;
  state.en0 = {1, c.camera_1_on};
  engine().basic.sbg2r_rotate = 0xAABBCC55;
  set_cam_mode(c.cam_mode);
  const Outcome expected = c.refused ? prints_err(-2, "stereo mode:  nonsupport rotation !\n") : silent_success();
  EXPECT_EQ(outcome_of([&] { return set_rectify_sbg2r_config(static_cast<std::int8_t>(c.rotate), 0x81, 0x92, 0xA3); }),
            expected);
  EXPECT_EQ(state.rotate_clockwise, 0x81);
  EXPECT_EQ(state.rotate_90_en, c.rotate & 0xFF);
  EXPECT_EQ(state.sbg_en, c.sbg_en);
  EXPECT_EQ(state.sub_mode_sel, c.sub_mode_sel);
  EXPECT_EQ(engine().basic.sbg2r_rotate, c.rotation_flag);
}

INSTANTIATE_TEST_SUITE_P(Rectify, RectifyRotation,
                         testing::Values(RotationCase{"Single", 0, 1, 1, false, 0x92, 0xA3, 0xAABBCC01},
                                         RotationCase{"SingleOff", 0, 1, 0, false, 0x92, 0xA3, 0xAABBCC00},
                                         RotationCase{"Camera1OffForcesZero", 0, 0, 1, false, 0, 0, 0xAABBCC01},
                                         RotationCase{"StereoIsRefused", 1, 1, 1, true, 7, 7, 0xAABBCC55},
                                         RotationCase{"StereoMinusOneIsRefused", 1, 0, -1, true, 7, 7, 0xAABBCC55},
                                         RotationCase{"StereoLooksAtBitZero", 1, 1, 2, false, 0x92, 0xA3, 0xAABBCC01},
                                         RotationCase{"StereoMinusTwo", 1, 1, -2, false, 0x92, 0xA3, 0xAABBCC01},
                                         RotationCase{"StereoOff", 1, 1, 0, false, 0x92, 0xA3, 0xAABBCC00},
                                         RotationCase{"OtherModesRotate", 2, 1, 1, false, 0x92, 0xA3, 0xAABBCC01}),
                         [](const auto& test) { return test.param.name; });

// --- parameters from calibration ---

TEST_F(Rectify, IdentityRotationGivesTheInverseIntrinsics) {
  const RectifyIntrinsic intrinsic{510, 520, 330, 250, 1280, 800};
  const float k[]{500, 500, 320, 240};
  EXPECT_EQ(outcome_of([&] { return set_rectify_params_brown(1, &intrinsic, kNoDistortion, kIdentity, k); }),
            silent_success());
  const double inverse = static_cast<double>(0.002F);
  const Nine& r = engine().rectify.camera[1].matrix;
  EXPECT_EQ(r, (Nine{inverse, 0, -inverse * 320, 0, inverse, -inverse * 240, 0, 0, 1}));
  EXPECT_NEAR(r[2], -0.64, 1e-7);
  EXPECT_NEAR(r[5], -0.48, 1e-7);
  EXPECT_EQ(bytes_of(engine().rectify.camera[1].intrinsic), bytes_of(intrinsic));
}

TEST_F(Rectify, MatrixAndCoefficientsWorkedOutByHand) {
  const RectifyIntrinsic intrinsic{};
  const float rotation[]{1, 2, 3, 4, 5, 6, 7, 8, 9};
  const float k[]{2, 4, 1, 3};
  const float distortion[]{1, 2, 3, 40, 50, 60, 7, 8};
  EXPECT_EQ(set_rectify_params_brown(1, &intrinsic, distortion, rotation, k), 0);
  EXPECT_EQ(engine().rectify.camera[1].matrix, (Nine{0.5, 1, 3.5, 1, 1.25, 3.25, 1.5, 1.5, 3}));
  EXPECT_EQ(engine().rectify.camera[1].kk, (Nine{1, 2, 3, 14, 24, 8, 16, 7, 21}));
}

Nine expected_matrix(const float* r, const float* k) {
  Nine m{};
  for (std::size_t row = 0; row < 3; ++row) {
    const float x = r[row] / k[0];
    const float y = r[3 + row] / k[1];
    m[3 * row] = static_cast<double>(x);
    m[3 * row + 1] = static_cast<double>(y);
    const double off_x = static_cast<double>(x) * static_cast<double>(k[2]);
    const double off_y = static_cast<double>(y) * static_cast<double>(k[3]);
    const double first = static_cast<double>(r[6 + row]) - off_x;
    m[3 * row + 2] = first - off_y;
  }
  return m;
}

Nine expected_kk(const float* d) {
  const float p1_twice = 2.0F * d[6], p2_thrice = 3.0F * d[7], p2_twice = 2.0F * d[7], p1_thrice = 3.0F * d[6];
  const float kk[]{d[0], d[1], d[2], p1_twice, p2_thrice, d[7], p2_twice, d[6], p1_thrice};
  Nine wide{};
  for (std::size_t i = 0; i < 9; ++i)
    wide[i] = static_cast<double>(kk[i]);
  return wide;
}

TEST_F(Rectify, MatrixAndCoefficientsAreExactInMixedPrecision) {
  constexpr std::uint32_t kSeed = 390005;
  Random random(kSeed);
  int not_double = 0;
  int not_single = 0;
  for (int i = 0; i < 400; ++i) {
    SCOPED_TRACE(testing::Message() << "seed " << kSeed << ", calibration " << i);
    float rotation[9], distortion[8];
    for (float& value : rotation)
      value = random.between(-1, 1);
    for (float& value : distortion)
      value = random.between(-0.5F, 0.5F);
    const float k[]{
        random.between(300, 2000), random.between(300, 2000), random.between(200, 1000), random.between(200, 1000)};
    const RectifyIntrinsic intrinsic{};
    ASSERT_EQ(set_rectify_params_brown(1, &intrinsic, distortion, rotation, k), 0);
    const Nine matrix = expected_matrix(rotation, k);
    const Nine kk = expected_kk(distortion);
    for (std::size_t n = 0; n < 9; ++n) {
      ASSERT_EQ(bits_of(engine().rectify.camera[1].matrix[n]), bits_of(matrix[n])) << "rectify_r" << n;
      ASSERT_EQ(bits_of(engine().rectify.camera[1].kk[n]), bits_of(kk[n])) << "rectify_k" << n;
    }
    if (static_cast<double>(rotation[0]) / static_cast<double>(k[0]) != matrix[0]) ++not_double;
    if (static_cast<double>(static_cast<float>(matrix[2])) != matrix[2]) ++not_single;
  }
  EXPECT_GT(not_double, 350);  // the inputs tell the precisions apart
  EXPECT_GT(not_single, 350);
}

struct CameraCase {
  const char* name;
  std::uint32_t cam_mode, cam_id;
  int camera;  // -1: refused
};

class RectifyCamera : public EngineTest, public testing::WithParamInterface<CameraCase> {};

TEST_P(RectifyCamera, IsChosenByModeAndId) {
  const CameraCase& c = GetParam();
  set_cam_mode(c.cam_mode);
  const RectifyIntrinsic intrinsic{1, 2, 3, 4, 5, 6};
  const RegisterTables before = engine().registers;
  EXPECT_EQ(outcome_of([&] { return set_rectify_params_brown(c.cam_id, &intrinsic, kNoDistortion, kIdentity, kUnit); }),
            silent(c.camera < 0 ? -2 : 0));
  for (int camera = 0; camera < 2; ++camera) {
    const RectifyCameraParams& params = engine().rectify.camera[static_cast<std::size_t>(camera)];
    const bool chosen = camera == c.camera;
    EXPECT_EQ(bytes_of(params.intrinsic), bytes_of(chosen ? intrinsic : RectifyIntrinsic{}));
    EXPECT_EQ(params.matrix, (chosen ? Nine{1, 0, 0, 0, 1, 0, 0, 0, 1} : Nine{}));
    EXPECT_EQ(params.kk_set, chosen);
  }
  EXPECT_EQ(differences_from(before), "");
}

INSTANTIATE_TEST_SUITE_P(
    Rectify, RectifyCamera,
    testing::Values(CameraCase{"SingleIsAlwaysCamera1", 0, 0, 1}, CameraCase{"SingleCamera1", 0, 1, 1},
                    CameraCase{"SingleTakesAnyId", 0, 0xFFFFFFFF, 1}, CameraCase{"StereoCamera0", 1, 0, 0},
                    CameraCase{"StereoCamera1", 1, 1, 1}, CameraCase{"StereoRefusesCamera2", 1, 2, -1},
                    CameraCase{"StereoRefusesLargeIds", 1, 0x100, -1}, CameraCase{"OtherModesAreStereo", 3, 0, 0},
                    CameraCase{"OtherModesRefuseCamera2", 3, 2, -1}),
    [](const auto& test) { return test.param.name; });

TEST_F(Rectify, NullParametersAreRefusedAndChangeNothing) {
  const RectifyIntrinsic some{1, 2, 3, 4, 5, 6};
  const float k[]{1, 1, 0, 0};
  const auto refused = [](auto... arguments) {
    EXPECT_EQ(outcome_of([&] { return set_rectify_params_brown(1, arguments...); }), silent(-2));
    EXPECT_FALSE(engine().rectify.camera[1].kk_set);
    EXPECT_EQ(engine().rectify.camera[1].intrinsic.width, 0);
  };
  refused(nullptr, kNoDistortion, kIdentity, k);
  refused(&some, nullptr, kIdentity, k);
  refused(&some, kNoDistortion, nullptr, k);
  refused(&some, kNoDistortion, kIdentity, nullptr);
}

// --- records ---

TEST_F(Rectify, RecordsComeOutAsTheyWentInWithUnusedBytesZero) {
  const auto params = counting_bytes<DeRectifyParams_S>();
  const auto ctrl = counting_bytes<DeRectifyCtrlParams_S>();
  EXPECT_EQ(outcome_of([&] { return de_update_rectify_params(&params, &ctrl); }), silent_success());
  auto params_out = filled_with<DeRectifyParams_S>(0xEE);
  auto ctrl_out = filled_with<DeRectifyCtrlParams_S>(0xEE);
  EXPECT_EQ(outcome_of([&] { return de_copy_rectify_params(&params_out, &ctrl_out); }), silent_success());
  std::vector<unsigned char> expected = bytes_of(params);
  expected[2] = expected[3] = 0;
  EXPECT_EQ(bytes_of(params_out), expected);
  expected = bytes_of(ctrl);
  expected[0] = expected[1] = expected[6] = expected[7] = 0;
  EXPECT_EQ(bytes_of(ctrl_out), expected);
}

TEST_F(Rectify, RecordsSetBothEnableBitsCamera1First) {
  auto params = filled_with<DeRectifyParams_S>(0);
  const auto ctrl = filled_with<DeRectifyCtrlParams_S>(0);
  params.cam1_en = 1;
  de_update_rectify_params(&params, &ctrl);
  EXPECT_EQ(bytes_of(params)[0], 1);
  convert_rectify_control_float_to_register();
  EXPECT_EQ(word_at(kControl[0]), 0U);
  EXPECT_EQ(word_at(kControl[1]), 3U);
}

TEST_F(Rectify, RecordsSetBothEnableBitsOfEachCamera) {
  const auto ctrl = filled_with<DeRectifyCtrlParams_S>(0);
  for (const auto& [cam0, cam1] : {std::pair{0, 0}, {0, 1}, {1, 0}, {1, 1}}) {
    SCOPED_TRACE(testing::Message() << "camera 0 " << cam0 << ", camera 1 " << cam1);
    RectifyState& state = engine().rectify;
    state.en0 = state.en1 = {7, 7};
    auto params = filled_with<DeRectifyParams_S>(0);
    params.cam0_en = static_cast<std::uint8_t>(cam0);
    params.cam1_en = static_cast<std::uint8_t>(cam1);
    EXPECT_EQ(outcome_of([&] { return de_update_rectify_params(&params, &ctrl); }), silent_success());
    EXPECT_EQ(state.en0[0], cam0);
    EXPECT_EQ(state.en1[0], cam0);
    EXPECT_EQ(state.en0[1], cam1);
    EXPECT_EQ(state.en1[1], cam1);
    EXPECT_EQ(convert_rectify_control_float_to_register(), 0);
    EXPECT_EQ(word_at(kControl[0]), cam0 == 0 ? 0U : 3U);
    EXPECT_EQ(word_at(kControl[1]), cam1 == 0 ? 0U : 3U);
  }
}

TEST_F(Rectify, NullRecordsAreRefusedAndChangeNothing) {
  const auto params = counting_bytes<DeRectifyParams_S>();
  const auto ctrl = counting_bytes<DeRectifyCtrlParams_S>();
  EXPECT_EQ(outcome_of([&] { return de_update_rectify_params(&params, nullptr); }), silent(-2));
  EXPECT_EQ(outcome_of([&] { return de_update_rectify_params(nullptr, &ctrl); }), silent(-2));
  auto params_out = filled_with<DeRectifyParams_S>(0xEE);
  auto ctrl_out = filled_with<DeRectifyCtrlParams_S>(0xEE);
  EXPECT_EQ(outcome_of([&] { return de_copy_rectify_params(&params_out, nullptr); }), silent(-2));
  EXPECT_EQ(outcome_of([&] { return de_copy_rectify_params(nullptr, &ctrl_out); }), silent(-2));
  EXPECT_EQ(params_out.cam1_en, 0xEE);
  EXPECT_EQ(ctrl_out.sbg_en, 0xEE);
  EXPECT_EQ(bytes_of(rectify_records().first), std::vector<unsigned char>(44));
  EXPECT_EQ(bytes_of(rectify_records().second), std::vector<unsigned char>(12));
}

}  // namespace
}  // namespace vq3900::test
