// The commands of vq3900-tool. Each prints its result to standard output, its complaints to standard error, and answers
// the exit code.
#ifndef VQ3900_TOOLS_COMMANDS_H
#define VQ3900_TOOLS_COMMANDS_H

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "calib/calib_import.h"
#include "calib/calib_run.h"
#include "device_run.h"

namespace vq3900::tool {

int apply_command(const std::string& config_path, const RigGeometry& geometry, bool json);
int regs_command(const std::string& block_name, bool json);

// The kinds are engine, d2c, ir-pre and calib.
int check_command(const std::string& config_path, const std::string& kind, bool json);
int keys_command(const std::string& kind, bool markdown);

// Which files a configuration image is built from.
struct ConfigImageInput {
  std::vector<std::string> dpu;
  std::string d2c;
  std::string ir_pre;
};

int image_config_command(const ConfigImageInput& input, const std::string& output);
int image_registers_command(const std::string& config, const std::string& output);
int image_snapshot_command(const std::string& config, const std::string& output);

// What a calibration image is built from.
struct CalibImageInput {
  std::vector<std::string> configs;       // calibration input configurations
  std::vector<std::string> calibrations;  // "FILE" or "FILE,FILE": one for each configuration, or one for all
  ImportOptions options;
  CalibrationTemperatures temperatures;
  std::array<std::uint64_t, 3> serial_number{};
  std::int64_t timestamp = 0;  // of the section headers; 0: now
  std::string alignment;       // file of alignment records; empty for none
};

int image_calib_command(const CalibImageInput& input, const std::string& output);

struct SetBaselineInput {
  std::string image;
  float baseline = 0;
  int index = -1;  // of the record to change; below 0: all
};
int image_set_baseline_command(const SetBaselineInput& input, const std::string& output);

struct SetPairsInput {
  std::string image;
  std::vector<std::array<float, 2>> pairs;  // focal length and baseline
  bool keep_focal_lengths = false;
};
int image_set_pairs_command(const SetPairsInput& input, const std::string& output);

int image_info_command(const std::string& path, bool json);
int image_diff_command(const std::string& first, const std::string& second, bool json);
int formats_command();

int calib_show_command(const std::string& calibration_paths, const ImportOptions& options, bool json);

struct CalibApplyInput {
  std::string calibration;  // "FILE" or "FILE,FILE"
  ImportOptions options;
  std::string config;  // calibration input configuration
  CalibrationTemperatures temperatures;
  bool registers = false;
  bool json = false;
  std::string plot;  // SVG file to write; empty for none
};
int calib_apply_command(const CalibApplyInput& input);

}  // namespace vq3900::tool

#endif
