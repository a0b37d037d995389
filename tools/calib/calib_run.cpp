#include "calib/calib_run.h"

#include <fmt/format.h>

#include <cmath>
#include <string_view>

#include "calib/stereo_derivation.h"
#include "modules/fixed_point.h"
#include "stdout_capture.h"

namespace vq3900::tool {

namespace {

constexpr std::size_t kTile = 4;
constexpr std::size_t kTileSize = kTile * kTile;

// The words of a section, in tiles of 4 x 4 samples, back to displacements in rows.
std::vector<double> untiled(const std::vector<std::uint32_t>& words, std::uint32_t width) {
  std::vector<double> values(words.size());
  const std::size_t tiles_a_row = width / kTile;
  for (std::size_t i = 0; i < words.size(); ++i) {
    const std::size_t tile = i / kTileSize;
    const std::size_t row = tile / tiles_a_row * kTile + i % kTileSize / kTile;
    const std::size_t column = tile % tiles_a_row * kTile + i % kTile;
    values[row * width + column] = decode_signed(words[i], 24, 24);
  }
  return values;
}

// Takes the sections of both cameras: A and B are camera 1's, C and D camera 0's.
void take_luts(CalibrationRun& run) {
  std::uint32_t length = 0;
  if (!get_lut_enable_status() || de_get_lut_len(&length) != VQ3900_OK) return;
  std::array<std::vector<std::uint32_t>, 4> words;
  std::array<LutSection, 4> sections{};
  for (std::size_t i = 0; i < sections.size(); ++i) {
    words[i].resize(length);
    sections[i].data = words[i].data();
  }
  if (de_copy_rectify_lut_register_section(sections.data(), 4) != VQ3900_OK) return;
  for (const std::size_t camera : {std::size_t{1}, std::size_t{0}}) {
    LutGrid& grid = run.luts[camera];
    de_get_rectify_lut_params_float(static_cast<std::int32_t>(camera), &grid.info);
    const std::size_t first = camera == 1 ? 0 : 2;
    for (const std::size_t i : {first, first + 1})
      words[i].resize(std::min<std::size_t>(words[i].size(), sections[i].count));
    if (grid.info.lut_width == 0 || words[first].size() != std::size_t{grid.info.lut_width} * grid.info.lut_height) {
      continue;
    }
    grid.dx = untiled(words[first], grid.info.lut_width);
    grid.dy = untiled(words[first + 1], grid.info.lut_width);
  }
}

void convert(CalibrationRun& run) {
  DeLogCallback log = [&run](const char* text) { run.log.emplace_back(text); };
  run.code =
      align_ir_ir_rgb_params_to_register_converter(run.calibration, &run.rectification, &run.d2c, &run.depth, &log);
  if (run.code != VQ3900_OK) run.step = "convert calibration";
}

// What the library said, and what helps.
struct Remedy {
  std::string_view said;
  std::string_view help;
};
constexpr Remedy kRemedies[] = {
    {"Cannot open file", "the calibration input configuration is not there"},
    {"section not found", "'vq3900-tool keys --kind calib' lists the sections and keys"},
    {"not found in section", "'vq3900-tool keys --kind calib' lists the sections and keys"},
    {"Caught an exception", "'vq3900-tool keys --kind calib' lists what each key accepts"},
    {"invalid calibration temperature", "each of the three values of --temps must be at least 1"},
    {"check baseline!",
     "the baseline in depth units must be 1 to 500; change d2d_params_unit of section d2d (millimetres a unit)"},
    {"focal_length_pix is incorrect", "the focal length must be at least 10 pixels; look at src_img_scale"},
    {"sample_rate_bit >=3", "lut_sample_bit must be 3 to 6"},
    {"lut sample bit out of range", "lut_sample_bit must be 3 to 6"},
    {"lut extend ratio out of range", "lut_extend_ratio must be 0 to 4"},
    {"lut grid too large", "more than 1020 samples a side: raise lut_sample_bit or lower lut_extend_ratio"},
    {"lut displacement out of range", "the distortion is too strong for a LUT: chop the images"},
    {"overflow in lut_c", "the principal point is too far out for a LUT: scale or chop the images (src_img_...)"},
    {"overflow in lut_x_start", "the LUT extends too far: lower lut_extend_ratio"},
    {"overflow in lut_y_start", "the LUT extends too far: lower lut_extend_ratio"},
    {"overflow in rectify_k", "the distortion does not fit the polynomial: take the LUT alone, distort_type = 1"},
    {"overflow in rectify_", "focal lengths or principal points are too large: scale the images (src_img_scale)"},
    {"overflow in W",
     "the projection into the colour image does not fit: look at d2d_params_unit_in_R_en and depth_scale"},
    {"overflow in iZ0", "ref_dist in depth units must be at least 64"},
    {"failed!", "look at image sizes, chops, clips and scales: the rectified image must keep 1 to 65535 pixels a side"},
};

}  // namespace

CalibrationRun run_calibration(const StereoCalibration& calibration, const std::string& config_path,
                               const CalibrationTemperatures& temperatures) {
  CalibrationRun run;
  run.calibration = to_calibrate_params(calibration);
  run.temperatures = temperatures;
  StdoutCapture out;
  StderrCapture err;
  run.code = load_input_configs_path(config_path.c_str());
  if (run.code == VQ3900_OK) {
    set_calib_temp_info(temperatures.left, temperatures.right, temperatures.ldm);
    convert(run);
  } else {
    run.step = "load calibration input configuration";
  }
  run.library_output = out.text() + err.text();
  if (!run.good()) return run;
  unsigned char in_rotation = 0;
  get_d2d_params_unit_in_R_en(&in_rotation);
  run.unit_in_rotation = in_rotation == 1;
  take_luts(run);
  return run;
}

std::string calibration_hint(const CalibrationRun& run) {
  if (run.library_output.find("Baseline sign check error") != std::string::npos) {
    return fmt::format("baseline of section basic must have the sign of the calibration's, {:.3f} mm",
                       static_cast<double>(signed_baseline(run.calibration.ir_translation)));
  }
  for (const Remedy& remedy : kRemedies) {
    if (run.library_output.find(remedy.said) != std::string::npos) return std::string(remedy.help);
  }
  return "";
}

}  // namespace vq3900::tool
