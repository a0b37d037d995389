// How large the caller's memory for a calibration image must be.
#include <exception>
#include <new>

#include "flash/calib_steps_api.h"
#include "flash/image_build_api.h"
#include "regs/steps.h"

namespace {

using vq3900::BuildLog;

// Not the builder's words: a reader of the log can tell the two apart.
constexpr vq3900::CalibWording kWording{
    {"error: load_input_configs, config_num=%d, error code=%d\n"},
    {"error: set_calibrate_params_multi for config number= %d, error code=%d\n",
     nullptr,
     "success: set_calibrate_params_multi for config number= %d\n",
     "success: set_calibrate_params_multi successful\n"},
    {"error: align_ir_ir_rgb_params_to_register_converter for config number= %d, error code=%d\n",
     nullptr,
     "success: align_ir_ir_rgb_params_to_register_converter for config number= %d\n",
     "success: align_ir_ir_rgb_params_to_register_converter successful\n"},
};

// Derives every configuration and collects the LUTs.
int32_t collect_luts(const CalibFlashInput_S& input, const BuildLog& log, vq3900::LutFile& luts) {
  if (const int32_t code = vq3900::check_calibrations(input, log); code != VQ3900_OK) return code;
  for (std::size_t i = 0; i < input.config_file_num; ++i) {
    vq3900::ConvertedCalibration converted;
    const int32_t code =
        vq3900::run_steps([&] { return vq3900::convert_calibration(input, i, kWording, log, converted); },
                          [&] {
                            if (!get_lut_enable_status()) return VQ3900_OK;
                            return vq3900::add_lut(vq3900::digested_rectify(converted).record, luts, log);
                          });
    if (code != VQ3900_OK) return code;
  }
  return VQ3900_OK;
}

}  // namespace

void get_file_buffer_size(const CalibFlashInput_S* input, uint32_t* size) {
  if (input != nullptr && size != nullptr) *size = static_cast<uint32_t>(vq3900::calib_image_size(*input));
}

void get_lut_section_buffer_size(const CalibFlashInput_S* input, uint32_t* size, DeLogCallback* callback) {
  if (input == nullptr || size == nullptr) return;
  vq3900::CallerCallback caller{callback};
  try {
    vq3900::LutFile luts;
    if (collect_luts(*input, BuildLog{caller}, luts) == VQ3900_OK) *size = static_cast<uint32_t>(luts.size());
  } catch (const std::bad_alloc&) {  // the size stays as it was
    if (caller.threw()) throw;
  }
}
