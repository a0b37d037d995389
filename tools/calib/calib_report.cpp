#include "calib/calib_report.h"

#include <fmt/format.h>

#include <array>
#include <cmath>
#include <cstddef>

namespace vq3900::tool {

namespace {

using nlohmann::ordered_json;

constexpr std::array<const char*, 8> kBrownNames{"k1", "k2", "k3", "k4", "k5", "k6", "p1", "p2"};
constexpr std::array<const char*, 4> kEquidistantNames{"k1", "k2", "k3", "k4"};

const char* model_text(LensModel model) {
  return model == LensModel::kBrown ? "Brown" : "equidistant";
}

// Coefficients that are 0 are left out, unless all are.
std::string distortion_text(LensModel model, const CalibratedCamera& camera) {
  std::string text;
  const auto names = coefficient_names(model);
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (camera.distortion[i] != 0)
      text += fmt::format("{}{} {:.6g}", text.empty() ? "" : ", ", names[i], camera.distortion[i]);
  }
  return text.empty() ? "none" : text;
}

std::string camera_text(const char* name, LensModel model, const CalibratedCamera& camera) {
  return fmt::format(
      "{}\n"
      "  image         {}x{}\n"
      "  fx, fy        {:.3f}, {:.3f}\n"
      "  cx, cy        {:.3f}, {:.3f}\n"
      "  distortion    {}\n",
      name,
      camera.size.width,
      camera.size.height,
      camera.fx,
      camera.fy,
      camera.cx,
      camera.cy,
      distortion_text(model, camera));
}

std::string pose_text(const CameraPose& pose) {
  return fmt::format(
      "  rotation from left\n{}"
      "  translation   {:.3f}, {:.3f}, {:.3f} mm\n"
      "  distance      {:.3f} mm\n"
      "  angle         {:.3f} degrees\n",
      rotation_text(pose.rotation.m, 4),
      pose.translation[0],
      pose.translation[1],
      pose.translation[2],
      norm(pose.translation),
      degrees_of(pose.rotation));
}

ordered_json camera_json(LensModel model, const CalibratedCamera& camera) {
  ordered_json distortion;
  const auto names = coefficient_names(model);
  for (std::size_t i = 0; i < names.size(); ++i)
    distortion[names[i]] = camera.distortion[i];
  return {{"width", camera.size.width},
          {"height", camera.size.height},
          {"fx", camera.fx},
          {"fy", camera.fy},
          {"cx", camera.cx},
          {"cy", camera.cy},
          {"distortion", std::move(distortion)}};
}

ordered_json pose_json(const CameraPose& pose) {
  return {{"rotation", pose.rotation.m},
          {"translation_mm", pose.translation},
          {"distance_mm", norm(pose.translation)},
          {"angle_degrees", degrees_of(pose.rotation)}};
}

}  // namespace

std::span<const char* const> coefficient_names(LensModel model) {
  if (model == LensModel::kBrown) return kBrownNames;
  return kEquidistantNames;
}

std::string rotation_text(std::span<const double> matrix, int indent) {
  std::string text;
  for (std::size_t i = 0; i + 2 < matrix.size(); i += 3) {
    text += fmt::format("{:{}}{:10.6f} {:10.6f} {:10.6f}\n", "", indent, matrix[i], matrix[i + 1], matrix[i + 2]);
  }
  return text;
}

std::string calibration_text(const std::string& path, const StereoCalibration& calibration) {
  std::string text = fmt::format("{}: {}, {} distortion\n\n", path, calibration.format, model_text(calibration.model));
  text += camera_text("left IR camera (camera 1, the reference)", calibration.model, calibration.left);
  text += camera_text("\nright IR camera (camera 0)", calibration.model, calibration.right);
  text += pose_text(calibration.right_pose);
  if (calibration.color) {
    text += camera_text("\ncolour camera", calibration.model, calibration.color->camera);
    text += pose_text(calibration.color->pose);
  } else {
    text += "\nno colour camera\n";
  }
  const double baseline = signed_baseline_of(calibration.right_pose);
  return text + fmt::format("\nbaseline {:.3f} mm, angle between the IR cameras {:.3f} degrees\n",
                            baseline,
                            degrees_of(calibration.right_pose.rotation));
}

ordered_json calibration_json(const std::string& path, const StereoCalibration& calibration) {
  ordered_json right = camera_json(calibration.model, calibration.right);
  right["pose"] = pose_json(calibration.right_pose);
  ordered_json report{{"file", path},
                      {"format", calibration.format},
                      {"distortion_model", model_text(calibration.model)},
                      {"baseline_mm", signed_baseline_of(calibration.right_pose)},
                      {"angle_degrees", degrees_of(calibration.right_pose.rotation)},
                      {"left", camera_json(calibration.model, calibration.left)},
                      {"right", std::move(right)}};
  if (calibration.color) {
    report["color"] = camera_json(calibration.model, calibration.color->camera);
    report["color"]["pose"] = pose_json(calibration.color->pose);
  } else {
    report["color"] = nullptr;
  }
  return report;
}

}  // namespace vq3900::tool
