#include "vq3900_distortion_lut.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

#include "support/distortion_luts.h"
#include "support/numbers.h"
#include "support/reference_distortion.h"

namespace vq3900::test {
namespace {

static_assert(sizeof(SampledDistoLUT_s) == 64);
static_assert(std::has_virtual_destructor_v<CreateDistortionLUT>);
static_assert(!std::is_copy_constructible_v<BrownModelLUT> && !std::is_copy_assignable_v<BrownModelLUT>);

// --- geometry

// One side of the image, worked out by hand: pixels, step as a power of two, extension ratio; first column, samples.
struct SideCase {
  const char* name;
  int pixels;
  int sample_bit;
  float extend_ratio;
  int start;
  int samples;  // 0: too many
};

class GridSide : public testing::TestWithParam<SideCase> {
 protected:
  static LutSettings along(bool across) {
    LutSettings settings{4, 4, GetParam().sample_bit, GetParam().extend_ratio, 500, 500, 0, 0};
    (across ? settings.width : settings.height) = GetParam().pixels;
    return settings;
  }
};

TEST_P(GridSide, HasTheStartAndSizeWorkedOutByHand) {
  for (const bool across : {true, false}) {
    BrownModelLUT lut;
    set_up(lut, along(across), {});
    if (GetParam().samples == 0) {
      EXPECT_EQ(lut.Generate(), -6);
      EXPECT_EQ(lut.GetErrString(), kTooLarge);
      continue;
    }
    ASSERT_EQ(lut.Generate(), 0);
    const SampledDistoLUT_s grid = grid_of(lut);
    EXPECT_EQ(grid.sample_rate_bit, GetParam().sample_bit);
    EXPECT_EQ(across ? grid.x_start : grid.y_start, GetParam().start);
    EXPECT_EQ(across ? grid.grid_width : grid.grid_height, GetParam().samples);
    EXPECT_EQ((across ? grid.grid_height : grid.grid_width) % 4, 0);
  }
}

INSTANTIATE_TEST_SUITE_P(
    DistortionLut, GridSide,
    testing::Values(
        SideCase{"OnePixel", 1, 3, 0, 0, 4}, SideCase{"NoExtension", 1280, 3, 0, 0, 164},
        SideCase{"OtherSide", 800, 3, 0, 0, 104}, SideCase{"RatioOf1AddsNothing", 1280, 3, 1, 0, 164},
        SideCase{"LastSampleOnTheLastPixel", 25, 3, 0, 0, 4}, SideCase{"OnePixelMore", 26, 3, 0, 0, 8},
        // margin 80 = 5 steps of 16; (1279 + 80 + 80) / 16 = 89.9
        SideCase{"MarginOfWholeSteps", 1280, 4, 0.125F, -80, 92},
        // margin 12.5, start 2 steps of 8; (99 + 12.5 + 16) / 8 = 15.9
        SideCase{"MarginBetweenSteps", 100, 3, 0.25F, -16, 20},
        // margin 6, start 1 step of 64; (95 + 6 + 64) / 64 = 2.6, where 64 on the right would give 3.5
        SideCase{"RightMarginIsNotRoundedUp", 96, 6, 0.125F, -64, 4},
        SideCase{"RatioBelow1IsAdded", 100, 5, 0.5F, -32, 8}, SideCase{"FactorOfAsMuchIsTheSame", 100, 5, 1.5F, -32, 8},
        // margin 50, start 2 steps of 32; (99 + 50 + 64) / 32 = 6.7
        SideCase{"FactorOf2", 100, 5, 2, -64, 8},
        // margin 150, start 5 steps of 32; (99 + 150 + 160) / 32 = 12.8
        SideCase{"FactorOf4", 100, 5, 4, -160, 16},
        // margin 3000, but no more than 512; (1999 + 1024) / 64 = 47.2 and / 8 = 377.9
        SideCase{"Extension512PixelsAtMost", 2000, 6, 4, -512, 52},
        SideCase{"Extension512PixelsAtMostInFineSteps", 2000, 3, 4, -512, 380},
        // margin 504.5: 64 steps of 8 to the left, 504.5 to the right; (1008 + 504.5 + 512) / 8 = 253.06
        SideCase{"JustBelow512Pixels", 1009, 3, 2, -512, 256}, SideCase{"StepOf1", 100, 0, 0.5F, -25, 152},
        SideCase{"StepOf1With1020Samples", 1020, 0, 0, 0, 1020}, SideCase{"RoundedUpTo1020", 1017, 0, 0, 0, 1020},
        SideCase{"StepOf1With1021Samples", 1021, 0, 0, 0, 0}, SideCase{"StepOf8With1020Samples", 8153, 3, 0, 0, 1020},
        SideCase{"StepOf8With1021Samples", 8154, 3, 0, 0, 0}, SideCase{"StepOf64With1020Samples", 65217, 6, 0, 0, 1020},
        SideCase{"StepOf64With1021Samples", 65218, 6, 0, 0, 0}, SideCase{"LargestImage", 65535, 6, 0, 0, 0},
        SideCase{"LargestImageInStepsOf1", 65535, 0, 4, 0, 0},
        // 512 on both sides; (7975 + 1024) / 8 = 1124.9, without them 996.9
        SideCase{"ExtensionAloneTooLarge", 7976, 3, 2, 0, 0}),
    [](const auto& test) { return test.param.name; });

// --- samples

TEST(DistortionLut, SamplesAreRowMajorDisplacementsInFocalLengths) {
  // The displacement is r^2 / 4 times (x, y). Columns at x = -0.5, 0, 0.5, 1, rows at y = -0.5, -0.25, 0, 0.25.
  BrownModelLUT lut;
  set_up(lut, {25, 25, 3, 0, 16, 32, 8, 16}, {0, {0.25F}, 0});
  ASSERT_EQ(lut.Generate(), 0);
  const SampledDistoLUT_s grid = grid_of(lut);
  ASSERT_EQ(grid.grid_width, 4);
  ASSERT_EQ(grid.grid_height, 4);
  for (std::size_t j = 0; j < 4; ++j) {
    for (std::size_t i = 0; i < 4; ++i) {
      const double x = static_cast<double>(i) / 2 - 0.5;
      const double y = static_cast<double>(j) / 4 - 0.5;
      EXPECT_EQ(grid.dx[4 * j + i], 0.25 * (x * x + y * y) * x) << i << " " << j;
      EXPECT_EQ(grid.dy[4 * j + i], 0.25 * (x * x + y * y) * y) << i << " " << j;
    }
  }
}

TEST(DistortionLut, DescriptorHoldsTheIntrinsicsItWasSampledWith) {
  EquiModelLUT lut;
  set_up(lut, {64, 48, 4, 0.5F, 123.25F, 124.5F, 31.125F, -2.75F}, {2, {}, 0});
  ASSERT_EQ(lut.Generate(), 0);
  const SampledDistoLUT_s grid = grid_of(lut);
  EXPECT_EQ(grid.fx, 123.25);
  EXPECT_EQ(grid.fy, 124.5);
  EXPECT_EQ(grid.cx, 31.125);
  EXPECT_EQ(grid.cy, -2.75);
  EXPECT_EQ(grid.x_start, -16);
  EXPECT_EQ(grid.y_start, -16);
  EXPECT_EQ(grid.sample_rate_bit, 4);
}

class AnyLut : public testing::TestWithParam<std::int32_t> {};

TEST_P(AnyLut, OfRandomCamerasSamplesTheModel) {
  constexpr std::uint32_t kSeed = 4401;
  SCOPED_TRACE(kSeed);
  Random random(kSeed);
  int generated = 0;
  for (int round = 0; round < 60; ++round) {
    const ReferenceModel model = random_model(GetParam(), random);
    const float focal = random.between(500, 900);
    const LutSettings settings{640, 400, 4, random.between(0, 1), focal, focal * 1.01F, random.between(280, 360), 200};
    const auto lut = made_lut(GetParam());
    set_up(*lut, settings, model);
    if (lut->Generate() != 0) continue;
    ++generated;
    const SampledDistoLUT_s grid = grid_of(*lut);
    for (std::size_t j = 0; j < grid.grid_height; ++j) {
      for (std::size_t i = 0; i < grid.grid_width; ++i) {
        const double u = grid.x_start + 16 * static_cast<double>(i);
        const double v = grid.y_start + 16 * static_cast<double>(j);
        const Point expected = expected_sample(settings, model, u, v);
        const std::size_t at = j * grid.grid_width + i;
        ASSERT_NEAR(grid.dx[at], expected.x, 1e-12) << round << " " << i << " " << j;
        ASSERT_NEAR(grid.dy[at], expected.y, 1e-12) << round << " " << i << " " << j;
      }
    }
  }
  EXPECT_GT(generated, 40);
}

INSTANTIATE_TEST_SUITE_P(DistortionLut, AnyLut, testing::Values(0, 2, 5),
                         [](const auto& test) { return "Number" + std::to_string(test.param); });

// --- displacements out of range

// One row of nine pixels with x = 0 and x = 1 at its ends, one sample each; then the displacement at the right end is
// the sum of the coefficients.
class OneRow : public testing::Test {
 protected:
  int generate(float c1, float c2 = 0, float fy = 8) {
    set_up(lut_, {9, 1, 3, 0, 8, fy, 0, 0}, {5, {c1, c2}, 0});
    const int status = lut_.Generate();
    if (status == 0) grid_ = grid_of(lut_);
    return status;
  }
  void expect_sample(std::size_t i, std::size_t j, double dx, double dy) const {
    EXPECT_EQ(grid_.dx[4 * j + i], dx) << i << " " << j;
    EXPECT_EQ(grid_.dy[4 * j + i], dy) << i << " " << j;
  }

