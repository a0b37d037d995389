#include "config/groups.h"

#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "state/engine.h"
#include "support/capture.h"
#include "support/engine_fixture.h"
#include "support/group_samples.h"

namespace vq3900::test {
namespace {

constexpr const char* kTooMany = "Number of d2c cofiguration not supported\n";

std::string not_found(const std::string& key, const std::string& section) {
  return "Field " + key + " not found in section " + section + "\n";
}

std::string wrong_list(const std::string& key) {
  return "string to arrary " + key + " error\n";
}

// Numbers 1 to count, as a list.
std::string list_of(int count) {
  std::string list = "{";
  for (int i = 1; i <= count; ++i)
    list += (i == 1 ? "" : ",") + std::to_string(i);
  return list + "}";
}

INSTANTIATE_TEST_SUITE_P(Kinds, AnyGroups, testing::Values(kD2c, kIrPre),
                         [](const auto& test) { return test.param.name; });

// --- what is stored

TEST_P(AnyGroups, EveryKeyLandsInItsPlaceAndEveryOtherByteIsZero) {
  EXPECT_EQ(load_group(sample()), silent_success());
  EXPECT_EQ(now().items[0], sample_bytes(GetParam()));
}

TEST_P(AnyGroups, ChangedKeyChangesItsBytesAlone) {
  for (const GroupKey& key : *GetParam().sample) {
    SCOPED_TRACE(key.name);
    EXPECT_EQ(load_group(sample().set(key.name, key.other_text)), silent_success());
    EXPECT_EQ(now().items[0], sample_bytes(GetParam(), &key));
  }
}

TEST_P(AnyGroups, ItemsAreBuiltFromZeroWhateverTheArrayHeld) {
  GetParam().scribble(0xAA);
  EXPECT_EQ(load_group(sample().set(GetParam().description, "")), silent_success());
  Bytes expected = sample_bytes(GetParam());
  std::fill_n(expected.begin() + 16, 16, static_cast<unsigned char>(0));
  EXPECT_EQ(now().items[0], expected);
  EXPECT_EQ(now().items[1], Bytes(GetParam().size, 0xAA));
}

TEST_P(AnyGroups, DescriptionOf16BytesFitsAnd17AreRefused) {
  EXPECT_EQ(load_group(sample().set(GetParam().description, "abcdefghijklmnop")), silent_success());
  EXPECT_EQ(descriptions(1), std::vector<std::string>{"abcdefghijklmnop"});
  EXPECT_EQ(load_group(sample().set(GetParam().description, "0123456789abcdefg")),
            prints_err(-1, std::string(GetParam().description) + " is longer than 16 bytes\n"));
  EXPECT_EQ(descriptions(1), std::vector<std::string>{"abcdefghijklmnop"});
  EXPECT_EQ(load_group(sample().set(GetParam().description, "short")), silent_success());
  EXPECT_EQ(now().items[0][16 + 5], 0);
  EXPECT_EQ(now().items[0][16 + 15], 0);
}

TEST_P(AnyGroups, FreshLibraryHandsOutZerosAndLeavesTheCallersVersion) {
  const auto all = static_cast<std::size_t>(GetParam().most);
  EXPECT_EQ(now(), (HandedOut{0, kCallersVersion, std::vector<Bytes>(all, Bytes(GetParam().size))}));
}

TEST_P(AnyGroups, GroupsComeInTheOrderOfTheirNumbersWhereverTheyStand) {
  const auto group = [](int number, const char* text) {
    return sample().set(GetParam().description, text).text(number);
  };
  EXPECT_EQ(load(group(3, "c") + group(4, "not counted") + group(1, "a") + basic_text("3") + group(2, "b")),
            silent_success());
  EXPECT_EQ(now().count, 3);
  EXPECT_EQ(descriptions(4), (std::vector<std::string>{"a", "b", "c", ""}));
}

TEST_P(AnyGroups, NothingElseChanges) {
  reset_engine();
  const Bytes before = state_beside_the_groups();
  EXPECT_EQ(load_groups(3, "text "), silent_success());
  EXPECT_EQ(load(basic_text("2") + groups(1, "text ")).code, -1);
  EXPECT_EQ(state_beside_the_groups(), before);
}

// --- the number of groups

TEST_P(AnyGroups, NumOfZeroLoadsNoGroupAndSucceeds) {
  EXPECT_EQ(load_groups(2, "old ", "1.1"), silent_success());
  EXPECT_EQ(load(basic_text("0", "9")), silent_success());
  EXPECT_EQ(now().count, 0);
  EXPECT_EQ(now().version, 0x39U);
  EXPECT_EQ(descriptions(3), (std::vector<std::string>{"old 1", "old 2", ""}));
}

TEST_P(AnyGroups, NumAtTheLimitLoadsEveryGroup) {
  const int most = GetParam().most;
  EXPECT_EQ(load_groups(most, "number "), silent_success());
  EXPECT_EQ(now().count, most);
  std::vector<std::string> expected;
  for (int i = 1; i <= most; ++i)
    expected.push_back("number " + std::to_string(i));
  EXPECT_EQ(descriptions(static_cast<std::size_t>(most)), expected);
}

TEST_P(AnyGroups, NumAboveTheLimitOrNegativeIsRefused) {
  for (const std::string& num : {std::to_string(GetParam().most + 1),
                                 std::string("65536"),
                                 std::string("65537"),
                                 std::string("2147483647"),
                                 std::string("-1"),
                                 std::string("-2147483648")}) {
    SCOPED_TRACE(num);
    expect_refused_untouched(basic_text(num) + groups(1, "new "), prints_err(-1, kTooMany));
    expect_refused_untouched("[basic]\nnum = " + num + "\n", prints_err(-1, kTooMany));  // before the version is missed
  }
}

TEST_P(AnyGroups, NumThatIsNoIntegerIsRefusedSilently) {
  for (const char* const num : {"", "x", "1x", "1.0", "{1}", "2147483648", "-2147483649", "99999999999999999999"}) {
    SCOPED_TRACE(num);
    expect_refused_untouched(basic_text(num) + groups(1, "new "), silent(-5));
  }
}

TEST_P(AnyGroups, NumMayBeHexadecimalOrOctal) {
  for (const auto& [num, count] : {std::pair{"0x2", 2}, std::pair{"010", 8}, std::pair{"+3", 3}}) {
    EXPECT_EQ(load(basic_text(num) + groups(8, "text ")), silent_success());
    EXPECT_EQ(now().count, count) << num;
  }
}

TEST_P(AnyGroups, AbsentNumIsNamedAndChangesNothing) {
  expect_refused_untouched("[basic]\nversion = 3.4\n" + groups(1, "new "), prints_err(-1, not_found("num", "basic")));
}

TEST_P(AnyGroups, AbsentSectionBasicLacksItsNum) {
  expect_refused_untouched(groups(1, "new "), prints_err(-1, not_found("num", "basic")));
  expect_refused_untouched("[basic]\n" + groups(1, "new "), prints_err(-1, not_found("num", "basic")));
  expect_refused_untouched("", prints_err(-1, not_found("num", "basic")));
}

// --- the version

TEST_P(AnyGroups, AbsentVersionIsNamedAndLeavesTheNewCount) {
  EXPECT_EQ(load_groups(2, "old ", "3.4"), silent_success());
  HandedOut expected = now();
  EXPECT_EQ(load("[basic]\nnum = 1\n" + groups(1, "new ")), prints_err(-1, not_found("version", "basic")));
  expected.count = 1;
  EXPECT_EQ(now(), expected);
  EXPECT_EQ(load("[basic]\nnum = 0\n"), prints_err(-1, not_found("version", "basic")));
  EXPECT_EQ(now().count, 0);
}

TEST_P(AnyGroups, VersionTakesTheFirstCharacterOfEveryPiece) {
  const std::pair<const char*, unsigned> rows[] = {{"2.1", 0x3231},
                                                   {"1.2.3.4", 0x31323334},
                                                   {"10.2", 0x3132},
                                                   {"1.2.3.4.5", 0x32333435},
                                                   {"..7..8..", 0x3738},
                                                   {"a", 0x61},
                                                   {"\xFE.\xFF", 0xFEFF},
                                                   {"1 . 2", 0x3120},
                                                   {"1.2.3.4.0", 0x32333430},
                                                   {"0", 0x30}};
  for (const auto& [text, version] : rows) {
    EXPECT_EQ(load(basic_text("0", text)), silent_success()) << text;
    EXPECT_EQ(now().version, version) << text;
  }
}

TEST_P(AnyGroups, VersionOfZeroLeavesTheCallersVariable) {
  for (const char* const version : {"", ".", "..."}) {
    EXPECT_EQ(load_groups(1, "text ", "2.1"), silent_success());
    EXPECT_EQ(load_groups(1, "text ", version), silent_success());
    EXPECT_EQ(now().version, kCallersVersion) << version;
  }
}

// --- files and grammar

TEST_P(AnyGroups, WhatCannotBeOpenedIsNamedAndChangesNothing) {
  ASSERT_EQ(load_groups(2, "old "), silent_success());
  const HandedOut before = now();
  for (const std::string& path :
       {TempFile::unused_path(), TempFile::unused_path() + "/%s%n", testing::TempDir(), std::string(".")}) {
    EXPECT_EQ(outcome_of([&] { return GetParam().load(path.c_str()); }),
              prints_err(-1, "Cannot open file" + path + "\n"));
  }
  EXPECT_EQ(outcome_of([] { return GetParam().load(""); }), prints_err(-1, "Cannot open file\n"));
  EXPECT_EQ(now(), before);
}

TEST_P(AnyGroups, NullPathCountsAsAFileThatCannotBeOpened) {
  ASSERT_EQ(load_groups(2, "old "), silent_success());
  const HandedOut before = now();
  const Outcome outcome = outcome_of([] { return GetParam().load(nullptr); });
  EXPECT_EQ(outcome.code, -1);
  EXPECT_EQ(outcome.out, "");
  EXPECT_TRUE(outcome.err.starts_with("Cannot open file")) << outcome.err;
  EXPECT_EQ(now(), before);
}

TEST_P(AnyGroups, FaultOfGrammarAnywhereIsSilentAndChangesNothing) {
  const std::string good = basic_text("1") + groups(1, "new ");
  for (const std::string& bytes : {good + "no separator\n",
                                   good + "[open\n",
                                   good + "[]\n",
                                   good + "[a] b\n",
                                   "num = 1\n" + good,
                                   " # blanks before\n" + good}) {
    SCOPED_TRACE(bytes);
    expect_refused_untouched(bytes, silent(-5));
  }
}

// --- groups that are missing or bad

TEST_P(AnyGroups, Groups1And3OnlyLackGroup2) {
  EXPECT_EQ(load(basic_text("2") + sample().text(1) + sample().text(3)),
            prints_err(-1, "check section group2 error\n"));
  EXPECT_EQ(load(basic_text("1") + sample().text(0)), prints_err(-1, "check section group1 error\n"));
}

TEST_P(AnyGroups, GroupWithoutAKeyCountsAsMissing) {
  EXPECT_EQ(load(basic_text("2") + groups(1, "new ") + "[group2]\n# nothing\n"),
            prints_err(-1, "check section group2 error\n"));
  EXPECT_EQ(load(basic_text("2") + groups(1, "new ") + "[group2]\nother = 1\n"),
            prints_err(-1, not_found(GetParam().description, "group2")));
}

TEST_P(AnyGroups, EveryAbsentMandatoryKeyIsNamed) {
  for (const KeyDescription& key : GetParam().keys()) {
    SCOPED_TRACE(key.name);
    const Outcome absent = prints_err(-1, not_found(key.name, "group1"));
    const bool mandatory = key.required || key.beside != nullptr;  // the sample holds what it stands beside
    EXPECT_EQ(load_group(sample().remove(key.name)), mandatory ? absent : silent_success());
  }
}

TEST_P(AnyGroups, FirstAbsentKeyIsNamed) {
  const std::vector<GroupKey>& keys = *GetParam().sample;
  GroupText group = sample();
  for (std::size_t i = keys.size() - 1; i-- > 0;) {  // the last key stays
    group.remove(keys[i].name);
    if (!keys[i].required) continue;
    EXPECT_EQ(load_group(group), prints_err(-1, not_found(keys[i].name, "group1")));
  }
}

// Keys whose presence is checked together, before the first of them is read.
TEST_P(AnyGroups, KeysThatAreCheckedTogetherAreAllMissedBeforeABadValueCounts) {
  const std::vector<std::vector<const char*>> together =
      GetParam().description == std::string("desc")
          ? std::vector<std::vector<const char*>>{{"scale", "extend"}}
          : std::vector<std::vector<const char*>>{{"target_brightness", "target_th", "center_weight"},
                                                  {"skip_frame", "smooth_steps", "delay_ms"},
                                                  {"meter_method", "exp_en", "gain_en", "ldm_power_en"}};
  for (const std::vector<const char*>& keys : together) {
    for (std::size_t absent = 1; absent < keys.size(); ++absent) {
      EXPECT_EQ(load_group(sample().set(keys[0], "x").remove(keys[absent])),
                prints_err(-1, not_found(keys[absent], "group1")));
    }
    EXPECT_EQ(load_group(sample().set(keys[0], "x")), silent(-5));
  }
}

TEST_P(AnyGroups, BadValueCountsBeforeAKeyThatIsCheckedLater) {
  const bool d2c = GetParam().description == std::string("desc");
  EXPECT_EQ(load_group(sample().set(d2c ? "extend" : "delay_ms", "x").remove(d2c ? "nothing" : "meter_method")),
            d2c ? prints_err(-1, wrong_list("extend")) : silent(-5));
}

TEST_P(AnyGroups, ListsOfAnotherLengthAreNamed) {
  for (const GroupKey& key : *GetParam().sample) {
    if (!key.is_list()) continue;
    for (const std::string& list : {list_of(key.count - 1),
                                    list_of(key.count + 1),
                                    list_of(200),
                                    std::string("{}"),
                                    std::string("{"),
                                    std::string("}"),
                                    std::string(),
                                    std::string("{,,,}"),
                                    list_of(key.count).substr(1),
                                    list_of(key.count) + " # no comment",
                                    list_of(key.count).substr(0, list_of(key.count).size() - 1)}) {
      EXPECT_EQ(load_group(sample().set(key.name, list)), prints_err(-1, wrong_list(key.name))) << list;
    }
  }
}

TEST_P(AnyGroups, NumbersThatAreNoneOrOutOfRangeAreRefusedSilently) {
  for (const GroupKey& key : *GetParam().sample) {
    std::vector<const char*> texts;
    if (key.type == KeyType::kUint8) texts = {"", "x", "1.5", "-1", "-0", "256"};
    if (key.type == KeyType::kUint32) texts = {"", "x", "1.5", "-1", "-0", "4294967296"};
    if (key.type == KeyType::kFloat) texts = {"", "x", "1.5 mm", "1,5", "1e400"};
    for (const char* const text : texts)
      EXPECT_EQ(load_group(sample().set(key.name, text)), silent(-5)) << key.name << " = " << text;
  }
}

// --- what loads leave behind

TEST_P(AnyGroups, FailingGroupLeavesCountVersionAndTheGroupsBefore) {
  const std::pair<std::string, Outcome> rows[] = {
      {"", prints_err(-1, "check section group2 error\n")},
      {sample().remove(GetParam().description).text(2), prints_err(-1, not_found(GetParam().description, "group2"))},
      {sample().set(GetParam().sample->at(1).name, "{1}").text(2),
       prints_err(-1, wrong_list(GetParam().sample->at(1).name))},
      {sample().set(GetParam().description, "12345678901234567").text(2),
       prints_err(-1, std::string(GetParam().description) + " is longer than 16 bytes\n")},
      {sample().set(GetParam().sample->back().name, "256").text(2),
       GetParam().sample->back().is_list() ? prints_err(-1, wrong_list(GetParam().sample->back().name)) : silent(-5)}};
  for (const auto& [second, outcome] : rows) {
    SCOPED_TRACE(second);
    ASSERT_EQ(load_groups(2, "old ", "3.4"), silent_success());
    EXPECT_EQ(load(basic_text("3", "5.6") + groups(1, "new ") + second + sample().text(3)), outcome);
    EXPECT_EQ(now().count, 3);
    EXPECT_EQ(now().version, 0x3536U);
    EXPECT_EQ(descriptions(3), (std::vector<std::string>{"new 1", "old 2", ""}));
    reset_engine();
  }
}

TEST_P(AnyGroups, ShorterLoadKeepsTheItemsBeyondItsCount) {
  EXPECT_EQ(load_groups(4, "old "), silent_success());
  EXPECT_EQ(load_groups(2, "new "), silent_success());
  EXPECT_EQ(now().count, 2);
  EXPECT_EQ(descriptions(5), (std::vector<std::string>{"new 1", "new 2", "old 3", "old 4", ""}));
}

// --- the descriptions of the keys

TEST_P(AnyGroups, KeysAreDescribedInTheOrderOfReading) {
  const std::vector<KeyDescription> keys = GetParam().keys();
  const std::vector<GroupKey>& expected = *GetParam().sample;
  ASSERT_EQ(keys.size(), expected.size());
  for (std::size_t i = 0; i < keys.size(); ++i) {
    SCOPED_TRACE(expected[i].name);
    EXPECT_STREQ(keys[i].section, "group");
    EXPECT_STREQ(keys[i].name, expected[i].name);
    EXPECT_EQ(keys[i].type, expected[i].type);
    EXPECT_EQ(keys[i].count, expected[i].count);
    EXPECT_EQ(keys[i].required, expected[i].required);
    EXPECT_STREQ(keys[i].beside, expected[i].beside);
  }
}

// --- depth-to-colour groups

class D2cGroupsFile : public EngineTest {
 protected:
  static GroupText sample() { return GroupText(kD2cSample); }
  static Outcome load(const GroupText& group) { return load_one(kD2c, group); }
  static const d2c_cfg_item& item() { return engine().d2c_groups.items[0]; }
};

TEST_F(D2cGroupsFile, Num101AndNumMinus1AreRefused) {
  EXPECT_EQ(load_bytes(kD2c, basic_text("101")), prints_err(-1, kTooMany));
  EXPECT_EQ(load_bytes(kD2c, basic_text("-1")), prints_err(-1, kTooMany));
}

TEST_F(D2cGroupsFile, ResRgbOfThreeNumbersIsNamed) {
  EXPECT_EQ(load(sample().set("res_rgb", "{1920,1080,0}")), prints_err(-1, "string to arrary res_rgb error\n"));
}

struct UnitCase {
  const char* name;
  const char* unit;
  const char* in_r;
  std::uint32_t stored;
};

class D2cUnit : public D2cGroupsFile, public testing::WithParamInterface<UnitCase> {};

TEST_P(D2cUnit, IsStoredInHundredths) {
  const GroupText group =
      sample().set("d2d_params_unit", GetParam().unit).set("d2d_params_unit_in_R_en", GetParam().in_r);
  EXPECT_EQ(load(group), silent_success());
  EXPECT_EQ(item().d2d_params_unit, GetParam().stored);
}

INSTANTIATE_TEST_SUITE_P(Groups, D2cUnit,
                         testing::Values(UnitCase{"RoundsDown", "1.234", "1", 123},
                                         UnitCase{"HalfRoundsUp", "0.125", "1", 13},
                                         UnitCase{"NegativeHalfRoundsDown", "-0.125", "1", 0xFFFFFFF3},
                                         UnitCase{"ProductIsSinglePrecision", "1.005", "1", 101},
                                         UnitCase{"AnySwitchBut0IsOn", "1.5", "255", 150},
                                         UnitCase{"SwitchOff", "1.5", "0", 0}, UnitCase{"TooSmall", "0.000009", "1", 0},
                                         UnitCase{"Zero", "0", "1", 0},
                                         UnitCase{"LowBitsOfALargeUnit", "50000000", "1", 5000000000U & 0xFFFFFFFF},
                                         UnitCase{"Beyond64Bits", "1e30", "1", 0}, UnitCase{"Infinite", "inf", "1", 0},
                                         UnitCase{"NoNumber", "nan", "1", 0}, UnitCase{"Underflow", "1e-50", "1", 0}),
                         [](const auto& test) { return test.param.name; });

TEST_F(D2cGroupsFile, AbsentUnitIsZeroAndItsSwitchIsNotLookedAt) {
  EXPECT_EQ(load(sample().remove("d2d_params_unit")), silent_success());
  EXPECT_EQ(item().d2d_params_unit, 0U);
  EXPECT_EQ(load(sample().remove("d2d_params_unit").set("d2d_params_unit_in_R_en", "x")), silent_success());
  EXPECT_EQ(item().d2d_params_unit, 0U);
  EXPECT_EQ(load(sample().remove("d2d_params_unit").remove("d2d_params_unit_in_R_en")), silent_success());
  EXPECT_EQ(item().d2d_params_unit, 0U);
}

TEST_F(D2cGroupsFile, UnitWithoutItsSwitchIsRefused) {
  const Outcome refused = prints_err(-1, not_found("d2d_params_unit_in_R_en", "group1"));
  EXPECT_EQ(load(sample().remove("d2d_params_unit_in_R_en")), refused);
  EXPECT_EQ(load(sample().set("d2d_params_unit", "0").remove("d2d_params_unit_in_R_en")), refused);
  EXPECT_EQ(load(sample().set("d2d_params_unit", "x").remove("d2d_params_unit_in_R_en")), silent(-5));
}

TEST_F(D2cGroupsFile, MipiStatusKeepsItsLowestBitAndIsZeroWhenAbsent) {
  for (const auto& [text, stored] : {std::pair{"0", 0U}, {"1", 1U}, {"2", 0U}, {"3", 1U}, {"0xFF", 1U}}) {
    EXPECT_EQ(load(sample().set("mipi_channel_status", text)), silent_success());
    EXPECT_EQ(item().mipi_channel_status, stored) << text;
  }
  EXPECT_EQ(load(sample().remove("mipi_channel_status")), silent_success());
  EXPECT_EQ(item().mipi_channel_status, 0U);
}

// --- infrared pre-processing groups

class IrPreGroupsFile : public EngineTest {
 protected:
  static GroupText sample() { return GroupText(kIrPreSample); }
  static Outcome load(const GroupText& group) { return load_one(kIrPre, group); }
};

TEST_F(IrPreGroupsFile, Num11IsRefusedWithTheTextOfTheOtherKind) {
  EXPECT_EQ(load_bytes(kIrPre, basic_text("11")), prints_err(-1, kTooMany));
}

TEST_F(IrPreGroupsFile, EnablesOf3And0And1GiveBits5) {
  EXPECT_EQ(load(sample().set("exp_en", "3").set("gain_en", "0").set("ldm_power_en", "1")), silent_success());
  EXPECT_EQ(engine().ir_pre_groups.items[0].enable_bits, 5U);
  EXPECT_EQ(load(sample().set("exp_en", "4").set("gain_en", "7").set("ldm_power_en", "0")), silent_success());
  EXPECT_EQ(engine().ir_pre_groups.items[0].enable_bits, 2U);
}

TEST_F(IrPreGroupsFile, FifteenBoxWeightsAreNamed) {
  EXPECT_EQ(load(sample().set("box_weight_16", list_of(15))), prints_err(-1, "string to arrary box_weight_16 error\n"));
}

// What an image digests of an item is the description and the reserved word.
TEST_F(IrPreGroupsFile, Bytes16To35DependOnTheDescriptionAlone) {
  GroupText other = sample();
  for (const GroupKey& key : kIrPreSample) {
    if (key.offset != 16) other.set(key.name, key.other_text);
  }
  EXPECT_EQ(load_bytes(kIrPre, basic_text("2") + sample().text(1) + other.text(2)), silent_success());
  const std::vector<Bytes> items = kIrPre.get().items;
  EXPECT_TRUE(std::equal(items[0].begin(), items[0].begin() + 36, items[1].begin()));
  EXPECT_FALSE(std::equal(items[0].begin() + 36, items[0].end(), items[1].begin() + 36));
}

}  // namespace
}  // namespace vq3900::test
