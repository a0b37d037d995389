// A calibration input configuration from outside, as a text and as a file, used to convert a good calibration.
#include "vq3900_depth_engine.h"

#include <string>

#include "fuzz_config.h"
#include "fuzz_support.h"
#include "support/engine_reset.h"

namespace {

DeCalibCamera_S camera() {
  return {320, 240, 300, 300, 160, 120, {-0.28F, 0.07F, 0, 0, 0, 0, 1e-4F, 2e-5F}, 0};
}

CalibrateParamsMulti calibration() {
  CalibrateParamsMulti calib{};
  calib.left_ir = calib.right_ir = calib.rgb = camera();
  for (int i = 0; i < 9; i += 4)
    calib.ir_rotation[i] = calib.rgb_rotation[i] = 1;
  calib.ir_translation[0] = -50;
  calib.rgb_translation[0] = -25;
  return calib;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace vq3900;
  test::reset_engine();
  const std::string text(reinterpret_cast<const char*>(data), size);
  const std::int32_t from_text = load_input_configs_content(text.c_str());
  fuzz::require(from_text == 0 || from_text == -2 || from_text == -3);

  test::reset_engine();
  const std::string path = fuzz::own_path(".ini");
  fuzz::write_file(path, {data, size});
  const std::int32_t loaded = load_input_configs_path(path.c_str());
  // A text ends at a zero byte where a file goes on.
  if (text.find('\0') == std::string::npos) fuzz::require(loaded == from_text);
  fuzz::require(loaded == 0 || loaded == -2 || loaded == -3);
  fuzz::require_explained(std::string(data, data + size), tool::ConfigKind::kCalib, loaded == 0, loaded == 0);
  if (loaded != 0) return 0;

  DeLogCallback log = [](const char*) {};
  DeStereoRectifyParams_S rect{};
  DeCameraD2CParams_S d2c{};
  DepthCalcParams_S depth{};
  set_calib_temp(30, 30, 30);
  const std::int32_t code = align_ir_ir_rgb_params_to_register_converter(calibration(), &rect, &d2c, &depth, &log);
  fuzz::require(code == 0 || code == -2 || code == -3 || code == 4096);
  return 0;
}
