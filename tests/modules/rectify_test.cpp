#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "support/capture.h"
#include "support/engine_fixture.h"
#include "support/fields.h"
#include "support/numbers.h"
#include "support/registers.h"

namespace vq3900::test {
namespace {

using Rectify = EngineTest;
using Nine = std::array<double, 9>;

constexpr std::uint32_t kBlock[] = {0x52080000, 0x52000000};  // by camera
constexpr std::uint32_t kControl[] = {0x52080070, 0x52000070};
constexpr std::uint32_t kSbg2r = 0x520000A0;
constexpr const char* kMissing = "need to set rectify params! \n";

constexpr float kIdentity[]{1, 0, 0, 0, 1, 0, 0, 0, 1};
constexpr float kUnit[]{1, 1, 0, 0};
constexpr float kNoDistortion[8]{};

void set_cam_mode(std::uint32_t mode) {
  engine().basic.cam_mode = mode;
}

// Gives a camera parameters whose registers tell it from the other one.
void give_params(std::uint32_t camera, float tag) {
  const RectifyIntrinsic intrinsic{tag, 2 * tag, 3 * tag, 4 * tag, 0x123, 0x456};
  const float distortion[]{0.5F, 0, 0, 0, 0, 0, 0, 0};
  const float k[]{2048, 2048, 0, 0};
  EXPECT_EQ(set_rectify_params_brown(camera, &intrinsic, distortion, kIdentity, k), 0);
}

std::pair<DeRectifyParams_S, DeRectifyCtrlParams_S> records() {
  std::pair<DeRectifyParams_S, DeRectifyCtrlParams_S> out;
  EXPECT_EQ(de_copy_rectify_params(&out.first, &out.second), 0);
  return out;
}

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
  EXPECT_EQ(records().first.cam0_en, 1);
  EXPECT_EQ(records().first.cam1_en, 1);
  EXPECT_EQ(records().second.start_rows, 5U);
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
  EXPECT_EQ(bytes_of(records().first), std::vector<unsigned char>(44));
  EXPECT_EQ(bytes_of(records().second), std::vector<unsigned char>(12));
}

// --- control registers ---

constexpr FieldRow<RectifyState> kOwnControl[] = {
    field_row<&RectifyState::en0, 0>("en0[0]", kControl[0], 0, 0),
    field_row<&RectifyState::en1, 0>("en1[0]", kControl[0], 1, 1),
    field_row<&RectifyState::en0, 1>("en0[1]", kControl[1], 0, 0),
    field_row<&RectifyState::en1, 1>("en1[1]", kControl[1], 1, 1),
    field_row<&RectifyState::sbg_en>("sbg_en", kSbg2r, 1, 1),
    field_row<&RectifyState::rotate_90_en>("rotate_90_en", kSbg2r, 2, 2),
    field_row<&RectifyState::rotate_clockwise>("rotate_clockwise", kSbg2r, 3, 3),
    field_row<&RectifyState::sub_mode_sel>("sub_mode_sel", kSbg2r, 4, 4),
};

constexpr FieldRow<RectifyState> kCommon[] = {
    field_row<&RectifyState::rectify_common>("rectify_common", kControl[0], 10, 10)};

// Written to both cameras' registers.
std::vector<FieldRow<RectifyState>> shared_control(std::uint32_t address) {
  return {field_row<&RectifyState::lut_en0>("lut_en0", address, 2, 2),
          field_row<&RectifyState::kk_en>("kk_en", address, 3, 3),
          field_row<&RectifyState::lut_en1>("lut_en1", address, 4, 4),
          field_row<&RectifyState::start_rows>("start_rows", address, 27, 16)};
}

std::vector<FieldRow<RectifyState>> all_control() {
  std::vector<FieldRow<RectifyState>> rows(std::begin(kOwnControl), std::end(kOwnControl));
  rows.push_back(kCommon[0]);
  for (const std::uint32_t address : kControl) {
    for (const FieldRow<RectifyState>& row : shared_control(address))
      rows.push_back(row);
  }
  return rows;
}

TEST_F(Rectify, ControlKeepsTheBitsItDoesNotOwn) {
  expect_other_bits_survive<RectifyState>(
      all_control(), {}, engine().rectify, {}, convert_rectify_control_float_to_register);
}

TEST_F(Rectify, EveryOwnControlFieldLandsInItsBits) {
  expect_fields_land_in_their_bits<RectifyState>(
      kOwnControl, engine().rectify, {}, convert_rectify_control_float_to_register);
  expect_fields_land_in_their_bits<RectifyState>(
      kCommon, engine().rectify, {}, convert_rectify_control_float_to_register);
}

TEST_F(Rectify, SharedControlFieldsLandInBothRegisters) {
  const std::vector<FieldRow<RectifyState>> rows = shared_control(0);
  for (const FieldRow<RectifyState>& row : rows) {
    std::vector<std::uint32_t> values = field_values(row.bits, true);
    for (const std::uint32_t value : too_wide_values(row.bits))
      values.push_back(value);
    for (const std::uint32_t value : values) {
      fill_all_registers(0);
      RegisterTables expected = engine().registers;
      engine().rectify = {};
      row.put(engine().rectify, value);
      convert_rectify_control_float_to_register();
      for (const std::uint32_t address : kControl)
        word_at(expected, address) = row.bits.replaced(0, value);
      ASSERT_EQ(differences_from(expected), "") << row.name << " = " << value;
    }
  }
}

TEST_F(Rectify, ControlWordsWorkedOutByHand) {
  set_cam_mode(1);
  EXPECT_EQ(set_rectify_status(1, 1, 0xFABC), 0);
  EXPECT_EQ(set_rectify_kk_lut(0), 0);
  EXPECT_EQ(set_rectify_sbg2r_config(0, 1, 1, 0), 0);
  EXPECT_EQ(outcome_of(convert_rectify_control_float_to_register), silent_success());
  EXPECT_EQ(word_at(kControl[0]), 0x0ABC040BU);
  EXPECT_EQ(word_at(kControl[1]), 0x0ABC000BU);
  EXPECT_EQ(word_at(kSbg2r), 0x0000000AU);
  EXPECT_EQ(records().second.start_rows, 0xFABCU);  // stored whole

  set_cam_mode(0);
  EXPECT_EQ(set_rectify_status(0, 1, 16), 0);
  EXPECT_EQ(set_rectify_kk_lut(1), 0);
  EXPECT_EQ(set_rectify_sbg2r_config(1, 0, 0, 1), 0);
  EXPECT_EQ(outcome_of(convert_rectify_control_float_to_register), silent_success());
  EXPECT_EQ(word_at(kControl[0]), 0x0010001CU);
  EXPECT_EQ(word_at(kControl[1]), 0x0010001FU);
  EXPECT_EQ(word_at(kSbg2r), 0x00000014U);
}

// --- parameter registers ---

// A number of a camera: its register's place in the block, its format and whether it comes back with a sign.
struct NumberRow {
  std::string name;
  std::uint32_t offset;
  unsigned width;
  int frac_bits;
  bool is_signed;
  std::size_t index;

