// The state of the rectification block: two cameras' parameters and the control flags.
#ifndef VQ3900_STATE_RECTIFY_STATE_H
#define VQ3900_STATE_RECTIFY_STATE_H

#include "vq3900_depth_engine.h"

#include <array>
#include <cstdint>

namespace vq3900 {

struct RectifyCameraParams {
  RectifyIntrinsic intrinsic{};    // rectified (virtual) camera and output size
  std::array<double, 9> matrix{};  // back-projection rectify_r0 to rectify_r8, row-major
  std::array<double, 9> kk{};      // polynomial correction rectify_k0 to rectify_k8
  bool kk_set = false;             // the polynomial correction was given; never cleared by the block itself
};

struct RectifyState {
  std::array<RectifyCameraParams, 2> camera{};
  std::array<std::uint8_t, 2> en0{};  // control bit 0 of each camera
  std::array<std::uint8_t, 2> en1{};  // control bit 1 of each camera
  std::uint8_t lut_en0 = 0;
  std::uint8_t kk_en = 0;
  std::uint8_t lut_en1 = 0;
  std::uint8_t rectify_common = 0;
  std::uint32_t start_rows = 0;
  std::uint8_t sbg_en = 0;
  std::uint8_t rotate_90_en = 0;
  std::uint8_t rotate_clockwise = 0;
  std::uint8_t sub_mode_sel = 0;
};

}  // namespace vq3900

#endif
