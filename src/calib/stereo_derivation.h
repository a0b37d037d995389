// From a calibration and the calibration input configuration to the rectification and D2C records.
#ifndef VQ3900_CALIB_STEREO_DERIVATION_H
#define VQ3900_CALIB_STEREO_DERIVATION_H

#include "vq3900_depth_engine.h"

#include <cstdint>
#include <optional>

#include "calib/stereo_rectification.h"
#include "state/calib_input_state.h"

namespace vq3900 {

// Scales and chops both IR cameras as the configuration says, in single precision.
void scale_and_chop(const CalibInputConfig& config, CalibrateParamsMulti& calib);

// Whether the calibration can be derived from: finite rotations, translations and intrinsics, those of the colour
// camera where it is wanted; IR cameras with focal lengths above 0 and images of 1 to 65535 pixels a side.
bool is_derivable(const CalibrateParamsMulti& calib, bool with_color = true);

// The baseline of the translation: its length, in single precision, with the sign of its largest component (the first
// of equal ones).
float signed_baseline(const float (&translation)[3]);

// Whether the configured baseline points the other way than the calibrated one.
bool baseline_sign_differs(float configured, const float (&translation)[3]);

CameraView camera_view(const DeCalibCamera_S& camera, std::int32_t distortion_model);

// The rectification of both cameras, but for temperatures and coefficients. Nothing when it cannot be derived or a size
// does not fit 1 to 65535.
struct Rectification {
  DeStereoRectifyParams_S record{};
  Matrix3 left_rotation;
};
std::optional<Rectification> derive_rectification(const CalibrateParamsMulti& calib, const CalibInputConfig& config);

// Depth, valid-area and colour intrinsics and the pose from the rectified reference camera to the colour camera.
// Nothing when a clipped size does not fit 0 to 65535.
std::optional<DeCameraD2CParams_S> derive_d2c(const CalibrateParamsMulti& calib, const CalibInputConfig& config,
                                              const Rectification& rectification);

}  // namespace vq3900

#endif
