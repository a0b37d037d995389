// The equidistant (fisheye) model: the distance from the centre grows with the angle from the optical axis.
//
//   theta   = atan r,   r^2 = x^2 + y^2
//   theta_d = theta (1 + k1 theta^2 + k2 theta^4 + k3 theta^6 + k4 theta^8)
//   x_d     = x theta_d / r,  y_d = y theta_d / r,  and the centre stays
//
// Parameters in the order k1, k2, k3, k4. It holds for angles below a right angle, as far as theta_d grows with theta.
#ifndef VQ3900_CALIB_EQUIDISTANT_MODEL_H
#define VQ3900_CALIB_EQUIDISTANT_MODEL_H

#include <array>
#include <cmath>
#include <optional>
#include <span>

#include "calib/arc_tangent.h"
#include "calib/point.h"

namespace vq3900 {

class EquidistantModel {
 public:
  explicit EquidistantModel(std::span<const float, 4> coefficients);

  double radial_factor(double r2) const {
    const double r = std::sqrt(r2);
    return r > 0 ? distorted_angle(arc_tangent(r)) / r : 1.0;
  }

  Point distort(Point p) const { return distort_with(radial_factor(squared_radius(p)), p); }

  // The same with the point's radial factor, for those that take many points in two steps.
  static Point distort_with(double factor, Point p) { return {p.x * factor, p.y * factor}; }

  std::optional<Point> undistort(Point distorted) const;

 private:
  double distorted_angle(double theta) const {
    const double t2 = theta * theta;
    return theta * (1 + t2 * (k_[0] + t2 * (k_[1] + t2 * (k_[2] + t2 * k_[3]))));
  }

  std::array<double, 4> k_{};
};

}  // namespace vq3900

#endif
