#include "config/field_readers.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace vq3900::test {
namespace {

using namespace std::string_literals;

constexpr std::int64_t kInt64Min = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kInt64Max = std::numeric_limits<std::int64_t>::max();
constexpr std::uint64_t kUint64Max = std::numeric_limits<std::uint64_t>::max();
constexpr std::int32_t kInt32Min = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kInt32Max = std::numeric_limits<std::int32_t>::max();

constexpr const char* kNegative = "detect negative while parse unsigned";

template <typename Value>
using Reader = Value (*)(std::string_view);

template <typename Value>
struct Accepted {
  const char* text;
  Value value;
};

struct Refused {
  const char* text;
  std::string message;
};

template <typename Value>
void expect_accepted(Reader<Value> read, const std::vector<Accepted<std::type_identity_t<Value>>>& rows) {
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::PrintToString(row.text));
    EXPECT_NO_THROW(EXPECT_EQ(read(row.text), row.value));
  }
}

template <typename Value>
std::string message_of(Reader<Value> read, std::string_view text) {
  try {
    read(text);
  } catch (const std::domain_error& fault) {
    return fault.what();
  }
  return "(none)";
}

template <typename Value>
void expect_refused(Reader<Value> read, const std::vector<Refused>& rows) {
  for (const Refused& row : rows)
    EXPECT_EQ(message_of(read, row.text), row.message) << testing::PrintToString(row.text);
}

// Each text is refused with itself and the complaint behind it.
template <typename Value>
void expect_no_such_type(Reader<Value> read, const std::string& complaint, const std::vector<const char*>& texts) {
  for (const char* const text : texts)
    EXPECT_EQ(message_of(read, text), text + complaint) << testing::PrintToString(text);
}

// What no integer reader takes.
const std::vector<const char*> kNoIntegers = {"",    " ",   "-",   "+",   "+-1", "- 1",  "abc", "x10",
                                              "1x",  "1 ",  "1\t", "0x",  "0xg", "0b1",  "0o7", "08",
                                              "1.0", "0.0", "1e3", "1,2", "{1}", "TRUE", "inf"};

// --- bool

TEST(ReadBool, TakesEveryCaseOfTrueAndFalse) {
  for (unsigned mix = 0; mix < 32; ++mix) {
    std::string yes = "true";
    std::string no = "false";
    for (std::string* text : {&yes, &no}) {
      for (std::size_t i = 0; i < text->size(); ++i) {
        if ((mix >> i & 1) != 0) (*text)[i] = static_cast<char>((*text)[i] - 'a' + 'A');
      }
    }
    EXPECT_TRUE(read_bool(yes)) << yes;
    EXPECT_FALSE(read_bool(no)) << no;
  }
}

TEST(ReadBool, TakesOneAndZero) {
  EXPECT_TRUE(read_bool("1"));
  EXPECT_FALSE(read_bool("0"));
}

TEST(ReadBool, RefusesEverythingElse) {
  expect_no_such_type(read_bool, " is not a bool", {"",      "yes",   "on",    "no",   "off",    "2",       "-1", "+1",
                                                    "01",    "00",    "0x1",   "1.0",  " 1",     "1 ",      "t",  "tru",
                                                    "truee", "true ", " true", "fals", "falsee", "TRU\xC9", "{1}"});
  EXPECT_THROW(read_bool("1\0"s), FieldError);
}

// --- 64-bit integers

TEST(ReadLongLong, TakesEveryBaseAndItsWholeRange) {
  expect_accepted(read_long_long,
                  {{"0", 0},
                   {"-0", 0},
                   {"+7", 7},
                   {"-7", -7},
                   {" \t\n\v\f\r7", 7},
                   {"0x1F", 31},
                   {"0X1f", 31},
                   {"-0x10", -16},
                   {"010", 8},
                   {"-010", -8},
                   {"00", 0},
                   {"9223372036854775807", kInt64Max},
                   {"0x7FFFFFFFFFFFFFFF", kInt64Max},
                   {"-9223372036854775808", kInt64Min}});
}

TEST(ReadLongLong, RefusesWhatIsNoIntegerOrSaturates) {
  expect_no_such_type(read_long_long, " is not a long long", kNoIntegers);
  expect_no_such_type(read_long_long,
                      " is not a long long",
                      {"9223372036854775808",
                       "-9223372036854775809",
                       "0x8000000000000000",
                       "999999999999999999999999999999",
                       "-999999999999999999999999999999"});
}

