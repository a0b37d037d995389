#include "calib/distortion_lut/lut_grid.h"

#include <algorithm>
#include <cmath>

namespace vq3900 {

std::optional<GridAxis> grid_axis(int pixels, int sample_bit, double extension_factor) {
  const int step = 1 << sample_bit;
  const double margin = (extension_factor - 1) / 2 * pixels;
  const double margin_steps = std::min(std::ceil(margin / step), std::floor(double{kLargestExtension} / step));
  const int start = -static_cast<int>(margin_steps) * step;
  const double last = pixels - 1 + std::min(margin, static_cast<double>(-start));
  const int needed = static_cast<int>(std::ceil((last - start) / step)) + 1;
  const int samples = (needed + 3) / 4 * 4;
  if (samples > kMostSamples) return std::nullopt;
  return GridAxis{start, step, samples};
}

}  // namespace vq3900
