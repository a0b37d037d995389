#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <ostream>
#include <string>

#include "calib/distortion_model.h"
#include "calib/newton.h"
#include "support/numbers.h"
#include "support/reference_distortion.h"

namespace vq3900::test {
namespace {

constexpr double kNoNumber = std::numeric_limits<double>::quiet_NaN();
constexpr double kEndless = std::numeric_limits<double>::infinity();

constexpr Coefficients kNone{};

Coefficients only(std::size_t which, float value) {
  Coefficients coefficients{};
  coefficients[which] = value;
  return coefficients;
}

DistortionModel made(const ReferenceModel& model) {
  return make_distortion_model(model.number, model.coefficients, model.rho);
}

// A point worked out by hand.
struct PointCase {
  const char* name;
  std::int32_t number;
  Coefficients coefficients;
  Point point;
  Point distorted;
  double rho = 0;
};

void PrintTo(const PointCase& row, std::ostream* stream) {
  *stream << row.name;
}

class DistortedPoint : public testing::TestWithParam<PointCase> {};

TEST_P(DistortedPoint, IsTheOneWorkedOutByHand) {
  const PointCase& row = GetParam();
  const Point distorted = distort(make_distortion_model(row.number, row.coefficients, row.rho), row.point);
  EXPECT_NEAR(distorted.x, row.distorted.x, 1e-14 * (1 + std::fabs(row.distorted.x)));
  EXPECT_NEAR(distorted.y, row.distorted.y, 1e-14 * (1 + std::fabs(row.distorted.y)));
}

// At (2, -1) r^2, r^4, r^6 are 5, 25, 125.
INSTANTIATE_TEST_SUITE_P(
    Brown, DistortedPoint,
    testing::Values(PointCase{"WithoutDistortion", 0, kNone, {2, -1}, {2, -1}},
                    PointCase{"K1", 0, only(0, 0.25F), {2, -1}, {4.5, -2.25}},
                    PointCase{"K2", 0, only(1, 0.25F), {2, -1}, {14.5, -7.25}},
                    PointCase{"K3", 0, only(2, 0.25F), {2, -1}, {64.5, -32.25}},
                    PointCase{"K4", 0, only(3, 0.25F), {2, -1}, {8.0 / 9, -4.0 / 9}},
                    PointCase{"K5", 0, only(4, 0.25F), {2, -1}, {8.0 / 29, -4.0 / 29}},
                    PointCase{"K6", 0, only(5, 0.25F), {2, -1}, {8.0 / 129, -4.0 / 129}},
                    PointCase{"P1", 0, only(6, 0.25F), {2, -1}, {1, 0.75}},
                    PointCase{"P2", 0, only(7, 0.25F), {2, -1}, {5.25, -2}},
                    PointCase{"All",
                              0,
                              {0.5F, 0.25F, 0.125F, 0.25F, 0.125F, 0.0625F, 0.25F, 0.5F},
                              {2, -1},
                              {2 * 406.0 / 211 + 5.5, -406.0 / 211 - 0.25}},
                    PointCase{"Number1IsTheSame",
                              1,
                              {0.5F, 0.25F, 0.125F, 0.25F, 0.125F, 0.0625F, 0.25F, 0.5F},
                              {2, -1},
                              {2 * 406.0 / 211 + 5.5, -406.0 / 211 - 0.25}},
                    PointCase{"AnyOtherNumberIsTheSame", 3, only(4, 0.25F), {2, -1}, {8.0 / 29, -4.0 / 29}},
                    PointCase{"NegativeNumberIsTheSame", -1, only(6, 0.25F), {2, -1}, {1, 0.75}},
                    PointCase{"LimitOfTheRadiusIsIgnored", 0, only(0, 0.25F), {2, -1}, {4.5, -2.25}, 1.0},
                    PointCase{"Centre", 0, {1, 1, 1, 1, 1, 1, 1, 1}, {0, 0}, {0, 0}}),
    [](const auto& test) { return test.param.name; });

// At (0.6, 0.8) theta is a quarter of pi.
constexpr double kOfK1 = 0.9065164316798695;
constexpr double kOfK2 = 0.8601100005032298;
constexpr double kOfK3 = 0.8314841806669917;
constexpr double kOfK4 = 0.8138263358269586;
constexpr double kOfAll = 0.9688588283839032;

INSTANTIATE_TEST_SUITE_P(
    Equidistant, DistortedPoint,
    testing::Values(
        PointCase{"WithoutDistortion", 2, kNone, {0.6, 0.8}, {0.15 * kPi, 0.2 * kPi}},
        PointCase{"AtAnAngleOf60Degrees", 2, kNone, {0, -std::sqrt(3.0)}, {0, -kPi / 3}},
        PointCase{"K1", 2, only(0, 0.25F), {0.6, 0.8}, {0.6 * kOfK1, 0.8 * kOfK1}},
        PointCase{"K2", 2, only(1, 0.25F), {0.6, 0.8}, {0.6 * kOfK2, 0.8 * kOfK2}},
        PointCase{"K3", 2, only(2, 0.25F), {0.6, 0.8}, {0.6 * kOfK3, 0.8 * kOfK3}},
        PointCase{"K4", 2, only(3, 0.25F), {0.6, -0.8}, {0.6 * kOfK4, -0.8 * kOfK4}},
        PointCase{"All", 2, {0.5F, -0.25F, 0.125F, -0.0625F, 9, 9, 9, 9}, {-0.6, 0.8}, {-0.6 * kOfAll, 0.8 * kOfAll}},
        PointCase{"Centre", 2, {1, 1, 1, 1, 1, 1, 1, 1}, {0, 0}, {0, 0}}),
    [](const auto& test) { return test.param.name; });

// At (1, -1) r^2 is 2: c_i counts 2^i fold.
INSTANTIATE_TEST_SUITE_P(
    Polynomial, DistortedPoint,
    testing::Values(
        PointCase{"WithoutDistortion", 5, kNone, {1, -1}, {1, -1}},
        PointCase{"C1", 5, only(0, 0.25F), {1, -1}, {1.5, -1.5}}, PointCase{"C2", 5, only(1, 0.25F), {1, -1}, {2, -2}},
        PointCase{"C3", 5, only(2, 0.25F), {1, -1}, {3, -3}}, PointCase{"C4", 5, only(3, 0.25F), {1, -1}, {5, -5}},
        PointCase{"C5", 5, only(4, 0.25F), {1, -1}, {9, -9}}, PointCase{"C6", 5, only(5, 0.25F), {1, -1}, {17, -17}},
        PointCase{"C7", 5, only(6, 0.25F), {1, -1}, {33, -33}}, PointCase{"C8", 5, only(7, 0.25F), {1, -1}, {65, -65}},
        PointCase{"All", 5, {1, 1, 1, 1, 1, 1, 1, 1}, {1, -1}, {511, -511}},
        PointCase{"Centre", 5, {1, 1, 1, 1, 1, 1, 1, 1}, {0, 0}, {0, 0}},
        PointCase{"RadiusAboveTheLimitCountsAsTheLimit", 5, {1, 1, 1, 1, 1, 1, 1, 1}, {1, -1}, {9, -9}, 1.0},
        PointCase{"RadiusBelowTheLimitCountsItself", 5, only(0, 0.25F), {1, -1}, {1.5, -1.5}, 1.5},
        PointCase{"LimitIsOfTheRadiusNotItsSquare", 5, only(0, 0.25F), {3, 0}, {6, 0}, 2.0},
        PointCase{"LimitBelow1", 5, only(1, 16), {3, 4}, {6, 8}, 0.5},
        PointCase{"LimitOf0IsNone", 5, only(0, 0.25F), {1, -1}, {1.5, -1.5}, 0.0},
        PointCase{"NegativeLimitIsNone", 5, only(0, 0.25F), {1, -1}, {1.5, -1.5}, -1.0},
        PointCase{"InfiniteLimitIsNone", 5, only(0, 0.25F), {1, -1}, {1.5, -1.5}, kEndless},
        PointCase{"NegativeInfiniteLimitIsNone", 5, only(0, 0.25F), {1, -1}, {1.5, -1.5}, -kEndless},
        PointCase{"LimitThatIsNoNumberIsNone", 5, only(0, 0.25F), {1, -1}, {1.5, -1.5}, kNoNumber}),
    [](const auto& test) { return test.param.name; });

TEST(RadialFactor, IsThatOfTheModelWithoutTangentialTerms) {
  const Coefficients coefficients{0.5F, 0.25F, 0.125F, 0.25F, 0.125F, 0.0625F, 9, 9};
  EXPECT_NEAR(radial_factor(make_distortion_model(0, coefficients, 0), 5), 406.0 / 211, 1e-15);
  EXPECT_NEAR(radial_factor(make_distortion_model(2, only(0, 0.25F), 0), 1), kOfK1, 1e-15);
  EXPECT_EQ(radial_factor(make_distortion_model(5, only(2, 0.25F), 0), 2), 3.0);
  EXPECT_EQ(radial_factor(make_distortion_model(5, only(2, 0.25F), 1), 2), 1.25);
  for (const std::int32_t number : {0, 1, 2, 5})
    EXPECT_EQ(radial_factor(make_distortion_model(number, coefficients, 0), 0), 1.0) << number;
}

// --- there and back

class AnyModel : public testing::TestWithParam<std::int32_t> {};

TEST_P(AnyModel, DistortsRandomPointsAsTheFormulaSays) {
  constexpr std::uint32_t kSeed = 4201;
  SCOPED_TRACE(kSeed);
  Random random(kSeed);
  for (int i = 0; i < 500; ++i) {
    const ReferenceModel reference = random_model(GetParam(), random);
    const Point p = random_point(random, 1.2);
    const Point expected = reference.distort(p);
    const Point distorted = distort(made(reference), p);
    ASSERT_NEAR(distorted.x, expected.x, 1e-13 * (1 + std::fabs(expected.x))) << i;
    ASSERT_NEAR(distorted.y, expected.y, 1e-13 * (1 + std::fabs(expected.y))) << i;
  }
}

TEST_P(AnyModel, UndistortsRandomPointsWhereTheyCameFrom) {
  constexpr std::uint32_t kSeed = 4202;
  SCOPED_TRACE(kSeed);
  Random random(kSeed);
  int tried = 0;
  for (int i = 0; i < 1000; ++i) {
    const ReferenceModel reference = random_model(GetParam(), random);
    const Point p = random_point(random, 1.2);
    const Point distorted = reference.distort(p);
    const double r = std::hypot(p.x, p.y);
    const double r_d = std::hypot(distorted.x, distorted.y);
    // The slope jumps at a polynomial's limit: with the limit between start and solution the iteration may not settle.
    const bool across_limit = reference.rho > 0 && (r < reference.rho) != (r_d < reference.rho);
    const bool in_reach = r_d < 1.33 * r && reference.grows_up_to(1.1 * std::max(r, r_d)) && !across_limit;
    if (!in_reach) continue;
    ++tried;
    const auto back = undistort(made(reference), distorted);
    ASSERT_TRUE(back) << i;
    ASSERT_NEAR(back->x, p.x, 1e-11) << i;
    ASSERT_NEAR(back->y, p.y, 1e-11) << i;
  }
  EXPECT_GT(tried, 600);
}

TEST_P(AnyModel, UndistortsTheCentreToItself) {
  const Coefficients strong{-0.4F, 0.2F, -0.05F, 0.01F, 0.02F, 0.01F, 0.01F, 0.01F};
  const auto centre = undistort(make_distortion_model(GetParam(), strong, 1), {0, 0});
  ASSERT_TRUE(centre);
  EXPECT_EQ(centre->x, 0);
  EXPECT_EQ(centre->y, 0);
}

TEST_P(AnyModel, UndistortsPointsNextToTheCentre) {
  const Coefficients weak{0.1F, 0.1F, 0.1F, 0.1F, 0.1F, 0.1F, 0, 0};
  for (const double tiny : {1e-6, 1e-12, 1e-100}) {
    const auto p = undistort(make_distortion_model(GetParam(), weak, 0), {tiny, -tiny});
    ASSERT_TRUE(p) << tiny;
    EXPECT_NEAR(p->x / tiny, 1, 1e-10) << tiny;
    EXPECT_NEAR(p->y / tiny, -1, 1e-10) << tiny;
  }
}

TEST_P(AnyModel, UndistortsNothingThatIsNotFinite) {
  const Coefficients weak{0.1F, 0, 0, 0, 0, 0, 0, 0};
  for (const double bad : {kNoNumber, kEndless, -kEndless}) {
    EXPECT_FALSE(undistort(make_distortion_model(GetParam(), weak, 0), {bad, 0.1})) << bad;
    EXPECT_FALSE(undistort(make_distortion_model(GetParam(), weak, 0), {0.1, bad})) << bad;
  }
}

TEST_P(AnyModel, WithACoefficientThatIsNoNumberUndistortsNothing) {
  EXPECT_FALSE(undistort(make_distortion_model(GetParam(), only(0, kNan), 0), {0.1, 0.1}));
}

INSTANTIATE_TEST_SUITE_P(Distortion, AnyModel, testing::Values(0, 2, 5),
                         [](const auto& test) { return "Number" + std::to_string(test.param); });

// --- strong barrel distortion, to just before the image folds over

// r (1 - 0.3 r^2) is largest, 0.7027, at r = 1.054.
class StrongBarrel : public testing::TestWithParam<std::int32_t> {
 protected:
  static DistortionModel model() { return make_distortion_model(GetParam(), only(0, -0.3F), 0); }
  static std::optional<Point> at(double radius) { return undistort(model(), {0.6 * radius, -0.8 * radius}); }
};

TEST_P(StrongBarrel, IsUndoneUpToTheFold) {
  for (double r = 0.01; r < 1.05; r += 0.01) {
    const auto p = at(r * (1 + static_cast<double>(-0.3F) * r * r));
    ASSERT_TRUE(p) << r;
    EXPECT_NEAR(p->x, 0.6 * r, 1e-10) << r;
    EXPECT_NEAR(p->y, -0.8 * r, 1e-10) << r;
  }
}

// No point on this side of the centre goes there, and the one on the other side is none that the model holds for.
TEST_P(StrongBarrel, BeyondTheFoldIsRefused) {
  EXPECT_TRUE(at(0.7027));
  for (const double radius : {0.703, 0.71, 0.72, 0.75, 0.8, 1.0, 1.5})
    EXPECT_FALSE(at(radius)) << radius;
}

INSTANTIATE_TEST_SUITE_P(Distortion, StrongBarrel, testing::Values(0, 5),
                         [](const auto& test) { return "Number" + std::to_string(test.param); });

TEST(Brown, StrongTangentialTermsAreUndone) {
  for (const std::size_t which : {6U, 7U}) {
    const auto model = make_distortion_model(0, only(which, 0.2F), 0);
    for (const double x : {-0.6, 0.0, 0.6}) {
      for (const double y : {-0.6, 0.0, 0.6}) {
        const auto p = undistort(model, distort(model, {x, y}));
        ASSERT_TRUE(p) << x << " " << y;
        EXPECT_NEAR(p->x, x, 1e-10);
        EXPECT_NEAR(p->y, y, 1e-10);
      }
    }
  }
}

TEST(Equidistant, IsUndoneUpToWideAngles) {
  const auto model = make_distortion_model(2, Coefficients{0.08F, -0.04F, 0.01F, -0.002F, 0, 0, 0, 0}, 0);
  for (int angle = 1; angle <= 88; ++angle) {
    const double r = std::tan(degrees(angle));
    const auto p = undistort(model, distort(model, {0.6 * r, -0.8 * r}));
    ASSERT_TRUE(p) << angle;
    EXPECT_NEAR(p->x / r, 0.6, 1e-9) << angle;
    EXPECT_NEAR(p->y / r, -0.8, 1e-9) << angle;
  }
}

TEST(Equidistant, RightAngleAndBeyondAreRefused) {
  const auto model = make_distortion_model(2, kNone, 0);
  EXPECT_TRUE(undistort(model, {1.57, 0}));
  for (const double angle : {1.5708, 2.0, 3.2, 10.0}) {
    EXPECT_FALSE(undistort(model, {angle, 0})) << angle;
    EXPECT_FALSE(undistort(model, {0, -angle})) << angle;
  }
}

TEST(Polynomial, BeyondItsLimitIsUndoneByTheConstantFactor) {
  const auto model = make_distortion_model(5, only(0, 1), 0.5);  // the factor is 1.25 from r = 0.5 on
  const auto p = undistort(model, {3, 4});
  ASSERT_TRUE(p);
  EXPECT_NEAR(p->x, 2.4, 1e-14);
  EXPECT_NEAR(p->y, 3.2, 1e-14);
}

TEST(Polynomial, FactorOfZeroUndistortsNothing) {
  EXPECT_FALSE(undistort(make_distortion_model(5, only(0, -4), 0.5), {3, 4}));
}

// --- the iteration itself

TEST(Newton, FindsRootsAndAnswersATargetThatSolvesItself) {
  const auto square = [](double r) { return Slope{r * r, 2 * r}; };
  const auto root = solve_radius(2, square);
  ASSERT_TRUE(root);
  EXPECT_NEAR(*root, std::sqrt(2.0), 1e-15);
  EXPECT_EQ(solve_radius(1, square), 1.0);
}

TEST(Newton, FlatOrCyclingFunctionSettlesNowhere) {
  EXPECT_FALSE(solve_radius(2, [](double) { return Slope{1, 0}; }));
  // r^3 - 2 r + 2 goes from 0 to 1 and back for ever.
  EXPECT_FALSE(solve_radius(0, [](double r) { return Slope{r * r * r - 2 * r + 2, 3 * r * r - 2}; }));
}

TEST(Newton, StopsAfter50Rounds) {
  int rounds = 0;
  EXPECT_FALSE(solve_radius(0, [&rounds](double) {
    ++rounds;
    return Slope{1, 1};
  }));
  EXPECT_EQ(rounds, 50);
}

TEST(Newton, SolvesAMapOfThePlane) {
  // (2 x + y, y - x) = (5, -1) at (2, 1)
  const auto p = solve_point({5, -1}, [](Point q) { return PlaneSlope{{2 * q.x + q.y, q.y - q.x}, 2, 1, -1, 1}; });
  ASSERT_TRUE(p);
  EXPECT_NEAR(p->x, 2, 1e-15);
  EXPECT_NEAR(p->y, 1, 1e-15);
}

TEST(Newton, SolutionBeyondTheFoldIsNone) {
  EXPECT_FALSE(solve_radius(1, [](double r) { return Slope{2 - r, -1}; }));
  // The map turns the plane inside out.
  EXPECT_FALSE(solve_point({5, 1}, [](Point q) { return PlaneSlope{{2 * q.x + q.y, q.x - q.y}, 2, 1, 1, -1}; }));
}

TEST(Newton, MapWhoseSlopeVanishesOrThatNeverSettlesSolvesNothing) {
  EXPECT_FALSE(solve_point({1, 1}, [](Point) { return PlaneSlope{{0, 0}, 1, 1, 1, 1}; }));
  int rounds = 0;
  EXPECT_FALSE(solve_point({0, 0}, [&rounds](Point) {
    ++rounds;
    return PlaneSlope{{1, 0}, 1, 0, 0, 1};
  }));
  EXPECT_EQ(rounds, 50);
  rounds = 0;
  EXPECT_FALSE(solve_point({0, 0}, [&rounds](Point) {
    ++rounds;
    return PlaneSlope{{0, 1}, 1, 0, 0, 1};
  }));
  EXPECT_EQ(rounds, 50);
}

}  // namespace
}  // namespace vq3900::test
