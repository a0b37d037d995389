#include "calib/brown_model.h"

#include "calib/newton.h"

namespace vq3900 {

BrownModel::BrownModel(std::span<const float, 8> coefficients)
    : p1_(static_cast<double>(coefficients[6])), p2_(static_cast<double>(coefficients[7])) {
  for (std::size_t i = 0; i < k_.size(); ++i)
    k_[i] = static_cast<double>(coefficients[i]);
}

std::optional<Point> BrownModel::undistort(Point distorted) const {
  const auto undistorted = solve_point(distorted, [this](Point p) -> PlaneSlope {
    const double r2 = p.x * p.x + p.y * p.y;
    const double numerator = 1 + r2 * (k_[0] + r2 * (k_[1] + r2 * k_[2]));
    const double denominator = 1 + r2 * (k_[3] + r2 * (k_[4] + r2 * k_[5]));
    const double numerator_slope = k_[0] + r2 * (2 * k_[1] + r2 * 3 * k_[2]);
    const double denominator_slope = k_[3] + r2 * (2 * k_[4] + r2 * 3 * k_[5]);
    const double g = numerator / denominator;
    const double g_slope = (numerator_slope - g * denominator_slope) / denominator;  // by r^2
    const double across = 2 * p.x * p.y * g_slope + 2 * p1_ * p.x + 2 * p2_ * p.y;
    return {distort(p),
            g + 2 * p.x * p.x * g_slope + 2 * p1_ * p.y + 6 * p2_ * p.x,
            across,
            across,
            g + 2 * p.y * p.y * g_slope + 6 * p1_ * p.y + 2 * p2_ * p.x};
  });
  // Beyond the fold of a strong distortion the iteration may settle on the far side of the centre.
  if (!undistorted || undistorted->x * distorted.x + undistorted->y * distorted.y < 0) return std::nullopt;
  return undistorted;
}

}  // namespace vq3900
