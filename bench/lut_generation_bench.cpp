// Sampling a camera's distortion, against the undistortion maps of OpenCV with as many samples, one thread each.
#include "vq3900_distortion_lut.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <opencv2/calib3d.hpp>
#include <string>
#include <vector>

#include "calib/distortion_lut/displacement_row.h"
#include "calib/distortion_model.h"
#include "support/growth.h"
#include "support/opencv_camera.h"
#include "support/rig.h"

namespace {

using vq3900::bench::kDistortion;

constexpr int kSampleBits = 3;
constexpr int kWidth = 1280;
constexpr int kHeight = 800;
constexpr float kFocal = 794;
constexpr float kCx = 643.5F;
constexpr float kCy = 396.5F;
const cv::Size kGrid{164, 104};  // what the library samples of such an image

constexpr std::array<float, 4> kFisheye{-0.013F, 0.021F, -0.018F, 0.0045F};

template <typename Model, std::size_t Count>
void configure(Model& model, const std::array<float, Count>& coefficients, int width, int height, int sample_bits) {
  model.SetLutConfigParams(sample_bits, 0, 0, true);
  model.SetImageSize(width, height);
  model.SetCameraIntrinsics(kFocal, kFocal, kCx, kCy);
  model.SetDistortionCoeffs(coefficients.data(), static_cast<int>(coefficients.size()));
}

template <typename Model>
void run(benchmark::State& state, Model& model) {
  SampledDistoLUT_s lut{};
  for (auto _ : state) {
    if (model.Generate() != 0) state.SkipWithError("the grid cannot be generated");
    benchmark::ClobberMemory();
  }
  if (model.GetDistortionLut(&lut) != 0) return;
  state.counters["samples"] = static_cast<double>(lut.grid_width) * lut.grid_height;
}

void brown(benchmark::State& state) {
  BrownModelLUT model;
  configure(model, kDistortion, kWidth, kHeight, kSampleBits);
  run(state, model);
}

void equidistant(benchmark::State& state) {
  EquiModelLUT model;
  configure(model, kFisheye, kWidth, kHeight, kSampleBits);
  run(state, model);
}

// One path by itself: it checks its samples, and nothing is done about those that do not fit.
void sample_by_path(benchmark::State& state, vq3900::SampleRowFunction* sample, std::int32_t number,
                    std::array<float, 8> coefficients) {
  const vq3900::DistortionModel model = vq3900::make_distortion_model(number, coefficients, 0);
  std::vector<double> x(static_cast<std::size_t>(kGrid.width));
  for (std::size_t i = 0; i < x.size(); ++i)
    x[i] = (static_cast<double>(i << kSampleBits) - static_cast<double>(kCx)) / static_cast<double>(kFocal);
  std::vector<double> dx(x.size() * static_cast<std::size_t>(kGrid.height));
  std::vector<double> dy(dx.size());
  for (auto _ : state) {
    for (std::size_t row = 0; row < static_cast<std::size_t>(kGrid.height); ++row) {
      const double y =
          (static_cast<double>(row << kSampleBits) - static_cast<double>(kCy)) / static_cast<double>(kFocal);
      benchmark::DoNotOptimize(sample(model, x, y, &dx[row * x.size()], &dy[row * x.size()]));
    }
    benchmark::ClobberMemory();
  }
}

[[maybe_unused]] const bool registered = [] {
  for (const auto& path : vq3900::sample_row_paths()) {
    if (!path.supported()) continue;
    const auto add = [&path](const char* model, std::int32_t number, const auto& coefficients) {
      std::array<float, 8> all{};
      std::copy(coefficients.begin(), coefficients.end(), all.begin());
      const std::string name = std::string{"lut_generation/"} + model + "/" + path.name;
      benchmark::RegisterBenchmark(name.c_str(), sample_by_path, path.run, number, all);
    };
    add("brown", vq3900::kBrownNumber, kDistortion);
    add("equidistant", vq3900::kEquidistantNumber, kFisheye);
  }
  return true;
}();

// How the time grows with image and step.
void brown_growth(benchmark::State& state) {
  BrownModelLUT model;
  configure(model,
            kDistortion,
            static_cast<int>(state.range(0)),
            static_cast<int>(state.range(1)),
            static_cast<int>(state.range(2)));
  run(state, model);
}

// --- the same samples by OpenCV

cv::Matx33d camera_matrix(double step) {
  return {static_cast<double>(kFocal) / step,
          0,
          static_cast<double>(kCx) / step,
          0,
          static_cast<double>(kFocal) / step,
          static_cast<double>(kCy) / step,
          0,
          0,
          1};
}

template <typename Map>
void run_opencv(benchmark::State& state, Map map) {
  cv::setNumThreads(1);
  cv::Mat x;
  cv::Mat y;
  for (auto _ : state) {
    map(x, y);
    benchmark::ClobberMemory();
  }
  state.counters["samples"] = static_cast<double>(x.total());
}

void brown_by_opencv(benchmark::State& state) {
  const cv::Vec<double, 8> coefficients = vq3900::bench::opencv_coefficients(kDistortion.data());
  run_opencv(state, [&](cv::Mat& x, cv::Mat& y) {
    cv::initUndistortRectifyMap(
        camera_matrix(1), coefficients, cv::noArray(), camera_matrix(1 << kSampleBits), kGrid, CV_32FC1, x, y);
  });
}

void equidistant_by_opencv(benchmark::State& state) {
  const cv::Vec4d coefficients = cv::Vec4f{kFisheye.data()};
  run_opencv(state, [&](cv::Mat& x, cv::Mat& y) {
    cv::fisheye::initUndistortRectifyMap(
        camera_matrix(1), coefficients, cv::Matx33d::eye(), camera_matrix(1 << kSampleBits), kGrid, CV_32FC1, x, y);
  });
}

BENCHMARK(brown)->Name("lut_generation/brown/ours");
BENCHMARK(brown_by_opencv)->Name("lut_generation/brown/opencv");
BENCHMARK(equidistant)->Name("lut_generation/equidistant/ours");
BENCHMARK(equidistant_by_opencv)->Name("lut_generation/equidistant/opencv");
BENCHMARK(brown_growth)->Name("growth/lut_generation")->Apply(vq3900::bench::growing_images);

}  // namespace
