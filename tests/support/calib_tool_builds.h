// Calibration images that the tool builds from the sample calibrations, in a folder of their own.
#ifndef VQ3900_TESTS_SUPPORT_CALIB_TOOL_BUILDS_H
#define VQ3900_TESTS_SUPPORT_CALIB_TOOL_BUILDS_H

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <vector>

#include "support/config_images.h"
#include "support/tool_runs.h"

namespace vq3900::test {

using Arguments = std::vector<std::string>;

class CalibImageToolTest : public ToolTest {
 protected:
  CalibImageToolTest() : folder_(TempFile::unused_path()) { std::filesystem::create_directory(folder_); }
  ~CalibImageToolTest() override { std::filesystem::remove_all(folder_); }

  std::string path(const std::string& name) const { return folder_ + "/" + name; }

  void write(const std::string& name, const ImageBytes& bytes) const {
    std::ofstream(path(name), std::ios::binary) << std::string(bytes.begin(), bytes.end());
  }

  ImageBytes written(const std::string& name) const { return bytes_of_file(path(name)); }

  std::set<std::string> names() const {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder_))
      names.insert(entry.path().filename().string());
    return names;
  }

  static std::string euroc() { return example("euroc_mav_camchain.yaml"); }
  static std::string kitti() { return example("kitti_2011_09_26_calib_cam_to_cam.txt"); }

  // Arguments that build an image of that name.
  Arguments build(const std::string& name, const std::string& calibration, const Arguments& configs,
                  const Arguments& more = {"--timestamp", "1700000000"}) const {
    Arguments arguments{"image", "calib", "-o", path(name), "--calib", calibration, "--temps", "30,30,35"};
    for (const std::string& config : configs)
      arguments.insert(arguments.end(), {"--config", config});
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
  }

  // The EuRoC image with its LUT, and the KITTI image.
  void build_euroc() const {
    const Outcome outcome =
        run(build("euroc.bin", euroc(), {example("calib_euroc.ini"), example("calib_euroc_lut.ini")}));
    ASSERT_EQ(outcome.code, 0) << outcome.err;
  }
  void build_kitti() const {
    const Outcome outcome = run(build("kitti.bin", kitti(), {example("calib_kitti.ini")}));
    ASSERT_EQ(outcome.code, 0) << outcome.err;
  }

  std::string folder_;
};

}  // namespace vq3900::test

#endif
