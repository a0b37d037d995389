#include "calib/distortion_model.h"

namespace vq3900 {

DistortionModel make_distortion_model(std::int32_t number, std::span<const float, 8> coefficients, double rho) {
  if (number == kEquidistantNumber) return EquidistantModel{coefficients.first<4>()};
  if (number == kPolynomialNumber) return PolynomialModel{coefficients, rho};
  return BrownModel{coefficients};
}

}  // namespace vq3900
