// Building files through the library, and looking at what is on the disk afterwards: the library itself does not notice
// a full disk, and answers true for an image that could not be built.
#include "vq3900_depth_engine.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <functional>
#include <string>
#include <system_error>

#include "commands.h"
#include "config/config_image.h"
#include "regs/snapshot.h"
#include "stdout_capture.h"
#include "tool.h"

namespace vq3900::tool {

namespace {

// Passes on what the library printed, but for the trace of its digests.
void pass_on(const std::string& library_output) {
  for (std::size_t at = 0; at < library_output.size();) {
    const std::size_t end = std::min(library_output.find('\n', at), library_output.size() - 1);
    const std::string line = library_output.substr(at, end - at + 1);
    const bool trace = line.starts_with("Md5_gen ") || line.starts_with("MD5Encode ") || line == "start MD5Encode!\n";
    if (!trace) fmt::print(stderr, "{}", line);
    at = end + 1;
  }
}

// Runs a build that writes a file, and checks the file's size.
int build_file(const std::string& output, std::size_t expected_size, const std::function<bool()>& build) {
  bool built = false;
  {
    StdoutCapture capture;
    built = build();
    pass_on(capture.text());
  }
  if (!built) {
    fmt::print(stderr, "vq3900-tool: {}: not built\n", output);
    return kFailed;
  }
  std::error_code not_a_file;
  std::uintmax_t size = std::filesystem::file_size(output, not_a_file);
  if (not_a_file) size = 0;
  if (size != expected_size) {
    fmt::print(stderr,
               "vq3900-tool: {}: {} of {} bytes are on the disk; {}\n",
               output,
               size,
               expected_size,
               size == 0 ? "the image could not be built, or the disk may be full" : "the disk may be full");
    return kFailed;
  }
  fmt::print("{}: {} bytes written\n", output, expected_size);
  return kDone;
}

bool load_and_apply(const std::string& config) {
  return load_de_input_configs(config.c_str()) == 0 && set_depth_engine_config() == 0;
}

// Copies a path into the library's fixed field. False: it does not fit.
bool set_path(char (&field)[256], const std::string& path) {
  if (path.size() > sizeof field) {
    fmt::print(stderr, "vq3900-tool: {}: the path is longer than {} bytes\n", path, sizeof field);
    return false;
  }
  std::copy(path.begin(), path.end(), field);
  return true;
}

}  // namespace

int image_config_command(const ConfigImageInput& input, const std::string& output) {
  std::vector<const char*> dpu;
  for (const std::string& path : input.dpu)
    dpu.push_back(path.c_str());
  de_config_flash_input record{};
  record.dpu_config_paths = dpu.data();
  record.dpu_config_count = static_cast<std::uint8_t>(dpu.size());
  if (!set_path(record.d2c_config_path, input.d2c)) return kFailed;
  if (!set_path(record.ir_pre_config_path, input.ir_pre)) return kFailed;
  return build_file(
      output, kConfigImageSize, [&] { return gen_depth_engine_config_flash_file_de(&record, output.c_str()); });
}

int image_registers_command(const std::string& config, const std::string& output) {
  return build_file(output, kRegisterFileSize, [&] {
    return load_and_apply(config) && gen_depth_engine_config_flash_file(output.c_str());
  });
}

int image_snapshot_command(const std::string& config, const std::string& output) {
  return build_file(output, kSnapshotSize, [&] {
    return load_and_apply(config) && de_export_config_params_to_file(output.c_str()) == 0;
  });
}

}  // namespace vq3900::tool
