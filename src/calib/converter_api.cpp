// The two calibration converters: from a calibration to the register settings of rectification, D2C and D2D.
#include <array>
#include <cmath>
#include <exception>
#include <functional>
#include <span>
#include <string>

#include "calib/distortion_model.h"
#include "calib/step_log_api.h"
#include "calib/stereo_derivation.h"
#include "calib/stereo_derivation_api.h"
#include "config/c_locale.h"
#include "modules/fixed_point.h"
#include "modules/rectify.h"
#include "modules/rectify_lut.h"
#include "platform/diagnostics.h"
#include "regs/steps.h"
#include "state/engine.h"

using vq3900::engine;
using vq3900::widen;

namespace {

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

// One configuration never inherits another's correction, in the tables neither: images are made of them.
void drop_corrections() {
  vq3900::clear_kk(engine().registers);
  for (vq3900::RectifyCameraParams& camera : engine().rectify.camera)
    camera.kk_set = false;
  for (vq3900::RectifyLut& lut : engine().rectify_lut.camera) {
    lut.map_set = false;
    vq3900::release_grid(lut);
  }
}

std::array<float, 4> pinhole(const DeCameraIntrinsic_S& intrinsic) {
  return {intrinsic.fx, intrinsic.fy, intrinsic.cx, intrinsic.cy};
}

// What a camera's half of the rectification record says.
struct CameraHalf {
  uint32_t id;
  const DeCameraIntrinsic_S& rectified;
  const float (&distortion)[8];
  const float (&rotation)[9];
  const DeCameraIntrinsic_S& unrectified;
};

int32_t set_camera(const CameraHalf& camera, uint8_t lut_status, const vq3900::UndistortionLut& lut) {
  const std::array<float, 4> intrinsic = pinhole(camera.unrectified);
  const bool polynomial = lut_status == 0 || lut_status == 2;
  const bool map = lut_status == 1 || lut_status == 2;
  if (polynomial) {
    const int32_t code =
        set_rectify_params_brown(camera.id, &camera.rectified, camera.distortion, camera.rotation, intrinsic.data());
    if (code != VQ3900_OK) return code;
  }
  if (!map) return VQ3900_OK;
  return set_rectify_params_map(camera.id, &camera.rectified, &lut.info, camera.rotation, intrinsic.data());
}

int32_t set_projection(const DeCameraD2CParams_S& d2c) {
  const vq3900::CalibInputConfig& config = engine().calib_input;
  std::array<float, 12> pose{};
  const bool in_unit = config.d2d_params_unit_in_R_en == 1 && std::fabs(widen(config.d2d_params_unit)) > 0.0001;
  for (std::size_t i = 0; i < 9; ++i) {
    pose[i] = in_unit ? d2c.rotation[i] * config.d2d_params_unit : d2c.rotation[i];
  }
  for (std::size_t i = 0; i < 3; ++i)
    pose[9 + i] = d2c.translation[i];
  return set_d2c_calib_params(pinhole(d2c.depth).data(), pinhole(d2c.color).data(), pose.data());
}

constexpr int32_t kStereo = 1;

// Hands the derived values to the setters of the modules.
int32_t set_rectify_d2c_params(const DeStereoRectifyParams_S& rect, const DeCameraD2CParams_S* d2c,
                               const vq3900::CameraLuts& luts, const DepthCalcParams_S& depth) {
  const uint8_t lut_status = engine().calib_input.distort_type;
  const CameraHalf camera_1{1, rect.cam1_rectified, rect.cam1_distortion, rect.cam1_rotation, rect.cam1};
  const CameraHalf camera_0{0, rect.cam0_rectified, rect.cam0_distortion, rect.cam0_rotation, rect.cam0};
  drop_corrections();
  return vq3900::run_steps([&] { return set_camera_mode(kStereo, static_cast<uint8_t>(depth.depth_mode)); },
                           [&] { return set_pbf_params(depth.baseline, depth.focal_length); },
                           [&] { return depth.depth_mode == 0 ? set_ref_plane_dist(depth.ref_dist) : VQ3900_OK; },
                           [&] { return set_rectify_kk_lut(lut_status); },
                           [&] { return set_camera(camera_1, lut_status, luts[1]); },
                           [&] { return set_camera(camera_0, lut_status, luts[0]); },
                           [&] { return d2c == nullptr ? VQ3900_OK : set_projection(*d2c); });
}

// Logs how a step ended and answers its status.
int32_t logged(const vq3900::StepLog& log, int32_t code, const char* failed, const char* successful) {
  log.step(code == VQ3900_OK ? successful : failed);
  return code;
}

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
                      set_rectify_d2c_params(rect, d2c, luts, depth),
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
