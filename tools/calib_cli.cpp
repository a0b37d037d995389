#include "calib_cli.h"

#include "cli_values.h"

namespace vq3900::tool {

CalibCli::CalibCli(CLI::App& app, int& code) : code_(code) {
  CLI::App* const calib = app.add_subcommand("calib", "Show the calibration of a stereo rig, turn it into registers");
  calib->require_subcommand(1);

  CLI::App* const show = calib->add_subcommand("show", "Show what a calibration file holds");
  add_calibration(*show);
  show->callback([this] { code_ = calib_show_command(input_.calibration, input_.options, input_.json); });

  CLI::App* const apply = calib->add_subcommand("apply", "Derive rectification, D2C and D2D from a calibration");
  add_calibration(*apply);
  apply->add_option("--config", input_.config, "Calibration input configuration (INI)")->required();
  add_temperatures(*apply, input_.temperatures);
  apply->add_flag("--regs", input_.registers, "Show the register tables");
  apply->add_option("--plot", input_.plot, "Picture of the rectification to write (SVG)");
  apply->callback([this] { code_ = calib_apply_command(input_); });
}

void CalibCli::add_calibration(CLI::App& command) {
  command
      .add_option("calibration",
                  input_.calibration,
                  "Kalibr camchain, KITTI calib_cam_to_cam, or OpenCV YAML: FILE or INTRINSICS,EXTRINSICS")
      ->required();
  add_import_options(command, input_.options);
  command.add_flag("--json", input_.json, "Print JSON");
}

}  // namespace vq3900::tool
