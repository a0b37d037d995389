// The set entry points: store the record, convert it, write the tables through the caller's callback.
#include <algorithm>
#include <array>

#include "regs/access.h"
#include "regs/steps.h"
#include "state/engine.h"

using vq3900::engine;
using vq3900::run_steps;

namespace {

template <typename... Records>
int32_t check(const Records*... records) {
  if (const int32_t code = vq3900::require_write_callback(engine().access); code != VQ3900_OK) return code;
  return ((records == nullptr) || ...) ? VQ3900_ERROR_ARGUMENT : VQ3900_OK;
}

// Hands a copy of the table to the write callback, in one call.
template <std::size_t Count>
int32_t write_copy(const vq3900::RegisterTable<Count>& table) {
  vq3900::RegisterTable<Count> elements = table;
  return vq3900::write_elements(engine().access, elements);
}

int32_t write_control_table() {
  return write_copy(engine().registers.basic_ctrl);
}

std::array<float, 4> pinhole(const DeCameraIntrinsic_S& intrinsic) {
  return {intrinsic.fx, intrinsic.fy, intrinsic.cx, intrinsic.cy};
}

int32_t set_projection(const DeCameraIntrinsic_S& depth, const DeCameraIntrinsic_S& color,
                       const DeExtrinsic_S& extrinsic) {
  std::array<float, 12> pose{};
  std::ranges::copy(extrinsic.translation, std::ranges::copy(extrinsic.rotation, pose.begin()).out);
  return set_d2c_calib_params(pinhole(depth).data(), pinhole(color).data(), pose.data());
}

}  // namespace

int32_t de_set_baisc_params_to_registers(const DeBasicParams_S* params) {
  return run_steps([&] { return check(params); },
                   [&] { return de_update_basic_params(params); },
                   convert_basic_config_to_registers,
                   convert_d2d_params_to_register_elements,
                   [] { return write_copy(engine().registers.d2d); },
                   write_control_table);
}

int32_t de_set_prefilter_params_to_registers(const DePrefilterParams_S* params) {
  return run_steps([&] { return check(params); },
                   [&] { return de_update_prefilter_params(params); },
                   convert_prefilter_float_to_registers,
                   [] { return write_copy(engine().registers.prefilter); });
}

int32_t de_set_extend_chop_params_to_registers(const DeExtendChopParams_S* params) {
  return run_steps([&] { return check(params); },
                   [&] { return de_update_extend_chop_params(params); },
                   convert_extend_chop_float_to_registers,
                   [] { return write_copy(engine().registers.extend_chop); });
}

int32_t de_set_disp_calc_params_to_registers(const DeDispCalcParams_S* params) {
  return run_steps([&] { return check(params); },
                   [&] { return de_update_disp_calc_params(params); },
                   convert_calc_disp_float_to_registers,
                   [] { return write_copy(engine().registers.disp_calc); });
}

int32_t de_set_gpm_params_to_registers(const DeGpmParams_S* params) {
  return run_steps([&] { return check(params); },
                   [&] { return de_update_gpm_params(params); },
                   convert_gpm_float_to_registers,
                   [] { return write_copy(engine().registers.gpm); });
}

int32_t de_set_d2c_params_to_registers(const DeCameraIntrinsic_S* depth, const DeCameraIntrinsic_S* color,
                                       const DeExtrinsic_S* extrinsic, const D2cConfig* config) {
  return run_steps([&] { return check(depth, color, extrinsic, config); },
                   [&] { return de_update_d2c_config(config); },
                   [&] { return set_projection(*depth, *color, *extrinsic); },
                   [] {
                     convert_d2c_params_to_register_elements();  // an overflowing entry is written as all ones
                     return VQ3900_OK;
                   },
                   convert_d2c_ctrl_to_register_elements,
                   [] { return write_copy(engine().registers.d2c); },
                   write_control_table);
}

int32_t de_set_d2d_params_to_registers(const D2dConfig* config) {
  return run_steps([&] { return check(config); },
                   [&] { return de_update_d2d_config(config); },
                   convert_d2d_config_to_register_element,
                   write_control_table);
}

int32_t de_set_rectify_params_to_registers(const DeRectifyParams_S* params, const DeRectifyCtrlParams_S* ctrl) {
  return run_steps([&] { return check(params, ctrl); },
                   [&] { return de_update_rectify_params(params, ctrl); },
                   convert_rectify_params_to_register_elements,
                   [] { return write_copy(engine().registers.rectify[0]); },
                   [] { return write_copy(engine().registers.rectify[1]); });
}
