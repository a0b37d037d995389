#include "tool.h"

#include "vq3900_depth_engine.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <optional>
#include <string>
#include <vector>

#include "calib_cli.h"
#include "cli_values.h"
#include "commands.h"
#include "image_cli.h"
#include "register_blocks.h"

namespace vq3900::tool {

namespace {

std::vector<std::string> block_names() {
  std::vector<std::string> names;
  for (const RegisterBlock& block : register_blocks())
    names.emplace_back(block.name);
  return names;
}

// The parser itself would only say that a command is missing.
void require_known_command(const CLI::App& app, int argc, const char* const* argv, int at) {
  if (at >= argc || argv[at][0] == '-') return;
  if (app.get_subcommands({}).empty()) return;
  for (const CLI::App* const command : app.get_subcommands({})) {
    if (command->get_name() == argv[at]) return require_known_command(*command, argc, argv, at + 1);
  }
  throw usage_error(fmt::format("'{}' is no command", argv[at]));
}

// The command line: every subcommand leaves its exit code.
class CommandLine {
 public:
  CommandLine() {
    app_.allow_windows_style_options(false);  // "/folder/file" is a path everywhere
    app_.require_subcommand(1);
    app_.set_version_flag("--version", std::string("vq3900-tool ") + de_get_version());
    add_apply();
    add_regs();
    add_check();
    add_keys();
    image_.emplace(app_, code_);
    calib_.emplace(app_, code_);
    app_.add_subcommand("formats", "Print the layout of every file as Markdown tables")->callback([this] {
      code_ = formats_command();
    });
  }

  int run(int argc, const char* const* argv) {
    try {
      require_known_command(app_, argc, argv, 1);
      app_.parse(argc, argv);
    } catch (const CLI::Success& asked) {  // --help, --version
      return app_.exit(asked);
    } catch (const CLI::ParseError& fault) {
      fmt::print(stderr, "vq3900-tool: {}; see 'vq3900-tool --help'\n", fault.what());
      return kBadUsage;
    }
    return code_;
  }

 private:
  void add_apply() {
    CLI::App* const command = app_.add_subcommand(
        "apply", "Load a configuration, write it to a simulated device, read it back, show the registers");
    command->add_option("config", config_, "Depth-engine configuration (INI)")->required();
    command->add_option("--baseline", geometry_.baseline, "Stereo baseline of the rig in depth units, signed")
        ->capture_default_str();
    command->add_option("--focal", geometry_.focal_length, "Focal length of the rig in pixels")->capture_default_str();
    command->add_option("--ref-dist",
                        geometry_.ref_distance,
                        "Distance of the reference plane in depth units (default: ref_dist of the configuration)");
    command->add_flag("--json", json_, "Print JSON");
    command->callback([this] { code_ = apply_command(config_, geometry_, json_); });
  }

  void add_regs() {
    CLI::App* const command = app_.add_subcommand("regs", "Show the register tables as they are at start-up");
    command->add_option("block", block_, "One block alone")->check(CLI::IsMember(block_names()));
    command->add_flag("--json", json_, "Print JSON");
    command->callback([this] { code_ = regs_command(block_, json_); });
  }

  void add_check() {
    CLI::App* const command =
        app_.add_subcommand("check", "Say what is wrong with a configuration: key, place and accepted values");
    command->add_option("config", config_, "Configuration (INI)")->required();
    add_kind(*command);
    command->add_flag("--json", json_, "Print JSON");
    command->callback([this] { code_ = check_command(config_, kind_, json_); });
  }

  void add_keys() {
    CLI::App* const command = app_.add_subcommand("keys", "List every key of a configuration with what it accepts");
    command->add_flag("--markdown", markdown_, "Print a Markdown table");
    add_kind(*command);
    command->callback([this] { code_ = keys_command(kind_, markdown_); });
  }

  void add_kind(CLI::App& command) {
    command
        .add_option("--kind",
                    kind_,
                    "engine: depth-engine configuration; d2c: depth-to-colour groups; ir-pre: infrared pre-processing "
                    "groups; calib: calibration input configuration")
        ->check(CLI::IsMember({"engine", "d2c", "ir-pre", "calib"}))
        ->capture_default_str();
  }

  CLI::App app_{"Tools for the configuration of the VQ3900 depth engine", "vq3900-tool"};
  std::string config_;
  std::string block_;
  RigGeometry geometry_;
  std::string kind_ = "engine";
  bool json_ = false;
  bool markdown_ = false;
  int code_ = kDone;
  std::optional<ImageCli> image_;
  std::optional<CalibCli> calib_;
};

}  // namespace

int run_tool(int argc, const char* const* argv) {
  try {
    return CommandLine().run(argc, argv);
  } catch (const std::exception& fault) {
    fmt::print(stderr, "vq3900-tool: {}\n", fault.what());
    return kFailed;
  }
}

}  // namespace vq3900::tool
