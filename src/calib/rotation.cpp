#include "calib/rotation.h"

#include <algorithm>

namespace vq3900 {

namespace {

constexpr double kEpsilon = 2.220446049250313e-16;

// The matrix of cofactors: the determinant times the inverse transposed.
Matrix3 cofactors(const Matrix3& a) {
  const auto row = [&a](std::size_t r) { return Vector3{a(r, 0), a(r, 1), a(r, 2)}; };
  const Vector3 r0 = cross(row(1), row(2));
  const Vector3 r1 = cross(row(2), row(0));
  const Vector3 r2 = cross(row(0), row(1));
  return {{r0[0], r0[1], r0[2], r1[0], r1[1], r1[2], r2[0], r2[1], r2[2]}};
}

double largest(const Matrix3& a) {
  double most = 0;
  for (const double entry : a.m)
    most = std::max(most, std::fabs(entry));
  return most;
}

}  // namespace

Matrix3 operator*(const Matrix3& a, const Matrix3& b) {
  Matrix3 product;
  for (std::size_t r = 0; r < 3; ++r) {
    for (std::size_t c = 0; c < 3; ++c)
      product(r, c) = a(r, 0) * b(0, c) + a(r, 1) * b(1, c) + a(r, 2) * b(2, c);
  }
  return product;
}

Vector3 operator*(const Matrix3& a, const Vector3& v) {
  return {
      dot({a(0, 0), a(0, 1), a(0, 2)}, v), dot({a(1, 0), a(1, 1), a(1, 2)}, v), dot({a(2, 0), a(2, 1), a(2, 2)}, v)};
}

Matrix3 transpose(const Matrix3& a) {
  return {{a(0, 0), a(1, 0), a(2, 0), a(0, 1), a(1, 1), a(2, 1), a(0, 2), a(1, 2), a(2, 2)}};
}

double determinant(const Matrix3& a) {
  return dot({a(0, 0), a(0, 1), a(0, 2)}, cross({a(1, 0), a(1, 1), a(1, 2)}, {a(2, 0), a(2, 1), a(2, 2)}));
}

// The nearest rotation is the orthogonal factor Q of the polar decomposition A = Q H, H symmetric and positive.
// Averaging a matrix with its inverse transposed keeps Q and brings the singular values s of H to 1: s becomes (s +
// 1/s) / 2. Near 1 the error squares in every round. Scaling by the sizes of both matrices gets there fast from afar.
std::optional<Matrix3> nearest_rotation(const Matrix3& a) {
  if (!std::all_of(a.m.begin(), a.m.end(), [](double entry) { return std::isfinite(entry); })) return std::nullopt;
  const double size = largest(a);
  if (size == 0) return std::nullopt;
  Matrix3 q = a;
  for (double& entry : q.m)
    entry /= size;
  if (!(determinant(q) > 0)) return std::nullopt;

  constexpr int kRounds = 100;
  for (int round = 0; round < kRounds; ++round) {
    const double d = determinant(q);
    if (!(d > 0)) return std::nullopt;  // singular as far as doubles can tell
    Matrix3 inverse_transposed = cofactors(q);
    for (double& entry : inverse_transposed.m)
      entry /= d;
    const double balance = std::sqrt(largest(inverse_transposed) / largest(q));
    const double scale = round < 10 ? balance : 1.0;
    double change = 0;
    for (std::size_t i = 0; i < q.m.size(); ++i) {
      const double next = 0.5 * (q.m[i] * scale + inverse_transposed.m[i] / scale);
      change = std::max(change, std::fabs(next - q.m[i]));
      q.m[i] = next;
    }
    if (change < 4 * kEpsilon && round >= 10) break;
  }
  return q;
}

// By way of the unit quaternion (w, v) with w >= 0: the vector is the axis v / |v| times the angle 2 atan2(|v|, w). Its
// largest component comes from the diagonal without cancellation, the others from it.
Vector3 rotation_vector(const Matrix3& rotation) {
  const Matrix3& r = rotation;
  const std::array<double, 4> squares{1 + r(0, 0) + r(1, 1) + r(2, 2),
                                      1 + r(0, 0) - r(1, 1) - r(2, 2),
                                      1 - r(0, 0) + r(1, 1) - r(2, 2),
                                      1 - r(0, 0) - r(1, 1) + r(2, 2)};
  const auto which = static_cast<std::size_t>(std::max_element(squares.begin(), squares.end()) - squares.begin());
  const double twice = std::sqrt(squares[which]);  // twice the largest component
  std::array<double, 4> q{};                       // w, x, y, z
  const double x_part = r(2, 1) - r(1, 2);
  const double y_part = r(0, 2) - r(2, 0);
  const double z_part = r(1, 0) - r(0, 1);
  const double xy = r(0, 1) + r(1, 0);
  const double xz = r(0, 2) + r(2, 0);
  const double yz = r(1, 2) + r(2, 1);
  switch (which) {
    case 0:
      q = {squares[0], x_part, y_part, z_part};
      break;
    case 1:
      q = {x_part, squares[1], xy, xz};
      break;
    case 2:
      q = {y_part, xy, squares[2], yz};
      break;
    default:
      q = {z_part, xz, yz, squares[3]};
      break;
  }
  for (double& component : q)
    component /= 2 * twice;
  if (q[0] < 0) {
    for (double& component : q)
      component = -component;
  }
  const Vector3 v{q[1], q[2], q[3]};
  const double sine = norm(v);  // of half the angle
  if (sine < kEpsilon) return scaled(v, 2);
  return scaled(v, 2 * std::atan2(sine, q[0]) / sine);
}

// Rodrigues' formula: cos I + (1 - cos) k k^T + sin [k]x for the unit axis k.
Matrix3 rotation_about(const Vector3& vector) {
  const double angle = norm(vector);
  if (angle == 0) return {};
  const Vector3 k = scaled(vector, 1 / angle);
  const double c = std::cos(angle);
  const double s = std::sin(angle);
  const double rest = 2 * std::pow(std::sin(angle / 2), 2);  // 1 - cos without cancellation
  Matrix3 rotation;
  for (std::size_t row = 0; row < 3; ++row) {
    for (std::size_t column = 0; column < 3; ++column) {
      rotation(row, column) = rest * k[row] * k[column] + (row == column ? c : 0);
    }
  }
  rotation(0, 1) -= s * k[2];
  rotation(0, 2) += s * k[1];
  rotation(1, 0) += s * k[2];
  rotation(1, 2) -= s * k[0];
  rotation(2, 0) -= s * k[1];
  rotation(2, 1) += s * k[0];
  return rotation;
}

}  // namespace vq3900
