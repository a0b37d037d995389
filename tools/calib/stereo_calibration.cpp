#include "calib/stereo_calibration.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <limits>
#include <numbers>

namespace vq3900::tool {

namespace {

constexpr std::int32_t kBrownModel = 0;
constexpr std::int32_t kEquidistantModel = 2;

template <typename From, std::size_t Count>
void narrow(const From& from, float (&to)[Count]) {
  std::transform(from.begin(), from.end(), std::begin(to), [](double value) { return static_cast<float>(value); });
}

DeCalibCamera_S record_of(const CalibratedCamera& camera) {
  DeCalibCamera_S record{};
  record.width = camera.size.width;
  record.height = camera.size.height;
  record.fx = static_cast<float>(camera.fx);
  record.fy = static_cast<float>(camera.fy);
  record.cx = static_cast<float>(camera.cx);
  record.cy = static_cast<float>(camera.cy);
  narrow(camera.distortion, record.distortion);
  return record;
}

DeCalibRecordCamera_S image_record_of(const DeCalibCamera_S& camera) {
  DeCalibRecordCamera_S record{};
  record.width = static_cast<float>(camera.width);
  record.height = static_cast<float>(camera.height);
  record.fx = camera.fx;
  record.fy = camera.fy;
  record.cx = camera.cx;
  record.cy = camera.cy;
  std::copy(std::begin(camera.distortion), std::end(camera.distortion), record.distortion);
  record.polynomial_param = camera.polynomial_param;
  return record;
}

}  // namespace

CalibrateParamsMulti to_calibrate_params(const StereoCalibration& calibration) {
  CalibrateParamsMulti params{};
  params.distortion_model = calibration.model == LensModel::kBrown ? kBrownModel : kEquidistantModel;
  params.left_ir = record_of(calibration.left);
  params.right_ir = record_of(calibration.right);
  narrow(calibration.right_pose.rotation.m, params.ir_rotation);
  narrow(calibration.right_pose.translation, params.ir_translation);
  const CameraPose color_pose = calibration.color ? calibration.color->pose : CameraPose{};
  if (calibration.color) params.rgb = record_of(calibration.color->camera);
  narrow(color_pose.rotation.m, params.rgb_rotation);
  narrow(color_pose.translation, params.rgb_translation);
  return params;
}

DeCalibRecord_S to_calib_record(const StereoCalibration& calibration) {
  const CalibrateParamsMulti params = to_calibrate_params(calibration);
  DeCalibRecord_S record{};
  record.distortion_model = params.distortion_model;
  record.left_ir = image_record_of(params.left_ir);
  record.right_ir = image_record_of(params.right_ir);
  record.rgb = image_record_of(params.rgb);
  std::copy(std::begin(params.ir_rotation), std::end(params.ir_rotation), record.ir_rotation);
  std::copy(std::begin(params.ir_translation), std::end(params.ir_translation), record.ir_translation);
  std::copy(std::begin(params.rgb_rotation), std::end(params.rgb_rotation), record.rgb_rotation);
  std::copy(std::begin(params.rgb_translation), std::end(params.rgb_translation), record.rgb_translation);
  return record;
}

double signed_baseline_of(const CameraPose& pose) {
  const Vector3& t = pose.translation;
  const double largest =
      *std::max_element(t.begin(), t.end(), [](double a, double b) { return std::fabs(a) < std::fabs(b); });
  return std::copysign(norm(t), largest);
}

double degrees_of(const Matrix3& rotation) {
  return norm(rotation_vector(rotation)) * 180 / std::numbers::pi;
}

CameraPose chained(const CameraPose& first, const CameraPose& second) {
  Vector3 translation = second.rotation * first.translation;
  for (std::size_t i = 0; i < 3; ++i)
    translation[i] += second.translation[i];
  return {second.rotation * first.rotation, translation};
}

CameraPose relative(const CameraPose& from, const CameraPose& to) {
  const Matrix3 back = transpose(from.rotation);
  return chained({back, scaled(back * from.translation, -1)}, to);
}

}  // namespace vq3900::tool
