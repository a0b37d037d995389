// What the importers share: places for messages, numbers, and checks of cameras and poses.
#ifndef VQ3900_TOOLS_CALIB_CALIB_VALUES_H
#define VQ3900_TOOLS_CALIB_CALIB_VALUES_H

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include "calib/calib_import.h"

namespace vq3900::tool {

// A calibration file in memory.
struct CalibrationText {
  std::string path;
  std::string text;
};

// Where a value stands, for messages.
struct Place {
  std::string file;
  std::size_t line = 0;  // 0: not known
  std::string key;       // may be empty

  [[noreturn]] void fail(const std::string& what) const;
};

// One finite number that is all of the text.
double number_at(const Place& place, std::string_view text);

// Fails unless there are as many values as that, which go by the name: "9 numbers".
void require_count(const Place& place, std::size_t count, std::size_t expected);

// 1 to 65535 whole pixels.
std::int32_t pixels_at(const Place& place, double value);

// Focal lengths above 0 and a finite principal point.
void set_pinhole(const Place& place, double fx, double fy, double cx, double cy, CalibratedCamera& camera);

// The same from a row-major 3x3 camera matrix without skew.
void set_camera_matrix(const Place& place, std::span<const double> matrix, CalibratedCamera& camera);

// Distortion in the order k1, k2, p1, p2, k3, k4, k5, k6, or k1 to k4 of an equidistant lens, into the library's order.
// Thin-prism and tilt coefficients may be there as long as they are 0.
void set_distortion(const Place& place, LensModel model, std::span<const double> values, CalibratedCamera& camera);

// Nine numbers that are a rotation up to rounding.
Matrix3 rotation_at(const Place& place, std::span<const double> values);

// Three numbers in a unit of that many millimetres become millimetres.
Vector3 millimetres_at(const Place& place, std::span<const double> values, double unit = kMillimetresInMetre);

// --- the readers of the single formats

StereoCalibration read_kalibr(const CalibrationText& file);
StereoCalibration read_kitti(const CalibrationText& file);
StereoCalibration read_file_storage(std::span<const CalibrationText> files, const ImageSize& size, double unit);

}  // namespace vq3900::tool

#endif
