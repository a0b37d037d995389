#include "calib/distortion_lut/displacement_row.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "calib/distortion_lut/displacement_grid.h"
#include "calib/distortion_lut/lut_grid.h"
#include "support/code_paths.h"
#include "support/geometry.h"
#include "support/numbers.h"
#include "support/reference_distortion.h"

namespace vq3900::test {
namespace {

constexpr std::int32_t kNumbers[] = {0, 2, 5};

DistortionModel model_of(const ReferenceModel& reference) {
  return make_distortion_model(reference.number, reference.coefficients, reference.rho);
}

Point displaced(const DistortionModel& model, Point p) {
  const Point distorted = distort(model, p);
  return {distorted.x - p.x, distorted.y - p.y};
}

// Whether it rounds to a signed number of 24 bits with 24 fraction bits.
bool encodes(const Point& d) {
  const double x = std::round(std::ldexp(d.x, 24));
  const double y = std::round(std::ldexp(d.y, 24));
  return x >= -8388608 && x <= 8388607 && y >= -8388608 && y <= 8388607;
}

class SampleRow : public CodePathTest<SampleRowFunction> {};

INSTANTIATE_TEST_SUITE_P(DisplacementRow, SampleRow,
                         testing::ValuesIn(sample_row_paths().begin(), sample_row_paths().end()), kPathName);

TEST(DisplacementRow, PortablePathStandsLastAndRunsEverywhere) {
  expect_portable_last(sample_row_paths());
}

// Coefficients of lenses, and far from them: numbers of which some displacements are infinite or no number.
ReferenceModel any_model(std::int32_t number, Random& random) {
  ReferenceModel model = random_model(number, random);
  if (random.word() % 4 == 0) model.coefficients[random.word() % 8] *= 1e3F;
  if (random.word() % 8 == 0) model.coefficients[random.word() % 8] = 3e38F;
  return model;
}

TEST_P(SampleRow, HasTheBitsOfTheModelPointByPoint) {
  constexpr std::uint32_t kSeed = 51;
  Random random(kSeed);
  for (int round = 0; round < 1500; ++round) {
    const std::int32_t number = kNumbers[round % 3];
    SCOPED_TRACE("seed " + std::to_string(kSeed) + ", round " + std::to_string(round));
    const DistortionModel model = model_of(any_model(number, random));
    const std::size_t count = std::size_t{random.word() % 40} * 4;
    const double reach = number_between(random, 0, 3);
    const double y = random.word() % 8 == 0 ? 0 : number_between(random, -reach, reach);
    std::vector<double> x(count);
    for (double& column : x)
      column = random.word() % 32 == 0 ? 0 : number_between(random, -reach, reach);

    std::vector<double> dx(count), dy(count);
    const bool all_encode = path()(model, x, y, dx.data(), dy.data());
    bool none_is_out = true;
    for (std::size_t i = 0; i < count; ++i) {
      const Point d = displaced(model, {x[i], y});
      none_is_out = none_is_out && encodes(d);
      if (std::isnan(d.x) || std::isnan(d.y)) {
        ASSERT_EQ(std::isnan(dx[i]), std::isnan(d.x));
        ASSERT_EQ(std::isnan(dy[i]), std::isnan(d.y));
      } else {
        ASSERT_EQ(bits_of(dx[i]), bits_of(d.x)) << i;
        ASSERT_EQ(bits_of(dy[i]), bits_of(d.y)) << i;
      }
    }
    ASSERT_TRUE(none_is_out || !all_encode);  // it may say no where all do
  }
}

TEST_P(SampleRow, TellsOfASingleDisplacementThatDoesNotEncode) {
  const DistortionModel model = make_distortion_model(5, Coefficients{1}, 0);  // d = p r^2
  for (std::size_t place = 0; place < 24; ++place) {
    for (const double beyond : {0.8, -0.8, 1e10, -1e10, 1e200, HUGE_VAL, static_cast<double>(kNan)}) {
      std::vector<double> x(24, 0.5), dx(24), dy(24);
      EXPECT_TRUE(path()(model, x, 0.25, dx.data(), dy.data()));
      x[place] = beyond;
      EXPECT_FALSE(path()(model, x, 0.25, dx.data(), dy.data())) << beyond << " at " << place;
    }
    std::vector<double> x(24, 0), dx(24), dy(24);
    x[place] = 0.5;
    EXPECT_FALSE(path()(model, x, 0.79, dx.data(), dy.data())) << "y at " << place;
  }
}

TEST_P(SampleRow, CommonLensesEncodeEverywhere) {
  constexpr std::uint32_t kSeed = 52;
  Random random(kSeed);
  for (int round = 0; round < 30; ++round) {
    const DistortionModel model = model_of(random_model(kNumbers[round % 3], random));
    std::vector<double> x(kMostSamples), dx(kMostSamples), dy(kMostSamples);
    for (double& column : x)
      column = number_between(random, -0.4, 0.4);
    EXPECT_TRUE(path()(model, x, number_between(random, -0.4, 0.4), dx.data(), dy.data()));
  }
}

TEST_P(SampleRow, TouchesNothingBesideTheArrays) {
  using Row = FencedArray<double>;
  for (const std::int32_t number : kNumbers) {
    const DistortionModel model = make_distortion_model(number, Coefficients{0.1F}, 0);
    for (const Row::Side side : {Row::Side::kStart, Row::Side::kEnd}) {
      for (const std::size_t count : {0U, 4U, 8U, 20U, 1020U}) {
        Row x(count, side), dx(count, side), dy(count, side);
        std::ranges::fill(x.span(), 0.25);
        EXPECT_TRUE(path()(model, x.span(), 0.5, dx.data(), dy.data()));
      }
    }
  }
}

// --- grids

struct GridCase {
  DistortionModel model;
  Pinhole pinhole;
  ImageSide image;
  GridAxis across;
  GridAxis down;
};

// The rule, sample by sample. Nothing: a displacement out of range.
std::optional<std::vector<Point>> expected_grid(const GridCase& c) {
  std::vector<Point> samples;
  for (int j = 0; j < c.down.samples; ++j) {
    for (int i = 0; i < c.across.samples; ++i) {
      const auto at = [&c](double u, double v) {
        return displaced(c.model, {(u - c.pinhole.cx) / c.pinhole.fx, (v - c.pinhole.cy) / c.pinhole.fy});
      };
      const double u = c.across.start + i * c.across.step;
      const double v = c.down.start + j * c.down.step;
      const double right = c.image.width - 1;
      const double bottom = c.image.height - 1;
      Point d = at(u, v);
      if (!encodes(d)) {
        if (u >= 0 && u <= right && v >= 0 && v <= bottom) return std::nullopt;
        d = at(std::clamp(u, 0.0, right), std::clamp(v, 0.0, bottom));
        if (!encodes(d)) return std::nullopt;
      }
      samples.push_back(d);
    }
  }
  return samples;
}

TEST(DisplacementGrid, HasTheBitsOfTheModelSampleBySample) {
  constexpr std::uint32_t kSeed = 53;
  Random random(kSeed);
  int refused = 0, replaced = 0, grids = 0;
  DisplacementGrid grid;
  for (int round = 0; round < 600; ++round) {
    SCOPED_TRACE("seed " + std::to_string(kSeed) + ", round " + std::to_string(round));
    const ImageSide image{static_cast<int>(40 + random.word() % 300), static_cast<int>(40 + random.word() % 300)};
    const double focal = number_between(random, 60, 400);
    const auto across = grid_axis(image.width, 3, number_between(random, 1, 3));
    const auto down = grid_axis(image.height, 3, number_between(random, 1, 3));
    ASSERT_TRUE(across && down);
    const GridCase c{model_of(random_model(kNumbers[round % 3], random)),
                     {focal, focal + 1, image.width / 2.0 + 0.3, image.height / 2.0 - 0.7},
                     image,
                     *across,
                     *down};
    const auto expected = expected_grid(c);
    ASSERT_EQ(sample_displacements(c.model, c.pinhole, c.image, c.across, c.down, grid), expected.has_value());
    if (!expected) {
      ++refused;
      continue;
    }
    ++grids;
    ASSERT_EQ(grid.dx.size(), expected->size());
    ASSERT_EQ(grid.dy.size(), expected->size());
    for (std::size_t i = 0; i < expected->size(); ++i) {
      ASSERT_EQ(bits_of(grid.dx[i]), bits_of((*expected)[i].x)) << i;
      ASSERT_EQ(bits_of(grid.dy[i]), bits_of((*expected)[i].y)) << i;
    }
    const double u = c.across.start;
    const double v = c.down.start;
    if (!encodes(displaced(c.model, {(u - c.pinhole.cx) / c.pinhole.fx, (v - c.pinhole.cy) / c.pinhole.fy})))
      ++replaced;
  }
  EXPECT_GT(refused, 20);
  EXPECT_GT(replaced, 20);
  EXPECT_GT(grids, 200);
}

}  // namespace
}  // namespace vq3900::test
