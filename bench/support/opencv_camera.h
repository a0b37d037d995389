// A camera's distortion as OpenCV takes it.
#ifndef VQ3900_BENCH_SUPPORT_OPENCV_CAMERA_H
#define VQ3900_BENCH_SUPPORT_OPENCV_CAMERA_H

#include <opencv2/core.hpp>

namespace vq3900::bench {

// From the order k1, k2, k3, k4, k5, k6, p1, p2.
inline cv::Vec<double, 8> opencv_coefficients(const float* d) {
  return cv::Vec<float, 8>{d[0], d[1], d[6], d[7], d[2], d[3], d[4], d[5]};
}

}  // namespace vq3900::bench

#endif