TEST(ReadUnsignedLongLong, TakesEveryBaseAndItsWholeRange) {
  expect_accepted(read_unsigned_long_long,
                  {{"0", 0},
                   {"+7", 7},
                   {" 7", 7},
                   {"0xff", 255},
                   {"0377", 255},
                   {"18446744073709551615", kUint64Max},
                   {"0xFFFFFFFFFFFFFFFF", kUint64Max}});
}

TEST(ReadUnsignedLongLong, RefusesWhatIsNoIntegerOrSaturates) {
  expect_no_such_type(read_unsigned_long_long, " is not a unsigned long long", kNoIntegers);
  expect_no_such_type(read_unsigned_long_long,
                      " is not a unsigned long long",
                      {"18446744073709551616", "0x10000000000000000", "999999999999999999999999999999"});
}

TEST(ReadUnsignedLongLong, RefusesAMinusAfterTheNumberWasTaken) {
  expect_refused(read_unsigned_long_long,
                 {{"-0", kNegative},
                  {"-1", kNegative},
                  {" \t-5", kNegative},
                  {"-0x10", kNegative},
                  {"-18446744073709551615", kNegative},
                  {"-18446744073709551616",  // saturates first
                   "-18446744073709551616 is not a unsigned long long"},
                  {"-1x", "-1x is not a unsigned long long"},
                  {"-", "- is not a unsigned long long"}});
}

// --- integers of a range

TEST(ReadInt, TakesItsRangeAndNamesItBeyond) {
  expect_accepted(read_int,
                  {{"2147483647", kInt32Max}, {"-2147483648", kInt32Min}, {"0", 0}, {"-0x80000000", kInt32Min}});
  expect_refused(read_int,
                 {{"2147483648", "field is out of Int range: 2147483648"},
                  {"-2147483649", "field is out of Int range: -2147483649"},
                  {"0x80000000", "field is out of Int range: 0x80000000"},
                  {" 9223372036854775807", "field is out of Int range:  9223372036854775807"}});
}

TEST(ReadInt32, TakesItsRangeAndNamesItBeyond) {
  expect_accepted(read_int32, {{"2147483647", kInt32Max}, {"-2147483648", kInt32Min}, {"0", 0}, {"010", 8}});
  expect_refused(read_int32,
                 {{"2147483648", "field is out of Int32 range: 2147483648"},
                  {"-2147483649", "field is out of Int32 range: -2147483649"},
                  {"-9223372036854775808", "field is out of Int32 range: -9223372036854775808"}});
}

TEST(ReadInt8, TakesItsRangeAndNamesItBeyond) {
  expect_accepted(read_int8, {{"127", std::int8_t{127}}, {"-128", std::int8_t{-128}}, {"0", std::int8_t{0}}});
  expect_refused(read_int8,
                 {{"128", "field is out of Int8 range: 128"},
                  {"-129", "field is out of Int8 range: -129"},
                  {"0xff", "field is out of Int8 range: 0xff"}});
}

TEST(ReadUint32, TakesItsRangeAndNamesItBeyond) {
  expect_accepted(read_uint32, {{"4294967295", 0xFFFFFFFFU}, {"0xffffffff", 0xFFFFFFFFU}, {"0", 0U}});
  expect_refused(read_uint32,
                 {{"4294967296", "field is out of UInt32 range: 4294967296"},
                  {"18446744073709551615", "field is out of UInt32 range: 18446744073709551615"},
                  {"-1", kNegative},
                  {"-0", kNegative}});
}

TEST(ReadUint8, TakesItsRangeAndNamesItBeyond) {
  constexpr std::uint8_t kMost = 255;
  expect_accepted(read_uint8, {{"255", kMost}, {"0xff", kMost}, {"0377", kMost}, {"0", std::uint8_t{0}}});
  expect_refused(read_uint8,
                 {{"256", "field is out of UInt8 range: 256"},
                  {"0400", "field is out of UInt8 range: 0400"},
                  {"-1", kNegative},
                  {"-256", kNegative},
                  {"-0", kNegative}});
}

TEST(RangeReaders, LeaveWhatIsNoNumberToTheirWideReader) {
  expect_no_such_type(read_int, " is not a long long", kNoIntegers);
  expect_no_such_type(read_int32, " is not a long long", kNoIntegers);
  expect_no_such_type(read_int8, " is not a long long", kNoIntegers);
  expect_no_such_type(read_uint32, " is not a unsigned long long", kNoIntegers);
  expect_no_such_type(read_uint8, " is not a unsigned long long", kNoIntegers);
  expect_no_such_type(read_int8, " is not a long long", {"9223372036854775808"});
  expect_no_such_type(read_uint8, " is not a unsigned long long", {"18446744073709551616"});
}

