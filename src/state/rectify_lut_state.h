// The state of the rectification block's displacement LUT: two cameras' grids, and the sections they were converted to.
#ifndef VQ3900_STATE_RECTIFY_LUT_STATE_H
#define VQ3900_STATE_RECTIFY_LUT_STATE_H

#include "vq3900_depth_engine.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "state/held_array.h"
#include "state/held_grid.h"

namespace vq3900 {

// A camera's displacement grid. The arrays are held from the setter to the conversion; the descriptor stays.
struct RectifyLut {
  RectifyLutInfo info{};  // its two pointers are always null
  HeldGrid grid;
  bool map_set = false;  // a grid was given; never cleared by the block itself
};

// Displacements of one grid as register words, from the conversion until they are handed out.
struct HeldSection {
  std::uint32_t address = 0;
  std::uint32_t count = 0;
  HeldArray<std::uint32_t> room;  // held from the preparation on
  std::size_t encoded = 0;        // so many words of it were written; those behind them count as 0

  std::span<const std::uint32_t> words() const { return room.span().first(encoded); }
};

struct RectifyLutState {
  std::array<RectifyLut, 2> camera{};
  std::uint32_t length = 0;               // samples of the grid given last, of either camera
  std::array<HeldSection, 4> sections{};  // A, B: camera 1's dx and dy; C, D: camera 0's
};

}  // namespace vq3900

#endif
