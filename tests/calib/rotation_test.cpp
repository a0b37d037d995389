#include "calib/rotation.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <optional>

#include "support/geometry.h"
#include "support/numbers.h"

namespace vq3900::test {
namespace {

constexpr double kNoNumber = std::numeric_limits<double>::quiet_NaN();
constexpr double kEndless = std::numeric_limits<double>::infinity();

constexpr Matrix3 kQuarterAboutZ{{0, -1, 0, 1, 0, 0, 0, 0, 1}};

Matrix3 diagonal(double a, double b, double c) {
  return {{a, 0, 0, 0, b, 0, 0, 0, c}};
}

Matrix3 times(Matrix3 matrix, double by) {
  for (double& entry : matrix.m)
    entry *= by;
  return matrix;
}

// --- matrices

TEST(Matrix, ProductsAndDeterminantOfSmallNumbers) {
  const Matrix3 a{{1, 2, 3, 4, 5, 6, 7, 8, 10}};
  const Matrix3 b{{2, 0, 1, 0, 3, 0, 1, 0, -1}};
  EXPECT_EQ((a * b).m, (Matrix3{{5, 6, -2, 14, 15, -2, 24, 24, -3}}).m);
  EXPECT_EQ((b * a).m, (Matrix3{{9, 12, 16, 12, 15, 18, -6, -6, -7}}).m);
  EXPECT_EQ(a * Vector3({1, -1, 2}), (Vector3{5, 11, 19}));
  EXPECT_EQ(transpose(a).m, (Matrix3{{1, 4, 7, 2, 5, 8, 3, 6, 10}}).m);
  EXPECT_EQ(determinant(a), -3.0);
  EXPECT_EQ(determinant(b), -9.0);
}

TEST(Matrix, CrossProductIsRightHanded) {
  EXPECT_EQ(cross({1, 0, 0}, {0, 1, 0}), (Vector3{0, 0, 1}));
  EXPECT_EQ(cross({1, 2, 3}, {4, 5, 6}), (Vector3{-3, 6, -3}));
  EXPECT_EQ(dot({1, 2, 3}, {4, 5, 6}), 32.0);
  EXPECT_EQ(norm({2, 3, 6}), 7.0);
}

// --- the nearest rotation

struct NearestCase {
  const char* name;
  Matrix3 matrix;
  Matrix3 nearest;
};

class NearestRotation : public testing::TestWithParam<NearestCase> {};

TEST_P(NearestRotation, IsTheOrthogonalFactor) {
  const auto nearest = nearest_rotation(GetParam().matrix);
  ASSERT_TRUE(nearest);
  EXPECT_LT(largest_difference(*nearest, GetParam().nearest), 1e-14);
}

const double kRoot5 = std::sqrt(5.0);
const double kRootHalf = std::sqrt(0.5);

// In the plane the nearest rotation of (a b; c d) turns by atan2(c - b, a + d).
INSTANTIATE_TEST_SUITE_P(
    Rotation, NearestRotation,
    testing::Values(NearestCase{"OfIdentity", {}, {}}, NearestCase{"OfStretches", diagonal(2, 3, 0.5), {}},
                    NearestCase{"OfVeryUnequalStretches", diagonal(1, 1, 1e-9), {}},
                    NearestCase{"OfTwoReflectedAxes", diagonal(-2, -3, 1), diagonal(-1, -1, 1)},
                    NearestCase{"OfAStretchedQuarterTurn", {{0, -2, 0, 3, 0, 0, 0, 0, 1}}, kQuarterAboutZ},
                    NearestCase{"OfAnEighthTurn",
                                {{1, -1, 0, 1, 1, 0, 0, 0, 1}},
                                {{kRootHalf, -kRootHalf, 0, kRootHalf, kRootHalf, 0, 0, 0, 1}}},
                    NearestCase{"OfAShear",
                                {{1, 1, 0, 0, 1, 0, 0, 0, 1}},
                                {{2 / kRoot5, 1 / kRoot5, 0, -1 / kRoot5, 2 / kRoot5, 0, 0, 0, 1}}},
                    NearestCase{"OfTinyNumbers", times(kQuarterAboutZ, 1e-300), kQuarterAboutZ},
                    NearestCase{"OfHugeNumbers", times(kQuarterAboutZ, 1e300), kQuarterAboutZ}),
    [](const auto& test) { return test.param.name; });

// A rotation times any symmetric positive matrix has that rotation as its nearest.
TEST(NearestRotation, OfRandomProductsIsTheirRotation) {
  constexpr std::uint32_t kSeed = 4101;
  SCOPED_TRACE(kSeed);
  Random random(kSeed);
  for (int i = 0; i < 500; ++i) {
    const Matrix3 rotation = turned_about(random_direction(random), number_between(random, 0, kPi));
    const Matrix3 axes = turned_about(random_direction(random), number_between(random, 0, kPi));
    const auto stretch = [&random] { return std::pow(10.0, number_between(random, -1, 1)); };
    const Matrix3 symmetric = axes * diagonal(stretch(), stretch(), stretch()) * transpose(axes);
    const double size = std::pow(10.0, number_between(random, -30, 30));
    const auto nearest = nearest_rotation(times(rotation * symmetric, size));
    ASSERT_TRUE(nearest) << i;
    ASSERT_LT(largest_difference(*nearest, rotation), 1e-12) << i;
    ASSERT_LT(rotation_defect(*nearest), 1e-14) << i;
  }
}

TEST(NearestRotation, OfARotationRoundedToSingleFloatsIsARotationWithinTheRounding) {
  Random random(4102);
  for (int i = 0; i < 200; ++i) {
    const Matrix3 rotation = turned_about(random_direction(random), number_between(random, 0, kPi));
    Matrix3 rounded = rotation;
    for (double& entry : rounded.m)
      entry = static_cast<double>(static_cast<float>(entry));
    const auto nearest = nearest_rotation(rounded);
    ASSERT_TRUE(nearest);
    EXPECT_LT(rotation_defect(*nearest), 1e-14);
    EXPECT_LT(largest_difference(*nearest, rotation), 2e-7);
  }
}

class NoNearestRotation : public testing::TestWithParam<NearestCase> {};

TEST_P(NoNearestRotation, IsRefused) {
  EXPECT_FALSE(nearest_rotation(GetParam().matrix));
}

INSTANTIATE_TEST_SUITE_P(Rotation, NoNearestRotation,
                         testing::Values(NearestCase{"Zero", times({}, 0), {}},
                                         NearestCase{"OneReflectedAxis", diagonal(1, 1, -1), {}},
                                         NearestCase{"Inversion", diagonal(-1, -1, -1), {}},
                                         NearestCase{"TwoRowsExchanged", {{0, 1, 0, 1, 0, 0, 0, 0, 1}}, {}},
                                         NearestCase{"FlatSpace", diagonal(1, 1, 0), {}},
                                         NearestCase{"RepeatedRow", {{1, 2, 3, 1, 2, 3, 0, 0, 1}}, {}}),
                         [](const auto& test) { return test.param.name; });

TEST(NearestRotation, OfAMatrixWithOneEntryThatIsNotFiniteIsRefused) {
  for (std::size_t entry = 0; entry < 9; ++entry) {
    for (const double bad : {kNoNumber, kEndless, -kEndless}) {
      Matrix3 matrix;
      matrix.m[entry] = bad;
      EXPECT_FALSE(nearest_rotation(matrix)) << entry << " " << bad;
    }
  }
}

// --- from the rotation vector

struct VectorCase {
  const char* name;
  Vector3 vector;
  Matrix3 rotation;
};

class RotationVector : public testing::TestWithParam<VectorCase> {};

TEST_P(RotationVector, MakesTheRotation) {
  EXPECT_LT(largest_difference(rotation_about(GetParam().vector), GetParam().rotation), 1e-15);
}

TEST_P(RotationVector, ComesOutOfTheRotation) {
  EXPECT_LT(largest_difference(rotation_vector(GetParam().rotation), GetParam().vector), 1e-15);
}

const double kRoot3 = std::sqrt(3.0);
const double kThird = 2 * kPi / 3 / kRoot3;  // each component of a third of a turn about (1, 1, 1)

INSTANTIATE_TEST_SUITE_P(
    Rotation, RotationVector,
    testing::Values(VectorCase{"Nothing", {0, 0, 0}, {}}, VectorCase{"QuarterAboutZ", {0, 0, kPi / 2}, kQuarterAboutZ},
                    VectorCase{"QuarterBackAboutX", {-kPi / 2, 0, 0}, {{1, 0, 0, 0, 0, 1, 0, -1, 0}}},
                    VectorCase{"SixthAboutY", {0, kPi / 3, 0}, {{0.5, 0, kRoot3 / 2, 0, 1, 0, -kRoot3 / 2, 0, 0.5}}},
                    VectorCase{"ThirdAboutTheDiagonal", {kThird, kThird, kThird}, {{0, 0, 1, 1, 0, 0, 0, 1, 0}}}),
    [](const auto& test) { return test.param.name; });

TEST(RotationVector, OfMoreThanHalfATurnGoesTheShortWay) {
  EXPECT_LT(largest_difference(rotation_vector(rotation_about({0, 0, 1.5 * kPi})), {0, 0, -0.5 * kPi}), 1e-14);
  EXPECT_LT(largest_difference(rotation_vector(rotation_about({0, 2 * kPi - 0.25, 0})), {0, -0.25, 0}), 1e-14);
  EXPECT_LT(norm(rotation_vector(rotation_about({2 * kPi, 0, 0}))), 1e-14);
}

TEST(RotationVector, OfRandomRotationsIsAxisTimesAngle) {
  constexpr std::uint32_t kSeed = 4103;
  SCOPED_TRACE(kSeed);
  Random random(kSeed);
  for (int i = 0; i < 1000; ++i) {
    const Vector3 axis = random_direction(random);
    const double angle = number_between(random, 0, 3.1);
    const Matrix3 rotation = turned_about(axis, angle);
    ASSERT_LT(largest_difference(rotation_vector(rotation), scaled(axis, angle)), 1e-13) << i;
    ASSERT_LT(largest_difference(rotation_about(scaled(axis, angle)), rotation), 1e-14) << i;
  }
}

TEST(RotationVector, HalvedTwiceOverIsTheRotation) {
  Random random(4104);
  for (int i = 0; i < 200; ++i) {
    const Matrix3 rotation = turned_about(random_direction(random), number_between(random, 0, kPi));
    const Matrix3 half = rotation_about(scaled(rotation_vector(rotation), 0.5));
    EXPECT_LT(largest_difference(half * half, rotation), 1e-13);
  }
}

TEST(RotationVector, OfSmallTurnsKeepsItsPrecision) {
  Random random(4105);
  for (const double angle : {1e-3, 1e-6, 1e-9, 1e-12, 1e-15, 1e-18, 1e-100}) {
    const Vector3 expected = scaled(random_direction(random), angle);
    const Matrix3 rotation = rotation_about(expected);
    EXPECT_LT(rotation_defect(rotation), 1e-15) << angle;
    EXPECT_LT(largest_difference(rotation_vector(rotation), expected), 1e-14 * angle) << angle;
  }
}

// --- half a turn

// The axis is good to the rounding of the matrix; which of its two signs the vector takes is settled by the last bit.
TEST(HalfATurn, ApproachedFromBelowGivesTheAxisBack) {
  constexpr std::uint32_t kSeed = 4106;
  SCOPED_TRACE(kSeed);
  Random random(kSeed);
  for (const double rest : {1e-2, 1e-4, 1e-6, 1e-8, 1e-10, 1e-12, 1e-14, 1e-15, 0.0}) {
    for (int i = 0; i < 50; ++i) {
      const Vector3 axis = random_direction(random);
      const Matrix3 rotation = turned_about(axis, kPi - rest);
      const Vector3 vector = rotation_vector(rotation);
      const double sign = rest < 1e-13 && dot(vector, axis) < 0 ? -1 : 1;
      ASSERT_LT(largest_difference(vector, scaled(axis, sign * (kPi - rest))), 1e-13) << rest;
      ASSERT_LE(norm(vector), kPi + 1e-15);
      ASSERT_LT(largest_difference(rotation_about(vector), rotation), 1e-14) << rest;
    }
  }
}

TEST(HalfATurn, JustAboveIsTheOtherWayRound) {
  Random random(4107);
  for (const double more : {1e-2, 1e-6, 1e-12}) {
    const Vector3 axis = random_direction(random);
    const Vector3 vector = rotation_vector(turned_about(axis, kPi + more));
    EXPECT_LT(largest_difference(vector, scaled(axis, more - kPi)), 1e-13) << more;
  }
}

TEST(HalfATurn, ExactlyGivesTheVectorWhoseLargestComponentIsPositive) {
  const Vector3 axes[] = {{1, 0, 0},
                          {0, 1, 0},
                          {0, 0, 1},
                          {2.0 / 7, -3.0 / 7, 6.0 / 7},
                          {-2.0 / 7, 6.0 / 7, 3.0 / 7},
                          {6.0 / 7, -2.0 / 7, -3.0 / 7},
                          {0.8, -0.6, 0},
                          {-0.6, 0, 0.8}};
  for (const Vector3& axis : axes) {
    Matrix3 rotation;  // 2 k k^T - I
    for (std::size_t row = 0; row < 3; ++row) {
      for (std::size_t column = 0; column < 3; ++column)
        rotation(row, column) = 2 * axis[row] * axis[column] - (row == column ? 1 : 0);
    }
    EXPECT_LT(largest_difference(rotation_vector(rotation), scaled(axis, kPi)), 1e-14) << axis[0] << " " << axis[1];
  }
}

}  // namespace
}  // namespace vq3900::test
