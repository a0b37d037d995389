#include "calib/rectified_view.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "calib/stereo_derivation.h"
#include "modules/fixed_point.h"

namespace vq3900::tool {

namespace {

Matrix3 matrix_of(const float (&values)[9]) {
  Matrix3 matrix;
  std::transform(std::begin(values), std::end(values), matrix.m.begin(), widen);
  return matrix;
}

Vector3 ray_of(const DeCameraIntrinsic_S& camera, Point pixel) {
  return {(pixel.x - widen(camera.cx)) / widen(camera.fx), (pixel.y - widen(camera.cy)) / widen(camera.fy), 1};
}

Point project(const DeCameraIntrinsic_S& camera, const Vector3& point) {
  return {point[0] / point[2] * widen(camera.fx) + widen(camera.cx),
          point[1] / point[2] * widen(camera.fy) + widen(camera.cy)};
}

// A camera's unrectified intrinsics and distortion, as the derivation left them.
RectifiedView view_of(const DeCameraIntrinsic_S& unrectified, const float (&distortion)[8], const float (&rotation)[9],
                      const DeCameraIntrinsic_S& output, std::int32_t model) {
  DeCalibCamera_S camera{};
  camera.width = unrectified.width;
  camera.height = unrectified.height;
  camera.fx = unrectified.fx;
  camera.fy = unrectified.fy;
  camera.cx = unrectified.cx;
  camera.cy = unrectified.cy;
  std::ranges::copy(distortion, camera.distortion);
  return {camera_view(camera, model), matrix_of(rotation), output};
}

// Evenly spread positions within a side, as many as that, not on the borders.
double spread(int index, int count, double side) {
  return (index + 0.5) / count * (side - 1);
}

void widen_rows(const RectifiedView& view, RowCheck& check) {
  constexpr int kSteps = 32;
  for (int row = 0; row <= kSteps; ++row) {
    for (int column = 0; column <= kSteps; ++column) {
      const double u = static_cast<double>(column) / kSteps * (view.output.width - 1);
      const double v = static_cast<double>(row) / kSteps * (view.output.height - 1);
      const auto source = view.to_image({u, v});
      if (!source) continue;
      check.rows_above = std::max(check.rows_above, v - source->y);
      check.rows_below = std::max(check.rows_below, source->y - v);
    }
  }
}

}  // namespace

std::optional<Point> RectifiedView::to_rectified(Point pixel) const {
  const auto p = undistort(camera.model, {(pixel.x - camera.cx) / camera.fx, (pixel.y - camera.cy) / camera.fy});
  if (!p) return std::nullopt;
  const Vector3 ray = rotation * Vector3{p->x, p->y, 1};
  if (!(ray[2] > 0)) return std::nullopt;
  return project(output, ray);
}

std::optional<Point> RectifiedView::to_image(Point rectified) const {
  const Vector3 ray = transpose(rotation) * ray_of(output, rectified);
  if (!(ray[2] > 0)) return std::nullopt;
  const Point p = distort(camera.model, {ray[0] / ray[2], ray[1] / ray[2]});
  return Point{p.x * camera.fx + camera.cx, p.y * camera.fy + camera.cy};
}

RectifiedView left_view(const CalibrationRun& run) {
  const DeStereoRectifyParams_S& r = run.rectification;
  return view_of(r.cam1, r.cam1_distortion, r.cam1_rotation, r.cam1_rectified, run.calibration.distortion_model);
}

RectifiedView right_view(const CalibrationRun& run) {
  const DeStereoRectifyParams_S& r = run.rectification;
  return view_of(r.cam0, r.cam0_distortion, r.cam0_rotation, r.cam0_rectified, run.calibration.distortion_model);
}

std::vector<MatchedPoint> matched_points(const CalibrationRun& run, int columns, int rows, double baselines) {
  const DeStereoRectifyParams_S& r = run.rectification;
  const Matrix3 left = matrix_of(r.cam1_rotation);
  const Matrix3 right = matrix_of(r.cam0_rotation);
  const Vector3 translation{widen(run.calibration.ir_translation[0]),
                            widen(run.calibration.ir_translation[1]),
                            widen(run.calibration.ir_translation[2])};
  const CameraPose pose{matrix_of(run.calibration.ir_rotation), translation};
  std::vector<MatchedPoint> points;
  for (int row = 0; row < rows; ++row) {
    for (int column = 0; column < columns; ++column) {
      const Point pixel{spread(column, columns, r.cam1_rectified.width), spread(row, rows, r.cam1_rectified.height)};
      const Vector3 point = scaled(ray_of(r.cam1_rectified, pixel), baselines * norm(translation));
      const Vector3 other = right * chained({Matrix3{}, transpose(left) * point}, pose).translation;
      if (other[2] > 0) points.push_back({pixel, project(r.cam0_rectified, other)});
    }
  }
  return points;
}

RowCheck check_rows(const CalibrationRun& run) {
  RowCheck check;
  for (const double baselines : {5.0, 20.0, 1000.0}) {
    for (const MatchedPoint& point : matched_points(run, 16, 12, baselines)) {
      check.largest_difference = std::max(check.largest_difference, std::fabs(point.right.y - point.left.y));
    }
  }
  widen_rows(left_view(run), check);
  widen_rows(right_view(run), check);
  return check;
}

}  // namespace vq3900::tool
