// The two calibration converters: from a calibration to the register settings of rectification, D2C and D2D.
#include <cmath>
#include <exception>
#include <functional>
#include <string>
#include <utility>

#include "calib/distortion_model.h"
#include "calib/module_settings_api.h"
#include "calib/step_log_api.h"
#include "calib/stereo_derivation.h"
#include "calib/stereo_derivation_api.h"
#include "config/c_locale.h"
#include "modules/fixed_point.h"
#include "modules/rectify_lut.h"
#include "platform/diagnostics.h"
#include "regs/steps.h"
#include "state/engine.h"

using vq3900::engine;
using vq3900::widen;

namespace {

constexpr int32_t kStereo = 1;

bool temperatures_valid(const vq3900::CalibState& calib) {
  return calib.left_temperature >= 1.0F && calib.right_temperature >= 1.0F && calib.ldm_temperature >= 1.0F;
}

// Zeroes the record, checks the temperatures and puts them and the coefficients into it.
int32_t start_record(DeStereoRectifyParams_S& rect) {
  rect = {};
  const vq3900::CalibState& calib = engine().calib;
  if (!temperatures_valid(calib)) {
    vq3900::print_out("invalid calibration temperature,left:%s,right:%s,ldm:%s",
                      vq3900::fixed_text(calib.left_temperature).c_str(),
                      vq3900::fixed_text(calib.right_temperature).c_str(),
                      vq3900::fixed_text(calib.ldm_temperature).c_str());
    return VQ3900_ERROR_ARGUMENT;
  }
  const vq3900::CalibInputConfig& config = engine().calib_input;
  rect.left_temperature = calib.left_temperature;
  rect.right_temperature = calib.right_temperature;
  rect.ldm_temperature = calib.ldm_temperature;
  rect.left_comp_coeff = config.ir_l_comp_coeff;
  rect.right_comp_coeff = config.ir_r_comp_coeff;
  rect.ldm_comp_coeff = config.ldm_comp_coeff;
  return VQ3900_OK;
}

void fill_depth(const DeStereoRectifyParams_S& rect, DepthCalcParams_S& depth) {
  vq3900::CalibInputConfig& config = engine().calib_input;
  if (std::fabs(widen(config.d2d_params_unit)) < 1e-5) config.d2d_params_unit = 1.0F;
  const float unit = config.d2d_params_unit;
  depth.depth_mode = config.depth_mode;
  depth.baseline = config.baseline / unit;
  depth.ref_dist = config.ref_dist / unit;
  depth.focal_length = rect.cam1.fx;
  depth.d2d_params_unit = unit;
  depth.disp_offset = config.disp_offset;
  depth.invalid_disp = config.invalid_disp;
  const bool relative_stereo = vq3900::is_stereo_camera_type(config.cam_type) && config.depth_mode == 0;
  if (relative_stereo && std::fabs(config.disp_offset) > 1.0F) {
    // The plane that the disparity offset lies on.
    const float product = depth.baseline * depth.focal_length;
    depth.ref_dist = product / depth.disp_offset;
  }
}

// Logs how a step ended and answers its status.
int32_t logged(const vq3900::StepLog& log, int32_t code, const char* failed, const char* successful) {
  log.step(code == VQ3900_OK ? successful : failed);
  return code;
}

// Generated grids end with the call. Those that a failure leaves unconverted become copies, as any other setter's are.
class GeneratorsEnd {
 public:
  GeneratorsEnd() = default;
  GeneratorsEnd(const GeneratorsEnd&) = delete;
  GeneratorsEnd& operator=(const GeneratorsEnd&) = delete;
  ~GeneratorsEnd() {
    for (vq3900::RectifyLut& lut : engine().rectify_lut.camera)
      vq3900::end_owner(lut);
  }
};

int32_t convert(CalibrateParamsMulti& calib, DeStereoRectifyParams_S& rect, DeCameraD2CParams_S* d2c,
                DepthCalcParams_S& depth, const vq3900::StepLog& log) {
  if (const int32_t code = start_record(rect); code != VQ3900_OK) {
    log.pass("invalid calibration temperature");
    return code;
  }
  if (calib.model_override != 0) calib.distortion_model = vq3900::kPolynomialNumber;
  log.step("calibration distortion model: " + std::to_string(calib.distortion_model));
  vq3900::scale_and_chop(engine().calib_input, calib);

  vq3900::CameraLuts luts;
  const GeneratorsEnd generators_end;
  return vq3900::run_steps(
      [&] {
        const int32_t code =
            vq3900::parse_rectify_d2c_params_from_stereo_with_rgb_calib_params(calib, &rect, d2c, luts);
        return logged(log,
                      code,
                      "parse_rectify_d2c_params_from_stereo_with_rgb_calib_params() failed!",
                      "parse_rectify_d2c_params_from_stereo_with_rgb_calib_params() successful!");
      },
      [&] {
        fill_depth(rect, depth);
        return logged(log,
                      vq3900::set_rectify_d2c_params(kStereo, rect, d2c, std::move(luts), depth),
                      "set_rectify_d2c_params() failed!",
                      "set_rectify_d2c_params() successful!");
      },
      [&] {
        return logged(log,
                      convert_d2d_params_to_register_elements(),
                      "convert_d2d_params_to_register_elements() failed!",
                      "convert_d2d_params_to_register_elements() successful!");
      },
      [&] {
        // Its success goes by the name of the step before: production lines count these lines.
        return logged(log,
                      convert_rectify_params_to_register_elements(),
                      "convert_rectify_float_to_register_elements() failed!",
                      "convert_d2d_params_to_register_elements() successful!");
      },
      [&] {
        return logged(log,
                      convert_d2c_params_to_register_elements(),
                      "convert_d2c_params_float_to_register() failed!",
                      "convert_d2c_params_float_to_register() successful!");
      });
}

}  // namespace

int32_t cams_calibration_params_to_register_converter(const char* path, DeStereoRectifyParams_S* rect,
                                                      DeCameraD2CParams_S* d2c, DepthCalcParams_S* depth) {
  static_cast<void>(path);  // temperatures are all that this converter takes
  static_cast<void>(d2c);
  static_cast<void>(depth);
  try {
    return rect == nullptr ? VQ3900_ERROR_ARGUMENT : start_record(*rect);
  } catch (const std::bad_alloc&) {  // no memory for the message
    return VQ3900_ERROR_ARGUMENT;
  }
}

int32_t align_ir_ir_rgb_params_to_register_converter(CalibrateParamsMulti calib, DeStereoRectifyParams_S* rect,
                                                     DeCameraD2CParams_S* d2c, DepthCalcParams_S* depth,
                                                     DeLogCallback* log) {
  if (rect == nullptr || depth == nullptr) return VQ3900_ERROR_ARGUMENT;
  vq3900::CallerCallback callback{log};
  try {
    return convert(calib, *rect, d2c, *depth, vq3900::StepLog{callback.get()});
  } catch (const std::bad_alloc&) {
    if (callback.threw()) throw;
    return VQ3900_ERROR_ARGUMENT;
  }
}
