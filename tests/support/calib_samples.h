// Calibrations, the configuration that goes with them, and running the calibration converter on them.
#ifndef VQ3900_TESTS_SUPPORT_CALIB_SAMPLES_H
#define VQ3900_TESTS_SUPPORT_CALIB_SAMPLES_H

#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "support/calib_input_text.h"
#include "support/capture.h"
#include "support/numbers.h"
#include "support/registers.h"

namespace vq3900::test {

// --- calibrations ----------------------------------------------------------------------------------------------------

inline constexpr float kNoTurn[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};

inline DeCalibCamera_S pinhole_camera(std::int32_t width, std::int32_t height, float focal, float cx, float cy) {
  return {width, height, focal, focal, cx, cy, {}, 0};
}

// Two equal cameras side by side, 50 mm apart, and a colour camera between them; none of them distorts.
inline CalibrateParamsMulti parallel_rig() {
  CalibrateParamsMulti calib{};
  calib.left_ir = calib.right_ir = pinhole_camera(640, 400, 500, 320, 200);
  calib.rgb = pinhole_camera(1280, 720, 900, 640, 360);
  std::ranges::copy(kNoTurn, calib.ir_rotation);
  std::ranges::copy(kNoTurn, calib.rgb_rotation);
  calib.ir_translation[0] = -50;
  calib.rgb_translation[0] = -25;
  return calib;
}

// A turn by the angles (in radians) about x, then y, then z.
inline void set_turn(float (&matrix)[9], float x, float y, float z) {
  const double a = static_cast<double>(x), b = static_cast<double>(y), c = static_cast<double>(z);
  const double sa = std::sin(a), ca = std::cos(a), sb = std::sin(b), cb = std::cos(b), sc = std::sin(c),
               cc = std::cos(c);
  const double entries[9] = {cc * cb,
                             cc * sb * sa - sc * ca,
                             cc * sb * ca + sc * sa,
                             sc * cb,
                             sc * sb * sa + cc * ca,
                             sc * sb * ca - cc * sa,
                             -sb,
                             cb * sa,
                             cb * ca};
  std::ranges::transform(entries, matrix, [](double entry) { return static_cast<float>(entry); });
}

// A rig as they are: every number differs from its neighbours, the cameras distort and look in different directions.
inline CalibrateParamsMulti sample_rig() {
  CalibrateParamsMulti calib{};
  calib.left_ir = {640, 400, 501.5F, 502.25F, 322.5F, 197.75F, {-0.05F, 0.02F, -0.004F, 0, 0, 0, 3e-4F, -2e-4F}, 0};
  calib.right_ir = {640, 400, 498.75F, 499.5F, 317.25F, 203.5F, {-0.045F, 0.018F, -0.003F, 0, 0, 0, -1e-4F, 4e-4F}, 0};
  calib.rgb = {1280, 720, 905.5F, 904.25F, 641.5F, 358.75F, {0.1F, -0.2F, 0.05F, 0, 0, 0, 5e-4F, 6e-4F}, 0};
  set_turn(calib.ir_rotation, 0.01F, -0.015F, 0.006F);
  set_turn(calib.rgb_rotation, -0.004F, 0.008F, 0.003F);
  std::ranges::copy(std::array{-50.25F, 0.5F, -0.75F}, calib.ir_translation);
  std::ranges::copy(std::array{-24.5F, 0.25F, 1.5F}, calib.rgb_translation);
  return calib;
}

inline DeCalibCamera_S random_camera(Random& random, std::int32_t width, std::int32_t height) {
  const auto w = static_cast<float>(width);
  const auto h = static_cast<float>(height);
  DeCalibCamera_S camera{width,
                         height,
                         random.between(0.7F, 1.2F) * w,
                         random.between(0.7F, 1.2F) * w,
                         random.between(0.47F, 0.53F) * w,
                         random.between(0.47F, 0.53F) * h,
                         {},
                         0};
  for (float& coefficient : camera.distortion)
    coefficient = random.between(-0.01F, 0.01F);
  return camera;
}

inline CalibrateParamsMulti random_rig(Random& random) {
  CalibrateParamsMulti calib{};
  calib.left_ir = random_camera(random, 1280, 800);
  calib.right_ir = random_camera(random, 1280, 800);
  calib.rgb = random_camera(random, 1920, 1080);
  for (float(*turn)[9] : {&calib.ir_rotation, &calib.rgb_rotation})
    set_turn(*turn, random.between(-0.02F, 0.02F), random.between(-0.02F, 0.02F), random.between(-0.02F, 0.02F));
  calib.ir_translation[0] = random.between(-90, -30);
  calib.rgb_translation[0] = random.between(-60, 60);
  for (std::size_t i = 1; i < 3; ++i) {
    calib.ir_translation[i] = random.between(-2, 2);
    calib.rgb_translation[i] = random.between(-3, 3);
  }
  return calib;
}

// --- points of space -------------------------------------------------------------------------------------------------

using Triple = std::array<double, 3>;

// The point turned by a row-major matrix, or back.
inline Triple turned(const float (&matrix)[9], const Triple& point) {
  Triple result{};
  for (std::size_t i = 0; i < 9; ++i)
    result[i / 3] += static_cast<double>(matrix[i]) * point[i % 3];
  return result;
}

inline Triple turned_back(const float (&matrix)[9], const Triple& point) {
  Triple result{};
  for (std::size_t i = 0; i < 9; ++i)
    result[i % 3] += static_cast<double>(matrix[i]) * point[i / 3];
  return result;
}

inline Triple shifted(const float (&translation)[3], const Triple& point) {
  Triple result = point;
  for (std::size_t i = 0; i < 3; ++i)
    result[i] += static_cast<double>(translation[i]);
  return result;
}

struct Pixel {
  double u;
  double v;
};

inline Pixel projected(const DeCameraIntrinsic_S& camera, const Triple& point) {
  return {static_cast<double>(camera.fx) * point[0] / point[2] + static_cast<double>(camera.cx),
          static_cast<double>(camera.fy) * point[1] / point[2] + static_cast<double>(camera.cy)};
}

// --- the configuration -----------------------------------------------------------------------------------------------

struct CalibSetting {
  std::string key;
  std::string value;
};

// Stereo, depth mode 0, polynomial correction, nothing scaled, chopped, moved or clipped.
inline const std::vector<CalibSetting>& plain_settings() {
  static const std::vector<CalibSetting> kSettings = [] {
    std::vector<CalibSetting> settings{{"baseline", "-50"},
                                       {"ref_dist", "1000"},
                                       {"cam_type", "2"},
                                       {"lut_sample_bit", "4"},
                                       {"lut_extend_ratio", "0.1"},
                                       {"ir_l_comp_coeff", "0.25"},
                                       {"ir_r_comp_coeff", "-0.5"},
                                       {"ldm_comp_coeff", "0.125"},
                                       {"invalid_disp", "-8"}};
    for (const char* const key : {"src_img_scale", "dst_focal_scale", "d2d_params_unit", "depth_scale", "valid_scale"})
      settings.push_back({key, "1"});
    for (const CalibKey& key : calib_keys()) {
      const auto same = [&key](const CalibSetting& setting) { return setting.key == key.key; };
      if (std::ranges::none_of(settings, same)) settings.push_back({key.key, "0"});
    }
    return settings;
  }();
  return kSettings;
}

// Loads the plain configuration with some settings of its own, and gives the temperatures.
inline void prepare_calibration(const std::vector<CalibSetting>& changes = {}) {
  CalibInputText text;
  for (const auto* const settings : {&plain_settings(), &changes}) {
    for (const CalibSetting& setting : *settings)
      text.set(setting.key, setting.value);
  }
  EXPECT_EQ(load_input_configs_content(text.text().c_str()), 0);
  set_calib_temp_info(31.5F, 32.25F, 35.75F);
}

// --- running the converter -------------------------------------------------------------------------------------------

// The messages of a run that succeeds, in their order.
inline std::vector<std::string> step_messages(int model = 0) {
  return {"calibration distortion model: " + std::to_string(model),
          "parse_rectify_d2c_params_from_stereo_with_rgb_calib_params() successful!",
          "set_rectify_d2c_params() successful!",
          "convert_d2d_params_to_register_elements() successful!",
          "convert_d2d_params_to_register_elements() successful!",
          "convert_d2c_params_float_to_register() successful!"};
}

inline std::string lines_of(const std::vector<std::string>& texts) {
  std::string lines;
  for (const std::string& text : texts)
    lines += text + "\n";
  return lines;
}

// What the conversion of two LUTs tells.
inline constexpr const char* kTwoLutsConverted =
    "convert lut_dx from float to register \nconvert lut_dy from float to register \nconvert lut_dx and lut_dy end \n"
    "convert lut_dx from float to register \nconvert lut_dy from float to register \nconvert lut_dx and lut_dy end \n";

// Whether a record is full of the rubbish of before.
template <typename Record>
bool untouched(const Record& record) {
  const auto bytes = bytes_of(record);
  return std::ranges::all_of(bytes, [](unsigned char byte) { return byte == 0xAA; });
}

// A run of the converter; the records are full of rubbish before it.
struct Conversion {
  Outcome outcome;
  std::vector<std::string> passed;  // to the callback
  DeStereoRectifyParams_S rect = filled_with<DeStereoRectifyParams_S>(0xAA);
  DeCameraD2CParams_S d2c = filled_with<DeCameraD2CParams_S>(0xAA);
  DepthCalcParams_S depth = filled_with<DepthCalcParams_S>(0xAA);
};

inline Conversion converted(const CalibrateParamsMulti& calib, bool with_color = true) {
  Conversion run;
  DeLogCallback log = [&run](const char* text) { run.passed.emplace_back(text); };
  run.outcome = outcome_of([&] {
    return align_ir_ir_rgb_params_to_register_converter(
        calib, &run.rect, with_color ? &run.d2c : nullptr, &run.depth, &log);
  });
  return run;
}

}  // namespace vq3900::test

#endif
