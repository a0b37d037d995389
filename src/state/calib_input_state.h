// The loaded calibration input configuration, one field a key.
#ifndef VQ3900_STATE_CALIB_INPUT_STATE_H
#define VQ3900_STATE_CALIB_INPUT_STATE_H

#include <cstdint>

namespace vq3900 {

struct CalibInputConfig {
  // section basic
  float baseline = 0;
  float ref_dist = 0;
  std::uint8_t cam_type = 0;
  std::uint8_t mirrored = 0;
  std::uint8_t mipi_channel_status = 0;

  // section rectify
  std::uint8_t distort_type = 0;  // 0 polynomial, 1 LUT, 2 both
  std::uint8_t rotate_type = 0;
  float src_img_scale = 0;
  std::int16_t src_img_left_chop = 0;
  std::int16_t src_img_right_chop = 0;
  std::int16_t src_img_top_chop = 0;
  std::int16_t src_img_bottom_chop = 0;
  float dst_focal_scale = 0;
  std::uint8_t dst_res_fixed = 0;
  std::int32_t lut_sample_bit = 0;
  float lut_extend_ratio = 0;
  float ir_l_comp_coeff = 0;
  float ir_r_comp_coeff = 0;
  float ldm_comp_coeff = 0;
  float ir_l_virtual_cx_offset = 0;
  float ir_r_virtual_cx_offset = 0;
  float ir_virtual_cy_offset = 0;

  // section d2d
  float disp_offset = 0;
  std::int32_t invalid_disp = 0;
  float d2d_params_unit = 0;
  std::int8_t depth_mode = 0;

  // section d2c
  std::int32_t clip_left_w_depth = 0;
  std::int32_t clip_top_h_depth = 0;
  std::int32_t clip_right_w_depth = 0;
  std::int32_t clip_bottom_h_depth = 0;
  float depth_scale = 0;
  std::int32_t clip_left_w_valid = 0;
  std::int32_t clip_top_h_valid = 0;
  std::int32_t clip_right_w_valid = 0;
  std::int32_t clip_bottom_h_valid = 0;
  float valid_scale = 0;
  std::int32_t clip_left_w_rgb = 0;
  std::int32_t clip_top_h_rgb = 0;
  std::int32_t clip_right_w_rgb = 0;
  std::int32_t clip_bottom_h_rgb = 0;
  std::int8_t d2d_params_unit_in_R_en = 0;
};

// Cameras of type 2 and 3 are stereo cameras with a mode of their own in the images.
constexpr bool is_stereo_camera_type(std::uint8_t cam_type) {
  return cam_type == 2 || cam_type == 3;
}

}  // namespace vq3900

#endif
