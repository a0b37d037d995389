// The rectification block's two cameras in tests: their registers, parameters that tell them apart, and the numbers of
// a camera with their places and formats.
#ifndef VQ3900_TESTS_SUPPORT_RECTIFY_CAMERAS_H
#define VQ3900_TESTS_SUPPORT_RECTIFY_CAMERAS_H

#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "state/engine.h"

namespace vq3900::test {

using Nine = std::array<double, 9>;

inline constexpr std::uint32_t kBlock[] = {0x52080000, 0x52000000};  // by camera
inline constexpr std::uint32_t kControl[] = {0x52080070, 0x52000070};
inline constexpr std::uint32_t kSbg2r = 0x520000A0;

inline constexpr float kIdentity[]{1, 0, 0, 0, 1, 0, 0, 0, 1};

inline void set_cam_mode(std::uint32_t mode) {
  engine().basic.cam_mode = mode;
}

// Gives a camera parameters whose registers tell it from the other one.
inline void give_params(std::uint32_t camera, float tag) {
  const RectifyIntrinsic intrinsic{tag, 2 * tag, 3 * tag, 4 * tag, 0x123, 0x456};
  const float distortion[]{0.5F, 0, 0, 0, 0, 0, 0, 0};
  const float k[]{2048, 2048, 0, 0};
  EXPECT_EQ(set_rectify_params_brown(camera, &intrinsic, distortion, kIdentity, k), 0);
}

inline std::pair<DeRectifyParams_S, DeRectifyCtrlParams_S> rectify_records() {
  std::pair<DeRectifyParams_S, DeRectifyCtrlParams_S> out;
  EXPECT_EQ(de_copy_rectify_params(&out.first, &out.second), 0);
  return out;
}

// A number of a camera: its register's place in the block, its format and whether it comes back with a sign.
struct NumberRow {
  std::string name;
  std::uint32_t offset;
  unsigned width;
  int frac_bits;
  bool is_signed;
  std::size_t index;

  bool is_kk() const { return width == 26; }
  bool is_float() const { return offset >= 0x60; }
  std::string step() const {
    return std::string("convert_rectify_") + (is_kk() ? "kk" : "commom") + "_float_to_register error!,camera id = ";
  }
  void put(std::uint32_t camera, double value) const {
    RectifyCameraParams& params = engine().rectify.camera[camera];
    float* const intrinsic[] = {&params.intrinsic.fx, &params.intrinsic.fy, &params.intrinsic.cx, &params.intrinsic.cy};
    if (is_float()) {
      *intrinsic[index] = static_cast<float>(value);
    } else {
      (is_kk() ? params.kk : params.matrix)[index] = value;
    }
  }
  double take(std::uint32_t camera) const {
    const RectifyCameraParams& params = engine().rectify.camera[camera];
    const float intrinsic[] = {params.intrinsic.fx, params.intrinsic.fy, params.intrinsic.cx, params.intrinsic.cy};
    return is_float() ? static_cast<double>(intrinsic[index]) : (is_kk() ? params.kk : params.matrix)[index];
  }
};

inline std::vector<NumberRow> camera_numbers() {
  std::vector<NumberRow> rows;
  constexpr int kFraction[] = {39, 40, 30, 40, 39, 30, 41, 43, 31};
  constexpr const char* kIntrinsic[] = {"rectify_fx", "rectify_fy", "rectify_cx", "rectify_cy"};
  for (std::uint32_t i = 0; i < 9; ++i)
    rows.push_back({"rectify_r" + std::to_string(i), 0x30 + 4 * i, 32, kFraction[i], i % 4 != 0, i});
  for (std::uint32_t i = 0; i < 4; ++i)
    rows.push_back({kIntrinsic[i], 0x60 + 4 * i, 32, 20, false, i});
  for (std::uint32_t i = 0; i < 9; ++i)
    rows.push_back({"rectify_k" + std::to_string(i), 4 * i, 26, 24, true, i});
  return rows;
}

}  // namespace vq3900::test

#endif
