// The loops are written for the compiler to turn them into vectors. Every path is the same code, with what its target
// has. Each model's formula goes in two loops: the chain through the division (or the arc tangent) of the radial factor
// is long, and so more points of it are under way at a time.
#include "calib/distortion_lut/displacement_row.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <variant>

#include "calib/distortion_lut/lut_grid.h"

#define VQ3900_INLINE __attribute__((always_inline)) inline

namespace vq3900 {

namespace {

// The bits of a magnitude: as integers they are in the order of the numbers, and NaN comes after all of them.
VQ3900_INLINE std::int64_t magnitude_bits(double value) {
  return std::bit_cast<std::int64_t>(value) & std::numeric_limits<std::int64_t>::max();
}

template <typename Model>
VQ3900_INLINE bool sample_row_of(Model model, std::span<const double> columns, double y, double* __restrict dx,
                                 double* __restrict dy) {
  const std::size_t count = columns.size() / 4 * 4;  // whole vectors, as the compiler sees
  const double* const x = columns.data();
  std::array<double, kMostSamples> factors;  // NOLINT(cppcoreguidelines-pro-type-member-init): a row is short
  for (std::size_t i = 0; i < count; ++i)
    factors[i] = model.radial_factor(squared_radius({x[i], y}));

  constexpr double kEncodes = 0.5 - 1.0 / 16777216;  // 2^23 - 1 steps of 2^-24; half a step more would do as well
  const auto limit = std::bit_cast<std::int64_t>(kEncodes);
  std::int64_t room = 0;  // negative when a magnitude is above the limit
  for (std::size_t i = 0; i < count; ++i) {
    const Point distorted = model.distort_with(factors[i], {x[i], y});
    dx[i] = distorted.x - x[i];
    dy[i] = distorted.y - y;
    room |= (limit - magnitude_bits(dx[i])) | (limit - magnitude_bits(dy[i]));
  }
  return room >= 0;
}

VQ3900_INLINE bool sample_row_here(const DistortionModel& model, std::span<const double> x, double y, double* dx,
                                   double* dy) {
  if (const auto* const brown = std::get_if<BrownModel>(&model)) return sample_row_of(*brown, x, y, dx, dy);
  if (const auto* const equidistant = std::get_if<EquidistantModel>(&model)) {
    return sample_row_of(*equidistant, x, y, dx, dy);
  }
  return sample_row_of(*std::get_if<PolynomialModel>(&model), x, y, dx, dy);
}

constexpr CodePath<SampleRowFunction> kPaths[] = {
#if defined(VQ3900_X86_64_WIDE)
    {"avx2", cpu_has_avx2, sample_row_avx2},
#endif
    {"portable", always_supported, sample_row_portable},
};

}  // namespace

std::span<const CodePath<SampleRowFunction>> sample_row_paths() {
  return kPaths;
}

bool sample_row(const DistortionModel& model, std::span<const double> x, double y, double* dx, double* dy) {
#if defined(VQ3900_X86_64_WIDE)
  if (cpu_has_avx2()) return sample_row_avx2(model, x, y, dx, dy);
#endif
  return sample_row_portable(model, x, y, dx, dy);
}

bool sample_row_portable(const DistortionModel& model, std::span<const double> x, double y, double* dx, double* dy) {
  return sample_row_here(model, x, y, dx, dy);
}

#if defined(VQ3900_X86_64_WIDE)
__attribute__((target("avx2"))) bool sample_row_avx2(const DistortionModel& model, std::span<const double> x, double y,
                                                     double* dx, double* dy) {
  return sample_row_here(model, x, y, dx, dy);
}
#endif

}  // namespace vq3900
