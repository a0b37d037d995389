#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <iterator>
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

constexpr const char* kMissing = "need to set rectify params! \n";

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
  EXPECT_EQ(rectify_records().second.start_rows, 0xFABCU);  // stored whole

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
  for (const NumberRow& row : camera_numbers()) {
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

}  // namespace
}  // namespace vq3900::test
