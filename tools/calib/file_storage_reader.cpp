// OpenCV FileStorage YAML as a stereo calibration leaves it: camera matrices M1, M2, distortions D1, D2, and the pose
// R, T of the right camera, X_right = R X_left + T. The keys may be spread over two files.
#include <fmt/format.h>

#include <string>
#include <vector>

#include "calib/calib_values.h"
#include "calib/yaml_values.h"

namespace vq3900::tool {

namespace {

class FileStorage {
 public:
  explicit FileStorage(std::span<const CalibrationText> files) {
    for (const CalibrationText& file : files)
      documents_.push_back(parse_yaml(file));
  }

  // The value of a key in the first file that has it; where none has, it is missing from the last.
  YamlValue at(const std::string& key) const {
    for (const YamlValue& document : documents_) {
      if (document.has(key)) return document.at(key);
    }
    return documents_.back().at(key);
  }

 private:
  std::vector<YamlValue> documents_;
};

struct Matrix {
  Place place;
  std::vector<double> values;
};

std::size_t read_side(const YamlValue& matrix, const char* key) {
  const YamlValue side = matrix.at(key);
  const double value = side.number();
  constexpr double kMost = 14;
  if (!(value >= 1 && value <= kMost) || value != static_cast<int>(value)) {
    side.place.fail(fmt::format("{:g}; 1 to {:g} is expected", value, kMost));
  }
  return static_cast<std::size_t>(value);
}

Matrix read_matrix(const FileStorage& storage, const std::string& key) {
  const YamlValue entry = storage.at(key);
  const std::size_t count = read_side(entry, "rows") * read_side(entry, "cols");
  const YamlValue type = entry.at("dt");
  if (type.text() != "d" && type.text() != "f") type.place.fail("only matrices of numbers are supported: dt d or f");
  const YamlValue data = entry.at("data");
  Matrix matrix{data.place, data.numbers()};
  require_count(data.place, matrix.values.size(), count);
  return matrix;
}

CalibratedCamera read_camera(const FileStorage& storage, const std::string& number, const ImageSize& size) {
  CalibratedCamera camera;
  camera.size = size;
  const Matrix intrinsics = read_matrix(storage, "M" + number);
  set_camera_matrix(intrinsics.place, intrinsics.values, camera);
  const Matrix distortion = read_matrix(storage, "D" + number);
  set_distortion(distortion.place, LensModel::kBrown, distortion.values, camera);
  return camera;
}

}  // namespace

StereoCalibration read_file_storage(std::span<const CalibrationText> files, const ImageSize& size, double unit) {
  const FileStorage storage(files);
  StereoCalibration calibration;
  calibration.format = "OpenCV FileStorage";
  calibration.left = read_camera(storage, "1", size);
  calibration.right = read_camera(storage, "2", size);
  const Matrix rotation = read_matrix(storage, "R");
  calibration.right_pose.rotation = rotation_at(rotation.place, rotation.values);
  const Matrix translation = read_matrix(storage, "T");
  calibration.right_pose.translation = millimetres_at(translation.place, translation.values, unit);
  return calibration;
}

}  // namespace vq3900::tool
