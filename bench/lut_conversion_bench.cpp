// Two displacement grids into register words, against a plain loop and against moving the bytes.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "calib/distortion_lut/lut_grid.h"
#include "modules/lut_encoding.h"
#include "modules/rectify_lut.h"
#include "support/growth.h"

namespace {

constexpr std::uint32_t kTile = 4;
constexpr std::uint32_t kSampleBits = 3;
constexpr std::uint32_t kBlock = 0x52000000;

struct Grids {
  Grids(std::int64_t across, std::int64_t down)
      : width(static_cast<std::uint32_t>(across)), height(static_cast<std::uint32_t>(down)), dx(samples()), dy(dx) {
    // A barrel distortion, as smooth as what is converted.
    std::size_t at = 0;
    for (std::int64_t row = 0; row < down; ++row) {
      const double y = static_cast<double>(row) / static_cast<double>(down) - 0.52;
      for (std::int64_t column = 0; column < across; ++column, ++at) {
        const double x = static_cast<double>(column) / static_cast<double>(across) - 0.49;
        dx[at] = -0.28 * x * (x * x + y * y);
        dy[at] = -0.28 * y * (x * x + y * y);
      }
    }
  }
  explicit Grids(const benchmark::State& state) : Grids(state.range(0), state.range(1)) {}

  std::size_t samples() const { return std::size_t{width} * height; }

  std::uint32_t width;
  std::uint32_t height;
  std::vector<double> dx;
  std::vector<double> dy;
};

// Converts both grids, of that many cameras.
void run(benchmark::State& state, Grids grids, int cameras) {
  vq3900::RectifyLut lut;
  vq3900::copy_grid(
      {0, 0, 600, 600, 320, 200, grids.width, grids.height, kSampleBits, grids.dx.data(), grids.dy.data()}, lut);
  auto table = vq3900::startup::rectify_lut_info(kBlock);
  vq3900::HeldSection dx;
  vq3900::HeldSection dy;
  dx.room.allocate(grids.samples());
  dy.room.allocate(grids.samples());
  const vq3900::LutEvents silent{[](const vq3900::FixedOverflow&) {}, [](vq3900::LutProgress) {}};
  for (auto _ : state) {
    for (int camera = 0; camera < cameras; ++camera) {
      const vq3900::LutFault fault = encode_lut(lut, kSampleBits, {table, dx, dy, kBlock}, silent);
      if (fault != vq3900::LutFault::kNone) state.SkipWithError("the grids cannot be converted");
      benchmark::ClobberMemory();
    }
  }
  lut.grid.release();
  dx.room.release();
  dy.room.release();
}

void convert(benchmark::State& state) {
  run(state, Grids{state}, 1);
}

// One path by itself, without tables and checks around it.
void convert_by_path(benchmark::State& state, vq3900::EncodeTilesFunction* encode) {
  const Grids grids{state};
  std::vector<std::uint32_t> words(grids.samples());
  const std::size_t tiles = grids.width / kTile;
  for (auto _ : state) {
    for (const std::vector<double>* const grid : {&grids.dx, &grids.dy}) {
      for (std::size_t at = 0; at < grids.samples(); at += kTile * grids.width) {
        if (encode(&(*grid)[at], grids.width, tiles, &words[at]) != tiles) state.SkipWithError("overflow");
      }
      benchmark::ClobberMemory();
    }
  }
}

// --- peers

// One rounding call a sample, tile by tile.
bool convert_plainly(const Grids& grids, const std::vector<double>& samples, std::vector<std::uint32_t>& words) {
  std::size_t at = 0;
  for (std::uint32_t tile_row = 0; tile_row < grids.height; tile_row += kTile) {
    for (std::uint32_t tile_column = 0; tile_column < grids.width; tile_column += kTile) {
      for (std::uint32_t row = tile_row; row < tile_row + kTile; ++row) {
        for (std::uint32_t column = tile_column; column < tile_column + kTile; ++column) {
          const double rounded = std::round(samples[std::size_t{row} * grids.width + column] * 16777216.0);
          if (std::fabs(rounded) >= 16777216.0) return false;
          words[at++] = static_cast<std::uint32_t>(static_cast<std::int64_t>(rounded)) & 0xFFFFFF;
        }
      }
    }
  }
  return true;
}

void convert_by_plain_loop(benchmark::State& state) {
  const Grids grids{state};
  std::vector<std::uint32_t> dx(grids.samples());
  std::vector<std::uint32_t> dy(grids.samples());
  for (auto _ : state) {
    if (!convert_plainly(grids, grids.dx, dx) || !convert_plainly(grids, grids.dy, dy)) state.SkipWithError("overflow");
    benchmark::ClobberMemory();
  }
}

// The doubles and the words, copied.
void move_bytes(benchmark::State& state) {
  const Grids grids{state};
  const std::vector<std::uint32_t> words(2 * grids.samples(), 1);
  std::vector<double> doubles_to(2 * grids.samples());
  std::vector<std::uint32_t> words_to(2 * grids.samples());
  const std::size_t bytes = grids.samples() * sizeof(double);
  for (auto _ : state) {
    std::memcpy(doubles_to.data(), grids.dx.data(), bytes);
    std::memcpy(doubles_to.data() + grids.samples(), grids.dy.data(), bytes);
    std::memcpy(words_to.data(), words.data(), words.size() * sizeof words[0]);
    benchmark::ClobberMemory();
  }
}

// Copies as many bytes as a conversion reads and writes: 6 of the 12 bytes a sample from here to there.
void move_half(benchmark::State& state) {
  const Grids grids{state};
  const std::vector<std::uint16_t> from(6 * grids.samples(), 1);
  std::vector<std::uint16_t> to(6 * grids.samples());
  for (auto _ : state) {
    std::memcpy(to.data(), from.data(), from.size() * sizeof from[0]);
    benchmark::ClobberMemory();
  }
}

// The grids of such an image.
Grids grids_of(std::int64_t width, std::int64_t height, std::int64_t sample_bits) {
  const auto samples = [sample_bits](std::int64_t pixels) {
    return vq3900::grid_axis(static_cast<int>(pixels), static_cast<int>(sample_bits), 1.0)->samples;
  };
  return {samples(width), samples(height)};
}

// How the time grows with image and step.
void convert_growth(benchmark::State& state) {
  run(state, grids_of(state.range(0), state.range(1), state.range(2)), 1);
}

// As much as the whole image converts.
void convert_image(benchmark::State& state) {
  run(state, grids_of(1280, 800, state.range(0)), 2);
}

void sizes(benchmark::internal::Benchmark* benchmark) {
  benchmark->Args({164, 104})->Args({640, 400});
}

[[maybe_unused]] const bool registered = [] {
  for (const auto& path : vq3900::encode_tiles_paths()) {
    if (!path.supported()) continue;
    const std::string name = std::string{"lut_conversion/"} + path.name;
    sizes(benchmark::RegisterBenchmark(name.c_str(), convert_by_path, path.run));
  }
  return true;
}();

BENCHMARK(convert)->Name("lut_conversion/ours")->Apply(sizes);
BENCHMARK(convert_by_plain_loop)->Name("lut_conversion/plain_loop")->Apply(sizes);
BENCHMARK(move_bytes)->Name("lut_conversion/memcpy")->Apply(sizes);
BENCHMARK(move_half)->Name("lut_conversion/bytes_moved")->Apply(sizes);
BENCHMARK(convert_image)->Name("image/conversion")->Arg(3)->Arg(4);
BENCHMARK(convert_growth)->Name("growth/lut_conversion")->Apply(vq3900::bench::growing_images);

}  // namespace
