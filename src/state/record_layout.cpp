// What the library takes for granted of a machine, and the layout of the public records, which is part of the
// interface: sizes and the offsets that files and callers rely on.
#include "vq3900_depth_engine.h"

#include <cfloat>
#include <climits>
#include <cstddef>
#include <limits>
#include <type_traits>

static_assert(CHAR_BIT == 8, "bytes have 8 bits");
static_assert(sizeof(std::size_t) == 8 && sizeof(void*) == 8, "the machine has 64 bits");
static_assert(std::numeric_limits<float>::is_iec559 && std::numeric_limits<double>::is_iec559 && sizeof(float) == 4 &&
                  sizeof(double) == 8,
              "numbers are those of IEC 559");
static_assert(FLT_EVAL_METHOD == 0, "each operation is rounded to the type that it is written in");

static_assert(sizeof(DeRegElement_S) == 12 && offsetof(DeRegElement_S, mask) == 4 &&
              offsetof(DeRegElement_S, value) == 8);

static_assert(sizeof(DeBasicParams_S) == 44);
static_assert(offsetof(DeBasicParams_S, cam_mode) == 8 && offsetof(DeBasicParams_S, depth_mode) == 12 &&
              offsetof(DeBasicParams_S, ref_plane_dist) == 16 && offsetof(DeBasicParams_S, upsample_enable) == 20 &&
              offsetof(DeBasicParams_S, pbf) == 24 && offsetof(DeBasicParams_S, upsample_aux_en) == 28 &&
              offsetof(DeBasicParams_S, upsample_main_en) == 29 && offsetof(DeBasicParams_S, scale_mode) == 32 &&
              offsetof(DeBasicParams_S, in_ir_width) == 36 && offsetof(DeBasicParams_S, in_ir_height) == 38 &&
              offsetof(DeBasicParams_S, sbg2r_rotate) == 40);

static_assert(sizeof(DePrefilterParams_S) == 2);
static_assert(sizeof(DeExtendChopParams_S) == 48 && offsetof(DeExtendChopParams_S, chop) == 16 &&
              offsetof(DeExtendChopParams_S, extend_tar) == 32);

static_assert(sizeof(DeDispCalcParams_S) == 152);
static_assert(offsetof(DeDispCalcParams_S, cost_strong_t) == 8 && offsetof(DeDispCalcParams_S, shadow_en) == 32 &&
              offsetof(DeDispCalcParams_S, shadow_win_size) == 36 && offsetof(DeDispCalcParams_S, arm_len) == 64 &&
              offsetof(DeDispCalcParams_S, tile_width) == 76 && offsetof(DeDispCalcParams_S, lrc_en) == 92 &&
              offsetof(DeDispCalcParams_S, max_see_num) == 100 && offsetof(DeDispCalcParams_S, smooth_enable) == 112 &&
              offsetof(DeDispCalcParams_S, sp_coef) == 120);
static_assert(sizeof(DeGrowMatchParams_S) == 24);
static_assert(sizeof(DeShadowCheckParams_S) == 32 && offsetof(DeShadowCheckParams_S, shadow_win_size) == 4);
static_assert(sizeof(DeArmShortParams_S) == 12);
static_assert(sizeof(DeTileParams_S) == 16);
static_assert(sizeof(DeSeedParams_S) == 12);
static_assert(sizeof(DeLrcParams_S) == 8);
static_assert(sizeof(DeSmoothFilterParams_S) == 3);

static_assert(sizeof(DeGpmParams_S) == 216);
static_assert(offsetof(DeGpmParams_S, x_coordinate) == 4 && offsetof(DeGpmParams_S, y_coordinate) == 68 &&
              offsetof(DeGpmParams_S, enable_bits_per_row) == 132 && offsetof(DeGpmParams_S, gp_enabled_cols) == 164 &&
              offsetof(DeGpmParams_S, gp_col_enabled) == 165 && offsetof(DeGpmParams_S, texture_t0) == 184 &&
              offsetof(DeGpmParams_S, hist_dy_dist) == 200 && offsetof(DeGpmParams_S, gp_ref_dy_t) == 208 &&
              offsetof(DeGpmParams_S, gpm_config_flag) == 212);
static_assert(sizeof(DeGpmConfig_S) == 28);
static_assert(sizeof(DeGpStatusParams_S) == 3128 && offsetof(DeGpStatusParams_S, triple) == 20 &&
              offsetof(DeGpStatusParams_S, point) == 56);

static_assert(sizeof(D2cConfig) == 32 && offsetof(D2cConfig, d2c_recovery_expand_width) == 12 &&
              offsetof(D2cConfig, depth_sign) == 24);
static_assert(sizeof(D2dConfig) == 3);
static_assert(sizeof(DeCameraIntrinsic_S) == 20 && offsetof(DeCameraIntrinsic_S, width) == 16);
static_assert(sizeof(DeExtrinsic_S) == 48);
static_assert(sizeof(DeRectifyParams_S) == 44 && offsetof(DeRectifyParams_S, cam0) == 4 &&
              offsetof(DeRectifyParams_S, cam1) == 24);
static_assert(sizeof(DeRectifyCtrlParams_S) == 12 && offsetof(DeRectifyCtrlParams_S, sbg_en) == 2 &&
              offsetof(DeRectifyCtrlParams_S, start_rows) == 8);

