#include "modules/lut_encoding.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "modules/fixed_point.h"
#include "support/capture.h"
#include "support/code_paths.h"
#include "support/lut_grids.h"
#include "support/numbers.h"

namespace vq3900::test {
namespace {

constexpr double kDoubleNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kDoubleInfinity = std::numeric_limits<double>::infinity();
constexpr double kSmallest = std::numeric_limits<double>::denorm_min();
constexpr double kLargest = std::numeric_limits<double>::max();

void ignore(const FixedOverflow& /*overflow*/) {}

// The encoder of single fields, which is the rule.
std::uint32_t encoded_alone(double value) {
  return encode_fixed(value, {24, 24, "lut_dx"}, ignore);
}

// The displacement of which this is the value times 2^24.
double of_scaled(double scaled) {
  return std::ldexp(scaled, -24);
}

struct ValueCase {
  const char* name;
  double scaled;  // the displacement times 2^24
  std::uint32_t word;
};

// Worked out by hand: halves go away from zero, negative ones are the two's complement.
const ValueCase kFields[] = {
    {"Zero", 0.0, 0},
    {"NegativeZero", -0.0, 0},
    {"One", 1.0, 1},
    {"MinusOne", -1.0, 0xFFFFFF},
    {"JustBelowHalf", 0.49999999999999994, 0},
    {"Half", 0.5, 1},
    {"MinusHalf", -0.5, 0xFFFFFF},
    {"JustAboveMinusHalf", -0.49999999999999994, 0},
    {"OneAndAHalf", 1.5, 2},
    {"TwoAndAHalf", 2.5, 3},
    {"MinusTwoAndAHalf", -2.5, 0xFFFFFD},
    {"JustBelowTwoAndAHalf", 2.4999999999999996, 2},
    {"LargestPositiveNumberOf24Bits", 8388607.0, 0x7FFFFF},
    {"OneBeyondIt", 8388608.0, 0x800000},
    {"MostNegativeNumberOf24Bits", -8388608.0, 0x800000},
    {"OneBeyondThat", -8388609.0, 0x7FFFFF},
    {"LargestField", 16777215.0, 0xFFFFFF},
    {"RoundsDownToTheLargestField", 16777215.499999996, 0xFFFFFF},
    {"LowestThatWraps", -16777215.0, 1},
    {"WrapsToZero", -16777216.0, 0},
    {"RoundsUpToThat", -16777216.499999996, 0},
};

const ValueCase kOverflows[] = {
    {"RoundsUpBeyondTheLargestField", 16777215.5, 0},
    {"BeyondTheLargestField", 16777216.0, 0},
    {"RoundsDownBeyondTheLowest", -16777216.5, 0},
    {"BeyondTheLowest", -16777217.0, 0},
    {"TwiceTheRange", 33554432.0, 0},
    {"MinusTwiceTheRange", -33554432.0, 0},
    {"JustBelow31Bits", 2147483647.0, 0},
    {"31Bits", 2147483648.0, 0},
    {"Minus31Bits", -2147483648.0, 0},
    {"32Bits", 4294967296.0, 0},
    {"32BitsAndASmallField", 4294967296.0 + 5, 0},
    {"Minus32Bits", -4294967296.0, 0},
    {"63Bits", 9223372036854775808.0, 0},
    {"64Bits", 18446744073709551616.0, 0},
    {"Largest", kLargest, 0},
    {"Lowest", -kLargest, 0},
    {"Infinity", kDoubleInfinity, 0},
    {"MinusInfinity", -kDoubleInfinity, 0},
    {"NotANumber", kDoubleNan, 0},
};

class EncodeTiles : public CodePathTest<EncodeTilesFunction> {};

INSTANTIATE_TEST_SUITE_P(LutEncoding, EncodeTiles,
                         testing::ValuesIn(encode_tiles_paths().begin(), encode_tiles_paths().end()), kPathName);

TEST(LutEncoding, PortablePathStandsLastAndRunsEverywhere) {
  expect_portable_last(encode_tiles_paths());
}

TEST_P(EncodeTiles, EveryValueAtEveryPlaceOfATile) {
  for (const ValueCase& row : kFields) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(encoded_alone(of_scaled(row.scaled)), row.word);
    for (std::size_t place = 0; place < kLutTileWords; ++place) {
      std::vector<double> values(kLutTileWords, of_scaled(3));
      values[place] = of_scaled(row.scaled);
      Words expected(kLutTileWords, 3);
      expected[place] = row.word;
      Words words(kLutTileWords, kUnwritten);
      EXPECT_EQ(path()(values.data(), kLutTile, 1, words.data()), 1U) << place;
      EXPECT_EQ(words, expected) << place;
    }
  }
}

TEST_P(EncodeTiles, OverflowAtAnyPlaceEndsBeforeItsTile) {
  constexpr std::size_t kWidth = 12;
  for (const ValueCase& row : kOverflows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(encoded_alone(of_scaled(row.scaled)), kOverflowed);
    for (std::size_t place = 0; place < kLutTile * kWidth; ++place) {
      std::vector<double> values(kLutTile * kWidth, of_scaled(7));
      values[place] = of_scaled(row.scaled);
      const std::size_t tile = place % kWidth / kLutTile;
      Words expected(kLutTile * kWidth, kUnwritten);
      std::fill_n(expected.begin(), tile * kLutTileWords, 7U);
      Words words(kLutTile * kWidth, kUnwritten);
      EXPECT_EQ(path()(values.data(), kWidth, kWidth / kLutTile, words.data()), tile) << place;
      EXPECT_EQ(words, expected) << place;
    }
  }
}

// Any bits at all, and numbers around the halves and the ends of the range.
double random_value(Random& random) {
  const std::uint64_t bits = (std::uint64_t{random.word()} << 32) | random.word();
  switch (random.word() % 4) {
    case 0:
      return std::bit_cast<double>(bits);
    case 1: {
      const double half = std::ldexp(static_cast<double>(static_cast<std::int32_t>(random.word()) >> 7), -1);
      return of_scaled(random.word() % 2 == 0 ? half : std::nextafter(half, random.word() % 2 == 0 ? -1e9 : 1e9));
    }
    case 2:
      return of_scaled(static_cast<double>(random.word() % 8) - 4) * (random.word() % 2 == 0 ? 1 : kSmallest);
    default:
      return std::ldexp(static_cast<double>(static_cast<std::int64_t>(bits)), -64);
  }
}

TEST_P(EncodeTiles, AgreesWithTheEncoderOfSingleFieldsForRandomValues) {
  constexpr std::uint32_t kSeed = 41;
  Random random(kSeed);
  for (int round = 0; round < 20'000; ++round) {
    std::vector<double> values(kLutTileWords, 0.25);
    for (double& value : values) {
      if (random.word() % 4 == 0) value = random_value(random);
    }
    Words expected;
    for (const double value : values)
      expected.push_back(encoded_alone(value));
    const bool fits = std::ranges::find(expected, kOverflowed) == expected.end();
    Words words(kLutTileWords, kUnwritten);
    ASSERT_EQ(path()(values.data(), kLutTile, 1, words.data()), fits ? 1U : 0U) << "seed " << kSeed << ", " << round;
    ASSERT_EQ(words, fits ? expected : Words(kLutTileWords, kUnwritten)) << "seed " << kSeed << ", round " << round;
  }
}

TEST_P(EncodeTiles, RowsOfAWiderGridInTileOrder) {
  constexpr std::size_t kStride = 21;
  for (std::size_t tiles = 0; tiles <= 5; ++tiles) {
    std::vector<double> values(kLutTile * kStride, kDoubleNan);  // beside the tiles
    for (std::size_t row = 0; row < kLutTile; ++row) {
      for (std::size_t column = 0; column < tiles * kLutTile; ++column)
        values[row * kStride + column] = displacement(static_cast<std::uint32_t>(100 * row + column));
    }
    Words words(tiles * kLutTileWords + 1, kUnwritten);
    EXPECT_EQ(path()(values.data(), kStride, tiles, words.data()), tiles);
    for (std::size_t i = 0; i < tiles * kLutTileWords; ++i) {
      const std::size_t in_tile = i % kLutTileWords;
      EXPECT_EQ(words[i], 100 * (in_tile / 4) + i / kLutTileWords * 4 + in_tile % 4) << i;
    }
    EXPECT_EQ(words.back(), kUnwritten);
  }
}

TEST_P(EncodeTiles, TouchesNothingBesideTheArrays) {
  using Values = FencedArray<double>;
  using Fields = FencedArray<std::uint32_t>;
  for (const bool at_end : {false, true}) {
    for (std::size_t tiles = 1; tiles <= 5; ++tiles) {
      const std::size_t count = tiles * kLutTileWords;
      Values values(count, at_end ? Values::Side::kEnd : Values::Side::kStart);
      Fields words(count, at_end ? Fields::Side::kEnd : Fields::Side::kStart);
      EXPECT_EQ(path()(values.data(), tiles * kLutTile, tiles, words.data()), tiles);
    }
  }
}

// --- whole grids

// The loop of single encodings in the device's order, up to the overflow.
bool encode_one_by_one(const std::vector<double>& grid, LutGridSize size, Words& words) {
  std::size_t next = 0;
  for (std::size_t y = 0; y < size.height; y += 4) {
    for (std::size_t x = 0; x < size.width; x += 4) {
      for (std::size_t i = 0; i < 16; ++i) {
        const std::uint32_t word = de_float_to_fixed(grid[(y + i / 4) * size.width + x + i % 4], 24, 24, "lut_dy");
        if (word == kOverflowed) return false;
        words[next++] = word;
      }
    }
  }
  return true;
}

OverflowHandler printing() {
  return [](const FixedOverflow& overflow) { de_float_to_fixed(overflow.value, 24, 24, overflow.name); };
}

TEST(LutEncoding, WholeGridsHaveTheWordsTheOverflowAndItsMessageOfSingleEncodings) {
  constexpr std::uint32_t kSeed = 42;
  Random random(kSeed);
  for (int round = 0; round < 300; ++round) {
    SCOPED_TRACE("seed " + std::to_string(kSeed) + ", round " + std::to_string(round));
    const LutGridSize size{std::size_t{random.word() % 10} * 4, std::size_t{random.word() % 6} * 4};
    std::vector<double> grid(size.width * size.height);
    for (double& value : grid)
      value = static_cast<double>(random.between(-0.5F, 0.5F));
    for (auto odd = random.word() % 3; odd > 0 && !grid.empty(); --odd)
      grid[random.word() % grid.size()] = random_value(random);

    Words expected(grid.size(), kUnwritten);
    Words words(grid.size(), kUnwritten);
    const Outcome by_one = outcome_of([&] { return encode_one_by_one(grid, size, expected) ? 0 : 1; });
    std::size_t encoded = 0;
    const Outcome whole = outcome_of([&] {
      encoded = encode_tiles(grid.data(), size, "lut_dy", words.data(), printing());
      return encoded == grid.size() ? 0 : 1;
    });
    ASSERT_EQ(whole, by_one);
    ASSERT_EQ(words, expected);
    ASSERT_EQ(std::ranges::find(expected, kUnwritten) - expected.begin(), static_cast<std::ptrdiff_t>(encoded));
  }
}

}  // namespace
}  // namespace vq3900::test
