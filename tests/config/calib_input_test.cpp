#include "config/calib_input.h"

#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "state/engine.h"
#include "support/calib_input_text.h"
#include "support/capture.h"
#include "support/de_input_text.h"
#include "support/elements.h"
#include "support/engine_fixture.h"

namespace vq3900::test {
namespace {

using namespace std::string_literals;

const CalibInputConfig& config() {
  return engine().calib_input;
}

Outcome load_path(const std::string& path) {
  return outcome_of([&] { return load_input_configs_path(path.c_str()); });
}

Outcome load_content(const std::string& content) {
  return outcome_of([&] { return load_input_configs_content(content.c_str()); });
}

Outcome load_file(const std::string& content) {
  const TempFile file(content);
  return load_path(file.path());
}

Outcome caught(const std::string& reason) {
  return prints_out(-3, "Caught an exception: " + reason + "\n");
}

Outcome no_section(const std::string& section) {
  return prints_err(-2, section + " section not found!\n");
}

Outcome no_key(const CalibKey& key) {
  return prints_err(-2, "Field \""s + key.key + "\" not found in section \"" + key.section + "\"\n");
}

// The keys from that one on are as in the complete text, those before it as in the other one.
void expect_other_up_to(const CalibKey& key) {
  bool before = true;
  for (const CalibKey& row : calib_keys()) {
    if (&row == &key) before = false;
    EXPECT_EQ(row.stored(config()), before ? row.other : row.value) << row.key << " with a fault in " << key.key;
  }
}

void expect_complete() {
  expect_other_up_to(calib_keys().front());
}

// --- what holds for a file and for a text in memory

struct Loader {
  const char* name;
  Outcome (*load)(const std::string&);
};

class CalibInput : public EngineTest, public testing::WithParamInterface<Loader> {
 protected:
  static Outcome load(const std::string& text) { return GetParam().load(text); }
  static Outcome load(const CalibInputText& text) { return load(text.text()); }
  static Outcome load_with(const char* key, const std::string& value) { return load(CalibInputText().set(key, value)); }

