#include <cmath>

#include "modules/basic.h"
#include "modules/d2d.h"
#include "platform/diagnostics.h"
#include "state/engine.h"
#include "state/record_copy.h"

using vq3900::engine;

namespace {

constexpr double kMinBaseline = 1.0;
constexpr double kMaxBaseline = 500.0;
constexpr float kMinFocalLength = 10.0F;

}  // namespace

int32_t set_camera_mode(int32_t cam_mode, uint8_t depth_mode) {
  engine().basic.depth_mode = depth_mode;  // stored even when the camera mode is refused
  if (cam_mode != 0 && cam_mode != 1) return VQ3900_ERROR_ARGUMENT;
  engine().basic.cam_mode = static_cast<uint32_t>(cam_mode);
  return VQ3900_OK;
}

int32_t get_camera_mode(uint32_t* out) {
  return vq3900::copy_out(engine().basic.cam_mode, out);
}

int32_t set_upsample(uint8_t enable, uint32_t scale_mode) {
  DeBasicParams_S& basic = engine().basic;
  basic.scale_mode = scale_mode;
  basic.upsample_enable = enable;
  basic.upsample_main_en = enable != 0 ? 1 : 0;
  basic.upsample_aux_en = enable != 0 && basic.cam_mode == 1 ? 1 : 0;
  return VQ3900_OK;
}

uint8_t get_upsample(void) {
  return engine().basic.upsample_enable;
}

int32_t get_scale_mode(uint32_t* out) {
  return vq3900::copy_out(engine().basic.scale_mode, out);
}

int32_t get_ref_plane_dist(float* out) {
  return vq3900::copy_out(engine().basic.ref_plane_dist, out);
}

int32_t get_pbf(float* out) {
  return vq3900::copy_out(engine().basic.pbf, out);
}

int32_t set_ref_plane_dist(float dist) {
  engine().basic.ref_plane_dist = dist;
  return VQ3900_OK;
}

int32_t set_input_ir_resolution(uint32_t packed) {
  engine().basic.in_ir_width = static_cast<uint16_t>(packed & 0xFFFF);
  engine().basic.in_ir_height = static_cast<uint16_t>(packed >> 16);
  return VQ3900_OK;
}

int32_t set_pbf_params(float baseline, float focal_length_pix) {
  DeBasicParams_S& basic = engine().basic;
  const double magnitude = std::fabs(vq3900::widen(baseline));
  if (magnitude < kMinBaseline || magnitude > kMaxBaseline) {  // a NaN passes
    vq3900::print_out("check baseline!\n");
    return VQ3900_ERROR_ARGUMENT;
  }
  basic.baseline = baseline;  // stays stored when the focal length is refused
  if (focal_length_pix < kMinFocalLength) {
    vq3900::print_err("focal_length_pix is incorrect! \n");
    return VQ3900_ERROR_ARGUMENT;
  }
  basic.pbf = vq3900::pixel_baseline_factor(baseline, focal_length_pix);
  basic.focal_length_pix = focal_length_pix;
  return VQ3900_OK;
}

int32_t de_update_basic_params(const DeBasicParams_S* params) {
  return vq3900::copy_in(params, engine().basic);
}

int32_t de_copy_basic_params(DeBasicParams_S* params) {
  return vq3900::copy_out(engine().basic, params);
}

int32_t convert_basic_config_to_registers(void) {
  vq3900::encode_basic(engine().basic, engine().registers);
  return VQ3900_OK;
}

int32_t convert_basic_register_to_params(void) {
  vq3900::decode_basic(engine().registers, engine().basic);
  return VQ3900_OK;
}
