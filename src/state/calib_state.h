// What accompanies a calibration: temperatures, the optimized D2D table, the result of the last derivation.
#ifndef VQ3900_STATE_CALIB_STATE_H
#define VQ3900_STATE_CALIB_STATE_H

#include "vq3900_depth_engine.h"

#include <cstdint>

#include "state/held_array.h"

namespace vq3900 {

struct CalibState {
  float left_temperature = 0;
  float right_temperature = 0;
  float ldm_temperature = 0;

  // A second table leaves the count at 0 although its entries are held.
  HeldArray<DeDepthConfig_S> optimized_d2d;
  std::int32_t optimized_d2d_count = 0;

  DeCameraIntrinsic_S virtual_intrinsic{};  // of the reference camera
};

}  // namespace vq3900

#endif
