// Rotations and random rigs for the geometry tests, made by other means than the library's own.
#ifndef VQ3900_TESTS_SUPPORT_GEOMETRY_H
#define VQ3900_TESTS_SUPPORT_GEOMETRY_H

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>

#include "calib/rotation.h"
#include "support/numbers.h"

namespace vq3900::test {

inline constexpr double kPi = std::numbers::pi;

inline double degrees(double angle) {
  return angle * kPi / 180;
}

inline double number_between(Random& random, double low, double high) {
  return low + (high - low) * (static_cast<double>(random.word()) / 4294967296.0);
}

// Evenly over the sphere.
inline Vector3 random_direction(Random& random) {
  const double z = number_between(random, -1, 1);
  const double turn = number_between(random, 0, 2 * kPi);
  const double r = std::sqrt(1 - z * z);
  return {r * std::cos(turn), r * std::sin(turn), z};
}

// The turn about a unit axis, by the matrix of the unit quaternion.
inline Matrix3 turned_about(const Vector3& axis, double angle) {
  const double w = std::cos(angle / 2);
  const double s = std::sin(angle / 2);
  const double x = axis[0] * s;
  const double y = axis[1] * s;
  const double z = axis[2] * s;
  return {{w * w + x * x - y * y - z * z,
           2 * (x * y - w * z),
           2 * (x * z + w * y),
           2 * (x * y + w * z),
           w * w - x * x + y * y - z * z,
           2 * (y * z - w * x),
           2 * (x * z - w * y),
           2 * (y * z + w * x),
           w * w - x * x - y * y + z * z}};
}

inline double largest_difference(const Vector3& a, const Vector3& b) {
  double most = 0;
  for (std::size_t i = 0; i < 3; ++i)
    most = std::max(most, std::isfinite(a[i] - b[i]) ? std::fabs(a[i] - b[i]) : HUGE_VAL);
  return most;
}

inline double largest_difference(const Matrix3& a, const Matrix3& b) {
  double most = 0;
  for (std::size_t i = 0; i < 9; ++i)
    most = std::max(most, std::isfinite(a.m[i] - b.m[i]) ? std::fabs(a.m[i] - b.m[i]) : HUGE_VAL);
  return most;
}

// How far a matrix is from an orthogonal one of determinant 1.
inline double rotation_defect(const Matrix3& a) {
  double most =
      std::fabs(a(0, 0) * (a(1, 1) * a(2, 2) - a(1, 2) * a(2, 1)) - a(0, 1) * (a(1, 0) * a(2, 2) - a(1, 2) * a(2, 0)) +
                a(0, 2) * (a(1, 0) * a(2, 1) - a(1, 1) * a(2, 0)) - 1);
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t j = 0; j < 3; ++j) {
      double rows = i == j ? -1 : 0;
      for (std::size_t k = 0; k < 3; ++k)
        rows += a(i, k) * a(j, k);
      most = std::max(most, std::isfinite(rows) ? std::fabs(rows) : HUGE_VAL);
    }
  }
  return most;
}

// A pose between two cameras: X_right = rotation * X_left + translation, and the axis and angle of the rotation.
struct Rig {
  Vector3 axis;
  double angle;
  Matrix3 rotation;
  Vector3 translation;
};

// Cameras turned by up to that angle against each other, the baseline of either sign within the second angle of the x
// axis.
inline Rig random_rig(Random& random, double largest_turn, double largest_slant) {
  Rig rig{random_direction(random), number_between(random, 0, largest_turn), {}, {}};
  rig.rotation = turned_about(rig.axis, rig.angle);
  const double slant = number_between(random, 0, largest_slant);
  const double around = number_between(random, 0, 2 * kPi);
  const double length = number_between(random, 5, 200) * (random.word() % 2 == 0 ? 1 : -1);
  rig.translation = {length * std::cos(slant),
                     length * std::sin(slant) * std::cos(around),
                     length * std::sin(slant) * std::sin(around)};
  return rig;
}

}  // namespace vq3900::test

#endif
