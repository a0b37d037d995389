/* A host program in plain C11: includes the public header, links the shared library, drives it through its callbacks.
 */
#include "vq3900_depth_engine.h"

#include <stdio.h>
#include <string.h>

_Static_assert(sizeof(DeRegElement_S) == 12, "register element");
_Static_assert(sizeof(DeBasicParams_S) == 44, "basic record");
_Static_assert(sizeof(DePrefilterParams_S) == 2, "prefilter record");
_Static_assert(sizeof(DeExtendChopParams_S) == 48, "extend-chop record");
_Static_assert(sizeof(DeDispCalcParams_S) == 152, "disparity record");
_Static_assert(sizeof(DeShadowCheckParams_S) == 32, "shadow-check group");
_Static_assert(sizeof(DeGpmParams_S) == 216, "global-point record");
_Static_assert(sizeof(DeGpStatusParams_S) == 3128, "global-point status");
_Static_assert(sizeof(D2cConfig) == 32, "D2C configuration");
_Static_assert(sizeof(D2dConfig) == 3, "D2D configuration");
_Static_assert(sizeof(DeRectifyParams_S) == 44, "rectification record");
_Static_assert(sizeof(DeRectifyCtrlParams_S) == 12, "rectification control record");
_Static_assert(sizeof(dpu_mode) == 32, "mode record");
_Static_assert(sizeof(dpu_scheme_config) == 24, "scheme record");

static int failures;

#define EXPECT(condition)                                              \
  do {                                                                 \
    if (!(condition)) {                                                \
      fprintf(stderr, "line %d: %s is false\n", __LINE__, #condition); \
      ++failures;                                                      \
    }                                                                  \
  } while (0)

struct bank {
  DeRegElement_S cells[64];
  uint32_t count;
  uint32_t transfers;
};

static DeRegElement_S* cell(struct bank* bank, uint32_t address) {
  for (uint32_t i = 0; i < bank->count; ++i) {
    if (bank->cells[i].address == address) return &bank->cells[i];
  }
  bank->cells[bank->count].address = address;
  return &bank->cells[bank->count++];
}

static int32_t bank_read(DeRegElement_S* elements, uint32_t count, void* user) {
  struct bank* bank = user;
  ++bank->transfers;
  for (uint32_t i = 0; i < count; ++i)
    elements[i].value = cell(bank, elements[i].address)->value;
  return 0;
}

static int32_t bank_write(DeRegElement_S* elements, uint32_t count, void* user) {
  struct bank* bank = user;
  ++bank->transfers;
  for (uint32_t i = 0; i < count; ++i)
    *cell(bank, elements[i].address) = elements[i];
  return 0;
}

static void goes_to_the_device_and_back(void) {
  static struct bank bank;
  const DeLrcParams_S lrc = {1, 2};
  DeDispCalcParams_S set;
  DeDispCalcParams_S got;

  EXPECT(de_register_read_write_functon(bank_read, bank_write, &bank) == VQ3900_OK);
  EXPECT(set_lrc_params(lrc) == VQ3900_OK);
  EXPECT(set_min_disp(-8) == VQ3900_OK);
  EXPECT(de_copy_disp_calc_params(&set) == VQ3900_OK);
  EXPECT(de_set_disp_calc_params_to_registers(&set) == VQ3900_OK);
  EXPECT(cell(&bank, 0x500012C8)->value == 0xA8000000);
  EXPECT((cell(&bank, 0x50001030)->value & 0x00FF0000) == 0x00F80000);

  memset(&got, 0, sizeof got);
  EXPECT(de_get_disp_calc_params_from_registers(&got) == VQ3900_OK);
  EXPECT(got.lrc_en == 1 && got.lrc_thresh == 2 && got.min_disparity == -8);
  EXPECT(bank.transfers == 2);
}

static void refuses_what_is_wrong(void) {
  EXPECT(de_get_error_str() == NULL);
  EXPECT(de_set_d2d_params_to_registers(NULL) == VQ3900_ERROR_CALLBACK);
  EXPECT(de_get_error_str() != NULL &&
         strcmp(de_get_error_str(), "the read and write register function have not been set!") == 0);
  EXPECT(load_de_input_configs("no such file") == -1);
}

static void answers_its_version(void) {
  char version[8] = {'x', 'x', 'x', 'x', 'x', 'x', 'x', 'x'};
  get_depth_driver_helper_version(version);
  EXPECT(strcmp(version, VQ3900_VERSION) == 0);
  EXPECT(strcmp(de_get_version(), driver_helper_get_version()) == 0);
}

static void encodes_fixed_point(void) {
  double value = 0;
  EXPECT(de_float_to_fixed(-8.0, 8, 0, "min_disp") == 0xF8);
  de_fixed_to_float_sign(0xF8, true, 8, 0, &value);
  EXPECT(value == -8.0);
}

int main(void) {
  answers_its_version();
  encodes_fixed_point();
  refuses_what_is_wrong();
  goes_to_the_device_and_back();
  return failures == 0 ? 0 : 1;
}
