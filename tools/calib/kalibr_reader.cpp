// Kalibr camchains: a map cam0, cam1, ... of cameras. T_cn_cnm1 takes a point of the camera before into this one;
// metres.
#include <fmt/format.h>

#include <string>
#include <vector>

#include "calib/calib_values.h"
#include "calib/yaml_values.h"

namespace vq3900::tool {

namespace {

LensModel read_model(const YamlValue& camera) {
  const YamlValue pinhole = camera.at("camera_model");
  if (pinhole.text() != "pinhole") pinhole.place.fail("only the pinhole model is supported");
  const YamlValue model = camera.at("distortion_model");
  if (model.text() == "radtan") return LensModel::kBrown;
  if (model.text() != "equidistant") model.place.fail("only radtan and equidistant are supported");
  return LensModel::kEquidistant;
}

CalibratedCamera read_camera(const YamlValue& entry, LensModel model) {
  CalibratedCamera camera;
  const YamlValue resolution = entry.at("resolution");
  const std::vector<double> size = resolution.numbers();
  require_count(resolution.place, size.size(), 2);
  camera.size = {pixels_at(resolution.place, size[0]), pixels_at(resolution.place, size[1])};
  const YamlValue intrinsics = entry.at("intrinsics");
  const std::vector<double> pinhole = intrinsics.numbers();
  require_count(intrinsics.place, pinhole.size(), 4);
  set_pinhole(intrinsics.place, pinhole[0], pinhole[1], pinhole[2], pinhole[3], camera);
  if (read_model(entry) != model) entry.place.fail("another distortion model than cam0; the library takes one for all");
  const YamlValue coefficients = entry.at("distortion_coeffs");
  set_distortion(coefficients.place, model, coefficients.numbers(), camera);
  return camera;
}

// Four rows of four: rotation and translation, and 0 0 0 1 below.
CameraPose read_pose(const YamlValue& entry) {
  const YamlValue value = entry.at("T_cn_cnm1");
  const std::vector<std::vector<double>> rows = value.number_rows();
  if (rows.size() != 4) value.place.fail(fmt::format("{} rows, expected 4", rows.size()));
  std::vector<double> rotation;
  std::vector<double> translation;
  for (const std::vector<double>& row : rows) {
    require_count(value.place, row.size(), 4);
    if (&row == &rows.back()) break;
    rotation.insert(rotation.end(), row.begin(), row.begin() + 3);
    translation.push_back(row.back());
  }
  if (rows.back() != std::vector<double>{0, 0, 0, 1}) value.place.fail("the last row must be 0 0 0 1");
  return {rotation_at(value.place, rotation), millimetres_at(value.place, translation)};
}

}  // namespace

StereoCalibration read_kalibr(const CalibrationText& file) {
  const YamlValue chain = parse_yaml(file);
  StereoCalibration calibration;
  calibration.format = "Kalibr camchain";
  calibration.model = read_model(chain.at("cam0"));
  calibration.left = read_camera(chain.at("cam0"), calibration.model);
  calibration.right = read_camera(chain.at("cam1"), calibration.model);
  calibration.right_pose = read_pose(chain.at("cam1"));
  if (chain.has("cam2")) {
    const YamlValue color = chain.at("cam2");
    calibration.color =
        ColorCamera{read_camera(color, calibration.model), chained(calibration.right_pose, read_pose(color))};
  }
  return calibration;
}

}  // namespace vq3900::tool
