// The rectification block's map setter for grids that the library itself has made.
#ifndef VQ3900_MODULES_RECTIFY_MAP_API_H
#define VQ3900_MODULES_RECTIFY_MAP_API_H

#include "vq3900_depth_engine.h"

#include <cstdint>

#include "state/held_grid.h"

namespace vq3900 {

// As set_rectify_params_map does, but holds the grid's arrays with their owner where that copies them.
std::int32_t keep_rectify_params_map(std::uint32_t cam_id, const RectifyIntrinsic& new_intrinsic,
                                     const RectifyLutInfo& lut, const float* rotation, const float* intrinsic,
                                     GridOwner owner);

}  // namespace vq3900

#endif
