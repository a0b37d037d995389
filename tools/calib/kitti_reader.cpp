// KITTI calib_cam_to_cam: one "KEY: values" a line. Camera nn has S_nn (image size), K_nn (camera matrix), D_nn
// (k1, k2, p1, p2, k3), and R_nn, T_nn, which take a point of camera 00 into camera nn; metres. Entries of the
// rectified images (S_rect_nn and so on) are passed over.
#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "calib/calib_values.h"
#include "config/c_locale.h"

namespace vq3900::tool {

namespace {

struct Entry {
  std::size_t line;
  std::string_view values;
};

class KittiFile {
 public:
  explicit KittiFile(const CalibrationText& file) : path_(file.path) {
    const std::string_view text = file.text;
    std::size_t line = 0;
    for (std::size_t at = 0; at < text.size();) {
      const std::size_t end = std::min(text.find('\n', at), text.size());
      add(++line, text.substr(at, end - at));
      at = end + 1;
    }
  }

  bool has_camera(const std::string& camera) const { return entries_.contains("K_" + camera); }

  // Values of an entry with the place of the entry.
  std::vector<double> numbers(const std::string& key, Place& place) const {
    place = {path_, 0, key};
    const auto found = entries_.find(key);
    if (found == entries_.end()) place.fail("missing");
    place.line = found->second.line;
    std::vector<double> numbers;
    std::string_view rest = trim(found->second.values);
    while (!rest.empty()) {
      const auto end = static_cast<std::size_t>(std::find_if(rest.begin(), rest.end(), is_space) - rest.begin());
      numbers.push_back(number_at(place, rest.substr(0, end)));
      rest = trim(rest.substr(end));
    }
    return numbers;
  }

 private:
  void add(std::size_t line, std::string_view text) {
    const std::string_view trimmed = trim(text);
    if (trimmed.empty()) return;
    const std::size_t colon = trimmed.find(':');
    if (colon == std::string_view::npos) Place{path_, line, ""}.fail("no ':' behind a key");
    const std::string key(trim(trimmed.substr(0, colon)));
    if (!entries_.emplace(key, Entry{line, trimmed.substr(colon + 1)}).second) {
      Place{path_, line, key.size() < 16 ? key : ""}.fail("stands there a second time");
    }
  }

  std::string path_;
  std::map<std::string, Entry> entries_;
};

CalibratedCamera read_camera(const KittiFile& file, const std::string& number) {
  CalibratedCamera camera;
  Place place;
  const std::vector<double> size = file.numbers("S_" + number, place);
  require_count(place, size.size(), 2);
  camera.size = {pixels_at(place, size[0]), pixels_at(place, size[1])};
  const std::vector<double> matrix = file.numbers("K_" + number, place);
  set_camera_matrix(place, matrix, camera);
  const std::vector<double> distortion = file.numbers("D_" + number, place);
  set_distortion(place, LensModel::kBrown, distortion, camera);
  return camera;
}

CameraPose read_pose(const KittiFile& file, const std::string& number) {
  Place place;
  const std::vector<double> rotation = file.numbers("R_" + number, place);
  CameraPose pose;
  pose.rotation = rotation_at(place, rotation);
  const std::vector<double> translation = file.numbers("T_" + number, place);
  pose.translation = millimetres_at(place, translation);
  return pose;
}

}  // namespace

StereoCalibration read_kitti(const CalibrationText& file) {
  const KittiFile entries(file);
  StereoCalibration calibration;
  calibration.format = "KITTI calib_cam_to_cam";
  calibration.left = read_camera(entries, "00");
  calibration.right = read_camera(entries, "01");
  const CameraPose left = read_pose(entries, "00");
  calibration.right_pose = relative(left, read_pose(entries, "01"));
  if (entries.has_camera("02")) {
    calibration.color = ColorCamera{read_camera(entries, "02"), relative(left, read_pose(entries, "02"))};
  }
  return calibration;
}

}  // namespace vq3900::tool
