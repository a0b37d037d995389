// Calibrations of stereo rigs from the files that calibration tools write:
//
// - a Kalibr camchain (YAML): cam0 left, cam1 right, cam2 colour if there is one;
// - a KITTI calib_cam_to_cam text: cameras 00 left, 01 right, 02 colour if it is there, unrectified;
// - OpenCV FileStorage YAML: M1, D1, M2, D2, R, T in one file or spread over two, without image sizes; lengths in
//   metres unless
//   the options say otherwise.
//
// The contents say which it is. Nothing in a file is trusted: whatever is wrong ends in a CalibrationError.
#ifndef VQ3900_TOOLS_CALIB_CALIB_IMPORT_H
#define VQ3900_TOOLS_CALIB_CALIB_IMPORT_H

#include <optional>
#include <stdexcept>
#include <string>

#include "calib/stereo_calibration.h"

namespace vq3900::tool {

// "FILE: line 3: cam0.intrinsics: ..." - one line, with line and key as far as they are known.
class CalibrationError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// What a file may leave open.
struct ImportOptions {
  std::optional<ImageSize> size;  // of both IR images, for files without one
  std::optional<double> unit;     // millimetres in the file's unit of length, for files that do not fix it
};

inline constexpr double kMillimetresInMetre = 1000;

// Reads a calibration from "FILE" or "FILE,FILE".
StereoCalibration import_calibration(const std::string& paths, const ImportOptions& options = {});

}  // namespace vq3900::tool

#endif
