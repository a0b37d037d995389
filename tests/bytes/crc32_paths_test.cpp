#include "bytes/crc32_paths.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>

#include "bytes/crc32_fold.h"
#include "support/code_paths.h"

namespace vq3900::test {
namespace {

TEST(Crc32Paths, PortableOneStandsLastAndRunsEverywhere) {
  expect_portable_last(crc32_paths());
}

// Every processor with carry-less multiplication of 512 bits has that of 128 bits.
TEST(Crc32Paths, FasterOnesTakeMoreOfTheProcessor) {
  bool supported = false;
  for (const auto& path : crc32_paths()) {
    EXPECT_TRUE(path.supported() || !supported) << path.name;
    supported = path.supported();
  }
}

// --- the constants that folding takes from the polynomial

TEST(Crc32Fold, LowPowersOfXAreTheirOwnRemainders) {
  EXPECT_EQ(power_of_x(0), 0x8000000000000000U);
  EXPECT_EQ(power_of_x(1), 0x4000000000000000U);
  EXPECT_EQ(power_of_x(31), 0x0000000100000000U);
  EXPECT_EQ(power_of_x(32), 0xEDB8832000000000U);
  EXPECT_EQ(power_of_x(33), 0x76DC419000000000U);
}

// As published, there with a zero bit behind: 1 54442BD4, 1 C6E41596, 1 751997D0, 0 CCAA009E, 1 63CD6124.
TEST(Crc32Fold, HighPowersOfXAreThePublishedOnes) {
  EXPECT_EQ(power_of_x(4 * 128 + 32) >> 31, 0x154442BD4U);
  EXPECT_EQ(power_of_x(4 * 128 - 32) >> 31, 0x1C6E41596U);
  EXPECT_EQ(power_of_x(128 + 32) >> 31, 0x1751997D0U);
  EXPECT_EQ(power_of_x(128 - 32) >> 31, 0x0CCAA009EU);
  EXPECT_EQ(power_of_x(64) >> 31, 0x163CD6124U);
}

TEST(Crc32Fold, DivisorAndQuotientAreThePublishedOnes) {
  EXPECT_EQ(crc32_divisor(), 0x1DB710641U);
  EXPECT_EQ(crc32_quotient(), 0x1F7011641U);
}

TEST(Crc32Fold, FactorsMoveTheLowHalf64BitsMoreThanTheHighOne) {
  constexpr auto kFolds = folds_up_to<64>();
  for (std::size_t bytes = 1; bytes <= 64; ++bytes) {
    EXPECT_EQ(kFolds[bytes].low, power_of_x(8 * bytes + 63)) << bytes;
    EXPECT_EQ(kFolds[bytes].high, power_of_x(8 * bytes - 1)) << bytes;
  }
}

}  // namespace
}  // namespace vq3900::test
