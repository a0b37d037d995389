// Handing a derived calibration to the setters of the modules.
#ifndef VQ3900_CALIB_MODULE_SETTINGS_API_H
#define VQ3900_CALIB_MODULE_SETTINGS_API_H

#include "vq3900_depth_engine.h"

#include <cstdint>

#include "calib/stereo_derivation_api.h"

namespace vq3900 {

// Sets camera mode, depth constants, rectification and, unless it is null, the projection into the colour camera.
// Corrections of an earlier calibration are dropped before; camera 0 is set in stereo mode (1) alone. The LUTs are held
// with their generators until they are converted. 0, or the code of the first setter that refused.
std::int32_t set_rectify_d2c_params(std::int32_t camera_mode, const DeStereoRectifyParams_S& rect,
                                    const DeCameraD2CParams_S* d2c, CameraLuts luts, const DepthCalcParams_S& depth);

}  // namespace vq3900

#endif
