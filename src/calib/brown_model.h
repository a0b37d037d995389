// The Brown model: a rational radial factor and tangential terms.
//
//   g   = (1 + k1 r^2 + k2 r^4 + k3 r^6) / (1 + k4 r^2 + k5 r^4 + k6 r^6),   r^2 = x^2 + y^2
//   x_d = x g + 2 p1 x y + p2 (r^2 + 2 x^2)
//   y_d = y g + p1 (r^2 + 2 y^2) + 2 p2 x y
//
// Parameters in the order k1, k2, k3, k4, k5, k6, p1, p2. It holds as far out as the factor times r grows with r.
#ifndef VQ3900_CALIB_BROWN_MODEL_H
#define VQ3900_CALIB_BROWN_MODEL_H

#include <array>
#include <optional>
#include <span>

#include "calib/point.h"

namespace vq3900 {

class BrownModel {
 public:
  explicit BrownModel(std::span<const float, 8> coefficients);

  double radial_factor(double r2) const {
    const double numerator = 1 + r2 * (k_[0] + r2 * (k_[1] + r2 * k_[2]));
    const double denominator = 1 + r2 * (k_[3] + r2 * (k_[4] + r2 * k_[5]));
    return numerator / denominator;
  }

  Point distort(Point p) const { return distort_with(radial_factor(squared_radius(p)), p); }

  // The same with the point's radial factor, for those that take many points in two steps.
  Point distort_with(double g, Point p) const {
    const double r2 = squared_radius(p);
    const double xy2 = 2 * p.x * p.y;
    return {p.x * g + p1_ * xy2 + p2_ * (r2 + 2 * p.x * p.x), p.y * g + p1_ * (r2 + 2 * p.y * p.y) + p2_ * xy2};
  }

  std::optional<Point> undistort(Point distorted) const;

 private:
  std::array<double, 6> k_{};
  double p1_;
  double p2_;
};

}  // namespace vq3900

#endif
