// Calibration files of other programs, as the tool imports them, shows them and turns them into settings. Of the first
// byte bit 0 says how many files there are, bits 1 and 2 what the command line says of image size and unit, bits 3 and 4
// the calibration input configuration.
#include <string>

#include "calib/calib_import.h"
#include "calib/calib_plot.h"
#include "calib/calib_report.h"
#include "calib/calib_run.h"
#include "fuzz_support.h"
#include "support/engine_reset.h"

namespace {

using namespace vq3900;

std::string import_paths(fuzz::Bytes text, bool pair) {
  const std::string first = fuzz::own_path(".a.yml");
  const std::string second = fuzz::own_path(".b.yml");
  const std::size_t half = pair ? text.size() / 2 : text.size();
  fuzz::write_file(first, text.first(half));
  fuzz::write_file(second, text.subspan(half));
  return pair ? first + "," + second : first;
}

void use(const tool::StereoCalibration& calibration, const char* config) {
  static_cast<void>(tool::calibration_text("file", calibration));
  static_cast<void>(tool::calibration_json("file", calibration).dump());
  test::reset_engine();
  const auto run = tool::run_calibration(calibration, std::string(VQ3900_EXAMPLES) + "/" + config, {30, 30, 35});
  if (!run.good()) return static_cast<void>(tool::calibration_hint(run));
  static_cast<void>(tool::run_text(run));
  static_cast<void>(tool::run_json(run).dump());
  static_cast<void>(tool::run_registers_text());
  static_cast<void>(tool::run_registers_json().dump());
  static_cast<void>(tool::calibration_plot("file", run));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr const char* kConfigs[] = {
      "calib_euroc.ini", "calib_euroc_lut.ini", "calib_kitti.ini", "calib_kitti_lut.ini"};
  fuzz::Input input{data, size};
  const auto options_byte = input.take<std::uint8_t>();
  const std::string paths = import_paths(input.rest(), (options_byte & 1) != 0);
  tool::ImportOptions options;
  if ((options_byte & 2) != 0) options.size = tool::ImageSize{752, 480};
  if ((options_byte & 4) != 0) options.unit = 1;
  try {
    use(tool::import_calibration(paths, options), kConfigs[options_byte / 8 % 4]);
  } catch (const tool::CalibrationError&) {  // what a bad file is answered with
  }
  return 0;
}
