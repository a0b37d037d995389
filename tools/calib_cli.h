// The command line of the calib commands.
#ifndef VQ3900_TOOLS_CALIB_CLI_H
#define VQ3900_TOOLS_CALIB_CLI_H

#include <CLI/CLI.hpp>

#include "commands.h"

namespace vq3900::tool {

class CalibCli {
 public:
  // Adds the commands; each leaves its exit code. The object outlives the parse.
  CalibCli(CLI::App& app, int& code);

 private:
  void add_calibration(CLI::App& command);

  int& code_;
  CalibApplyInput input_;
};

}  // namespace vq3900::tool

#endif
