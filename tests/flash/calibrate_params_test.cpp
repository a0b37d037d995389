#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "calib/calib_record.h"
#include "support/calib_builds.h"
#include "support/calib_samples.h"
#include "support/capture.h"
#include "support/numbers.h"
#include "support/registers.h"

namespace vq3900::test {
namespace {

TEST(CalibrateParams, EveryFieldIsTakenOverAndSizesAreTruncated) {
  CalibrateParamsMulti sample = sample_rig();
  sample.distortion_model = 5;
  sample.model_override = 1;
  sample.left_ir.polynomial_param = 1.25;
  sample.rgb.polynomial_param = 2.5;
  DeCalibRecord_S record = record_of(sample);
  record.left_ir.width = 640.99F;
  record.right_ir.height = 400.5F;
  record.rgb.width = 1280.75F;
  auto calib = filled_with<CalibrateParamsMulti>(0xAA);
  EXPECT_EQ(outcome_of([&] { return set_calibrate_params_multi(&record, calib); }), silent_success());
  EXPECT_EQ(bytes_of(calib), bytes_of(sample));
}

TEST(CalibrateParams, NullRecordIsRefusedAndNothingIsStored) {
  auto calib = filled_with<CalibrateParamsMulti>(0xAA);
  EXPECT_EQ(outcome_of([&] { return set_calibrate_params_multi(nullptr, calib); }), silent(-2));
  EXPECT_TRUE(untouched(calib));
}

struct RecordChange {
  std::string name;
  std::function<void(DeCalibRecord_S&)> change;
};

void add_camera_refusals(std::vector<RecordChange>& changes, const char* side,
                         DeCalibRecordCamera_S DeCalibRecord_S::*camera) {
  struct Member {
    const char* name;
    float DeCalibRecordCamera_S::*member;
    std::vector<float> refused;
  };
  const std::vector<float> sizes{0, 0.99F, -1, -640, 65536, 1e9F, kNan, kInfinity, -kInfinity};
  const std::vector<float> focals{0, -0.0F, -500, kNan, kInfinity, -kInfinity};
  const std::vector<Member> members{{"width", &DeCalibRecordCamera_S::width, sizes},
                                    {"height", &DeCalibRecordCamera_S::height, sizes},
                                    {"fx", &DeCalibRecordCamera_S::fx, focals},
                                    {"fy", &DeCalibRecordCamera_S::fy, focals}};
  for (const Member& row : members) {
    for (const float value : row.refused) {
      changes.push_back({std::string(side) + "." + row.name + " = " + std::to_string(value),
                         [camera, member = row.member, value](DeCalibRecord_S& r) { r.*camera.*member = value; }});
    }
  }
}

const std::vector<RecordChange>& refused_records() {
  static const std::vector<RecordChange> kChanges = [] {
    std::vector<RecordChange> changes;
    add_camera_refusals(changes, "left_ir", &DeCalibRecord_S::left_ir);
    add_camera_refusals(changes, "right_ir", &DeCalibRecord_S::right_ir);
    for (const float value : {kNan, kInfinity, -kInfinity}) {
      for (const std::size_t i : {0U, 4U, 8U}) {
        changes.push_back({"ir_rotation", [=](DeCalibRecord_S& r) { r.ir_rotation[i] = value; }});
        changes.push_back({"rgb_rotation", [=](DeCalibRecord_S& r) { r.rgb_rotation[i] = value; }});
      }
      for (const std::size_t i : {0U, 1U, 2U}) {
        changes.push_back({"ir_translation", [=](DeCalibRecord_S& r) { r.ir_translation[i] = value; }});
        changes.push_back({"rgb_translation", [=](DeCalibRecord_S& r) { r.rgb_translation[i] = value; }});
      }
    }
    return changes;
  }();
  return kChanges;
}

TEST(CalibrateParams, RefusedRecordStoresNothing) {
  for (const RecordChange& row : refused_records()) {
    SCOPED_TRACE(row.name);
    DeCalibRecord_S record = record_of(parallel_rig());
    row.change(record);
    auto calib = filled_with<CalibrateParamsMulti>(0xAA);
    EXPECT_EQ(outcome_of([&] { return set_calibrate_params_multi(&record, calib); }), silent(-2));
    EXPECT_TRUE(untouched(calib));
  }
}

TEST(CalibrateParams, WidestAndNarrowestSensorsAndAnyColourCameraAreTaken) {
  DeCalibRecord_S record = record_of(parallel_rig());
  record.left_ir.width = 1;
  record.left_ir.height = 1.99F;
  record.right_ir.width = 65535;
  record.right_ir.height = 65535.9F;
  record.left_ir.fx = 1e-30F;
  record.rgb = {};
  CalibrateParamsMulti calib{};
  EXPECT_EQ(set_calibrate_params_multi(&record, calib), 0);
  EXPECT_EQ(calib.left_ir.width, 1);
  EXPECT_EQ(calib.left_ir.height, 1);
  EXPECT_EQ(calib.right_ir.width, 65535);
  EXPECT_EQ(calib.right_ir.height, 65535);
  record.rgb.fx = kNan;
  record.rgb.width = kNan;
  EXPECT_EQ(set_calibrate_params_multi(&record, calib), 0);
  EXPECT_EQ(calib.rgb.width, 0);
}

}  // namespace
}  // namespace vq3900::test
