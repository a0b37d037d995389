#include "image_cli.h"

#include <fmt/format.h>

#include <array>
#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

#include "cli_values.h"
#include "config/config_image.h"

namespace vq3900::tool {

namespace {

constexpr const char* kOutput = "-o,--output";

std::optional<std::array<std::uint64_t, 3>> read_serial_number(const std::string& text) {
  return read_list<3>(text, ',', read_unsigned);
}

bool is_serial_number(const std::string& text) {
  return read_serial_number(text).has_value();
}

bool is_number(const std::string& text) {
  return read_finite(text).has_value();
}

bool is_pair(const std::string& text) {
  return read_list<2>(text, ',', read_finite).has_value();
}

}  // namespace

ImageCli::ImageCli(CLI::App& app, int& code) : code_(code) {
  CLI::App& image = *app.add_subcommand("image", "Build, change, inspect and compare the files of the library");
  image.require_subcommand(1);
  add_config(image);
  add_single_configuration_image(
      image, "registers", "Build the register file of one configuration", image_registers_command);
  add_single_configuration_image(
      image, "snapshot", "Save the parameter records of one configuration", image_snapshot_command);
  add_calib(image);
  add_set_baseline(image);
  add_set_pairs(image);
  add_info_and_diff(image);
}

void ImageCli::add_config(CLI::App& image) {
  CLI::App* const config = image.add_subcommand("config", "Build a configuration image");
  config->add_option(kOutput, output_, "Image to write")->required();
  config->add_option("--dpu", config_image_.dpu, "Depth-engine configuration (INI), up to 8 times")
      ->allow_extra_args(false)
      ->check(file_check());
  config->add_option("--d2c", config_image_.d2c, "Depth-to-colour groups (INI)")->required();
  config->add_option("--ir-pre", config_image_.ir_pre, "Infrared pre-processing groups (INI)")->required();
  config->allow_extras();  // to say what is to be done about them
  config->callback([this, config] {
    require_one_file_a_flag(*config);
    code_ = image_config_command(config_image_, output_);
  });
}

void ImageCli::require_one_file_a_flag(const CLI::App& config) const {
  const std::vector<std::string> extra = config.remaining();
  if (!extra.empty()) {
    const bool flag = extra.front().starts_with('-');
    throw usage_error(fmt::format(
        "'{}' is not expected here{}", extra.front(), flag ? "" : "; --dpu takes one file and is given once for each"));
  }
  if (config_image_.dpu.size() > kDpuSection.most_items()) {
    throw usage_error(fmt::format("--dpu is given {} times; an image holds up to {} configurations",
                                  config_image_.dpu.size(),
                                  kDpuSection.most_items()));
  }
}

void ImageCli::add_single_configuration_image(CLI::App& image, const char* name, const char* description,
                                              int (*command)(const std::string&, const std::string&)) {
  CLI::App* const subcommand = image.add_subcommand(name, description);
  subcommand->add_option(kOutput, output_, "File to write")->required();
  subcommand->add_option("config", config_, "Depth-engine configuration (INI)")->required();
  subcommand->callback([this, command] { code_ = command(config_, output_); });
}

// --- calibration images

void ImageCli::add_calib(CLI::App& image) {
  CLI::App* const calib = image.add_subcommand(
      "calib", "Build a calibration image, and beside it its LUT file and its factory-align section");
  calib->add_option(kOutput, output_, "Image to write")->required();
  calib->add_option("--config", calib_image_.configs, "Calibration input configuration (INI), once for each")
      ->required()
      ->allow_extra_args(false)
      ->check(file_check());
  calib
      ->add_option("--calib",
                   calib_image_.calibrations,
                   "Calibration of the rig: FILE or INTRINSICS,EXTRINSICS; once for each configuration, or once")
      ->required()
      ->allow_extra_args(false)
      ->check(file_check());
  add_temperatures(*calib, calib_image_.temperatures);
  add_calib_stamps(*calib);
  calib->add_option("--align", calib_image_.alignment, "File of 1 to 4 alignment records of 976 bytes");
  add_import_options(*calib, calib_image_.options);
  calib->callback([this] {
    require_calibrations();
    code_ = image_calib_command(calib_image_, output_);
  });
}

void ImageCli::add_calib_stamps(CLI::App& calib) {
  calib
      .add_option_function<std::string>(
          "--sn",
          [this](const std::string& text) { calib_image_.serial_number = *read_serial_number(text); },
          "Serial number of the section headers: three numbers, decimal or 0x")
      ->check(list_check(is_serial_number, "three numbers with commas between them are expected", "A,B,C"));
  calib
      .add_option("--timestamp",
                  calib_image_.timestamp,
                  "Time of the section headers, seconds since 1970-01-01 UTC (default: now)")
      ->check(CLI::Range(std::int64_t{1}, std::int64_t{std::numeric_limits<std::uint32_t>::max()}));
}

void ImageCli::require_calibrations() const {
  const std::size_t configs = calib_image_.configs.size();
  const std::size_t calibrations = calib_image_.calibrations.size();
  constexpr std::size_t kMost = std::numeric_limits<std::uint8_t>::max();
  if (configs > kMost) {
    throw usage_error(fmt::format("--config is given {} times; a build takes up to {}", configs, kMost));
  }
  if (calibrations != 1 && calibrations != configs) {
    throw usage_error(
        fmt::format("--calib is given {} times for {} configurations; give it once, or once for each --config",
                    calibrations,
                    configs));
  }
}

// --- changes

void ImageCli::add_set_baseline(CLI::App& image) {
  CLI::App* const command =
      image.add_subcommand("set-baseline", "Set the baseline in the D2D records of a calibration image");
  command->add_option("image", baseline_.image, "Calibration image, or its D2D section")->required();
  command->add_option(kOutput, output_, "File to write: the D2D section alone")->required();
  command->add_option("--baseline", baseline_.baseline, "Baseline in depth units, signed")
      ->required()
      ->check(list_check(is_number, "a number is expected", "NUMBER"));
  command->add_option("--index", baseline_.index, "Record to change, from 0 (default: all)")
      ->check(CLI::NonNegativeNumber);
  command->callback([this] { code_ = image_set_baseline_command(baseline_, output_); });
}

void ImageCli::add_set_pairs(CLI::App& image) {
  CLI::App* const command = image.add_subcommand(
      "set-fb", "Set focal lengths and baselines in the D2C and D2D records of a calibration image");
  command->add_option("image", pairs_.image, "Calibration image")->required();
  command->add_option(kOutput, output_, "File to write: the whole image, or with --keep-f the D2D section alone")
      ->required();
  command
      ->add_option_function<std::vector<std::string>>(
          "--pair",
          [this](const std::vector<std::string>& texts) {
            for (const std::string& text : texts)
              pairs_.pairs.push_back(*read_list<2>(text, ',', read_finite));
          },
          "Focal length in pixels and signed baseline in depth units, once for each")
      ->required()
      ->allow_extra_args(false)
      ->check(list_check(is_pair, "two numbers with a comma between them are expected", "F,B"));
  command->add_flag(
      "--keep-f", pairs_.keep_focal_lengths, "Keep the focal lengths: every D2D record takes the baseline of its own");
  command->callback([this] { code_ = image_set_pairs_command(pairs_, output_); });
}

// --- looking

void ImageCli::add_info_and_diff(CLI::App& image) {
  CLI::App* const info = image.add_subcommand("info", "Show what a file holds and whether its checks hold");
  info->add_option("file", config_, "File to look into")->required();
  info->add_flag("--json", json_, "Print JSON");
  info->callback([this] { code_ = image_info_command(config_, json_); });

  CLI::App* const diff = image.add_subcommand("diff", "Show where two files differ: section, item, register, field");
  diff->add_option("first", config_, "File")->required();
  diff->add_option("second", second_, "File to compare it with")->required();
  diff->add_flag("--json", json_, "Print JSON");
  diff->callback([this] { code_ = image_diff_command(config_, second_, json_); });
}

}  // namespace vq3900::tool
