#include "config/de_input.h"

#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "state/engine.h"
#include "support/capture.h"
#include "support/de_input_text.h"
#include "support/engine_fixture.h"
#include "support/registers.h"

namespace vq3900::test {
namespace {

using namespace std::string_literals;
using Values = KeyCase::Values;

const KeyCase& key_case(const std::string& section, const std::string& key) {
  return *std::ranges::find_if(de_input_key_cases(),
                               [&](const KeyCase& row) { return row.section == section && row.key == key; });
}

// The complete text with another value for every key.
DeInputText other_text() {
  DeInputText text;
  for (const KeyCase& row : de_input_key_cases())
    text.set(row.section, row.key, row.other_text);
  return text;
}

// Which of its values the keys of a section should have.
enum class Loaded { kZero, kFirst, kOther };

class DeInput : public EngineTest {
 protected:
  static const DeInputConfig& input() { return engine().input; }

  static Outcome load_bytes(std::string_view bytes) {
    const TempFile file(bytes);
    return outcome_of([&] { return load_de_input_configs(file.path()); });
  }

  static Outcome load(const DeInputText& text) { return load_bytes(text.text()); }

  static Outcome load_with(const char* section, const char* key, const std::string& value) {
    return load(DeInputText().set(section, key, value));
  }

  // Every one of the texts loads silently and is stored as the number.
  static void expect_stored(const char* section, const char* key, std::uint32_t number,
                            std::initializer_list<const char*> texts) {
    for (const char* const text : texts) {
      EXPECT_EQ(load_with(section, key, text), silent_success()) << text;
      EXPECT_EQ(key_case(section, key).stored(input()), Values{static_cast<double>(number)}) << text;
    }
  }

  static std::string description() {
    return {std::begin(input().mode.record.dpu_desc), std::end(input().mode.record.dpu_desc)};
  }

  static void expect_section(const std::string& section, Loaded loaded) {
    for (const KeyCase& row : de_input_key_cases()) {
      if (section != row.section) continue;
      const Values zero(row.value.size());
      const Values& expected = loaded == Loaded::kZero ? zero : loaded == Loaded::kFirst ? row.value : row.other;
      EXPECT_EQ(row.stored(input()), expected) << section << " " << row.key;
    }
  }

  // In the order mode, basic, disparity, extend_chop, gpm, scheme.
  static void expect_sections(std::initializer_list<Loaded> loaded) {
    const char* const names[] = {"mode", "basic", "disparity", "extend_chop", "gpm", "scheme"};
    std::size_t i = 0;
    for (const Loaded state : loaded)
      expect_section(names[i++], state);
  }

