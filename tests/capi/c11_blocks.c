/* Every set and get entry point against a small device: the transfers it makes, words of the registers that were
 * worked out by hand, and the records that come back.
 */
#include "vq3900_depth_engine.h"

#include <stdlib.h>
#include <string.h>

#include "checks.h"

/* --- the device: registers by address, and the sizes of the transfers since the last look */

struct device {
  DeRegElement_S registers[512];
  uint32_t count;
  uint32_t written[4], writes;
  uint32_t read[4], reads;
};

static struct device device;

static DeRegElement_S* cell(struct device* at, uint32_t address) {
  for (uint32_t i = 0; i < at->count; ++i) {
    if (at->registers[i].address == address) return &at->registers[i];
  }
  if (at->count == sizeof at->registers / sizeof at->registers[0]) {
    fprintf(stderr, "the device has no room for register 0x%08X\n", (unsigned)address);
    exit(255);
  }
  at->registers[at->count].address = address;
  return &at->registers[at->count++];
}

static int32_t on_read(DeRegElement_S* elements, uint32_t count, void* user) {
  struct device* at = user;
  if (at->reads < 4) at->read[at->reads] = count;
  ++at->reads;
  for (uint32_t i = 0; i < count; ++i)
    elements[i].value = cell(at, elements[i].address)->value;
  return 0;
}

static int32_t on_write(DeRegElement_S* elements, uint32_t count, void* user) {
  struct device* at = user;
  if (at->writes < 4) at->written[at->writes] = count;
  ++at->writes;
  for (uint32_t i = 0; i < count; ++i) {
    uint32_t* value = &cell(at, elements[i].address)->value;
    *value = (*value & ~elements[i].mask) | (elements[i].value & elements[i].mask);
  }
  return 0;
}

static uint32_t value_at(uint32_t address) {
  return cell(&device, address)->value;
}

/* So many transfers of those sizes since the last look; a size of 0 stands for none. */
static void expect_transfers(const char* which, uint32_t* made, const uint32_t* sizes, uint32_t first, uint32_t second,
                             uint32_t third) {
  const uint32_t expected[3] = {first, second, third};
  const uint32_t count = (uint32_t)(first != 0) + (uint32_t)(second != 0) + (uint32_t)(third != 0);
  if (*made != count) {
    fprintf(stderr, "%s: %u transfers, expected %u\n", which, (unsigned)*made, (unsigned)count);
    ++failures;
  }
  for (uint32_t i = 0; i < count && i < *made; ++i) {
    if (sizes[i] == expected[i]) continue;
    fprintf(stderr,
            "%s: transfer %u of %u registers, expected %u\n",
            which,
            (unsigned)i,
            (unsigned)sizes[i],
            (unsigned)expected[i]);
    ++failures;
  }
  *made = 0;
}

static void expect_written(const char* which, uint32_t first, uint32_t second) {
  expect_transfers(which, &device.writes, device.written, first, second, 0);
  EXPECT_EQ(device.reads, 0);
}

static void expect_read(const char* which, uint32_t first, uint32_t second, uint32_t third) {
  expect_transfers(which, &device.reads, device.read, first, second, third);
  EXPECT_EQ(device.writes, 0);
}

/* --- the blocks */

static void prefilter_of_640_x_480(void) {
  const DePrefilterParams_S set = {7, 33};
  DePrefilterParams_S got = {0, 0};
  EXPECT_EQ(set_input_ir_resolution(480u << 16 | 640u), 0);
  EXPECT_EQ(set_prefilter_size_speckleTh(7, 33), 0);
  EXPECT_EQ(de_set_prefilter_params_to_registers(&set), 0);
  expect_written("prefilter", 18, 0);
  EXPECT_EQ(value_at(0x50001080), 0x131703A0);
  EXPECT_EQ(value_at(0x500010D0), 0x002801E0);
  EXPECT_EQ(value_at(0x500010D4), 307200);
  EXPECT_EQ(de_get_prefilter_params_from_registers(&got), 0);
  expect_read("prefilter", 18, 0, 0);
  EXPECT_EQ(got.pre_win_size, 7);
  EXPECT_EQ(got.speckleTh, 33);
}

static void extend_chop_of_672_x_496(void) {
  const DeExtendChopParams_S set = {{1, 2, 3, 4}, {4, 5, 2, 3}, {15, 17, 6, 10}};
  DeExtendChopParams_S got;
  memset(&got, 0, sizeof got);
  EXPECT_EQ(set_extend_chop_params(set.extend_ref, set.extend_tar, set.chop), 0);
  EXPECT_EQ(de_set_extend_chop_params_to_registers(&set), 0);
  expect_written("extend chop", 7, 0);
  EXPECT_EQ(value_at(0x50001070), 0x002A01F0);
  EXPECT_EQ(value_at(0x5000107C), 0x00030004);
  EXPECT_EQ(value_at(0x500012D4), 0x000F0011);
  EXPECT_EQ(de_get_extend_chop_params_from_registers(&got), 0);
  expect_read("extend chop", 7, 0, 0);
  EXPECT_EQ(memcmp(&got, &set, sizeof set), 0);
}

