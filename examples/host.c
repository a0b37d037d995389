/* Brings a depth engine up: loads a configuration, applies it, writes every block to the device in the order that the
 * blocks ask for, and reads one back.
 *
 *   host examples/stereo_1280x800.ini
 *
 * The device is a map of registers in memory; in a real host, bus_read() and bus_write() go over USB or I2C.
 */
#include <stdio.h>
#include <string.h>
#include <vq3900_depth_engine.h>

/* --- the transport: what the caller owns */

struct bus {
  struct {
    uint32_t address;
    uint32_t value;
  } registers[256];
  uint32_t count;
};

/* The register of that address; registers appear as they are first used. NULL: there is no room for another one. */
static uint32_t* find_register(struct bus* bus, uint32_t address) {
  for (uint32_t i = 0; i < bus->count; ++i) {
    if (bus->registers[i].address == address) return &bus->registers[i].value;
  }
  if (bus->count == sizeof bus->registers / sizeof bus->registers[0]) return NULL;
  bus->registers[bus->count].address = address;
  bus->registers[bus->count].value = 0;
  return &bus->registers[bus->count++].value;
}

/* The read callback: fills in the value of every element. Anything but 0 is a failed transfer. */
static int32_t bus_read(DeRegElement_S* elements, uint32_t count, void* user) {
  for (uint32_t i = 0; i < count; ++i) {
    const uint32_t* const found = find_register(user, elements[i].address);
    if (found == NULL) return -1;
    elements[i].value = *found;
  }
  return 0;
}

/* The write callback: stores the value under the mask; the other bits of the register belong to someone else. */
static int32_t bus_write(DeRegElement_S* elements, uint32_t count, void* user) {
  for (uint32_t i = 0; i < count; ++i) {
    uint32_t* const found = find_register(user, elements[i].address);
    if (found == NULL) return -1;
    *found = (*found & ~elements[i].mask) | (elements[i].value & elements[i].mask);
  }
  return 0;
}

/* --- what a code means: loaders have codes of their own */

static const char* meaning_of_load(int32_t code) {
  if (code == VQ3900_LOAD_CANNOT_OPEN) return "the file cannot be opened";
  if (code == VQ3900_LOAD_BAD_TEXT) return "the text is wrong; 'vq3900-tool check' says where";
  return "a section is missing or wrong; 'vq3900-tool check' says which";
}

static const char* meaning_of(int32_t code) {
  if (code == VQ3900_ERROR_ARGUMENT) return "an argument is out of its range";
  if (code == VQ3900_ERROR_IMAGE_SIZE) return "no image size is known yet";
  if (code == VQ3900_FIXED_POINT_OVERFLOW) return "a value does not fit its register; the library printed which";
  if (code == VQ3900_ERROR_CALLBACK || code == VQ3900_ERROR_TRANSFER) return de_get_error_str();
  return "a setting was refused; the library printed which";
}

/* Says how a step went. True when it went well. */
static bool told(const char* step, int32_t code, const char* meaning) {
  if (code == VQ3900_OK) {
    printf("%-24s ok\n", step);
  } else {
    fprintf(stderr, "%s: code %d, %s\n", step, (int)code, meaning);
  }
  return code == VQ3900_OK;
}

static bool done(const char* step, int32_t code) {
  return told(step, code, meaning_of(code));
}

/* --- the blocks: each record is copied out as the configuration left it, and goes to the device */

/* The rig that the configuration does not know: its baseline in depth units, its focal length in pixels. */
static const float kBaseline = 50.0F;
static const float kFocalLength = 600.0F;

static DeCameraIntrinsic_S camera_of_size(const uint16_t size[2]) {
  const DeCameraIntrinsic_S camera = {
      kFocalLength, kFocalLength, (size[0] - 1) / 2.0F, (size[1] - 1) / 2.0F, size[0], size[1]};
  return camera;
}

