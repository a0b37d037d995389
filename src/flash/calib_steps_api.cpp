#include "flash/calib_steps_api.h"

#include <string>
#include <string_view>

#include "calib/calib_record.h"
#include "platform/diagnostics.h"
#include "platform/file.h"
#include "regs/steps.h"

namespace vq3900 {

namespace {

constexpr std::int32_t kNumbersDiffer = -6;

std::string numbered(std::string_view text, std::size_t number, std::int32_t code) {
  std::string result;
  std::string next = std::to_string(number);
  for (std::size_t at = text.find("%d"); at != std::string_view::npos; at = text.find("%d")) {
    result.append(text.substr(0, at)).append(next);
    next = std::to_string(code);
    text.remove_prefix(at + 2);
  }
  return result.append(text);
}

std::int32_t report(const StepWording& wording, std::size_t number, std::int32_t code, const BuildLog& log) {
  const char* const printed = code == VQ3900_OK ? wording.done : wording.failed;
  const char* const passed = code == VQ3900_OK ? wording.done_passed : wording.failed_passed;
  if (printed != nullptr) put_out(numbered(printed, number, code));
  if (passed != nullptr) log.pass(passed);
  return code;
}

// An entry that names a file is loaded as one, any other is a text itself.
std::int32_t load(const char* entry, const BuildLog& log) {
  if (is_readable(entry)) {
    log.say("input config params is file path\n");
    return load_input_configs_path(entry);
  }
  log.say("input config params is file content\n");
  return load_input_configs_content(entry);
}

}  // namespace

std::int32_t check_calibrations(const CalibFlashInput_S& input, const BuildLog& log) {
  if (input.config_file_num != input.calib_record_num) {
    log.say("error: calib params nums not match the config file num\n");
    return kNumbersDiffer;
  }
  const bool none = input.config_file_num == 0;
  return none || (input.config_files != nullptr && input.calib_records != nullptr) ? VQ3900_OK : VQ3900_ERROR_ARGUMENT;
}

std::int32_t convert_calibration(const CalibFlashInput_S& input, std::size_t number, const CalibWording& wording,
                                 const BuildLog& log, ConvertedCalibration& converted) {
  CalibrateParamsMulti calib{};
  return run_steps([&] { return report(wording.load, number, load(input.config_files[number], log), log); },
                   [&] {
                     const std::int32_t code = set_calibrate_params_multi(input.calib_records[number], calib);
                     return report(wording.set, number, code, log);
                   },
                   [&] {
                     const std::int32_t code = align_ir_ir_rgb_params_to_register_converter(
                         calib, &converted.rect, &converted.d2c, &converted.depth, log.callback());
                     return report(wording.convert, number, code, log);
                   });
}

}  // namespace vq3900
