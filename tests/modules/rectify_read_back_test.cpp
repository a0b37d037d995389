#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <cstdint>
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

TEST_F(Rectify, EveryNumberComesBackAndForth) {
  constexpr std::uint32_t kSeed = 390006;
  Random random(kSeed);
  give_params(1, 100);
  for (const NumberRow& row : camera_numbers()) {
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
