// Where a displacement grid lies: first sample, step and number of samples along one side of the image.
#ifndef VQ3900_CALIB_DISTORTION_LUT_LUT_GRID_H
#define VQ3900_CALIB_DISTORTION_LUT_LUT_GRID_H

#include <cstdint>
#include <optional>

namespace vq3900 {

inline constexpr int kMostSampleBits = 6;
inline constexpr int kMostSamples = 1020;
inline constexpr int kLargestExtension = 512;  // pixels on either side

struct GridAxis {
  int start;    // pixels; 0 or negative
  int step;     // pixels
  int samples;  // a multiple of 4
};

// The samples that cover an image side of that many pixels, extended by the factor. Nothing when they are too many.
std::optional<GridAxis> grid_axis(int pixels, int sample_bit, double extension_factor);

// The factor that an extension ratio stands for: from 1 on the ratio itself, below 1 what it adds to 1.
constexpr double extension_factor(double ratio) {
  return ratio >= 1 ? ratio : 1 + ratio;
}

}  // namespace vq3900

#endif
