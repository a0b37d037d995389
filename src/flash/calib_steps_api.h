// Loading, setting and converting the calibrations of an image that is built in memory, as the builder and the size
// query both do.
#ifndef VQ3900_FLASH_CALIB_STEPS_API_H
#define VQ3900_FLASH_CALIB_STEPS_API_H

#include "vq3900_depth_engine.h"

#include <cstddef>
#include <cstdint>

#include "flash/build_log_api.h"
#include "flash/calib_records.h"

namespace vq3900 {

// What is said of a step: "%d" stands for the configuration's number, then for the step's code. Null: nothing.
struct StepWording {
  const char* failed = nullptr;         // printed
  const char* failed_passed = nullptr;  // to the callback
  const char* done = nullptr;           // printed
  const char* done_passed = nullptr;    // to the callback
};

struct CalibWording {
  StepWording load;
  StepWording set;
  StepWording convert;
};

// 0; -6 when the numbers of configurations and calibration records differ, which is said; -2 for an array that is null
// but not empty.
std::int32_t check_calibrations(const CalibFlashInput_S& input, const BuildLog& log);

// Loads, sets and converts the configuration with that number: 0, or the code of the step that failed.
std::int32_t convert_calibration(const CalibFlashInput_S& input, std::size_t number, const CalibWording& wording,
                                 const BuildLog& log, ConvertedCalibration& converted);

}  // namespace vq3900

#endif
