#include "tool.h"

#include "vq3900_depth_engine.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <optional>
#include <string>

#include "commands.h"
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
  throw CLI::ParseError(fmt::format("'{}' is no command", argv[at]), CLI::ExitCodes::ExtrasError);
}

// The command line: every subcommand leaves its exit code.
class CommandLine {
 public:
  CommandLine() {
    app_.require_subcommand(1);
    app_.set_version_flag("--version", std::string("vq3900-tool ") + de_get_version());
    add_apply();
    add_regs();
    add_check();
    add_keys();
    add_image();
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
    command->add_option("config", config_, "Depth-engine configuration (INI)")->required();
    command->add_flag("--json", json_, "Print JSON");
    command->callback([this] { code_ = check_command(config_, json_); });
  }

  void add_keys() {
    CLI::App* const command = app_.add_subcommand("keys", "List every key of a configuration with what it accepts");
    command->add_flag("--markdown", markdown_, "Print a Markdown table");
    command->callback([this] { code_ = keys_command(markdown_); });
  }

  void add_image() {
    CLI::App* const image = app_.add_subcommand("image", "Build, inspect and compare the files of the library");
    image->require_subcommand(1);

    CLI::App* const config = image->add_subcommand("config", "Build a configuration image");
    config->add_option("-o,--output", output_, "Image to write")->required();
    config->add_option("--dpu", config_image_.dpu, "Depth-engine configuration (INI), up to 8 times")
        ->expected(0, 8)
        ->allow_extra_args(false);
    config->add_option("--d2c", config_image_.d2c, "Depth-to-colour groups (INI)")->required();
    config->add_option("--ir-pre", config_image_.ir_pre, "Infrared pre-processing groups (INI)")->required();
    config->callback([this] { code_ = image_config_command(config_image_, output_); });

    add_single_configuration_image(
        *image, "registers", "Build the register file of one configuration", image_registers_command);
    add_single_configuration_image(
        *image, "snapshot", "Save the parameter records of one configuration", image_snapshot_command);

    CLI::App* const info = image->add_subcommand("info", "Show what a file holds and whether its checks hold");
    info->add_option("file", config_, "File to look into")->required();
    info->add_flag("--json", json_, "Print JSON");
    info->callback([this] { code_ = image_info_command(config_, json_); });

    CLI::App* const diff = image->add_subcommand("diff", "Show where two files differ: section, item, register, field");
    diff->add_option("first", config_, "File")->required();
    diff->add_option("second", second_, "File to compare it with")->required();
    diff->add_flag("--json", json_, "Print JSON");
    diff->callback([this] { code_ = image_diff_command(config_, second_, json_); });
  }

  void add_single_configuration_image(CLI::App& image, const char* name, const char* description,
                                      int (*command)(const std::string&, const std::string&)) {
    CLI::App* const subcommand = image.add_subcommand(name, description);
    subcommand->add_option("-o,--output", output_, "File to write")->required();
    subcommand->add_option("config", config_, "Depth-engine configuration (INI)")->required();
    subcommand->callback([this, command] { code_ = command(config_, output_); });
  }

  CLI::App app_{"Tools for the configuration of the VQ3900 depth engine", "vq3900-tool"};
  std::string config_;
  std::string second_;
  std::string block_;
  std::string output_;
  ConfigImageInput config_image_;
  RigGeometry geometry_;
  bool json_ = false;
  bool markdown_ = false;
  int code_ = kDone;
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