// --- float

TEST(ReadFloat, TakesEveryFormOfANumber) {
  expect_accepted(read_float,
                  {{"0", 0.0F},
                   {"0.0", 0.0F},
                   {"-1.5", -1.5F},
                   {"+1.5", 1.5F},
                   {" \t1.5", 1.5F},
                   {".5", 0.5F},
                   {"5.", 5.0F},
                   {"010", 10.0F},
                   {"1e3", 1000.0F},
                   {"0x10", 16.0F},
                   {"-0x1.8p1", -3.0F},
                   {"16777217", 16777216.0F},
                   {"3.4028234e38", std::numeric_limits<float>::max()}});
  EXPECT_TRUE(std::signbit(read_float("-0")));
  EXPECT_EQ(read_float("-0"), 0.0F);
}

TEST(ReadFloat, TakesWhatIsTooSmall) {
  expect_accepted(
      read_float,
      {{"1e-50", 0.0F}, {"-1e-400", 0.0F}, {"0x1p-160", 0.0F}, {"1.4e-45", 0x1p-149F}, {"1e-40", 0x1.16c2p-133F}});
}

TEST(ReadFloat, TakesWrittenInfinitiesAndNan) {
  expect_accepted(read_float, {{"inf", HUGE_VALF}, {"-Infinity", -HUGE_VALF}});
  EXPECT_TRUE(std::isnan(read_float("nan")));
}

TEST(ReadFloat, RefusesWhatIsTooLargeOrNoNumber) {
  expect_no_such_type(read_float,
                      " is not a float",
                      {"1e400", "-1e400", "1e39", "3.5e38", "0x1p128",   "",   " ",   "-",   ".",   "e5",      "1e",
                       "1 ",    "1.2.3",  "1,5",  "1f",     "40.0 # mm", "0x", "abc", "{1}", "+-1", "infinit", "nan("});
}

// --- a NUL byte inside is no end of the text

TEST(ScalarReaders, RefuseANulByteBehindTheNumber) {
  EXPECT_THROW(read_long_long("5\0"s), FieldError);
  EXPECT_THROW(read_unsigned_long_long("5\0x"s), FieldError);
  EXPECT_THROW(read_uint8("5\0"s), FieldError);
  EXPECT_THROW(read_float("5\0"s), FieldError);
}

// --- brace lists

template <typename Element>
using ListReader = std::size_t (*)(std::string_view, std::span<Element>);

template <typename Element>
struct ListCase {
  std::string text;
  std::size_t count;
  std::vector<Element> elements;  // those that arrive
};

// Room for three elements between guards; nothing else may change.
template <typename Element>
void expect_lists(ListReader<Element> read, const std::vector<ListCase<std::type_identity_t<Element>>>& rows) {
  constexpr std::size_t kRoom = 3;
  constexpr Element kGuard = 77;
  for (const ListCase<Element>& row : rows) {
    SCOPED_TRACE(testing::PrintToString(row.text));
    std::array<Element, kRoom + 2> array;
    array.fill(kGuard);
    EXPECT_EQ(read(row.text, std::span(array).subspan(1, kRoom)), row.count);
    std::vector<Element> expected = row.elements;
    expected.insert(expected.begin(), kGuard);
    expected.resize(array.size(), kGuard);
    EXPECT_EQ(std::vector<Element>(array.begin(), array.end()), expected);
  }
}

// What has no elements, whatever the type.
template <typename Element>
void expect_empty_lists(ListReader<Element> read) {
  for (const std::string& text : {""s,
                                  "{"s,
                                  "}"s,
                                  "{}"s,
                                  "}{"s,
                                  "{,}"s,
                                  "{,,,}"s,
                                  "1,2"s,
                                  "{1,2"s,
                                  "1,2}"s,
                                  " {1}"s,
                                  "{1} "s,
                                  "(1)"s,
                                  "{1}x"s,
                                  "{\0,1}"s}) {
    expect_lists<Element>(read, {{text, 0, {}}});
  }
}

