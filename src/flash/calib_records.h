// The records of one configuration for the calibration image, made of what the calibration's conversion gave.
#ifndef VQ3900_FLASH_CALIB_RECORDS_H
#define VQ3900_FLASH_CALIB_RECORDS_H

#include "vq3900_depth_engine.h"

#include <cstdint>

#include "flash/calib_image.h"
#include "state/calib_input_state.h"
#include "state/rectify_lut_state.h"
#include "state/register_tables.h"

namespace vq3900 {

// What a calibration was converted to; zero where the converter gives nothing.
struct ConvertedCalibration {
  DeStereoRectifyParams_S rect{};
  DeCameraD2CParams_S d2c{};
  DepthCalcParams_S depth{};
};

// The records are without their digests.
RectifyRecord rectify_record(const ConvertedCalibration& converted, const CalibInputConfig& config,
                             const RegisterTables& tables);
D2cRecord d2c_record(const ConvertedCalibration& converted, const CalibInputConfig& config,
                     const RegisterTables& tables);
D2dRecord d2d_record(const ConvertedCalibration& converted, const CalibInputConfig& config,
                     const RegisterTables& tables);
LutDirectoryRecord lut_directory_record(const RectifyRecord& rectify, const RectifyLutState& luts,
                                        const RegisterTables& tables, std::uint32_t sections);
LutDataHeader lut_data_header(const LutDirectoryRecord& directory, std::uint32_t sections, std::uint32_t words);

// How many LUT sections a configuration stores: 4 or 2, or 0 when none are prepared.
std::uint32_t stored_sections(const CalibInputConfig& config, const RectifyLutState& luts);

// Whether a camera's image size goes into the factory record, which leaves it zero otherwise.
bool has_image_size(const DeCalibRecordCamera_S& camera);
FactoryRecord factory_record(const DeCalibRecord_S& calib, const CalibInputConfig& config);

}  // namespace vq3900

#endif
