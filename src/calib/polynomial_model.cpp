#include "calib/polynomial_model.h"

#include <cmath>
#include <limits>

#include "calib/newton.h"

namespace vq3900 {

PolynomialModel::PolynomialModel(std::span<const float, 8> coefficients, double rho)
    : limit_(std::isfinite(rho) && rho > 0 ? rho * rho : std::numeric_limits<double>::infinity()) {
  for (std::size_t i = 0; i < c_.size(); ++i)
    c_[i] = static_cast<double>(coefficients[i]);
}

std::optional<Point> PolynomialModel::undistort(Point distorted) const {
  const double r_d = std::hypot(distorted.x, distorted.y);
  if (r_d == 0) return distorted;
  const auto r = solve_radius(r_d, [this](double radius) -> Slope {
    const double r2 = radius * radius;
    const double factor = radial_factor(r2);
    if (r2 >= limit_) return {radius * factor, factor};
    double slope = 17 * c_[7];  // the derivative of c_i r^(2 i + 1) is (2 i + 1) c_i r^(2 i)
    for (std::size_t i = 7; i > 0; --i)
      slope = slope * r2 + static_cast<double>(2 * i + 1) * c_[i - 1];
    return {radius * factor, 1 + r2 * slope};
  });
  if (!r || *r < 0) return std::nullopt;
  return Point{distorted.x * *r / r_d, distorted.y * *r / r_d};
}

}  // namespace vq3900
