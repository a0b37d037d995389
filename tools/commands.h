// The commands of vq3900-tool. Each prints its result to standard output, its complaints to standard error, and answers
// the exit code.
#ifndef VQ3900_TOOLS_COMMANDS_H
#define VQ3900_TOOLS_COMMANDS_H

#include <string>
#include <vector>

#include "device_run.h"

namespace vq3900::tool {

int apply_command(const std::string& config_path, const RigGeometry& geometry, bool json);
int regs_command(const std::string& block_name, bool json);
int check_command(const std::string& config_path, bool json);
int keys_command(bool markdown);

// Which files a configuration image is built from.
struct ConfigImageInput {
  std::vector<std::string> dpu;
  std::string d2c;
  std::string ir_pre;
};

int image_config_command(const ConfigImageInput& input, const std::string& output);
int image_registers_command(const std::string& config, const std::string& output);
int image_snapshot_command(const std::string& config, const std::string& output);
int image_info_command(const std::string& path, bool json);
int image_diff_command(const std::string& first, const std::string& second, bool json);
int formats_command();

}  // namespace vq3900::tool

#endif
