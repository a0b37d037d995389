#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "modules/rectify_lut.h"
#include "support/capture.h"
#include "support/elements.h"
#include "support/engine_fixture.h"
#include "support/lut_grids.h"
#include "support/numbers.h"

namespace vq3900::test {
namespace {

using RectifyLutSections = EngineTest;
using Copies = std::vector<SectionCopy>;

constexpr const char* kBadNumber = "start_rows_reg_section_num != 2 ! \n";
constexpr std::uint32_t kA = 0x52040000, kB = 0x52060000, kC = 0x520C0000, kD = 0x520E0000;
constexpr double kStep = 1.0 / 16777216;  // 2^-24

Words dx_words(const LutGrid& grid) {
  return words_of(grid.width, grid.dx);
}

Words dy_words(const LutGrid& grid) {
  return words_of(grid.width, grid.dy);
}

// --- order of the words

TEST_F(RectifyLutSections, GridOf8x4GivesTwoTilesTheLeftOneFirst) {
  give_grid(1, counting_grid(8, 4, 0x100));
  EXPECT_EQ(convert(), prints_out(0, kConverted));
  const Words expected{0x100, 0x101, 0x102, 0x103, 0x108, 0x109, 0x10A, 0x10B, 0x110, 0x111, 0x112,
                       0x113, 0x118, 0x119, 0x11A, 0x11B, 0x104, 0x105, 0x106, 0x107, 0x10C, 0x10D,
                       0x10E, 0x10F, 0x114, 0x115, 0x116, 0x117, 0x11C, 0x11D, 0x11E, 0x11F};
  Words expected_dy = expected;
  for (std::uint32_t& word : expected_dy)
    word += 0x100000;
  EXPECT_EQ(taken_sections(2), (Copies{{kC, 32, expected}, {kD, 32, expected_dy}}));
}

TEST_F(RectifyLutSections, GridOf4x8IsInTheOrderOfItsRows) {
  give_grid(1, counting_grid(4, 8, 0));
  EXPECT_EQ(convert(), prints_out(0, kConverted));
  const Words words = taken_sections(2)[0].words;
  ASSERT_EQ(words.size(), 32U);
  for (std::uint32_t i = 0; i < 32; ++i)
    EXPECT_EQ(words[i], i);
}

TEST_F(RectifyLutSections, TileRowsFollowEachOther) {
  give_grid(1, counting_grid(12, 8, 0));
  EXPECT_EQ(convert(), prints_out(0, kConverted));
  const Words words = taken_sections(2)[0].words;
  Words first_of_each_row;
  for (std::size_t i = 0; i < words.size(); i += 4)
    first_of_each_row.push_back(words[i]);
  EXPECT_EQ(first_of_each_row,
            (Words{0, 12, 24, 36, 4, 16, 28, 40, 8, 20, 32, 44, 48, 60, 72, 84, 52, 64, 76, 88, 56, 68, 80, 92}));
}

TEST_F(RectifyLutSections, LargestGridIsConverted) {
  const LutGrid grid = counting_grid(1020, 12, 0);
  give_grid(1, grid);
  EXPECT_EQ(convert(), prints_out(0, kConverted));
  EXPECT_EQ(taken_sections(2), (Copies{{kC, 12240, dx_words(grid)}, {kD, 12240, dy_words(grid)}}));
}

TEST_F(RectifyLutSections, EmptyGridGivesNoWords) {
  const auto none = std::make_unique<double[]>(0);
  for (const auto& [width, height] : {std::pair{0U, 0U}, {8U, 0U}, {0U, 8U}}) {
    RectifyLutInfo info = lut_info(width, height);
    info.dx = none.get();
    info.dy = none.get();
    EXPECT_EQ(set_map(1, info), 0);
    EXPECT_EQ(lut_length(), 0U);
    EXPECT_EQ(convert(), prints_out(0, kConverted));
    EXPECT_EQ(taken_sections(2), (Copies{{kC, 0, {}}, {kD, 0, {}}}));
  }
}

// --- displacements

struct DisplacementCase {
  const char* name;
  double displacement;
  std::uint32_t word;
};

class RectifyLutWord : public EngineTest, public testing::WithParamInterface<DisplacementCase> {};

TEST_P(RectifyLutWord, IsTheDisplacementIn24FractionBits) {
  LutGrid grid = counting_grid(4, 4, 0x555555);
  Words dx = dx_words(grid);
  Words dy = dy_words(grid);
  grid.dx[6] = GetParam().displacement;
  grid.dy[9] = GetParam().displacement;
  dx[6] = dy[9] = GetParam().word;
  give_grid(1, grid);
  EXPECT_EQ(convert(), prints_out(0, kConverted));
  EXPECT_EQ(taken_sections(2), (Copies{{kC, 16, dx}, {kD, 16, dy}}));
}

INSTANTIATE_TEST_SUITE_P(
    RectifyLut, RectifyLutWord,
    testing::Values(DisplacementCase{"Half", 0.5, 0x800000}, DisplacementCase{"MinusHalf", -0.5, 0x800000},
                    DisplacementCase{"Zero", 0.0, 0}, DisplacementCase{"MinusZero", -0.0, 0},
                    DisplacementCase{"Quarter", 0.25, 0x400000}, DisplacementCase{"MinusQuarter", -0.25, 0xC00000},
                    DisplacementCase{"Tenth", 0.1, 0x19999A}, DisplacementCase{"MinusTenth", -0.1, 0xE66666},
                    DisplacementCase{"Largest", 1 - kStep, 0xFFFFFF}, DisplacementCase{"MinusOne", -1.0, 0},
                    DisplacementCase{"OneStep", kStep, 1}, DisplacementCase{"MinusOneStep", -kStep, 0xFFFFFF},
                    DisplacementCase{"HalfAStepRoundsUp", kStep / 2, 1},
                    DisplacementCase{"MinusHalfAStepRoundsDown", -kStep / 2, 0xFFFFFF},
                    DisplacementCase{"LessIsZero", kStep * 0.49, 0},
                    DisplacementCase{"MinusLessIsZero", -kStep * 0.49, 0}),
    [](const auto& test) { return test.param.name; });

TEST_F(RectifyLutSections, EverySampleOfRandomGridsReachesItsWord) {
  constexpr std::uint32_t kSeed = 290013;
  Random random(kSeed);
  const auto random_grid = [&random] {
    LutGrid grid = counting_grid(4 + random.word() % 10 * 4, 4 + random.word() % 10 * 4, 0);
    for (std::vector<double>* const samples : {&grid.dx, &grid.dy}) {
      for (double& sample : *samples)
        sample = static_cast<double>(random.between(-0.999F, 0.999F));
    }
    return grid;
  };
  for (int i = 0; i < 60; ++i) {
    SCOPED_TRACE(testing::Message() << "seed " << kSeed << ", grids " << i);
    reset_engine();
    set_cam_mode(1);
    const LutGrid grids[] = {random_grid(), random_grid()};
    const std::uint32_t last = random.word() % 2;
    give_grid(1 - last, grids[1 - last]);
    give_grid(last, grids[last]);
    EXPECT_EQ(convert(), prints_out(0, kConverted + kConverted));
    const std::size_t length = grids[last].dx.size();
    ASSERT_EQ(lut_length(), length);
    const auto count_1 = static_cast<std::uint32_t>(grids[1].dx.size());
    const auto count_0 = static_cast<std::uint32_t>(grids[0].dx.size());
    ASSERT_EQ(taken_sections(4),
              (Copies{{kA, count_1, resized(dx_words(grids[1]), length)},
                      {kB, count_1, resized(dy_words(grids[1]), length)},
                      {kC, count_0, resized(dx_words(grids[0]), length)},
                      {kD, count_0, resized(dy_words(grids[0]), length)}}));
  }
}

// --- addresses

TEST_F(RectifyLutSections, SingleCameraUsesTwoAtCamera0sAddresses) {
  const LutGrid grid = counting_grid(8, 8, 7);
  give_grid(0, grid);
  EXPECT_EQ(convert(), prints_out(0, kConverted));
  EXPECT_EQ(taken_sections(4),
            (Copies{{kC, 64, dx_words(grid)}, {kD, 64, dy_words(grid)}, {0, 64, Words(64)}, {0, 64, Words(64)}}));
}

TEST_F(RectifyLutSections, OtherModesUseTheAddressesOfTheCameras) {
  for (const std::uint32_t mode : {1U, 2U, 0x100U}) {
    reset_engine();
    set_cam_mode(mode);
    const LutGrid grids[] = {counting_grid(8, 4, 0x1000), counting_grid(8, 4, 0x2000)};
    give_grid(0, grids[0]);
    give_grid(1, grids[1]);
    EXPECT_EQ(convert(), prints_out(0, kConverted + kConverted));
    EXPECT_EQ(taken_sections(4),
              (Copies{{kA, 32, dx_words(grids[1])},
                      {kB, 32, dy_words(grids[1])},
                      {kC, 32, dx_words(grids[0])},
                      {kD, 32, dy_words(grids[0])}}));
  }
}

TEST_F(RectifyLutSections, StereoCamera1AloneLeavesCamera0sSectionsZeroWithItsOwnCount) {
  set_cam_mode(1);
  const LutGrid grid = counting_grid(8, 4, 3);
  give_grid(1, grid);
  EXPECT_EQ(convert(), prints_out(0, kConverted));
  EXPECT_EQ(taken_sections(4),
            (Copies{{kA, 32, dx_words(grid)}, {kB, 32, dy_words(grid)}, {0, 32, Words(32)}, {0, 32, Words(32)}}));
}

TEST_F(RectifyLutSections, StereoCamera0AloneFindsRoomThoughCamera1HasNoGrid) {
  set_cam_mode(1);
  const LutGrid grid = counting_grid(8, 4, 3);
  give_grid(0, grid);
  EXPECT_EQ(convert(), prints_out(0, kConverted));
  EXPECT_EQ(taken_sections(4),
            (Copies{{0, 0, Words(32)}, {0, 0, Words(32)}, {kC, 32, dx_words(grid)}, {kD, 32, dy_words(grid)}}));
}

TEST_F(RectifyLutSections, PreparedSectionsAreAllCountedAsCamera1sGrid) {
  set_cam_mode(1);
  EXPECT_EQ(set_map(1, lut_info(8, 4)), 0);
  give_grid(0, counting_grid(12, 8, 1));
  EXPECT_EQ(convert(), (Outcome{-2, lut_step_failed(1), grid_missing(1)}));
  EXPECT_EQ(taken_sections(4), Copies(4, SectionCopy{0, 32, Words(96)}));
}

// --- grids of different sizes

struct SizesCase {
  const char* name;
  std::uint32_t width_1, height_1, width_0, height_0;
  std::uint32_t last;  // camera
};

class RectifyLutSizes : public EngineTest, public testing::WithParamInterface<SizesCase> {};

// As many words come out as the grid given last has samples: of a larger section the first ones, behind a smaller one
// zeros.
TEST_P(RectifyLutSizes, GiveEachSectionItsOwnCountAndTheLengthOfTheLastGrid) {
  const SizesCase& c = GetParam();
  set_cam_mode(1);
  const LutGrid grids[] = {counting_grid(c.width_0, c.height_0, 0x1000), counting_grid(c.width_1, c.height_1, 0x2000)};
  give_grid(1 - c.last, grids[1 - c.last]);
  give_grid(c.last, grids[c.last]);
  EXPECT_EQ(convert(), prints_out(0, kConverted + kConverted));
  const std::size_t length = grids[c.last].dx.size();
  EXPECT_EQ(lut_length(), length);
  EXPECT_EQ(taken_sections(4),
            (Copies{{kA, c.width_1 * c.height_1, resized(dx_words(grids[1]), length)},
                    {kB, c.width_1 * c.height_1, resized(dy_words(grids[1]), length)},
                    {kC, c.width_0 * c.height_0, resized(dx_words(grids[0]), length)},
                    {kD, c.width_0 * c.height_0, resized(dy_words(grids[0]), length)}}));
}

INSTANTIATE_TEST_SUITE_P(RectifyLut, RectifyLutSizes,
                         testing::Values(SizesCase{"Camera1LargerAndLast", 12, 8, 8, 4, 1},
                                         SizesCase{"Camera1LargerAndFirst", 12, 8, 8, 4, 0},
                                         SizesCase{"Camera0LargerAndLast", 8, 4, 12, 8, 0},
                                         SizesCase{"Camera0LargerAndFirst", 8, 4, 12, 8, 1},
                                         SizesCase{"SameCountOtherShape", 16, 4, 4, 16, 0}),
                         [](const auto& test) { return test.param.name; });

TEST_F(RectifyLutSections, GridGivenAfterTheConversionDecidesHowManyWordsComeOut) {
  const LutGrid grid = counting_grid(8, 4, 0x30);
  for (const auto& [width, height] : {std::pair{4U, 4U}, {16U, 4U}}) {
    reset_engine();
    give_grid(1, grid);
    EXPECT_EQ(convert().code, 0);
    give_grid(1, counting_grid(width, height, 0));
    EXPECT_EQ(
        taken_sections(2),
        (Copies{{kC, 32, resized(dx_words(grid), width * height)}, {kD, 32, resized(dy_words(grid), width * height)}}));
  }
}

// --- overflow

const std::string kOverflowOf1 = overflow_lines(1.0, 24, 24, "lut_dx");

TEST_F(RectifyLutSections, DisplacementOf1OverflowsAfterTheWordsBeforeIt) {
  LutGrid grid = counting_grid(8, 4, 1);
  grid.dx[4] = 1.0;  // the first of the second tile
  give_grid(1, grid);
  EXPECT_EQ(convert(), prints_out(4096, kConvertsDx + kOverflowOf1 + lut_step_failed(1)));
  grid.dx[4] = 0;
  Words expected = dx_words(grid);
  for (std::size_t i = 16; i < 32; ++i)
    expected[i] = 0;
  const Copies sections = taken_sections(2);
  EXPECT_EQ(sections[0], (SectionCopy{kC, 32, expected}));
  EXPECT_EQ(sections[1].words, Words(32));
}

// Both sections' address and count are set before the first word.
TEST_F(RectifyLutSections, OverflowOfDxLeavesDysAddressAndCountSet) {
  for (const std::uint32_t camera : {0U, 1U}) {
    reset_engine();
    set_cam_mode(1);
    give_grid(1, counting_grid(4, 4, 1));
    LutGrid grid = counting_grid(8, 4, 1);
    grid.dx[0] = 1.0;
    give_grid(camera, grid);
    EXPECT_EQ(convert().code, 4096);
    const Copies sections = taken_sections(4);
    EXPECT_EQ(sections[camera == 1 ? 0 : 2], (SectionCopy{camera == 1 ? kA : kC, 32, Words(32)})) << camera;
    EXPECT_EQ(sections[camera == 1 ? 1 : 3], (SectionCopy{camera == 1 ? kB : kD, 32, Words(32)})) << camera;
  }
}

TEST_F(RectifyLutSections, OverflowOfDyKeepsDx) {
  LutGrid grid = counting_grid(4, 8, 1);
  const Words dy = dy_words(grid);
  grid.dy[31] = 1.0;  // the last
  give_grid(1, grid);
  EXPECT_EQ(
      convert(),
      prints_out(4096,
                 std::string(kConvertsDx) + kConvertsDy + overflow_lines(1.0, 24, 24, "lut_dy") + lut_step_failed(1)));
  Words expected = dy;
  expected[31] = 0;
  EXPECT_EQ(taken_sections(2), (Copies{{kC, 32, dx_words(grid)}, {kD, 32, expected}}));
}

TEST_F(RectifyLutSections, FirstOverflowInTileOrderEndsTheConversion) {
  LutGrid grid = counting_grid(8, 4, 1);
  grid.dx[4] = 2.0;   // above, in the right tile
  grid.dx[24] = 3.0;  // below, in the left tile
  give_grid(1, grid);
  EXPECT_EQ(convert(), prints_out(4096, kConvertsDx + overflow_lines(3.0, 24, 24, "lut_dx") + lut_step_failed(1)));
}

TEST_F(RectifyLutSections, NumbersOutOfRangeOverflow) {
  for (const double value : {1.0, 1 - kStep / 4, -1 - kStep, -1e30, 1e300}) {
    LutGrid grid = counting_grid(4, 4, 1);
    grid.dx[0] = value;
    give_grid(1, grid);
    const Outcome outcome = convert();
    EXPECT_EQ(outcome.code, 4096) << value;
    EXPECT_NE(outcome.out.find("error code 01: value overflow in lut_dx \n" + lut_step_failed(1)), std::string::npos);
    EXPECT_EQ(outcome.err, "");
  }
}

TEST_F(RectifyLutSections, NumbersThatAreNoneOverflow) {
  constexpr double kHuge = std::numeric_limits<double>::infinity();
  for (const double value : {kHuge, -kHuge, std::numeric_limits<double>::quiet_NaN()}) {
    LutGrid grid = counting_grid(4, 4, 1);
    grid.dy[15] = value;
    give_grid(1, grid);
    const Outcome outcome = convert();
    EXPECT_EQ(outcome.code, 4096) << value;
    EXPECT_NE(outcome.out.find("error code 01: value overflow in lut_dy \n" + lut_step_failed(1)), std::string::npos);
  }
}

TEST_F(RectifyLutSections, GridThatOverflowedIsHeldUntilAnotherIsGiven) {
  LutGrid grid = counting_grid(8, 4, 1);
  grid.dx[0] = 1.0;
  give_grid(1, grid);
  for (int i = 0; i < 2; ++i)
    EXPECT_EQ(convert(), prints_out(4096, kConvertsDx + kOverflowOf1 + lut_step_failed(1)));
  grid.dx[0] = 0;
  give_grid(1, grid);
  EXPECT_EQ(convert(), prints_out(0, kConverted));
  EXPECT_EQ(taken_sections(2), (Copies{{kC, 32, dx_words(grid)}, {kD, 32, dy_words(grid)}}));
}

TEST_F(RectifyLutSections, OverflowOfCamera0KeepsCamera1sSections) {
  set_cam_mode(1);
  const LutGrid good = counting_grid(8, 4, 1);
  LutGrid bad = good;
  bad.dx[0] = 1.0;
  give_grid(1, good);
  give_grid(0, bad);
  EXPECT_EQ(convert(), prints_out(4096, kConverted + kConvertsDx + kOverflowOf1 + lut_step_failed(0)));
  EXPECT_EQ(engine().rectify_lut.camera[1].grid.dx(), nullptr);
  EXPECT_NE(engine().rectify_lut.camera[0].grid.dx(), nullptr);
  const Copies sections = taken_sections(4);
  EXPECT_EQ(sections[0], (SectionCopy{kA, 32, dx_words(good)}));
  EXPECT_EQ(sections[1], (SectionCopy{kB, 32, dy_words(good)}));
}

// --- life of grids and sections

TEST_F(RectifyLutSections, LaterGridReplacesTheOneBefore) {
  for (const auto& [width, height] : {std::pair{4U, 4U}, {16U, 8U}}) {
    reset_engine();
    const LutGrid grid = counting_grid(width, height, 9);
    give_grid(1, counting_grid(8, 4, 0));
    give_grid(1, grid);
    EXPECT_EQ(convert(), prints_out(0, kConverted));
    EXPECT_EQ(taken_sections(2), (Copies{{kC, width * height, dx_words(grid)}, {kD, width * height, dy_words(grid)}}));
  }
}

TEST_F(RectifyLutSections, GridWithoutArraysReplacesTheOneBefore) {
  give_grid(1, counting_grid(8, 4, 0));
  EXPECT_EQ(set_map(1, lut_info(8, 4)), 0);
  EXPECT_EQ(convert(), (Outcome{-2, lut_step_failed(1), grid_missing(1)}));
}

TEST_F(RectifyLutSections, ConvertedGridIsGone) {
  give_grid(1, counting_grid(8, 4, 1));
  EXPECT_EQ(convert(), prints_out(0, kConverted));
  EXPECT_EQ(engine().rectify_lut.camera[1].grid.dx(), nullptr);
  EXPECT_EQ(engine().rectify_lut.camera[1].grid.dy(), nullptr);
  for (int i = 0; i < 2; ++i)
    EXPECT_EQ(convert(), (Outcome{-2, lut_step_failed(1), grid_missing(1)}));
  EXPECT_EQ(taken_sections(2), (Copies{{0, 32, Words(32)}, {0, 32, Words(32)}}));  // prepared anew, not filled

  const LutGrid grid = counting_grid(4, 8, 77);
  give_grid(1, grid);
  EXPECT_EQ(convert(), prints_out(0, kConverted));
  EXPECT_EQ(taken_sections(2), (Copies{{kC, 32, dx_words(grid)}, {kD, 32, dy_words(grid)}}));
}

TEST_F(RectifyLutSections, StereoConversionNeedsNewGridsOfBothCameras) {
  set_cam_mode(1);
  const LutGrid grid = counting_grid(8, 4, 1);
  give_grid(0, grid);
  give_grid(1, grid);
  EXPECT_EQ(convert(), prints_out(0, kConverted + kConverted));
  give_grid(0, grid);
  EXPECT_EQ(convert(), (Outcome{-2, lut_step_failed(1), grid_missing(1)}));
  give_grid(1, grid);
  EXPECT_EQ(convert(), prints_out(0, kConverted + kConverted));
  give_grid(1, grid);
  EXPECT_EQ(convert(), (Outcome{-2, kConverted + lut_step_failed(0), grid_missing(0)}));
}

TEST_F(RectifyLutSections, NextConversionReplacesSectionsThatNobodyTook) {
  give_grid(1, counting_grid(16, 8, 1));
  EXPECT_EQ(convert(), prints_out(0, kConverted));
  const LutGrid grid = counting_grid(8, 4, 0x700);
  give_grid(1, grid);
  EXPECT_EQ(convert(), prints_out(0, kConverted));
  EXPECT_EQ(taken_sections(4),
            (Copies{{kC, 32, dx_words(grid)}, {kD, 32, dy_words(grid)}, {0, 32, Words(32)}, {0, 32, Words(32)}}));
}

TEST_F(RectifyLutSections, ConversionWithoutAnyGridPreparesNothing) {
  const RectifyIntrinsic rectified{512, 512, 320, 240, 640, 480};
  const float rotation[]{1, 0, 0, 0, 1, 0, 0, 0, 1};
  const float intrinsic[]{512, 512, 0, 0};
  const float distortion[8]{};
  EXPECT_EQ(set_rectify_params_brown(1, &rectified, distortion, rotation, intrinsic), 0);
  for (const std::uint32_t mode : {0U, 1U}) {
    set_cam_mode(mode);
    EXPECT_EQ(convert(), silent_success());
    EXPECT_EQ(taken_sections(4), Copies(4, nothing(0)));
  }
}

// --- handing out

TEST_F(RectifyLutSections, SectionsThatWereNeverPreparedHaveNothing) {
  EXPECT_EQ(taken_sections(4), Copies(4, nothing(0)));
  give_grid(1, counting_grid(8, 4, 1));
  EXPECT_EQ(taken_sections(2), Copies(2, nothing(32)));
  EXPECT_EQ(taken_sections(4), Copies(4, nothing(32)));
  LutSection without_arrays[4]{};
  EXPECT_EQ(outcome_of([&] { return de_copy_rectify_lut_register_section(without_arrays, 4); }), silent_success());
}

TEST_F(RectifyLutSections, SectionsAreHandedOutOnce) {
  give_grid(1, counting_grid(8, 4, 1));
  EXPECT_EQ(convert().code, 0);
  EXPECT_EQ(taken_sections(4)[0].count, 32U);
  EXPECT_EQ(taken_sections(4), Copies(4, nothing(32)));
  for (const HeldSection& section : engine().rectify_lut.sections)
    EXPECT_FALSE(section.room.held());
}

TEST_F(RectifyLutSections, TwoSectionsLeaveTheOtherTwo) {
  set_cam_mode(1);
  const LutGrid grids[] = {counting_grid(8, 4, 0x1000), counting_grid(8, 4, 0x2000)};
  give_grid(0, grids[0]);
  give_grid(1, grids[1]);
  EXPECT_EQ(convert().code, 0);
  EXPECT_EQ(taken_sections(2), (Copies{{kA, 32, dx_words(grids[1])}, {kB, 32, dy_words(grids[1])}}));
  EXPECT_EQ(taken_sections(4),
            (Copies{nothing(32), nothing(32), {kC, 32, dx_words(grids[0])}, {kD, 32, dy_words(grids[0])}}));
}

TEST_F(RectifyLutSections, OtherNumbersThan2And4AreRefused) {
  const LutGrid grid = counting_grid(8, 4, 1);
  give_grid(1, grid);
  EXPECT_EQ(convert().code, 0);
  for (const int number : {0, 1, 3, 5, 6, 8, 130, 255}) {
    Words words(32, kUnwritten);
    std::vector<LutSection> out(8, {kUnwritten, kUnwritten, words.data()});
    const auto copy = [&] {
      return de_copy_rectify_lut_register_section(out.data(), static_cast<std::uint8_t>(number));
    };
    EXPECT_EQ(outcome_of(copy), prints_err(-2, kBadNumber)) << number;
    EXPECT_EQ(words, Words(32, kUnwritten));
    for (const LutSection& section : out) {
      EXPECT_EQ(section.address, kUnwritten);
      EXPECT_EQ(section.count, kUnwritten);
    }
  }
  EXPECT_EQ(taken_sections(2), (Copies{{kC, 32, dx_words(grid)}, {kD, 32, dy_words(grid)}}));
}

TEST_F(RectifyLutSections, NullArraysAreRefusedAndNothingIsHandedOut) {
  set_cam_mode(1);
  const LutGrid grid = counting_grid(8, 4, 1);
  give_grid(0, grid);
  give_grid(1, grid);
  EXPECT_EQ(convert().code, 0);
  EXPECT_EQ(outcome_of([] { return de_copy_rectify_lut_register_section(nullptr, 2); }), silent(-2));
  EXPECT_EQ(outcome_of([] { return de_copy_rectify_lut_register_section(nullptr, 4); }), silent(-2));
  for (std::size_t missing = 0; missing < 4; ++missing) {
    Words words(32, kUnwritten);
    std::vector<LutSection> out(4, {kUnwritten, kUnwritten, words.data()});
    out[missing].data = nullptr;
    EXPECT_EQ(outcome_of([&] { return de_copy_rectify_lut_register_section(out.data(), 4); }), silent(-2)) << missing;
    EXPECT_EQ(words, Words(32, kUnwritten));
    EXPECT_EQ(out[0].address, kUnwritten);
    EXPECT_EQ(out[3].count, kUnwritten);
  }
  EXPECT_EQ(
      taken_sections(4),
      (Copies{{kA, 32, dx_words(grid)}, {kB, 32, dy_words(grid)}, {kC, 32, dx_words(grid)}, {kD, 32, dy_words(grid)}}));
}

// As many words as 0xFFFFFFFC in either direction have can be held nowhere.
TEST_F(RectifyLutSections, SectionsThatDoNotFitInMemoryAreNotPrepared) {
  for (const std::uint32_t mode : {0U, 1U}) {
    reset_engine();
    set_cam_mode(mode);
    const LutGrid grid = counting_grid(8, 4, 1);
    give_grid(1, grid);
    EXPECT_EQ(convert().code, 0);
    EXPECT_EQ(set_map(1, lut_info(0xFFFFFFFC, 0xFFFFFFFC)), 0);
    EXPECT_EQ(convert(), prints_out(-2, lut_step_failed(1)));
    EXPECT_EQ(taken_sections(4), Copies(4, nothing(16)));
    give_grid(1, grid);
    EXPECT_EQ(convert(), prints_out(0, kConverted));
    EXPECT_EQ(taken_sections(2)[0].words, dx_words(grid));
  }
}

}  // namespace
}  // namespace vq3900::test
