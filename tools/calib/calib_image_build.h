// Calibrations and their configurations through the library into a calibration image, all in memory.
#ifndef VQ3900_TOOLS_CALIB_CALIB_IMAGE_BUILD_H
#define VQ3900_TOOLS_CALIB_CALIB_IMAGE_BUILD_H

#include "vq3900_depth_engine.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "calib/calib_run.h"
#include "calib/stereo_calibration.h"

namespace vq3900::tool {

struct CalibImageParts {
  std::vector<std::string> configs;             // files
  std::vector<StereoCalibration> calibrations;  // one a configuration
  CalibrationTemperatures temperatures;
  std::array<std::uint64_t, 3> serial_number{};
  std::int64_t timestamp = 0;
  std::vector<DeAlignRecord_S> alignment;
};

struct CalibImageBuild {
  std::int32_t code = 0;
  std::vector<std::uint8_t> main;
  std::vector<std::uint8_t> luts;  // empty when no configuration wants a LUT
  std::vector<std::uint8_t> factory;
  std::size_t last_config = 0;  // that was worked on
  std::string library_output;   // what the library printed to either stream
};

CalibImageBuild build_calib_image(const CalibImageParts& parts);

}  // namespace vq3900::tool

#endif
