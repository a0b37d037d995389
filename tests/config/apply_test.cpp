#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "state/engine.h"
#include "support/capture.h"
#include "support/de_input_text.h"
#include "support/engine_fixture.h"
#include "support/fields.h"
#include "support/registers.h"

namespace vq3900::test {
namespace {

constexpr const char* kNoImageSize = "missing setting prefilter imgage size,namely ir resolution\n";
constexpr const char* kBadPrefilterSize = "unsupported size! size: 5, 7,9 \n";
constexpr const char* kRotationInStereo = "stereo mode:  nonsupport rotation !\n";

class ApplyConfig : public EngineTest {
 protected:
  static void load(const DeInputText& text) {
    const TempFile file(text.text());
    ASSERT_EQ(load_de_input_configs(file.path()), 0);
  }

  static Outcome apply() { return outcome_of(set_depth_engine_config); }

  static Outcome load_and_apply(const DeInputText& text) {
    load(text);
    return apply();
  }

  // A configuration for both cameras that applies.
  static DeInputText stereo() {
    return DeInputText()
        .set("basic", "cam_mode", "1")
        .set("basic", "rectify_mode", "2")
        .set("basic", "rotate_90_en", "0");
  }

  static std::pair<int, int> cameras_on() { return {engine().rectify.en0[0], engine().rectify.en0[1]}; }
};

// What the complete text leaves in the blocks.

DeBasicParams_S expected_basic() {
  auto basic = filled_with<DeBasicParams_S>(0);
  basic.depth_mode = 1;
  basic.upsample_enable = 1;
  basic.upsample_main_en = 1;
  basic.scale_mode = 2;
  basic.in_ir_width = 1280;
  basic.in_ir_height = 800;
  basic.sbg2r_rotate = 1;
  return basic;
}

D2cConfig expected_d2c() {
  auto d2c = filled_with<D2cConfig>(0);
  d2c.recovery_mode_2 = 1;
  d2c.d2c_recovery_expand_width = 0.25F;
  d2c.d2c_buffer_position = 123;
  d2c.d2c_total_buffer_rows = 456;
  d2c.depth_sign = 1;
  return d2c;
}

DeDispCalcParams_S expected_disparity() {
  auto params = filled_with<DeDispCalcParams_S>(0);
  params.win_size = 9;
  params.min_disparity = -8;
  params.cost_strong_t = 101;
  params.cost_weak_t = 102;
  params.conf_region_t = 103;
  params.conf_strong_t = 104;
  params.conf_grow_t = 105;
  params.grow_disp_diff_thr = 2;
  params.shadow_en = 1;
  params.shadow_ring_base = 1;
  params.shadow_win_size = 11;
  params.shadow_smooth_size = 12;
  params.shadow_tex_thresh = 13;
  params.shadow_diff_per = 14;
  params.shadow_edge_preserving = 15;
  params.cost_shadow1_t = 201;
  params.cost_shadow2_t = 202;
  params.arm_len = 6;
  params.arm_short_en = 1;
  params.arm_short_mask = 0x1234567;
  params.tile_width = 640;
  params.tile_overlap_x = 4;
  params.tile_overlap_x_fast = 1;
  params.tile_overlap_y_traverse = 32;
  params.lrc_en = 1;
  params.lrc_thresh = 3;
  params.max_see_num = 51;
  params.max_seed_try_num = 52;
  params.max_seed_valid_try_num = 53;
  params.smooth_enable = 1;
  params.smooth_win_size = 5;
  params.smooth_enable_flag = 1;  // derived, although the configuration holds 0
  const double coefficients[] = {0.5, -0.25, 1.5, 0.75};
  std::memcpy(params.sp_coef, coefficients, sizeof coefficients);
  return params;
}

DeGpmParams_S expected_gpm() {
  auto gpm = filled_with<DeGpmParams_S>(0);
  gpm.enable = 1;
  gpm.enable_mirror = 1;
  for (int i = 0; i < 16; ++i) {
    gpm.x_coordinate[i] = 10 + i;
    gpm.y_coordinate[i] = 30 + i;
  }
  gpm.y_coordinate[0] = -30;
  gpm.enable_bits_per_row[0] = 1;
  gpm.enable_bits_per_row[1] = 4;
  gpm.enable_bits_per_row[15] = 0x8000;
  gpm.gp_enabled_cols = 3;
  gpm.gp_col_enabled[0] = gpm.gp_col_enabled[2] = gpm.gp_col_enabled[15] = 1;
  gpm.texture_t0 = 61;
  gpm.texture_t1 = 62;
  gpm.active_t = 63;
  gpm.ncost_t = 64;
  gpm.hist_dy_dist = 65;
  gpm.gp_ref_dy_t_neg = -66;
  gpm.gp_ref_dy_t = 66;
  return gpm;
}

void expect_rectify() {
  const RectifyState& rectify = engine().rectify;
  EXPECT_EQ(rectify.en0, (std::array<std::uint8_t, 2>{0, 1}));
  EXPECT_EQ(rectify.en1, (std::array<std::uint8_t, 2>{0, 1}));
  EXPECT_EQ(rectify.kk_en, 0);
  EXPECT_EQ(rectify.lut_en0, 1);
  EXPECT_EQ(rectify.lut_en1, 1);
  EXPECT_EQ(rectify.rectify_common, 0);
  EXPECT_EQ(rectify.start_rows, 321U);
  EXPECT_EQ(rectify.sbg_en, 1);
  EXPECT_EQ(rectify.rotate_90_en, 1);
  EXPECT_EQ(rectify.rotate_clockwise, 1);
  EXPECT_EQ(rectify.sub_mode_sel, 5);
}

void expect_everything_applied() {
  EXPECT_EQ(bytes_of(engine().basic), bytes_of(expected_basic()));
  EXPECT_EQ(bytes_of(engine().d2c.config), bytes_of(expected_d2c()));
  EXPECT_EQ(bytes_of(engine().d2d), bytes_of(D2dConfig{2, 0, 1}));
  EXPECT_EQ(bytes_of(engine().prefilter.params), bytes_of(DePrefilterParams_S{7, 0}));
  EXPECT_EQ(engine().prefilter.image_width, 2560);  // upsampled
  EXPECT_EQ(engine().prefilter.image_height, 1600);
  EXPECT_EQ(bytes_of(engine().extend_chop.params),
            bytes_of(DeExtendChopParams_S{{12, 13, 6, 7}, {4, 5, 2, 3}, {16, 17, 8, 9}}));
  EXPECT_EQ(engine().extend_chop.extended_width, 2593);  // 16 + 17 + 2560
  EXPECT_EQ(engine().extend_chop.extended_height, 1617);
  EXPECT_EQ(bytes_of(engine().disparity), bytes_of(expected_disparity()));
  EXPECT_EQ(bytes_of(engine().gpm.params), bytes_of(expected_gpm()));
  expect_rectify();
}

// --- what arrives

TEST_F(ApplyConfig, EveryValueReachesItsBlock) {
  EXPECT_EQ(load_and_apply({}), silent_success());
  expect_everything_applied();
}

TEST_F(ApplyConfig, AppliedValuesReachTheRegistersTheyBelongTo) {
  load_and_apply({});
  convert_basic_config_to_registers();
  convert_d2c_ctrl_to_register_elements();
  convert_d2d_config_to_register_element();
  convert_prefilter_float_to_registers();
  convert_extend_chop_float_to_registers();
  convert_calc_disp_float_to_registers();
  convert_gpm_float_to_registers();
  convert_rectify_control_float_to_register();
  const struct {
    std::uint32_t address;
    std::uint32_t bits;
    std::uint32_t value;
  } rows[] = {
      {0x50001000, 0x00011030, 0x00001020},  // camera mode, upsampling, scale mode
      {0x50001028, 0x00004400, 0x00004400},  // main upsampling, smoothing
      {0x50001200, 0xFFFFFFFF, 0xCC1C807B},  // D2C control
      {0x5000120C, 0x000000FF, 0x00000040},  // expand width
      {0x5000188C, 0x0000000E, 0x00000004},  // depth unit
      {0x50001080, 0x1FFF7FFF, 0x131703A0},  // prefilter: 49, 7, size code
      {0x500010D0, 0x00FFFFFF, 0x00A00640},  // prefilter image
      {0x50001070, 0x00FFFFFF, 0x00A21651},  // extended image
      {0x50001078, 0x0FFF0FFF, 0x000C000D},  // extend_ref
      {0x500010C8, 0x0FFF0FFF, 0x00040005},  // chop
      {0x500012D4, 0x0FFF0FFF, 0x00100011},  // extend_tar
      {0x500010E0, 0x1FFF1FFF, 0x1F000200},  // a1 -256, a0 512
      {0x500012C0, 0xFFFFFFFF, 0x4040C280},  // tiles
      {0x500012C4, 0xFFFFFFFF, 0x03403533},  // seeds
      {0x500012D0, 0xFFFFFFFF, 0x200CA0C9},  // tile overlap, shadow costs
      {0x50001030, 0x1FFFFFF0, 0x09F80400},  // window 9, disparity -8, 64
      {0x50001034, 0xBFFFFFFF, 0x81234567},  // short arm
      {0x50001320, 0x00FFFFFF, 0x0001FFE2},  // y 31, -30
      {0x50001360, 0x9F7FF7FF, 0x8303E03D},  // enable, columns, textures
      {0x50001368, 0x00FFFFFF, 0x00FBE042},  // -66, 66
      {0x5000136C, 0xFFFFFFFF, 0x00000F20},  // columns 0, 2, 15
      {0x52080070, 0x0FFF041F, 0x01410014},  // camera 0: LUT, start rows
      {0x52000070, 0x0FFF001F, 0x01410017},  // camera 1: on as well
      {0x520000A0, 0x0000001E, 0x0000001E},  // sbg2r
  };
  for (const auto& row : rows)
    EXPECT_EQ(word_at(row.address) & row.bits, row.value) << std::hex << row.address;
}

TEST_F(ApplyConfig, EverySwitchArrivesApartFromTheOthers) {
  const struct {
    const char* section;
    const char* key;
    int (*applied)(const Engine&);
  } rows[] = {
      {"basic", "upsample_enable", [](const Engine& e) { return int{e.basic.upsample_enable}; }},
      {"basic", "rotate_90_en", [](const Engine& e) { return int{e.rectify.rotate_90_en}; }},
      {"basic", "rotate_clockwise", [](const Engine& e) { return int{e.rectify.rotate_clockwise}; }},
      {"basic", "sbg_en", [](const Engine& e) { return int{e.rectify.sbg_en}; }},
      {"basic", "depth_sign", [](const Engine& e) { return int{e.d2c.config.depth_sign}; }},
      {"disparity", "lrc_en", [](const Engine& e) { return static_cast<int>(e.disparity.lrc_en); }},
      {"disparity", "shadow_en", [](const Engine& e) { return int{e.disparity.shadow_en}; }},
      {"disparity", "shadow_ring_base", [](const Engine& e) { return int{e.disparity.shadow_ring_base}; }},
      {"disparity", "arm_short_en", [](const Engine& e) { return static_cast<int>(e.disparity.arm_short_en); }},
      {"disparity", "smooth_enable", [](const Engine& e) { return int{e.disparity.smooth_enable_flag}; }},
      {"gpm", "enable", [](const Engine& e) { return int{e.gpm.params.enable}; }},
      {"scheme", "hw_d2d_en", [](const Engine& e) { return int{e.d2d.hw_d2d_enable}; }},
  };
  for (const auto& off : rows) {
    EXPECT_EQ(load_and_apply(DeInputText().set(off.section, off.key, "0")), silent_success());
    for (const auto& row : rows)
      EXPECT_EQ(row.applied(engine()), &row == &off ? 0 : 1) << row.key << " without " << off.key;
  }
}

TEST_F(ApplyConfig, MinimumDisparityIsNarrowedTo8Bits) {
  const std::pair<const char*, int> rows[] = {{"127", 127}, {"-128", -128}, {"300", 44}, {"-200", 56}, {"128", -128}};
  for (const auto& [text, disparity] : rows) {
    EXPECT_EQ(load_and_apply(DeInputText().set("disparity", "min_disparity", text)), silent_success());
    EXPECT_EQ(engine().disparity.min_disparity, disparity) << text;
  }
}

TEST_F(ApplyConfig, NegativeTuningValuesArriveAsTheirBits) {
  load_and_apply(DeInputText().set("disparity", "win_size", "-1").set("basic", "d2c_buffer_position", "-2"));
  EXPECT_EQ(engine().disparity.win_size, 0xFFFFFFFFU);
  EXPECT_EQ(engine().d2c.config.d2c_buffer_position, 0xFFFFFFFEU);
}

// --- rectification

TEST_F(ApplyConfig, RectifyModeSwitchesTheCameraInSingleCameraMode) {
  const std::pair<const char*, std::pair<int, int>> rows[] = {
      {"0", {1, 0}}, {"1", {0, 1}}, {"3", {0, 0}}, {"255", {0, 0}}};
  for (const auto& [mode, cameras] : rows) {
    EXPECT_EQ(load_and_apply(DeInputText().set("basic", "rectify_mode", mode)), silent_success()) << mode;
    EXPECT_EQ(cameras_on(), cameras) << mode;
    EXPECT_EQ(engine().rectify.start_rows, 321U);
  }
}

TEST_F(ApplyConfig, RectifyModeSwitchesBothCamerasInStereoMode) {
  EXPECT_EQ(load_and_apply(stereo()), silent_success());
  EXPECT_EQ(cameras_on(), (std::pair{1, 1}));
  EXPECT_EQ(load_and_apply(stereo().set("basic", "rectify_mode", "3")), silent_success());
  EXPECT_EQ(cameras_on(), (std::pair{0, 0}));
}

TEST_F(ApplyConfig, GlobalPointsDecideTheCommonRectificationInStereoMode) {
  load_and_apply(stereo().set("gpm", "enable", "false"));
  EXPECT_EQ(engine().rectify.rectify_common, 0);
  load_and_apply(stereo());
  EXPECT_EQ(engine().rectify.rectify_common, 1);
  EXPECT_EQ(engine().basic.upsample_aux_en, 1);
}

TEST_F(ApplyConfig, UnknownDistortTypeIsIgnored) {
  EXPECT_EQ(load_and_apply(DeInputText().set("basic", "distort_type", "3")), silent_success());
  EXPECT_EQ(engine().rectify.kk_en + engine().rectify.lut_en0 + engine().rectify.lut_en1, 0);
  EXPECT_EQ(engine().d2c.config.d2c_buffer_position, 123U);
}

// --- failures

TEST_F(ApplyConfig, BeforeAnyLoadTheExtendChopStepFails) {
  EXPECT_EQ(apply(), (Outcome{-5, "set_extend_chop_params error!\n", std::string(kBadPrefilterSize) + kNoImageSize}));
  EXPECT_EQ(cameras_on(), (std::pair{1, 0}));  // rectify_mode 0
  EXPECT_EQ(engine().rectify.kk_en, 1);        // distort_type 0
}

TEST_F(ApplyConfig, RefusedCameraModeStopsTheFirstStep) {
  EXPECT_EQ(load_and_apply(DeInputText().set("basic", "cam_mode", "2").set("basic", "depth_mode", "7")),
            prints_out(-1, "set_camera_mode error!\n"));
  auto basic = filled_with<DeBasicParams_S>(0);
  basic.depth_mode = 7;  // stored even so
  EXPECT_EQ(bytes_of(engine().basic), bytes_of(basic));
}

TEST_F(ApplyConfig, RefusedRectifyStatusKeepsTheStepsBefore) {
  EXPECT_EQ(load_and_apply(DeInputText().set("basic", "rectify_mode", "2").set("basic", "cam_mode", "0")),
            prints_out(-2, "set_rectify_status error!\n"));
  auto basic = expected_basic();
  basic.sbg2r_rotate = 0;
  EXPECT_EQ(bytes_of(engine().basic), bytes_of(basic));
  EXPECT_EQ(engine().rectify.start_rows, 0U);
  EXPECT_EQ(engine().rectify.rotate_90_en, 0);
  EXPECT_EQ(bytes_of(engine().d2c.config), bytes_of(D2cConfig{}));
}

TEST_F(ApplyConfig, OneCameraInStereoModeIsRefused) {
  for (const char* const mode : {"0", "1"}) {
    EXPECT_EQ(load_and_apply(stereo().set("basic", "rectify_mode", mode)),
              prints_out(-2, "set_rectify_status error!\n"));
    EXPECT_EQ(engine().rectify.rectify_common, 1);
    EXPECT_EQ(cameras_on(), (std::pair{0, 0}));
  }
}

TEST_F(ApplyConfig, RefusedRotationKeepsTheStepsBefore) {
  EXPECT_EQ(load_and_apply(stereo().set("basic", "rotate_90_en", "1")),
            (Outcome{-3, "set_rectify_sbg2r_config error!\n", kRotationInStereo}));
  EXPECT_EQ(engine().basic.cam_mode, 1U);
  EXPECT_EQ(engine().basic.scale_mode, 2U);
  EXPECT_EQ(engine().basic.upsample_aux_en, 1);
  EXPECT_EQ(engine().basic.in_ir_height, 800);
  EXPECT_EQ(cameras_on(), (std::pair{1, 1}));
  EXPECT_EQ(engine().rectify.rotate_90_en, 1);
  EXPECT_EQ(engine().rectify.sbg_en, 0);
  EXPECT_EQ(engine().rectify.lut_en0, 0);
  EXPECT_EQ(bytes_of(engine().d2c.config), bytes_of(D2cConfig{}));
}

TEST_F(ApplyConfig, MissingImageSizeKeepsTheStepsBefore) {
  EXPECT_EQ(load_and_apply(DeInputText().set("mode", "in_ir_res", "{0,0}")),
            (Outcome{-5, "set_extend_chop_params error!\n", kNoImageSize}));
  EXPECT_EQ(bytes_of(engine().d2c.config), bytes_of(expected_d2c()));
  EXPECT_EQ(bytes_of(engine().d2d), bytes_of(D2dConfig{2, 0, 1}));
  EXPECT_EQ(engine().prefilter.params.pre_win_size, 7);
  EXPECT_EQ(engine().extend_chop.params.chop[0], 4);  // stored even so
  EXPECT_EQ(engine().extend_chop.extended_width, 0);
  EXPECT_EQ(bytes_of(engine().disparity), bytes_of(DeDispCalcParams_S{}));
  EXPECT_EQ(bytes_of(engine().gpm.params), bytes_of(DeGpmParams_S{}));
}

TEST_F(ApplyConfig, RefusedPrefilterSizeIsNoFailureOfItsOwn) {
  const DeInputText text = DeInputText().set("disparity", "pre_win_size", "6");
  EXPECT_EQ(load_and_apply(text),
            (Outcome{-5, "set_extend_chop_params error!\n", std::string(kBadPrefilterSize) + kNoImageSize}));
  EXPECT_EQ(load_and_apply({}), silent_success());
  EXPECT_EQ(load_and_apply(text), prints_err(0, kBadPrefilterSize));  // the image size is there by now
  expect_everything_applied();
}

TEST_F(ApplyConfig, FailureLeavesTheLastErrorAlone) {
  const char* const before = de_get_error_str();
  apply();
  EXPECT_EQ(de_get_error_str(), before);
}

TEST_F(ApplyConfig, GoodConfigurationAfterAFailedOneIsAppliedWhole) {
  apply();
  load_and_apply(DeInputText().set("basic", "cam_mode", "2"));
  load_and_apply(DeInputText().set("basic", "rectify_mode", "2"));
  EXPECT_EQ(load_and_apply({}), silent_success());
  EXPECT_EQ(engine().rectify.kk_en, 1);  // set by the first call, and never cleared
  engine().rectify.kk_en = 0;
  expect_everything_applied();
}

TEST_F(ApplyConfig, SecondCallRepeatsTheWholeSequence) {
  load_and_apply({});
  set_d2d_unit(0);
  set_camera_mode(1, 0);
  set_min_disp(5);
  set_gpm_enable(0);
  set_input_ir_resolution(0x00010001);
  set_rectify_status(0, 0, 1);
  EXPECT_EQ(apply(), silent_success());
  expect_everything_applied();
}

// --- the records for the caller

std::uint32_t reported_ref_dist() {
  auto scheme = filled_with<dpu_scheme_config>(0xEE);
  get_dpu_scheme_config(&scheme);
  return scheme.ref_dist;
}

TEST_F(ApplyConfig, RefDistIsZeroedInStereoModeAlone) {
  load_and_apply({});
  EXPECT_EQ(reported_ref_dist(), 700U);
  load(stereo());
  EXPECT_EQ(reported_ref_dist(), 700U);
  EXPECT_EQ(apply(), silent_success());
  EXPECT_EQ(reported_ref_dist(), 0U);
}

TEST_F(ApplyConfig, FailedCallKeepsRefDist) {
  load_and_apply(stereo().set("mode", "in_ir_res", "{0,0}"));
  EXPECT_EQ(reported_ref_dist(), 700U);
}

TEST_F(ApplyConfig, SchemeRecordIsCopiedWhole) {
  load({});
  auto scheme = filled_with<dpu_scheme_config>(0xEE);
  get_dpu_scheme_config(&scheme);
  EXPECT_EQ(bytes_of(scheme), bytes_of(dpu_scheme_config{40, 50, 700, 0x3F, 0.0}));
  get_dpu_scheme_config(nullptr);
}

TEST_F(ApplyConfig, ModeRecordIsCopiedWhole) {
  load({});
  auto expected = filled_with<dpu_mode>(0);
  std::memcpy(expected.dpu_desc, "mono 1280x800", 13);
  expected.laser_type = 3;
  expected.in_ir_res[0] = 1280;
  expected.in_ir_res[1] = 800;
  expected.rectify_out_valid_res[0] = 1272;
  expected.rectify_out_valid_res[1] = 796;
  expected.chop_out_res[0] = 1264;
  expected.chop_out_res[1] = 792;
  auto mode = filled_with<dpu_mode>(0xEE);
  unsigned int version = 0;
  EXPECT_EQ(outcome_of([&] { return de_copy_dpu_mode_config(&mode, &version); }), silent_success());
  EXPECT_EQ(bytes_of(mode), bytes_of(expected));
  EXPECT_EQ(version, 0x32313435U);
}

TEST_F(ApplyConfig, VersionOf0LeavesTheCallersValue) {
  auto mode = filled_with<dpu_mode>(0xEE);
  unsigned int version = 77;
  EXPECT_EQ(de_copy_dpu_mode_config(&mode, &version), 0);  // nothing loaded
  EXPECT_EQ(bytes_of(mode), bytes_of(filled_with<dpu_mode>(0)));
  load(DeInputText().set("mode", "version", "..."));
  EXPECT_EQ(de_copy_dpu_mode_config(&mode, &version), 0);
  EXPECT_EQ(mode.laser_type, 3U);
  EXPECT_EQ(version, 77U);
}

TEST_F(ApplyConfig, NullPointersAreRefusedAndNothingIsWritten) {
  load({});
  auto mode = filled_with<dpu_mode>(0xEE);
  unsigned int version = 77;
  EXPECT_EQ(outcome_of([&] { return de_copy_dpu_mode_config(&mode, nullptr); }), silent(-2));
  EXPECT_EQ(outcome_of([&] { return de_copy_dpu_mode_config(nullptr, &version); }), silent(-2));
  EXPECT_EQ(bytes_of(mode), bytes_of(filled_with<dpu_mode>(0xEE)));
  EXPECT_EQ(version, 77U);
}

}  // namespace
}  // namespace vq3900::test
