// A stereo rig's calibration as the tool keeps it, whichever file it came from: millimetres, double precision, the
// distortion in the library's own order.
#ifndef VQ3900_TOOLS_CALIB_STEREO_CALIBRATION_H
#define VQ3900_TOOLS_CALIB_STEREO_CALIBRATION_H

#include "vq3900_depth_engine.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "calib/rotation.h"

namespace vq3900::tool {

enum class LensModel : std::uint8_t { kBrown, kEquidistant };

struct ImageSize {
  std::int32_t width = 0;
  std::int32_t height = 0;
};

struct CalibratedCamera {
  ImageSize size;
  double fx = 0;  // pixels, as all four
  double fy = 0;
  double cx = 0;
  double cy = 0;
  std::array<double, 8> distortion{};  // Brown: k1 to k6, p1, p2; equidistant: k1 to k4
};

// Takes a point of the left camera's frame into another camera's: rotation * X + translation, in millimetres.
struct CameraPose {
  Matrix3 rotation;
  Vector3 translation{};
};

struct ColorCamera {
  CalibratedCamera camera;
  CameraPose pose;
};

struct StereoCalibration {
  std::string format;  // of the file: "Kalibr camchain"
  LensModel model = LensModel::kBrown;
  CalibratedCamera left;  // camera 1, the reference
  CalibratedCamera right;
  CameraPose right_pose;
  std::optional<ColorCamera> color;
};

// The records that the library takes, to convert a calibration and to build images from it.
CalibrateParamsMulti to_calibrate_params(const StereoCalibration& calibration);
DeCalibRecord_S to_calib_record(const StereoCalibration& calibration);

// The pose's length in millimetres with the sign of its largest component, as the library signs a baseline.
double signed_baseline_of(const CameraPose& pose);

// By how many degrees a rotation turns.
double degrees_of(const Matrix3& rotation);

// The second pose after the first one, and the pose from one camera to another when both are known from a third.
CameraPose chained(const CameraPose& first, const CameraPose& second);
CameraPose relative(const CameraPose& from, const CameraPose& to);

}  // namespace vq3900::tool

#endif
