#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

#include "modules/gpm.h"
#include "platform/diagnostics.h"
#include "state/engine.h"
#include "state/record_copy.h"

using vq3900::engine;

namespace {

// What the global-point entry hands back as status: the three low bytes of the record's first word, lowest first.
constexpr std::size_t kShortStatusBytes = 3;

}  // namespace

int32_t set_gpm_enable(uint32_t enable) {
  const auto flag = static_cast<uint8_t>(enable & 0xFF);
  engine().gpm.params.enable = flag;
  engine().gpm.params.enable_mirror = flag;
  set_rectify_common(flag);
  return VQ3900_OK;
}

int32_t set_x_y_coordinates(const int32_t* x, const int32_t* y) {
  if (x == nullptr || y == nullptr) return VQ3900_ERROR_ARGUMENT;
  std::ranges::copy(std::span<const int32_t, 16>{x, 16}, engine().gpm.params.x_coordinate);
  std::ranges::copy(std::span<const int32_t, 16>{y, 16}, engine().gpm.params.y_coordinate);
  return VQ3900_OK;
}

int32_t set_gpm_enable_columns(const uint16_t* bits_per_row, uint8_t enabled_cols) {
  if (bits_per_row == nullptr) return VQ3900_ERROR_ARGUMENT;
  vq3900::enable_columns(std::span<const uint16_t, 16>{bits_per_row, 16}, engine().gpm.params);
  engine().gpm.params.gp_enabled_cols = enabled_cols;  // as given: not the number of flags
  return VQ3900_OK;
}

int32_t set_gpm_config(const DeGpmConfig_S* config, uint8_t flag) {
  if (config == nullptr) return VQ3900_ERROR_ARGUMENT;
  DeGpmParams_S& params = engine().gpm.params;
  params.texture_t0 = config->texture_t0;
  params.texture_t1 = config->texture_t1;
  params.active_t = config->active_t;
  params.ncost_t = config->ncost_t;
  params.hist_dy_dist = config->hist_dy_dist;
  params.gp_ref_dy_t_neg = config->gp_ref_dy_t_neg;
  params.gp_ref_dy_t = config->gp_ref_dy_t;
  params.gpm_config_flag = flag;
  return VQ3900_OK;
}

int32_t get_gpm_params(DeGpmParams_S* params) {
  return vq3900::copy_out(engine().gpm.params, params);
}

int32_t de_copy_gpm_params(DeGpmParams_S* params) {
  return get_gpm_params(params);
}

int32_t de_update_gpm_params(const DeGpmParams_S* params) {
  return vq3900::copy_in(params, engine().gpm.params);
}

int32_t get_global_points_status(void* out) {
  return vq3900::copy_out(engine().gpm.status, static_cast<DeGpStatusParams_S*>(out));
}

int32_t de_copy_gp_status_params(void* out) {
  if (out == nullptr) return VQ3900_ERROR_ARGUMENT;
  const auto first_word = static_cast<uint32_t>(engine().gpm.status.status[0]);
  auto* const bytes = static_cast<uint8_t*>(out);
  for (std::size_t i = 0; i < kShortStatusBytes; ++i)
    bytes[i] = static_cast<uint8_t>(first_word >> (8 * i));
  return VQ3900_OK;
}

int32_t de_update_gp_status_params(void) {
  vq3900::print_err("gp_status_params read only!\n");
  return VQ3900_ERROR_TRANSFER;
}

int32_t convert_gpm_float_to_registers(void) {
  vq3900::encode_gpm(engine().gpm.params, engine().registers);
  return VQ3900_OK;
}

int32_t convert_gpm_registers_to_float(void) {
  vq3900::decode_gpm(engine().registers, engine().gpm.params);
  return VQ3900_OK;
}

int32_t convert_gp_status_registers_to_float(void) {
  vq3900::decode_gp_status(engine().registers, engine().gpm.status);
  return VQ3900_OK;
}
