// Stereo rectification: turning two cameras so that a point of space lies in the same row of both, and the intrinsics
// of the virtual pair. Pure functions in double precision; docs/conventions.md has frames and signs.
#ifndef VQ3900_CALIB_STEREO_RECTIFICATION_H
#define VQ3900_CALIB_STEREO_RECTIFICATION_H

#include <optional>

#include "calib/distortion_model.h"
#include "calib/rotation.h"

namespace vq3900 {

// An unrectified camera.
struct CameraView {
  double width;
  double height;
  double fx;
  double fy;
  double cx;
  double cy;
  DistortionModel model;
};

// The turns of the left (reference) and the right camera: X_rectified = rotation * X_camera.
struct RectifyingRotations {
  Matrix3 left;
  Matrix3 right;
};

// From the pose X_right = rotation * X_left + translation. The rotation is first brought to the nearest one; nothing
// when there is none.
std::optional<RectifyingRotations> rectifying_rotations(const Matrix3& rotation, const Vector3& translation);

// The virtual cameras' common focal length and principal point, in pixels, before any scaling.
struct VirtualPinhole {
  double focal;
  double cx;
  double cy;
};

// Nothing when an image corner cannot be undistorted or comes to lie behind the virtual image plane.
std::optional<VirtualPinhole> virtual_pinhole(const CameraView& left, const CameraView& right,
                                              const RectifyingRotations& rotations);

}  // namespace vq3900

#endif
