/* A host program in C: registers, a setting on its way to the device and back, a log callback, versions. */
#include <stdio.h>
#include <string.h>
#include <vq3900_depth_engine.h>

/* The smallest device: it remembers the registers of one table. */
typedef struct Device {
  DeRegElement_S registers[VQ3900_DISP_CALC_REGISTERS];
  uint32_t count;
} Device;

static int32_t on_read(DeRegElement_S* elements, uint32_t count, void* user) {
  const Device* device = user;
  uint32_t i;
  if (count != device->count) return -1;
  for (i = 0; i < count; ++i)
    elements[i].value = device->registers[i].value;
  return 0;
}

static int32_t on_write(DeRegElement_S* elements, uint32_t count, void* user) {
  Device* device = user;
  if (count > VQ3900_DISP_CALC_REGISTERS) return -1;
  memcpy(device->registers, elements, count * sizeof *elements);
  device->count = count;
  return 0;
}

static void on_step(const char* text, void* user) {
  if (text[0] != '\0') ++*(int*)user;
}

static int matcher_reaches_the_device_and_comes_back(void) {
  Device device = {0};
  DeDispCalcParams_S sent;
  DeDispCalcParams_S found;
  int32_t code = de_register_read_write_functon(on_read, on_write, &device);
  if (code == 0) code = set_min_disp(-12);
  if (code == 0) code = de_copy_disp_calc_params(&sent);
  if (code == 0) code = de_set_disp_calc_params_to_registers(&sent);
  if (code == 0) code = set_min_disp(7);
  if (code == 0) code = de_get_disp_calc_params_from_registers(&found);
  return code == 0 && device.count == VQ3900_DISP_CALC_REGISTERS && memcmp(&sent, &found, sizeof sent) == 0;
}

static int log_callback_is_called(void) {
  CalibrateParamsMulti calibration;
  DeStereoRectifyParams_S rectification;
  DepthCalcParams_S depth;
  int steps = 0;
  DeLogCallback* log = de_log_callback_create(on_step, &steps);
  memset(&calibration, 0, sizeof calibration);
  set_calib_temp_info(25.0f, 25.0f, 25.0f);
  /* A calibration of zeros is refused, with messages. */
  if (align_ir_ir_rgb_params_to_register_converter(calibration, &rectification, NULL, &depth, log) == 0) return 0;
  de_log_callback_destroy(log);
  return steps > 0;
}

int main(void) {
  if (strcmp(de_get_version(), VQ3900_VERSION) != 0) return 1;
  if (!matcher_reaches_the_device_and_comes_back()) return 2;
  if (!log_callback_is_called()) return 3;
  puts("host in C: done");
  return 0;
}
