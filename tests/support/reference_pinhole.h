// A pair of cameras and its virtual pinhole, worked out without derivatives.
#ifndef VQ3900_TESTS_SUPPORT_REFERENCE_PINHOLE_H
#define VQ3900_TESTS_SUPPORT_REFERENCE_PINHOLE_H

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

#include "calib/stereo_rectification.h"
#include "support/reference_distortion.h"

namespace vq3900::test {

struct TestCamera {
  double width = 640;
  double height = 480;
  double fx = 500;
  double fy = 500;
  double cx = 320;
  double cy = 240;
  ReferenceModel model{};

  CameraView view() const {
    return {width, height, fx, fy, cx, cy, make_distortion_model(model.number, model.coefficients, model.rho)};
  }
};

// The undistorted point by halving intervals; without tangential terms.
inline Point reference_undistort(const ReferenceModel& model, Point distorted) {
  const double r_d = std::hypot(distorted.x, distorted.y);
  double low = 0;
  double high = 4;
  for (int i = 0; i < 100; ++i) {
    const double middle = (low + high) / 2;
    (middle * model.factor(middle) < r_d ? low : high) = middle;
  }
  return {distorted.x * low / r_d, distorted.y * low / r_d};
}

inline Point reference_centre(const TestCamera& camera, const Matrix3& rotation, const std::array<double, 2>& u,
                              const std::array<double, 2>& v, double focal) {
  Point mean;
  for (int corner = 0; corner < 4; ++corner) {
    const double x = (u[static_cast<std::size_t>(corner % 2)] - camera.cx) / camera.fx;
    const double y = (v[static_cast<std::size_t>(corner / 2)] - camera.cy) / camera.fy;
    const Point p = reference_undistort(camera.model, {x, y});
    const Vector3 ray = rotation * Vector3{p.x, p.y, 1};
    mean.x += focal * ray[0] / ray[2] / 4;
    mean.y += focal * ray[1] / ray[2] / 4;
  }
  return {(camera.width - 1) / 2 - mean.x, (camera.height - 1) / 2 - mean.y};
}

inline VirtualPinhole reference_pinhole(const TestCamera& left, const TestCamera& right,
                                        const RectifyingRotations& rotations, bool inner) {
  const double w = left.width;
  const double h = left.height;
  const std::array<double, 2> u = inner ? std::array{w / 4, 3 * w / 4 - 1} : std::array{0.0, w - 1};
  const std::array<double, 2> v = inner ? std::array{h / 4, 3 * h / 4 - 1} : std::array{0.0, h - 1};
  const double focal = std::max(std::max(left.fx, left.fy), std::max(right.fx, right.fy));
  const Point a = reference_centre(left, rotations.left, u, v, focal);
  const Point b = reference_centre(right, rotations.right, u, v, focal);
  return {focal, (a.x + b.x) / 2, (a.y + b.y) / 2};
}

}  // namespace vq3900::test

#endif
