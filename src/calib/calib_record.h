// The calibration record of one configuration, as callers keep it, turned into the calibration that is converted.
#ifndef VQ3900_CALIB_CALIB_RECORD_H
#define VQ3900_CALIB_CALIB_RECORD_H

#include "vq3900_depth_engine.h"

#include <cstdint>

namespace vq3900 {

// 0; -2 and nothing stored for a null record, IR sizes that truncate outside 1 to 65535, focal lengths of an IR camera
// that are not finite and positive, and poses that are not finite.
std::int32_t set_calibrate_params_multi(const DeCalibRecord_S* record, CalibrateParamsMulti& calib);

}  // namespace vq3900

#endif
