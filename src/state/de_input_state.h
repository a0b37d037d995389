// The loaded depth-engine configuration, one struct a section, one field a key.
#ifndef VQ3900_STATE_DE_INPUT_STATE_H
#define VQ3900_STATE_DE_INPUT_STATE_H

#include "vq3900_depth_engine.h"

#include <array>
#include <cstdint>

namespace vq3900 {

struct DeInputMode {
  dpu_mode record{};
  std::uint32_t version = 0;
};

struct DeInputBasic {
  std::uint32_t cam_mode = 0;
  std::uint8_t depth_mode = 0;
  std::uint8_t upsample_enable = 0;
  std::uint32_t scale_mode = 0;
  std::uint8_t rectify_mode = 0;
  std::uint8_t distort_type = 0;
  std::uint8_t rotate_90_en = 0;
  std::uint8_t rotate_clockwise = 0;
  std::uint8_t sbg_en = 0;
  std::uint8_t sub_mode_sel = 0;
  std::uint32_t start_rows = 0;
  std::int32_t d2c_buffer_position = 0;
  std::int32_t d2c_total_buffer_rows = 0;
  std::uint32_t d2c_recovery_mode = 0;
  float d2c_recovery_expand_width = 0;
  std::uint8_t depth_sign = 0;
  std::uint8_t depth_unit = 0;  // shift code 0 to 4
};

struct DeInputDisparity {
  std::int32_t min_disparity = 0;
  std::uint8_t pre_win_size = 0;
  std::int32_t win_size = 0;
  std::int32_t cost_strong_t = 0;
  std::int32_t cost_weak_t = 0;
  std::int32_t conf_region_t = 0;
  std::int32_t conf_strong_t = 0;
  std::int32_t conf_grow_t = 0;
  std::int32_t grow_disp_diff_thr = 0;
  std::uint32_t lrc_en = 0;
  std::int32_t lrc_thresh = 0;
  std::uint8_t shadow_en = 0;
  std::uint8_t shadow_ring_base = 0;
  std::int32_t shadow_win_size = 0;
  std::int32_t shadow_smooth_size = 0;
  std::int32_t shadow_tex_thresh = 0;
  std::int32_t shadow_diff_per = 0;
  std::int32_t shadow_edge_preserving = 0;
  std::int32_t cost_shadow1_t = 0;
  std::int32_t cost_shadow2_t = 0;
  std::int32_t arm_len = 0;
  std::uint32_t arm_short_en = 0;
  std::int32_t arm_short_mask = 0;
  std::int32_t tile_width = 0;
  std::int32_t tile_overlap_x = 0;
  std::int32_t tile_overlap_x_fast = 0;
  std::int32_t tile_overlap_y_traverse = 0;
  std::int32_t max_see_num = 0;
  std::int32_t max_seed_try_num = 0;
  std::int32_t max_seed_valid_try_num = 0;
  std::uint8_t smooth_enable = 0;
  std::uint8_t smooth_win_size = 0;
  std::uint8_t smooth_enable_flag = 0;  // no key sets it: always 0
  std::array<double, 4> sp_coef{};
};

struct DeInputExtendChop {
  std::array<std::int32_t, 4> extend_tar{};
  std::array<std::int32_t, 4> extend_ref{};
  std::array<std::int32_t, 4> chop{};
};

struct DeInputGpm {
  std::uint8_t enable = 0;
  std::array<std::int32_t, 16> x{};
  std::array<std::int32_t, 16> y{};
  std::array<std::uint16_t, 16> enable_bits_per_row{};
  std::int32_t texture_t0 = 0;
  std::int32_t texture_t1 = 0;
  std::int32_t active_t = 0;
  std::int32_t ncost_t = 0;
  std::uint8_t hist_dy_dist = 0;
  std::int32_t gp_ref_dy_t = 0;
  std::int32_t gp_ref_dy_t_neg = 0;
  std::uint8_t gp_enabled_cols = 0;
};

struct DeInputScheme {
  dpu_scheme_config record{};
  float d2d_params_unit = 0;  // as the text gives it, until d2d_params_unit_in_R_en decides about the record
};

struct DeInputConfig {
  DeInputMode mode;
  DeInputBasic basic;
  DeInputDisparity disparity;
  DeInputExtendChop extend_chop;
  DeInputGpm gpm;
  DeInputScheme scheme;
};

}  // namespace vq3900

#endif
