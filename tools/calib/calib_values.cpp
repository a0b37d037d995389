#include "calib/calib_values.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

#include "config/c_locale.h"

namespace vq3900::tool {

namespace {

constexpr double kMostPixels = 65535;
constexpr double kRotationTolerance = 1e-3;
constexpr double kLargestNumber = 1e9;  // of any number: far beyond every lens and rig, far below the range of a float
constexpr std::size_t kLongestQuote = 40;

// A value as a message shows it: short, and without control characters.
std::string quoted_text(std::string_view text) {
  std::string shown(text.substr(0, kLongestQuote));
  std::replace_if(
      shown.begin(), shown.end(), [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7F'; }, '?');
  return "'" + shown + (text.size() > kLongestQuote ? "...'" : "'");
}

// How far the matrix is from having rows of length 1 at right angles.
double rotation_error(const Matrix3& matrix) {
  const Matrix3 product = matrix * transpose(matrix);
  double error = 0;
  for (std::size_t i = 0; i < 9; ++i)
    error = std::max(error, std::fabs(product.m[i] - (i % 4 == 0 ? 1 : 0)));
  return error;
}

}  // namespace

void Place::fail(const std::string& what) const {
  std::string text = file + ": ";
  if (line > 0) text += fmt::format("line {}: ", line);
  if (!key.empty()) text += key + ": ";
  throw CalibrationError(text + what);
}

double number_at(const Place& place, std::string_view text) {
  const std::string_view trimmed = trim(text);
  const Converted<double> number = to_double(trimmed);
  if (trimmed.empty() || number.length != trimmed.size()) place.fail(quoted_text(trimmed) + " is no number");
  if (!std::isfinite(number.value)) place.fail(quoted_text(trimmed) + " is not finite");
  if (std::fabs(number.value) > kLargestNumber) place.fail(quoted_text(trimmed) + " is too large");
  return number.value;
}

void require_count(const Place& place, std::size_t count, std::size_t expected) {
  if (count != expected) place.fail(fmt::format("{} numbers, expected {}", count, expected));
}

std::int32_t pixels_at(const Place& place, double value) {
  if (!(value >= 1 && value <= kMostPixels) || value != std::floor(value)) {
    place.fail(fmt::format("{:g} is no image size; 1 to {:g} whole pixels", value, kMostPixels));
  }
  return static_cast<std::int32_t>(value);
}

void set_pinhole(const Place& place, double fx, double fy, double cx, double cy, CalibratedCamera& camera) {
  if (!(fx > 0 && fy > 0)) place.fail(fmt::format("focal lengths {:g} and {:g}; they must be above 0", fx, fy));
  camera.fx = fx;
  camera.fy = fy;
  camera.cx = cx;
  camera.cy = cy;
}

void set_camera_matrix(const Place& place, std::span<const double> matrix, CalibratedCamera& camera) {
  require_count(place, matrix.size(), 9);
  if (matrix[1] != 0) place.fail(fmt::format("skew {:g}; it must be 0", matrix[1]));
  if (matrix[3] != 0 || matrix[6] != 0 || matrix[7] != 0 || matrix[8] != 1) {
    place.fail("no camera matrix; expected fx 0 cx, 0 fy cy, 0 0 1");
  }
  set_pinhole(place, matrix[0], matrix[4], matrix[2], matrix[5], camera);
}

void set_distortion(const Place& place, LensModel model, std::span<const double> values, CalibratedCamera& camera) {
  if (model == LensModel::kEquidistant) {
    require_count(place, values.size(), 4);
    std::copy(values.begin(), values.end(), camera.distortion.begin());
    return;
  }
  static constexpr std::array<std::size_t, 5> kCounts{4, 5, 8, 12, 14};
  if (std::find(kCounts.begin(), kCounts.end(), values.size()) == kCounts.end()) {
    place.fail(fmt::format("{} numbers, expected 4, 5 or 8: k1, k2, p1, p2, k3, k4, k5, k6", values.size()));
  }
  static constexpr std::array<std::size_t, 8> kLibraryIndex{0, 1, 6, 7, 2, 3, 4, 5};
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (i < kLibraryIndex.size()) {
      camera.distortion[kLibraryIndex[i]] = values[i];
    } else if (values[i] != 0) {
      place.fail(fmt::format("number {} is {:g}; thin-prism and tilt coefficients must be 0", i + 1, values[i]));
    }
  }
}

Matrix3 rotation_at(const Place& place, std::span<const double> values) {
  require_count(place, values.size(), 9);
  Matrix3 matrix;
  std::copy(values.begin(), values.end(), matrix.m.begin());
  const double error = rotation_error(matrix);
  if (error > kRotationTolerance) {
    place.fail(fmt::format("not a rotation: R times its transpose is off by {:.2g}", error));
  }
  if (determinant(matrix) < 0) place.fail("not a rotation: it mirrors");
  return matrix;
}

Vector3 millimetres_at(const Place& place, std::span<const double> values, double unit) {
  require_count(place, values.size(), 3);
  Vector3 vector{};
  std::transform(values.begin(), values.end(), vector.begin(), [unit](double value) { return value * unit; });
  return vector;
}

}  // namespace vq3900::tool