  PolynomialModelLUT lut_;
  SampledDistoLUT_s grid_{};
};

TEST_F(OneRow, DisplacementInsideTheImageMustEncode) {
  const float last_bit = std::ldexp(1.0F, -24);
  EXPECT_EQ(generate(-0.5F), 0);
  EXPECT_EQ(generate(-0.5F - last_bit), -7);
  EXPECT_EQ(lut_.GetErrString(), kBadDisplacement);
  EXPECT_EQ(generate(-0.5F, -last_bit / 4), 0);  // rounded before it is looked at
  EXPECT_EQ(generate(-0.5F, -last_bit / 2), -7);
  EXPECT_EQ(generate(0.5F - last_bit), 0);
  EXPECT_EQ(generate(0.5F - last_bit, last_bit / 4), 0);
  EXPECT_EQ(generate(0.5F - last_bit, last_bit / 2), -7);
  EXPECT_EQ(generate(0.5F), -7);
  EXPECT_EQ(generate(1e30F), -7);
  EXPECT_EQ(generate(0.25F), 0);
}

TEST_F(OneRow, SampleBeyondTheImageThatDoesNotEncodeTakesThatOfTheNearestPixel) {
  ASSERT_EQ(generate(-0.5F), 0);
  expect_sample(0, 0, 0, 0);
  expect_sample(1, 0, -0.5, 0);
  expect_sample(2, 0, -0.5, 0);  // x = 2: -4
  expect_sample(3, 0, -0.5, 0);
  expect_sample(0, 1, 0, -0.5);  // beyond the image too, but it encodes
  expect_sample(1, 1, -0.5, 0);  // (1, 1): (-1, -1)
  expect_sample(0, 2, 0, 0);     // (0, 2): (0, -4)
  expect_sample(3, 3, -0.5, 0);
}

TEST_F(OneRow, BothComponentsAreTakenWhenOneDoesNotEncode) {
  ASSERT_EQ(generate(-0.25F, 0, 32), 0);
  // (1, 0.25) encodes with r^2 = 1.0625; at (2, 0.25) dx is out of range and dy is not
  expect_sample(1, 1, -0.265625, -0.06640625);
  expect_sample(2, 1, -0.25, 0);
}

TEST_F(OneRow, NearestPixelMustEncode) {
  set_up(lut_, {5, 1, 3, 0, 4, 4, 0, 0}, {5, {1}, 0});  // the last pixel, which is no sample, is at x = 1
  EXPECT_EQ(lut_.Generate(), -7);
  set_up(lut_, {5, 1, 3, 0, 4, 4, 0, 0}, {5, {0.25F}, 0});
  EXPECT_EQ(lut_.Generate(), 0);
}

TEST_F(OneRow, ExtensionToTheLeftTakesTheFirstPixel) {
  set_up(lut_, {17, 1, 3, 2, 8, 8, 8, 0}, {5, {0.25F}, 0});  // x from -1 to 1, columns from -3 on
  ASSERT_EQ(lut_.Generate(), 0);
  grid_ = grid_of(lut_);
  EXPECT_EQ(grid_.x_start, -16);
  EXPECT_EQ(grid_.y_start, -8);
  ASSERT_EQ(grid_.grid_width, 8);
  const std::size_t row = 8;  // v = 0
  for (const std::size_t column : {0U, 1U, 2U})
    EXPECT_EQ(grid_.dx[row + column], -0.25) << column;
  EXPECT_EQ(grid_.dx[row + 3], 0);
  for (const std::size_t column : {4U, 5U, 6U, 7U})
    EXPECT_EQ(grid_.dx[row + column], 0.25) << column;
}

TEST(DistortionLut, DisplacementThatIsNoNumberIsOutOfRange) {
  BrownModelLUT lut;
  set_up(lut, {9, 1, 3, 0, 8, 8, 0, 0}, {0, {-1, 0, 0, -1}, 0});  // 0 / 0 at x = 1
  EXPECT_EQ(lut.Generate(), -7);
  set_up(lut, {9, 1, 3, 0, 8, 8, 0, 0}, {0, {0, 0, 0, -1}, 0});  // 1 / 0
  EXPECT_EQ(lut.Generate(), -7);
  EXPECT_EQ(lut.GetErrString(), kBadDisplacement);
}

// --- refusals

struct RefusalCase {
  const char* name;
  std::function<int(CreateDistortionLUT&)> call;
  int status;
  const char* text;
};

class Refusal : public testing::TestWithParam<RefusalCase> {};

TEST_P(Refusal, HasItsStatusAndTextAndLeavesTheSettings) {
  BrownModelLUT lut;
  set_up(lut, {}, {0, {0.25F}, 0});
  EXPECT_EQ(lut.GetErrString(), "");
  EXPECT_EQ(GetParam().call(lut), GetParam().status);
  EXPECT_EQ(lut.GetErrString(), GetParam().text);
  ASSERT_EQ(lut.Generate(), 0);
  const SampledDistoLUT_s grid = grid_of(lut);
  EXPECT_EQ(grid.grid_width, 12);  // 63 / 8 = 7.9, 9 samples
  EXPECT_EQ(grid.grid_height, 8);
  EXPECT_EQ(grid.sample_rate_bit, 3);
  EXPECT_EQ(grid.x_start, 0);
  EXPECT_EQ(grid.fx, 50);
  EXPECT_EQ(grid.cy, 24);
  const double x = -32.0 / 50;
  const double y = -24.0 / 40;
  EXPECT_NEAR(grid.dx[0], 0.25 * (x * x + y * y) * x, 1e-15);
  EXPECT_EQ(lut.GetErrString(), GetParam().text);  // still the last failure
}

RefusalCase config(const char* name, int bit, float ratio, int status, const char* text) {
  return {name, [=](CreateDistortionLUT& lut) { return lut.SetLutConfigParams(bit, 7, ratio, false); }, status, text};
}
RefusalCase size(const char* name, int width, int height) {
  return {name, [=](CreateDistortionLUT& lut) { return lut.SetImageSize(width, height); }, -3, kBadImageSize};
}
RefusalCase pinhole(const char* name, float fx, float fy, float cx, float cy) {
  return {name, [=](CreateDistortionLUT& lut) { return lut.SetCameraIntrinsics(fx, fy, cx, cy); }, -4, kBadIntrinsics};
}
RefusalCase coefficients(const char* name, std::vector<float> values, int count) {
  return {name,
          [=](CreateDistortionLUT& lut) {
            return lut.SetDistortionCoeffs(values.empty() ? nullptr : values.data(), count);
          },
          -5,
          kBadCoefficients};
}

INSTANTIATE_TEST_SUITE_P(
    DistortionLut, Refusal,
    testing::Values(config("SampleBitMinus1", -1, 0, -1, kBadSampleBit), config("SampleBit7", 7, 0, -1, kBadSampleBit),
                    config("SampleBitCountsBeforeTheRatio", 7, kNan, -1, kBadSampleBit),
                    config("RatioNegative", 3, -0.001F, -2, kBadExtendRatio),
                    config("RatioAbove4", 3, 4.001F, -2, kBadExtendRatio),
                    config("RatioNoNumber", 3, kNan, -2, kBadExtendRatio),
                    config("RatioInfinite", 3, kInfinity, -2, kBadExtendRatio), size("WidthOf0", 0, 48),
                    size("HeightOf0", 64, 0), size("NegativeWidth", -64, 48), size("WidthOf65536", 65536, 48),
                    size("HeightOf65536", 64, 65536), pinhole("FxOf0", 0, 40, 32, 24), pinhole("FyOf0", 50, 0, 32, 24),
                    pinhole("NegativeFx", -50, 40, 32, 24), pinhole("NegativeFy", 50, -40, 32, 24),
                    pinhole("FxNoNumber", kNan, 40, 32, 24), pinhole("FyInfinite", 50, kInfinity, 32, 24),
                    pinhole("CxNoNumber", 50, 40, kNan, 24), pinhole("CyInfinite", 50, 40, 32, -kInfinity),
                    coefficients("NoCoefficients", {}, 8), coefficients("FourCoefficients", {1, 1, 1, 1}, 4),
                    coefficients("NineCoefficients", {1, 1, 1, 1, 1, 1, 1, 1, 1}, 9),
                    coefficients("NegativeCount", {1}, -1),
                    coefficients("FirstInfinite", {kInfinity, 1, 1, 1, 1, 1, 1, 1}, 8),
                    coefficients("LastNoNumber", {1, 1, 1, 1, 1, 1, 1, kNan}, 8)),
    [](const auto& test) { return test.param.name; });

TEST(DistortionLut, BoundsOfTheSettingsAreAccepted) {
  BrownModelLUT lut;
  for (const int bit : {0, 6})
    EXPECT_EQ(lut.SetLutConfigParams(bit, -1, 0, false), 0);
  for (const float ratio : {0.0F, -0.0F, 1.0F, 4.0F})
    EXPECT_EQ(lut.SetLutConfigParams(3, 99, ratio, true), 0);
  EXPECT_EQ(lut.SetImageSize(1, 65535), 0);
  EXPECT_EQ(lut.SetImageSize(65535, 1), 0);
  EXPECT_EQ(lut.SetCameraIntrinsics(1e-3F, 1e9F, -1e6F, 0), 0);
  EXPECT_EQ(lut.GetErrString(), "");
}

TEST(DistortionLut, EquidistantModelTakesExactlyFourCoefficients) {
  const std::array<float, 8> values{0.1F, 0.1F, 0.1F, 0.1F, kNan, kNan, kNan, kNan};
  EquiModelLUT lut;
  for (const int count : {-1, 0, 3, 5, 8}) {
    EXPECT_EQ(lut.SetDistortionCoeffs(values.data(), count), -5) << count;
    EXPECT_EQ(lut.GetErrString(), kBadCoefficients);
  }
  EXPECT_EQ(lut.SetDistortionCoeffs(nullptr, 4), -5);
  EXPECT_EQ(lut.SetDistortionCoeffs(values.data(), 4), 0);
  EXPECT_EQ(PolynomialModelLUT().SetDistortionCoeffs(values.data(), 4), -5);
}

TEST(DistortionLut, PolynomialParameterIsAlwaysTakenAndOnlyThatModelsConcern) {
  for (const std::int32_t number : {0, 2, 5}) {
    std::vector<double> corners;
    for (const double rho : {0.0, 0.25, kPi, -1.0, static_cast<double>(kNan), static_cast<double>(kInfinity)}) {
      const auto lut = made_lut(number);
      set_up(*lut, {}, {number, {0.25F}, rho});
      ASSERT_EQ(lut->Generate(), 0);
      corners.push_back(grid_of(*lut).dx[0]);
      EXPECT_EQ(corners.back() == corners.front(), number != 5 || rho != 0.25) << number << " " << rho;
    }
  }
}

// --- order of calls

class NotReady : public testing::TestWithParam<std::int32_t> {};

TEST_P(NotReady, GenerateNamesWhatIsNotSetInTurn) {
  const auto lut = made_lut(GetParam());
  const std::array<float, 8> none{};
  const auto fails = [&lut](int status, const char* text) {
    EXPECT_EQ(lut->Generate(), status);
    EXPECT_EQ(lut->GetErrString(), text);
  };
  EXPECT_EQ(lut->GetErrString(), "");
  fails(-3, kBadImageSize);
  EXPECT_EQ(lut->SetImageSize(0, 0), -3);
  fails(-3, kBadImageSize);
  EXPECT_EQ(lut->SetImageSize(64, 48), 0);
  fails(-4, kBadIntrinsics);
  EXPECT_EQ(lut->SetCameraIntrinsics(50, 50, 32, 24), 0);
  fails(-5, kBadCoefficients);
  EXPECT_EQ(lut->SetDistortionCoeffs(none.data(), coefficient_count(GetParam())), 0);
  EXPECT_EQ(lut->SetLutConfigParams(3, 0, 0, true), 0);
  EXPECT_EQ(lut->Generate(), 0);
  EXPECT_EQ(grid_of(*lut).grid_width, 12);
}

TEST_P(NotReady, GridIsHandedOutOnlyAfterAGenerationThatSucceeded) {
  const auto lut = made_lut(GetParam());
  SampledDistoLUT_s grid;
  std::memset(&grid, 0x5A, sizeof grid);
  const SampledDistoLUT_s before = grid;
  const auto refused = [&] {
    EXPECT_EQ(lut->GetDistortionLut(&grid), -8);
    EXPECT_EQ(lut->GetErrString(), kNotGenerated);
    EXPECT_EQ(std::memcmp(&grid, &before, sizeof grid), 0);
  };
  refused();
  set_up(*lut, {}, {GetParam(), {}, 0});
  refused();
  ASSERT_EQ(lut->Generate(), 0);
  EXPECT_EQ(lut->GetDistortionLut(nullptr), -8);
  EXPECT_EQ(lut->GetErrString(), kNotGenerated);
  EXPECT_EQ(lut->GetDistortionLut(&grid), 0);
  EXPECT_EQ(lut->SetImageSize(65535, 48), 0);
  EXPECT_EQ(lut->Generate(), -6);
  grid = before;
  refused();
  EXPECT_EQ(lut->SetImageSize(64, 48), 0);
  EXPECT_EQ(lut->Generate(), 0);
  EXPECT_EQ(lut->GetDistortionLut(&grid), 0);
}

INSTANTIATE_TEST_SUITE_P(DistortionLut, NotReady, testing::Values(0, 2, 5),
                         [](const auto& test) { return "Number" + std::to_string(test.param); });

TEST(DistortionLut, SecondGenerationReplacesTheFirst) {
  BrownModelLUT lut;
  set_up(lut, {256, 256, 3, 0.5F, 500, 500, 128, 128}, {0, {0.25F}, 0});
  ASSERT_EQ(lut.Generate(), 0);
  set_up(lut, {25, 41, 4, 0, 100, 100, 12, 20}, {});
  ASSERT_EQ(lut.Generate(), 0);
  const SampledDistoLUT_s grid = grid_of(lut);
  EXPECT_EQ(grid.x_start, 0);
  EXPECT_EQ(grid.sample_rate_bit, 4);
  EXPECT_EQ(grid.fx, 100);
  ASSERT_EQ(grid.grid_width, 4);
  ASSERT_EQ(grid.grid_height, 4);
  EXPECT_EQ(std::count(grid.dx, grid.dx + 16, 0.0), 16);
  EXPECT_EQ(std::count(grid.dy, grid.dy + 16, 0.0), 16);
}

// The descriptor tells of the grid it comes with, whatever is set for the next one.
TEST(DistortionLut, SettingsOfTheNextGenerationLeaveTheGridAsItWasGenerated) {
  BrownModelLUT lut;
  set_up(lut, {}, {0, {0.25F}, 0});
  ASSERT_EQ(lut.Generate(), 0);
  const SampledDistoLUT_s generated = grid_of(lut);
  const std::vector<double> dx(generated.dx, generated.dx + 96);
  set_up(lut, {1280, 800, 5, 0.5F, 600, 601, 640, 400}, {});
  const SampledDistoLUT_s grid = grid_of(lut);
  EXPECT_EQ(grid.grid_width, 12);
  EXPECT_EQ(grid.grid_height, 8);
  EXPECT_EQ(grid.sample_rate_bit, 3);
  EXPECT_EQ(grid.x_start, 0);
  EXPECT_EQ(grid.fx, 50);
  EXPECT_EQ(grid.fy, 40);
  EXPECT_EQ(grid.cx, 32);
  EXPECT_EQ(grid.cy, 24);
  EXPECT_TRUE(std::equal(dx.begin(), dx.end(), grid.dx));
}

TEST(DistortionLut, VersionReplacesTheText) {
  std::string text = "something longer than that";
  CreateDistortionLUT::GetVersionInfo(text);
  EXPECT_EQ(text, "1.0.0");
}

}  // namespace
}  // namespace vq3900::test
