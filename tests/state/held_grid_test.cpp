#include "state/held_grid.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <vector>

namespace vq3900::test {
namespace {

// Arrays that count their ends.
struct Counted {
  explicit Counted(int& count) : ends(count) {}
  Counted(const Counted&) = delete;
  Counted& operator=(const Counted&) = delete;
  ~Counted() { ++ends; }

  int& ends;
  double dx[2] = {1, 2};
  double dy[2] = {3, 4};
};

void keep(HeldGrid& grid, int& ends) {
  auto owner = std::make_unique<Counted>(ends);
  const double* const dx = owner->dx;
  const double* const dy = owner->dy;
  grid.keep(dx, dy, grid_owner(std::move(owner)));
  EXPECT_EQ(grid.dx(), dx);
  EXPECT_EQ(grid.dy(), dy);
}

TEST(HeldGrid, HoldsNothingAtFirstAndReleasesThatOften) {
  HeldGrid grid;
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(grid.dx(), nullptr);
    EXPECT_EQ(grid.dy(), nullptr);
    grid.release();
  }
}

TEST(HeldGrid, HoldsCopies) {
  HeldGrid grid;
  std::vector<double> dx{1, 2};
  const std::vector<double> dy{3, 4};
  ASSERT_TRUE(grid.assign(dx.data(), dy.data(), 2));
  dx[1] = 5;
  EXPECT_EQ(std::vector<double>(grid.dx(), grid.dx() + 2), (std::vector<double>{1, 2}));
  EXPECT_EQ(std::vector<double>(grid.dy(), grid.dy() + 2), dy);
  grid.release();
  EXPECT_EQ(grid.dx(), nullptr);
  EXPECT_EQ(grid.dy(), nullptr);
}

TEST(HeldGrid, ArrayThatIsNotGivenIsNull) {
  HeldGrid grid;
  const double sample = 1;
  ASSERT_TRUE(grid.assign(&sample, nullptr, 1));
  EXPECT_NE(grid.dx(), nullptr);
  EXPECT_EQ(grid.dy(), nullptr);
  ASSERT_TRUE(grid.assign(nullptr, &sample, 1));
  EXPECT_EQ(grid.dx(), nullptr);
  EXPECT_NE(grid.dy(), nullptr);
  grid.release();
}

TEST(HeldGrid, ArraysWithoutSamplesAreHeldAllTheSame) {
  HeldGrid grid;
  const double sample = 1;
  ASSERT_TRUE(grid.assign(&sample, &sample, 0));
  EXPECT_NE(grid.dx(), nullptr);
  EXPECT_NE(grid.dy(), nullptr);
  grid.release();
}

TEST(HeldGrid, CopiesThatDoNotFitInMemoryLeaveWhatIsHeld) {
  int ends = 0;
  HeldGrid grid;
  keep(grid, ends);
  const double sample = 1;
  EXPECT_FALSE(grid.assign(&sample, nullptr, std::numeric_limits<std::size_t>::max()));
  EXPECT_FALSE(grid.assign(nullptr, &sample, std::numeric_limits<std::size_t>::max() / 8));
  EXPECT_EQ(grid.dy()[1], 4);
  EXPECT_EQ(ends, 0);
  grid.release();
}

TEST(HeldGrid, CopiesOfKeptArraysEndTheirOwner) {
  int ends = 0;
  HeldGrid grid;
  keep(grid, ends);
  EXPECT_TRUE(grid.kept());
  ASSERT_TRUE(grid.assign(grid.dx(), grid.dy(), 2));
  EXPECT_FALSE(grid.kept());
  EXPECT_EQ(ends, 1);
  EXPECT_EQ(grid.dx()[1], 2);
  EXPECT_EQ(grid.dy()[0], 3);
  grid.release();
}

// Arrays that nobody owns are not deleted.
TEST(HeldGrid, KeepsArraysWithoutAnOwnerToo) {
  HeldGrid grid;
  const double samples[1] = {1};
  grid.keep(samples, samples, grid_owner(std::unique_ptr<Counted>()));
  EXPECT_TRUE(grid.kept());
  grid.release();
  EXPECT_FALSE(grid.kept());
}

TEST(HeldGrid, OwnerGoesWithItsArrays) {
  int ends = 0;
  HeldGrid grid;
  keep(grid, ends);
  EXPECT_EQ(ends, 0);
  keep(grid, ends);
  EXPECT_EQ(ends, 1);
  const double sample = 1;
  ASSERT_TRUE(grid.assign(&sample, &sample, 1));
  EXPECT_EQ(ends, 2);
  keep(grid, ends);
  grid.release();
  EXPECT_EQ(ends, 3);
  EXPECT_EQ(grid.dx(), nullptr);
  grid.release();
  EXPECT_EQ(ends, 3);
}

}  // namespace
}  // namespace vq3900::test
