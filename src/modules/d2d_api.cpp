#include "modules/d2d.h"
#include "modules/fixed_point_api.h"
#include "platform/diagnostics.h"
#include "state/engine.h"
#include "state/record_copy.h"

using vq3900::engine;

int32_t set_d2d_unit(uint8_t unit_shift) {
  if (unit_shift > vq3900::kMaxUnitShift) {
    vq3900::print_err("D2D:unit_shift is incorrect! \n");
    return VQ3900_ERROR_ARGUMENT;
  }
  engine().d2d.unit_shift = unit_shift;
  return VQ3900_OK;
}

void set_hw_d2d_enable(bool enable) {
  engine().d2d.hw_d2d_enable = enable ? 1 : 0;
}

int32_t get_d2d_config(D2dConfig* config) {
  return vq3900::copy_out(engine().d2d, config);
}

int32_t de_update_d2d_config(const D2dConfig* config) {
  return vq3900::copy_in(config, engine().d2d);
}

int32_t convert_d2d_config_to_register_element(void) {
  vq3900::encode_d2d(engine().d2d, engine().registers);
  return VQ3900_OK;
}

int32_t convert_d2d_register_to_config(void) {
  vq3900::decode_d2d(engine().registers, engine().d2d);
  return VQ3900_OK;
}

int32_t convert_d2d_params_to_register_elements(void) {
  const bool fits = vq3900::encode_depth_constants(engine().basic, engine().registers, vq3900::print_overflow);
  return fits ? VQ3900_OK : VQ3900_FIXED_POINT_OVERFLOW;
}
