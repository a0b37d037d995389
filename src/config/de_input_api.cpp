#include "config/de_input.h"
#include "config/load_file_api.h"
#include "state/engine.h"
#include "state/record_copy.h"

using vq3900::engine;

int32_t load_de_input_configs(const char* path) {
  return vq3900::load_file(
      path, [](const vq3900::IniDocument& document) { return vq3900::read_de_input(document, engine().input); });
}

DRIVER_HELPER_ERRNO de_copy_dpu_mode_config(dpu_mode* out, unsigned int* version) {
  if (out == nullptr || version == nullptr) return VQ3900_ERROR_ARGUMENT;
  const vq3900::DeInputMode& mode = engine().input.mode;
  if (mode.version != 0) *version = mode.version;
  return vq3900::copy_out(mode.record, out);
}

void get_dpu_scheme_config(dpu_scheme_config* out) {
  if (out != nullptr) *out = engine().input.scheme.record;
}
