// Newton's iteration for the inverse of a distortion: what both the radial and the plane form share.
#ifndef VQ3900_CALIB_NEWTON_H
#define VQ3900_CALIB_NEWTON_H

#include <cmath>
#include <optional>

#include "calib/point.h"

namespace vq3900 {

inline constexpr int kNewtonRounds = 50;
inline constexpr double kNewtonTolerance = 1e-12;  // of the change of the last round

// A function's value and its derivative.
struct Slope {
  double value;
  double derivative;
};

// Solves f(r) = target for r, starting at the target itself. Nothing when it does not settle, or settles beyond the
// fold where the function falls.
template <typename Function>
std::optional<double> solve_radius(double target, const Function& f) {
  double r = target;
  for (int round = 0; round < kNewtonRounds; ++round) {
    const Slope at = f(r);
    const double change = (at.value - target) / at.derivative;
    r -= change;
    if (!std::isfinite(r)) return std::nullopt;
    if (std::fabs(change) >= kNewtonTolerance) continue;
    return at.derivative > 0 ? std::optional{r} : std::nullopt;
  }
  return std::nullopt;
}

// A map of the plane and its derivative (Jacobian) in a point.
struct PlaneSlope {
  Point value;
  double xx = 0;  // of x along x
  double xy = 0;  // of x along y
  double yx = 0;
  double yy = 0;
};

// Solves f(p) = target for p, starting at the target itself. Nothing when it does not settle, or settles beyond the
// fold where the map turns the plane inside out.
template <typename Map>
std::optional<Point> solve_point(Point target, const Map& f) {
  Point p = target;
  for (int round = 0; round < kNewtonRounds; ++round) {
    const PlaneSlope at = f(p);
    const double ex = at.value.x - target.x;
    const double ey = at.value.y - target.y;
    const double determinant = at.xx * at.yy - at.xy * at.yx;
    const double change_x = (at.yy * ex - at.xy * ey) / determinant;
    const double change_y = (at.xx * ey - at.yx * ex) / determinant;
    p.x -= change_x;
    p.y -= change_y;
    if (!std::isfinite(p.x) || !std::isfinite(p.y)) return std::nullopt;
    if (std::fabs(change_x) >= kNewtonTolerance || std::fabs(change_y) >= kNewtonTolerance) continue;
    return determinant > 0 ? std::optional{p} : std::nullopt;
  }
  return std::nullopt;
}

}  // namespace vq3900

#endif
