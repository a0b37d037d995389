// The geometry held against OpenCV's. There, too, the second camera's points are rotation times the first's plus
// translation; the first is our left one, the reference. It rectifies along the longer of x and y in the image plane,
// we always along x: the rigs here are wider than high.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <opencv2/calib3d.hpp>
#include <opencv2/core.hpp>
#include <vector>

#include "calib/distortion_model.h"
#include "calib/rotation.h"
#include "calib/stereo_rectification.h"
#include "support/geometry.h"
#include "support/numbers.h"
#include "support/reference_distortion.h"

namespace vq3900::test {
namespace {

constexpr double kTolerance = 1e-6;

cv::Matx33d peer(const Matrix3& matrix) {
  return cv::Matx33d(matrix.m.data());
}
cv::Vec3d peer(const Vector3& vector) {
  return {vector[0], vector[1], vector[2]};
}
Matrix3 ours(const cv::Mat& matrix) {
  Matrix3 result;
  for (int i = 0; i < 9; ++i)
    result.m[static_cast<std::size_t>(i)] = matrix.at<double>(i / 3, i % 3);
  return result;
}

// k1, k2, p1, p2, k3, k4, k5, k6
std::array<double, 8> peer_order(const ReferenceModel& brown) {
  return {brown.at(0), brown.at(1), brown.at(6), brown.at(7), brown.at(2), brown.at(3), brown.at(4), brown.at(5)};
}

DistortionModel made(const ReferenceModel& model) {
  return make_distortion_model(model.number, model.coefficients, model.rho);
}

struct PeerRectification {
  Matrix3 left;
  Matrix3 right;
  double focal;
  double cx;
  double cy;
};

PeerRectification peer_rectification(const cv::Matx33d& camera, const cv::Size& size, const Rig& rig) {
  const cv::Mat none = cv::Mat::zeros(1, 5, CV_64F);
  cv::Mat r1;
  cv::Mat r2;
  cv::Mat p1;
  cv::Mat p2;
  cv::Mat q;
  cv::stereoRectify(camera,
                    none,
                    camera,
                    none,
                    size,
                    peer(rig.rotation),
                    peer(rig.translation),
                    r1,
                    r2,
                    p1,
                    p2,
                    q,
                    cv::CALIB_ZERO_DISPARITY,
                    -1);
  return {ours(r1), ours(r2), p1.at<double>(0, 0), p1.at<double>(0, 2), p1.at<double>(1, 2)};
}

const cv::Matx33d kCamera(600, 0, 330, 0, 600, 230, 0, 0, 1);
const cv::Size kSize(640, 480);

void expect_same_rotations(const Rig& rig) {
  const auto rotations = rectifying_rotations(rig.rotation, rig.translation);
  ASSERT_TRUE(rotations);
  const PeerRectification expected = peer_rectification(kCamera, kSize, rig);
  ASSERT_LT(largest_difference(rotations->left, expected.left), kTolerance);
  ASSERT_LT(largest_difference(rotations->right, expected.right), kTolerance);
}

TEST(OpenCv, RectifiesRandomRigsAlike) {
  constexpr std::uint32_t kSeed = 4501;
  SCOPED_TRACE(kSeed);
  Random random(kSeed);
  int negative = 0;
  for (int i = 0; i < 500 && !testing::Test::HasFailure(); ++i) {
    SCOPED_TRACE(i);
    const Rig rig = random_rig(random, 0.6, 0.3);
    if (rig.translation[0] < 0) ++negative;
    expect_same_rotations(rig);
  }
  EXPECT_GT(negative, 200);
  EXPECT_LT(negative, 300);
}

// OpenCV takes turns below 1e-5 for none: these are larger.
TEST(OpenCv, RectifiesRigsThatAreAlmostRectifiedAlike) {
  Random random(4502);
  for (int i = 0; i < 200 && !testing::Test::HasFailure(); ++i) {
    SCOPED_TRACE(i);
    Rig rig = random_rig(random, 0, 1e-3);
    rig.angle = number_between(random, 5e-5, 1e-3);
    rig.rotation = turned_about(rig.axis, rig.angle);
    expect_same_rotations(rig);
  }
  expect_same_rotations({{}, 0, {}, {-50, 0, 0}});
  expect_same_rotations({{}, 0, {}, {50, 0, 0}});
}

// Equal cameras without distortion: there the principal point is centred as ours is, in single precision.
TEST(OpenCv, CentresTheVirtualImageAlike) {
  constexpr std::uint32_t kSeed = 4503;
  SCOPED_TRACE(kSeed);
  Random random(kSeed);
  const CameraView camera{640, 480, 600, 600, 330, 230, make_distortion_model(0, Coefficients{}, 0)};
  for (int i = 0; i < 200; ++i) {
    const Rig rig = random_rig(random, 0.1, 0.1);
    const auto rotations = rectifying_rotations(rig.rotation, rig.translation);
    ASSERT_TRUE(rotations);
    const auto pinhole = virtual_pinhole(camera, camera, *rotations);
    const PeerRectification expected = peer_rectification(kCamera, kSize, rig);
    ASSERT_TRUE(pinhole);
    ASSERT_EQ(pinhole->focal, expected.focal) << i;
    ASSERT_NEAR(pinhole->cx, expected.cx, 1e-3) << i;
    ASSERT_NEAR(pinhole->cy, expected.cy, 1e-3) << i;
  }
}

TEST(OpenCv, TurnsRotationVectorsIntoMatricesAndBackAlike) {
  constexpr std::uint32_t kSeed = 4504;
  SCOPED_TRACE(kSeed);
  Random random(kSeed);
  for (int i = 0; i < 500; ++i) {
    const Vector3 vector = scaled(random_direction(random), number_between(random, 0, 3.1));
    cv::Mat matrix;
    cv::Rodrigues(peer(vector), matrix);
    ASSERT_LT(largest_difference(rotation_about(vector), ours(matrix)), 1e-12) << i;
    cv::Vec3d back;
    cv::Rodrigues(matrix, back);
    ASSERT_LT(largest_difference(rotation_vector(ours(matrix)), {back[0], back[1], back[2]}), kTolerance) << i;
  }
}

TEST(OpenCv, ProjectsPointsThroughTheBrownModelAlike) {
  constexpr std::uint32_t kSeed = 4505;
  SCOPED_TRACE(kSeed);
  Random random(kSeed);
  for (int i = 0; i < 200; ++i) {
    const ReferenceModel reference = random_model(i % 2, random);
    const DistortionModel model = made(reference);
    std::vector<cv::Point3d> points;
    for (int j = 0; j < 20; ++j) {
      const Point p = random_point(random, 1.2);
      const double depth = number_between(random, 300, 3000);
      points.emplace_back(p.x * depth, p.y * depth, depth);
    }
    std::vector<cv::Point2d> projected;
    cv::projectPoints(points, cv::Vec3d(), cv::Vec3d(), cv::Matx33d::eye(), peer_order(reference), projected);
    for (std::size_t j = 0; j < points.size(); ++j) {
      const Point p = distort(model, {points[j].x / points[j].z, points[j].y / points[j].z});
      const double size = 1 + std::hypot(p.x, p.y);
      ASSERT_NEAR(p.x, projected[j].x, kTolerance * size) << i;
      ASSERT_NEAR(p.y, projected[j].y, kTolerance * size) << i;
    }
  }
}

TEST(OpenCv, UndistortsPointsThroughTheBrownModelAlike) {
  constexpr std::uint32_t kSeed = 4506;
  SCOPED_TRACE(kSeed);
  Random random(kSeed);
  for (int i = 0; i < 200; ++i) {
    const ReferenceModel reference = random_model(0, random);
    const Point distorted = random_point(random, 0.4);
    const std::vector<cv::Point2d> from{{distorted.x, distorted.y}};
    std::vector<cv::Point2d> to;
    cv::undistortPoints(from,
                        to,
                        cv::Matx33d::eye(),
                        peer_order(reference),
                        cv::noArray(),
                        cv::noArray(),
                        cv::TermCriteria(cv::TermCriteria::COUNT | cv::TermCriteria::EPS, 200, 1e-14));
    const auto p = undistort(made(reference), distorted);
    ASSERT_TRUE(p) << i;
    ASSERT_NEAR(p->x, to[0].x, kTolerance) << i;
    ASSERT_NEAR(p->y, to[0].y, kTolerance) << i;
  }
}

TEST(OpenCv, DistortsAndUndistortsThroughTheFisheyeModelAlike) {
  constexpr std::uint32_t kSeed = 4507;
  SCOPED_TRACE(kSeed);
  Random random(kSeed);
  for (int i = 0; i < 300; ++i) {
    const ReferenceModel reference = random_model(2, random);
    const cv::Vec4d k(reference.at(0), reference.at(1), reference.at(2), reference.at(3));
    const Point p = random_point(random, 2);
    const std::vector<cv::Point2d> from{{p.x, p.y}};
    std::vector<cv::Point2d> to;
    cv::fisheye::distortPoints(from, to, cv::Matx33d::eye(), k);
    const Point distorted = distort(made(reference), p);
    ASSERT_NEAR(distorted.x, to[0].x, kTolerance) << i;
    ASSERT_NEAR(distorted.y, to[0].y, kTolerance) << i;

    if (!reference.grows_up_to(3)) continue;
    std::vector<cv::Point2d> back;
    cv::fisheye::undistortPoints(to, back, cv::Matx33d::eye(), k);
    const auto undistorted = undistort(made(reference), distorted);
    ASSERT_TRUE(undistorted) << i;
    ASSERT_NEAR(undistorted->x, back[0].x, kTolerance) << i;
    ASSERT_NEAR(undistorted->y, back[0].y, kTolerance) << i;
  }
}

}  // namespace
}  // namespace vq3900::test
