// The polynomial model: a radial factor of even powers.
//
//   s   = 1 + c1 r^2 + c2 r^4 + ... + c8 r^16,   r^2 = x^2 + y^2
//   x_d = x s,  y_d = y s
//
// Parameters in the order c1 to c8, and a limit rho: where it is finite and positive, r is taken no larger than rho
// inside the sum. The model holds as far out as s r grows with r.
#ifndef VQ3900_CALIB_POLYNOMIAL_MODEL_H
#define VQ3900_CALIB_POLYNOMIAL_MODEL_H

#include <algorithm>
#include <array>
#include <optional>
#include <span>

#include "calib/point.h"

namespace vq3900 {

class PolynomialModel {
 public:
  PolynomialModel(std::span<const float, 8> coefficients, double rho);

  double radial_factor(double r2) const {
    const double t = std::min(r2, limit_);
    double sum = c_[7];
    for (std::size_t i = 7; i > 0; --i)
      sum = sum * t + c_[i - 1];
    return 1 + t * sum;
  }

  Point distort(Point p) const { return distort_with(radial_factor(squared_radius(p)), p); }

  // The same with the point's radial factor, for those that take many points in two steps.
  static Point distort_with(double factor, Point p) { return {p.x * factor, p.y * factor}; }

  std::optional<Point> undistort(Point distorted) const;

 private:
  std::array<double, 8> c_{};
  double limit_;  // of r^2
};

}  // namespace vq3900

#endif
