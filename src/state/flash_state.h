// What accompanies the calibration images made from now on.
#ifndef VQ3900_STATE_FLASH_STATE_H
#define VQ3900_STATE_FLASH_STATE_H

#include "vq3900_depth_engine.h"

#include <array>
#include <cstdint>

#include "state/held_array.h"

namespace vq3900 {

struct FlashState {
  std::array<std::uint64_t, 3> serial_number{};  // of every section header
  HeldArray<DeAlignRecord_S> alignment_records;
};

}  // namespace vq3900

#endif
