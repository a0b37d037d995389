#include "modules/fixed_point.h"

#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>

#include "support/capture.h"

namespace vq3900::test {
namespace {

TEST(RegisterField, GetTakesMaskedBitsShiftedDown) {
  EXPECT_EQ(de_get_reg_field(0x0C1800C0, 0x80000000), 0U);
  EXPECT_EQ(de_get_reg_field(0xF0, 0x30), 3U);
  EXPECT_EQ(de_get_reg_field(0x80000000, 0x80000000), 1U);
  EXPECT_EQ(de_get_reg_field(0xDEADBEEF, 0xFFFFFFFF), 0xDEADBEEFU);
}

TEST(RegisterField, SetReplacesMaskedBitsAndKeepsTheOthers) {
  EXPECT_EQ(de_set_reg_field(1, 0x0C1800C0, 0x10000), 0x0C1900C0U);
  EXPECT_EQ(de_set_reg_field(7, 0, 0x30), 0x30U);
  EXPECT_EQ(de_set_reg_field(0, 0xFFFFFFFF, 0x00FFF000), 0xFF000FFFU);
}

TEST(RegisterField, EmptyMaskReadsZeroAndWritesNothing) {
  EXPECT_EQ(de_get_reg_field(0xFFFFFFFF, 0), 0U);
  EXPECT_EQ(de_set_reg_field(0xFFFFFFFF, 0x12345678, 0), 0x12345678U);
}

struct EncodeCase {
  const char* name;
  double value;
  std::uint32_t width;
  std::int32_t frac_bits;
  std::uint32_t expected;
};

class EncodeWithoutMessage : public testing::TestWithParam<EncodeCase> {};

TEST_P(EncodeWithoutMessage, GivesTheField) {
  const EncodeCase& c = GetParam();
  EXPECT_EQ(outcome_of([&] { return de_float_to_fixed(c.value, c.width, c.frac_bits, "x"); }), silent(c.expected));
}

INSTANTIATE_TEST_SUITE_P(
    FixedPoint, EncodeWithoutMessage,
    testing::Values(EncodeCase{"MinusEight", -8.0, 8, 0, 0xF8}, EncodeCase{"SmallNegativeRoundsToZero", -0.4, 8, 0, 0},
                    EncodeCase{"MinusPointSixRoundsToMinusOne", -0.6, 8, 0, 0xFF},
                    EncodeCase{"NoSignednessCheck", 255.0, 8, 0, 255}, EncodeCase{"HalfGoesAwayFromZero", 2.5, 8, 0, 3},
                    EncodeCase{"NegativeHalfGoesAwayFromZero", -2.5, 8, 0, 0xFD},
                    EncodeCase{"NumberBeforeOneHalfGoesToZero", 0.49999999999999994, 8, 0, 0},
                    EncodeCase{"NumberBeforeMinusOneHalfGoesToZero", -0.49999999999999994, 8, 0, 0},
                    EncodeCase{"NumberBeforeTwoAndAHalfGoesDown", 2.4999999999999996, 8, 0, 2},
                    EncodeCase{"NegativeZero", -0.0, 8, 0, 0}, EncodeCase{"LowestNegativeWraps", -256.0, 8, 0, 0},
                    EncodeCase{"BelowOneRoundsUpToOne", 0.5, 1, 0, 1},
                    EncodeCase{"ReferencePlane", 1.0 / 1000.0, 32, 38, 0x10624DD3},
                    EncodeCase{"AllOnesIsLegitimate", 4294967295.0, 32, 0, 0xFFFFFFFF},
                    EncodeCase{"WidthCountsModulo64", 3.0, 66, 0, 3},
                    EncodeCase{"FractionCountsModulo64", 3.0, 8, 64, 3},
                    EncodeCase{"DenormalIsZero", 5e-324, 32, 43, 0}),
    [](const auto& test) { return test.param.name; });

TEST(FixedPoint, OverflowPrintsTwoLinesAndGivesAllOnes) {
  EXPECT_EQ(outcome_of([] { return de_float_to_fixed(1.0, 8, 8, "x"); }),
            prints_out(0xFFFFFFFF,
                       "current lut value: 1.00000000000000000000; dingdianhua value: 256.00000000000000000000; m_fp: "
                       "256; return value: 0; max value: 255 \n"
                       "error code 01: value overflow in x \n"));
}

TEST(FixedPoint, NegativeOverflowPrintsTheWrappedNumber) {
  EXPECT_EQ(outcome_of([] { return de_float_to_fixed(-257.0, 8, 0, "min_disp"); }),
            prints_out(0xFFFFFFFF,
                       "current lut value: -257.00000000000000000000; dingdianhua value: -257.00000000000000000000; "
                       "m_fp: 18446744073709551615; return value: 255; max value: 255 \n"
                       "error code 01: value overflow in min_disp \n"));
}

TEST(FixedPoint, InfinitiesAndNanOverflow) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  for (const auto& [value, text, rounded] :
       {std::tuple{kInfinity, "inf", "18446744073709551615"},
        std::tuple{-kInfinity, "-inf", "9223372036854775808"},
        std::tuple{std::numeric_limits<double>::quiet_NaN(), "nan", "9223372036854775808"}}) {
    const Outcome outcome = outcome_of([v = value] { return de_float_to_fixed(v, 8, 0, "x"); });
    EXPECT_EQ(outcome.code, 0xFFFFFFFF);
    EXPECT_NE(outcome.out.find(std::string("current lut value: ") + text + "; dingdianhua value: " + text +
                               "; m_fp: " + rounded + ";"),
              std::string::npos)
        << outcome.out;
    EXPECT_TRUE(outcome.out.ends_with("error code 01: value overflow in x \n"));
    EXPECT_EQ(outcome.err, "");
  }
}

TEST(FixedPoint, HugeNumbersOverflowInsteadOfWrapping) {
  for (const double value : {1e18, 1e19, 1e20, 1e300, -1e18, -1e19, -1e20, -1e300}) {
    const Outcome outcome = outcome_of([&] { return de_float_to_fixed(value, 32, 0, "x"); });
    EXPECT_EQ(outcome.code, 0xFFFFFFFF) << value;
    EXPECT_NE(outcome.out, "") << value;
  }
}

TEST(FixedPoint, OverflowNamesANullField) {
  const Outcome outcome = outcome_of([] { return de_float_to_fixed(256, 8, 0, nullptr); });
  EXPECT_TRUE(outcome.out.ends_with("error code 01: value overflow in (null) \n"));
}

TEST(FixedPoint, SignedDecodeTakesTheSignFromTheTopBitOfTheWidth) {
  double value = 0;
  de_fixed_to_float(0x80, 8, 3, &value);
  EXPECT_EQ(value, -128.0 / 8);
  de_fixed_to_float(0x7F, 8, 3, &value);
  EXPECT_EQ(value, 127.0 / 8);
  de_fixed_to_float(0xF8, 8, 0, &value);
  EXPECT_EQ(value, -8.0);
  de_fixed_to_float(0x80000000, 32, 38, &value);
  EXPECT_EQ(value, -std::ldexp(1.0, 31 - 38));
  de_fixed_to_float(0x10624DD3, 32, 38, &value);
  EXPECT_EQ(value, 274877907.0 / std::ldexp(1.0, 38));
}

TEST(FixedPoint, SignedDecodeKeepsBitsAboveAClearSignBit) {
  double value = 0;
  de_fixed_to_float(0x1F0F, 6, 0, &value);
  EXPECT_EQ(value, 0x1F0F);
  de_fixed_to_float(0x1F2F, 6, 0, &value);  // bit 5 set: only the low 5 bits count
  EXPECT_EQ(value, -17.0);
}

TEST(FixedPoint, UnsignedDecodeDividesTheWholeWord) {
  double value = 0;
  de_fixed_to_float_sign(0x80, false, 8, 3, &value);
  EXPECT_EQ(value, 16.0);
  de_fixed_to_float_sign(0x80, true, 8, 3, &value);
  EXPECT_EQ(value, -16.0);
}

TEST(FixedPoint, NullOutputIsIgnored) {
  de_fixed_to_float(1, 8, 0, nullptr);
  de_fixed_to_float_sign(1, true, 8, 0, nullptr);
}

TEST(FixedPoint, EveryFieldOfEveryFormatOfUpTo12BitsComesBack) {
  for (std::uint32_t width = 1; width <= 12; ++width) {
    for (std::int32_t frac_bits : {0, 1, 10, 24}) {
      for (std::uint32_t raw = 0; raw < (1U << width); ++raw) {
        double value = 0;
        de_fixed_to_float(raw, width, frac_bits, &value);
        EXPECT_EQ(de_float_to_fixed(value, width, frac_bits, "x"), raw) << "width " << width;
      }
    }
  }
}

TEST(ToInteger, TruncatesAndGivesZeroForWhatHasNoInteger) {
  EXPECT_EQ(to_integer(-3.9), -3);
  EXPECT_EQ(to_integer(9.0e18), 9000000000000000000);
  EXPECT_EQ(to_integer(-9223372036854775808.0), std::numeric_limits<std::int64_t>::min());
  EXPECT_EQ(to_integer(9223372036854775808.0), 0);
  EXPECT_EQ(to_integer(std::numeric_limits<double>::infinity()), 0);
  EXPECT_EQ(to_integer(std::nan("")), 0);
}

}  // namespace
}  // namespace vq3900::test
