#include <cstring>
#include <exception>
#include <optional>
#include <string>
#include <utility>

#include "config/calib_input.h"
#include "platform/diagnostics.h"
#include "platform/file.h"
#include "state/engine.h"

using vq3900::engine;

namespace {

constexpr int32_t kPathTooLong = 4096;
constexpr int32_t kCannotOpen = -1;
constexpr int32_t kRefused = -2;
constexpr int32_t kCaught = -3;
constexpr std::size_t kLongestPath = 256;

int32_t load_text(std::string text) {
  vq3900::IniDocument document;
  document.parse(std::move(text));
  if (const auto fault = vq3900::read_calib_input(document, engine().calib_input)) {
    vq3900::print_err("%s\n", fault->c_str());
    return kRefused;
  }
  return VQ3900_OK;
}

int32_t report(const std::exception& exception) {
  vq3900::print_out("Caught an exception: %s\n", exception.what());
  return kCaught;
}

}  // namespace

int32_t load_input_configs_path(const char* path) try {
  if (path != nullptr && std::strlen(path) > kLongestPath) {
    vq3900::print_err("Error: File name exceeds the maximum length.\n");
    return kPathTooLong;
  }
  std::optional<std::string> text = vq3900::read_file(path);
  if (!text) {
    vq3900::print_err("Cannot open file %s\n", path == nullptr ? "" : path);
    return kCannotOpen;
  }
  return load_text(*std::move(text));
} catch (const std::exception& exception) {
  return report(exception);
}

int32_t load_input_configs_content(const char* content) try {
  if (content == nullptr) {
    vq3900::print_err("Error: config param is invalid.\n");
    return kRefused;
  }
  return load_text(content);
} catch (const std::exception& exception) {
  return report(exception);
}

void get_cam_mode(unsigned char* out) {
  if (out != nullptr) *out = vq3900::is_stereo_camera_type(engine().calib_input.cam_type) ? 1 : 0;
}

void get_d2d_params_unit_in_R_en(unsigned char* out) {
  if (out != nullptr) *out = static_cast<unsigned char>(engine().calib_input.d2d_params_unit_in_R_en);
}

bool get_lut_enable_status(void) {
  const uint8_t status = engine().calib_input.distort_type;
  return status == 1 || status == 2;
}

void get_mipi_channel_status(unsigned char* out) {
  if (out != nullptr) *out = engine().calib_input.mipi_channel_status;
}
