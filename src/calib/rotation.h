// Rotations of space as 3x3 matrices and as rotation vectors (axis times angle in radians).
#ifndef VQ3900_CALIB_ROTATION_H
#define VQ3900_CALIB_ROTATION_H

#include <array>
#include <cmath>
#include <cstddef>
#include <optional>

namespace vq3900 {

using Vector3 = std::array<double, 3>;

// Row-major.
struct Matrix3 {
  std::array<double, 9> m{1, 0, 0, 0, 1, 0, 0, 0, 1};

  double operator()(std::size_t row, std::size_t column) const { return m[3 * row + column]; }
  double& operator()(std::size_t row, std::size_t column) { return m[3 * row + column]; }
};

Matrix3 operator*(const Matrix3& a, const Matrix3& b);
Vector3 operator*(const Matrix3& a, const Vector3& v);
Matrix3 transpose(const Matrix3& a);
double determinant(const Matrix3& a);

inline double dot(const Vector3& a, const Vector3& b) {
  return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}
inline Vector3 cross(const Vector3& a, const Vector3& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}
inline double norm(const Vector3& v) {
  return std::hypot(v[0], v[1], v[2]);
}
inline Vector3 scaled(const Vector3& v, double by) {
  return {v[0] * by, v[1] * by, v[2] * by};
}

// The rotation nearest to a matrix. Nothing for a matrix that is not finite or turns space inside out.
std::optional<Matrix3> nearest_rotation(const Matrix3& a);

// A rotation's vector, its length at most half a turn; of the two vectors of half a turn the one whose largest
// component is positive.
Vector3 rotation_vector(const Matrix3& rotation);
Matrix3 rotation_about(const Vector3& vector);

}  // namespace vq3900

#endif
