#include "calib/module_settings_api.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <utility>

#include "modules/fixed_point.h"
#include "modules/rectify.h"
#include "modules/rectify_map_api.h"
#include "regs/steps.h"
#include "state/engine.h"

namespace vq3900 {

namespace {

constexpr std::int32_t kSingleCamera = 0;
constexpr std::int32_t kStereo = 1;

// One configuration never inherits another's correction, in the tables neither: images are made of them.
void drop_corrections() {
  clear_kk(engine().registers);
  for (RectifyCameraParams& camera : engine().rectify.camera)
    camera.kk_set = false;
  for (RectifyLut& lut : engine().rectify_lut.camera) {
    lut.map_set = false;
    lut.grid.release();
  }
}

std::array<float, 4> pinhole(const DeCameraIntrinsic_S& intrinsic) {
  return {intrinsic.fx, intrinsic.fy, intrinsic.cx, intrinsic.cy};
}

// What a camera's half of the rectification record says.
struct CameraHalf {
  std::uint32_t id;
  const DeCameraIntrinsic_S& rectified;
  const float (&distortion)[8];
  const float (&rotation)[9];
  const DeCameraIntrinsic_S& unrectified;
};

std::int32_t set_camera(const CameraHalf& camera, std::uint8_t lut_status, UndistortionLut lut) {
  const std::array<float, 4> intrinsic = pinhole(camera.unrectified);
  const bool polynomial = lut_status == 0 || lut_status == 2;
  const bool map = lut_status == 1 || lut_status == 2;
  if (polynomial) {
    const std::int32_t code =
        set_rectify_params_brown(camera.id, &camera.rectified, camera.distortion, camera.rotation, intrinsic.data());
    if (code != VQ3900_OK) return code;
  }
  if (!map) return VQ3900_OK;
  return keep_rectify_params_map(
      camera.id, camera.rectified, lut.info, camera.rotation, intrinsic.data(), grid_owner(std::move(lut.generator)));
}

std::int32_t set_projection(const DeCameraD2CParams_S& d2c) {
  const CalibInputConfig& config = engine().calib_input;
  std::array<float, 12> pose{};
  const bool in_unit = config.d2d_params_unit_in_R_en == 1 && std::fabs(widen(config.d2d_params_unit)) > 0.0001;
  for (std::size_t i = 0; i < 9; ++i) {
    pose[i] = in_unit ? d2c.rotation[i] * config.d2d_params_unit : d2c.rotation[i];
  }
  for (std::size_t i = 0; i < 3; ++i)
    pose[9 + i] = d2c.translation[i];
  return set_d2c_calib_params(pinhole(d2c.depth).data(), pinhole(d2c.color).data(), pose.data());
}

}  // namespace

std::int32_t set_rectify_d2c_params(std::int32_t camera_mode, const DeStereoRectifyParams_S& rect,
                                    const DeCameraD2CParams_S* d2c, CameraLuts luts, const DepthCalcParams_S& depth) {
  const std::uint8_t lut_status = engine().calib_input.distort_type;
  const bool to_plane = camera_mode == kSingleCamera || depth.depth_mode == 0;
  const CameraHalf camera_1{1, rect.cam1_rectified, rect.cam1_distortion, rect.cam1_rotation, rect.cam1};
  const CameraHalf camera_0{0, rect.cam0_rectified, rect.cam0_distortion, rect.cam0_rotation, rect.cam0};
  drop_corrections();
  return run_steps(
      [&] { return set_camera_mode(camera_mode, static_cast<std::uint8_t>(depth.depth_mode)); },
      [&] { return set_pbf_params(depth.baseline, depth.focal_length); },
      [&] { return to_plane ? set_ref_plane_dist(depth.ref_dist) : VQ3900_OK; },
      [&] { return set_rectify_kk_lut(lut_status); },
      [&] { return set_camera(camera_1, lut_status, std::move(luts[1])); },
      [&] { return camera_mode == kStereo ? set_camera(camera_0, lut_status, std::move(luts[0])) : VQ3900_OK; },
      [&] { return d2c == nullptr ? VQ3900_OK : set_projection(*d2c); });
}

}  // namespace vq3900
