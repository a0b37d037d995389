// One sample of every block: a record, the call that writes it, and the registers that it stands for, worked out by
// hand. The numbers are chosen so that every field differs from its neighbours and every fixed-point value is exact.
#ifndef VQ3900_TESTS_SUPPORT_BLOCK_SAMPLES_H
#define VQ3900_TESTS_SUPPORT_BLOCK_SAMPLES_H

#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>

#include "support/elements.h"
#include "support/registers.h"

namespace vq3900::test::sample {

inline constexpr std::uint32_t kAll = 0xFFFFFFFF;
inline constexpr std::uint32_t kPairs = 0x0FFF0FFF;  // two 12-bit fields

// The control table with the values of its five registers.
inline Elements control(std::uint32_t word_0, std::uint32_t word_1, std::uint32_t d2c, std::uint32_t expand,
                        std::uint32_t d2d) {
  return {{0x50001000, 0x00013030, word_0},
          {0x50001028, 0x0000C400, word_1},
          {0x50001200, 0xDCFFFFFF, d2c},
          {0x5000120C, 0x000000FF, expand},
          {0x5000188C, 0x0000000E, d2d}};
}

// --- basic -----------------------------------------------------------------------------------------------------------

inline constexpr float kPbf = 36650388.0F / 1099511627776.0F;  // 1 / 30000 as a float, which is 36650388 / 2^40

inline DeBasicParams_S basic() {
  auto params = filled_with<DeBasicParams_S>(0);
  params.baseline = 50;
  params.focal_length_pix = 600;
  params.cam_mode = 1;
  params.ref_plane_dist = 1000;
  params.upsample_enable = 1;
  params.pbf = kPbf;
  params.upsample_aux_en = 1;
  params.upsample_main_en = 1;
  params.scale_mode = 2;
  params.in_ir_width = 1280;
  params.in_ir_height = 800;
  params.sbg2r_rotate = 1;
  return params;
}

// iZ0 = round(2^38 / 1000), PBF
inline Elements d2d_words() {
  return consecutive(0x50001204, kAll, {0x10624DD3, 0x022F3D94});
}

inline Elements basic_control_words() {
  return control(0x00013020, 0x0000C000, 0x0C1800C0, 0x55, 0);
}

inline std::int32_t write_basic() {
  const auto params = basic();
  return de_set_baisc_params_to_registers(&params);
}

// --- prefilter: window 7, images of 640 x 480 ------------------------------------------------------------------------

inline DePrefilterParams_S prefilter() {
  return {7, 33};
}

inline void set_image_size() {
  EXPECT_EQ(set_input_ir_resolution(480U << 16 | 640U), 0);
  EXPECT_EQ(set_prefilter_size_speckleTh(5, 0), 0);
}

inline Elements prefilter_words() {
  return joined({consecutive(0x50001080, 0x1FFFFFFF, {0x131703A0}),  // 1, 49, 7, size code
                 consecutive(0x50001084,
                             kAll,
                             {0x16BA2FDE,
                              0x18AC1B10,
                              0x11F4E3CF,
                              0x1667058C,
                              0x039FBFC9,
                              0x1A70855A,
                              0x148FBE2A,
                              0x042DBABA,
                              0x29DCBECF,
                              0x3CF3CF3C,
                              0,
                              0,
                              0,
                              0,
                              0}),
                 consecutive(0x500010D0, 0x00FFFFFF, {0x002801E0}),
                 consecutive(0x500010D4, kAll, {307200})});
}

inline std::int32_t write_prefilter() {
  const auto params = prefilter();
  return de_set_prefilter_params_to_registers(&params);
}

// --- extend chop: the same images, extended to 672 x 496 -------------------------------------------------------------

inline DeExtendChopParams_S extend_chop() {
  return {{1, 2, 3, 4}, {4, 5, 2, 3}, {15, 17, 6, 10}};
}

inline void set_extended_size() {
  set_image_size();
  const DeExtendChopParams_S params = extend_chop();
  EXPECT_EQ(set_extend_chop_params(params.extend_ref, params.extend_tar, params.chop), 0);
}

inline Elements extend_chop_words() {
  return {{0x50001070, 0x00FFFFFF, 0x002A01F0},
          {0x50001074, kAll, 491 * 663},
          {0x50001078, kPairs, 0x00010002},
          {0x5000107C, kPairs, 0x00030004},
          {0x500010C8, kPairs, 0x00040005},
          {0x500010CC, kPairs, 0x00020003},
          {0x500012D4, kPairs, 0x000F0011}};
}

inline std::int32_t write_extend_chop() {
  const auto params = extend_chop();
  return de_set_extend_chop_params_to_registers(&params);
}

// --- disparity -------------------------------------------------------------------------------------------------------

inline DeDispCalcParams_S disparity() {
  auto params = filled_with<DeDispCalcParams_S>(0);
  params.win_size = 9;
  params.min_disparity = -8;
  params.cost_strong_t = 0xDEF;
  params.cost_weak_t = 0xABC;
  params.conf_region_t = 0x43;
  params.conf_strong_t = 0x65;
  params.conf_grow_t = 0x21;
  params.grow_disp_diff_thr = 3;
  params.shadow_en = 1;
  params.shadow_ring_base = 1;
  params.shadow_win_size = 0x1A;
  params.shadow_smooth_size = 0xB;
  params.shadow_tex_thresh = 0x77;
  params.shadow_diff_per = 6;
  params.shadow_edge_preserving = 0x55;
  params.cost_shadow1_t = 0x432;
  params.cost_shadow2_t = 0x765;
  params.arm_len = 9;
  params.arm_short_en = 1;
  params.arm_short_mask = 0x2BCDEF01;
  params.tile_width = 320;
  params.tile_overlap_x = 5;
  params.tile_overlap_x_fast = 1;
  params.tile_overlap_y_traverse = 0x98;
  params.lrc_en = 1;
  params.lrc_thresh = 2;
  params.max_see_num = 0x78;
  params.max_seed_try_num = 0x123;
  params.max_seed_valid_try_num = 0x456;
  params.smooth_enable = 1;
  params.smooth_win_size = 5;
  params.smooth_enable_flag = 1;
  std::ranges::copy(std::array{0.5, -0.25, 1.0, 0.125}, params.sp_coef);
  return params;
}

inline Elements disparity_words() {
  return {{0x500010E0, 0x1FFF1FFF, 0x1F000200},  // a1 = -256 / 1024, a0 = 512 / 1024
          {0x500010E4, kAll, 0x00800400},        // a3 = 128 / 1024, a2 = 1024 / 1024
          {0x500012C0, kAll, 0x4040D140},
          {0x500012C4, kAll, 0x12345678},
          {0x500012C8, kAll, 0xAB214365},
          {0x500012CC, kAll, 0x89ABCDEF},
          {0x500012D0, kAll, 0x98765432},
          {0x500012E0, kAll, 0xC0550677},
          {0x500012E4, kAll, 0x00001A0B},
          {0x50001008, 0x00010F00, 0x00010500},
          {0x50001030, 0x1FFFFFF0, 0x09F80400},  // 9, -8, (9 - 1)^2
          {0x50001034, kAll, 0xABCDEF01}};
}

inline std::int32_t write_disparity() {
  const auto params = disparity();
  return de_set_disp_calc_params_to_registers(&params);
}

// --- global points: columns 1 to 10 of the 16 ------------------------------------------------------------------------

inline DeGpmParams_S gpm() {
  auto params = filled_with<DeGpmParams_S>(0);
  params.enable = 1;
  params.enable_mirror = 1;
  for (int i = 0; i < 16; ++i) {
    params.x_coordinate[i] = 0x100 + i;
    params.y_coordinate[i] = 0x200 + i;
    params.enable_bits_per_row[i] = static_cast<std::uint16_t>(0x10 + i);
    params.gp_col_enabled[i] = i >= 1 && i <= 10 ? 1 : 0;
  }
  params.gp_enabled_cols = 10;
  params.texture_t0 = 0x2AA;
  params.texture_t1 = 0x155;
  params.active_t = 0x1A5;
  params.ncost_t = 0x2D3;
  params.hist_dy_dist = 0x15;
  params.gp_ref_dy_t_neg = -5;
  params.gp_ref_dy_t = 5;
  params.gpm_config_flag = 1;
  return params;
}

inline Elements gpm_words() {
  return joined({consecutive(0x50001300,
                             0x00FFFFFF,
                             {0x00101100,
                              0x00103102,
                              0x00105104,
                              0x00107106,
                              0x00109108,
                              0x0010B10A,
                              0x0010D10C,
                              0x0010F10E,
                              0x00201200,
                              0x00203202,
                              0x00205204,
                              0x00207206,
                              0x00209208,
                              0x0020B20A,
                              0x0020D20C,
                              0x0020F20E}),
                 consecutive(0x50001340,
                             kAll,
                             {0x00110010,
                              0x00130012,
                              0x00150014,
                              0x00170016,
                              0x00190018,
                              0x001B001A,
                              0x001D001C,
                              0x001F001E,
                              0x8A1552AA,
                              0x001A52D3}),
                 consecutive(0x5000136C, kAll, {0x87654321, 0x000000A9}),
                 consecutive(0x50001374, 0x0000011F, {0x00000115}),
                 consecutive(0x50001368, 0x00FFFFFF, {0x00FFB005})});
}

// The status registers, with words of the single points that never reach the library.
inline Elements gp_status_words() {
  return joined({consecutive(0x5000137C, kAll, {0x8011A500, 0x7FF85FDF, 0x15502A95, 0x1FF7F7DF, 0x00100041}),
                 repeated(256, 0x50001400, kAll, 0xFFFFFFFF)});
}

// What those words stand for, the points being 0.
inline DeGpStatusParams_S gp_status() {
  auto status = filled_with<DeGpStatusParams_S>(0);
  std::ranges::copy(std::array{-2047, 0x1A5, 2047, -31, 0x1FDF}, status.status);
  std::ranges::copy(std::array{0x155, -22, 0x15}, status.triple[0]);
  std::ranges::copy(std::array{0x1FF, 0x1FDF, 0x1F}, status.triple[1]);
  std::ranges::copy(std::array{1, 1, 1}, status.triple[2]);
  return status;
}

inline std::int32_t write_gpm() {
  const auto params = gpm();
  return de_set_gpm_params_to_registers(&params);
}

// --- D2C -------------------------------------------------------------------------------------------------------------

inline constexpr DeCameraIntrinsic_S kDepth{512, 256, 320, 240, 640, 480};
inline constexpr DeCameraIntrinsic_S kColor{1024, 1024, 640, 480, 1280, 960};
inline constexpr DeExtrinsic_S kPose{{1, 0.5F, 0.25F, -0.5F, 1, 0.125F, 0.25F, -0.5F, 1}, {0.5F, -0.25F, 0.125F}};

inline D2cConfig d2c() {
  auto config = filled_with<D2cConfig>(0);
  config.recovery_mode_2 = 1;
  config.d2c_recovery_expand_width = 0.3F;
  config.d2c_buffer_position = 0x123;
  config.d2c_total_buffer_rows = 0x456;
  config.depth_sign = 1;
  return config;
}

inline Elements projection_words() {
  return consecutive(0x50001210,
                     kAll,
                     {0x4A000000,
                      0x18000000,
                      0xFFD00000,
                      0x00250000,  // 2.3125, 0.75, -24, 592
                      0xE7800000,
                      0x62000000,
                      0x01D80000,
                      0xFFF3C000,  // -0.765625, 3.0625, 118, -196
                      0x20000000,
                      0x80000000,
                      0x54000000,
                      0x01000000});  // 2^-11, -2^-9, 1.3125, 0.125
}

// Depth mode 1: bit 31.
inline Elements d2c_control_words() {
  return control(0, 0, 0xCC456123, 77, 0);
}

inline std::int32_t write_d2c() {
  const D2cConfig config = d2c();
  return de_set_d2c_params_to_registers(&kDepth, &kColor, &kPose, &config);
}

// --- D2D -------------------------------------------------------------------------------------------------------------

inline D2dConfig d2d() {
  return {3, 1, 1};
}

inline Elements d2d_control_words() {
  return control(0, 0, 0x0C1800C0, 0x55, 6);
}

inline std::int32_t write_d2d() {
  const auto params = d2d();
  return de_set_d2d_params_to_registers(&params);
}

// --- rectification, stereo -------------------------------------------------------------------------------------------

inline DeRectifyParams_S rectify() {
  return {0, 1, {}, {600, 601, 640, 400, 1280, 800}, {700, 701, 641, 401, 640, 480}};
}

inline DeRectifyCtrlParams_S rectify_ctrl() {
  return {{}, 1, 0, 1, 0, {}, 0x123};
}

// Matrix and polynomial correction of both cameras; the virtual intrinsics come with the record.
inline void set_rectification() {
  const RectifyIntrinsic other{1, 2, 3, 4, 5, 6};
  const float identity[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
  const float distortion_0[8] = {-0.25F, 0.125F, 0.0625F, 0, 0, 0, 0.0625F, -0.03125F};
  const float distortion_1[8] = {0.5F, 0, 0, 0, 0, 0, 0, 0};
  const float camera_0[4] = {512, 256, 320, 240};
  const float camera_1[4] = {1024, 512, 512, 128};
  EXPECT_EQ(set_camera_mode(1, 1), 0);
  EXPECT_EQ(set_rectify_params_brown(0, &other, distortion_0, identity, camera_0), 0);
  EXPECT_EQ(set_rectify_params_brown(1, &other, distortion_1, identity, camera_1), 0);
}

inline Elements rectify_words() {
  return joined(
      {consecutive(0x52080000,
                   kAll,
                   {0x03C00000,
                    0x00200000,
                    0x00100000,
                    0x00200000,
                    0x03E80000,
                    0x03F80000,
                    0x03F00000,
                    0x00100000,
                    0x00300000}),
       consecutive(0x52080030, kAll, {0x40000000, 0, 0xD8000000, 0, 0x80000000, 0xC4000000, 0, 0, 0x80000000}),
       consecutive(0x52080060, kAll, {0x25800000, 0x25900000, 0x28000000, 0x19000000}),
       consecutive(0x52080078, kPairs, {0x03200500})});
}

inline Elements sbg2r_words() {
  return joined(
      {consecutive(0x52000000, kAll, {0x00800000, 0, 0, 0, 0, 0, 0, 0, 0}),
       consecutive(0x52000030, kAll, {0x20000000, 0, 0xE0000000, 0, 0x40000000, 0xF0000000, 0, 0, 0x80000000}),
       consecutive(0x52000060, kAll, {0x2BC00000, 0x2BD00000, 0x28100000, 0x19100000}),
       consecutive(0x52000078, kPairs, {0x01E00280})});
}

// Camera 0 on, camera 1 off; the start rows, which both registers hold, differ.
inline Elements rectify_ctrl_words() {
  return {{0x52080070, 0x0FFF041F, 0x0123040B}, {0x52000070, 0x0FFF001F, 0x04560004}, {0x520000A0, 0x1E, 0xA}};
}

inline std::int32_t write_rectify() {
  const DeRectifyParams_S params = rectify();
  const DeRectifyCtrlParams_S ctrl = rectify_ctrl();
  return de_set_rectify_params_to_registers(&params, &ctrl);
}

}  // namespace vq3900::test::sample

#endif
