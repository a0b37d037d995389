#include "calib/distortion_lut/displacement_grid.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>

#include "calib/distortion_lut/displacement_row.h"

namespace vq3900 {

namespace {

// Whether round(d * 2^24) lies within -2^23 and 2^23 - 1; false for NaN.
bool encodes(double displacement) {
  constexpr double kScale = 16777216.0;  // 2^24
  constexpr double kLimit = 8388608.0;   // 2^23
  const double scaled = displacement * kScale;
  return scaled > -kLimit - 0.5 && scaled < kLimit - 0.5;  // halves are rounded away from zero
}

bool in_range(const Point& d) {
  return encodes(d.x) && encodes(d.y);
}

Point point_of(const Pinhole& pinhole, double u, double v) {
  return {(u - pinhole.cx) / pinhole.fx, (v - pinhole.cy) / pinhole.fy};
}

// The displacement of the nearest image position: of the sample itself where it lies inside.
Point nearest_displacement(const DistortionModel& model, const Pinhole& pinhole, const ImageSide& image, double u,
                           double v) {
  const double right = image.width - 1;
  const double bottom = image.height - 1;
  const Point p = point_of(pinhole, std::clamp(u, 0.0, right), std::clamp(v, 0.0, bottom));
  const Point distorted = distort(model, p);
  return {distorted.x - p.x, distorted.y - p.y};
}

double position(const GridAxis& axis, int sample) {
  return axis.start + sample * axis.step;
}

}  // namespace

bool sample_displacements(const DistortionModel& model, const Pinhole& pinhole, const ImageSide& image,
                          const GridAxis& across, const GridAxis& down, DisplacementGrid& grid) {
  const auto count = static_cast<std::size_t>(across.samples) * static_cast<std::size_t>(down.samples);
  grid.dx.resize(count);
  grid.dy.resize(count);
  std::array<double, kMostSamples> columns{};
  for (int i = 0; i < across.samples; ++i)
    columns[static_cast<std::size_t>(i)] = point_of(pinhole, position(across, i), 0).x;
  const auto x = std::span(columns).first(static_cast<std::size_t>(across.samples));

  double* dx = grid.dx.data();
  double* dy = grid.dy.data();
  for (int j = 0; j < down.samples; ++j, dx += across.samples, dy += across.samples) {
    const double v = position(down, j);
    if (sample_row(model, x, point_of(pinhole, 0, v).y, dx, dy)) continue;
    for (int i = 0; i < across.samples; ++i) {
      if (in_range({dx[i], dy[i]})) continue;
      const Point d = nearest_displacement(model, pinhole, image, position(across, i), v);
      if (!in_range(d)) return false;
      dx[i] = d.x;
      dy[i] = d.y;
    }
  }
  return true;
}

}  // namespace vq3900
