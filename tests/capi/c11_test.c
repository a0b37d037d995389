/* A host program in plain C11: includes the public header, links the shared library, uses every part of it. Its
 * argument is the folder of the sample configurations; its exit code is the number of failed checks.
 */
#include "vq3900_depth_engine.h"

#include <string.h>

#include "checks.h"

_Static_assert(sizeof(DeRegElement_S) == 12, "register element");
_Static_assert(sizeof(DeBasicParams_S) == 44, "basic record");
_Static_assert(sizeof(DePrefilterParams_S) == 2, "prefilter record");
_Static_assert(sizeof(DeExtendChopParams_S) == 48, "extend-chop record");
_Static_assert(sizeof(DeDispCalcParams_S) == 152, "disparity record");
_Static_assert(sizeof(DeGrowMatchParams_S) == 24, "grow-match group");
_Static_assert(sizeof(DeShadowCheckParams_S) == 32, "shadow-check group");
_Static_assert(sizeof(DeArmShortParams_S) == 12, "short-arm group");
_Static_assert(sizeof(DeTileParams_S) == 16, "tile group");
_Static_assert(sizeof(DeSeedParams_S) == 12, "seed group");
_Static_assert(sizeof(DeLrcParams_S) == 8, "consistency group");
_Static_assert(sizeof(DeSmoothFilterParams_S) == 3, "smoothing group");
_Static_assert(sizeof(DeGpmParams_S) == 216, "global-point record");
_Static_assert(sizeof(DeGpmConfig_S) == 28, "global-point thresholds");
_Static_assert(sizeof(DeGpStatusParams_S) == 3128, "global-point status");
_Static_assert(sizeof(D2cConfig) == 32, "D2C configuration");
_Static_assert(sizeof(D2dConfig) == 3, "D2D configuration");
_Static_assert(sizeof(DeCameraIntrinsic_S) == 20, "intrinsics");
_Static_assert(sizeof(DeExtrinsic_S) == 48, "pose");
_Static_assert(sizeof(DeRectifyParams_S) == 44, "rectification record");
_Static_assert(sizeof(DeRectifyCtrlParams_S) == 12, "rectification control record");
_Static_assert(sizeof(dpu_mode) == 32, "mode record");
_Static_assert(sizeof(dpu_scheme_config) == 24, "scheme record");
_Static_assert(sizeof(d2c_cfg_item) == 72, "depth-to-colour group");
_Static_assert(sizeof(ir_pre_cfg_item) == 156, "infrared pre-processing group");
_Static_assert(sizeof(DeCalibCamera_S) == 64, "camera of a calibration");
_Static_assert(sizeof(CalibrateParamsMulti) == 296, "calibration");
_Static_assert(sizeof(DeStereoRectifyParams_S) == 244, "stereo rectification");
_Static_assert(sizeof(DeCameraD2CParams_S) == 172, "depth-to-colour derivation");
_Static_assert(sizeof(DepthCalcParams_S) == 28, "depth calculation");
_Static_assert(sizeof(DeDepthConfig_S) == 16, "optimized D2D entry");
_Static_assert(sizeof(RectifyLutInfo) == 56, "displacement grid");
_Static_assert(sizeof(LutSection) == 16, "LUT section");
_Static_assert(sizeof(de_config_flash_input) == 528, "input of a configuration image");

int failures;

static const char* examples_folder;

static const char* example(const char* name) {
  static char path[1024];
  snprintf(path, sizeof path, "%s/%s", examples_folder, name);
  return path;
}

/* --- the library as it is loaded */

static void answers_its_version(void) {
  char version[8] = {'x', 'x', 'x', 'x', 'x', 'x', 'x', 'x'};
  get_depth_driver_helper_version(version);
  EXPECT(strcmp(version, VQ3900_VERSION) == 0);
  EXPECT(strcmp(de_get_version(), driver_helper_get_version()) == 0);
}

static void encodes_fixed_point(void) {
  double value = 0;
  EXPECT_EQ(de_float_to_fixed(-8.0, 8, 0, "min_disp"), 0xF8);
  de_fixed_to_float_sign(0xF8, true, 8, 0, &value);
  EXPECT(value == -8.0);
}

