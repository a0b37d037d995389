// Calibrations and calibration input configurations out of the input: mostly sound ones, with odd numbers among them.
#ifndef VQ3900_TESTS_FUZZ_CALIB_ARGUMENTS_H
#define VQ3900_TESTS_FUZZ_CALIB_ARGUMENTS_H

#include <algorithm>
#include <cmath>
#include <string>

#include "stateful_steps.h"

namespace vq3900::fuzz {

inline std::string calib_text(World& world) {
  const auto number = [&](int low, int high) {
    return std::to_string(low + world.take<std::uint16_t>() % (high - low + 1));
  };
  const auto usually = [&](const char* text, int low, int high) { return world.rarely() ? number(low, high) : text; };
  std::string text =
      "[basic]\nbaseline=" + usually("-50", -60, 60) + "\nref_dist=" + number(0, 2000) + "\ncam_type=" + number(0, 4) +
      "\nmirrored=0\nmipi_channel_status=" + number(0, 3) + "\n[rectify]\ndistort_type=" + number(0, 3) +
      "\nrotate_type=0\nsrc_img_scale=" + usually("1", 0, 2) + "\nsrc_img_left_chop=" + usually("0", -10, 30) +
      "\ndst_focal_scale=" + usually("1", 0, 3) + "\nlut_sample_bit=" + usually("4", 2, 7) +
      "\nlut_extend_ratio=" + number(0, 4) + "\n[d2d]\ndisp_offset=" + number(-20, 20) +
      "\nd2d_params_unit=" + usually("1", 0, 3) + "\ndepth_mode=" + number(0, 1) + "\n[d2c]\n";
  for (const char* const image : {"depth", "valid", "rgb"}) {
    for (const char* const side : {"left_w", "top_h", "right_w", "bottom_h"})
      text += std::string("clip_") + side + "_" + image + "=" + number(0, 40) + "\n";
  }
  return text + "depth_scale=1\nvalid_scale=1\nd2d_params_unit_in_R_en=" + number(0, 1) + "\n";
}

// A camera of either kind of record: DeCalibCamera_S or DeCalibRecordCamera_S.
template <typename Camera>
void fill_camera(World& world, Camera& camera) {
  using Side = decltype(camera.width);
  camera.width = static_cast<Side>(64 + world.take<std::uint8_t>() % 4 * 64);
  camera.height = static_cast<Side>(48 + world.take<std::uint8_t>() % 4 * 48);
  camera.fx = camera.fy = static_cast<float>(100 + world.take<std::uint16_t>() % 400);
  camera.cx = static_cast<float>(camera.width) / 2;
  camera.cy = static_cast<float>(camera.height) / 2;
  camera.distortion[0] = static_cast<float>(world.take<std::int8_t>()) / 256;
  if (!world.rarely()) return;
  camera.distortion[world.take<std::uint8_t>() % 8] = real<float>(world);
  if constexpr (std::is_same_v<Side, float>) {
    camera.width = real<float>(world);
  } else {
    camera.height = world.take<std::int32_t>();
  }
  camera.fy = real<float>(world);
  camera.cx = real<float>(world);
  camera.polynomial_param = real<double>(world);
}

// CalibrateParamsMulti or DeCalibRecord_S.
template <typename Calibration>
Calibration calibration(World& world) {
  Calibration calib{};
  calib.distortion_model = world.rarely() ? world.take<std::int32_t>() : world.take<std::uint8_t>() % 6;
  calib.model_override = world.rarely() ? 1 : 0;
  fill_camera(world, calib.left_ir);
  calib.right_ir = calib.left_ir;
  if (world.rarely()) fill_camera(world, calib.right_ir);
  if (!world.rarely()) fill_camera(world, calib.rgb);
  const float turn = static_cast<float>(world.take<std::int8_t>()) / 512;
  const std::array<float, 9> rotation{std::cos(turn), -std::sin(turn), 0, std::sin(turn), std::cos(turn), 0, 0, 0, 1};
  std::copy(rotation.begin(), rotation.end(), calib.ir_rotation);
  std::copy(rotation.begin(), rotation.end(), calib.rgb_rotation);
  calib.ir_translation[0] = static_cast<float>(-1 - world.take<std::uint8_t>());
  calib.rgb_translation[0] = world.take<std::int8_t>();
  if (!world.rarely()) return calib;
  calib.ir_rotation[world.take<std::uint8_t>() % 9] = real<float>(world);
  calib.rgb_rotation[world.take<std::uint8_t>() % 9] = real<float>(world);
  calib.ir_translation[world.take<std::uint8_t>() % 3] = real<float>(world);
  calib.rgb_translation[world.take<std::uint8_t>() % 3] = real<float>(world);
  return calib;
}

}  // namespace vq3900::fuzz

#endif
