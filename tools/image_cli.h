// The command line of the image commands.
#ifndef VQ3900_TOOLS_IMAGE_CLI_H
#define VQ3900_TOOLS_IMAGE_CLI_H

#include <CLI/CLI.hpp>
#include <string>

#include "commands.h"

namespace vq3900::tool {

class ImageCli {
 public:
  // Adds the commands; each leaves its exit code. The object outlives the parse.
  ImageCli(CLI::App& app, int& code);

 private:
  void add_config(CLI::App& image);
  void add_single_configuration_image(CLI::App& image, const char* name, const char* description,
                                      int (*command)(const std::string&, const std::string&));
  void add_calib(CLI::App& image);
  void add_calib_stamps(CLI::App& calib);
  void add_set_baseline(CLI::App& image);
  void add_set_pairs(CLI::App& image);
  void add_info_and_diff(CLI::App& image);

  void require_one_file_a_flag(const CLI::App& config) const;
  void require_calibrations() const;

  int& code_;
  std::string config_;
  std::string second_;
  std::string output_;
  ConfigImageInput config_image_;
  CalibImageInput calib_image_;
  SetBaselineInput baseline_;
  SetPairsInput pairs_;
  bool json_ = false;
};

}  // namespace vq3900::tool

#endif
