// A whole calibration image in memory, and the digests and checksums in it. What it says goes nowhere.
#include "vq3900_depth_engine.h"
#include "vq3900_distortion_lut.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "bytes/crc32.h"
#include "bytes/md5.h"
#include "bytes/md5_gen_api.h"
#include "flash/calib_image.h"
#include "support/growth.h"
#include "support/rig.h"
#include "support/streams.h"

namespace {

using vq3900::bench::CalibImage;
using vq3900::bench::ImageSize;
using vq3900::bench::Silenced;

constexpr ImageSize kSize{1280, 800};

void build(benchmark::State& state, const ImageSize& size, int sample_bits, int configurations) {
  CalibImage image{size, sample_bits, configurations};
  std::optional<Silenced> silenced{std::in_place};
  std::vector<std::uint32_t> main(image.image_bytes() / 4);
  std::vector<std::uint8_t> lut(image.lut_bytes());
  std::int32_t code = 0;
  for (auto _ : state)
    code |= image.build(main, lut);
  silenced.reset();
  if (code != 0) state.SkipWithError("the image cannot be built");
}

void whole_image(benchmark::State& state) {
  build(state, kSize, static_cast<int>(state.range(0)), 1);
}

void image_growth(benchmark::State& state) {
  build(
      state, {static_cast<int>(state.range(0)), static_cast<int>(state.range(1))}, static_cast<int>(state.range(2)), 1);
}

void configurations_growth(benchmark::State& state) {
  build(state, kSize, 4, static_cast<int>(state.range(0)));
}

// --- the parts of one configuration

// The grids of both cameras.
void generation(benchmark::State& state) {
  BrownModelLUT model;
  const DeCalibRecordCamera_S camera = vq3900::bench::record_camera(kSize, 0);
  model.SetLutConfigParams(static_cast<int>(state.range(0)), 0, 0, true);
  model.SetImageSize(kSize.width, kSize.height);
  model.SetCameraIntrinsics(camera.fx, camera.fy, camera.cx, camera.cy);
  model.SetDistortionCoeffs(camera.distortion, 8);
  for (auto _ : state) {
    if (model.Generate() != 0 || model.Generate() != 0) state.SkipWithError("the grids cannot be generated");
    benchmark::ClobberMemory();
  }
}

// The digests of the keys, each with the lines that it prints, and the checksums of the sections.
void sum_up(std::span<const std::uint8_t> lut_file) {
  using namespace vq3900;
  for (const std::uint32_t size : {kRectifyKeySize, kD2cKeySize, kD2dKeySize, kLutDataKeySize}) {
    Md5Digest digest;
    Md5_gen(lut_file.data(), digest.data(), size);
    benchmark::DoNotOptimize(digest);
  }
  for (const CalibSection& kind : {kRectifySection, kCalibD2cSection, kCalibD2dSection, kLutDirectorySection})
    benchmark::DoNotOptimize(crc32(0, lut_file.data(), kSectionHeaderSize + kind.record_size));
  benchmark::DoNotOptimize(crc32(0, lut_file.data(), lut_file.size() - kLutDirectoryRoom));
}

void checksums(benchmark::State& state) {
  CalibImage image{kSize, static_cast<int>(state.range(0)), 1};
  const Silenced silenced;
  const std::uint32_t size = image.lut_bytes();
  if (size == 0) return state.SkipWithError("the image cannot be built");
  const std::vector<std::uint8_t> bytes(size);
  for (auto _ : state)
    sum_up(bytes);
}

BENCHMARK(whole_image)->Name("image/ours")->Arg(3)->Arg(4);
BENCHMARK(generation)->Name("image/generation")->Arg(3)->Arg(4);
BENCHMARK(checksums)->Name("image/checksums")->Arg(3)->Arg(4);
BENCHMARK(image_growth)->Name("growth/image")->Apply(vq3900::bench::growing_images);
BENCHMARK(configurations_growth)->Name("growth/configurations")->DenseRange(1, 8);

}  // namespace
