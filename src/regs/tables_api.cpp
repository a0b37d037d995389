// The copy-out and merge-back functions: one pair a table, each with the message of its own.
#include <algorithm>
#include <cstddef>
#include <span>

#include "platform/diagnostics.h"
#include "regs/table_transfer.h"
#include "state/engine.h"

using vq3900::Compare;
using vq3900::engine;

namespace {

int32_t copy_out(std::span<const DeRegElement_S> table, DeRegElement_S* dst, std::size_t count, const char* too_many) {
  if (count > table.size()) {
    vq3900::put_err(too_many);
    return VQ3900_ERROR_ARGUMENT;
  }
  if (count == 0) return VQ3900_OK;
  if (dst == nullptr) return VQ3900_ERROR_ARGUMENT;
  std::copy_n(table.begin(), count, dst);
  return VQ3900_OK;
}

int32_t merge(std::span<DeRegElement_S> table, const DeRegElement_S* src, std::size_t count, const char* too_many,
              Compare compare = Compare::kAddressAndMask) {
  if (count > table.size()) {
    vq3900::put_err(too_many);
    return VQ3900_ERROR_ARGUMENT;
  }
  if (count == 0) return VQ3900_OK;
  if (src == nullptr) return VQ3900_ERROR_ARGUMENT;
  if (!vq3900::merge_elements({src, count}, table, compare)) {
    vq3900::print_err("register element address or mask incompatible!\n");
    return VQ3900_ERROR_ARGUMENT;
  }
  return VQ3900_OK;
}

}  // namespace

// The table names in the messages differ from the tables here and there. Host software searches for them: they stay.

int32_t de_copy_basic_d2c_d2d_ctrl_register_table(DeRegElement_S* dst, uint8_t count) {
  return copy_out(engine().registers.basic_ctrl, dst, count, "reg_num > inner_basic_reg_table_size! \n");
}

int32_t de_update_basic_d2c_d2d_ctrl_register_table(const DeRegElement_S* src, uint8_t count) {
  // Three blocks share this table, each with masks of its own: the address alone is compared.
  return merge(engine().registers.basic_ctrl,
               src,
               count,
               "reg_num > inner_basic_d2c_d2d_ctrl_reg_table_size! \n",
               Compare::kAddress);
}

int32_t de_copy_d2d_params_register_table(DeRegElement_S* dst, uint8_t count) {
  return copy_out(engine().registers.d2d, dst, count, "reg_num > inner_basic_reg_table_size! \n");
}

int32_t de_update_d2d_params_register_table(const DeRegElement_S* src, uint8_t count) {
  return merge(engine().registers.d2d, src, count, "reg_num > inner_basic_params_reg_table_size! \n");
}

int32_t de_copy_d2c_params_register_table(DeRegElement_S* dst, uint8_t count) {
  return copy_out(engine().registers.d2c, dst, count, "reg_num > inner_d2c_reg_table_size! \n");
}

int32_t de_update_d2c_params_register_table(const DeRegElement_S* src, uint8_t count) {
  return merge(engine().registers.d2c, src, count, "reg_num > inner_d2c_reg_table_size! \n");
}

int32_t de_copy_prefilter_register_table(DeRegElement_S* dst, uint8_t count) {
  return copy_out(engine().registers.prefilter, dst, count, "reg_num > inner_pref_reg_table size! \n");
}

int32_t de_update_prefilter_register_table(const DeRegElement_S* src, uint8_t count) {
  return merge(engine().registers.prefilter, src, count, "reg_num > inner_pref_reg_table! \n");
}

int32_t de_copy_extend_chop_register_table(DeRegElement_S* dst, uint8_t count) {
  return copy_out(engine().registers.extend_chop, dst, count, "reg_num > EXTAND_CHOP_REG_TABLE_SIZE! \n");
}

int32_t de_update_extend_chop_register_table(const DeRegElement_S* src, uint8_t count) {
  return merge(engine().registers.extend_chop, src, count, "reg_num > EXTAND_CHOP_REG_TABLE_SIZE! \n");
}

int32_t de_copy_disp_calc_register_table(DeRegElement_S* dst, uint8_t count) {
  return copy_out(engine().registers.disp_calc, dst, count, "reg_num > DISP_CALC_REG_TABLE_SIZE! \n");
}

int32_t de_update_disp_calc_register_table(const DeRegElement_S* src, uint8_t count) {
  return merge(engine().registers.disp_calc, src, count, "reg_num > DISP_CALC_REG_TABLE_SIZE! \n");
}

int32_t de_copy_gpm_register_table(DeRegElement_S* dst, uint8_t count) {
  return copy_out(engine().registers.gpm, dst, count, "reg_num > inner_gpm_reg_table_size! \n");
}

int32_t de_update_gpm_register_table(const DeRegElement_S* src, uint8_t count) {
  return merge(engine().registers.gpm, src, count, "reg_num > inner_gpm_reg_table_size! \n");
}

int32_t de_copy_gp_status_register_table(DeRegElement_S* dst, uint16_t count) {
  return copy_out(engine().registers.gp_status, dst, count, "reg_num > inner_gp_status_reg_table! \n");
}

int32_t de_update_gp_status_register_table(const DeRegElement_S* src, uint8_t count) {
  return merge(engine().registers.gp_status, src, count, "");  // an 8-bit count never exceeds this table
}

int32_t de_copy_rectify_ctrl_register_table(DeRegElement_S* dst, uint8_t count) {
  return copy_out(engine().registers.rectify_ctrl, dst, count, "reg_num > inner_rectify_ctrl_reg_table_size! \n");
}

int32_t de_update_rectify_ctrl_register_table(const DeRegElement_S* src, uint8_t count) {
  return merge(engine().registers.rectify_ctrl, src, count, "reg_num > inner_rectify_ctrl_reg_table_size! \n");
}

int32_t de_copy_rectify_params_register_table(DeRegElement_S* dst, uint8_t count) {
  return copy_out(engine().registers.rectify[0], dst, count, "reg_num > inner_rectify_reg_table_size! \n");
}

int32_t de_update_rectify_params_register_table(const DeRegElement_S* src, uint8_t count) {
  return merge(engine().registers.rectify[0], src, count, "reg_num > inner_rectify_reg_table_size! \n");
}

int32_t de_copy_sbg2r_params_register_table(DeRegElement_S* dst, uint8_t count) {
  return copy_out(engine().registers.rectify[1], dst, count, "reg_num > SBG_ROTATE_RECT_LUT_REG_TABLE_SIZE! \n");
}

int32_t de_update_sbg2r_params_register_table(const DeRegElement_S* src, uint8_t count) {
  return merge(engine().registers.rectify[1], src, count, "reg_num > SBG_ROTATE_RECT_LUT_REG_TABLE_SIZE! \n");
}

int32_t de_copy_rectify_lut_info_register_table(int32_t camera_id, DeRegElement_S* dst, uint8_t count) {
  const std::size_t camera = camera_id == 1 ? 1 : 0;
  return copy_out(
      engine().registers.rectify_lut_info[camera], dst, count, "reg_num > inner_sbg2r_lut_reg_table size! \n");
}