  // Loads the complete text with another value of the key, and answers what is stored for it.
  static double stored(const char* name, const std::string& value) {
    EXPECT_EQ(load_with(name, value), silent_success()) << name << " = " << value;
    for (const CalibKey& key : calib_keys()) {
      if (key.key == std::string(name)) return key.stored(config());
    }
    ADD_FAILURE() << "no key " << name;
    return 0;
  }
};

INSTANTIATE_TEST_SUITE_P(Of, CalibInput, testing::Values(Loader{"File", load_file}, Loader{"Content", load_content}),
                         [](const auto& test) { return test.param.name; });

TEST_P(CalibInput, EveryKeyReachesItsField) {
  EXPECT_EQ(load(CalibInputText()), silent_success());
  expect_complete();
}

TEST_P(CalibInput, EveryKeyReachesItsFieldAndNoOther) {
  for (const CalibKey& changed : calib_keys()) {
    EXPECT_EQ(load_with(changed.key, changed.other_text), silent_success());
    for (const CalibKey& row : calib_keys()) {
      EXPECT_EQ(row.stored(config()), &row == &changed ? row.other : row.value)
          << row.key << " with another " << changed.key;
    }
  }
}

TEST_P(CalibInput, NothingElseOfTheStateChanges) {
  const CalibInputConfig before = config();
  const Bytes state = state_bytes();
  EXPECT_EQ(load(CalibInputText()), silent_success());
  engine().calib_input = before;
  EXPECT_EQ(state_bytes(), state);
}

TEST_P(CalibInput, AbsentOptionalKeyTakesItsDefaultWhateverWasThere) {
  for (const CalibKey& key : calib_keys()) {
    if (key.required()) continue;
    EXPECT_EQ(load(CalibInputText::other()), silent_success());
    EXPECT_EQ(load(CalibInputText().remove(key.key)), silent_success());
    for (const CalibKey& row : calib_keys())
      EXPECT_EQ(row.stored(config()), &row == &key ? *key.absent : row.value) << row.key << " without " << key.key;
  }
}

TEST_P(CalibInput, RequiredKeysAloneAreEnough) {
  CalibInputText text;
  for (const CalibKey& key : calib_keys()) {
    if (!key.required()) text.remove(key.key);
  }
  EXPECT_EQ(load(CalibInputText::other()), silent_success());
  EXPECT_EQ(load(text.add("d2d", "anything", "")), silent_success());
  for (const CalibKey& key : calib_keys())
    EXPECT_EQ(key.stored(config()), key.required() ? key.value : *key.absent) << key.key;
}

TEST_P(CalibInput, AbsentRequiredKeyIsNamedAndTheKeysBeforeItAreStored) {
  for (const CalibKey& key : calib_keys()) {
    if (!key.required()) continue;
    EXPECT_EQ(load(CalibInputText()), silent_success());
    EXPECT_EQ(load(CalibInputText::other().remove(key.key)), no_key(key));
    expect_other_up_to(key);
  }
  EXPECT_EQ(load(CalibInputText()), silent_success());
  expect_complete();
}

TEST_P(CalibInput, MessagesOfAbsentKeys) {
  EXPECT_EQ(load(CalibInputText().remove("baseline")),
            prints_err(-2, "Field \"baseline\" not found in section \"basic\"\n"));
  EXPECT_EQ(load(CalibInputText().remove("lut_sample_bit")),
            prints_err(-2, "Field \"lut_sample_bit\" not found in section \"rectify\"\n"));
  EXPECT_EQ(load(CalibInputText().remove("clip_left_w_depth")),
            prints_err(-2, "Field \"clip_left_w_depth\" not found in section \"d2c\"\n"));
}

TEST_P(CalibInput, KeyOfAnotherSectionIsAbsent) {
  for (const CalibKey& key : calib_keys()) {
    if (!key.required()) continue;
    const char* const elsewhere = key.section == "d2d"s ? "basic" : "d2d";
    EXPECT_EQ(load(CalibInputText().remove(key.key).add(elsewhere, key.key, key.text)), no_key(key));
  }
  EXPECT_EQ(load(CalibInputText().remove("disp_offset").add("d2c", "disp_offset", "x")), silent_success());
  EXPECT_EQ(config().disp_offset, 0.0F);
}

// --- bad values

std::string complaint(KeyType type) {
  if (type == KeyType::kFloat) return " is not a float";
  return type == KeyType::kUint8 ? " is not a unsigned long long" : " is not a long long";
}

TEST_P(CalibInput, BadValueIsToldAndTheKeysBeforeItAreStored) {
  for (const CalibKey& key : calib_keys()) {
    for (const char* const text : {"", "x", "1 # one"}) {
      EXPECT_EQ(load(CalibInputText()), silent_success());
      EXPECT_EQ(load(CalibInputText::other().set(key.key, text)), caught(text + complaint(key.type)));
      expect_other_up_to(key);
    }
  }
  EXPECT_EQ(load(CalibInputText()), silent_success());
}

TEST_P(CalibInput, ValueOutOfTheRangeOfItsKeyIsTold) {
  for (const CalibKey& key : calib_keys()) {
    std::vector<std::pair<std::string, std::string>> rows;
    switch (key.type) {
      case KeyType::kFloat:
        rows = {{"1e400", "1e400 is not a float"}, {"-1e39", "-1e39 is not a float"}, {"1,5", "1,5 is not a float"}};
        break;
      case KeyType::kUint8:
        rows = {{"256", "field is out of UInt8 range: 256"},
                {"-1", "detect negative while parse unsigned"},
                {"1.5", "1.5 is not a unsigned long long"}};
        break;
      case KeyType::kInt8:
        rows = {{"128", "field is out of Int8 range: 128"}, {"-129", "field is out of Int8 range: -129"}};
        break;
      case KeyType::kInt32:
        rows = {{"2147483648", "field is out of Int32 range: 2147483648"},
                {"-2147483649", "field is out of Int32 range: -2147483649"}};
        break;
      default:
        rows = {{"2147483648", "field is out of Int range: 2147483648"},
                {"-2147483649", "field is out of Int range: -2147483649"},
                {"9223372036854775808", "9223372036854775808 is not a long long"}};
    }
    for (const auto& [text, reason] : rows)
      EXPECT_EQ(load_with(key.key, text), caught(reason)) << key.key;
  }
}

TEST_P(CalibInput, CamTypeOf256IsOutOfRange) {
  EXPECT_EQ(load_with("cam_type", "256"), prints_out(-3, "Caught an exception: field is out of UInt8 range: 256\n"));
}

TEST_P(CalibInput, ValuesArePrintedAsTheyAre) {
  EXPECT_EQ(load_with("baseline", "%s%n%5d"), caught("%s%n%5d is not a float"));
  EXPECT_EQ(load_with("baseline", "40.0 ; mm"), caught("40.0 ; mm is not a float"));
  const std::string longest(20000, '%');
  EXPECT_EQ(load_with("cam_type", longest), caught(longest + " is not a unsigned long long"));
}

TEST_P(CalibInput, FirstFaultInTheOrderOfReadingDecides) {
  CalibInputText text;
  text.remove("valid_scale").set("d2d_params_unit_in_R_en", "x");
  EXPECT_EQ(load(text), prints_err(-2, "Field \"valid_scale\" not found in section \"d2c\"\n"));
  text.set("clip_top_h_valid", "x");
  EXPECT_EQ(load(text), caught("x is not a long long"));
  text.set("disp_offset", "y");
  EXPECT_EQ(load(text), caught("y is not a float"));
  text.remove("lut_extend_ratio").set("ir_virtual_cy_offset", "z");
  EXPECT_EQ(load(text), prints_err(-2, "Field \"lut_extend_ratio\" not found in section \"rectify\"\n"));
  text.set("mipi_channel_status", "-1");
  EXPECT_EQ(load(text), caught("detect negative while parse unsigned"));
  text.remove("baseline");
  EXPECT_EQ(load(text), prints_err(-2, "Field \"baseline\" not found in section \"basic\"\n"));
  text.remove_section("d2c");
  EXPECT_EQ(load(text), no_section("d2c"));
}

// --- sections

TEST_P(CalibInput, MissingOrEmptySectionIsNamedAndNothingIsRead) {
  for (const char* const section : {"basic", "rectify", "d2d", "d2c"}) {
    EXPECT_EQ(load(CalibInputText()), silent_success());
    EXPECT_EQ(load(CalibInputText::other().remove_section(section)), no_section(section));
    EXPECT_EQ(load(CalibInputText::other().empty_section(section)), no_section(section));
    EXPECT_EQ(load(CalibInputText::other().remove_section(section).text() + "["s + section + "]\n; note = 1\n\n"),
              no_section(section));
    expect_complete();
  }
}

TEST_P(CalibInput, FirstMissingSectionIsNamed) {
  EXPECT_EQ(load(""s), no_section("basic"));
  EXPECT_EQ(load("; nothing\n"s), no_section("basic"));
  CalibInputText text;
  text.remove_section("d2c");
  EXPECT_EQ(load(text), no_section("d2c"));
  text.empty_section("d2d");
  EXPECT_EQ(load(text), no_section("d2d"));
  text.remove_section("rectify");
  EXPECT_EQ(load(text), no_section("rectify"));
  text.empty_section("basic");
  EXPECT_EQ(load(text), no_section("basic"));
}

TEST_P(CalibInput, SectionNamesAndKeysAreCaseSensitive) {
  EXPECT_EQ(load(CalibInputText().remove_section("d2d").text() + "[D2D]\ndisp_offset = 1\n"), no_section("d2d"));
  EXPECT_EQ(load(CalibInputText().remove("baseline").add("basic", "Baseline", "40")),
            prints_err(-2, "Field \"baseline\" not found in section \"basic\"\n"));
}

TEST_P(CalibInput, OrderOfTheTextDoesNotMatter) {
  CalibInputText text;
  EXPECT_EQ(load(text.reverse_sections().remove("baseline").add("basic", "baseline", "40.5")), silent_success());
  expect_complete();
}

TEST_P(CalibInput, SectionsMayBeSplitAndTheLastValueOfAKeyCounts) {
  EXPECT_EQ(
      load(CalibInputText().set("cam_type", "not read").text() + "[basic]\ncam_type = 3\n[other]\ncam_type = 1\n"),
      silent_success());
  expect_complete();
}

TEST_P(CalibInput, UnknownKeysAndSectionsAreIgnored) {
  EXPECT_EQ(load(CalibInputText().add("basic", "colour", "red").add("d2c", "baseline", "x").text() + "[more]\na = b\n"),
            silent_success());
  expect_complete();
}

TEST_P(CalibInput, WindowsLineEndsAndAMissingLastOneAreTaken) {
  std::string text = CalibInputText().text("\r\n");
  EXPECT_EQ(load(text), silent_success());
  expect_complete();
  text.resize(text.size() - 2);
  reset_engine();
  EXPECT_EQ(load(text), silent_success());
  expect_complete();
}

TEST_P(CalibInput, GrammarFaultIsToldAndNothingIsRead) {
  const std::string good = CalibInputText::other().text();
  const std::pair<std::string, std::string> rows[] = {
      {"baseline = 1\n" + good, "l1: ini parsing failed, field has no section"},
      {"[basic]\nbaseline = 1\ntotal\n" + good, "l3: ini parsing failed, no '=' found"},
      {"\n[basic\n" + good, "l2: ini parsing failed, section not closed"},
      {"# first\n\n[]\n" + good, "l3: ini parsing failed, section is empty"},
      {"[basic] ; first\n" + good, "l1: ini parsing failed, no end of line after section"},
      {good + "end", "l46: ini parsing failed, no '=' found"},  // behind 4 headers and 41 keys
  };
  EXPECT_EQ(load(CalibInputText()), silent_success());
  for (const auto& [text, reason] : rows) {
    EXPECT_EQ(load(text), caught(reason));
    expect_complete();
  }
}

// --- single keys

TEST_P(CalibInput, ChopsAreTruncatedTowardsZero) {
  for (const char* const key : {"src_img_left_chop", "src_img_right_chop", "src_img_top_chop", "src_img_bottom_chop"}) {
    for (const auto& [text, value] :
         {std::pair{"12.9", 12}, {"-3.7", -3}, {"0.99", 0}, {"-0.99", 0}, {"1e2", 100}, {"0x10", 16}, {"010", 10}})
      EXPECT_EQ(stored(key, text), value) << key << " = " << text;
  }
}

TEST_P(CalibInput, ChopsKeepTheirLow16Bits) {
  for (const auto& [text, value] : {std::pair{"32768", -32768},
                                    {"65535", -1},
                                    {"65536", 0},
                                    {"-32769", 32767},
                                    {"4295032832", 0},
                                    {"1e30", 0},
                                    {"-1e30", 0},
                                    {"9223372036854775808", 0},
                                    {"inf", 0},
                                    {"-inf", 0},
                                    {"nan", 0}})
    EXPECT_EQ(stored("src_img_left_chop", text), value) << text;
}

TEST_P(CalibInput, UnitOfNothingIsOne) {
  for (const char* const text : {"0", "-0", "0.0", "0.00001", "-0.00001", "9.9e-6", "1e-50"})
    EXPECT_EQ(stored("d2d_params_unit", text), 1.0) << text;
}

// The float next to 0.00001 lies below it, the one behind that above it.
TEST_P(CalibInput, OtherUnitsAreKept) {
  EXPECT_EQ(config().d2d_params_unit, 0.0F);
  EXPECT_EQ(stored("d2d_params_unit", "0.00002"), static_cast<double>(0.00002F));
  EXPECT_EQ(stored("d2d_params_unit", "-0.00002"), static_cast<double>(-0.00002F));
  EXPECT_EQ(stored("d2d_params_unit", "1.0000001e-5"), static_cast<double>(std::nextafter(0.00001F, 1.0F)));
  EXPECT_EQ(stored("d2d_params_unit", "-5"), -5.0);
  EXPECT_EQ(stored("d2d_params_unit", "inf"), HUGE_VAL);
  EXPECT_TRUE(std::isnan(stored("d2d_params_unit", "nan")));
}

TEST_P(CalibInput, RefusedUnitKeepsTheOneBefore) {
  EXPECT_EQ(load_with("d2d_params_unit", "2.5"), silent_success());
  EXPECT_EQ(load_with("d2d_params_unit", "x"), caught("x is not a float"));
  EXPECT_EQ(config().d2d_params_unit, 2.5F);
}

TEST_P(CalibInput, AbsentDepthModeFollowsTheCameraType) {
  for (const auto& [cam_type, depth_mode] :
       {std::pair{"0", 0}, {"1", 0}, {"2", 1}, {"3", 1}, {"4", -77}, {"5", -77}, {"128", -77}, {"255", -77}}) {
    EXPECT_EQ(load_with("depth_mode", "-77"), silent_success());
    EXPECT_EQ(load(CalibInputText().set("cam_type", cam_type).remove("depth_mode")), silent_success());
    EXPECT_EQ(config().depth_mode, depth_mode) << cam_type;
  }
}

TEST_P(CalibInput, AbsentDepthModeOfAnUnknownCameraTypeIsZeroInTheFirstLoad) {
  EXPECT_EQ(load(CalibInputText().set("cam_type", "5").remove("depth_mode")), silent_success());
  EXPECT_EQ(config().depth_mode, 0);
}

TEST_P(CalibInput, DepthModeThatIsThereCountsWhateverTheCameraType) {
  for (const char* const cam_type : {"0", "3", "5"}) {
    for (const auto& [text, depth_mode] : {std::pair{"0", 0}, {"1", 1}, {"127", 127}, {"-128", -128}}) {
      EXPECT_EQ(load(CalibInputText().set("cam_type", cam_type).set("depth_mode", text)), silent_success());
      EXPECT_EQ(config().depth_mode, depth_mode);
    }
  }
}

// --- getters

unsigned char got(void (*get)(unsigned char*)) {
  unsigned char out = 0xEE;
  EXPECT_EQ(outcome_of([&] {
              get(&out);
              return 0;
            }),
            silent_success());
  return out;
}

TEST_P(CalibInput, GettersAnswerZeroBeforeAnyLoad) {
  EXPECT_EQ(got(get_cam_mode), 0);
  EXPECT_EQ(got(get_d2d_params_unit_in_R_en), 0);
  EXPECT_EQ(got(get_mipi_channel_status), 0);
  EXPECT_FALSE(get_lut_enable_status());
}

TEST_P(CalibInput, GettersAnswerWhatWasLoaded) {
  EXPECT_EQ(load(CalibInputText()), silent_success());
  EXPECT_EQ(got(get_cam_mode), 1);
  EXPECT_EQ(got(get_d2d_params_unit_in_R_en), 1);
  EXPECT_EQ(got(get_mipi_channel_status), 2);
  EXPECT_TRUE(get_lut_enable_status());
  EXPECT_EQ(load(CalibInputText::other()), silent_success());
  EXPECT_EQ(got(get_cam_mode), 0);
  EXPECT_EQ(got(get_d2d_params_unit_in_R_en), 255);
  EXPECT_EQ(got(get_mipi_channel_status), 255);
  EXPECT_FALSE(get_lut_enable_status());
}

TEST_P(CalibInput, CameraModeIs1ForTypes2And3) {
  for (int type = 0; type < 256; ++type) {
    engine().calib_input.cam_type = static_cast<std::uint8_t>(type);
    unsigned char mode = 0xEE;
    get_cam_mode(&mode);
    EXPECT_EQ(mode, type == 2 || type == 3 ? 1 : 0) << type;
  }
}

TEST_P(CalibInput, LutIsEnabledForDistortTypes1And2) {
  for (int type = 0; type < 256; ++type) {
    engine().calib_input.distort_type = static_cast<std::uint8_t>(type);
    EXPECT_EQ(get_lut_enable_status(), type == 1 || type == 2) << type;
  }
  EXPECT_EQ(load_with("distort_type", "3"), silent_success());
  EXPECT_FALSE(get_lut_enable_status());
}

TEST_P(CalibInput, GettersDoNothingWithANullPointer) {
  for (const auto get : {get_cam_mode, get_d2d_params_unit_in_R_en, get_mipi_channel_status}) {
    EXPECT_EQ(outcome_of([&] {
                get(nullptr);
                return 0;
              }),
              silent_success());
  }
}

// --- paths

using CalibInputPath = EngineTest;

constexpr const char* kPathTooLong = "Error: File name exceeds the maximum length.\n";

TEST_F(CalibInputPath, Of256BytesIsAcceptedAndOf257Refused) {
  const TempFile file(CalibInputText().text());
  EXPECT_EQ(load_path(lengthened(file.path(), 257)), prints_err(4096, kPathTooLong));
  EXPECT_EQ(load_path(std::string(100000, 'x')), prints_err(4096, kPathTooLong));
  EXPECT_EQ(config().baseline, 0.0F);
  EXPECT_EQ(load_path(lengthened(file.path(), 256)), silent_success());
  expect_complete();
}

TEST_F(CalibInputPath, IsMeasuredInBytes) {
  std::string path = "x";
  for (int i = 0; i < 128; ++i)
    path += "\xC3\xA9";
  EXPECT_EQ(load_path(path), prints_err(4096, kPathTooLong));
}

TEST_F(CalibInputPath, ThatCannotBeOpenedIsPrintedAsItIs) {
  EXPECT_EQ(load_input_configs_content(CalibInputText().text().c_str()), 0);
  const std::string missing = TempFile::unused_path();
  for (const std::string& path :
       {missing, missing + "/%s%n.ini", missing + " with blanks", lengthened(missing, 256), ""s})
    EXPECT_EQ(load_path(path), prints_err(-1, "Cannot open file " + path + "\n"));
  expect_complete();
}

TEST_F(CalibInputPath, OfAFolderCannotBeOpened) {
  const std::string folder = testing::TempDir();
  EXPECT_EQ(load_path(folder), prints_err(-1, "Cannot open file " + folder + "\n"));
}

TEST_F(CalibInputPath, NullCannotBeOpened) {
  EXPECT_EQ(outcome_of([] { return load_input_configs_path(nullptr); }), prints_err(-1, "Cannot open file \n"));
}

TEST_F(CalibInputPath, NullContentIsRefusedAndChangesNothing) {
  EXPECT_EQ(load_input_configs_content(CalibInputText().text().c_str()), 0);
  EXPECT_EQ(outcome_of([] { return load_input_configs_content(nullptr); }),
            prints_err(-2, "Error: config param is invalid.\n"));
  expect_complete();
}

// --- the descriptions of the keys

TEST(CalibInputKeys, AreDescribedInTheOrderOfReading) {
  const std::vector<KeyDescription> keys = calib_input_keys();
  ASSERT_EQ(keys.size(), calib_keys().size());
  for (std::size_t i = 0; i < keys.size(); ++i) {
    const CalibKey& expected = calib_keys()[i];
    EXPECT_STREQ(keys[i].section, expected.section);
    EXPECT_STREQ(keys[i].name, expected.key);
    EXPECT_EQ(keys[i].type, expected.type) << expected.key;
    EXPECT_EQ(keys[i].count, 1) << expected.key;
    EXPECT_EQ(keys[i].required, expected.required()) << expected.key;
    EXPECT_EQ(keys[i].beside, nullptr) << expected.key;
  }
}

}  // namespace
}  // namespace vq3900::test
