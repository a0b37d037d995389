#include "calib/calib_record.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "modules/fixed_point.h"

namespace vq3900 {

namespace {

std::int32_t truncated(float size) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(to_integer(widen(size))));
}

bool fits_a_sensor(float size) {
  return widen(size) >= 1 && widen(size) < 65536;
}

bool is_focal_length(float value) {
  return std::isfinite(value) && value > 0;
}

bool is_usable(const DeCalibRecordCamera_S& camera) {
  return fits_a_sensor(camera.width) && fits_a_sensor(camera.height) && is_focal_length(camera.fx) &&
         is_focal_length(camera.fy);
}

template <std::size_t Count>
bool all_finite(const float (&values)[Count]) {
  return std::all_of(std::begin(values), std::end(values), [](float value) { return std::isfinite(value); });
}

DeCalibCamera_S camera_of(const DeCalibRecordCamera_S& record) {
  DeCalibCamera_S camera{};
  camera.width = truncated(record.width);
  camera.height = truncated(record.height);
  camera.fx = record.fx;
  camera.fy = record.fy;
  camera.cx = record.cx;
  camera.cy = record.cy;
  std::copy(std::begin(record.distortion), std::end(record.distortion), camera.distortion);
  camera.polynomial_param = record.polynomial_param;
  return camera;
}

}  // namespace

std::int32_t set_calibrate_params_multi(const DeCalibRecord_S* record, CalibrateParamsMulti& calib) {
  if (record == nullptr || !is_usable(record->left_ir) || !is_usable(record->right_ir)) return VQ3900_ERROR_ARGUMENT;
  if (!all_finite(record->ir_rotation) || !all_finite(record->ir_translation)) return VQ3900_ERROR_ARGUMENT;
  if (!all_finite(record->rgb_rotation) || !all_finite(record->rgb_translation)) return VQ3900_ERROR_ARGUMENT;
  calib = {};
  calib.distortion_model = record->distortion_model;
  calib.model_override = record->model_override;
  calib.left_ir = camera_of(record->left_ir);
  calib.right_ir = camera_of(record->right_ir);
  calib.rgb = camera_of(record->rgb);
  std::copy(std::begin(record->ir_rotation), std::end(record->ir_rotation), calib.ir_rotation);
  std::copy(std::begin(record->ir_translation), std::end(record->ir_translation), calib.ir_translation);
  std::copy(std::begin(record->rgb_rotation), std::end(record->rgb_rotation), calib.rgb_rotation);
  std::copy(std::begin(record->rgb_translation), std::end(record->rgb_translation), calib.rgb_translation);
  return VQ3900_OK;
}

}  // namespace vq3900
