// A displacement d is encoded as the integer nearest to d 2^24, halves away from zero. Without a call of round():
//     trunc(v + copysign(h, v)),   h = 0.5 - 2^-54, the number before 0.5
// The sum is rounded to the nearest double. For a fraction of exactly one half that is the next integer, for any
// smaller one it stays below; 0.5 itself would take 0.5 - 2^-54 up to 1.
//
// encode_fixed takes every rounded number from -2^24 to 2^24 - 1, whatever the sign means to the device. Of these and
// no others the sum with 2^24 fits 25 bits, and the field is the low 24.
#include "modules/lut_encoding.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace vq3900 {

namespace {

constexpr CodePath<EncodeTilesFunction> kPaths[] = {
#if defined(VQ3900_X86_64_WIDE)
    {"avx2", cpu_has_avx2, encode_tiles_avx2},
#endif
#if defined(VQ3900_X86_64)
    {"sse2", always_supported, encode_tiles_sse2},
#endif
    {"portable", always_supported, encode_tiles_portable},
};

EncodeTilesFunction* fastest() {
  return std::ranges::find_if(kPaths, [](const auto& path) { return path.supported(); })->run;
}

// A tile with an overflow: the number of the sample.
std::size_t encode_up_to_overflow(const double* rows, std::size_t stride, const char* name, std::uint32_t* words,
                                  OverflowHandler on_overflow) {
  for (std::size_t i = 0; i < kLutTileWords; ++i) {
    const double value = rows[i / kLutTile * stride + i % kLutTile];
    const std::uint32_t word = encode_fixed(value, {24, 24, name}, on_overflow);
    if (word == kOverflowed) return i;
    words[i] = word;
  }
  return kLutTileWords;
}

}  // namespace

std::span<const CodePath<EncodeTilesFunction>> encode_tiles_paths() {
  return kPaths;
}

std::size_t encode_tiles(const double* grid, LutGridSize size, const char* name, std::uint32_t* words,
                         OverflowHandler on_overflow) {
  EncodeTilesFunction* const encode = fastest();
  const std::size_t tiles = size.width / kLutTile;
  std::size_t written = 0;
  for (std::size_t row = 0; row < size.height; row += kLutTile, grid += kLutTile * size.width) {
    const std::size_t encoded = encode(grid, size.width, tiles, words + written);
    written += encoded * kLutTileWords;
    if (encoded == tiles) continue;
    const double* const overflowing = grid + encoded * kLutTile;
    return written + encode_up_to_overflow(overflowing, size.width, name, words + written, on_overflow);
  }
  return written;
}

std::size_t encode_tiles_portable(const double* rows, std::size_t stride, std::size_t tiles, std::uint32_t* words) {
  constexpr double kLimit = 2 * kLutScale;  // for the conversion to an integer; NaN is not below it either
  for (std::size_t tile = 0; tile < tiles; ++tile, rows += kLutTile, words += kLutTileWords) {
    std::array<std::uint32_t, kLutTileWords> rounded{};
    std::uint32_t reached = 0;
    for (std::size_t i = 0; i < kLutTileWords; ++i) {
      const double scaled = rows[i / kLutTile * stride + i % kLutTile] * kLutScale;
      const double taken = std::fabs(scaled) < kLimit ? scaled : kLimit;
      rounded[i] = static_cast<std::uint32_t>(static_cast<std::int32_t>(taken + std::copysign(kBelowHalf, taken)));
      reached |= rounded[i] + (kLutFieldMask + 1);
    }
    if (reached >> 25 != 0) return tile;
    for (std::size_t i = 0; i < kLutTileWords; ++i)
      words[i] = rounded[i] & kLutFieldMask;
  }
  return tiles;
}

}  // namespace vq3900
