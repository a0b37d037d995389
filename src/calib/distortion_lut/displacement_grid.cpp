#include "calib/distortion_lut/displacement_grid.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <variant>

namespace vq3900 {

namespace {

// Whether round(d * 2^24) lies within -2^23 and 2^23 - 1; false for NaN.
bool encodes(double displacement) {
  constexpr double kScale = 16777216.0;  // 2^24
  constexpr double kLimit = 8388608.0;   // 2^23
  const double rounded = std::round(displacement * kScale);
  return rounded >= -kLimit && rounded <= kLimit - 1;
}

template <typename Model>
Point displacement(const Model& model, const Pinhole& pinhole, double u, double v) {
  const Point p{(u - pinhole.cx) / pinhole.fx, (v - pinhole.cy) / pinhole.fy};
  const Point distorted = model.distort(p);
  return {distorted.x - p.x, distorted.y - p.y};
}

bool in_range(const Point& d) {
  return encodes(d.x) && encodes(d.y);
}

template <typename Model>
bool sample(const Model& model, const Pinhole& pinhole, const ImageSide& image, const GridAxis& across,
            const GridAxis& down, DisplacementGrid& grid) {
  const double right = image.width - 1;
  const double bottom = image.height - 1;
  std::size_t at = 0;
  for (int j = 0; j < down.samples; ++j) {
    const double v = down.start + j * down.step;
    for (int i = 0; i < across.samples; ++i, ++at) {
      const double u = across.start + i * across.step;
      Point d = displacement(model, pinhole, u, v);
      if (!in_range(d)) {
        const bool inside = u >= 0 && u <= right && v >= 0 && v <= bottom;
        if (inside) return false;
        d = displacement(model, pinhole, std::clamp(u, 0.0, right), std::clamp(v, 0.0, bottom));
        if (!in_range(d)) return false;
      }
      grid.dx[at] = d.x;
      grid.dy[at] = d.y;
    }
  }
  return true;
}

}  // namespace

bool sample_displacements(const DistortionModel& model, const Pinhole& pinhole, const ImageSide& image,
                          const GridAxis& across, const GridAxis& down, DisplacementGrid& grid) {
  const auto count = static_cast<std::size_t>(across.samples) * static_cast<std::size_t>(down.samples);
  grid.dx.assign(count, 0);
  grid.dy.assign(count, 0);
  return std::visit([&](const auto& m) { return sample(m, pinhole, image, across, down, grid); }, model);
}

}  // namespace vq3900
