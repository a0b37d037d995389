// Displacements as the device wants them: fixed-point fields of 24 bits with 24 fraction bits, in tiles of 4x4.
#ifndef VQ3900_MODULES_LUT_ENCODING_H
#define VQ3900_MODULES_LUT_ENCODING_H

#include <cstddef>
#include <cstdint>
#include <span>

#include "modules/fixed_point.h"
#include "platform/cpu.h"

namespace vq3900 {

inline constexpr std::size_t kLutTile = 4;  // samples a side
inline constexpr std::size_t kLutTileWords = kLutTile * kLutTile;

inline constexpr double kLutScale = 16777216.0;  // 2^24
inline constexpr std::uint32_t kLutFieldMask = 0x00FFFFFF;

struct LutGridSize {
  std::size_t width;  // multiples of the tile
  std::size_t height;
};

// Encodes a row-major grid, tile row by tile row; in a tile row by row. Ends at an overflow, and tells how many words
// it has written: fewer than the grid has samples.
std::size_t encode_tiles(const double* grid, LutGridSize size, const char* name, std::uint32_t* words,
                         OverflowHandler on_overflow);

// Encodes tiles that lie side by side in four rows, each that many samples behind the one before. Ends before the first
// tile with an overflow, of which it writes nothing, and tells how many it has encoded.
using EncodeTilesFunction = std::size_t(const double* rows, std::size_t stride, std::size_t tiles,
                                        std::uint32_t* words);

// The implementations, the fastest first. The last is the portable one, which is always supported.
std::span<const CodePath<EncodeTilesFunction>> encode_tiles_paths();

EncodeTilesFunction encode_tiles_portable;

#if defined(VQ3900_X86_64)
EncodeTilesFunction encode_tiles_sse2;
#endif
#if defined(VQ3900_X86_64_WIDE)
EncodeTilesFunction encode_tiles_avx2;
#endif

}  // namespace vq3900

#endif