  bool is_kk() const { return width == 26; }
  bool is_float() const { return offset >= 0x60; }
  std::string step() const {
    return std::string("convert_rectify_") + (is_kk() ? "kk" : "commom") + "_float_to_register error!,camera id = ";
  }
  void put(std::uint32_t camera, double value) const {
    RectifyCameraParams& params = engine().rectify.camera[camera];
    float* const intrinsic[] = {&params.intrinsic.fx, &params.intrinsic.fy, &params.intrinsic.cx, &params.intrinsic.cy};
    if (is_float()) {
      *intrinsic[index] = static_cast<float>(value);
    } else {
      (is_kk() ? params.kk : params.matrix)[index] = value;
    }
  }
  double take(std::uint32_t camera) const {
    const RectifyCameraParams& params = engine().rectify.camera[camera];
    const float intrinsic[] = {params.intrinsic.fx, params.intrinsic.fy, params.intrinsic.cx, params.intrinsic.cy};
    return is_float() ? static_cast<double>(intrinsic[index]) : (is_kk() ? params.kk : params.matrix)[index];
  }
};

std::vector<NumberRow> numbers() {
  std::vector<NumberRow> rows;
  constexpr int kFraction[] = {39, 40, 30, 40, 39, 30, 41, 43, 31};
  constexpr const char* kIntrinsic[] = {"rectify_fx", "rectify_fy", "rectify_cx", "rectify_cy"};
  for (std::uint32_t i = 0; i < 9; ++i)
    rows.push_back({"rectify_r" + std::to_string(i), 0x30 + 4 * i, 32, kFraction[i], i % 4 != 0, i});
  for (std::uint32_t i = 0; i < 4; ++i)
    rows.push_back({kIntrinsic[i], 0x60 + 4 * i, 32, 20, false, i});
  for (std::uint32_t i = 0; i < 9; ++i)
    rows.push_back({"rectify_k" + std::to_string(i), 4 * i, 26, 24, true, i});
  return rows;
}

// The words of a camera with R = 1, K = (500, 500, 320, 240), k = (0.1, -0.25, 0.03), p = (0.001, -0.002).
constexpr std::uint32_t kHandWords[][2] = {
    {0x00, 0x0019999A}, {0x04, 0x03C00000}, {0x08, 0x0007AE14}, {0x0C, 0x00008312}, {0x10, 0x03FE76C9},
    {0x14, 0x03FF7CEE}, {0x18, 0x03FEF9DB}, {0x1C, 0x00004189}, {0x20, 0x0000C49C}, {0x30, 0x41893780},
    {0x34, 0x00000000}, {0x38, 0xD70A3D50}, {0x3C, 0x00000000}, {0x40, 0x41893780}, {0x44, 0xE147ADFC},
    {0x48, 0x00000000}, {0x4C, 0x00000000}, {0x50, 0x80000000}, {0x60, 0x1F400000}, {0x64, 0x20040000},
    {0x68, 0x14080000}, {0x6C, 0x0F040000}};

void give_hand_params(std::uint32_t camera) {
  const RectifyIntrinsic intrinsic{500, 512.25F, 320.5F, 240.25F, 0x9500, 0xF320};
  const float distortion[]{0.1F, -0.25F, 0.03F, 9, 9, 9, 0.001F, -0.002F};
  const float k[]{500, 500, 320, 240};
  EXPECT_EQ(set_rectify_params_brown(camera, &intrinsic, distortion, kIdentity, k), 0);
}

void expect_hand_words(RegisterTables& expected, std::uint32_t camera, std::uint32_t background) {
  for (const auto& [offset, word] : kHandWords)
    word_at(expected, kBlock[camera] + offset) = word;
  word_at(expected, kBlock[camera] + 0x78) = (background & 0xF000F000) | 0x03200500;
}

TEST_F(Rectify, SingleCameraGoesIntoBothTables) {
  give_hand_params(1);
  for (const std::uint32_t background : kBackgrounds) {
    fill_all_registers(background);
    RegisterTables expected = engine().registers;
    expect_hand_words(expected, 0, background);
    expect_hand_words(expected, 1, background);
    EXPECT_EQ(outcome_of(convert_rectify_params_to_register_elements), silent_success());
    EXPECT_EQ(differences_from(expected), "");
  }
}

TEST_F(Rectify, StereoCamerasGoIntoTheirOwnTables) {
  for (const std::uint32_t cam_mode : {1U, 2U, 0x100U}) {
    for (const std::uint32_t camera : {0U, 1U}) {
      reset_engine();
      set_cam_mode(cam_mode);
      give_hand_params(camera);
      fill_all_registers(0xA5A5A5A5);
      RegisterTables expected = engine().registers;
      expect_hand_words(expected, camera, 0xA5A5A5A5);
      // The other camera was never given: its common parameters are zeros, its coefficients are left.
      const std::uint32_t other = kBlock[1 - camera];
      for (std::uint32_t offset = 0x30; offset <= 0x6C; offset += 4) {
        if (offset <= 0x50 || offset >= 0x60) word_at(expected, other + offset) = 0;
      }
      word_at(expected, other + 0x78) = 0xA5A5A5A5 & 0xF000F000;
      EXPECT_EQ(outcome_of(convert_rectify_params_to_register_elements), silent_success());
      EXPECT_EQ(differences_from(expected), "");
    }
  }
}

TEST_F(Rectify, MissingParametersAreRefusedAndWriteNothing) {
  fill_all_registers(0xA5A5A5A5);
  const RegisterTables before = engine().registers;
  for (const std::uint32_t cam_mode : {0U, 1U, 2U}) {
    set_cam_mode(cam_mode);
    EXPECT_EQ(outcome_of(convert_rectify_params_to_register_elements), prints_err(-2, kMissing));
  }
  set_cam_mode(1);
  give_params(0, 100);  // camera 0 is not what a single camera needs
  set_cam_mode(0);
  EXPECT_EQ(outcome_of(convert_rectify_params_to_register_elements), prints_err(-2, kMissing));
  EXPECT_EQ(differences_from(before), "");
  give_params(0, 100);
  EXPECT_EQ(outcome_of(convert_rectify_params_to_register_elements), silent_success());
  EXPECT_EQ(outcome_of(convert_rectify_params_to_register_elements), silent_success());  // given once, kept
}

TEST_F(Rectify, ReadBackDoesNotCountAsParameters) {
  EXPECT_EQ(convert_rectify_registers_to_float(true), 0);
  EXPECT_EQ(outcome_of(convert_rectify_params_to_register_elements), prints_err(-2, kMissing));
}

TEST_F(Rectify, EveryNumberOverflowsUnderItsNameAndIsNotWritten) {
  for (const NumberRow& row : numbers()) {
    SCOPED_TRACE(row.name);
    reset_engine();
    give_params(0, 100);
    fill_all_registers(0x5A5A5A5A);
    const double value = std::ldexp(1.0, static_cast<int>(row.width) - row.frac_bits);
    row.put(1, value);
    EXPECT_EQ(
        outcome_of(convert_rectify_params_to_register_elements),
        prints_out(4096, overflow_lines(value, row.width, row.frac_bits, row.name.c_str()) + row.step() + "1 \n"));
    EXPECT_EQ(word_at(kBlock[0] + row.offset), 0x5A5A5A5AU);
    EXPECT_EQ(word_at(kBlock[1] + row.offset), 0x5A5A5A5AU);
    row.put(1, 0);
    EXPECT_EQ(outcome_of(convert_rectify_params_to_register_elements), silent_success());
    EXPECT_EQ(word_at(kBlock[1] + row.offset), 0U);
  }
}

TEST_F(Rectify, SingleCameraOverflowStopsInTheFirstTable) {
  give_params(1, 100);
  fill_all_registers(0x5A5A5A5A);
  engine().rectify.camera[1].intrinsic.fy = 4096;
  EXPECT_EQ(outcome_of(convert_rectify_params_to_register_elements).code, 4096);
  EXPECT_EQ(word_at(0x52080060), 100U << 20);  // camera 0's table is the first
  EXPECT_EQ(word_at(0x52080064), 0x5A5A5A5AU);
  EXPECT_EQ(word_at(0x52080068), 0x5A5A5A5AU);
  EXPECT_EQ(word_at(0x52000060), 0x5A5A5A5AU);

  engine().rectify.camera[1].intrinsic.fy = 1;
  engine().rectify.camera[1].kk[4] = 4;
  EXPECT_EQ(outcome_of(convert_rectify_params_to_register_elements).code, 4096);
  EXPECT_EQ(word_at(0x52000060), 100U << 20);  // the common step of both tables is done
  EXPECT_EQ(word_at(0x52080000), 0x00800000U);
  EXPECT_EQ(word_at(0x52080010), 0x5A5A5A5AU);
  EXPECT_EQ(word_at(0x52000000), 0x5A5A5A5AU);
}

TEST_F(Rectify, StereoOverflowNamesTheCameraAndKeepsTheOneBefore) {
  set_cam_mode(1);
  give_params(0, 100);
  give_params(1, 200);
  fill_all_registers(0x5A5A5A5A);
  engine().rectify.camera[1].kk[8] = 4;
  EXPECT_EQ(outcome_of(convert_rectify_params_to_register_elements),
            prints_out(4096,
                       overflow_lines(4, 26, 24, "rectify_k8") +
                           "convert_rectify_kk_float_to_register error!,camera id = 1 \n"));
  EXPECT_EQ(word_at(0x52000060), 200U << 20);  // camera 1 is the first
  EXPECT_EQ(word_at(0x52000000), 0x00800000U);
  EXPECT_EQ(word_at(0x52080060), 0x5A5A5A5AU);

  engine().rectify.camera[1].kk[8] = 0;
  engine().rectify.camera[0].matrix[8] = 2;
  EXPECT_EQ(outcome_of(convert_rectify_params_to_register_elements),
            prints_out(4096,
                       overflow_lines(2, 32, 31, "rectify_r8") +
                           "convert_rectify_commom_float_to_register error!,camera id = 0 \n"));
  EXPECT_EQ(word_at(0x52000020), 0U);
  EXPECT_EQ(word_at(0x5208004C), 0U);
  EXPECT_EQ(word_at(0x52080060), 0x5A5A5A5AU);
}

TEST_F(Rectify, LegitimateAllOnesReadsAsOverflowWithoutTheEncodersLines) {
  give_params(1, 100);
  word_at(0x52080034) = 0x5A5A5A5A;
  engine().rectify.camera[1].matrix[1] = -std::ldexp(1.0, -40);
  EXPECT_EQ(outcome_of(convert_rectify_params_to_register_elements),
            prints_out(4096, "convert_rectify_commom_float_to_register error!,camera id = 1 \n"));
  EXPECT_EQ(word_at(0x52080034), 0x5A5A5A5AU);
  // 26 ones are not 32.
  engine().rectify.camera[1].matrix[1] = 0;
  engine().rectify.camera[1].kk[1] = -std::ldexp(1.0, -24);
  EXPECT_EQ(outcome_of(convert_rectify_params_to_register_elements), silent_success());
  EXPECT_EQ(word_at(0x52080004), 0x03FFFFFFU);
}

TEST_F(Rectify, NumbersThatAreNoneOverflow) {
  for (const float value : {kNan, kInfinity, -kInfinity}) {
    give_params(1, 100);
    engine().rectify.camera[1].intrinsic.cx = value;
    const Outcome outcome = outcome_of(convert_rectify_params_to_register_elements);
    EXPECT_EQ(outcome.code, 4096);
    EXPECT_TRUE(
        outcome.out.ends_with("error code 01: value overflow in rectify_cx \n"
                              "convert_rectify_commom_float_to_register error!,camera id = 1 \n"));
  }
}

// --- registers to parameters ---

TEST_F(Rectify, EveryNumberComesBackAndForth) {
  constexpr std::uint32_t kSeed = 390006;
  Random random(kSeed);
  give_params(1, 100);
  for (const NumberRow& row : numbers()) {
    std::vector<std::uint32_t> raws = field_values({0, row.width - 1, 0}, false);
    for (int i = 0; i < 100; ++i)
      raws.push_back(random.word() >> (32 - row.width));
    for (const std::uint32_t raw : raws) {
      SCOPED_TRACE(testing::Message() << "seed " << kSeed << ", " << row.name << " 0x" << std::hex << raw);
      word_at(kBlock[1] + row.offset) = raw;
      ASSERT_EQ(convert_rectify_registers_to_float(true), 0);
      const double value =
          row.is_signed ? signed_number(raw, row.width, row.frac_bits) : unsigned_number(raw, row.frac_bits);
      ASSERT_EQ(row.take(1), row.is_float() ? static_cast<double>(static_cast<float>(value)) : value);
      if (row.take(1) == value && raw != 0xFFFFFFFF) {
        word_at(kBlock[1] + row.offset) = ~raw;
        ASSERT_EQ(convert_rectify_params_to_register_elements(), 0);
        ASSERT_EQ(word_at(kBlock[1] + row.offset), raw);
      }
      word_at(kBlock[1] + row.offset) = 0;
    }
  }
}

TEST_F(Rectify, DiagonalAndIntrinsicsComeBackWithoutTheirSign) {
  give_params(1, 100);
  engine().rectify.camera[1].matrix = {-0.001, -0.001, -0.5, -0.001, -0.001, -0.5, -0.0005, -0.0001, -0.5};
  engine().rectify.camera[1].intrinsic.cx = -1;
  ASSERT_EQ(outcome_of(convert_rectify_params_to_register_elements), silent_success());
  EXPECT_EQ(convert_rectify_registers_to_float(true), 0);
  const Nine& r = engine().rectify.camera[1].matrix;
  EXPECT_NEAR(r[0], 1.0 / 128 - 0.001, 1e-11);
  EXPECT_NEAR(r[1], -0.001, 1e-11);
  EXPECT_EQ(r[2], -0.5);
  EXPECT_NEAR(r[3], -0.001, 1e-11);
  EXPECT_NEAR(r[4], 1.0 / 128 - 0.001, 1e-11);
  EXPECT_EQ(r[5], -0.5);
  EXPECT_NEAR(r[6], -0.0005, 1e-11);
  EXPECT_NEAR(r[7], -0.0001, 1e-11);
  EXPECT_EQ(r[8], 1.5);
  EXPECT_EQ(engine().rectify.camera[1].intrinsic.cx, 4095.0F);
}

TEST_F(Rectify, CoefficientsTakeTheWholeRegisterWhenTheirSignBitIsClear) {
  word_at(0x52000000) = 0x04000001;
  word_at(0x52000004) = 0xFE000000;
  word_at(0x52000008) = 0xFFFFFFFF;
  convert_rectify_registers_to_float(true);
  const Nine& k = engine().rectify.camera[1].kk;
  EXPECT_EQ(k[0], 67108865.0 / 16777216);
  EXPECT_EQ(k[1], -2.0);
  EXPECT_EQ(k[2], -1.0 / 16777216);
}

// Registers that tell the cameras apart.
void fill_two_cameras() {
  for (const std::uint32_t camera : {0U, 1U}) {
    word_at(kBlock[camera] + 0x60) = (100 + camera) << 20;
    word_at(kBlock[camera] + 0x78) = 0xF320F500 + camera;
    word_at(kBlock[camera] + 0x04) = (camera + 1) << 22;
    word_at(kBlock[camera] + 0x38) = (camera + 1) << 28;
  }
  word_at(kControl[0]) = 0xF123040D;  // en0, lut_en0, kk_en
  word_at(kControl[1]) = 0xF4560012;  // en1, lut_en1
  word_at(kSbg2r) = 0xFFFFFFEB;       // sbg_en and rotate_clockwise
}

void expect_camera(std::size_t camera, unsigned from) {
  const RectifyCameraParams& params = engine().rectify.camera[camera];
  EXPECT_EQ(params.intrinsic.fx, 100.0F + static_cast<float>(from));
  EXPECT_EQ(params.intrinsic.width, 0x500 + from);
  EXPECT_EQ(params.intrinsic.height, 0x320);
  EXPECT_EQ(params.kk[1], 0.25 * (from + 1));
  EXPECT_EQ(params.matrix[2], 0.25 * (from + 1));
}

void expect_camera_untouched(std::size_t camera) {
  EXPECT_EQ(bytes_of(engine().rectify.camera[camera].intrinsic), std::vector<unsigned char>(20));
  EXPECT_EQ(engine().rectify.camera[camera].kk, Nine{});
  EXPECT_EQ(engine().rectify.camera[camera].matrix, Nine{});
}

// en0[0], en1[0], en0[1], en1[1], lut_en0, kk_en, lut_en1, start_rows, sbg_en, rotate_90_en, rotate_clockwise,
// sub_mode_sel
using Flags = std::vector<unsigned>;

Flags flags() {
  const RectifyState& r = engine().rectify;
  return {r.en0[0],
          r.en1[0],
          r.en0[1],
          r.en1[1],
          r.lut_en0,
          r.kk_en,
          r.lut_en1,
          r.start_rows,
          r.sbg_en,
          r.rotate_90_en,
          r.rotate_clockwise,
          r.sub_mode_sel};
}

class RectifyReadBack : public Rectify {
 protected:
  RectifyReadBack() {
    fill_two_cameras();
    RectifyState& r = engine().rectify;
    r.en0 = r.en1 = {7, 7};
    r.lut_en0 = r.kk_en = r.lut_en1 = r.rectify_common = 7;
    r.sbg_en = r.rotate_90_en = r.rotate_clockwise = r.sub_mode_sel = 7;
    r.start_rows = 7;
    before_ = engine().registers;
  }

