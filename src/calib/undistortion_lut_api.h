// A camera's undistortion LUT from the distortion-LUT library.
#ifndef VQ3900_CALIB_UNDISTORTION_LUT_API_H
#define VQ3900_CALIB_UNDISTORTION_LUT_API_H

#include "vq3900_depth_engine.h"
#include "vq3900_distortion_lut.h"

#include <cstdint>
#include <memory>
#include <span>

#include "state/calib_input_state.h"

namespace vq3900 {

// A descriptor, and the generator that the arrays belong to.
struct UndistortionLut {
  RectifyLutInfo info{};
  std::unique_ptr<CreateDistortionLUT> generator;
};

// Generates the LUT of a camera: 0, or the library's status, whose text goes to standard error.
std::int32_t gen_undistortion_lut(std::int32_t model, const DeCameraIntrinsic_S& camera,
                                  std::span<const float, 8> distortion, double polynomial_param,
                                  const CalibInputConfig& config, UndistortionLut& out);

}  // namespace vq3900

#endif
