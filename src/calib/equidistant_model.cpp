#include "calib/equidistant_model.h"

#include "calib/newton.h"

namespace vq3900 {

EquidistantModel::EquidistantModel(std::span<const float, 4> coefficients) {
  for (std::size_t i = 0; i < k_.size(); ++i)
    k_[i] = static_cast<double>(coefficients[i]);
}

std::optional<Point> EquidistantModel::undistort(Point distorted) const {
  const double theta_d = std::hypot(distorted.x, distorted.y);
  if (theta_d == 0) return distorted;
  const auto theta = solve_radius(theta_d, [this](double t) -> Slope {
    const double t2 = t * t;
    return {distorted_angle(t), 1 + t2 * (3 * k_[0] + t2 * (5 * k_[1] + t2 * (7 * k_[2] + t2 * 9 * k_[3])))};
  });
  constexpr double kRightAngle = 1.5707963267948966;
  if (!theta || *theta < 0 || *theta >= kRightAngle) return std::nullopt;  // behind the image plane
  const double scale = std::tan(*theta) / theta_d;
  return Point{distorted.x * scale, distorted.y * scale};
}

}  // namespace vq3900
