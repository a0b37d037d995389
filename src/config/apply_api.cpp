// Applying the loaded depth-engine configuration: every value to its setter, in one fixed order.
#include <utility>

#include "platform/diagnostics.h"
#include "state/engine.h"

using vq3900::engine;

namespace {

constexpr uint32_t kHwD2dEnable = 1U << 4;  // of scheme_flags

// Which cameras a rectification mode switches on: camera 0, camera 1.
std::pair<int32_t, int32_t> rectify_switches(uint8_t rectify_mode) {
  switch (rectify_mode) {
    case 0:
      return {1, 0};
    case 1:
      return {0, 1};
    case 2:
      return {1, 1};
    default:
      return {0, 0};
  }
}

uint32_t bits(int32_t value) {
  return static_cast<uint32_t>(value);
}

int32_t refuse(int32_t code, const char* message) {
  vq3900::put_out(message);
  return code;
}

// Camera, rectification and depth output: the settings that may be refused.
int32_t apply_basic(const vq3900::DeInputConfig& input) {
  const vq3900::DeInputBasic& basic = input.basic;
  if (set_camera_mode(static_cast<int32_t>(basic.cam_mode), basic.depth_mode) != VQ3900_OK) {
    return refuse(-1, "set_camera_mode error!\n");
  }
  set_upsample(basic.upsample_enable, basic.scale_mode);
  const auto& resolution = input.mode.record.in_ir_res;
  set_input_ir_resolution(uint32_t{resolution[1]} << 16 | resolution[0]);

  const auto [camera_0, camera_1] = rectify_switches(basic.rectify_mode);
  if (set_rectify_status(camera_0, camera_1, basic.start_rows) != VQ3900_OK) {
    return refuse(-2, "set_rectify_status error!\n");
  }
  if (set_rectify_sbg2r_config(
          static_cast<int8_t>(basic.rotate_90_en), basic.rotate_clockwise, basic.sbg_en, basic.sub_mode_sel) !=
      VQ3900_OK) {
    return refuse(-3, "set_rectify_sbg2r_config error!\n");
  }
  set_rectify_kk_lut(basic.distort_type);
  if (set_d2c_config(static_cast<int32_t>(basic.d2c_recovery_mode),
                     basic.d2c_recovery_expand_width,
                     bits(basic.d2c_buffer_position),
                     bits(basic.d2c_total_buffer_rows),
                     basic.depth_sign) != VQ3900_OK) {
    return refuse(-4, "set_d2c_config_params error!\n");  // named as host software knows it
  }
  set_d2d_unit(basic.depth_unit);
  set_hw_d2d_enable((input.scheme.record.scheme_flags & kHwD2dEnable) != 0);
  return VQ3900_OK;
}

int32_t apply_geometry(const vq3900::DeInputConfig& input) {
  set_prefilter_size_speckleTh(input.disparity.pre_win_size, 0);
  const vq3900::DeInputExtendChop& geometry = input.extend_chop;
  if (set_extend_chop_params(geometry.extend_ref.data(), geometry.extend_tar.data(), geometry.chop.data()) !=
      VQ3900_OK) {
    return refuse(-5, "set_extend_chop_params error!\n");
  }
  return VQ3900_OK;
}

void apply_disparity(const vq3900::DeInputDisparity& in) {
  set_depth_engine_win_size(bits(in.win_size));
  set_min_disp(static_cast<int8_t>(in.min_disparity));  // the low byte
  const DeGrowMatchParams_S grow{bits(in.cost_strong_t),
                                 bits(in.cost_weak_t),
                                 bits(in.conf_region_t),
                                 bits(in.conf_strong_t),
                                 bits(in.conf_grow_t),
                                 bits(in.grow_disp_diff_thr)};
  set_grow_match_params(&grow);
  const DeShadowCheckParams_S shadow{in.shadow_en,
                                     in.shadow_ring_base,
                                     bits(in.shadow_win_size),
                                     bits(in.shadow_smooth_size),
                                     bits(in.shadow_tex_thresh),
                                     bits(in.shadow_diff_per),
                                     bits(in.shadow_edge_preserving),
                                     bits(in.cost_shadow1_t),
                                     bits(in.cost_shadow2_t)};
  set_shadow_check_params(&shadow);
  const DeArmShortParams_S arm{bits(in.arm_len), in.arm_short_en, bits(in.arm_short_mask)};
  set_arm_short_params(&arm);
  const DeTileParams_S tile{
      bits(in.tile_width), bits(in.tile_overlap_x), bits(in.tile_overlap_x_fast), bits(in.tile_overlap_y_traverse)};
  set_tile_width_overlap(&tile);
  const DeSeedParams_S seed{bits(in.max_see_num), bits(in.max_seed_try_num), bits(in.max_seed_valid_try_num)};
  set_seed_params(&seed);
  set_lrc_params({in.lrc_en, bits(in.lrc_thresh)});
  const DeSmoothFilterParams_S smooth{in.smooth_enable, in.smooth_win_size, in.smooth_enable_flag};
  set_smoothfilter_params(&smooth);
  set_subpixel_coef(in.sp_coef.data());
}

void apply_gpm(const vq3900::DeInputGpm& in) {
  set_gpm_enable(in.enable);
  set_x_y_coordinates(in.x.data(), in.y.data());
  set_gpm_enable_columns(in.enable_bits_per_row.data(), in.gp_enabled_cols);
  const DeGpmConfig_S config{bits(in.texture_t0),
                             bits(in.texture_t1),
                             bits(in.active_t),
                             bits(in.ncost_t),
                             in.hist_dy_dist,
                             in.gp_ref_dy_t_neg,
                             in.gp_ref_dy_t};
  set_gpm_config(&config, 0);
}

}  // namespace

int32_t set_depth_engine_config(void) {
  vq3900::DeInputConfig& input = engine().input;
  if (const int32_t code = apply_basic(input); code != VQ3900_OK) return code;
  if (const int32_t code = apply_geometry(input); code != VQ3900_OK) return code;
  apply_disparity(input.disparity);
  apply_gpm(input.gpm);
  if (input.basic.cam_mode == 1) input.scheme.record.ref_dist = 0;  // stereo depth has no reference plane
  return VQ3900_OK;
}
