// The distortion models written down term by term, and coefficients to try them with.
#ifndef VQ3900_TESTS_SUPPORT_REFERENCE_DISTORTION_H
#define VQ3900_TESTS_SUPPORT_REFERENCE_DISTORTION_H

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "calib/point.h"
#include "support/geometry.h"
#include "support/numbers.h"

namespace vq3900::test {

using Coefficients = std::array<float, 8>;

// A model as a calibration holds it. Numbers: 0 and 1 Brown, 2 equidistant, 5 polynomial.
struct ReferenceModel {
  std::int32_t number;
  Coefficients coefficients;
  double rho;

  double at(std::size_t i) const { return static_cast<double>(coefficients[i]); }

  double brown_factor(double r) const {
    return (1 + at(0) * std::pow(r, 2) + at(1) * std::pow(r, 4) + at(2) * std::pow(r, 6)) /
           (1 + at(3) * std::pow(r, 2) + at(4) * std::pow(r, 4) + at(5) * std::pow(r, 6));
  }

  double equidistant_factor(double r) const {
    if (r == 0) return 1;
    const double t = std::atan(r);
    const double distorted =
        t + at(0) * std::pow(t, 3) + at(1) * std::pow(t, 5) + at(2) * std::pow(t, 7) + at(3) * std::pow(t, 9);
    return distorted / r;
  }

  double polynomial_factor(double r) const {
    const double capped = std::isfinite(rho) && rho > 0 && r > rho ? rho : r;
    double factor = 1;
    for (std::size_t i = 0; i < 8; ++i)
      factor += at(i) * std::pow(capped, 2 * (static_cast<double>(i) + 1));
    return factor;
  }

  double factor(double r) const {
    if (number == 2) return equidistant_factor(r);
    return number == 5 ? polynomial_factor(r) : brown_factor(r);
  }

  Point distort(Point p) const {
    const double r = std::sqrt(p.x * p.x + p.y * p.y);
    const double g = factor(r);
    if (number == 2 || number == 5) return {p.x * g, p.y * g};
    const double p1 = at(6);
    const double p2 = at(7);
    return {p.x * g + 2 * p1 * p.x * p.y + p2 * (r * r + 2 * p.x * p.x),
            p.y * g + p1 * (r * r + 2 * p.y * p.y) + 2 * p2 * p.x * p.y};
  }

  // Whether the distorted radius keeps growing, by at least a tenth as fast as at the centre, up to this radius.
  bool grows_up_to(double r) const {
    constexpr int kSteps = 40;
    for (int i = 0; i < kSteps; ++i) {
      const double near = r * i / kSteps;
      const double far = r * (i + 1) / kSteps;
      if (!(far * factor(far) - near * factor(near) > 0.1 * (far - near))) return false;
    }
    return true;
  }
};

// Coefficients from what lenses have to several times as much.
inline ReferenceModel random_model(std::int32_t number, Random& random) {
  constexpr std::array kBrown{0.5F, 0.3F, 0.1F, 0.3F, 0.2F, 0.1F, 0.01F, 0.01F};
  constexpr std::array kEquidistant{0.1F, 0.05F, 0.02F, 0.01F, 0.0F, 0.0F, 0.0F, 0.0F};
  constexpr std::array kPolynomial{0.4F, 0.2F, 0.1F, 0.05F, 0.02F, 0.02F, 0.01F, 0.01F};
  const auto& most = number == 2 ? kEquidistant : number == 5 ? kPolynomial : kBrown;
  ReferenceModel model{number, {}, 0};
  for (std::size_t i = 0; i < most.size(); ++i)
    model.coefficients[i] = random.between(-most[i], most[i]);
  if (number == 5 && random.word() % 2 == 0) model.rho = number_between(random, 0.2, 1.5);
  return model;
}

inline Point random_point(Random& random, double largest_radius) {
  const double r = number_between(random, 0, largest_radius);
  const double turn = number_between(random, 0, 2 * kPi);
  return {r * std::cos(turn), r * std::sin(turn)};
}

}  // namespace vq3900::test

#endif
