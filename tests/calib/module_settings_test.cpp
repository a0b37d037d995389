#include <gtest/gtest.h>

#include <cstdint>
#include <utility>

#include "calib/module_settings_api.h"
#include "state/engine.h"
#include "support/capture.h"
#include "support/engine_fixture.h"

namespace vq3900::test {
namespace {

DeCameraIntrinsic_S camera(float focal, std::uint16_t width) {
  return {focal, focal, 320, 200, width, 400};
}

// Records whose halves differ, as the derivation leaves them.
struct Derived {
  Derived() {
    rect.cam1_rectified = camera(510, 641);
    rect.cam0_rectified = camera(520, 642);
    rect.cam1 = camera(500, 640);
    rect.cam0 = camera(505, 640);
    d2c.depth = camera(510, 641);
    d2c.color = camera(900, 1280);
    for (const std::size_t i : {0U, 4U, 8U})
      rect.cam1_rotation[i] = rect.cam0_rotation[i] = d2c.rotation[i] = 1;
  }

  DeStereoRectifyParams_S rect{};
  DeCameraD2CParams_S d2c{};
  DepthCalcParams_S depth{1, -50, 1000, 500, 1, 0, 0};
  CameraLuts luts;
};

class ModuleSettings : public EngineTest {
 protected:
  static Outcome set(std::int32_t camera_mode, Derived derived, bool with_color = true) {
    return outcome_of([&] {
      return set_rectify_d2c_params(
          camera_mode, derived.rect, with_color ? &derived.d2c : nullptr, std::move(derived.luts), derived.depth);
    });
  }
};

TEST_F(ModuleSettings, StereoSetsBothCamerasAndTheProjection) {
  EXPECT_EQ(set(1, Derived{}), (Outcome{0, "", ""}));
  EXPECT_EQ(engine().basic.cam_mode, 1U);
  EXPECT_EQ(engine().basic.depth_mode, 1);
  EXPECT_EQ(engine().basic.baseline, -50);
  EXPECT_EQ(engine().basic.focal_length_pix, 500);
  EXPECT_EQ(engine().basic.ref_plane_dist, 0);  // absolute depth has no plane
  EXPECT_TRUE(engine().rectify.camera[1].kk_set);
  EXPECT_TRUE(engine().rectify.camera[0].kk_set);
  EXPECT_EQ(engine().rectify.camera[1].intrinsic.width, 641);
  EXPECT_EQ(engine().rectify.camera[0].intrinsic.width, 642);
  EXPECT_NE(engine().d2c.w[0], 0);
}

TEST_F(ModuleSettings, SingleCameraSetsThePlaneAndCamera1Alone) {
  EXPECT_EQ(set(0, Derived{}), (Outcome{0, "", ""}));
  EXPECT_EQ(engine().basic.cam_mode, 0U);
  EXPECT_EQ(engine().basic.ref_plane_dist, 1000);
  EXPECT_TRUE(engine().rectify.camera[1].kk_set);
  EXPECT_EQ(engine().rectify.camera[1].intrinsic.width, 641);
  EXPECT_FALSE(engine().rectify.camera[0].kk_set);
}

TEST_F(ModuleSettings, RelativeDepthSetsThePlane) {
  Derived derived;
  derived.depth.depth_mode = 0;
  EXPECT_EQ(set(1, std::move(derived)).code, 0);
  EXPECT_EQ(engine().basic.ref_plane_dist, 1000);
}

TEST_F(ModuleSettings, WithoutColourTheProjectionStays) {
  engine().d2c.w[0] = 7;
  EXPECT_EQ(set(1, Derived{}, false).code, 0);
  EXPECT_EQ(engine().d2c.w[0], 7);
}

TEST_F(ModuleSettings, RefusedCameraModeEndsItAtOnce) {
  EXPECT_EQ(set(2, Derived{}), (Outcome{-2, "", ""}));
  EXPECT_EQ(engine().basic.baseline, 0);
  EXPECT_FALSE(engine().rectify.camera[1].kk_set);
}

TEST_F(ModuleSettings, RefusedBaselineEndsItBehindTheCameraMode) {
  Derived derived;
  derived.depth.baseline = 0.5F;
  EXPECT_EQ(set(1, std::move(derived)), (Outcome{-2, "check baseline!\n", ""}));
  EXPECT_EQ(engine().basic.cam_mode, 1U);
  EXPECT_FALSE(engine().rectify.camera[1].kk_set);
}

TEST_F(ModuleSettings, CorrectionsOfAnEarlierCalibrationAreDropped) {
  engine().rectify.camera[0].kk_set = true;
  engine().rectify_lut.camera[0].map_set = true;
  EXPECT_EQ(set(0, Derived{}).code, 0);
  EXPECT_FALSE(engine().rectify.camera[0].kk_set);
  EXPECT_FALSE(engine().rectify_lut.camera[0].map_set);
}

}  // namespace
}  // namespace vq3900::test
