// The get entry points: read the tables through the caller's callback, merge them back, convert, copy the record out.
#include "regs/access.h"
#include "regs/steps.h"
#include "state/engine.h"

using vq3900::engine;
using vq3900::run_steps;

namespace {

template <typename... Records>
int32_t check(const Records*... records) {
  if (const int32_t code = vq3900::require_read_callback(engine().access); code != VQ3900_OK) return code;
  return ((records == nullptr) || ...) ? VQ3900_ERROR_ARGUMENT : VQ3900_OK;
}

// A copy of a register table on its way through the read callback and back.
template <std::size_t Count>
class Transfer {
 public:
  explicit Transfer(const vq3900::RegisterTable<Count>& table) : elements_(table) {}

  int32_t read() { return vq3900::read_elements(engine().access, elements_); }

  // The merge count is 8 bits wide: of the 261 status registers 5 are merged, the points' words keep their values.
  int32_t merge(int32_t (*update)(const DeRegElement_S*, uint8_t)) const {
    return update(elements_.data(), static_cast<uint8_t>(Count & 0xFF));
  }

 private:
  vq3900::RegisterTable<Count> elements_;
};

template <std::size_t Count>
int32_t read_and_merge(const vq3900::RegisterTable<Count>& table, int32_t (*update)(const DeRegElement_S*, uint8_t)) {
  Transfer<Count> transfer{table};
  return run_steps([&] { return transfer.read(); }, [&] { return transfer.merge(update); });
}

int32_t read_control_table() {
  return read_and_merge(engine().registers.basic_ctrl, de_update_basic_d2c_d2d_ctrl_register_table);
}

}  // namespace

int32_t de_get_baisc_params_from_registers(DeBasicParams_S* params) {
  return run_steps([&] { return check(params); },
                   [] { return read_and_merge(engine().registers.d2d, de_update_d2d_params_register_table); },
                   read_control_table,
                   convert_basic_register_to_params,
                   [&] { return de_copy_basic_params(params); });
}

int32_t de_get_prefilter_params_from_registers(DePrefilterParams_S* params) {
  return run_steps([&] { return check(params); },
                   [] { return read_and_merge(engine().registers.prefilter, de_update_prefilter_register_table); },
                   convert_prefilter_registers_to_float,
                   [&] { return de_copy_prefilter_params(params); });
}

int32_t de_get_extend_chop_params_from_registers(DeExtendChopParams_S* params) {
  return run_steps([&] { return check(params); },
                   [] { return read_and_merge(engine().registers.extend_chop, de_update_extend_chop_register_table); },
                   convert_extend_chop_registers_to_float,
                   [&] { return de_copy_extend_chop_params(params); });
}

int32_t de_get_disp_calc_params_from_registers(DeDispCalcParams_S* params) {
  return run_steps([&] { return check(params); },
                   [] { return read_and_merge(engine().registers.disp_calc, de_update_disp_calc_register_table); },
                   convert_calc_disp_registers_to_float,
                   [&] { return de_copy_disp_calc_params(params); });
}

int32_t de_get_gpm_params_from_registers(DeGpmParams_S* gpm, DeGpStatusParams_S* status) {
  Transfer points{engine().registers.gpm};
  Transfer point_status{engine().registers.gp_status};
  return run_steps([&] { return check(gpm, status); },
                   [&] { return points.read(); },
                   [&] { return point_status.read(); },
                   [&] { return points.merge(de_update_gpm_register_table); },
                   [&] { return point_status.merge(de_update_gp_status_register_table); },
                   convert_gp_status_registers_to_float,
                   convert_gpm_registers_to_float,
                   [&] { return de_copy_gp_status_params(status); },
                   [&] { return get_gpm_params(gpm); });
}

int32_t de_get_d2c_params_from_registers(D2cConfig* config) {
  return run_steps([&] { return check(config); },
                   [] { return read_and_merge(engine().registers.d2c, de_update_d2c_params_register_table); },
                   read_control_table,
                   convert_d2c_register_to_params_cfg,
                   [&] { return de_copy_d2c_config(config); });
}

int32_t de_get_d2d_params_from_registers(D2dConfig* config) {
  return run_steps([&] { return check(config); },
                   read_control_table,
                   convert_d2d_register_to_config,
                   [&] { return get_d2d_config(config); });
}

int32_t de_get_rectify_params_from_registers(DeRectifyParams_S* params, DeRectifyCtrlParams_S* ctrl,
                                             uint32_t kk_lut_arg, uint8_t convert_arg) {
  Transfer camera_1{engine().registers.rectify[1]};
  Transfer camera_0{engine().registers.rectify[0]};
  Transfer control{engine().registers.rectify_ctrl};
  return run_steps([&] { return check(params, ctrl); },
                   [&] { return camera_1.read(); },
                   [&] { return camera_0.read(); },
                   [&] { return control.read(); },
                   [&] { return camera_0.merge(de_update_rectify_params_register_table); },
                   [&] { return control.merge(de_update_rectify_ctrl_register_table); },
                   [&] { return camera_1.merge(de_update_sbg2r_params_register_table); },
                   [&] { return set_rectify_kk_lut(static_cast<int32_t>(kk_lut_arg)); },
                   [&] { return convert_rectify_registers_to_float(convert_arg != 0); },
                   [&] { return de_copy_rectify_params(params, ctrl); });
}
