#include "calib/stereo_rectification.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>

#include "calib/stereo_derivation.h"
#include "support/geometry.h"
#include "support/numbers.h"
#include "support/reference_pinhole.h"

namespace vq3900::test {
namespace {

constexpr Vector3 kAlongX{1, 0, 0};

Vector3 added(const Vector3& a, const Vector3& b) {
  return {a[0] + b[0], a[1] + b[1], a[2] + b[2]};
}

Matrix3 about_x(double angle) {
  return turned_about({1, 0, 0}, angle);
}
Matrix3 about_y(double angle) {
  return turned_about({0, 1, 0}, angle);
}
Matrix3 about_z(double angle) {
  return turned_about({0, 0, 1}, angle);
}

// --- rotations by hand

struct RotationsCase {
  const char* name;
  Matrix3 rotation;
  Vector3 translation;
  Matrix3 left;
  Matrix3 right;
};

class RectifyingRotationsOf : public testing::TestWithParam<RotationsCase> {};

TEST_P(RectifyingRotationsOf, AreTheOnesWorkedOutByHand) {
  const auto rotations = rectifying_rotations(GetParam().rotation, GetParam().translation);
  ASSERT_TRUE(rotations);
  EXPECT_LT(largest_difference(rotations->left, GetParam().left), 1e-14);
  EXPECT_LT(largest_difference(rotations->right, GetParam().right), 1e-14);
}

const double kRoot3 = std::sqrt(3.0);
constexpr double kQuarter = kPi / 2;

// A turn by a positive angle about z takes x towards y, about y takes z towards x, about x takes y towards z.
INSTANTIATE_TEST_SUITE_P(
    Rectification, RectifyingRotationsOf,
    testing::Values(
        RotationsCase{"RigThatIsRectified", {}, {-50, 0, 0}, {}, {}},
        RotationsCase{"RigThatIsRectifiedTheOtherWayRound", {}, {50, 0, 0}, {}, {}},
        RotationsCase{"NoTranslation", {}, {0, 0, 0}, {}, {}},
        RotationsCase{"NoTranslationHalvesTheTurn", about_y(0.5), {0, 0, 0}, about_y(0.25), about_y(-0.25)},
        RotationsCase{"TurnAboutTheBaseline", about_x(0.5), {-50, 0, 0}, about_x(0.25), about_x(-0.25)},
        RotationsCase{"TurnAboutTheBaselineTheOtherWay", about_x(-0.5), {50, 0, 0}, about_x(-0.25), about_x(0.25)},
        RotationsCase{"BaselineToTheFront", {}, {30 * kRoot3, 0, 30}, about_y(kPi / 6), about_y(kPi / 6)},
        RotationsCase{"NegativeBaselineToTheBack", {}, {-30 * kRoot3, 0, -30}, about_y(kPi / 6), about_y(kPi / 6)},
        RotationsCase{"BaselineDown", {}, {30 * kRoot3, 30, 0}, about_z(-kPi / 6), about_z(-kPi / 6)},
        RotationsCase{"NegativeBaselineDown", {}, {-30 * kRoot3, 30, 0}, about_z(kPi / 6), about_z(kPi / 6)},
        // Always horizontal: a vertical baseline is laid over to the right, whichever way it points.
        RotationsCase{"VerticalBaseline", {}, {0, 50, 0}, about_z(-kQuarter), about_z(-kQuarter)},
        RotationsCase{"NegativeVerticalBaseline", {}, {0, -50, 0}, about_z(kQuarter), about_z(kQuarter)},
        RotationsCase{"NegativeZeroAlongX", {}, {-0.0, 50, 0}, about_z(-kQuarter), about_z(-kQuarter)},
        RotationsCase{"BaselineIntoTheImage", {}, {0, 0, 50}, about_y(kQuarter), about_y(kQuarter)},
        // Equal components along x and y: the sign of x decides.
        RotationsCase{"TieOfXAndNegativeY", {}, {30, -30, 0}, about_z(kPi / 4), about_z(kPi / 4)},
        RotationsCase{"TieOfNegativeXAndY", {}, {-30, 30, 0}, about_z(kPi / 4), about_z(kPi / 4)},
        RotationsCase{"SmallNegativeXAgainstALargeY", {}, {-30, 30 * kRoot3, 0}, about_z(kPi / 3), about_z(kPi / 3)},
        // The baseline lies along the axis in the frame half way between the cameras.
        RotationsCase{"BaselineAlongTheAxisAfterTheHalfTurn",
                      about_y(degrees(60)),
                      {30 * kRoot3, 0, -30},
                      about_y(degrees(30)),
                      about_y(degrees(-30))},
        // There it points to the left, though its x component is positive.
        RotationsCase{"SignOfXCountsAfterTheHalfTurn",
                      about_y(degrees(60)),
                      {60 * std::cos(degrees(75)), 0, 60 * std::sin(degrees(75))},
                      about_y(degrees(-45)),
                      about_y(degrees(-105))}),
    [](const auto& test) { return test.param.name; });

// --- rotations of random rigs

// What holds for any rig whose rotations are good.
void expect_rectified(const Rig& rig, double tolerance) {
  const auto rotations = rectifying_rotations(rig.rotation, rig.translation);
  ASSERT_TRUE(rotations);
  EXPECT_LT(rotation_defect(rotations->left), 1e-13);
  EXPECT_LT(rotation_defect(rotations->right), 1e-13);
  const Matrix3 between = rotations->right * rig.rotation * transpose(rotations->left);
  EXPECT_LT(largest_difference(between, {}), 1e-13);
  const double length = norm(rig.translation);
  const Vector3 baseline = rotations->right * rig.translation;
  EXPECT_NEAR(std::fabs(baseline[0]), length, tolerance * length);
  EXPECT_NEAR(baseline[1], 0, tolerance * length);
  EXPECT_NEAR(baseline[2], 0, tolerance * length);
}

// Half of the rotation is undone in each camera, the sign of x is that of the baseline there, and the turn to the axis
// is the shortest.
void expect_in_the_manner_of_halves(const Rig& rig) {
  const auto rotations = rectifying_rotations(rig.rotation, rig.translation);
  ASSERT_TRUE(rotations);
  const Matrix3 half = turned_about(rig.axis, -rig.angle / 2);
  const Vector3 t = half * rig.translation;
  const Matrix3 align = rotations->right * transpose(half);
  EXPECT_LT(largest_difference(align, rotations->left * half), 1e-12);
  EXPECT_EQ((align * t)[0] < 0, t[0] < 0);
  const Vector3 across = scaled(cross(t, kAlongX), 1 / norm(t));
  EXPECT_LT(largest_difference(align * across, across), 1e-12);
}

TEST(RandomRigs, AreRectified) {
  constexpr std::uint32_t kSeed = 4301;
  SCOPED_TRACE(kSeed);
  Random random(kSeed);
  for (int i = 0; i < 500 && !testing::Test::HasFailure(); ++i) {
    SCOPED_TRACE(i);
    const Rig rig = random_rig(random, 3.1, 1.5);
    expect_rectified(rig, 1e-10);
    expect_in_the_manner_of_halves(rig);
  }
}

TEST(RandomRigs, AsCamerasAreBuiltAreRectified) {
  constexpr std::uint32_t kSeed = 4302;
  SCOPED_TRACE(kSeed);
  Random random(kSeed);
  for (int i = 0; i < 500 && !testing::Test::HasFailure(); ++i) {
    SCOPED_TRACE(i);
    const Rig rig = random_rig(random, 0.05, 0.05);
    expect_rectified(rig, 1e-10);
    expect_in_the_manner_of_halves(rig);
  }
}

TEST(RandomRigs, TurnedByHalfATurnOrNextToItAreRectified) {
  constexpr std::uint32_t kSeed = 4303;
  SCOPED_TRACE(kSeed);
  Random random(kSeed);
  for (const double rest : {1e-3, 1e-6, 1e-9, 1e-12, 1e-15, 0.0, -1e-12, -1e-6}) {
    for (int i = 0; i < 50 && !testing::Test::HasFailure(); ++i) {
      SCOPED_TRACE(rest);
      Rig rig = random_rig(random, 1, 1.5);
      rig.angle = kPi - rest;
      rig.rotation = turned_about(rig.axis, rig.angle);
      expect_rectified(rig, 1e-10);
      if (rest > 1e-10) expect_in_the_manner_of_halves(rig);
    }
  }
}

TEST(RandomRigs, TurnedByHalfATurnAboutACoordinateAxisAreRectified) {
  for (const Matrix3& rotation : {Matrix3{{1, 0, 0, 0, -1, 0, 0, 0, -1}},
                                  Matrix3{{-1, 0, 0, 0, 1, 0, 0, 0, -1}},
                                  Matrix3{{-1, 0, 0, 0, -1, 0, 0, 0, 1}}}) {
    for (const double sign : {1.0, -1.0})
      expect_rectified({{}, kPi, rotation, {50 * sign, 2, -3}}, 1e-12);
  }
}

// The angle comes out of an arc cosine, which is good to a few 1e-8 next to the axis.
TEST(RandomRigs, WithABaselineNextToTheAxisAreRectified) {
  Random random(4304);
  for (const double slant : {1e-2, 1e-4, 1e-6, 1e-8, 1e-10, 1e-15, 1e-100}) {
    SCOPED_TRACE(slant);
    const Rig rig = random_rig(random, 0, 0);
    expect_rectified({rig.axis, 0, {}, added(rig.translation, {0, slant * 50, -slant * 70})}, 5e-8);
  }
}

TEST(RandomRigs, WithARotationThatIsNotQuiteOneTakeTheNearest) {
  Random random(4305);
  for (int i = 0; i < 100; ++i) {
    const Rig rig = random_rig(random, 0.5, 0.5);
    Matrix3 rough = rig.rotation;
    for (double& entry : rough.m)
      entry = entry * 1.01 + number_between(random, -1e-3, 1e-3);
    const auto nearest = nearest_rotation(rough);
    ASSERT_TRUE(nearest);
    const auto rotations = rectifying_rotations(rough, rig.translation);
    const auto expected = rectifying_rotations(*nearest, rig.translation);
    ASSERT_TRUE(rotations && expected);
    EXPECT_LT(rotation_defect(rotations->left), 1e-13);
    EXPECT_LT(largest_difference(rotations->left, expected->left), 1e-13);
    EXPECT_LT(largest_difference(rotations->right, expected->right), 1e-13);
  }
}

// A point of space is seen in the same row of both virtual images, and its disparity gives its depth.
TEST(RandomRigs, SeeRandomPointsInEqualRowsAndDisparityGivesDepth) {
  constexpr std::uint32_t kSeed = 4306;
  SCOPED_TRACE(kSeed);
  constexpr double kFocal = 600;
  Random random(kSeed);
  for (int i = 0; i < 300; ++i) {
    const Rig rig = random_rig(random, 0.3, 0.3);
    const auto rotations = rectifying_rotations(rig.rotation, rig.translation);
    ASSERT_TRUE(rotations);
    for (int j = 0; j < 10; ++j) {
      const Vector3 in_left{
          number_between(random, -500, 500), number_between(random, -500, 500), number_between(random, 300, 5000)};
      const Vector3 in_right = added(rig.rotation * in_left, rig.translation);
      const Vector3 left = rotations->left * in_left;
      const Vector3 right = rotations->right * in_right;
      ASSERT_NEAR(kFocal * left[1] / left[2], kFocal * right[1] / right[2], 1e-6) << i;
      ASSERT_NEAR(left[2], right[2], 1e-8) << i;
      const double disparity = kFocal * right[0] / right[2] - kFocal * left[0] / left[2];
      const double signed_length = norm(rig.translation) * (rig.translation[0] < 0 ? -1 : 1);
      ASSERT_NEAR(kFocal * signed_length / disparity, left[2], 1e-6 * left[2]) << i;
    }
  }
}

// --- refusals

TEST(RectifyingRotations, NeedARotation) {
  constexpr double kNoNumber = std::numeric_limits<double>::quiet_NaN();
  constexpr double kEndless = std::numeric_limits<double>::infinity();
  const Vector3 translation{-50, 0, 0};
  for (const Matrix3& bad : {Matrix3{{0, 0, 0, 0, 0, 0, 0, 0, 0}},
                             Matrix3{{1, 0, 0, 0, 1, 0, 0, 0, -1}},
                             Matrix3{{1, 0, 0, 0, 1, 0, 0, 0, 0}},
                             Matrix3{{1, 0, 0, 0, kNoNumber, 0, 0, 0, 1}},
                             Matrix3{{1, 0, 0, 0, 1, kEndless, 0, 0, 1}}})
    EXPECT_FALSE(rectifying_rotations(bad, translation));
  EXPECT_TRUE(rectifying_rotations({}, translation));
}

// --- the virtual pinhole

constexpr RectifyingRotations kUpright{};

void expect_pinhole(const TestCamera& left, const TestCamera& right, const RectifyingRotations& rotations,
                    const VirtualPinhole& expected, double tolerance = 1e-10) {
  const auto pinhole = virtual_pinhole(left.view(), right.view(), rotations);
  ASSERT_TRUE(pinhole);
  EXPECT_EQ(pinhole->focal, expected.focal);
  EXPECT_NEAR(pinhole->cx, expected.cx, tolerance);
  EXPECT_NEAR(pinhole->cy, expected.cy, tolerance);
}

TEST(VirtualPinhole, OfEqualCamerasWithoutDistortionIsTheirs) {
  expect_pinhole({}, {}, kUpright, {500, 320, 240});
  const TestCamera off_centre{640, 480, 500, 500, 300.5, 250.25};
  expect_pinhole(off_centre, off_centre, kUpright, {500, 300.5, 250.25});
}

TEST(VirtualPinhole, TakesTheLargestOfFourFocalLengths) {
  for (int largest = 0; largest < 4; ++largest) {
    TestCamera left;
    TestCamera right;
    double* const focal[] = {&left.fx, &left.fy, &right.fx, &right.fy};
    *focal[largest] = 501.5;
    const auto pinhole = virtual_pinhole(left.view(), right.view(), kUpright);
    ASSERT_TRUE(pinhole);
    EXPECT_EQ(pinhole->focal, 501.5) << largest;
  }
}

// Left: the samples' mean is -0.5 / 500 * 600, the centre 319.5 + 0.6; likewise the others.
TEST(VirtualPinhole, LiesHalfWayBetweenTheCentresOfTheCameras) {
  expect_pinhole(
      {}, {640, 480, 600, 590, 330, 250}, kUpright, {600, (320.1 + 330.0) / 2, (240.1 + 239.5 + 10.5 * 600 / 590) / 2});
}

// The right camera's mean is (479 / 2 - 160, ...), its centre (319 / 2, 239 / 2) less that.
TEST(VirtualPinhole, SamplesBothCamerasWithinTheFirstsSizeAndCentresEachInItsOwn) {
  expect_pinhole({}, {320, 240, 500, 500, 160, 120}, kUpright, {500, (320.0 + 0) / 2, (240.0 + 0) / 2});
  expect_pinhole({320, 240, 500, 500, 160, 120}, {}, kUpright, {500, (160.0 + 480) / 2, (120.0 + 360) / 2});
}

TEST(VirtualPinhole, FollowsTheTurnOfEachCamera) {
  const Matrix3 half_turn = about_z(kPi);
  expect_pinhole({}, {}, {half_turn, half_turn}, {500, 319, 239});
  // A single pixel on the axis, turned 45 degrees aside, moves by a focal length.
  const TestCamera pixel{1, 1, 500, 500, 0, 0};
  expect_pinhole(pixel, pixel, {about_y(degrees(45)), {}}, {500, -250, 0});
  expect_pinhole(pixel, pixel, {{}, about_y(degrees(45))}, {500, -250, 0});
  expect_pinhole(pixel, pixel, {about_x(degrees(45)), about_x(degrees(45))}, {500, 0, 500});
  expect_pinhole(pixel, pixel, {about_y(degrees(-60)), {}}, {500, 250 * kRoot3, 0});
}

// The first camera's corner lies at radius 1 (r = 0.5 for the camera of half that width and height); a factor that is
// off by more than 0.1 there moves the samples inwards.
struct SampleCase {
  const char* name;
  ReferenceModel left;
  ReferenceModel right;
  bool inner;
  double size = 1;
};

class VirtualPinholeSamples : public testing::TestWithParam<SampleCase> {};

TEST_P(VirtualPinholeSamples, AreTheCornersUnlessDistortionThereIsStrong) {
  const SampleCase& row = GetParam();
  const double s = row.size;
  const TestCamera left{700 * s, 560 * s, 500, 400, 300 * s, 320 * s, row.left};
  const TestCamera right{700 * s, 560 * s, 500, 400, 310 * s, 312 * s, row.right};
  const VirtualPinhole expected = reference_pinhole(left, right, kUpright, row.inner);
  const VirtualPinhole other = reference_pinhole(left, right, kUpright, !row.inner);
  EXPECT_GT(std::fabs(expected.cx - other.cx), 0.01);
  expect_pinhole(left, right, kUpright, expected, 1e-8);
}

constexpr ReferenceModel brown(float k1, float k4 = 0) {
  return {0, {k1, 0, 0, k4}, 0};
}
constexpr ReferenceModel equidistant(float k1) {
  return {2, {k1}, 0};
}
constexpr ReferenceModel polynomial(float c1, double rho = 0) {
  return {5, {c1}, rho};
}

INSTANTIATE_TEST_SUITE_P(
    Rectification, VirtualPinholeSamples,
    testing::Values(SampleCase{"BrownJustBelow", brown(0.0999F), brown(0.02F), false},
                    SampleCase{"BrownJustAbove", brown(0.1001F), brown(0.02F), true},
                    SampleCase{"NegativeJustBelow", brown(-0.0999F), brown(-0.02F), false},
                    SampleCase{"NegativeJustAbove", brown(-0.1001F), brown(-0.02F), true},
                    SampleCase{"DenominatorAlone", brown(0, 0.2F), brown(0), true},
                    SampleCase{"DenominatorThatBalancesTheNumerator", brown(0.1F, 0.2F), brown(0.02F), false},
                    SampleCase{"FirstCameraAloneDecides", brown(0.01F), brown(0.3F), false},
                    SampleCase{"FirstCameraAloneDecidesAgain", brown(0.3F), brown(0.01F), true},
                    SampleCase{"EquidistantAtRadius1", equidistant(0), equidistant(0), true},
                    SampleCase{"EquidistantAtRadiusHalf", equidistant(0.01F), equidistant(0), false, 0.5},
                    SampleCase{"PolynomialJustBelow", polynomial(0.0999F), polynomial(0.02F), false},
                    SampleCase{"PolynomialJustAbove", polynomial(0.1001F), polynomial(0.02F), true},
                    SampleCase{"PolynomialWithALimit", polynomial(0.3F, 0.5), polynomial(0.02F), false},
                    SampleCase{"OtherNumbersAreBrown", {7, {0.1001F}, 0}, brown(0.02F), true}),
    [](const auto& test) { return test.param.name; });

TEST(VirtualPinhole, OfRandomRigsIsThatOfTheFormulas) {
  constexpr std::uint32_t kSeed = 4307;
  SCOPED_TRACE(kSeed);
  Random random(kSeed);
  for (int i = 0; i < 300 && !testing::Test::HasFailure(); ++i) {
    SCOPED_TRACE(i);
    const Rig rig = random_rig(random, 0.1, 0.1);
    const auto rotations = rectifying_rotations(rig.rotation, rig.translation);
    ASSERT_TRUE(rotations);
    const auto camera = [&random] {
      const double focal = number_between(random, 600, 900);
      const ReferenceModel model = brown(random.between(-0.15F, 0.25F), random.between(-0.05F, 0.05F));
      return TestCamera{
          640, 480, focal, focal + 3, number_between(random, 300, 340), number_between(random, 220, 260), model};
    };
    const TestCamera left = camera();
    const TestCamera right = camera();
    const double corner = std::hypot(left.cx / left.fx, left.cy / left.fy);
    const bool inner = std::fabs(left.model.factor(corner) - 1) > 0.1;
    expect_pinhole(left, right, *rotations, reference_pinhole(left, right, *rotations, inner), 1e-8);
  }
}

TEST(VirtualPinhole, NeedsSamplesThatCanBeUndistortedInBothCameras) {
  // r (1 - 0.3 r^2) never gets to 0.72, where these samples lie: within the image in the first camera, whose distortion
  // is strong, at the edge in the second, when the first has none.
  const TestCamera wide{2880, 1, 500, 500, 1440, 0};
  const TestCamera wide_folded{2880, 1, 500, 500, 1440, 0, polynomial(-0.3F)};
  EXPECT_FALSE(virtual_pinhole(wide_folded.view(), wide.view(), kUpright));
  const TestCamera narrow{720, 1, 500, 500, 360, 0};
  const TestCamera narrow_folded{720, 1, 500, 500, 360, 0, polynomial(-0.3F)};
  EXPECT_FALSE(virtual_pinhole(narrow.view(), narrow_folded.view(), kUpright));
  EXPECT_TRUE(virtual_pinhole(narrow_folded.view(), narrow.view(), kUpright));
}

TEST(VirtualPinhole, NeedsCamerasThatLookAtTheVirtualImage) {
  const Matrix3 aside = about_y(degrees(100));
  EXPECT_FALSE(virtual_pinhole(TestCamera{}.view(), TestCamera{}.view(), {aside, {}}));
  EXPECT_FALSE(virtual_pinhole(TestCamera{}.view(), TestCamera{}.view(), {{}, aside}));
  EXPECT_FALSE(virtual_pinhole(TestCamera{}.view(), TestCamera{}.view(), {{}, about_x(kPi)}));
}

// --- the sign of the baseline

TEST(Baseline, TakesTheSignOfTheLargestComponentAndTheFirstOfEqualOnes) {
  const float root = std::sqrt(1800.0F);
  EXPECT_EQ(signed_baseline({-50, 0, 0}), -50.0F);
  EXPECT_EQ(signed_baseline({3, -4, 0}), -5.0F);
  EXPECT_EQ(signed_baseline({-2, 3, 6}), 7.0F);
  EXPECT_EQ(signed_baseline({30, -30, 0}), root);
  EXPECT_EQ(signed_baseline({-30, 30, 0}), -root);
  EXPECT_EQ(signed_baseline({0, -30, 30}), -root);
  EXPECT_EQ(signed_baseline({30, 0, -30}), root);
}

TEST(Baseline, ConfiguredOneThatPointsTheOtherWayIsFound) {
  EXPECT_TRUE(baseline_sign_differs(50, {-50, 0, 0}));
  EXPECT_FALSE(baseline_sign_differs(-50, {-50, 0, 0}));
  EXPECT_FALSE(baseline_sign_differs(1, {30, -30, 0}));
  EXPECT_TRUE(baseline_sign_differs(-1, {30, -30, 0}));
  EXPECT_FALSE(baseline_sign_differs(0, {-50, 0, 0}));
  EXPECT_FALSE(baseline_sign_differs(-50, {0, 0, 0}));
}

}  // namespace
}  // namespace vq3900::test
