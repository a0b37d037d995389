#include "calib/calib_import.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

#include "calib/calib_values.h"
#include "config/c_locale.h"
#include "platform/file.h"

namespace vq3900::tool {

namespace {

constexpr std::size_t kMostBytes = std::size_t{1} << 20;
constexpr std::size_t kDeepest = 50;  // brackets inside brackets: calibrations have two

enum class Format : std::uint8_t { kUnknown, kKalibr, kKitti, kFileStorage };

bool is_digit(char c) {
  return c >= '0' && c <= '9';
}

// "K_00:" and the like, but not "K_rect_00:".
bool is_kitti_line(std::string_view line) {
  return line.size() >= 5 && std::string_view("SKDRT").find(line[0]) != std::string_view::npos && line[1] == '_' &&
         is_digit(line[2]) && is_digit(line[3]) && line[4] == ':';
}

bool is_kalibr_line(std::string_view line) {
  return line.starts_with("cam") && line.size() >= 5 && is_digit(line[3]) && line[4] == ':';
}

// A text says what it is by the first line that only one format has.
Format format_of(std::string_view text) {
  if (text.starts_with("%YAML:")) return Format::kFileStorage;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find('\n', at), text.size());
    const std::string_view line = text.substr(at, end - at);
    if (is_kitti_line(line)) return Format::kKitti;
    if (is_kalibr_line(line)) return Format::kKalibr;
    if (line.find("!!opencv-matrix") != std::string_view::npos) return Format::kFileStorage;
    at = end + 1;
  }
  return Format::kUnknown;
}

void require_shallow(const CalibrationText& file) {
  std::size_t depth = 0;
  for (const char c : file.text) {
    if (c == '[' || c == '{') ++depth;
    if ((c == ']' || c == '}') && depth > 0) --depth;
    if (depth > kDeepest) Place{file.path, 0, ""}.fail("brackets nested too deep");
  }
}

CalibrationText load(const std::string& path) {
  const Place place{path, 0, ""};
  std::optional<std::string> text = read_file(path.c_str(), kMostBytes);
  if (!text) place.fail("cannot be opened");
  if (text->empty()) place.fail("is empty");
  if (text->size() > kMostBytes) place.fail(fmt::format("too large for a calibration: over {} bytes", kMostBytes));
  if (text->find('\0') != std::string::npos) place.fail("is no text");
  CalibrationText file{path, *std::move(text)};
  require_shallow(file);
  return file;
}

// "FILE,FILE" are two files, unless there is a file of that name.
std::vector<CalibrationText> load_all(const std::string& paths) {
  const std::size_t comma = paths.find(',');
  if (comma == std::string::npos || read_file(paths.c_str(), 1)) return {load(paths)};
  return {load(paths.substr(0, comma)), load(paths.substr(comma + 1))};
}

StereoCalibration read_storage(const std::vector<CalibrationText>& files, const ImportOptions& options) {
  const Place place{files.front().path, 0, ""};
  if (!options.size) place.fail("says nothing of the image size; give it with --size WxH");
  const ImageSize size{pixels_at(place, options.size->width), pixels_at(place, options.size->height)};
  return read_file_storage(files, size, options.unit.value_or(kMillimetresInMetre));
}

StereoCalibration read_any(const std::vector<CalibrationText>& files, const ImportOptions& options) {
  const CalibrationText& file = files.front();
  const Format format = format_of(file.text);
  const Place place{file.path, 0, ""};
  if (format == Format::kFileStorage) return read_storage(files, options);
  if (format == Format::kUnknown) {
    place.fail("neither a Kalibr camchain nor a KITTI calib_cam_to_cam nor OpenCV FileStorage YAML");
  }
  if (files.size() > 1) Place{files[1].path, 0, ""}.fail("a second file belongs to OpenCV FileStorage YAML alone");
  if (options.size) place.fail("names its own image sizes; leave --size out");
  if (options.unit) place.fail("is in metres; leave --unit out");
  return format == Format::kKitti ? read_kitti(file) : read_kalibr(file);
}

}  // namespace

StereoCalibration import_calibration(const std::string& paths, const ImportOptions& options) {
  const std::vector<CalibrationText> files = load_all(paths);
  StereoCalibration calibration = read_any(files, options);
  const bool apart = norm(calibration.right_pose.translation) > 0;
  if (!apart) Place{files.back().path, 0, ""}.fail("both cameras stand in one place: no baseline");
  return calibration;
}

}  // namespace vq3900::tool
