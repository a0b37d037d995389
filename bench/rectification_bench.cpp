// Stereo rectification from a calibration, without a LUT. OpenCV's finds the valid regions of both images as well.
#include <benchmark/benchmark.h>

#include <opencv2/calib3d.hpp>

#include "calib/calib_record.h"
#include "calib/stereo_derivation.h"
#include "support/opencv_camera.h"
#include "support/rig.h"

namespace {

constexpr vq3900::bench::ImageSize kSize{1280, 800};

CalibrateParamsMulti calibration() {
  const DeCalibRecord_S record = vq3900::bench::record_of(kSize);
  CalibrateParamsMulti calib{};
  vq3900::set_calibrate_params_multi(&record, calib);
  return calib;
}

void derive(benchmark::State& state) {
  const CalibrateParamsMulti calib = calibration();
  vq3900::CalibInputConfig config;
  config.src_img_scale = 1;
  config.dst_focal_scale = 1;
  for (auto _ : state) {
    const auto rectification = vq3900::derive_rectification(calib, config);
    if (!rectification) state.SkipWithError("the rig cannot be rectified");
    benchmark::DoNotOptimize(rectification);
  }
}

struct OpencvCamera {
  explicit OpencvCamera(const DeCalibCamera_S& camera)
      : matrix(cv::Matx33f{camera.fx, 0, camera.cx, 0, camera.fy, camera.cy, 0, 0, 1}),
        coefficients(vq3900::bench::opencv_coefficients(camera.distortion)) {}

  cv::Matx33d matrix;
  cv::Vec<double, 8> coefficients;
};

void derive_by_opencv(benchmark::State& state) {
  const CalibrateParamsMulti calib = calibration();
  const OpencvCamera left{calib.left_ir};
  const OpencvCamera right{calib.right_ir};
  const cv::Matx33d rotation = cv::Matx33f{calib.ir_rotation};
  const cv::Vec3d translation = cv::Vec3f{calib.ir_translation};
  cv::setNumThreads(1);
  cv::Mat r1, r2, p1, p2, q;
  for (auto _ : state) {
    cv::stereoRectify(left.matrix,
                      left.coefficients,
                      right.matrix,
                      right.coefficients,
                      {kSize.width, kSize.height},
                      rotation,
                      translation,
                      r1,
                      r2,
                      p1,
                      p2,
                      q);
    benchmark::ClobberMemory();
  }
}

BENCHMARK(derive)->Name("rectification/ours");
BENCHMARK(derive_by_opencv)->Name("rectification/opencv");

}  // namespace
