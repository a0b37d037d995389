// The commands of vq3900-tool. Each prints its result to standard output, its complaints to standard error, and answers
// the exit code.
#ifndef VQ3900_TOOLS_COMMANDS_H
#define VQ3900_TOOLS_COMMANDS_H

#include <string>

#include "device_run.h"

namespace vq3900::tool {

int apply_command(const std::string& config_path, const RigGeometry& geometry, bool json);
int regs_command(const std::string& block_name, bool json);
int check_command(const std::string& config_path, bool json);
int keys_command(bool markdown);

}  // namespace vq3900::tool

#endif