  void read_back(bool cam_select) {
    EXPECT_EQ(outcome_of([&] { return convert_rectify_registers_to_float(cam_select); }), silent_success());
    EXPECT_EQ(engine().rectify.rectify_common, 7);  // bit 10 is never read
    EXPECT_EQ(differences_from(before_), "");
  }

 private:
  RegisterTables before_;
};

TEST_F(RectifyReadBack, SingleModeReadsCamera1sBlockIntoCamera1) {
  read_back(true);
  expect_camera(1, 1);
  expect_camera_untouched(0);
  EXPECT_EQ(flags(), (Flags{7, 7, 0, 1, 0, 0, 1, 0x456, 1, 0, 1, 0}));
}

TEST_F(RectifyReadBack, SingleModeReadsCamera0sBlockIntoCamera1WithoutSbg2r) {
  read_back(false);
  expect_camera(1, 0);
  expect_camera_untouched(0);
  EXPECT_EQ(flags(), (Flags{1, 0, 7, 7, 1, 1, 0, 0x123, 7, 7, 7, 7}));
}

TEST_F(RectifyReadBack, OtherModesReadBothAndCamera0HasTheLastWordOnSharedFlags) {
  for (const std::uint32_t cam_mode : {1U, 2U, 255U}) {
    for (const bool cam_select : {false, true}) {
      set_cam_mode(cam_mode);
      read_back(cam_select);
      expect_camera(0, 0);
      expect_camera(1, 1);
      EXPECT_EQ(flags(), (Flags{1, 0, 0, 1, 1, 1, 0, 0x123, 1, 0, 1, 0}));
    }
  }
}

TEST_F(Rectify, EverySideAndRowCountComesBackFromItsBits) {
  for (std::uint32_t value = 0; value < 0x1000; ++value) {
    word_at(0x52000078) = 0xA000A000 | value | (value ^ 0xFFF) << 16;
    word_at(kControl[1]) = 0xA000FFFF | value << 16;
    ASSERT_EQ(convert_rectify_registers_to_float(true), 0);
    ASSERT_EQ(engine().rectify.camera[1].intrinsic.width, value);
    ASSERT_EQ(engine().rectify.camera[1].intrinsic.height, value ^ 0xFFF);
    ASSERT_EQ(engine().rectify.start_rows, value);
  }
}

}  // namespace
}  // namespace vq3900::test
