#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "calib/undistortion_lut_api.h"
#include "support/capture.h"
#include "support/distortion_luts.h"
#include "support/engine_fixture.h"
#include "support/numbers.h"
#include "support/reference_distortion.h"

namespace vq3900::test {
namespace {

constexpr Coefficients kSome{0.25F, -0.125F, 0.0625F, 0.03125F, 0.25F, 0.125F, 0.015625F, -0.0078125F};

// One call: a camera of 64 x 48 pixels in steps of 8, without extension.
struct LutCall {
  std::int32_t model = 0;
  DeCameraIntrinsic_S camera{50, 40, 32, 24, 64, 48};
  Coefficients distortion = kSome;
  double polynomial_param = 0;
  CalibInputConfig config = sampled(3, 0, 1);

  static CalibInputConfig sampled(std::int32_t bit, float extend_ratio, float focal_scale) {
    CalibInputConfig config;
    config.lut_sample_bit = bit;
    config.lut_extend_ratio = extend_ratio;
    config.dst_focal_scale = focal_scale;
    return config;
  }

  std::int32_t into(UndistortionLut& out) const {
    return gen_undistortion_lut(model, camera, distortion, polynomial_param, config, out);
  }

  ReferenceModel reference() const { return {model, distortion, polynomial_param}; }
  LutSettings settings() const {
    return {camera.width,
            camera.height,
            config.lut_sample_bit,
            config.lut_extend_ratio,
            camera.fx * config.dst_focal_scale,
            camera.fy * config.dst_focal_scale,
            camera.cx,
            camera.cy};
  }
};

class UndistortionLuts : public EngineTest {
 protected:
  UndistortionLut generated(const LutCall& call) {
    UndistortionLut lut;
    EXPECT_EQ(outcome_of([&] { return call.into(lut); }), silent_success());
    return lut;
  }
};

std::vector<double> dx_of(const UndistortionLut& lut) {
  return {lut.info.dx, lut.info.dx + std::size_t{lut.info.lut_width} * lut.info.lut_height};
}

// Every sample is what the model says, with the scaled intrinsics.
void expect_samples_of(const UndistortionLut& lut, const LutCall& call) {
  ASSERT_NE(lut.info.dx, nullptr);
  ASSERT_NE(lut.info.dy, nullptr);
  const int step = 1 << call.config.lut_sample_bit;
  std::size_t at = 0;
  for (std::uint32_t j = 0; j < lut.info.lut_height; ++j) {
    for (std::uint32_t i = 0; i < lut.info.lut_width; ++i, ++at) {
      const double u = static_cast<std::int32_t>(lut.info.lut_x_start) + step * static_cast<double>(i);
      const double v = static_cast<std::int32_t>(lut.info.lut_y_start) + step * static_cast<double>(j);
      const Point expected = expected_sample(call.settings(), call.reference(), u, v);
      ASSERT_NEAR(lut.info.dx[at], expected.x, 1e-13) << i << " " << j;
      ASSERT_NEAR(lut.info.dy[at], expected.y, 1e-13) << i << " " << j;
    }
  }
}

// --- what comes out

TEST_F(UndistortionLuts, DescriptorAndArraysOfASmallCamera) {
  const UndistortionLut lut = generated({});
  EXPECT_EQ(lut.info.lut_x_start, 0U);
  EXPECT_EQ(lut.info.lut_y_start, 0U);
  EXPECT_EQ(lut.info.lut_fx, 50.0F);
  EXPECT_EQ(lut.info.lut_fy, 40.0F);
  EXPECT_EQ(lut.info.lut_cx, 32.0F);
  EXPECT_EQ(lut.info.lut_cy, 24.0F);
  EXPECT_EQ(lut.info.lut_width, 12U);  // 63 / 8 = 7.9, 9 samples
  EXPECT_EQ(lut.info.lut_height, 8U);  // 47 / 8 = 5.9, 7 samples
  EXPECT_EQ(lut.info.sample_rate_bit, 3U);
  expect_samples_of(lut, {});
}

TEST_F(UndistortionLuts, SampleWorkedOutByHand) {
  // Column 5, row 4 is pixel (40, 32): x = 8 / 64, y = 8 / 32, r^2 = 5 / 64.
  LutCall call;
  call.camera = {64, 32, 32, 24, 64, 48};
  call.distortion = {0.5F, 0, 0, 0, 0, 0, 0.0625F, -0.125F};
  const UndistortionLut lut = generated(call);
  const std::size_t at = 4 * 12 + 5;
  // 0.5 x r^2 + 2 p1 x y + p2 (r^2 + 2 x^2) = 5/1024 + 1/256 - (7/64) / 8
  EXPECT_DOUBLE_EQ(lut.info.dx[at], (5.0 + 4 - 14) / 1024);
  // 0.5 y r^2 + p1 (r^2 + 2 y^2) + 2 p2 x y = 5/512 + (13/64) / 16 - 1/128
  EXPECT_DOUBLE_EQ(lut.info.dy[at], (10.0 + 13 - 8) / 1024);
}

TEST_F(UndistortionLuts, ExtensionStartsLeftOfAndAboveTheImage) {
  LutCall call;
  call.config = LutCall::sampled(3, 0.5F, 1);
  const UndistortionLut lut = generated(call);
  EXPECT_EQ(lut.info.lut_x_start, 0xFFFFFFF0U);  // 16 pixels on either side
  EXPECT_EQ(lut.info.lut_y_start, 0xFFFFFFF0U);  // 12 pixels, in steps of 8
  EXPECT_EQ(lut.info.lut_width, 16U);            // (63 + 16 + 16) / 8 = 11.9
  EXPECT_EQ(lut.info.lut_height, 12U);           // (47 + 12 + 16) / 8 = 9.4
  expect_samples_of(lut, call);
}

TEST_F(UndistortionLuts, FocalLengthsAreScaledInSinglePrecisionAndTheCentreIsNot) {
  LutCall call;
  call.camera = {500.3F, 501.7F, 31.3F, 23.9F, 64, 48};
  call.config = LutCall::sampled(4, 0, 1.1F);
  const UndistortionLut lut = generated(call);
  const float fx = 500.3F * 1.1F;
  const float fy = 501.7F * 1.1F;
  EXPECT_EQ(lut.info.lut_fx, fx);
  EXPECT_EQ(lut.info.lut_fy, fy);
  EXPECT_EQ(lut.info.lut_cx, 31.3F);
  EXPECT_EQ(lut.info.lut_cy, 23.9F);
  EXPECT_EQ(lut.info.sample_rate_bit, 4U);
  expect_samples_of(lut, call);
}

TEST_F(UndistortionLuts, ScaleOf1HandsTheIntrinsicsOnUnchanged) {
  LutCall call;
  call.camera = {500.3F, 501.7F, 31.3F, 23.9F, 64, 48};
  const UndistortionLut lut = generated(call);
  EXPECT_EQ(lut.info.lut_fx, 500.3F);
  EXPECT_EQ(lut.info.lut_fy, 501.7F);
}

TEST_F(UndistortionLuts, SampleRateBelow3IsNotRefusedHere) {
  LutCall call;
  call.config = LutCall::sampled(0, 0, 1);
  const UndistortionLut lut = generated(call);
  EXPECT_EQ(lut.info.sample_rate_bit, 0U);
  EXPECT_EQ(lut.info.lut_width, 64U);
  EXPECT_EQ(lut.info.lut_height, 48U);
  expect_samples_of(lut, call);
}

TEST_F(UndistortionLuts, SecondLutReplacesTheFirst) {
  UndistortionLut lut;
  LutCall first;
  first.camera = {500, 500, 320, 200, 640, 400};
  EXPECT_EQ(first.into(lut), 0);
  EXPECT_EQ(lut.info.lut_width, 84U);   // 639 / 8 = 79.9, 81 samples
  EXPECT_EQ(lut.info.lut_height, 52U);  // 399 / 8 = 49.9, 51 samples
  EXPECT_EQ(LutCall{}.into(lut), 0);
  EXPECT_EQ(lut.info.lut_width, 12U);
  expect_samples_of(lut, {});
}

TEST_F(UndistortionLuts, ArraysOfSeveralLutsAreTheirOwn) {
  const UndistortionLut left = generated({});
  LutCall other;
  other.distortion = {};
  const UndistortionLut right = generated(other);
  EXPECT_NE(left.info.dx, right.info.dx);
  expect_samples_of(left, {});
  expect_samples_of(right, other);
}

// --- the model

class ModelNumber : public UndistortionLuts, public testing::WithParamInterface<std::int32_t> {};

TEST_P(ModelNumber, ChoosesTheModel) {
  LutCall call;
  call.model = GetParam();
  expect_samples_of(generated(call), call);
}

INSTANTIATE_TEST_SUITE_P(Undistortion, ModelNumber, testing::Values(0, 1, 2, 5),
                         [](const auto& test) { return "Number" + std::to_string(test.param); });

TEST_F(UndistortionLuts, ModelsOfOneCalibrationDiffer) {
  std::vector<double> corners;
  for (const std::int32_t model : {0, 2, 5}) {
    LutCall call;
    call.model = model;
    const UndistortionLut lut = generated(call);
    corners.push_back(lut.info.dx[0]);
  }
  EXPECT_NE(corners[0], corners[1]);
  EXPECT_NE(corners[0], corners[2]);
  EXPECT_NE(corners[1], corners[2]);
}

TEST_F(UndistortionLuts, EquidistantModelGetsFourCoefficients) {
  LutCall call;
  call.model = 2;
  call.distortion = {0.25F, -0.125F, 0.0625F, 0.03125F, kNan, kInfinity, kNan, kNan};
  expect_samples_of(generated(call), call);
}

TEST_F(UndistortionLuts, PolynomialParameterLimitsTheRadiusOfThatModelAlone) {
  for (const std::int32_t model : {0, 1, 2, 5}) {
    LutCall unlimited;
    unlimited.model = model;
    LutCall limited = unlimited;
    limited.polynomial_param = 0.25;
    const UndistortionLut lut = generated(limited);
    expect_samples_of(lut, limited);
    EXPECT_EQ(dx_of(lut) != dx_of(generated(unlimited)), model == 5) << model;
  }
}

TEST_F(UndistortionLuts, PolynomialParameterReachesTheModelAsADouble) {
  LutCall call;
  call.model = 5;
  call.distortion = {0.25F};
  call.polynomial_param = 0.1;
  // (0, 0) lies beyond the limit: x = -0.64
  const UndistortionLut lut = generated(call);
  EXPECT_NEAR(lut.info.dx[0], 0.25 * 0.1 * 0.1 * -0.64, 1e-15);
}

// --- failures

struct FailureCase {
  const char* name;
  LutCall call;
  int status;
  std::string text;
};

// A failure leaves the record as it was, and the next good call succeeds.
void expect_failure(const LutCall& call, int status, const std::string& text) {
  UndistortionLut lut;
  ASSERT_EQ(LutCall{}.into(lut), 0);
  EXPECT_EQ(outcome_of([&] { return call.into(lut); }), prints_err(status, text + "\n"));
  EXPECT_EQ(lut.info.lut_width, 12U);
  expect_samples_of(lut, {});
  EXPECT_EQ(outcome_of([&] { return LutCall{}.into(lut); }), silent_success());
  expect_samples_of(lut, {});
}

TEST_F(UndistortionLuts, OtherModelNumbersAreRefused) {
  for (const std::int32_t model : {-1, 3, 4, 6, 255, 2147483647}) {
    LutCall call;
    call.model = model;
    expect_failure(call, -9, "unsupported distortion model: " + std::to_string(model));
  }
}

TEST_F(UndistortionLuts, ModelIsRefusedBeforeAnythingElse) {
  LutCall call;
  call.model = 3;
  call.camera = {};
  call.config = LutCall::sampled(99, kNan, 0);
  expect_failure(call, -9, "unsupported distortion model: 3");
}

class LibraryFailure : public UndistortionLuts, public testing::WithParamInterface<FailureCase> {};

TEST_P(LibraryFailure, IsPrintedAndPassedOn) {
  for (const std::int32_t model : {0, 1, 2, 5}) {
    SCOPED_TRACE(model);
    LutCall call = GetParam().call;
    call.model = model;
    expect_failure(call, GetParam().status, GetParam().text);
  }
}

FailureCase with_config(const char* name, std::int32_t bit, float ratio, float scale, int status, const char* text) {
  LutCall call;
  call.config = LutCall::sampled(bit, ratio, scale);
  return {name, call, status, text};
}

FailureCase with_camera(const char* name, const DeCameraIntrinsic_S& camera, int status, const char* text) {
  LutCall call;
  call.camera = camera;
  return {name, call, status, text};
}

FailureCase with_first_coefficient(const char* name, float k1, int status, const char* text) {
  LutCall call;
  call.distortion = {k1};
  return {name, call, status, text};
}

INSTANTIATE_TEST_SUITE_P(
    Undistortion, LibraryFailure,
    testing::Values(with_config("SampleBitMinus1", -1, 0, 1, -1, kBadSampleBit),
                    with_config("SampleBit7", 7, 0, 1, -1, kBadSampleBit),
                    with_config("RatioNegative", 3, -0.5F, 1, -2, kBadExtendRatio),
                    with_config("RatioAbove4", 3, 4.5F, 1, -2, kBadExtendRatio),
                    with_config("RatioNoNumber", 3, kNan, 1, -2, kBadExtendRatio),
                    with_config("ScaleOf0", 3, 0, 0, -4, kBadIntrinsics),
                    with_config("NegativeScale", 3, 0, -1, -4, kBadIntrinsics),
                    with_config("ScaleThatOverflows", 3, 0, 3e38F, -4, kBadIntrinsics),
                    with_config("ScaleNoNumber", 3, 0, kNan, -4, kBadIntrinsics),
                    with_camera("WidthOf0", {50, 40, 32, 24, 0, 48}, -3, kBadImageSize),
                    with_camera("HeightOf0", {50, 40, 32, 24, 64, 0}, -3, kBadImageSize),
                    with_camera("SizeCountsBeforeTheIntrinsics", {0, 0, 0, 0, 0, 0}, -3, kBadImageSize),
                    with_camera("FxOf0", {0, 40, 32, 24, 64, 48}, -4, kBadIntrinsics),
                    with_camera("FyNegative", {50, -40, 32, 24, 64, 48}, -4, kBadIntrinsics),
                    with_camera("CxNoNumber", {50, 40, kNan, 24, 64, 48}, -4, kBadIntrinsics),
                    with_camera("CyInfinite", {50, 40, 32, kInfinity, 64, 48}, -4, kBadIntrinsics),
                    with_first_coefficient("CoefficientNoNumber", kNan, -5, kBadCoefficients),
                    with_first_coefficient("CoefficientInfinite", -kInfinity, -5, kBadCoefficients),
                    with_camera("GridTooLarge", {50, 40, 32, 24, 8154, 48}, -6, kTooLarge),
                    with_camera("GridTooHigh", {50, 40, 32, 24, 64, 65535}, -6, kTooLarge),
                    with_first_coefficient("DisplacementTooLarge", 100, -7, kBadDisplacement)),
    [](const auto& test) { return test.param.name; });

TEST_F(UndistortionLuts, ConfigurationThatWasNeverLoadedIsRefused) {
  LutCall call;
  call.config = {};
  expect_failure(call, -4, kBadIntrinsics);  // a scale of 0
}

}  // namespace
}  // namespace vq3900::test