TEST(Lists, WithoutBracesOrElementsHaveNone) {
  expect_empty_lists<std::uint16_t>(string_to_u16_array);
  expect_empty_lists<std::int32_t>(string_to_s32_array);
  expect_empty_lists<double>(string_to_double_array);
}

TEST(Lists, SkipEmptyElementsAndLeadingBlanks) {
  const std::vector<ListCase<std::int32_t>> rows = {
      {"{1,2,3}", 3, {1, 2, 3}},
      {"{1, 2,\t3}", 3, {1, 2, 3}},
      {"{1 ,2 , 3 }", 3, {1, 2, 3}},
      {"{,1,,2,}", 2, {1, 2}},
      {"{1,,,,2,3}", 3, {1, 2, 3}},
      {"{7}", 1, {7}},
  };
  expect_lists(string_to_s32_array, rows);
}

TEST(Lists, ConvertElementsWithoutLookingAtTheirEnd) {
  expect_lists(
      string_to_s32_array,
      {{"{1x,2.9,3e5}", 3, {1, 2, 3}}, {"{abc, ,-}", 3, {0, 0, 0}}, {"{08,0x,0b1}", 3, {0, 0, 0}}, {"{1;2}", 1, {1}}});
}

TEST(Lists, TakeOnlyTheOuterCharactersAsBraces) {
  expect_lists(string_to_s32_array, {{"{{1,2}}", 2, {0, 2}}, {"{1},{2}", 2, {1, 0}}});
}

TEST(Lists, CountAllElementsAndStoreWhatFits) {
  expect_lists(string_to_u16_array, {{"{1,2,3,4}", 4, {1, 2, 3}}, {"{1,2,3,4,5,6,7,8,9}", 9, {1, 2, 3}}});
  expect_lists(string_to_s32_array, {{"{1,2,3,4}", 4, {1, 2, 3}}});
  expect_lists(string_to_double_array, {{"{1,2,3,4}", 4, {1, 2, 3}}});
  EXPECT_EQ(string_to_s32_array("{1,2}", {}), 2U);
  std::string many = "{";
  for (int i = 0; i < 100'000; ++i)
    many += "5,";
  expect_lists(string_to_u16_array, {{many + "}", 100'000, {5, 5, 5}}});
}

TEST(Lists, EndAtANulByte) {
  expect_lists(string_to_u16_array, {{"{1,2\0,3}"s, 2, {1, 2}}});
}

TEST(Lists, OfUint16KeepTheLow16Bits) {
  expect_lists(string_to_u16_array,
               {{"{65535,65536,65537}", 3, {65535, 0, 1}},
                {"{-1,-65535,0x12345678}", 3, {65535, 1, 0x5678}},
                {"{010,0xFF,+9}", 3, {8, 255, 9}},
                {"{18446744073709551616,-18446744073709551616}", 2, {65535, 65535}}});
}

TEST(Lists, OfInt32KeepTheLow32Bits) {
  expect_lists(string_to_s32_array,
               {{"{2147483647,-2147483648,-1}", 3, {kInt32Max, kInt32Min, -1}},
                {"{2147483648,4294967295,4294967296}", 3, {kInt32Min, -1, 0}},
                {"{-2147483649,-010,0xFFFFFFFF}", 3, {kInt32Max, -8, -1}},
                {"{9223372036854775808,-9223372036854775809}", 2, {-1, 0}}});
}

TEST(Lists, OfDoubleConvertInDoublePrecision) {
  expect_lists(string_to_double_array,
               {{"{0.1,-2.5e-3, 3}", 3, {0.1, -2.5e-3, 3.0}},
                {"{1e400,1e-400,010}", 3, {HUGE_VAL, 0.0, 10.0}},
                {"{1.5x,abc, }", 3, {1.5, 0.0, 0.0}}});
}

// --- versions

TEST(ReadVersion, PacksTheFirstCharactersOfItsPieces) {
  expect_accepted(read_version,
                  {{"1.2.3.4", 0x31323334U},
                   {"10.2", 0x3132U},
                   {"7", 0x37U},
                   {"1.2.3", 0x313233U},
                   {"1.2.3.4.5", 0x32333435U},
                   {"1.2.3.4.5.6.7.8.9", 0x36373839U},
                   {"..1...2..", 0x3132U},
                   {"v1.beta", 0x7662U},
                   {"1. 2", 0x3120U},
                   {"\xFF.\x80", 0xFF80U},
                   {"", 0U},
                   {"....", 0U}});
}

}  // namespace
}  // namespace vq3900::test