static_assert(sizeof(dpu_mode) == 32 && offsetof(dpu_mode, laser_type) == 16 && offsetof(dpu_mode, in_ir_res) == 20 &&
              offsetof(dpu_mode, rectify_out_valid_res) == 24 && offsetof(dpu_mode, chop_out_res) == 28);
static_assert(sizeof(dpu_scheme_config) == 24 && offsetof(dpu_scheme_config, scheme_flags) == 12 &&
              offsetof(dpu_scheme_config, reserved) == 16);

static_assert(sizeof(d2c_cfg_item) == 72 && offsetof(d2c_cfg_item, desc) == 16 &&
              offsetof(d2c_cfg_item, res_chop_out) == 32 && offsetof(d2c_cfg_item, d2d_params_unit) == 44 &&
              offsetof(d2c_cfg_item, res_d2c_in) == 52 && offsetof(d2c_cfg_item, scale) == 60 &&
              offsetof(d2c_cfg_item, extend) == 64);
static_assert(sizeof(ir_pre_cfg_item) == 156 && offsetof(ir_pre_cfg_item, reserved) == 32 &&
              offsetof(ir_pre_cfg_item, exp_time_range) == 36 && offsetof(ir_pre_cfg_item, target_brightness) == 84 &&
              offsetof(ir_pre_cfg_item, enable_bits) == 112 && offsetof(ir_pre_cfg_item, box_weight_16) == 124);
static_assert(sizeof(de_config_flash_input) == 528 && offsetof(de_config_flash_input, dpu_config_count) == 8 &&
              offsetof(de_config_flash_input, d2c_config_path) == 9 &&
              offsetof(de_config_flash_input, ir_pre_config_path) == 265);

static_assert(sizeof(DeCalibCamera_S) == 64 && offsetof(DeCalibCamera_S, distortion) == 24 &&
              offsetof(DeCalibCamera_S, polynomial_param) == 56);
static_assert(sizeof(CalibrateParamsMulti) == 296 && offsetof(CalibrateParamsMulti, model_override) == 4 &&
              offsetof(CalibrateParamsMulti, left_ir) == 8 && offsetof(CalibrateParamsMulti, right_ir) == 72 &&
              offsetof(CalibrateParamsMulti, rgb) == 136 && offsetof(CalibrateParamsMulti, ir_rotation) == 200 &&
              offsetof(CalibrateParamsMulti, rgb_translation) == 284);
static_assert(sizeof(DeStereoRectifyParams_S) == 244 && offsetof(DeStereoRectifyParams_S, cam1_distortion) == 20 &&
              offsetof(DeStereoRectifyParams_S, cam1_rotation) == 52 &&
              offsetof(DeStereoRectifyParams_S, cam0_rectified) == 88 &&
              offsetof(DeStereoRectifyParams_S, cam0_rotation) == 140 &&
              offsetof(DeStereoRectifyParams_S, cam1) == 176 && offsetof(DeStereoRectifyParams_S, cam0) == 196 &&
              offsetof(DeStereoRectifyParams_S, reserved) == 216 &&
              offsetof(DeStereoRectifyParams_S, left_temperature) == 220);
static_assert(sizeof(DeCameraD2CParams_S) == 172 && offsetof(DeCameraD2CParams_S, zero) == 60 &&
              offsetof(DeCameraD2CParams_S, color_distortion) == 92 && offsetof(DeCameraD2CParams_S, rotation) == 124 &&
              offsetof(DeCameraD2CParams_S, translation) == 160);
static_assert(sizeof(DepthCalcParams_S) == 28 && sizeof(DeDepthConfig_S) == 16);
static_assert(sizeof(RectifyLutInfo) == 56 && offsetof(RectifyLutInfo, dx) == 40 && offsetof(RectifyLutInfo, dy) == 48);
static_assert(sizeof(LutSection) == 16 && offsetof(LutSection, data) == 8);

static_assert(sizeof(DeCalibRecordCamera_S) == 2016 && offsetof(DeCalibRecordCamera_S, distortion) == 24 &&
              offsetof(DeCalibRecordCamera_S, polynomial_param) == 56 &&
              offsetof(DeCalibRecordCamera_S, reserved) == 64);
static_assert(sizeof(DeCalibRecord_S) == 6152 && offsetof(DeCalibRecord_S, model_override) == 4 &&
              offsetof(DeCalibRecord_S, left_ir) == 8 && offsetof(DeCalibRecord_S, right_ir) == 2024 &&
              offsetof(DeCalibRecord_S, rgb) == 4040 && offsetof(DeCalibRecord_S, ir_rotation) == 6056 &&
              offsetof(DeCalibRecord_S, ir_translation) == 6092 && offsetof(DeCalibRecord_S, rgb_rotation) == 6104 &&
              offsetof(DeCalibRecord_S, rgb_translation) == 6140);
static_assert(sizeof(DeAlignRecord_S) == 976);
static_assert(sizeof(CalibFlashInput_S) == 56 && offsetof(CalibFlashInput_S, calib_params_file_num) == 8 &&
              offsetof(CalibFlashInput_S, config_files) == 16 && offsetof(CalibFlashInput_S, config_file_num) == 24 &&
              offsetof(CalibFlashInput_S, calib_records) == 32 && offsetof(CalibFlashInput_S, calib_record_num) == 40 &&
              offsetof(CalibFlashInput_S, alignment_switch) == 48);

static_assert(std::is_trivially_copyable_v<DeDispCalcParams_S> && std::is_standard_layout_v<DeDispCalcParams_S>);
