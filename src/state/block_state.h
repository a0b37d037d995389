// The parameter state of the hardware blocks, where it is more than the block's public record.
#ifndef VQ3900_STATE_BLOCK_STATE_H
#define VQ3900_STATE_BLOCK_STATE_H

#include "vq3900_depth_engine.h"

#include <array>
#include <cstdint>

namespace vq3900 {

struct D2cState {
  D2cConfig config{};
  std::array<double, 12> w{};  // projection W0 to W11, 3x4 row-major
};

struct PrefilterState {
  DePrefilterParams_S params{};
  std::uint16_t image_width = 0;
  std::uint16_t image_height = 0;
};

struct ExtendChopState {
  DeExtendChopParams_S params{};
  std::uint16_t extended_width = 0;
  std::uint16_t extended_height = 0;
};

struct GpmState {
  DeGpmParams_S params{};
  DeGpStatusParams_S status{};
};

}  // namespace vq3900

#endif
