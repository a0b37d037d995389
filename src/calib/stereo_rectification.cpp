#include "calib/stereo_rectification.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace vq3900 {

namespace {

// A point of the camera's image after undistortion and turning, in units of the virtual focal length.
std::optional<Point> turned_point(const CameraView& camera, const Matrix3& rotation, double u, double v) {
  const auto p = undistort(camera.model, {(u - camera.cx) / camera.fx, (v - camera.cy) / camera.fy});
  if (!p) return std::nullopt;
  const Vector3 ray = rotation * Vector3{p->x, p->y, 1};
  if (!(ray[2] > 0)) return std::nullopt;
  return Point{ray[0] / ray[2], ray[1] / ray[2]};
}

// The pixels whose centre of gravity the virtual image is centred on: the corners, or points within when the distortion
// at the corner is strong.
struct SamplePixels {
  std::array<double, 2> u;
  std::array<double, 2> v;
};

SamplePixels sample_pixels(const CameraView& first) {
  const double x = -first.cx / first.fx;
  const double y = -first.cy / first.fy;
  const bool strong = std::fabs(radial_factor(first.model, x * x + y * y) - 1) > 0.1;
  const double w = first.width;
  const double h = first.height;
  if (strong) return {{0.25 * w, 0.75 * w - 1}, {0.25 * h, 0.75 * h - 1}};
  return {{0, w - 1}, {0, h - 1}};
}

// Where the virtual principal point has to lie for this camera's samples to be centred in its image.
std::optional<Point> centre_of(const CameraView& camera, const Matrix3& rotation, const SamplePixels& pixels,
                               double focal) {
  Point sum;
  for (const double v : pixels.v) {
    for (const double u : pixels.u) {
      const auto p = turned_point(camera, rotation, u, v);
      if (!p) return std::nullopt;
      sum.x += p->x * focal;
      sum.y += p->y * focal;
    }
  }
  return Point{(camera.width - 1) * 0.5 - sum.x / 4, (camera.height - 1) * 0.5 - sum.y / 4};
}

}  // namespace

// Each camera is first turned half the way towards the other, by h = R^(-1/2) the right one and by its inverse the left
// one: then both look the same way. In that common frame the baseline is t = h T, and the turn a from t to the x axis
// brings the rows in line. So right is turned by a h and left by a h^-1, and a h R (a h^-1)^T is the identity.
std::optional<RectifyingRotations> rectifying_rotations(const Matrix3& rotation, const Vector3& translation) {
  const auto r = nearest_rotation(rotation);
  if (!r) return std::nullopt;
  const Matrix3 half = rotation_about(scaled(rotation_vector(*r), -0.5));
  const Vector3 t = half * translation;
  const Vector3 axis{t[0] < 0 ? -1.0 : 1.0, 0, 0};
  const Vector3 w = cross(t, axis);
  Matrix3 align;
  if (norm(w) > 0) {  // else the baseline lies along the axis already, or there is none
    const double angle = std::acos(std::min(std::fabs(dot(t, axis)) / norm(t), 1.0));
    align = rotation_about(scaled(w, angle / norm(w)));
  }
  return RectifyingRotations{align * transpose(half), align * half};
}

std::optional<VirtualPinhole> virtual_pinhole(const CameraView& left, const CameraView& right,
                                              const RectifyingRotations& rotations) {
  const double focal = std::max({left.fx, left.fy, right.fx, right.fy});
  const SamplePixels pixels = sample_pixels(left);
  const auto left_centre = centre_of(left, rotations.left, pixels, focal);
  const auto right_centre = centre_of(right, rotations.right, pixels, focal);
  if (!left_centre || !right_centre) return std::nullopt;
  return VirtualPinhole{focal, (left_centre->x + right_centre->x) / 2, (left_centre->y + right_centre->y) / 2};
}

}  // namespace vq3900
