#include "calib/stereo_derivation.h"

#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

#include "calib/stereo_derivation_api.h"
#include "state/engine.h"
#include "support/calib_samples.h"
#include "support/capture.h"
#include "support/elements.h"
#include "support/engine_fixture.h"
#include "support/numbers.h"
#include "support/registers.h"

namespace vq3900::test {
namespace {

constexpr std::int32_t kLowest = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kHighest = std::numeric_limits<std::int32_t>::max();

// What one derivation gives; the records are full of rubbish before it.
struct Derivation {
  Outcome outcome;
  DeStereoRectifyParams_S rect = filled_with<DeStereoRectifyParams_S>(0xAA);
  DeCameraD2CParams_S d2c = filled_with<DeCameraD2CParams_S>(0xAA);
  CameraLuts luts;
};

class StereoDerivation : public EngineTest {
 protected:
  StereoDerivation() {
    CalibInputConfig& c = config();
    c.baseline = -50;
    c.src_img_scale = c.dst_focal_scale = c.depth_scale = c.valid_scale = c.d2d_params_unit = 1;
    c.lut_sample_bit = 4;
  }

  static CalibInputConfig& config() { return engine().calib_input; }

  static Derivation derive(const CalibrateParamsMulti& calib, bool with_color = true) {
    Derivation result;
    result.outcome = outcome_of([&] {
      return parse_rectify_d2c_params_from_stereo_with_rgb_calib_params(
          calib, &result.rect, with_color ? &result.d2c : nullptr, result.luts);
    });
    return result;
  }
};

// Bytes and numbers at an offset of a record.
template <typename Record>
Bytes bytes_at(const Record& record, std::ptrdiff_t offset, std::ptrdiff_t count) {
  const Bytes bytes = bytes_of(record);
  return {bytes.begin() + offset, bytes.begin() + offset + count};
}

template <typename Record>
std::vector<float> floats_at(const Record& record, std::ptrdiff_t offset, std::size_t count) {
  std::vector<float> values(count);
  const Bytes bytes = bytes_at(record, offset, static_cast<std::ptrdiff_t>(count * sizeof(float)));
  std::memcpy(values.data(), bytes.data(), bytes.size());
  return values;
}

// --- scaling and chopping --------------------------------------------------------------------------------------------

struct ScaleCase {
  const char* name;
  float scale;
  std::int16_t left, right, top, bottom;
  std::int32_t width, height;
  float cx, cy;
  std::int32_t scaled_width, scaled_height;
  float scaled_cx, scaled_cy;
};

class ScaleAndChop : public StereoDerivation, public testing::WithParamInterface<ScaleCase> {};

TEST_P(ScaleAndChop, ChangesBothIrCamerasAndNotTheColourCamera) {
  const ScaleCase& c = GetParam();
  config().src_img_scale = c.scale;
  config().src_img_left_chop = c.left;
  config().src_img_right_chop = c.right;
  config().src_img_top_chop = c.top;
  config().src_img_bottom_chop = c.bottom;
  CalibrateParamsMulti calib = sample_rig();
  const CalibrateParamsMulti before = calib;
  for (DeCalibCamera_S* const camera : {&calib.left_ir, &calib.right_ir}) {
    camera->width = c.width;
    camera->height = c.height;
    camera->cx = c.cx;
    camera->cy = c.cy;
  }
  scale_and_chop(config(), calib);
  const std::pair<const DeCalibCamera_S&, const DeCalibCamera_S&> cameras[] = {{calib.left_ir, before.left_ir},
                                                                               {calib.right_ir, before.right_ir}};
  for (const auto& [scaled, unscaled] : cameras) {
    EXPECT_EQ(scaled.width, c.scaled_width);
    EXPECT_EQ(scaled.height, c.scaled_height);
    EXPECT_EQ(scaled.fx, unscaled.fx * c.scale);
    EXPECT_EQ(scaled.fy, unscaled.fy * c.scale);
    EXPECT_EQ(scaled.cx, c.scaled_cx);
    EXPECT_EQ(scaled.cy, c.scaled_cy);
    EXPECT_TRUE(std::ranges::equal(scaled.distortion, unscaled.distortion));
  }
  EXPECT_EQ(bytes_of(calib.rgb), bytes_of(before.rgb));
}

INSTANTIATE_TEST_SUITE_P(
    Calib, ScaleAndChop,
    testing::Values(
        ScaleCase{"Nothing", 1, 0, 0, 0, 0, 640, 400, 320.5F, 200.25F, 640, 400, 320.5F, 200.25F},
        ScaleCase{"HalfIsCutTowardsZero", 0.5F, 0, 0, 0, 0, 641, 399, 320, 200, 320, 199, 160, 100},
        ScaleCase{"EveryChop", 1, 8, 4, 2, 6, 640, 400, 320, 200, 628, 392, 312, 198},
        ScaleCase{"ChopsComeAfterTheScale", 0.5F, 8, 4, 2, 6, 640, 400, 320, 200, 308, 192, 152, 98},
        ScaleCase{"NegativeChopsExtend", 1, -8, -4, -2, -6, 640, 400, 320, 200, 652, 408, 328, 202},
        ScaleCase{
            "SizesAreSinglePrecisionProducts", 0.7F, 0, 0, 0, 0, 10, 20, 0, 0, 7, 14, 0, 0},  // 6.9999999 in double
        ScaleCase{"ChopOfAll", 1, 320, 320, 200, 201, 640, 400, 0, 0, 0, -1, -320, -200},
        ScaleCase{"NegativeSizesAreCutTowardsZero", 0.5F, 0, 0, 0, 0, -3, -1, 0, 0, -1, 0, 0, 0}),
    [](const auto& test) { return test.param.name; });

TEST_F(StereoDerivation, ScaleThatIsNoNumberOrTooLargeLeavesSizesThatAreRefused) {
  for (const float scale : {kNan, kInfinity, -kInfinity, 1e30F, -1e30F, 0.0F}) {
    for (const std::int32_t size : {1, kHighest, kLowest}) {
      SCOPED_TRACE(testing::Message() << scale << " " << size);
      config().src_img_scale = scale;
      CalibrateParamsMulti calib = parallel_rig();
      calib.left_ir.width = size;
      scale_and_chop(config(), calib);
      EXPECT_FALSE(is_derivable(calib));
    }
  }
}

// --- baseline --------------------------------------------------------------------------------------------------------

struct BaselineCase {
  const char* name;
  std::array<float, 3> translation;
  float configured;
  bool accepted;
  float baseline;  // afterwards
};

class Baseline : public StereoDerivation, public testing::WithParamInterface<BaselineCase> {};

TEST_P(Baseline, FollowsTheDominantComponent) {
  const BaselineCase& c = GetParam();
  CalibrateParamsMulti calib = parallel_rig();
  // A small field of view: it is seen however far the cameras are turned.
  calib.left_ir = calib.right_ir = pinhole_camera(64, 40, 500, 32, 20);
  std::ranges::copy(c.translation, calib.ir_translation);
  config().baseline = c.configured;
  const Derivation derived = derive(calib);
  EXPECT_EQ(derived.outcome, c.accepted ? silent_success() : prints_out(-2, "Baseline sign check error.\n"));
  EXPECT_EQ(bits_of(config().baseline), bits_of(c.baseline));
  EXPECT_EQ(untouched(derived.rect), !c.accepted);
  EXPECT_EQ(untouched(derived.d2c), !c.accepted);
}

INSTANTIATE_TEST_SUITE_P(
    Calib, Baseline,
    testing::Values(BaselineCase{"Minus50WithPlus50IsRefused", {-50, 0, 0}, 50, false, 50},
                    BaselineCase{"Minus50WithMinus50", {-50, 0, 0}, -50, true, -50},
                    BaselineCase{"Plus50WithMinus50IsRefused", {50, 0, 0}, -50, false, -50},
                    BaselineCase{"LengthReplacesTheConfiguredOne", {-48, 14, 0}, -1, true, -50},
                    BaselineCase{"XBeforeYOnATie", {30, -30, 0}, 5, true, 42.426407F},  // sqrt(1800)
                    BaselineCase{"XBeforeYOnATieIsRefused", {30, -30, 0}, -5, false, -5},
                    BaselineCase{"XBeforeZOnATie", {-30, 0, 30}, -5, true, -42.426407F},
                    BaselineCase{"YBeforeZOnATie", {0, -30, 30}, -5, true, -42.426407F},
                    BaselineCase{"YBeforeZOnATieIsRefused", {1, 30, -30}, -5, false, -5},
                    BaselineCase{"YDominates", {3, -4, 0}, -1, true, -5},
                    BaselineCase{"ZDominates", {-3, 0, 4}, 1, true, 5},
                    BaselineCase{"ZDominatesAndIsRefused", {-3, 0, 4}, -1, false, -1},
                    BaselineCase{"ConfiguredZeroTakesEitherSign", {-50, 0, 0}, 0, true, -50},
                    BaselineCase{"NoTranslation", {0, 0, 0}, 7, true, 0},
                    // one unit in the last place off, were a square or a sum formed in double or in another order
                    BaselineCase{"SquaresInSinglePrecision", {0.1F, 0.2F, 0}, 1, true, 0x1.c9f25ep-3F},
                    BaselineCase{"SumsInSinglePrecision", {-32.02F, 22.07F, -15.77F}, -1, true, -0x1.4fb83ep+5F},
                    BaselineCase{"SquaresThatVanish", {-1e-30F, 0, 0}, -1, true, -0.0F},
                    BaselineCase{"SquaresThatOverflow", {-3e38F, 0, 0}, -1, true, -kInfinity}),
    [](const auto& test) { return test.param.name; });

// --- the rectification record ----------------------------------------------------------------------------------------

TEST_F(StereoDerivation, ParallelRigKeepsItsCameras) {
  const Derivation derived = derive(parallel_rig());
  ASSERT_EQ(derived.outcome, silent_success());
  const DeCameraIntrinsic_S camera{500, 500, 320, 200, 640, 400};
  for (const int offset : {0, 88, 176, 196})
    EXPECT_EQ(bytes_at(derived.rect, offset, 20), bytes_of(camera)) << offset;
  for (const int offset : {52, 140})
    EXPECT_EQ(floats_at(derived.rect, offset, 9), (std::vector<float>{1, 0, 0, 0, 1, 0, 0, 0, 1})) << offset;
  for (const int offset : {20, 108})
    EXPECT_EQ(floats_at(derived.rect, offset, 8), std::vector<float>(8)) << offset;
}

TEST_F(StereoDerivation, LeftIsCamera1AndRightIsCamera0) {
  const CalibrateParamsMulti calib = sample_rig();
  const Derivation derived = derive(calib);
  ASSERT_EQ(derived.outcome, silent_success());
  const DeStereoRectifyParams_S& rect = derived.rect;
  const auto distortion = [](const DeCalibCamera_S& c) {
    return std::vector<float>(std::begin(c.distortion), std::end(c.distortion));
  };
  EXPECT_EQ(floats_at(rect, 20, 8), distortion(calib.left_ir));
  EXPECT_EQ(floats_at(rect, 108, 8), distortion(calib.right_ir));
  EXPECT_EQ(bytes_at(rect, 176, 20), bytes_of(DeCameraIntrinsic_S{501.5F, 502.25F, 322.5F, 197.75F, 640, 400}));
  EXPECT_EQ(bytes_at(rect, 196, 20), bytes_of(DeCameraIntrinsic_S{498.75F, 499.5F, 317.25F, 203.5F, 640, 400}));
  EXPECT_EQ(floats_at(rect, 0, 2), (std::vector<float>{502.25F, 502.25F}));  // the largest of the four
  EXPECT_EQ(bytes_at(rect, 0, 20), bytes_at(rect, 88, 20));
  EXPECT_EQ(bytes_at(rect, 216, 28), Bytes(28, 0xAA));  // the converter's
}

// The rotations at their offsets bring a point of space into the same row of both virtual images, the more to the left
// in the right one the nearer it is.
TEST_F(StereoDerivation, RotationsAlignTheRowsOfBothCameras) {
  const CalibrateParamsMulti calib = sample_rig();
  const Derivation derived = derive(calib);
  ASSERT_EQ(derived.outcome, silent_success());
  float left[9], right[9];
  std::ranges::copy(floats_at(derived.rect, 52, 9), left);
  std::ranges::copy(floats_at(derived.rect, 140, 9), right);
  for (const Triple& point : {Triple{-200, 100, 800}, Triple{350, -250, 1200}, Triple{10, 20, 5000}}) {
    const Triple in_left = turned(left, point);
    const Triple in_right = turned(right, shifted(calib.ir_translation, turned(calib.ir_rotation, point)));
    const Pixel a = projected(derived.rect.cam1_rectified, in_left);
    const Pixel b = projected(derived.rect.cam0_rectified, in_right);
    EXPECT_NEAR(a.v, b.v, 1e-3);
    EXPECT_NEAR(a.u - b.u, 502.25 * static_cast<double>(-config().baseline) / in_left[2], 1e-3);
  }
}

// Without distortion the left camera's centre stays at (310, 190); the right one's offset from the image centre grows
// by 500 / 400: 319.5 + 10.5 * 1.25 and 199.5 + 20.5 * 1.25. The virtual one is in the middle.
CalibrateParamsMulti two_focal_lengths() {
  CalibrateParamsMulti calib = parallel_rig();
  calib.left_ir = pinhole_camera(640, 400, 500, 310, 190);
  calib.right_ir = pinhole_camera(640, 400, 400, 330, 220);
  return calib;
}

struct VirtualCase {
  const char* name;
  float focal_scale;
  std::uint8_t fixed;
  float left_cx, right_cx, cy;      // offsets
  DeCameraIntrinsic_S left, right;  // virtual
};

class VirtualPair : public StereoDerivation, public testing::WithParamInterface<VirtualCase> {};

TEST_P(VirtualPair, IsScaledAndMoved) {
  const VirtualCase& c = GetParam();
  config().dst_focal_scale = c.focal_scale;
  config().dst_res_fixed = c.fixed;
  config().ir_l_virtual_cx_offset = c.left_cx;
  config().ir_r_virtual_cx_offset = c.right_cx;
  config().ir_virtual_cy_offset = c.cy;
  const Derivation derived = derive(two_focal_lengths());
  ASSERT_EQ(derived.outcome, silent_success());
  EXPECT_EQ(bytes_of(derived.rect.cam1_rectified), bytes_of(c.left));
  EXPECT_EQ(bytes_of(derived.rect.cam0_rectified), bytes_of(c.right));
  DeCameraIntrinsic_S last{};
  get_virtual_intrinsic_of_stereo_debug(&last);
  EXPECT_EQ(bytes_of(last), bytes_of(c.left));
}

constexpr DeCameraIntrinsic_S seen(float focal, float cx, float cy, std::uint16_t width, std::uint16_t height) {
  return {focal, focal, cx, cy, width, height};
}

constexpr float kCx = 321.3125F;
constexpr float kCy = 207.5625F;
constexpr DeCameraIntrinsic_S kPlain = seen(500, kCx, kCy, 640, 400);

INSTANTIATE_TEST_SUITE_P(
    Calib, VirtualPair,
    testing::Values(
        VirtualCase{"Plain", 1, 0, 0, 0, 0, kPlain, kPlain},
        VirtualCase{
            "ScaledKeepsTheCentre", 0.5F, 0, 0, 0, 0, seen(250, kCx, kCy, 320, 200), seen(250, kCx, kCy, 320, 200)},
        VirtualCase{
            "SizeIsCut", 0.501F, 0, 0, 0, 0, seen(250.5F, kCx, kCy, 320, 200), seen(250.5F, kCx, kCy, 320, 200)},
        VirtualCase{"FixedSize", 0.5F, 1, 0, 0, 0, seen(250, kCx, kCy, 640, 400), seen(250, kCx, kCy, 640, 400)},
        VirtualCase{"AnyFixedButZero", 0.5F, 2, 0, 0, 0, seen(250, kCx, kCy, 640, 400), seen(250, kCx, kCy, 640, 400)},
        VirtualCase{"LeftOffset", 1, 0, 2.5F, 0, 0, seen(500, kCx + 2.5F, kCy, 640, 400), kPlain},
        VirtualCase{"RightOffset", 1, 0, 0, -1.5F, 0, kPlain, seen(500, kCx - 1.5F, kCy, 640, 400)},
        VirtualCase{
            "RowOffsetMovesBoth", 1, 0, 0, 0, -3, seen(500, kCx, kCy - 3, 640, 400), seen(500, kCx, kCy - 3, 640, 400)},
        VirtualCase{"OffsetsAreNotScaled",
                    0.5F,
                    1,
                    2,
                    4,
                    8,
                    seen(250, kCx + 2, kCy + 8, 640, 400),
                    seen(250, kCx + 4, kCy + 8, 640, 400)},
        VirtualCase{"SmallOffsetsDoNotCount", 1, 0, 0.09F, -0.09F, 0.09F, kPlain, kPlain},
        VirtualCase{"OffsetsBeyondATenthCount",
                    1,
                    0,
                    0.125F,
                    -0.125F,
                    0.125F,
                    seen(500, kCx + 0.125F, kCy + 0.125F, 640, 400),
                    seen(500, kCx - 0.125F, kCy + 0.125F, 640, 400)}),
    [](const auto& test) { return test.param.name; });

TEST_F(StereoDerivation, VirtualSizeIsTheFirstCamerasAndEachCameraKeepsItsOwn) {
  CalibrateParamsMulti calib = parallel_rig();
  calib.right_ir = pinhole_camera(600, 380, 500, 300, 190);
  const Derivation derived = derive(calib);
  ASSERT_EQ(derived.outcome, silent_success());
  for (const DeCameraIntrinsic_S& camera : {derived.rect.cam1_rectified, derived.rect.cam0_rectified}) {
    EXPECT_EQ(camera.width, 640);
    EXPECT_EQ(camera.height, 400);
  }
  EXPECT_EQ(derived.rect.cam0.width, 600);
  EXPECT_EQ(derived.rect.cam0.height, 380);
}

// --- sizes at the limits ---------------------------------------------------------------------------------------------

struct SizeCase {
  const char* name;
  std::int32_t size;
  bool accepted;
};

class IrSize : public StereoDerivation, public testing::WithParamInterface<SizeCase> {};

TEST_P(IrSize, MustBe1To65535) {
  for (DeCalibCamera_S CalibrateParamsMulti::*const camera :
       {&CalibrateParamsMulti::left_ir, &CalibrateParamsMulti::right_ir}) {
    for (std::int32_t DeCalibCamera_S::*const side : {&DeCalibCamera_S::width, &DeCalibCamera_S::height}) {
      CalibrateParamsMulti calib = parallel_rig();
      (calib.*camera).*side = GetParam().size;
      const Derivation derived = derive(calib);
      EXPECT_EQ(derived.outcome, silent(GetParam().accepted ? 0 : -2));
      EXPECT_EQ(untouched(derived.rect), !GetParam().accepted);
      EXPECT_EQ(untouched(derived.d2c), !GetParam().accepted);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Calib, IrSize,
                         testing::Values(SizeCase{"Lowest", kLowest, false}, SizeCase{"Minus1", -1, false},
                                         SizeCase{"Zero", 0, false}, SizeCase{"One", 1, true},
                                         SizeCase{"Most", 65535, true}, SizeCase{"OneMore", 65536, false},
                                         SizeCase{"Wrapped", 65537, false}, SizeCase{"Highest", kHighest, false}),
                         [](const auto& test) { return test.param.name; });

struct VirtualSizeCase {
  const char* name;
  float focal_scale;
  std::uint8_t fixed;
  int code;
};

class VirtualSize : public StereoDerivation, public testing::WithParamInterface<VirtualSizeCase> {};

TEST_P(VirtualSize, MustBe1To65535) {
  config().dst_focal_scale = GetParam().focal_scale;
  config().dst_res_fixed = GetParam().fixed;
  EXPECT_EQ(derive(parallel_rig()).outcome, silent(GetParam().code));
}

INSTANTIATE_TEST_SUITE_P(
    Calib, VirtualSize,
    testing::Values(VirtualSizeCase{"Vanishing", 0.002F, 0, -2},  // 400 * 0.002 is cut to 0
                    VirtualSizeCase{"OneRow", 0.0025F, 0, 0}, VirtualSizeCase{"VanishingButFixed", 0.002F, 1, 0},
                    VirtualSizeCase{"Most", 102.3F, 0, 0}, VirtualSizeCase{"TooWide", 102.4F, 0, -2},
                    VirtualSizeCase{"TooWideButFixed", 102.4F, 1, 0}, VirtualSizeCase{"Negative", -1, 0, -2},
                    VirtualSizeCase{"Zero", 0, 0, -2}, VirtualSizeCase{"NoNumber", kNan, 0, -2},
                    VirtualSizeCase{"Infinite", kInfinity, 0, -2}),
    [](const auto& test) { return test.param.name; });

// --- the D2C record --------------------------------------------------------------------------------------------------

TEST_F(StereoDerivation, D2cRecordIsClippedThenScaled) {
  CalibrateParamsMulti calib = two_focal_lengths();
  calib.rgb = {1280, 720, 900, 910, 640.5F, 360.25F, {1, 2, 3, 4, 5, 6, 7, 8}, 0};
  CalibInputConfig& c = config();
  c.clip_left_w_depth = 8;
  c.clip_top_h_depth = 4;
  c.clip_right_w_depth = 2;
  c.clip_bottom_h_depth = 6;
  c.depth_scale = 0.5F;
  c.clip_left_w_valid = 10;
  c.clip_top_h_valid = 20;
  c.clip_right_w_valid = 30;
  c.clip_bottom_h_valid = 41;
  c.valid_scale = 0.25F;
  c.clip_left_w_rgb = 1;
  c.clip_top_h_rgb = 2;
  c.clip_right_w_rgb = 3;
  c.clip_bottom_h_rgb = 4;
  const Derivation derived = derive(calib);
  ASSERT_EQ(derived.outcome, silent_success());
  EXPECT_EQ(bytes_at(derived.d2c, 0, 20), bytes_of(DeCameraIntrinsic_S{250, 250, 156.65625F, 101.78125F, 315, 195}));
  EXPECT_EQ(bytes_at(derived.d2c, 20, 20), bytes_of(DeCameraIntrinsic_S{225, 227.5F, 157.625F, 85.0625F, 310, 164}));
  EXPECT_EQ(bytes_at(derived.d2c, 40, 20), bytes_of(DeCameraIntrinsic_S{225, 227.5F, 156.625F, 83.0625F, 306, 158}));
  EXPECT_EQ(floats_at(derived.d2c, 60, 8), std::vector<float>(8));
  EXPECT_EQ(floats_at(derived.d2c, 92, 8), (std::vector<float>{1, 2, 3, 4, 5, 6, 7, 8}));
}

TEST_F(StereoDerivation, NegativeClipsExtend) {
  config().clip_left_w_depth = config().clip_right_w_valid = config().clip_top_h_rgb = -16;
  const Derivation derived = derive(parallel_rig());
  ASSERT_EQ(derived.outcome, silent_success());
  EXPECT_EQ(bytes_of(derived.d2c.depth), bytes_of(DeCameraIntrinsic_S{500, 500, 336, 200, 656, 400}));
  EXPECT_EQ(bytes_of(derived.d2c.valid), bytes_of(DeCameraIntrinsic_S{900, 900, 640, 360, 1296, 720}));
  EXPECT_EQ(bytes_of(derived.d2c.color), bytes_of(DeCameraIntrinsic_S{900, 900, 640, 376, 1296, 736}));
}

TEST_F(StereoDerivation, DepthImageIsTheReferenceCamerasWithItsOffset) {
  config().ir_l_virtual_cx_offset = 4;
  config().ir_r_virtual_cx_offset = -4;
  const Derivation derived = derive(parallel_rig());
  EXPECT_EQ(derived.d2c.depth.cx, 324.0F);
}

TEST_F(StereoDerivation, PoseLeadsFromTheRectifiedLeftCameraToTheColourCamera) {
  const CalibrateParamsMulti calib = sample_rig();
  const Derivation derived = derive(calib);
  ASSERT_EQ(derived.outcome, silent_success());
  float rotation[9];
  std::ranges::copy(floats_at(derived.d2c, 124, 9), rotation);
  EXPECT_EQ(floats_at(derived.d2c, 160, 3), (std::vector<float>{-24.5F, 0.25F, 1.5F}));
  for (const Triple& axis : {Triple{1, 0, 0}, Triple{0, 1, 0}, Triple{0, 0, 1}}) {
    const Triple direct = turned(calib.rgb_rotation, axis);
    const Triple by_rectified = turned(rotation, turned(derived.rect.cam1_rotation, axis));
    for (std::size_t i = 0; i < 3; ++i)
      EXPECT_NEAR(direct[i], by_rectified[i], 3e-7);
  }
}

TEST_F(StereoDerivation, ColourCameraOfZerosIsAcceptedWithoutClips) {
  CalibrateParamsMulti calib = parallel_rig();
  calib.rgb = {};
  const Derivation derived = derive(calib);
  ASSERT_EQ(derived.outcome, silent_success());
  EXPECT_EQ(bytes_of(derived.d2c.valid), Bytes(20));
  EXPECT_EQ(bytes_of(derived.d2c.color), Bytes(20));
}

TEST_F(StereoDerivation, NullD2cSkipsTheColourCameraAndItsClips) {
  config().clip_left_w_valid = 5000;
  CalibrateParamsMulti calib = parallel_rig();
  calib.rgb.fx = calib.rgb_rotation[4] = calib.rgb_translation[2] = kNan;
  const Derivation derived = derive(calib, false);
  EXPECT_EQ(derived.outcome, silent_success());
  EXPECT_EQ(derived.rect.cam1_rectified.width, 640);
}

struct ClipCase {
  const char* name;
  std::int32_t CalibInputConfig::*near;
  std::int32_t CalibInputConfig::*far;
  std::int32_t size;  // of what is clipped
  std::uint16_t (*stored)(const DeCameraD2CParams_S&);
};

class ClippedSize : public StereoDerivation, public testing::WithParamInterface<ClipCase> {};

TEST_P(ClippedSize, MustBe0To65535) {
  const ClipCase& c = GetParam();
  for (std::int32_t CalibInputConfig::*const clip : {c.near, c.far}) {
    for (const std::int32_t size : {0, 1, 65535}) {
      config().*clip = c.size - size;
      // What follows the valid area must fit too.
      const Derivation derived = derive(parallel_rig());
      EXPECT_EQ(derived.outcome, silent_success()) << size;
      EXPECT_EQ(c.stored(derived.d2c), size);
    }
    for (const std::int32_t value : {c.size + 1, c.size - 65536, c.size - 65537, kHighest, kLowest}) {
      config().*clip = value;
      const Derivation derived = derive(parallel_rig());
      EXPECT_EQ(derived.outcome, silent(-2)) << value;
      EXPECT_TRUE(untouched(derived.d2c));
    }
    config().*clip = 0;
  }
  config().*c.near = kHighest;
  config().*c.far = kHighest;
  EXPECT_EQ(derive(parallel_rig()).outcome, silent(-2));
  config().*c.far = kLowest;  // the sum is -1
  EXPECT_EQ(derive(parallel_rig()).outcome, silent_success());
}

using Config = CalibInputConfig;
using D2c = DeCameraD2CParams_S;

INSTANTIATE_TEST_SUITE_P(Calib, ClippedSize,
                         testing::Values(ClipCase{"DepthWidth",
                                                  &Config::clip_left_w_depth,
                                                  &Config::clip_right_w_depth,
                                                  640,
                                                  [](const D2c& d) { return d.depth.width; }},
                                         ClipCase{"DepthHeight",
                                                  &Config::clip_top_h_depth,
                                                  &Config::clip_bottom_h_depth,
                                                  400,
                                                  [](const D2c& d) { return d.depth.height; }},
                                         ClipCase{"ValidWidth",
                                                  &Config::clip_left_w_valid,
                                                  &Config::clip_right_w_valid,
                                                  1280,
                                                  [](const D2c& d) { return d.valid.width; }},
                                         ClipCase{"ValidHeight",
                                                  &Config::clip_top_h_valid,
                                                  &Config::clip_bottom_h_valid,
                                                  720,
                                                  [](const D2c& d) { return d.valid.height; }},
                                         ClipCase{"ColourWidth",
                                                  &Config::clip_left_w_rgb,
                                                  &Config::clip_right_w_rgb,
                                                  1280,
                                                  [](const D2c& d) { return d.color.width; }},
                                         ClipCase{"ColourHeight",
                                                  &Config::clip_top_h_rgb,
                                                  &Config::clip_bottom_h_rgb,
                                                  720,
                                                  [](const D2c& d) { return d.color.height; }}),
                         [](const auto& test) { return test.param.name; });

// --- what cannot be derived from -------------------------------------------------------------------------------------

struct RefusedCase {
  const char* name;
  void (*spoil)(CalibrateParamsMulti&);
};

class Underivable : public StereoDerivation, public testing::WithParamInterface<RefusedCase> {};

TEST_P(Underivable, IsRefusedAndNothingIsWritten) {
  CalibrateParamsMulti calib = sample_rig();
  GetParam().spoil(calib);
  const Derivation derived = derive(calib);
  EXPECT_EQ(derived.outcome, silent(-2));
  EXPECT_TRUE(untouched(derived.rect));
  EXPECT_TRUE(untouched(derived.d2c));
  EXPECT_EQ(derive(sample_rig()).outcome, silent_success());
}

using Calib = CalibrateParamsMulti;

// r / (1 + 10 r^2) is nowhere above 0.16: the corners, at 0.75, are images of nothing.
DeCalibCamera_S bounded_camera() {
  DeCalibCamera_S camera = parallel_rig().right_ir;
  camera.distortion[3] = 10;
  return camera;
}

INSTANTIATE_TEST_SUITE_P(
    Calib, Underivable,
    testing::Values(RefusedCase{"RotationNotANumber", [](Calib& c) { c.ir_rotation[4] = kNan; }},
                    RefusedCase{"RotationInfinite", [](Calib& c) { c.ir_rotation[8] = -kInfinity; }},
                    RefusedCase{"TranslationNotANumber", [](Calib& c) { c.ir_translation[2] = kNan; }},
                    RefusedCase{"TranslationInfinite", [](Calib& c) { c.ir_translation[0] = -kInfinity; }},
                    RefusedCase{"FocalLengthNotANumber", [](Calib& c) { c.left_ir.fy = kNan; }},
                    RefusedCase{"CentreInfinite", [](Calib& c) { c.right_ir.cx = kInfinity; }},
                    RefusedCase{"ColourCameraNotANumber", [](Calib& c) { c.rgb.cy = kNan; }},
                    RefusedCase{"ColourRotationNotANumber", [](Calib& c) { c.rgb_rotation[0] = kNan; }},
                    RefusedCase{"ColourTranslationInfinite", [](Calib& c) { c.rgb_translation[1] = kInfinity; }},
                    RefusedCase{"RotationOfZeros", [](Calib& c) { std::ranges::fill(c.ir_rotation, 0.0F); }},
                    RefusedCase{"RotationThatMirrors", [](Calib& c) { c.ir_rotation[8] = -c.ir_rotation[8]; }},
                    RefusedCase{"FocalLengthOfZero", [](Calib& c) { c.left_ir.fx = 0; }},
                    RefusedCase{"FocalLengthBelowZero", [](Calib& c) { c.right_ir.fy = -500; }},
                    RefusedCase{"CornerBehindTheVirtualImage", [](Calib& c) { c.ir_translation[2] = -1000; }},
                    RefusedCase{"CornerBeyondTheFold", [](Calib& c) { c.left_ir.distortion[0] = -10; }},
                    RefusedCase{"CornerThatCannotBeUndistorted", [](Calib& c) { c.right_ir = bounded_camera(); }}),
    [](const auto& test) { return test.param.name; });

TEST_F(StereoDerivation, RotationIsBroughtToTheNearestOne) {
  CalibrateParamsMulti calib = parallel_rig();
  for (float& entry : calib.ir_rotation)
    entry *= 2;
  const Derivation derived = derive(calib);
  EXPECT_EQ(derived.outcome, silent_success());
  for (std::size_t i = 0; i < 9; ++i) {
    EXPECT_NEAR(derived.rect.cam1_rotation[i], kNoTurn[i], 1e-6F);
    EXPECT_NEAR(derived.rect.cam0_rotation[i], kNoTurn[i], 1e-6F);
  }
}

TEST_F(StereoDerivation, UnknownModelCountsAsBrown) {
  CalibrateParamsMulti calib = sample_rig();
  const Derivation brown = derive(calib);
  for (const std::int32_t model : {1, 3, 7, -1, kHighest}) {
    calib.distortion_model = model;
    const Derivation derived = derive(calib);
    EXPECT_EQ(derived.outcome, silent_success());
    EXPECT_EQ(bytes_of(derived.rect), bytes_of(brown.rect)) << model;
  }
  calib.distortion_model = 2;
  EXPECT_NE(bytes_of(derive(calib).rect), bytes_of(brown.rect));
  calib.distortion_model = 5;
  EXPECT_NE(bytes_of(derive(calib).rect), bytes_of(brown.rect));
}

// --- LUTs ------------------------------------------------------------------------------------------------------------

TEST_F(StereoDerivation, LutsAreGeneratedForStatus1And2Alone) {
  for (const auto& [status, generated] : {std::pair{0, false}, {1, true}, {2, true}, {3, false}, {255, false}}) {
    config().distort_type = static_cast<std::uint8_t>(status);
    const Derivation derived = derive(sample_rig());
    EXPECT_EQ(derived.outcome, silent_success());
    for (const UndistortionLut& lut : derived.luts) {
      EXPECT_EQ(lut.info.dx != nullptr, generated) << status;
      EXPECT_EQ(lut.info.dy != nullptr, generated) << status;
    }
  }
}

TEST_F(StereoDerivation, LutsComeFromTheUnrectifiedCamerasWithTheFocalScale) {
  config().distort_type = 1;
  config().dst_focal_scale = 0.5F;
  const Derivation derived = derive(sample_rig());
  ASSERT_EQ(derived.outcome, silent_success());
  const RectifyLutInfo& left = derived.luts[1].info;
  const RectifyLutInfo& right = derived.luts[0].info;
  EXPECT_EQ((std::array{left.lut_fx, left.lut_fy, left.lut_cx, left.lut_cy}),
            (std::array{250.75F, 251.125F, 322.5F, 197.75F}));
  EXPECT_EQ((std::array{right.lut_fx, right.lut_fy, right.lut_cx, right.lut_cy}),
            (std::array{249.375F, 249.75F, 317.25F, 203.5F}));
  for (const UndistortionLut& lut : derived.luts) {
    EXPECT_EQ(lut.info.lut_width, 44U);   // 640 pixels: samples 0 to 40, in fours
    EXPECT_EQ(lut.info.lut_height, 28U);  // 400 pixels: samples 0 to 25, in fours
    EXPECT_EQ(lut.info.sample_rate_bit, 4U);
    EXPECT_NE(lut.info.dx, nullptr);
    EXPECT_NE(lut.info.dy, nullptr);
  }
}

TEST_F(StereoDerivation, LutThatDoesNotFitIsNamedByItsCamera) {
  config().distort_type = 2;
  config().dst_focal_scale = 0.25F;  // the corner lies at (2.56, 1.6)
  const auto spoil = [](DeCalibCamera_S& camera) { camera.distortion[0] = 0.1F; };
  CalibrateParamsMulti calib = parallel_rig();
  spoil(calib.right_ir);
  EXPECT_EQ(derive(calib).outcome,
            (Outcome{-3, "gen right camera undistortion lut error.\n", "lut displacement out of range\n"}));
  spoil(calib.left_ir);
  const Derivation derived = derive(calib);
  EXPECT_EQ(derived.outcome,
            (Outcome{-3, "gen left camera undistortion lut error.\n", "lut displacement out of range\n"}));
  EXPECT_TRUE(untouched(derived.d2c));
  EXPECT_EQ(derive(parallel_rig()).outcome, silent_success());
}

TEST_F(StereoDerivation, UnknownModelHasNoLut) {
  config().distort_type = 1;
  CalibrateParamsMulti calib = parallel_rig();
  calib.distortion_model = 7;
  EXPECT_EQ(derive(calib).outcome,
            (Outcome{-3, "gen left camera undistortion lut error.\n", "unsupported distortion model: 7\n"}));
}

}  // namespace
}  // namespace vq3900::test
