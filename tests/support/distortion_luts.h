// Distortion LUTs: their messages, a generator made ready, and what its samples have to be.
#ifndef VQ3900_TESTS_SUPPORT_DISTORTION_LUTS_H
#define VQ3900_TESTS_SUPPORT_DISTORTION_LUTS_H

#include "vq3900_distortion_lut.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>

#include "support/reference_distortion.h"

namespace vq3900::test {

inline constexpr const char* kBadSampleBit = "lut sample bit out of range";
inline constexpr const char* kBadExtendRatio = "lut extend ratio out of range";
inline constexpr const char* kBadImageSize = "image size invalid";
inline constexpr const char* kBadIntrinsics = "camera intrinsics invalid";
inline constexpr const char* kBadCoefficients = "distortion coefficients invalid";
inline constexpr const char* kTooLarge = "lut grid too large";
inline constexpr const char* kBadDisplacement = "lut displacement out of range";
inline constexpr const char* kNotGenerated = "lut not generated";

inline std::unique_ptr<CreateDistortionLUT> made_lut(std::int32_t model) {
  if (model == 2) return std::make_unique<EquiModelLUT>();
  if (model == 5) return std::make_unique<PolynomialModelLUT>();
  return std::make_unique<BrownModelLUT>();
}

inline int coefficient_count(std::int32_t model) {
  return model == 2 ? 4 : 8;
}

// What a generator is set to before it generates.
struct LutSettings {
  int width = 64;
  int height = 48;
  int sample_bit = 3;
  float extend_ratio = 0;
  float fx = 50;
  float fy = 40;
  float cx = 32;
  float cy = 24;
};

inline void set_up(CreateDistortionLUT& lut, const LutSettings& settings, const ReferenceModel& model) {
  EXPECT_EQ(lut.SetLutConfigParams(settings.sample_bit, 0, settings.extend_ratio, true), 0);
  EXPECT_EQ(lut.SetImageSize(settings.width, settings.height), 0);
  EXPECT_EQ(lut.SetCameraIntrinsics(settings.fx, settings.fy, settings.cx, settings.cy), 0);
  EXPECT_EQ(lut.SetDistortionCoeffs(model.coefficients.data(), coefficient_count(model.number)), 0);
  EXPECT_EQ(lut.SetPolynomialParam(model.rho), 0);
}

inline SampledDistoLUT_s grid_of(CreateDistortionLUT& lut) {
  SampledDistoLUT_s grid{};
  EXPECT_EQ(lut.GetDistortionLut(&grid), 0);
  return grid;
}

inline bool encodes(double displacement) {
  const double raw = std::round(displacement * 16777216);
  return raw >= -8388608 && raw <= 8388607;
}

// The displacement at a pixel; beyond the image, where one does not encode, that of the nearest pixel of the image.
inline Point expected_sample(const LutSettings& settings, const ReferenceModel& model, double u, double v) {
  const auto displaced = [&](double at_u, double at_v) -> Point {
    const Point p{(at_u - static_cast<double>(settings.cx)) / static_cast<double>(settings.fx),
                  (at_v - static_cast<double>(settings.cy)) / static_cast<double>(settings.fy)};
    const Point distorted = model.distort(p);
    return {distorted.x - p.x, distorted.y - p.y};
  };
  const Point d = displaced(u, v);
  if (encodes(d.x) && encodes(d.y)) return d;
  return displaced(std::clamp(u, 0.0, settings.width - 1.0), std::clamp(v, 0.0, settings.height - 1.0));
}

}  // namespace vq3900::test

#endif
