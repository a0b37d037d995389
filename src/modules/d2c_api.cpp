#include <algorithm>
#include <cmath>

#include "modules/d2c.h"
#include "modules/fixed_point_api.h"
#include "platform/diagnostics.h"
#include "state/engine.h"
#include "state/record_copy.h"

using vq3900::engine;

namespace {

constexpr double kMinBaseline = 1.0;
constexpr double kMaxBaseline = 200.0;

void store_buffer_and_sign(uint32_t buffer_position, uint32_t total_buffer_rows, bool negated) {
  D2cConfig& config = engine().d2c.config;
  config.d2c_total_buffer_rows = total_buffer_rows;
  config.depth_sign = negated ? 1 : 0;
  config.d2c_buffer_position = buffer_position;
}

}  // namespace

int32_t set_d2c_config(int32_t recovery_mode, float expand_width, uint32_t buffer_position, uint32_t total_buffer_rows,
                       int32_t depth_sign) {
  vq3900::set_recovery_mode(recovery_mode, expand_width, engine().d2c.config);
  store_buffer_and_sign(buffer_position, total_buffer_rows, depth_sign != 0);
  return VQ3900_OK;
}

int32_t set_d2c_params(int32_t recovery_mode, float expand_width, uint32_t buffer_position,
                       uint32_t total_buffer_rows) {
  const float baseline = engine().basic.baseline;
  vq3900::set_recovery_mode(recovery_mode, expand_width, engine().d2c.config);  // stays when the baseline is refused
  const double magnitude = std::fabs(vq3900::widen(baseline));
  if (!(magnitude >= kMinBaseline && magnitude <= kMaxBaseline)) {  // a NaN does not pass
    vq3900::print_out("check baseline!\n");
    return VQ3900_ERROR_ARGUMENT;
  }
  store_buffer_and_sign(buffer_position, total_buffer_rows, baseline <= 0.0F);
  return VQ3900_OK;
}

int32_t set_d2c_calib_params(const float* depth_intrinsic, const float* color_intrinsic, const float* extrinsic) {
  if (depth_intrinsic == nullptr || color_intrinsic == nullptr || extrinsic == nullptr) return VQ3900_ERROR_ARGUMENT;
  engine().d2c.w = vq3900::d2c_projection(std::span<const float, 4>{depth_intrinsic, 4},
                                          std::span<const float, 4>{color_intrinsic, 4},
                                          std::span<const float, 12>{extrinsic, 12});
  return VQ3900_OK;
}

int32_t get_d2c_params(D2cConfig* config, double* w) {
  if (config == nullptr || w == nullptr) return VQ3900_ERROR_ARGUMENT;
  std::ranges::copy(engine().d2c.w, w);
  return vq3900::copy_out(engine().d2c.config, config);
}

int32_t de_copy_d2c_config(D2cConfig* config) {
  return vq3900::copy_out(engine().d2c.config, config);
}

int32_t de_update_d2c_config(const D2cConfig* config) {
  return vq3900::copy_in(config, engine().d2c.config);
}

int32_t convert_d2c_ctrl_to_register_elements(void) {
  vq3900::encode_d2c_ctrl(engine().d2c.config, engine().basic, engine().registers);
  return VQ3900_OK;
}

int32_t convert_d2c_params_to_register_elements(void) {
  const bool fits = vq3900::encode_projection(engine().d2c, engine().registers, vq3900::print_overflow);
  return fits ? VQ3900_OK : VQ3900_FIXED_POINT_OVERFLOW;
}

int32_t convert_W_mat_register_to_float(void) {
  vq3900::decode_projection(engine().registers, engine().d2c);
  return VQ3900_OK;
}

int32_t convert_d2c_register_to_params_cfg(void) {
  vq3900::D2cState& d2c = engine().d2c;
  d2c = {};
  if (convert_W_mat_register_to_float() != VQ3900_OK) return VQ3900_ERROR_READ_BACK;
  vq3900::decode_d2c_ctrl(engine().registers, d2c.config);
  engine().basic.cam_mode = vq3900::decode_d2c_camera_mode(engine().registers);
  return VQ3900_OK;
}