static void refuses_without_callbacks(void) {
  D2dConfig config = {0, 0, 0};
  EXPECT(de_get_error_str() == NULL);
  EXPECT_EQ(de_set_d2d_params_to_registers(&config), VQ3900_ERROR_CALLBACK);
  EXPECT_EQ(de_get_d2d_params_from_registers(NULL), VQ3900_ERROR_CALLBACK);
  EXPECT(de_get_error_str() != NULL &&
         strcmp(de_get_error_str(), "the read and write register function have not been set!") == 0);
}

/* --- configurations */

static void loads_and_applies_a_configuration(void) {
  dpu_mode mode;
  unsigned int version = 1;
  dpu_scheme_config scheme;
  uint32_t window = 0;
  EXPECT_EQ(load_de_input_configs(NULL), VQ3900_LOAD_CANNOT_OPEN);
  EXPECT_EQ(load_de_input_configs("no such file"), VQ3900_LOAD_CANNOT_OPEN);
  EXPECT_EQ(load_de_input_configs(example("stereo_1280x800.ini")), 0);
  EXPECT_EQ(set_depth_engine_config(), 0);
  EXPECT_EQ(de_copy_dpu_mode_config(&mode, &version), 0);
  EXPECT(strncmp(mode.dpu_desc, "stereo_1280x800", sizeof mode.dpu_desc) == 0);
  EXPECT_EQ(mode.in_ir_res[0], 1280);
  EXPECT_EQ(mode.in_ir_res[1], 800);
  EXPECT_EQ(version, 0x31303235);
  get_dpu_scheme_config(&scheme);
  EXPECT_EQ(scheme.d2d_params_unit, 100);
  EXPECT_EQ(get_depth_engine_win_size(&window), 0);
  EXPECT_EQ(window, 11);
  get_dpu_scheme_config(NULL);
}

static void hands_out_d2c_groups(void) {
  d2c_cfg_item* items = NULL;
  int count = -1;
  unsigned int version = 1;
  EXPECT_EQ(load_d2c_configs("no such file"), -1);
  EXPECT_EQ(load_d2c_configs(example("d2c_groups.ini")), 0);
  de_get_d2c_config(NULL, &count, &version);
  de_get_d2c_config(&items, NULL, &version);
  de_get_d2c_config(&items, &count, NULL);
  EXPECT(items == NULL);
  EXPECT_EQ(count, -1);
  EXPECT_EQ(version, 1);
  de_get_d2c_config(&items, &count, &version);
  EXPECT_EQ(count, 3);
  EXPECT_EQ(version, 0x31303235);
  EXPECT(items != NULL && strcmp(items[0].desc, "720p_to_1080p") == 0);
}

static void hands_out_ir_pre_groups(void) {
  ir_pre_cfg_item* items = NULL;
  int count = -1;
  unsigned int version = 1;
  EXPECT_EQ(load_ir_pre_configs("no such file"), -1);
  EXPECT_EQ(load_ir_pre_configs(example("ir_pre_groups.ini")), 0);
  de_get_ir_pre_config(NULL, &count, &version);
  de_get_ir_pre_config(&items, NULL, &version);
  de_get_ir_pre_config(&items, &count, NULL);
  EXPECT(items == NULL);
  EXPECT_EQ(count, -1);
  EXPECT_EQ(version, 1);
  de_get_ir_pre_config(&items, &count, &version);
  EXPECT_EQ(count, 2);
  EXPECT_EQ(version, 0x31303235);
  EXPECT(items != NULL && strcmp(items[1].dpu_desc, "mono_640x480") == 0);
}

/* --- calibration */

struct last_text {
  char text[64];
  int calls;
};

static void on_text(const char* text, void* user) {
  struct last_text* last = user;
  snprintf(last->text, sizeof last->text, "%s", text);
  ++last->calls;
}

static void calibration_settings_start_at_zero(void) {
  unsigned char answer = 9;
  get_cam_mode(&answer);
  EXPECT_EQ(answer, 0);
  answer = 9;
  get_d2d_params_unit_in_R_en(&answer);
  EXPECT_EQ(answer, 0);
  answer = 9;
  get_mipi_channel_status(&answer);
  EXPECT_EQ(answer, 0);
  EXPECT_EQ(get_lut_enable_status(), false);
  get_cam_mode(NULL);
  EXPECT_EQ(load_input_configs_content(NULL), -2);
  EXPECT_EQ(load_input_configs_path("no such file"), -1);
}