static void matcher(void) {
  DeDispCalcParams_S set;
  DeDispCalcParams_S got;
  const DeLrcParams_S lrc = {1, 2};
  const DeSmoothFilterParams_S smooth = {1, 5, 0};
  const double coefficients[4] = {0.5, -0.25, 1.0, 0.125};
  EXPECT_EQ(set_depth_engine_win_size(9), 0);
  EXPECT_EQ(set_min_disp(-8), 0);
  EXPECT_EQ(set_lrc_params(lrc), 0);
  EXPECT_EQ(set_smoothfilter_params(&smooth), 0);
  EXPECT_EQ(set_subpixel_coef(coefficients), 0);
  EXPECT_EQ(de_copy_disp_calc_params(&set), 0);
  EXPECT_EQ(de_set_disp_calc_params_to_registers(&set), 0);
  expect_written("matcher", 12, 0);
  EXPECT_EQ(value_at(0x500010E0), 0x1F000200);
  EXPECT_EQ(value_at(0x500010E4), 0x00800400);
  EXPECT_EQ(value_at(0x500012C8), 0xA8000000);
  EXPECT_EQ(value_at(0x50001008), 0x00010500);
  EXPECT_EQ(value_at(0x50001030), 0x09F80400);
  memset(&got, 0, sizeof got);
  EXPECT_EQ(de_get_disp_calc_params_from_registers(&got), 0);
  expect_read("matcher", 12, 0, 0);
  EXPECT_EQ(got.lrc_en, 1);
  EXPECT_EQ(got.lrc_thresh, 2);
  EXPECT_EQ(got.min_disparity, -8);
  EXPECT_EQ(got.win_size, 9);
  EXPECT_EQ(memcmp(got.sp_coef, coefficients, sizeof coefficients), 0);
}

static void global_points(void) {
  DeGpmParams_S set;
  DeGpmParams_S got;
  DeGpStatusParams_S status;
  memset(&set, 0, sizeof set);
  set.enable = 1;
  for (int i = 0; i < 16; ++i) {
    set.x_coordinate[i] = 0x100 + i;
    set.y_coordinate[i] = 0x200 + i;
  }
  set.texture_t0 = 0x2AA;
  set.gp_ref_dy_t_neg = -5;
  set.gp_ref_dy_t = 5;
  EXPECT_EQ(de_set_gpm_params_to_registers(&set), 0);
  expect_written("global points", 30, 0);
  EXPECT_EQ(value_at(0x50001300), 0x00101100);
  EXPECT_EQ(value_at(0x5000133C), 0x0020F20E);
  EXPECT_EQ(value_at(0x50001368), 0x00FFB005);
  cell(&device, 0x5000137C)->value = 0x8011A500; /* -2047 in the upper twelve bits */
  memset(&got, 0, sizeof got);
  memset(&status, 0xA5, sizeof status);
  EXPECT_EQ(de_get_gpm_params_from_registers(&got, &status), 0);
  expect_read("global points", 30, 261, 0);
  EXPECT_EQ(got.x_coordinate[15], 0x10F);
  EXPECT_EQ(got.texture_t0, 0x2AA);
  EXPECT_EQ(got.gp_ref_dy_t_neg, 4091);
  const unsigned char first_word[] = {0x01, 0xF8, 0xFF, 0xA5}; /* three bytes are written, the lowest first */
  EXPECT_EQ(memcmp(&status, first_word, sizeof first_word), 0);
}

