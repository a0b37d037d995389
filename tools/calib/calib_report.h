// A calibration, and what the library made of one, as text for people and as JSON for programs.
#ifndef VQ3900_TOOLS_CALIB_CALIB_REPORT_H
#define VQ3900_TOOLS_CALIB_CALIB_REPORT_H

#include <nlohmann/json.hpp>
#include <span>
#include <string>

#include "calib/calib_run.h"

namespace vq3900::tool {

std::string calibration_text(const std::string& path, const StereoCalibration& calibration);
nlohmann::ordered_json calibration_json(const std::string& path, const StereoCalibration& calibration);

std::string run_text(const CalibrationRun& run);
nlohmann::ordered_json run_json(const CalibrationRun& run);

// The tables that a calibration sets.
std::string run_registers_text();
nlohmann::ordered_json run_registers_json();

// --- for both kinds of reports

// The names of a lens model's coefficients in the library's order, as many as it has.
std::span<const char* const> coefficient_names(LensModel model);

// Three rows of three or one row of three, each line indented by that many blanks.
std::string rotation_text(std::span<const double> matrix, int indent);

}  // namespace vq3900::tool

#endif
