#include <fmt/format.h>

#include <cstdint>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <span>
#include <string>

#include "calib/calib_import.h"
#include "calib/calib_plot.h"
#include "calib/calib_report.h"
#include "calib/calib_run.h"
#include "commands.h"
#include "json_output.h"
#include "platform/file.h"
#include "tool.h"

namespace vq3900::tool {

namespace {

// The name of a file without its folders.
std::string base_name(const std::string& path) {
  const std::size_t slash = path.find_last_of("/\\");
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

bool write_text(const std::string& path, const std::string& text) {
  OutputFile file(path.c_str());
  std::vector<std::uint8_t> bytes(text.begin(), text.end());
  return file.is_open() && file.write(bytes);
}

int report_failure(const std::string& config_path, const CalibrationRun& run) {
  fmt::print(stderr, "{}", run.library_output);
  if (!run.library_output.empty() && run.library_output.back() != '\n') fmt::print(stderr, "\n");
  const std::string hint = calibration_hint(run);
  fmt::print(stderr,
             "vq3900-tool: {}: {} failed with code {}{}{}\n",
             config_path,
             run.step,
             run.code,
             hint.empty() ? "" : "; ",
             hint);
  return kFailed;
}

void print_run(const CalibApplyInput& input, const StereoCalibration& calibration, const CalibrationRun& run) {
  if (input.json) {
    nlohmann::ordered_json report{{"calibration", calibration_json(input.calibration, calibration)},
                                  {"config", input.config}};
    report.update(run_json(run));
    if (input.registers && run.good()) report["blocks"] = run_registers_json();
    print_json(report);
  } else if (run.good()) {
    fmt::print("{} with {}\n\n{}", input.calibration, input.config, run_text(run));
    if (input.registers) fmt::print("{}", run_registers_text());
  }
}

}  // namespace

int calib_show_command(const std::string& calibration_paths, const ImportOptions& options, bool json) {
  const StereoCalibration calibration = import_calibration(calibration_paths, options);
  if (json) {
    print_json(calibration_json(calibration_paths, calibration));
  } else {
    fmt::print("{}", calibration_text(calibration_paths, calibration));
  }
  return kDone;
}

int calib_apply_command(const CalibApplyInput& input) {
  const StereoCalibration calibration = import_calibration(input.calibration, input.options);
  const CalibrationRun run = run_calibration(calibration, input.config, input.temperatures);
  print_run(input, calibration, run);
  if (!run.good()) return report_failure(input.config, run);
  if (input.plot.empty()) return kDone;
  if (!write_text(input.plot, calibration_plot(base_name(input.calibration), run))) {
    fmt::print(stderr, "vq3900-tool: {}: cannot be written\n", input.plot);
    return kFailed;
  }
  return kDone;
}

}  // namespace vq3900::tool
