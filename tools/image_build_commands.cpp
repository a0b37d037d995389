// Building files through the library, and looking at what is on the disk afterwards: the library itself does not notice
// a full disk, and answers true for an image that could not be built.
#include "vq3900_depth_engine.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "commands.h"
#include "config/config_image.h"
#include "config_check.h"
#include "library_output.h"
#include "platform/file.h"
#include "regs/snapshot.h"
#include "staged_file.h"
#include "stdout_capture.h"
#include "tool.h"

namespace vq3900::tool {

namespace {

// A build writes the file at that path.
using Build = std::function<bool(const char* path)>;

// Runs a build, checks the file's size and puts it in the output's place.
int build_file(const std::string& output, std::size_t expected_size, const Build& build) {
  StagedFile file(output);
  bool built = false;
  {
    StdoutCapture capture;
    built = build(file.path().c_str());
    pass_on(capture.text(), file.path(), output);
  }
  if (!built) {
    fmt::print(stderr, "vq3900-tool: {}: not built\n", output);
    return kFailed;
  }
  if (!file.has_size(expected_size) || !file.commit()) return kFailed;
  fmt::print("{}: {} bytes written\n", output, expected_size);
  return kDone;
}

bool load_and_apply(const std::string& config) {
  return load_de_input_configs(config.c_str()) == 0 && set_depth_engine_config() == 0;
}

// Says what is wrong with a configuration: the first errors that a check of it finds.
void explain(const std::string& config) {
  constexpr std::size_t kMost = 5;
  const std::optional<std::string> text = read_file(config.c_str());
  if (!text) return;
  std::size_t errors = 0;
  for (const Finding& finding : check_config(*text)) {
    if (finding.severity != Severity::kError) continue;
    if (++errors <= kMost) fmt::print(stderr, "{}\n", finding_line(config, finding));
  }
  if (errors > kMost) fmt::print(stderr, "{}: and {} more errors\n", config, errors - kMost);
}

// Builds a file from one configuration.
int build_from_config(const std::string& config, const std::string& output, std::size_t expected_size,
                      const Build& build) {
  if (is_input(output, {&config, 1})) return kBadUsage;
  return build_file(output, expected_size, [&](const char* path) {
    if (load_and_apply(config)) return build(path);
    explain(config);
    return false;
  });
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
  std::vector<std::string> inputs = input.dpu;
  inputs.insert(inputs.end(), {input.d2c, input.ir_pre});
  if (is_input(output, inputs)) return kBadUsage;
  return build_file(
      output, kConfigImageSize, [&](const char* path) { return gen_depth_engine_config_flash_file_de(&record, path); });
}

int image_registers_command(const std::string& config, const std::string& output) {
  return build_from_config(config, output, kRegisterFileSize, gen_depth_engine_config_flash_file);
}

int image_snapshot_command(const std::string& config, const std::string& output) {
  return build_from_config(
      config, output, kSnapshotSize, [](const char* path) { return de_export_config_params_to_file(path) == 0; });
}

}  // namespace vq3900::tool