/* The matcher's side: these need no calibration. Image sizes come from the configuration that was applied. */
static bool write_matcher(void) {
  DePrefilterParams_S prefilter;
  DeExtendChopParams_S extend_chop;
  DeDispCalcParams_S matcher;
  DeGpmParams_S points;
  de_copy_prefilter_params(&prefilter);
  de_copy_extend_chop_params(&extend_chop);
  de_copy_disp_calc_params(&matcher);
  de_copy_gpm_params(&points);
  return done("write prefilter", de_set_prefilter_params_to_registers(&prefilter)) &&
         done("write extend and chop", de_set_extend_chop_params_to_registers(&extend_chop)) &&
         done("write matcher", de_set_disp_calc_params_to_registers(&matcher)) &&
         done("write global points", de_set_gpm_params_to_registers(&points));
}

/* Both cameras without distortion and without rotation; a real host takes these from the calibration. */
static bool write_rectification(struct bus* bus, const dpu_mode* mode) {
  const DeCameraIntrinsic_S camera = camera_of_size(mode->in_ir_res);
  const float intrinsic[4] = {camera.fx, camera.fy, camera.cx, camera.cy};
  const float rotation[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
  const float distortion[8] = {0};
  DeRegElement_S control[VQ3900_RECTIFY_CTRL_REGISTERS];
  DeRectifyParams_S params;
  DeRectifyCtrlParams_S control_params;
  if (!done("camera 1", set_rectify_params_brown(1, &camera, distortion, rotation, intrinsic))) return false;
  if (!done("camera 0", set_rectify_params_brown(0, &camera, distortion, rotation, intrinsic))) return false;
  de_copy_rectify_params(&params, &control_params);
  if (!done("write rectification", de_set_rectify_params_to_registers(&params, &control_params))) return false;

  /* No entry point writes the control registers of the rectifier: the host does. */
  convert_rectify_control_float_to_register();
  de_copy_rectify_ctrl_register_table(control, VQ3900_RECTIFY_CTRL_REGISTERS);
  return done("write its control", bus_write(control, VQ3900_RECTIFY_CTRL_REGISTERS, bus));
}

/* What writes the control table comes behind the matcher, whose smoothing flag lies there. */
static bool write_depth(const dpu_mode* mode) {
  const DeCameraIntrinsic_S camera = camera_of_size(mode->chop_out_res);
  const DeExtrinsic_S same_place = {{1, 0, 0, 0, 1, 0, 0, 0, 1}, {0, 0, 0}};
  D2cConfig d2c;
  D2dConfig d2d;
  DeBasicParams_S basic;
  de_copy_d2c_config(&d2c);
  get_d2d_config(&d2d);
  de_copy_basic_params(&basic);
  return done("write D2C", de_set_d2c_params_to_registers(&camera, &camera, &same_place, &d2c)) &&
         done("write D2D", de_set_d2d_params_to_registers(&d2d)) &&
         done("write basic", de_set_baisc_params_to_registers(&basic));
}

static bool bring_up(struct bus* bus, const char* configuration) {
  dpu_mode mode;
  dpu_scheme_config scheme;
  unsigned int version = 0;
  int32_t code;
  if (!done("register callbacks", de_register_read_write_functon(bus_read, bus_write, bus))) return false;
  code = load_de_input_configs(configuration);
  if (!told("load configuration", code, meaning_of_load(code))) return false;
  if (!done("apply configuration", set_depth_engine_config())) return false;
  de_copy_dpu_mode_config(&mode, &version);
  get_dpu_scheme_config(&scheme);
  set_ref_plane_dist((float)scheme.ref_dist);
  if (!done("set the rig's geometry", set_pbf_params(kBaseline, kFocalLength))) return false;
  return write_matcher() && write_rectification(bus, &mode) && write_depth(&mode);
}

int main(int argc, char** argv) {
  static struct bus bus;
  DeDispCalcParams_S matcher;
  if (argc != 2) {
    fprintf(stderr, "usage: %s CONFIG.ini\n", argv[0]);
    return 2;
  }
  if (!bring_up(&bus, argv[1])) return 1;
  memset(&matcher, 0, sizeof matcher);
  if (!done("read matcher", de_get_disp_calc_params_from_registers(&matcher))) return 1;
  printf("the device has %u registers; its matching window is %u pixels, its least disparity %d\n",
         (unsigned)bus.count,
         (unsigned)matcher.win_size,
         (int)matcher.min_disparity);
  return 0;
}
