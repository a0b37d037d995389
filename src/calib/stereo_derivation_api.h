// The stereo derivation with what it prints and keeps.
#ifndef VQ3900_CALIB_STEREO_DERIVATION_API_H
#define VQ3900_CALIB_STEREO_DERIVATION_API_H

#include "vq3900_depth_engine.h"

#include <array>
#include <cstdint>

#include "calib/undistortion_lut_api.h"

namespace vq3900 {

// The LUTs of camera 0 and camera 1; empty while the configuration wants none.
using CameraLuts = std::array<UndistortionLut, 2>;

// Derives rectification, LUTs and, unless it is null, the D2C record from a calibration that is scaled and chopped. The
// configuration's baseline becomes the calibrated one. 0; -2 when the calibration cannot be derived from, or its
// baseline points the other way than the configured one; -3 when a LUT cannot be generated.
std::int32_t parse_rectify_d2c_params_from_stereo_with_rgb_calib_params(const CalibrateParamsMulti& calib,
                                                                        DeStereoRectifyParams_S* rect,
                                                                        DeCameraD2CParams_S* d2c, CameraLuts& luts);

}  // namespace vq3900

#endif
