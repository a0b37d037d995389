#include "register_blocks.h"

#include <algorithm>
#include <cstddef>
#include <span>

#include "modules/basic.h"
#include "modules/d2c.h"
#include "modules/d2d.h"
#include "modules/disparity.h"
#include "modules/extend_chop.h"
#include "modules/gpm.h"
#include "modules/prefilter.h"
#include "modules/rectify.h"

namespace vq3900::tool {

namespace {

template <auto Copy, std::size_t Count>
std::vector<DeRegElement_S> copied() {
  std::vector<DeRegElement_S> elements(Count);
  Copy(elements.data(), Count);
  return elements;
}

template <std::int32_t Camera>
std::vector<DeRegElement_S> lut_info() {
  std::vector<DeRegElement_S> elements(VQ3900_RECTIFY_LUT_INFO_REGISTERS);
  de_copy_rectify_lut_info_register_table(Camera, elements.data(), VQ3900_RECTIFY_LUT_INFO_REGISTERS);
  return elements;
}

template <typename Record>
void add(std::vector<FieldBits>& bits, std::span<const Field<Record>> fields) {
  bits.insert(bits.end(), fields.begin(), fields.end());
}

template <typename... Records>
std::vector<FieldBits> bits_of(std::span<const Field<Records>>... fields) {
  std::vector<FieldBits> bits;
  (add(bits, fields), ...);
  return bits;
}

std::vector<RegisterBlock> make_blocks() {
  const auto rectify = bits_of(rectify_kk_fields(), rectify_common_fields());
  return {
      {"d2d_params",
       "Disparity to depth",
       copied<de_copy_d2d_params_register_table, VQ3900_D2D_REGISTERS>,
       bits_of(depth_constant_fields())},
      {"basic_d2c_d2d_ctrl",
       "Control: basic, D2C, D2D",
       copied<de_copy_basic_d2c_d2d_ctrl_register_table, VQ3900_BASIC_CTRL_REGISTERS>,
       bits_of(basic_fields(),
               basic_stereo_fields(),
               d2c_depth_mode_fields(),
               d2c_ctrl_fields(),
               d2d_fields(),
               disparity_ctrl_fields())},
      {"d2c_params",
       "Depth to colour",
       copied<de_copy_d2c_params_register_table, VQ3900_D2C_REGISTERS>,
       bits_of(d2c_projection_fields())},
      {"prefilter",
       "Prefilter",
       copied<de_copy_prefilter_register_table, VQ3900_PREFILTER_REGISTERS>,
       bits_of(prefilter_fields(), coefficient_set_fields())},
      {"extend_chop",
       "Extend and chop",
       copied<de_copy_extend_chop_register_table, VQ3900_EXTEND_CHOP_REGISTERS>,
       bits_of(extend_chop_fields())},
      {"disp_calc",
       "Disparity calculation",
       copied<de_copy_disp_calc_register_table, VQ3900_DISP_CALC_REGISTERS>,
       bits_of(disparity_fields())},
      {"gpm", "Global-point matching", copied<de_copy_gpm_register_table, VQ3900_GPM_REGISTERS>, bits_of(gpm_fields())},
      {"gp_status",
       "Global-point status",
       copied<de_copy_gp_status_register_table, VQ3900_GP_STATUS_REGISTERS>,
       bits_of(gp_status_fields())},
      {"rectify_ctrl",
       "Rectification control",
       copied<de_copy_rectify_ctrl_register_table, VQ3900_RECTIFY_CTRL_REGISTERS>,
       bits_of(rectify_ctrl_fields(0), rectify_ctrl_fields(1), sbg2r_fields())},
      {"rectify_params",
       "Rectification, camera 0",
       copied<de_copy_rectify_params_register_table, VQ3900_RECTIFY_REGISTERS>,
       rectify},
      {"sbg2r_params",
       "Rectification, camera 1",
       copied<de_copy_sbg2r_params_register_table, VQ3900_RECTIFY_REGISTERS>,
       rectify},
      {"rectify_lut_info_0",
       "Rectification LUT information, camera 0",
       lut_info<0>,
       bits_of(rectify_lut_info_fields())},
      {"rectify_lut_info_1",
       "Rectification LUT information, camera 1",
       lut_info<1>,
       bits_of(rectify_lut_info_fields())},
  };
}

}  // namespace

const std::vector<RegisterBlock>& register_blocks() {
  static const std::vector<RegisterBlock> blocks = make_blocks();
  return blocks;
}

const RegisterBlock* find_block(std::string_view name) {
  for (const RegisterBlock& block : register_blocks()) {
    if (block.name == name) return &block;
  }
  return nullptr;
}

std::vector<FieldBits> fields_of(const RegisterBlock& block, std::size_t element) {
  std::vector<FieldBits> fields;
  std::copy_if(block.fields.begin(), block.fields.end(), std::back_inserter(fields), [element](const FieldBits& field) {
    return field.element == element;
  });
  std::stable_sort(
      fields.begin(), fields.end(), [](const FieldBits& a, const FieldBits& b) { return a.mask > b.mask; });
  return fields;
}

}  // namespace vq3900::tool
