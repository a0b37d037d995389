#include "config/key_table.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "config/field_readers.h"
#include "config/ini_document.h"

namespace vq3900::test {
namespace {

// A section of a configuration that exists only here.
struct Lamp {
  struct Colour {
    std::uint16_t rgb[3] = {};
  };

  std::uint8_t on = 0;
  std::uint32_t power = 0;
  std::int32_t offset = 0;
  std::int32_t limit = 0;
  std::uint32_t serial = 0;
  float gain = 0;
  std::uint32_t version = 0;
  char name[4] = {};
  Colour colour;
  std::array<std::int32_t, 2> range{};
  std::array<double, 2> curve{};
  std::uint8_t dimmer = 0;
  std::uint8_t dimmer_step = 0;
};

bool read_even(Lamp& lamp, std::string_view text) {
  const std::uint8_t value = read_uint8(text);
  lamp.dimmer_step = value;
  return value % 2 == 0;
}

constexpr auto kLampKeys = std::to_array<Key<Lamp>>({
    key<KeyType::kBool, &Lamp::on>("on"),
    key<KeyType::kUint8, &Lamp::power>("power"),  // widened
    key<KeyType::kInt, &Lamp::offset>("offset"),
    optional(key<KeyType::kInt32, &Lamp::limit>("limit"), [](Lamp& lamp) { lamp.limit = lamp.offset + 1; }),
    key<KeyType::kUint32, &Lamp::serial>("serial"),
    key<KeyType::kFloat, &Lamp::gain>("gain"),
    key<KeyType::kVersion, &Lamp::version>("version"),
    text<&Lamp::name>("name", "name fault"),
    list<&Lamp::colour, &Lamp::Colour::rgb>("colour", "colour fault"),
    list<&Lamp::range>("range", "range fault"),
    list<&Lamp::curve>("curve", "curve fault"),
    optional(key<KeyType::kUint8, &Lamp::dimmer>("dimmer"), [](Lamp& lamp) { lamp.dimmer = 99; }),
    {"dimmer_step", KeyType::kUint8, 1, read_even, "step fault", nullptr, "dimmer"},
});

constexpr const char* kAllKeys =
    "[lamp]\non = true\npower = 200\noffset = -5\nlimit = 7\nserial = 4294967295\ngain = 0.5\nversion = 1.2\n"
    "name = abcd\ncolour = {1,2,3}\nrange = {-1,1}\ncurve = {0.1,0.2}\ndimmer = 3\ndimmer_step = 4\n";

class KeyTable : public testing::Test {
 protected:
  std::optional<std::string> read(const std::string& text) {
    document_.parse(text);
    return read_section(kLampKeys, document_.section("lamp"), "lamp", lamp_);
  }

  // Reads all keys, one of them with another value.
  std::optional<std::string> read_with(const std::string& name, const std::string& value) {
    return read(kAllKeys + name + " = " + value + "\n");
  }

  // Reads all keys but one.
  std::optional<std::string> read_without(const std::string& name) {
    std::string text = kAllKeys;
    const std::size_t start = text.find("\n" + name + " =") + 1;
    return read(text.erase(start, text.find('\n', start) + 1 - start));
  }

  std::string message_of_read_with(const std::string& name, const std::string& value) {
    try {
      read_with(name, value);
    } catch (const FieldError& fault) {
      return fault.what();
    }
    return "(none)";
  }