static void give_distortion(uint32_t camera, float k1) {
  const RectifyIntrinsic rectified = {600, 601, 640, 400, 1280, 800};
  const float identity[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
  const float intrinsic[4] = {512, 256, 320, 240};
  float distortion[8] = {0};
  distortion[0] = k1;
  EXPECT_EQ(set_rectify_params_brown(camera, &rectified, distortion, identity, intrinsic), 0);
}

static void rectification(void) {
  DeRectifyParams_S set;
  DeRectifyCtrlParams_S control;
  EXPECT_EQ(set_camera_mode(1, 1), 0);
  EXPECT_EQ(set_rectify_status(1, 1, 0x123), 0);
  give_distortion(0, -0.25F);
  give_distortion(1, 0.5F);
  EXPECT_EQ(de_copy_rectify_params(&set, &control), 0);
  EXPECT_EQ(set.cam0_en, 1);
  EXPECT_EQ(de_set_rectify_params_to_registers(&set, &control), 0);
  expect_written("rectification", 23, 23);
  EXPECT_EQ(value_at(0x52080000), 0x03C00000);
  EXPECT_EQ(value_at(0x52000000), 0x00800000);
  EXPECT_EQ(value_at(0x52080030), 0x40000000);
  EXPECT_EQ(value_at(0x52000060), 0x25800000);
  EXPECT_EQ(value_at(0x52000078), 0x03200500);
}

/* No entry point writes the control table of the rectifier: the host does, and reads it back with the rest. */
static void rectification_control(void) {
  DeRegElement_S control[VQ3900_RECTIFY_CTRL_REGISTERS];
  DeRectifyParams_S got;
  DeRectifyCtrlParams_S got_control;
  EXPECT_EQ(convert_rectify_control_float_to_register(), 0);
  EXPECT_EQ(de_copy_rectify_ctrl_register_table(control, VQ3900_RECTIFY_CTRL_REGISTERS), 0);
  EXPECT_EQ(on_write(control, VQ3900_RECTIFY_CTRL_REGISTERS, &device), 0);
  expect_written("rectification control", 3, 0);
  EXPECT_EQ(value_at(0x52080070), 0x01230403);
  EXPECT_EQ(value_at(0x52000070), 0x01230003);
  EXPECT_EQ(de_get_rectify_params_from_registers(&got, &got_control, 0, 1), 0);
  expect_read("rectification", 23, 23, 3);
  EXPECT_EQ(got.cam0_en, 1);
  EXPECT_EQ(got.cam1_en, 1);
  EXPECT(got.cam1.fx == 600.0F && got.cam0.cy == 400.0F);
  EXPECT_EQ(got.cam1.width, 1280);
  EXPECT_EQ(got_control.start_rows, 0x123);
}

static void depth_to_colour(void) {
  const DeCameraIntrinsic_S depth = {512, 256, 320, 240, 640, 480};
  const DeCameraIntrinsic_S colour = {1024, 1024, 640, 480, 1280, 960};
  const DeExtrinsic_S pose = {{1, 0.5F, 0.25F, -0.5F, 1, 0.125F, 0.25F, -0.5F, 1}, {0.5F, -0.25F, 0.125F}};
  D2cConfig set;
  D2cConfig got;
  memset(&set, 0, sizeof set);
  set.recovery_mode_2 = 1;
  set.d2c_recovery_expand_width = 0.25F;
  set.d2c_buffer_position = 0x123;
  set.d2c_total_buffer_rows = 0x456;
  set.depth_sign = 1;
  EXPECT_EQ(de_set_d2c_params_to_registers(&depth, &colour, &pose, &set), 0);
  expect_written("D2C", 12, 5);
  EXPECT_EQ(value_at(0x50001210), 0x4A000000);
  EXPECT_EQ(value_at(0x5000123C), 0x01000000);
  EXPECT_EQ(value_at(0x50001200), 0xCC456123);
  EXPECT_EQ(value_at(0x5000120C), 0x40);
  EXPECT_EQ(value_at(0x50001028), 0x400); /* the matcher's smoothing flag comes with the control table */
  memset(&got, 0, sizeof got);
  EXPECT_EQ(de_get_d2c_params_from_registers(&got), 0);
  expect_read("D2C", 12, 5, 0);
  EXPECT_EQ(got.d2c_buffer_position, 0x123);
  EXPECT_EQ(got.d2c_total_buffer_rows, 0x456);
  EXPECT_EQ(got.recovery_mode_1, 1); /* the recovery bits come back crossed */
  EXPECT_EQ(got.recovery_mode_2, 0);
  EXPECT(got.d2c_recovery_expand_width == 0.25F);
}

static void disparity_to_depth(void) {
  const D2dConfig set = {3, 0, 0};
  D2dConfig got = {0, 9, 9};
  EXPECT_EQ(de_set_d2d_params_to_registers(&set), 0);
  expect_written("D2D", 5, 0);
  EXPECT_EQ(value_at(0x5000188C), 6);
  EXPECT_EQ(de_get_d2d_params_from_registers(&got), 0);
  expect_read("D2D", 5, 0, 0);
  EXPECT_EQ(got.unit_shift, 3);
  EXPECT_EQ(got.in_R, 0);
  EXPECT_EQ(got.hw_d2d_enable, 0);
}

static void basic(void) {
  DeBasicParams_S set;
  DeBasicParams_S got;
  EXPECT_EQ(set_camera_mode(1, 0), 0);
  EXPECT_EQ(set_upsample(1, 2), 0);
  EXPECT_EQ(set_ref_plane_dist(1000.0F), 0);
  EXPECT_EQ(set_pbf_params(50.0F, 600.0F), 0);
  EXPECT_EQ(de_copy_basic_params(&set), 0);
  EXPECT_EQ(de_set_baisc_params_to_registers(&set), 0);
  expect_written("basic", 2, 5);
  EXPECT_EQ(value_at(0x50001000), 0x00013020);
  EXPECT_EQ(value_at(0x50001028), 0x0000C400);
  EXPECT_EQ(value_at(0x50001204), 0x10624DD3);
  EXPECT_EQ(value_at(0x50001208), 0x022F3D94);
  memset(&got, 0, sizeof got);
  EXPECT_EQ(de_get_baisc_params_from_registers(&got), 0);
  expect_read("basic", 2, 5, 0);
  EXPECT_EQ(got.cam_mode, 1); /* from the bit of the depth mode, which the D2C block wrote */
  EXPECT_EQ(got.scale_mode, 2);
  EXPECT_EQ(got.upsample_enable, 1);
  EXPECT(got.baseline == 50.0F && got.focal_length_pix == 600.0F);
}

/* A transport that fails: the step's code, and a text that says what happened. */
static int32_t broken(DeRegElement_S* elements, uint32_t count, void* user) {
  (void)elements;
  (void)count;
  (void)user;
  return -77;
}

static void failing_transport_is_told(void) {
  const D2dConfig set = {3, 0, 0};
  D2dConfig got = {9, 9, 9};
  EXPECT_EQ(de_register_read_write_functon(broken, broken, NULL), 0);
  EXPECT_EQ(de_set_d2d_params_to_registers(&set), VQ3900_ERROR_TRANSFER);
  EXPECT(de_get_error_str() != NULL);
  EXPECT_EQ(de_get_d2d_params_from_registers(&got), VQ3900_ERROR_TRANSFER);
  EXPECT_EQ(got.unit_shift, 9);
  EXPECT_EQ(de_register_read_write_functon(on_read, on_write, &device), 0);
  EXPECT_EQ(de_set_d2d_params_to_registers(&set), 0);
  expect_written("D2D after a failure", 5, 0);
}

static void null_records_move_nothing(void) {
  EXPECT_EQ(de_set_baisc_params_to_registers(NULL), VQ3900_ERROR_ARGUMENT);
  EXPECT_EQ(de_set_prefilter_params_to_registers(NULL), VQ3900_ERROR_ARGUMENT);
  EXPECT_EQ(de_set_extend_chop_params_to_registers(NULL), VQ3900_ERROR_ARGUMENT);
  EXPECT_EQ(de_set_disp_calc_params_to_registers(NULL), VQ3900_ERROR_ARGUMENT);
  EXPECT_EQ(de_set_gpm_params_to_registers(NULL), VQ3900_ERROR_ARGUMENT);
  EXPECT_EQ(de_set_d2c_params_to_registers(NULL, NULL, NULL, NULL), VQ3900_ERROR_ARGUMENT);
  EXPECT_EQ(de_set_d2d_params_to_registers(NULL), VQ3900_ERROR_ARGUMENT);
  EXPECT_EQ(de_set_rectify_params_to_registers(NULL, NULL), VQ3900_ERROR_ARGUMENT);
  EXPECT_EQ(de_get_baisc_params_from_registers(NULL), VQ3900_ERROR_ARGUMENT);
  EXPECT_EQ(de_get_prefilter_params_from_registers(NULL), VQ3900_ERROR_ARGUMENT);
  EXPECT_EQ(de_get_extend_chop_params_from_registers(NULL), VQ3900_ERROR_ARGUMENT);
  EXPECT_EQ(de_get_disp_calc_params_from_registers(NULL), VQ3900_ERROR_ARGUMENT);
  EXPECT_EQ(de_get_gpm_params_from_registers(NULL, NULL), VQ3900_ERROR_ARGUMENT);
  EXPECT_EQ(de_get_d2c_params_from_registers(NULL), VQ3900_ERROR_ARGUMENT);
  EXPECT_EQ(de_get_d2d_params_from_registers(NULL), VQ3900_ERROR_ARGUMENT);
  EXPECT_EQ(de_get_rectify_params_from_registers(NULL, NULL, 0, 1), VQ3900_ERROR_ARGUMENT);
  EXPECT_EQ(device.reads + device.writes, 0);
}

void register_blocks_go_to_the_device_and_back(void) {
  EXPECT_EQ(de_register_read_write_functon(on_read, on_write, &device), 0);
  prefilter_of_640_x_480();
  extend_chop_of_672_x_496();
  matcher();
  global_points();
  rectification();
  rectification_control();
  depth_to_colour();
  disparity_to_depth();
  basic();
  null_records_move_nothing();
  failing_transport_is_told();
}
