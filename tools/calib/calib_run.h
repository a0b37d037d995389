// The way of a calibration through the library: load the calibration input configuration, convert, collect the results.
#ifndef VQ3900_TOOLS_CALIB_CALIB_RUN_H
#define VQ3900_TOOLS_CALIB_CALIB_RUN_H

#include "vq3900_depth_engine.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "calib/stereo_calibration.h"

namespace vq3900::tool {

// Temperatures at calibration: left and right IR camera, laser.
struct CalibrationTemperatures {
  float left = 0;
  float right = 0;
  float ldm = 0;
};

// A camera's displacement grid as it came out of the library's registers.
struct LutGrid {
  RectifyLutInfo info{};   // without its arrays
  std::vector<double> dx;  // focal lengths, row-major; empty without a LUT
  std::vector<double> dy;
};

struct CalibrationRun {
  std::string step;  // the one that failed; empty when none did
  std::int32_t code = 0;
  std::vector<std::string> log;  // what the log callback received
  std::string library_output;    // what the library printed to either stream
  CalibrateParamsMulti calibration{};
  CalibrationTemperatures temperatures;
  DeStereoRectifyParams_S rectification{};
  DeCameraD2CParams_S d2c{};
  DepthCalcParams_S depth{};
  std::array<LutGrid, 2> luts;  // camera 0, camera 1
  bool unit_in_rotation = false;

  bool good() const { return step.empty(); }
  bool has_lut() const { return !luts[1].dx.empty(); }
};

CalibrationRun run_calibration(const StereoCalibration& calibration, const std::string& config_path,
                               const CalibrationTemperatures& temperatures);

// What can be done about a failure; empty when nothing is known.
std::string calibration_hint(const CalibrationRun& run);

}  // namespace vq3900::tool

#endif
