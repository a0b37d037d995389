#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "calib/calib_image_build.h"
#include "calib/calib_import.h"
#include "commands.h"
#include "library_output.h"
#include "platform/file.h"
#include "staged_file.h"
#include "tool.h"

namespace vq3900::tool {

namespace {

// A side file's name: the image's without an extension of four characters, and an ending of its own.
std::string side_file(const std::string& path, const char* ending) {
  constexpr std::size_t kExtension = 4;
  return path.substr(0, path.size() - std::min(kExtension, path.size())) + ending;
}

struct OutputNames {
  std::string main;
  std::string luts;
  std::string factory;
};

OutputNames output_names(const std::string& main) {
  return {main, side_file(main, "_lut_section.bin"), side_file(main, "_factory_align_section.bin")};
}

// Every file that is read; a calibration may be two.
std::vector<std::string> input_files(const CalibImageInput& input) {
  std::vector<std::string> files = input.configs;
  for (const std::string& paths : input.calibrations) {
    const std::size_t comma = paths.find(',');
    files.push_back(paths);
    if (comma != std::string::npos) files.insert(files.end(), {paths.substr(0, comma), paths.substr(comma + 1)});
  }
  if (!input.alignment.empty()) files.push_back(input.alignment);
  return files;
}

// Entries that name no file would be taken for INI texts.
bool are_readable(const std::vector<std::string>& configs) {
  const auto missing = std::find_if_not(
      configs.begin(), configs.end(), [](const std::string& config) { return is_readable(config.c_str()); });
  if (missing == configs.end()) return true;
  fmt::print(stderr, "vq3900-tool: {}: cannot be opened\n", *missing);
  return false;
}

// The records of an alignment file; nothing, which is said, when it is none.
std::optional<std::vector<DeAlignRecord_S>> read_alignment(const std::string& path) {
  std::vector<DeAlignRecord_S> records;
  if (path.empty()) return records;
  constexpr std::size_t kRecord = sizeof(DeAlignRecord_S);
  const std::optional<std::string> bytes = read_file(path.c_str(), kRecord * VQ3900_ALIGNMENT_RECORDS);
  if (!bytes) {
    fmt::print(stderr, "vq3900-tool: {}: cannot be opened\n", path);
    return std::nullopt;
  }
  if (bytes->empty() || bytes->size() % kRecord != 0) {
    fmt::print(stderr,
               "vq3900-tool: {}: 1 to {} alignment records of {} bytes are expected\n",
               path,
               VQ3900_ALIGNMENT_RECORDS,
               kRecord);
    return std::nullopt;
  }
  records.resize(bytes->size() / kRecord);
  std::memcpy(records.data(), bytes->data(), bytes->size());
  return records;
}

std::vector<StereoCalibration> import_all(const CalibImageInput& input) {
  std::vector<StereoCalibration> calibrations;
  for (const std::string& paths : input.calibrations)
    calibrations.push_back(import_calibration(paths, input.options));
  if (calibrations.size() == 1) calibrations.resize(input.configs.size(), calibrations.front());
  return calibrations;
}

int report_failure(const CalibImageParts& parts, const CalibImageBuild& build) {
  pass_on(build.library_output);
  CalibrationRun failed;
  failed.library_output = build.library_output;
  failed.calibration = to_calibrate_params(parts.calibrations[build.last_config]);
  const std::string hint = calibration_hint(failed);
  fmt::print(stderr,
             "vq3900-tool: {}: build calibration image failed with code {}{}{}\n",
             parts.configs[build.last_config],
             build.code,
             hint.empty() ? "" : "; ",
             hint);
  return kFailed;
}

// Writes all files, and only then puts them in their places.
int write_files(const CalibImageBuild& build, const OutputNames& names) {
  StagedFile main(names.main);
  StagedFile luts(names.luts);
  StagedFile factory(names.factory);
  const bool has_luts = !build.luts.empty();
  if (!main.write(build.main) || (has_luts && !luts.write(build.luts)) || !factory.write(build.factory)) return kFailed;
  if (!main.commit() || (has_luts && !luts.commit()) || !factory.commit()) return kFailed;
  fmt::print("{}: {} bytes written\n", names.main, build.main.size());
  if (has_luts) fmt::print("{}: {} bytes written\n", names.luts, build.luts.size());
  fmt::print("{}: {} bytes written\n", names.factory, build.factory.size());
  std::error_code fault;
  if (!has_luts && std::filesystem::exists(names.luts, fault)) {
    fmt::print(stderr, "vq3900-tool: {}: is of another build; this image has no LUT\n", names.luts);
  }
  return kDone;
}

}  // namespace

int image_calib_command(const CalibImageInput& input, const std::string& output) {
  const OutputNames names = output_names(output);
  const std::vector<std::string> inputs = input_files(input);
  for (const std::string& name : {names.main, names.luts, names.factory}) {
    if (is_input(name, inputs)) return kBadUsage;
  }
  if (!are_readable(input.configs)) return kFailed;
  std::optional<std::vector<DeAlignRecord_S>> alignment = read_alignment(input.alignment);
  if (!alignment) return kFailed;
  const CalibImageParts parts{input.configs,
                              import_all(input),
                              input.temperatures,
                              input.serial_number,
                              input.timestamp,
                              *std::move(alignment)};
  const CalibImageBuild build = build_calib_image(parts);
  return build.code == VQ3900_OK ? write_files(build, names) : report_failure(parts, build);
}

}  // namespace vq3900::tool
