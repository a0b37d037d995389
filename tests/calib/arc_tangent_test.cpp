#include "calib/arc_tangent.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>

#include "support/numbers.h"

namespace vq3900::test {
namespace {

constexpr double kEndless = std::numeric_limits<double>::infinity();
constexpr double kRightAngle = 0x1.921fb54442d18p+0;

// Where the reduction goes over to the next constant.
constexpr double kBounds[] = {0.4375, 0.6875, 1.1875, 2.4375};

double unit_in_the_last_place(double value) {
  return std::nextafter(value, kEndless) - value;
}

// What is allowed: where the C library has no wider type to compare with, its own error comes on top.
constexpr double kMost = std::numeric_limits<long double>::digits > std::numeric_limits<double>::digits ? 0.9 : 1.5;

// How far off, in units of the last place.
double error_at(double r) {
  const long double exact = std::atan(static_cast<long double>(r));
  const double unit = unit_in_the_last_place(static_cast<double>(exact));
  return std::fabs(
      static_cast<double>((static_cast<long double>(arc_tangent(r)) - exact) / static_cast<long double>(unit)));
}

TEST(ArcTangent, KnownAngles) {
  EXPECT_EQ(bits_of(arc_tangent(0.0)), bits_of(0.0));
  EXPECT_EQ(arc_tangent(0.5), 0x1.dac670561bb4fp-2);
  EXPECT_EQ(arc_tangent(1.0), 0x1.921fb54442d18p-1);
  EXPECT_EQ(arc_tangent(1.5), 0x1.f730bd281f69bp-1);
  EXPECT_EQ(arc_tangent(2.0), 0x1.1b6e192ebbe44p+0);
  EXPECT_EQ(arc_tangent(1e17), kRightAngle);
  EXPECT_EQ(arc_tangent(std::numeric_limits<double>::max()), kRightAngle);
  EXPECT_EQ(arc_tangent(kEndless), kRightAngle);
}

TEST(ArcTangent, SmallDistancesAreTheirAngles) {
  for (const double r : {std::numeric_limits<double>::denorm_min(), std::numeric_limits<double>::min(), 1e-300, 1e-9})
    EXPECT_EQ(arc_tangent(r), r);
}

TEST(ArcTangent, NanStaysNan) {
  EXPECT_TRUE(std::isnan(arc_tangent(std::numeric_limits<double>::quiet_NaN())));
}

TEST(ArcTangent, IsLessThanOneUnitOff) {
  constexpr std::uint32_t kSeed = 2026;
  Random random(kSeed);
  for (int i = 0; i < 200000; ++i) {
    const double r = static_cast<double>(random.between(0, 4)) + 0x1p-40 * random.word();
    ASSERT_LT(error_at(r), kMost) << r;
    const double far = std::ldexp(1 + 0x1p-32 * random.word(), static_cast<int>(random.word() % 120) - 60);
    ASSERT_LT(error_at(far), kMost) << far;
  }
  for (const double bound : kBounds) {
    ASSERT_LT(error_at(bound), kMost);
    ASSERT_LT(error_at(std::nextafter(bound, 0)), kMost);
  }
}

TEST(ArcTangent, GrowsAcrossTheBounds) {
  for (const double bound : kBounds) {
    double r = bound;
    for (int i = 0; i < 1000; ++i)
      r = std::nextafter(r, 0);
    for (int i = 0; i < 1000; ++i) {
      const double next = std::nextafter(r, kEndless);
      ASSERT_LE(arc_tangent(r), arc_tangent(next) + unit_in_the_last_place(arc_tangent(r)));
      r = next;
    }
    EXPECT_EQ(r, bound);
    EXPECT_LE(arc_tangent(std::nextafter(bound, 0)), arc_tangent(bound));
  }
}

// A sum over many of its bits: every system and compiler has this one.
TEST(ArcTangent, HasTheSameBitsEverywhere) {
  std::uint64_t sum = 0;
  for (int i = 0; i < 100000; ++i)
    sum = sum * 31 + bits_of(arc_tangent(i / 25000.0));
  EXPECT_EQ(sum, 8758928736611428204U);
}

}  // namespace
}  // namespace vq3900::test