  IniDocument document_;
  Lamp lamp_;
};

TEST_F(KeyTable, EveryKeyReachesItsMember) {
  EXPECT_EQ(read(kAllKeys), std::nullopt);
  EXPECT_EQ(lamp_.on, 1);
  EXPECT_EQ(lamp_.power, 200U);
  EXPECT_EQ(lamp_.offset, -5);
  EXPECT_EQ(lamp_.limit, 7);
  EXPECT_EQ(lamp_.serial, 0xFFFFFFFFU);
  EXPECT_EQ(lamp_.gain, 0.5F);
  EXPECT_EQ(lamp_.version, 0x3132U);
  EXPECT_EQ(std::string_view(lamp_.name, 4), "abcd");
  EXPECT_EQ(std::vector<int>(lamp_.colour.rgb, lamp_.colour.rgb + 3), (std::vector<int>{1, 2, 3}));
  EXPECT_EQ(lamp_.range, (std::array<std::int32_t, 2>{-1, 1}));
  EXPECT_EQ(lamp_.curve, (std::array<double, 2>{0.1, 0.2}));
  EXPECT_EQ(lamp_.dimmer, 3);
  EXPECT_EQ(lamp_.dimmer_step, 4);
}

TEST_F(KeyTable, KeysThatTheTableDoesNotNameAreIgnored) {
  EXPECT_EQ(read_with("colours", "{9}"), std::nullopt);
  EXPECT_EQ(read_with("ON", "nonsense"), std::nullopt);
  EXPECT_EQ(lamp_.on, 1);
}

TEST_F(KeyTable, RowsAreReadInTheirOwnOrderWhateverThatOfTheText) {
  EXPECT_EQ(read("[lamp]\ndimmer = 1\ndimmer_step = 2\ncurve = {1,2}\nrange = {1,2}\ncolour = {1,2,3}\nname = n\n"
                 "version = 1\ngain = 1\nserial = 1\noffset = 41\npower = 1\non = 1\n"),
            std::nullopt);
  EXPECT_EQ(lamp_.limit, 42);  // the default counts on the offset read before
}

TEST_F(KeyTable, AbsentRequiredKeyReadsAsAnEmptyText) {
  EXPECT_THROW(read_without("on"), FieldError);
  EXPECT_THROW(read_without("power"), FieldError);
  EXPECT_THROW(read_without("offset"), FieldError);
  EXPECT_THROW(read_without("serial"), FieldError);
  EXPECT_THROW(read_without("gain"), FieldError);
  EXPECT_EQ(read_without("version"), std::nullopt);
  EXPECT_EQ(lamp_.version, 0U);
  EXPECT_EQ(read_without("colour"), "colour fault");
  EXPECT_EQ(read_without("range"), "range fault");
  EXPECT_EQ(read_without("curve"), "curve fault");
}

TEST_F(KeyTable, AbsentTextLeavesAClearedMember) {
  EXPECT_EQ(read_without("name"), std::nullopt);
  EXPECT_EQ(std::string_view(lamp_.name, 4), std::string_view("\0\0\0\0", 4));
}

TEST_F(KeyTable, AbsentOptionalKeyTakesItsDefault) {
  EXPECT_EQ(read_without("limit"), std::nullopt);
  EXPECT_EQ(lamp_.limit, -4);
}

TEST_F(KeyTable, OptionalKeyWithABadValueFailsLikeARequiredOne) {
  EXPECT_EQ(message_of_read_with("limit", "x"), "x is not a long long");
  EXPECT_EQ(message_of_read_with("limit", ""), " is not a long long");
}

TEST_F(KeyTable, KeyBesideAnotherIsLookedAtOnlyWithIt) {
  EXPECT_EQ(read_without("dimmer"), std::nullopt);
  EXPECT_EQ(lamp_.dimmer, 99);
  EXPECT_EQ(lamp_.dimmer_step, 0);
}

TEST_F(KeyTable, BadValueOfAKeyBesideAnAbsentOneIsNoFault) {
  std::string text = kAllKeys;
  text.erase(text.find("dimmer = 3\n"));
  EXPECT_EQ(read(text + "dimmer_step = nonsense\n"), std::nullopt);
}

TEST_F(KeyTable, KeyBesideAPresentOneIsRequired) {
  EXPECT_EQ(read_without("dimmer_step"), "Field dimmer_step not found in section lamp");
  EXPECT_EQ(lamp_.dimmer, 3);
}

TEST_F(KeyTable, ValueThatTheKeyRefusesGivesItsFault) {
  EXPECT_EQ(read_with("dimmer_step", "5"), "step fault");
}

TEST_F(KeyTable, ValueThatTheReaderRefusesThrows) {
  EXPECT_EQ(message_of_read_with("on", "yes"), "yes is not a bool");
  EXPECT_EQ(message_of_read_with("power", "256"), "field is out of UInt8 range: 256");
  EXPECT_EQ(message_of_read_with("offset", "2147483648"), "field is out of Int range: 2147483648");
  EXPECT_EQ(message_of_read_with("limit", "2147483648"), "field is out of Int32 range: 2147483648");
  EXPECT_EQ(message_of_read_with("serial", "4294967296"), "field is out of UInt32 range: 4294967296");
  EXPECT_EQ(message_of_read_with("gain", "1e400"), "1e400 is not a float");
  EXPECT_EQ(message_of_read_with("dimmer_step", "-1"), "detect negative while parse unsigned");
}

TEST_F(KeyTable, MembersReadBeforeAFaultKeepTheirValues) {
  lamp_.gain = 8;
  EXPECT_EQ(message_of_read_with("serial", "x"), "x is not a unsigned long long");
  EXPECT_EQ(lamp_.on, 1);
  EXPECT_EQ(lamp_.limit, 7);
  EXPECT_EQ(lamp_.serial, 0U);
  EXPECT_EQ(lamp_.gain, 8.0F);
}

TEST_F(KeyTable, ListOfTheWrongLengthLeavesItsMember) {
  lamp_.range = {5, 6};
  lamp_.curve = {7, 8};
  for (const char* const value : {"{}", "{1}", "{1,2,3}", "1,2", "{1,2", ""}) {
    EXPECT_EQ(read_with("range", value), "range fault") << value;
    EXPECT_EQ(lamp_.range, (std::array<std::int32_t, 2>{5, 6})) << value;
  }
  EXPECT_EQ(lamp_.colour.rgb[2], 3);                      // the row before
  EXPECT_EQ(lamp_.curve, (std::array<double, 2>{7, 8}));  // the row behind
}

TEST_F(KeyTable, TextThatIsTooLongIsRefusedAndLeavesItsMember) {
  EXPECT_EQ(read_with("name", "abcde"), "name fault");
  EXPECT_EQ(std::string_view(lamp_.name, 4), std::string_view("\0\0\0\0", 4));
  EXPECT_EQ(lamp_.version, 0x3132U);
}

TEST_F(KeyTable, ShortTextFillsTheStartOfItsMember) {
  EXPECT_EQ(read_with("name", "ab"), std::nullopt);
  EXPECT_EQ(std::string_view(lamp_.name, 4), std::string_view("ab\0\0", 4));
}

TEST_F(KeyTable, GoodReadAfterAFailedOneReplacesEverything) {
  EXPECT_EQ(read_with("range", "{1}"), "range fault");
  EXPECT_EQ(read(kAllKeys), std::nullopt);
  EXPECT_EQ(lamp_.range, (std::array<std::int32_t, 2>{-1, 1}));
}

TEST(KeyDescriptions, TellTypeCountAndNeed) {
  std::vector<KeyDescription> keys;
  describe_keys("lamp", kLampKeys, keys);
  const KeyDescription expected[] = {
      {"lamp", "on", KeyType::kBool, 1, true, nullptr},
      {"lamp", "power", KeyType::kUint8, 1, true, nullptr},
      {"lamp", "offset", KeyType::kInt, 1, true, nullptr},
      {"lamp", "limit", KeyType::kInt32, 1, false, nullptr},
      {"lamp", "serial", KeyType::kUint32, 1, true, nullptr},
      {"lamp", "gain", KeyType::kFloat, 1, true, nullptr},
      {"lamp", "version", KeyType::kVersion, 1, true, nullptr},
      {"lamp", "name", KeyType::kText, 4, true, nullptr},
      {"lamp", "colour", KeyType::kUint16List, 3, true, nullptr},
      {"lamp", "range", KeyType::kInt32List, 2, true, nullptr},
      {"lamp", "curve", KeyType::kDoubleList, 2, true, nullptr},
      {"lamp", "dimmer", KeyType::kUint8, 1, false, nullptr},
      {"lamp", "dimmer_step", KeyType::kUint8, 1, false, "dimmer"},
  };
  ASSERT_EQ(keys.size(), std::size(expected));
  for (std::size_t i = 0; i < keys.size(); ++i) {
    SCOPED_TRACE(expected[i].name);
    EXPECT_STREQ(keys[i].section, expected[i].section);
    EXPECT_STREQ(keys[i].name, expected[i].name);
    EXPECT_EQ(keys[i].type, expected[i].type);
    EXPECT_EQ(keys[i].count, expected[i].count);
    EXPECT_EQ(keys[i].required, expected[i].required);
    EXPECT_STREQ(keys[i].beside, expected[i].beside);
  }
}

TEST(KeyDescriptions, AreAppended) {
  std::vector<KeyDescription> keys;
  describe_keys("one", kLampKeys, keys);
  describe_keys("two", kLampKeys, keys);
  ASSERT_EQ(keys.size(), 2 * kLampKeys.size());
  EXPECT_STREQ(keys.front().section, "one");
  EXPECT_STREQ(keys.back().section, "two");
}

TEST(MissingKeyText, NamesTheKeyFirstAndTheSectionSecond) {
  EXPECT_EQ(missing_key_text("baseline", "basic"), "Field baseline not found in section basic");
}

}  // namespace
}  // namespace vq3900::test
