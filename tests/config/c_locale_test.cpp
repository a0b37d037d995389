#include "config/c_locale.h"

#include <errno.h>
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace vq3900::test {
namespace {

constexpr std::int64_t kInt64Min = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kInt64Max = std::numeric_limits<std::int64_t>::max();
constexpr std::uint64_t kUint64Max = std::numeric_limits<std::uint64_t>::max();

// --- what the C library says

template <typename Number>
Converted<Number> by_c_library(const std::string& text) {
  char* end = nullptr;
  errno = 0;
  Converted<Number> result;
  if constexpr (std::is_same_v<Number, float>) result.value = std::strtof(text.c_str(), &end);
  if constexpr (std::is_same_v<Number, double>) result.value = std::strtod(text.c_str(), &end);
  if constexpr (std::is_same_v<Number, std::int64_t>) result.value = std::strtoll(text.c_str(), &end, 0);
  if constexpr (std::is_same_v<Number, std::uint64_t>) result.value = std::strtoull(text.c_str(), &end, 0);
  result.length = static_cast<std::size_t>(end - text.c_str());
  result.out_of_range = errno == ERANGE;
  if constexpr (std::is_floating_point_v<Number>) result.out_of_range = errno == ERANGE && std::isinf(result.value);
  return result;
}

template <typename Number>
Converted<Number> by_library(std::string_view text) {
  if constexpr (std::is_same_v<Number, float>) return to_float(text);
  if constexpr (std::is_same_v<Number, double>) return to_double(text);
  if constexpr (std::is_same_v<Number, std::int64_t>) return to_int64(text);
  if constexpr (std::is_same_v<Number, std::uint64_t>) return to_uint64(text);
}

// Bit for bit, save that any two NaNs of one sign are alike.
template <typename Number>
bool same_value(Number a, Number b) {
  if constexpr (std::is_floating_point_v<Number>) {
    if (std::isnan(a) || std::isnan(b)) return std::isnan(a) && std::isnan(b) && std::signbit(a) == std::signbit(b);
    return a == b && std::signbit(a) == std::signbit(b);
  } else {
    return a == b;
  }
}

template <typename Number>
testing::AssertionResult same(const Converted<Number>& actual, const Converted<Number>& expected) {
  const bool equal = same_value(actual.value, expected.value) && actual.length == expected.length &&
                     actual.out_of_range == expected.out_of_range;
  if (equal) return testing::AssertionSuccess();
  const auto show = [](const Converted<Number>& c) {
    char digits[64];
    if constexpr (std::is_floating_point_v<Number>) {
      std::snprintf(digits, sizeof digits, "%a", static_cast<double>(c.value));
    } else {
      std::snprintf(digits, sizeof digits, "%s", std::to_string(c.value).c_str());
    }
    return std::string(digits) + ", length " + std::to_string(c.length) + (c.out_of_range ? ", out of range" : "");
  };
  return testing::AssertionFailure() << "is " << show(actual) << "; should be " << show(expected);
}

template <typename Number>
testing::AssertionResult agrees(const std::string& text) {
  return same(by_library<Number>(text), by_c_library<Number>(text));
}

// One row: a text and what becomes of it.
template <typename Number>
struct Row {
  const char* text;
  Number value;
  std::size_t length;
  bool out_of_range = false;
};

template <typename Number>
void check_rows(const std::vector<Row<Number>>& rows) {
  for (const Row<Number>& row : rows) {
    SCOPED_TRACE(testing::PrintToString(row.text));
    EXPECT_TRUE(same(by_library<Number>(row.text), Converted<Number>{row.value, row.length, row.out_of_range}));
#if defined(__GLIBC__)
    EXPECT_TRUE(agrees<Number>(row.text)) << "the C library differs";
#endif
  }
}

// --- characters

TEST(CLocale, WhiteSpaceIsTheSixCharactersOfTheCLocale) {
  const std::string spaces = " \t\n\v\f\r";
  for (int code = 0; code < 256; ++code) {
    const char c = static_cast<char>(code);
    EXPECT_EQ(is_space(c), spaces.find(c) != std::string::npos) << "character " << code;
  }
}

TEST(CLocale, UpperCasingChangesOnlyAsciiLetters) {
  for (int code = 0; code < 256; ++code) {
    const bool lower = code >= 'a' && code <= 'z';
    EXPECT_EQ(to_upper(static_cast<char>(code)), static_cast<char>(lower ? code - 32 : code)) << "character " << code;
  }
}

TEST(CLocale, TrimTakesWhiteSpaceFromBothEndsOnly) {
  EXPECT_EQ(trim(" \t\n\v\f\ra b\r\f\v\n\t "), "a b");
  EXPECT_EQ(trim(" \r\n"), "");
  EXPECT_EQ(trim(""), "");
  EXPECT_EQ(trim("\xC2\xA0x"), "\xC2\xA0x");          // a no-break space is none
  EXPECT_EQ(trim("\xEF\xBB\xBFx"), "\xEF\xBB\xBFx");  // nor is a byte order mark
  EXPECT_EQ(trim(std::string_view("\0x\0", 3)), std::string_view("\0x\0", 3));
}

// --- integers

TEST(ToInt64, TakesTheBaseFromThePrefixAndStopsAtTheFirstOtherCharacter) {
  check_rows<std::int64_t>({{"0", 0, 1},      {"42", 42, 2},   {"+42", 42, 3},         {"-42", -42, 3}, {"010", 8, 3},
                            {"0377", 255, 4}, {"-010", -8, 4}, {"08", 0, 1},           {"019", 1, 2},   {"0x10", 16, 4},
                            {"0XfF", 255, 4}, {"-0x1", -1, 4}, {"0x", 0, 1},           {"0xg", 0, 1},   {"0x 1", 0, 1},
                            {"0b1", 0, 1},    {"0o7", 0, 1},   {" \t\n\v\f\r7", 7, 7}, {"7 ", 7, 1},    {"1x", 1, 1},
                            {"1.5", 1, 1},    {"1e3", 1, 1},   {"1_000", 1, 1},        {"1,5", 1, 1}});
}

TEST(ToInt64, SaturatesAndReadsOnToTheLastDigit) {
  check_rows<std::int64_t>({{"9223372036854775807", kInt64Max, 19},
                            {"9223372036854775808", kInt64Max, 19, true},
                            {"-9223372036854775808", kInt64Min, 20},
                            {"-9223372036854775809", kInt64Min, 20, true},
                            {"0x7fffffffffffffff", kInt64Max, 18},
                            {"0x8000000000000000", kInt64Max, 18, true},
                            {"-0x8000000000000000", kInt64Min, 19},
                            {"0777777777777777777777", kInt64Max, 22},
                            {"01000000000000000000000", kInt64Max, 23, true},
                            {"99999999999999999999999999999x", kInt64Max, 29, true},
                            {"-99999999999999999999999999999 ", kInt64Min, 30, true},
                            {"0000000000000000000000000000001", 1, 31}});
}

TEST(ToUint64, WrapsWhatHasAMinus) {
  check_rows<std::uint64_t>({{"-0", 0, 2},
                             {"-1", kUint64Max, 2},
                             {"-5", kUint64Max - 4, 2},
                             {"-18446744073709551615", 1, 21},
                             {"-18446744073709551616", kUint64Max, 21, true}});
}

TEST(ToUint64, SaturatesAtItsMaximum) {
  check_rows<std::uint64_t>({{"18446744073709551615", kUint64Max, 20},
                             {"18446744073709551616", kUint64Max, 20, true},
                             {"0xffffffffffffffff", kUint64Max, 18},
                             {"0x10000000000000000", kUint64Max, 19, true},
                             {"01777777777777777777777", kUint64Max, 23},
                             {"02000000000000000000000", kUint64Max, 23, true}});
}

TEST(ToInteger, GivesNoLengthToWhatIsNoNumber) {
  for (const char* const text : {"", " ", "-", "+", "+-1", "--1", "- 1", "x10", "abc", ".5", "{1}", "\xEF\xBB\xBF+1"}) {
    EXPECT_TRUE(same(to_int64(text), Converted<std::int64_t>{})) << text;
    EXPECT_TRUE(same(to_uint64(text), Converted<std::uint64_t>{})) << text;
  }
}

TEST(ToInteger, StopsAtANulByte) {
  EXPECT_TRUE(same(to_int64(std::string_view("12\0+3", 5)), {12, 2, false}));
  EXPECT_TRUE(same(to_uint64(std::string_view("\0+3", 3)), {}));
}

// --- real numbers

constexpr float kFloatInfinity = std::numeric_limits<float>::infinity();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

TEST(ToFloat, ReadsDecimalNumbers) {
  check_rows<float>({{"0", 0.0F, 1},
                     {"-0", -0.0F, 2},
                     {"0.0", 0.0F, 3},
                     {"1", 1.0F, 1},
                     {"+1.5", 1.5F, 4},
                     {"-1.5", -1.5F, 4},
                     {".5", 0.5F, 2},
                     {"5.", 5.0F, 2},
                     {"1e3", 1000.0F, 3},
                     {"1E-2", 0.01F, 4},
                     {" \t\n\v\f\r1", 1.0F, 7},
                     {"1 ", 1.0F, 1},
                     {"1e+", 1.0F, 1},
                     {"1e x", 1.0F, 1},
                     {"1.2.3", 1.2F, 3},
                     {"1,5", 1.0F, 1},
                     {"010", 10.0F, 3},
                     {"1f", 1.0F, 1},
                     {"0.1", 0x1.99999ap-4F, 3},
                     {"16777217", 16777216.0F, 8},           // a tie goes to even
                     {"16777217.0000001", 16777218.0F, 16},  // above the tie
                     {"16777219", 16777220.0F, 8}});
}

TEST(ToFloat, OverflowsToInfinityAndUnderflowsSilently) {
  check_rows<float>({
      {"3.40282347e38", 0x1.fffffep127F, 13},
      {"3.4028235677973366e38", 0x1.fffffep127F, 21},       // below half a step above the largest
      {"3.4028235677973367e38", kFloatInfinity, 21, true},  // above it
      {"1e39", kFloatInfinity, 4, true},
      {"-1e39", -kFloatInfinity, 5, true},
      {"1e400", kFloatInfinity, 5, true},
      {"1e99999999999999999999", kFloatInfinity, 22, true},
      {"1e-50", 0.0F, 5},
      {"-1e-50", -0.0F, 6},
      {"1e-99999999999999999999", 0.0F, 23},
      {"0e99999999999999999999", 0.0F, 22},
      {"1.17549435e-38", 0x1p-126F, 14},
      {"1e-40", 0x1.16c2p-133F, 5},
      {"1.4e-45", 0x1p-149F, 7},
      {"7e-46", 0.0F, 5},        // below half the smallest denormal
      {"7.1e-46", 0x1p-149F, 7}  // above it
  });
}

TEST(ToFloat, ReadsHexadecimalNumbers) {
  check_rows<float>({{"0x10", 16.0F, 4},
                     {"0X1P4", 16.0F, 5},
                     {"-0x1.8p1", -3.0F, 8},
                     {"0x.8", 0.5F, 4},
                     {"0x8.", 8.0F, 4},
                     {"0x1p", 1.0F, 3},
                     {"0x1p+", 1.0F, 3},
                     {"0x", 0.0F, 1},
                     {"0x.", 0.0F, 1},
                     {"0x.p1", 0.0F, 1},
                     {"0xg", 0.0F, 1},
                     {"0x1.000001p0", 1.0F, 12},            // a tie goes to even
                     {"0x1.0000011p0", 0x1.000002p0F, 13},  // above the tie
                     {"0x1p127", 0x1p127F, 7},
                     {"0x1.ffffffp127", kFloatInfinity, 14, true},
                     {"0x1p128", kFloatInfinity, 7, true},
                     {"-0x1p1000", -kFloatInfinity, 9, true},
                     {"0x1p-149", 0x1p-149F, 8},
                     {"0x1p-150", 0.0F, 8},
                     {"0x1.8p-150", 0x1p-149F, 10},
                     {"0x0p5000", 0.0F, 8},
                     {"0x1p-99999999999999999999", 0.0F, 25},
                     {"0x1p99999999999999999999", kFloatInfinity, 24, true}});
}

TEST(ToFloat, ReadsInfinitiesAndNanInAnyCase) {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  check_rows<float>({{"inf", kFloatInfinity, 3},
                     {"-INF", -kFloatInfinity, 4},
                     {"+iNfInItY", kFloatInfinity, 9},
                     {"infinit", kFloatInfinity, 3},
                     {" infx", kFloatInfinity, 4},
                     {"nan", nan, 3},
                     {"-NaN", -nan, 4},
                     {"nan()", nan, 5},
                     {"nan(_a1Z)", nan, 9},
                     {"nan(", nan, 3},
                     {"nan(1", nan, 3},
                     {"nan(-)", nan, 3},
                     {"nanx", nan, 3}});
}

TEST(ToDouble, RoundsOnceToItsOwnPrecision) {
  check_rows<double>({{"0.1", 0x1.999999999999ap-4, 3},
                      {"9007199254740993", 9007199254740992.0, 16},
                      {"9007199254740993.1", 9007199254740994.0, 18},
                      {"1.7976931348623157e308", 0x1.fffffffffffffp1023, 22},
                      {"1.7976931348623159e308", kInfinity, 22, true},
                      {"-1e309", -kInfinity, 6, true},
                      {"2.2250738585072011e-308", 0x1.ffffffffffffep-1023, 23},
                      {"4.9e-324", 0x1p-1074, 8},
                      {"2.4e-324", 0.0, 8},
                      {"1e400", kInfinity, 5, true},
                      {"1e39", 1e39, 4},
                      {"0x1.00000000000008p0", 1.0, 20},
                      {"0x1.000000000000081p0", 0x1.0000000000001p0, 21},
                      {"0x1p1024", kInfinity, 8, true},
                      {"0x1p-1075", 0.0, 9}});
}

TEST(ToReal, GivesNoLengthToWhatIsNoNumber) {
  for (const char* const text :
       {"", " ", "-", "+", ".", "-.", "e5", ".e5", "+-1", "--1", "- 1", "x1", "in", "na", "p1"}) {
    EXPECT_TRUE(same(to_float(text), Converted<float>{})) << text;
    EXPECT_TRUE(same(to_double(text), Converted<double>{})) << text;
  }
}

TEST(ToReal, StopsAtANulByte) {
  EXPECT_TRUE(same(to_float(std::string_view("1.5\0e1", 6)), {1.5F, 3, false}));
  EXPECT_TRUE(same(to_double(std::string_view("\0.5", 3)), {}));
}

TEST(ToReal, TakesAnyNumberOfDigits) {
  const std::string zeros(100000, '0');
  EXPECT_TRUE(same(to_double("0." + zeros + "1e100001"), {1.0, 100010, false}));
  EXPECT_TRUE(same(to_double("1" + zeros + "e-100000"), {1.0, 100009, false}));
  EXPECT_TRUE(same(to_float("1" + zeros), {kFloatInfinity, 100001, true}));
  EXPECT_TRUE(same(to_float("0." + zeros + "1"), {0.0F, 100003, false}));
  const std::string few(300, '0');
  EXPECT_TRUE(same(to_float("0x1" + few + "p-1000"), {kFloatInfinity, 309, true}));  // 2 to the 200
  EXPECT_TRUE(same(to_float("0x0." + few + "1p1000"), {0.0F, 310, false}));          // 2 to the -204
  EXPECT_TRUE(same(to_double("0x0." + few + "1p1000"), {0x1p-204, 310, false}));
}

// --- agreement with the C library on random texts

#if defined(__GLIBC__)

class RandomTexts {
 public:
  explicit RandomTexts(std::uint32_t seed) : random_(seed) {}

  std::string next() {
    switch (below(6)) {
      case 0:
        return characters("0123456789abcdefABCDEFxXpPeE+-. \t", 12);
      case 1:
        return characters("iInNfFaAtTyY()_09+- ", 10);
      case 2:
        return integer();
      case 3:
        return decimal();
      case 4:
        return hexadecimal();
      default:
        return tie();
    }
  }

 private:
  std::uint32_t below(std::uint32_t limit) { return static_cast<std::uint32_t>(random_() % limit); }

  std::string characters(std::string_view alphabet, std::uint32_t most) {
    std::string text;
    for (std::uint32_t i = below(most + 1); i > 0; --i)
      text += alphabet[below(static_cast<std::uint32_t>(alphabet.size()))];
    return text;
  }

  std::string sign() { return characters("+-", 1); }
  std::string junk() { return below(8) == 0 ? characters(" x.,0", 2) : ""; }

  // All widths, many of them next to a power of two.
  std::string integer() {
    const std::uint64_t bits = below(2) == 0 ? random_() : (std::uint64_t{1} << below(64)) + below(3) - 1;
    const auto value = static_cast<unsigned long long>(bits >> below(2) * below(64));
    char digits[64];
    switch (below(3)) {
      case 0:
        std::snprintf(digits, sizeof digits, "%llu", value);
        break;
      case 1:
        std::snprintf(digits, sizeof digits, below(2) == 0 ? "0x%llx" : "0X%llX", value);
        break;
      default:
        std::snprintf(digits, sizeof digits, "0%llo", value);
    }
    if (below(8) == 0) std::snprintf(digits, sizeof digits, "%llu0", value);
    return characters(" \t\v", 2) + sign() + digits + junk();
  }

  std::string decimal() {
    std::string text = sign() + characters("0123456789", 20);
    if (below(2) == 0) text += "." + characters("0123456789", 20);
    if (below(4) != 0) text += "e" + sign() + std::to_string(below(2) == 0 ? below(50) : below(350));
    return text + junk();
  }

  std::string hexadecimal() {
    std::string text = sign() + "0x" + characters("0123456789abcdefABCDEF", 18);
    if (below(2) == 0) text += "." + characters("0123456789abcdefABCDEF", 18);
    if (below(4) != 0) text += "p" + sign() + std::to_string(below(2) == 0 ? below(200) : below(1200));
    return text + junk();
  }

  static double widen(float value) { return static_cast<double>(value); }
  static long double widen(double value) { return static_cast<long double>(value); }

  // Halfway between two neighbours, written out whole, or a little off.
  std::string tie() {
    char digits[1200];
    if (below(2) == 0) {
      const float low = std::bit_cast<float>(below(0x7F7FFFFF));
      const double middle = (widen(low) + widen(std::nextafter(low, kFloatInfinity))) / 2;
      std::snprintf(digits, sizeof digits, below(2) == 0 ? "%.120e" : "%a", middle);
    } else {
      const double low = std::bit_cast<double>(random_() % 0x7FEFFFFFFFFFFFFF);
      const long double middle = (widen(low) + widen(std::nextafter(low, kInfinity))) / 2;
      std::snprintf(digits, sizeof digits, below(2) == 0 ? "%.770Le" : "%La", middle);
    }
    std::string text = digits;
    if (below(2) == 0) text.insert(text.find_first_of("ep"), characters("0123456789", 3));
    return text;
  }

  std::mt19937_64 random_;
};

TEST(CLocale, AgreesWithTheCLibraryOnRandomTexts) {
  constexpr std::uint32_t kSeed = 3900;
  RandomTexts texts(kSeed);
  for (int round = 0; round < 200000; ++round) {
    const std::string text = texts.next();
    const auto where = [&] {
      return "seed " + std::to_string(kSeed) + ", round " + std::to_string(round) + ", " + testing::PrintToString(text);
    };
    ASSERT_TRUE(agrees<float>(text)) << where();
    ASSERT_TRUE(agrees<double>(text)) << where();
    ASSERT_TRUE(agrees<std::int64_t>(text)) << where();
    ASSERT_TRUE(agrees<std::uint64_t>(text)) << where();
  }
}

#endif

}  // namespace
}  // namespace vq3900::test
