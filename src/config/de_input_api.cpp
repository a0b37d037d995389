#include <exception>
#include <optional>
#include <utility>

#include "config/de_input.h"
#include "platform/diagnostics.h"
#include "platform/file.h"
#include "state/engine.h"
#include "state/record_copy.h"

using vq3900::engine;

namespace {

constexpr int32_t kCannotOpen = -1;
constexpr int32_t kBadText = -5;

int32_t load(const char* path) {
  std::optional<std::string> text = vq3900::read_file(path);
  if (!text) {
    vq3900::print_err("Cannot open file%s\n", path == nullptr ? "" : path);
    return kCannotOpen;
  }
  vq3900::IniDocument document;
  document.parse(*std::move(text));
  const vq3900::LoadResult result = vq3900::read_de_input(document, engine().input);
  if (result.code != VQ3900_OK) vq3900::print_err("%s\n", result.text.c_str());
  return result.code;
}

}  // namespace

int32_t load_de_input_configs(const char* path) try { return load(path); } catch (const std::exception&) {
  return kBadText;
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