  static void expect_all(Loaded loaded) { expect_sections({loaded, loaded, loaded, loaded, loaded, loaded}); }
};

// --- every key

TEST_F(DeInput, EveryKeyReachesItsField) {
  EXPECT_EQ(load({}), silent_success());
  expect_all(Loaded::kFirst);
  EXPECT_EQ(description(), "mono 1280x800\0\0\0"s);
  EXPECT_EQ(input().scheme.record.scheme_flags, 0x3FU);
  EXPECT_EQ(input().scheme.record.reserved, 0.0);
  EXPECT_EQ(input().disparity.smooth_enable_flag, 0);
}

TEST_F(DeInput, EveryKeyReachesItsFieldAndNoOther) {
  for (const KeyCase& changed : de_input_key_cases()) {
    EXPECT_EQ(load_with(changed.section, changed.key, changed.other_text), silent_success());
    for (const KeyCase& row : de_input_key_cases()) {
      EXPECT_EQ(row.stored(input()), &row == &changed ? changed.other : row.value)
          << row.key << " with another " << changed.key;
    }
  }
}

TEST_F(DeInput, KeysAreThoseOfTheTablesInTheirOrder) {
  std::vector<std::string> expected;
  for (const KeyCase& row : de_input_key_cases()) {
    expected.push_back(row.section + " "s + row.key);
    if (row.key == "laser_type"s) expected.push_back("mode dpu_desc");
    if (row.key == "d2d_params_unit"s) expected.push_back("scheme d2d_params_unit_in_R_en");
  }
  std::vector<std::string> actual;
  for (const KeyDescription& key : de_input_keys())
    actual.push_back(key.section + " "s + key.name);
  EXPECT_EQ(actual, expected);
}

TEST_F(DeInput, SecondLoadReplacesEverything) {
  EXPECT_EQ(load(other_text().set("mode", "dpu_desc", "sixteen bytes ok")), silent_success());
  expect_all(Loaded::kOther);
  EXPECT_EQ(load(DeInputText().set("mode", "dpu_desc", "short")), silent_success());
  expect_all(Loaded::kFirst);
  EXPECT_EQ(description(), "short\0\0\0\0\0\0\0\0\0\0\0"s);
}

// --- nothing to load

TEST_F(DeInput, FileWithoutSectionModeSucceedsAndTouchesNothing) {
  load({});
  EXPECT_EQ(load(other_text().remove_section("mode")), silent_success());
  EXPECT_EQ(load(other_text().empty_section("mode")), silent_success());  // a header alone is no section
  EXPECT_EQ(load(other_text().remove_section("mode").remove_section("gpm")), silent_success());
  EXPECT_EQ(load(other_text().remove_section("mode").set("basic", "cam_mode", "x")), silent_success());
  EXPECT_EQ(load_bytes(""), silent_success());
  EXPECT_EQ(load_bytes("# nothing here\n\n"), silent_success());
  EXPECT_EQ(load_bytes("[Mode]\nversion = 1\n[ mode ]\nversion = 1\n"), silent_success());
  expect_all(Loaded::kFirst);
}

// --- the file

TEST_F(DeInput, FileThatCannotBeOpenedIsNamed) {
  load({});
  const std::string missing = TempFile::unused_path();
  for (const std::string& path : {missing, testing::TempDir(), ""s}) {
    EXPECT_EQ(outcome_of([&] { return load_de_input_configs(path.c_str()); }),
              prints_err(-1, "Cannot open file" + path + "\n"));
  }
  expect_all(Loaded::kFirst);
}

TEST_F(DeInput, NullPathCountsAsAFileThatCannotBeOpened) {
  const Outcome outcome = outcome_of([] { return load_de_input_configs(nullptr); });
  EXPECT_EQ(outcome.code, -1);
  EXPECT_EQ(outcome.out, "");
  EXPECT_TRUE(outcome.err.starts_with("Cannot open file")) << outcome.err;
}

TEST_F(DeInput, LineEndsAndSizeOfTheFileDoNotMatter) {
  const std::string text = DeInputText().text();
  std::string windows;
  for (const char c : text)
    windows += c == '\n' ? "\r\n"s : std::string(1, c);
  std::string many_comments;
  for (int i = 0; i < 50'000; ++i)
    many_comments += "; sixty characters that say nothing about the depth engine..\n";
  for (const std::string& bytes : {windows,
                                   text.substr(0, text.size() - 1),
                                   windows.substr(0, windows.size() - 1),
                                   many_comments + text + many_comments}) {
    reset_engine();
    EXPECT_EQ(load_bytes(bytes), silent_success());
    expect_all(Loaded::kFirst);
  }
}

TEST_F(DeInput, TextThatIsNoIniIsRefusedSilentlyAndTouchesNothing) {
  load({});
  const std::string other = other_text().text();
  std::mt19937 random(5);
  std::string binary;
  for (int i = 0; i < 5000; ++i)
    binary += static_cast<char>(random() & 0xFF);
  for (const std::string& bytes : {"total"s,
                                   "\xEF\xBB\xBF" + other,
                                   other + "[gpm",
                                   other + "  # note\n",
                                   other + "\0"s,
                                   "[]\n" + other,
                                   "[mode] # first\n" + other,
                                   binary,
                                   std::string(100'000, '\0')}) {
    EXPECT_EQ(load_bytes(bytes), silent(-5)) << bytes.substr(0, 40);
  }
  expect_all(Loaded::kFirst);
}

TEST_F(DeInput, UnknownKeysAndSectionsAreIgnoredAndLastValuesWin) {
  std::string text = DeInputText().set("mode", "colour", "blue").set("basic", "cam_mode", "nonsense").text();
  text += "[extra]\nk = v\n[basic]\ncam_mode = 7\ncam_mode = 0\n";
  EXPECT_EQ(load_bytes(text), silent_success());
  expect_all(Loaded::kFirst);
}

// --- missing sections

TEST_F(DeInput, MissingSectionIsNamedAndNothingIsTouched) {
  load({});
  for (const std::string section : {"basic", "disparity", "extend_chop", "gpm"}) {
    const Outcome expected = prints_err(-6, section + " section not found!\n");
    EXPECT_EQ(load(other_text().remove_section(section)), expected);
    EXPECT_EQ(load(other_text().empty_section(section)), expected);
    EXPECT_EQ(load(other_text().remove_section(section).set("mode", "laser_type", "x")), expected);
  }
  expect_all(Loaded::kFirst);
}

TEST_F(DeInput, FirstMissingSectionIsNamed) {
  const std::vector<std::string> order = {"basic", "disparity", "extend_chop", "gpm"};
  DeInputText text;
  for (std::size_t i = order.size(); i-- > 0;) {  // from the last to the first
    text.remove_section(order[i]);
    EXPECT_EQ(load(text), prints_err(-6, order[i] + " section not found!\n"));
  }
}

TEST_F(DeInput, FileWithoutSectionSchemeClearsTheScheme) {
  using enum Loaded;
  for (const DeInputText& text : {other_text().remove_section("scheme"), other_text().empty_section("scheme")}) {
    load({});
    EXPECT_EQ(load(text), silent_success());
    expect_sections({kOther, kOther, kOther, kOther, kOther, kZero});
    EXPECT_EQ(input().scheme.record.scheme_flags, 0U);
  }
}

// --- missing keys and bad values

// What a fault of the key's value makes of the load.
Outcome list_fault(const KeyDescription& key) {
  const std::string section = key.section;
  std::string name = key.name;
  if (section == "extend_chop") name = "extend";
  if (name == "x") name = "x_coordinate";
  if (name == "y" || name == "enable_bits_per_row") name = "y_coordinate";
  const int code = section == "mode" ? -7 : section == "disparity" ? -9 : section == "extend_chop" ? -10 : -11;
  return prints_err(code, "string to arrary " + name + " error\n");
}

bool is_list(const KeyDescription& key) {
  return key.type == KeyType::kUint16List || key.type == KeyType::kInt32List || key.type == KeyType::kDoubleList;
}

bool is_text(const KeyDescription& key) {
  return key.type == KeyType::kText || key.type == KeyType::kVersion;
}

TEST_F(DeInput, MissingKeyFailsByItsType) {
  for (const KeyDescription& key : de_input_keys()) {
    const bool optional = key.section == "scheme"s || key.name == "depth_mode"s;
    Outcome expected = optional || is_text(key) ? silent_success() : is_list(key) ? list_fault(key) : silent(-5);
    if (key.name == "d2d_params_unit_in_R_en"s) {
      expected = prints_err(-12, "Field d2d_params_unit_in_R_en not found in section scheme\n");
    }
    EXPECT_EQ(load(DeInputText().remove(key.section, key.name)), expected) << key.section << " " << key.name;
  }
}

TEST_F(DeInput, EmptyValueFailsLikeAMissingKeyEvenOfAnOptionalOne) {
  for (const KeyDescription& key : de_input_keys()) {
    const Outcome expected = is_text(key) ? silent_success() : is_list(key) ? list_fault(key) : silent(-5);
    EXPECT_EQ(load_with(key.section, key.name, ""), expected) << key.section << " " << key.name;
  }
}

TEST_F(DeInput, BadValueFailsByTheTypeOfItsKey) {
  const auto bad_values = [](KeyType type) -> std::vector<const char*> {
    switch (type) {
      case KeyType::kBool:
        return {"2", "yes", "-1", "{1}"};
      case KeyType::kUint8:
        return {"256", "-1", "-0", "1.5", "TRUE", "1 # one"};
      case KeyType::kInt:
      case KeyType::kInt32:
        return {"2147483648", "-2147483649", "1.0", "0b1", "08", "true"};
      case KeyType::kUint32:
        return {"4294967296", "-1", "1e3"};
      case KeyType::kFloat:
        return {"1e400", "-1e39", "1,5", "1f", "0.1 mm"};
      default:
        return {};
    }
  };
  for (const KeyDescription& key : de_input_keys()) {
    for (const char* const value : bad_values(key.type))
      EXPECT_EQ(load_with(key.section, key.name, value), silent(-5)) << key.section << " " << key.name << " " << value;
  }
}

// "1,1,1"
std::string ones(int count) {
  std::string list = "1";
  while (--count > 0)
    list += ",1";
  return list;
}

TEST_F(DeInput, ListOfTheWrongLengthFailsNamingItsKeyAndStaysCleared) {
  for (const KeyDescription& key : de_input_keys()) {
    if (!is_list(key)) continue;
    const std::string right = ones(key.count);
    for (const std::string& value : {"{" + ones(key.count - 1) + "}",
                                     "{" + ones(key.count + 1) + "}",
                                     "{" + ones(1000) + "}",
                                     "{}"s,
                                     "{"s,
                                     right,
                                     "{" + right,
                                     right + "}"}) {
      load({});
      EXPECT_EQ(load_with(key.section, key.name, value), list_fault(key)) << key.name << " " << value.substr(0, 60);
      const KeyCase& row = key_case(key.section, key.name);
      EXPECT_EQ(row.stored(input()), Values(row.value.size())) << key.name << " " << value.substr(0, 60);
    }
    EXPECT_EQ(load_with(key.section, key.name, "{" + right + "}"), silent_success()) << key.name;
  }
}

TEST_F(DeInput, FirstFaultDecides) {
  DeInputText text;
  text.set("scheme", "disp_offset", "x").set("gpm", "y", "{}").set("extend_chop", "chop", "{}");
  EXPECT_EQ(load(text), prints_err(-10, "string to arrary extend error\n"));
  text.set("disparity", "sp_coef", "{}").set("basic", "depth_unit", "0.3");
  EXPECT_EQ(load(text), prints_err(-8, "depth_unit parse error\n"));
  text.set("mode", "chop_out_res", "{}").set("mode", "in_ir_res", "640,480");
  EXPECT_EQ(load(text), prints_err(-7, "string to arrary in_ir_res error\n"));
  text.set("mode", "laser_type", "-1");
  EXPECT_EQ(load(text), silent(-5));
}

// --- what a failed load leaves behind

TEST_F(DeInput, FailureInModeLeavesTheSectionsBehindItFromTheEarlierLoad) {
  using enum Loaded;
  load({});
  EXPECT_EQ(load(other_text().set("mode", "chop_out_res", "{}")),
            prints_err(-7, "string to arrary chop_out_res error\n"));
  EXPECT_EQ(input().mode.version, 0x393837U);
  EXPECT_EQ(input().mode.record.in_ir_res[0], 640);
  EXPECT_EQ(input().mode.record.chop_out_res[0], 0);
  for (const char* const section : {"basic", "disparity", "extend_chop", "gpm", "scheme"})
    expect_section(section, kFirst);
}

TEST_F(DeInput, FailureInBasicClearsTheSectionsBehindItButTheScheme) {
  using enum Loaded;
  load({});
  EXPECT_EQ(load(other_text().set("basic", "depth_unit", "0.3")), prints_err(-8, "depth_unit parse error\n"));
  EXPECT_EQ(input().basic.depth_sign, 254);  // read before the fault
  EXPECT_EQ(input().basic.depth_unit, 0);
  expect_section("mode", kOther);
  for (const char* const section : {"disparity", "extend_chop", "gpm"})
    expect_section(section, kZero);
  expect_section("scheme", kFirst);
}

TEST_F(DeInput, FailureInDisparityKeepsWhatWasReadBefore) {
  using enum Loaded;
  load({});
  EXPECT_EQ(load(other_text().set("disparity", "lrc_thresh", "x")), silent(-5));
  EXPECT_EQ(input().disparity.pre_win_size, 255);
  EXPECT_EQ(input().disparity.grow_disp_diff_thr, -1);
  EXPECT_EQ(input().disparity.shadow_win_size, 0);
  expect_section("basic", kOther);
  expect_section("gpm", kZero);
}

TEST_F(DeInput, FailureInExtendChopStoresNoneOfItsLists) {
  using enum Loaded;
  load({});
  for (const char* const key : {"extend_tar", "extend_ref", "chop"}) {
    EXPECT_EQ(load(other_text().set("extend_chop", key, "{1,2,3}")),
              prints_err(-10, "string to arrary extend error\n"));
    expect_sections({kOther, kOther, kOther, kZero, kZero, kFirst});
  }
}

TEST_F(DeInput, FailureInGpmLeavesTheSchemeFromTheEarlierLoad) {
  using enum Loaded;
  load({});
  EXPECT_EQ(load(other_text().set("gpm", "enable_bits_per_row", "{1,2,3,4,5,6,7,8,9,8,7,6,5,4,3}")),
            prints_err(-11, "string to arrary y_coordinate error\n"));
  EXPECT_EQ(input().gpm.y[0], 1);
  EXPECT_EQ(input().gpm.enable_bits_per_row[0], 0);
  EXPECT_EQ(input().gpm.texture_t0, 0);
  expect_section("extend_chop", kOther);
  expect_section("scheme", kFirst);
}

TEST_F(DeInput, FailureInSchemeKeepsItsKeysReadBefore) {
  load({});
  EXPECT_EQ(load(other_text().remove("scheme", "d2d_params_unit_in_R_en")),
            prints_err(-12, "Field d2d_params_unit_in_R_en not found in section scheme\n"));
  EXPECT_EQ(bytes_of(input().scheme.record), bytes_of(dpu_scheme_config{20, 0, 0, 0, 0.0}));
  expect_section("gpm", Loaded::kOther);
  EXPECT_EQ(load({}), silent_success());
  expect_all(Loaded::kFirst);
}

// --- single keys

TEST_F(DeInput, VersionPacksCharacterCodes) {
  expect_stored("mode", "version", 0x31323334, {"1.2.3.4"});
  expect_stored("mode", "version", 0x3132, {"10.2", "..1..2..", "1 .2 "});
  expect_stored("mode", "version", 0x32333435, {"1.2.3.4.5"});
  expect_stored("mode", "version", 0x37, {"7", ".7"});
  expect_stored("mode", "version", 0xC378, {"\xC3\xA9.x"});
  expect_stored("mode", "version", 0, {"", "..."});
}

TEST_F(DeInput, DescriptionOf16BytesIsKept) {
  EXPECT_EQ(load_with("mode", "dpu_desc", "0123456789abcdef"), silent_success());
  EXPECT_EQ(description(), "0123456789abcdef");
  EXPECT_EQ(input().mode.record.laser_type, 3U);
}

TEST_F(DeInput, LongerDescriptionIsRefused) {
  for (const std::string& text : {"0123456789abcdefg"s, std::string(100'000, 'x')}) {
    load({});
    EXPECT_EQ(load_with("mode", "dpu_desc", text), prints_err(-7, "dpu_desc is longer than 16 bytes\n"));
    EXPECT_EQ(description(), std::string(16, '\0'));
    EXPECT_EQ(input().mode.record.laser_type, 3U);    // read before
    EXPECT_EQ(input().mode.record.in_ir_res[0], 0U);  // not read
  }
}

TEST_F(DeInput, MissingDescriptionAndVersionAreEmpty) {
  EXPECT_EQ(load(DeInputText().remove("mode", "dpu_desc").remove("mode", "version")), silent_success());
  EXPECT_EQ(description(), std::string(16, '\0'));
  EXPECT_EQ(input().mode.version, 0U);
}

TEST_F(DeInput, AbsentDepthModeCopiesTheCameraMode) {
  EXPECT_EQ(load(DeInputText().set("basic", "cam_mode", "200").remove("basic", "depth_mode")), silent_success());
  EXPECT_EQ(input().basic.depth_mode, 200);
}

TEST_F(DeInput, DepthSignKeepsItsLowByte) {
  expect_stored("basic", "depth_sign", 0, {"0", "256", "-2147483648"});
  expect_stored("basic", "depth_sign", 1, {"1", "257"});
  expect_stored("basic", "depth_sign", 255, {"-1"});
}

TEST_F(DeInput, DepthUnitIsMatchedWithATolerance) {
  expect_stored("basic", "depth_unit", 0, {"0.1", "0.10005", "0.09995", "0x1.999999999999ap-4"});
  expect_stored("basic", "depth_unit", 1, {"0.2", "0.20009"});
  expect_stored("basic", "depth_unit", 2, {"0.4", "0.39991"});
  expect_stored("basic", "depth_unit", 3, {"0.8", "8e-1"});
  expect_stored("basic", "depth_unit", 4, {"1.6", "1.60009"});
}

TEST_F(DeInput, OtherDepthUnitsAreRefused) {
  for (const char* const text :
       {"0.3", "0", "1", "3.2", "-0.1", "0.10011", "0.09989", "1.60011", "nan", "inf", "1e-50"})
    EXPECT_EQ(load_with("basic", "depth_unit", text), prints_err(-8, "depth_unit parse error\n")) << text;
}

TEST_F(DeInput, OnlyTileOverlapYTraverseIsRead) {
  EXPECT_EQ(load(DeInputText().remove("disparity", "tile_overlap_y_traverse").set("disparity", "tile_overlap_y", "32")),
            silent(-5));
  EXPECT_EQ(load_with("disparity", "tile_overlap_y", "not even a number"), silent_success());
  EXPECT_EQ(input().disparity.tile_overlap_y_traverse, 32);
}

TEST_F(DeInput, LowestToleranceOfTheGlobalPointsIsItsOwnNegative) {
  EXPECT_EQ(load_with("gpm", "gp_ref_dy_t", "-2147483648"), silent_success());
  EXPECT_EQ(input().gpm.gp_ref_dy_t, -2147483647 - 1);
  EXPECT_EQ(input().gpm.gp_ref_dy_t_neg, -2147483647 - 1);
}

// --- scheme

TEST_F(DeInput, DispOffsetIsRoundedToTens) {
  expect_stored("scheme", "disp_offset", 20, {"15", "24.9"});
  expect_stored("scheme", "disp_offset", 10, {"14.9", "5"});
  expect_stored("scheme", "disp_offset", 30, {"25"});
  expect_stored("scheme", "disp_offset", 100, {"104.99999"});
  expect_stored("scheme", "disp_offset", 0, {"0", "4.99", "-3", "nan", "inf", "-inf", "1e30", "-1e30"});
  expect_stored("scheme", "disp_offset", 0xFFFFFFEC, {"-15"});
  expect_stored("scheme", "disp_offset", 0xFFFFFFF6, {"-14.9"});
  expect_stored("scheme", "disp_offset", 1410065408, {"1e10"});
  expect_stored("scheme", "disp_offset", 4, {"4294967290"});
}

TEST_F(DeInput, RefDistIsRoundedToHundreds) {
  expect_stored("scheme", "ref_dist", 300, {"250"});
  expect_stored("scheme", "ref_dist", 200, {"249.9", "150"});
  expect_stored("scheme", "ref_dist", 100, {"50"});
  expect_stored("scheme", "ref_dist", 0, {"49.9", "nan", "inf", "-inf", "1e30", "-1e30"});
  expect_stored("scheme", "ref_dist", 0xFFFFFED4, {"-250"});
  expect_stored("scheme", "ref_dist", 705032704, {"5e9"});
}

TEST_F(DeInput, UnitIsStoredInHundredthsOfASinglePrecisionProduct) {
  expect_stored("scheme", "d2d_params_unit", 50, {"0.5"});
  expect_stored("scheme", "d2d_params_unit", 0xFFFFFFCE, {"-0.5"});
  expect_stored("scheme", "d2d_params_unit", 13, {"0.125"});
  expect_stored("scheme", "d2d_params_unit", 429496704, {"4294967"});
  expect_stored("scheme", "d2d_params_unit", 0, {"0", "0.00001", "-0.00001", "nan", "inf", "3e38", "1e30"});
  // The float next to 0.005 lies below it, but its hundredfold as a float is 0.5; so is it with 0.015.
  expect_stored("scheme", "d2d_params_unit", 1, {"0.005"});
  expect_stored("scheme", "d2d_params_unit", 0xFFFFFFFF, {"-0.005"});
  expect_stored("scheme", "d2d_params_unit", 2, {"0.015"});
}

TEST_F(DeInput, UnitThatIsNotInRIsStoredAs0) {
  EXPECT_EQ(load_with("scheme", "d2d_params_unit_in_R_en", "0"), silent_success());
  EXPECT_EQ(input().scheme.record.d2d_params_unit, 0U);
  EXPECT_EQ(load_with("scheme", "d2d_params_unit_in_R_en", "2"), silent_success());
  EXPECT_EQ(input().scheme.record.d2d_params_unit, 50U);
}

TEST_F(DeInput, SwitchOfAnAbsentUnitIsNotLookedAt) {
  EXPECT_EQ(load(DeInputText().remove("scheme", "d2d_params_unit").set("scheme", "d2d_params_unit_in_R_en", "x")),
            silent_success());
  EXPECT_EQ(input().scheme.record.d2d_params_unit, 0U);
}

TEST_F(DeInput, AbsentSchemeKeysAreZeroAndTheFlagsOfBasicStay) {
  EXPECT_EQ(load(DeInputText().empty_section("scheme").set("scheme", "anything", "1")), silent_success());
  EXPECT_EQ(bytes_of(input().scheme.record), bytes_of(dpu_scheme_config{0, 0, 0, 0x3, 0.0}));
}

TEST_F(DeInput, FlagsTakeTheLowestBitOfTheirKeys) {
  const std::pair<const char*, std::uint32_t> flags[] = {{"distort_type", 0x01},
                                                         {"mono_lut_sbg2r", 0x04},
                                                         {"mono_lut_rectify", 0x08},
                                                         {"hw_d2d_en", 0x10},
                                                         {"mipi_channel_status", 0x20}};
  for (const auto& [key, bit] : flags) {
    for (const int value : {0, 1, 2, 3, 128, 129, 254, 255}) {
      EXPECT_EQ(load_with(bit == 1 ? "basic" : "scheme", key, std::to_string(value)), silent_success());
      EXPECT_EQ(input().scheme.record.scheme_flags, value % 2 == 0 ? 0x3F & ~bit : 0x3F) << key << " " << value;
    }
  }
  EXPECT_EQ(load_with("basic", "sbg_en", "false"), silent_success());
  EXPECT_EQ(input().scheme.record.scheme_flags, 0x3DU);
}

TEST_F(DeInput, ErrorTextIsNotTheLibrarysLastError) {
  const char* const before = de_get_error_str();
  load_with("basic", "depth_unit", "0.3");
  load(DeInputText().remove_section("gpm"));
  EXPECT_EQ(de_get_error_str(), before);
}

}  // namespace
}  // namespace vq3900::test
