#include "calib/stereo_derivation.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <span>

#include "modules/fixed_point.h"

namespace vq3900 {

namespace {

constexpr std::int64_t kMostPixels = std::numeric_limits<std::uint16_t>::max();

// A number of pixels times a scale: one single-precision product, truncated.
std::int64_t scaled_size(std::int64_t pixels, float scale) {
  const float size = static_cast<float>(pixels) * scale;
  return to_integer(widen(size));
}

bool all_finite(std::span<const float> values) {
  return std::all_of(values.begin(), values.end(), [](float value) { return std::isfinite(value); });
}

bool finite_intrinsics(const DeCalibCamera_S& camera) {
  return std::isfinite(camera.fx) && std::isfinite(camera.fy) && std::isfinite(camera.cx) && std::isfinite(camera.cy);
}

bool fits_image(std::int64_t size) {
  return size >= 1 && size <= kMostPixels;
}

// The component of largest magnitude; of equal ones the first.
float dominant(const float (&translation)[3]) {
  float most = translation[0];
  for (const float component : translation) {
    if (std::fabs(component) > std::fabs(most)) most = component;
  }
  return most;
}

Matrix3 matrix_of(const float (&rotation)[9]) {
  Matrix3 matrix;
  std::transform(std::begin(rotation), std::end(rotation), matrix.m.begin(), widen);
  return matrix;
}

void store(const Matrix3& matrix, float (&to)[9]) {
  std::transform(
      matrix.m.begin(), matrix.m.end(), std::begin(to), [](double entry) { return static_cast<float>(entry); });
}

DeCameraIntrinsic_S intrinsic_of(const DeCalibCamera_S& camera) {
  return {camera.fx,
          camera.fy,
          camera.cx,
          camera.cy,
          static_cast<std::uint16_t>(camera.width),
          static_cast<std::uint16_t>(camera.height)};
}

// An offset of the virtual principal point counts from a tenth of a pixel on.
double effective_offset(float offset) {
  return std::fabs(widen(offset)) > 0.1 ? widen(offset) : 0.0;
}

void scale_and_chop(const CalibInputConfig& config, DeCalibCamera_S& camera) {
  const float scale = config.src_img_scale;
  camera.fx *= scale;
  camera.fy *= scale;
  const float cx = camera.cx * scale;
  const float cy = camera.cy * scale;
  camera.cx = cx - static_cast<float>(config.src_img_left_chop);
  camera.cy = cy - static_cast<float>(config.src_img_top_chop);
  const auto chopped = [scale](std::int32_t size, std::int16_t near, std::int16_t far) {
    const std::int64_t rest = scaled_size(size, scale) - far - near;
    constexpr std::int64_t kLimit = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(std::clamp(rest, -kLimit, kLimit));
  };
  camera.width = chopped(camera.width, config.src_img_left_chop, config.src_img_right_chop);
  camera.height = chopped(camera.height, config.src_img_top_chop, config.src_img_bottom_chop);
}

struct Clip {
  std::int64_t left;
  std::int64_t top;
  std::int64_t right;
  std::int64_t bottom;
};

// Clips an image and scales what is left. Nothing when the size does not fit its field.
std::optional<DeCameraIntrinsic_S> clipped(float fx, float fy, float cx, float cy, std::int64_t width,
                                           std::int64_t height, const Clip& clip, float scale) {
  const std::int64_t w = scaled_size(width - clip.left - clip.right, scale);
  const std::int64_t h = scaled_size(height - clip.top - clip.bottom, scale);
  if (w < 0 || w > kMostPixels || h < 0 || h > kMostPixels) return std::nullopt;
  const float x = cx - static_cast<float>(clip.left);
  const float y = cy - static_cast<float>(clip.top);
  return DeCameraIntrinsic_S{
      fx * scale, fy * scale, x * scale, y * scale, static_cast<std::uint16_t>(w), static_cast<std::uint16_t>(h)};
}

}  // namespace

void scale_and_chop(const CalibInputConfig& config, CalibrateParamsMulti& calib) {
  scale_and_chop(config, calib.left_ir);
  scale_and_chop(config, calib.right_ir);
}

bool is_derivable(const CalibrateParamsMulti& calib, bool with_color) {
  const auto good = [](const DeCalibCamera_S& camera) {
    return finite_intrinsics(camera) && camera.fx > 0 && camera.fy > 0 && fits_image(camera.width) &&
           fits_image(camera.height);
  };
  const bool stereo =
      all_finite(calib.ir_rotation) && all_finite(calib.ir_translation) && good(calib.left_ir) && good(calib.right_ir);
  const bool color =
      finite_intrinsics(calib.rgb) && all_finite(calib.rgb_rotation) && all_finite(calib.rgb_translation);
  return stereo && (color || !with_color);
}

float signed_baseline(const float (&translation)[3]) {
  const float xx = translation[0] * translation[0];
  const float yy = translation[1] * translation[1];
  const float zz = translation[2] * translation[2];
  const float xy = xx + yy;
  const float sum = xy + zz;
  const float length = std::sqrt(sum);
  return dominant(translation) < 0.0F ? -length : length;
}

bool baseline_sign_differs(float configured, const float (&translation)[3]) {
  const float product = configured * dominant(translation);
  return product < 0.0F;
}

CameraView camera_view(const DeCalibCamera_S& camera, std::int32_t distortion_model) {
  return {static_cast<double>(camera.width),
          static_cast<double>(camera.height),
          widen(camera.fx),
          widen(camera.fy),
          widen(camera.cx),
          widen(camera.cy),
          make_distortion_model(distortion_model, camera.distortion, camera.polynomial_param)};
}

std::optional<Rectification> derive_rectification(const CalibrateParamsMulti& calib, const CalibInputConfig& config) {
  const Vector3 translation{
      widen(calib.ir_translation[0]), widen(calib.ir_translation[1]), widen(calib.ir_translation[2])};
  const auto rotations = rectifying_rotations(matrix_of(calib.ir_rotation), translation);
  if (!rotations) return std::nullopt;
  const CameraView left = camera_view(calib.left_ir, calib.distortion_model);
  const CameraView right = camera_view(calib.right_ir, calib.distortion_model);
  const auto pinhole = virtual_pinhole(left, right, *rotations);
  if (!pinhole) return std::nullopt;

  const bool fixed = config.dst_res_fixed != 0;
  const std::int64_t width = fixed ? calib.left_ir.width : scaled_size(calib.left_ir.width, config.dst_focal_scale);
  const std::int64_t height = fixed ? calib.left_ir.height : scaled_size(calib.left_ir.height, config.dst_focal_scale);
  if (!fits_image(width) || !fits_image(height)) return std::nullopt;

  const auto focal = static_cast<float>(pinhole->focal * widen(config.dst_focal_scale));
  const auto cy = static_cast<float>(pinhole->cy + effective_offset(config.ir_virtual_cy_offset));
  const auto virtual_camera = [&](float cx_offset) -> DeCameraIntrinsic_S {
    const auto cx = static_cast<float>(pinhole->cx + effective_offset(cx_offset));
    return {focal, focal, cx, cy, static_cast<std::uint16_t>(width), static_cast<std::uint16_t>(height)};
  };

  Rectification result;
  DeStereoRectifyParams_S& record = result.record;
  record.cam1_rectified = virtual_camera(config.ir_l_virtual_cx_offset);
  record.cam0_rectified = virtual_camera(config.ir_r_virtual_cx_offset);
  std::ranges::copy(calib.left_ir.distortion, record.cam1_distortion);
  std::ranges::copy(calib.right_ir.distortion, record.cam0_distortion);
  store(rotations->left, record.cam1_rotation);
  store(rotations->right, record.cam0_rotation);
  record.cam1 = intrinsic_of(calib.left_ir);
  record.cam0 = intrinsic_of(calib.right_ir);
  result.left_rotation = rotations->left;
  return result;
}

std::optional<DeCameraD2CParams_S> derive_d2c(const CalibrateParamsMulti& calib, const CalibInputConfig& config,
                                              const Rectification& rectification) {
  const DeCameraIntrinsic_S& reference = rectification.record.cam1_rectified;
  const DeCalibCamera_S& rgb = calib.rgb;
  const Clip depth_clip{
      config.clip_left_w_depth, config.clip_top_h_depth, config.clip_right_w_depth, config.clip_bottom_h_depth};
  const Clip valid_clip{
      config.clip_left_w_valid, config.clip_top_h_valid, config.clip_right_w_valid, config.clip_bottom_h_valid};
  const Clip rgb_clip{config.clip_left_w_rgb, config.clip_top_h_rgb, config.clip_right_w_rgb, config.clip_bottom_h_rgb};

  const auto depth = clipped(reference.fx,
                             reference.fy,
                             reference.cx,
                             reference.cy,
                             reference.width,
                             reference.height,
                             depth_clip,
                             config.depth_scale);
  const auto valid = clipped(rgb.fx, rgb.fy, rgb.cx, rgb.cy, rgb.width, rgb.height, valid_clip, config.valid_scale);
  if (!depth || !valid) return std::nullopt;
  const auto color = clipped(valid->fx, valid->fy, valid->cx, valid->cy, valid->width, valid->height, rgb_clip, 1.0F);
  if (!color) return std::nullopt;

  DeCameraD2CParams_S record{};
  record.depth = *depth;
  record.valid = *valid;
  record.color = *color;
  std::ranges::copy(rgb.distortion, record.color_distortion);
  // A point of the rectified reference camera goes back to that camera, and from there into the colour camera.
  store(matrix_of(calib.rgb_rotation) * transpose(rectification.left_rotation), record.rotation);
  std::ranges::copy(calib.rgb_translation, record.translation);
  return record;
}

}  // namespace vq3900