static void calibration_without_temperatures_is_refused(void) {
  static CalibrateParamsMulti calibration;
  struct last_text last = {"", 0};
  DeStereoRectifyParams_S rectification;
  DeCameraD2CParams_S colour;
  DepthCalcParams_S depth;
  DeLogCallback* const log = de_log_callback_create(on_text, &last);
  EXPECT(log != NULL);
  memset(&rectification, 0xA5, sizeof rectification);
  EXPECT_EQ(align_ir_ir_rgb_params_to_register_converter(calibration, &rectification, &colour, &depth, log), -2);
  EXPECT(strcmp(last.text, "invalid calibration temperature") == 0);
  EXPECT_EQ(last.calls, 1);
  EXPECT(rectification.left_temperature == 0.0F && rectification.cam1.fx == 0.0F);
  de_log_callback_destroy(log);
}

static void temperatures_go_into_the_rectification(void) {
  DeStereoRectifyParams_S rectification;
  memset(&rectification, 0xA5, sizeof rectification);
  EXPECT_EQ(cams_calibration_params_to_register_converter(NULL, NULL, NULL, NULL), -2);
  set_calib_temp_info(31.5F, 32.0F, 35.25F);
  EXPECT_EQ(cams_calibration_params_to_register_converter(NULL, &rectification, NULL, NULL), 0);
  EXPECT(rectification.left_temperature == 31.5F);
  EXPECT(rectification.right_temperature == 32.0F);
  EXPECT(rectification.ldm_temperature == 35.25F);
  EXPECT_EQ(rectification.cam1_rectified.width, 0);
}

static void log_callbacks_of_nothing_do_nothing(void) {
  DeLogCallback* const log = de_log_callback_create(on_text, NULL);
  EXPECT(de_log_callback_create(NULL, NULL) == NULL);
  EXPECT(log != NULL);
  de_log_callback_destroy(log);
  de_log_callback_destroy(NULL);
}

static void calibration_state_is_held_and_released(void) {
  DeDepthConfig_S items[2];
  DeCameraIntrinsic_S intrinsic = {1, 2, 3, 4, 5, 6};
  memset(items, 0x5A, sizeof items);
  EXPECT_EQ(set_optimized_d2d_params(items, 2), 0);
  EXPECT_EQ(set_optimized_d2d_params(NULL, 0), 0);
  EXPECT_EQ(set_optimized_d2d_params(NULL, 1), -2);
  EXPECT_EQ(set_optimized_d2d_params(items, -1), -2);
  EXPECT_EQ(set_optimized_d2d_params(items, 1), 0);
  EXPECT_EQ(release_optimized_d2d_params(), 0);
  EXPECT_EQ(release_optimized_d2d_params(), 0);
  get_virtual_intrinsic_of_stereo_debug(NULL);
  get_virtual_intrinsic_of_stereo_debug(&intrinsic); /* nothing was derived yet */
  EXPECT(intrinsic.fx == 0.0F && intrinsic.cy == 0.0F);
  EXPECT_EQ(intrinsic.width, 0);
}

int main(int argc, char** argv) {
  if (argc != 2) {
    fprintf(stderr, "usage: %s EXAMPLES_FOLDER\n", argv[0]);
    return 255;
  }
  examples_folder = argv[1];
  answers_its_version();
  encodes_fixed_point();
  refuses_without_callbacks();
  register_blocks_go_to_the_device_and_back();
  loads_and_applies_a_configuration();
  hands_out_d2c_groups();
  hands_out_ir_pre_groups();
  calibration_settings_start_at_zero();
  calibration_without_temperatures_is_refused();
  temperatures_go_into_the_rectification();
  log_callbacks_of_nothing_do_nothing();
  calibration_state_is_held_and_released();
  if (failures != 0) fprintf(stderr, "%d checks failed\n", failures);
  return failures < 255 ? failures : 255;
}
