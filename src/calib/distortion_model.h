// A camera's distortion: one of the three models, chosen by the calibration's model number.
#ifndef VQ3900_CALIB_DISTORTION_MODEL_H
#define VQ3900_CALIB_DISTORTION_MODEL_H

#include <cstdint>
#include <optional>
#include <span>
#include <variant>

#include "calib/brown_model.h"
#include "calib/equidistant_model.h"
#include "calib/point.h"
#include "calib/polynomial_model.h"

namespace vq3900 {

using DistortionModel = std::variant<BrownModel, EquidistantModel, PolynomialModel>;

// The model numbers of a calibration. 0 and 1 are both Brown.
inline constexpr std::int32_t kBrownNumber = 0;
inline constexpr std::int32_t kOtherBrownNumber = 1;
inline constexpr std::int32_t kEquidistantNumber = 2;
inline constexpr std::int32_t kPolynomialNumber = 5;

// The model of a calibration's eight coefficients; a number that is none of the above is taken for Brown.
DistortionModel make_distortion_model(std::int32_t number, std::span<const float, 8> coefficients, double rho);

inline Point distort(const DistortionModel& model, Point p) {
  return std::visit([p](const auto& m) { return m.distort(p); }, model);
}

// The point that distorts to the given one, by Newton's iteration. Nothing when it does not settle.
inline std::optional<Point> undistort(const DistortionModel& model, Point distorted) {
  return std::visit([distorted](const auto& m) { return m.undistort(distorted); }, model);
}

inline double radial_factor(const DistortionModel& model, double r2) {
  return std::visit([r2](const auto& m) { return m.radial_factor(r2); }, model);
}

}  // namespace vq3900

#endif
