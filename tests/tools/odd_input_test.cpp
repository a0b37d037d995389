// Configurations that no editor for INI texts wrote, and values that only look like lists, given to check and apply.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "support/capture.h"
#include "support/de_input_text.h"
#include "support/numbers.h"
#include "support/sample_texts.h"
#include "support/tool_runs.h"

namespace vq3900::test {
namespace {

using nlohmann::json;
using testing::HasSubstr;
using OddInput = ToolTest;

std::string with_line_ends(const std::string& text, const std::string& line_end) {
  std::string changed;
  for (const char character : text)
    changed += character == '\n' ? line_end : std::string(1, character);
  return changed;
}

std::string random_bytes(std::size_t size) {
  Random random(3900);
  std::string bytes(size, '\0');
  std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<char>(random.word() >> 24); });
  return bytes;
}

// UTF-16, little-endian, behind its mark.
std::string utf16(const std::string& text) {
  std::string wide = "\xFF\xFE";
  for (const char character : text)
    wide += {character, '\0'};
  return wide;
}

constexpr const char* kByteOrderMark = "\xEF\xBB\xBF";

// --- lists

struct ListRow {
  const char* name;
  const char* value;
  const char* complaint;
};

class StrictList : public ToolTest, public testing::WithParamInterface<ListRow> {};

TEST_P(StrictList, IsRefusedByCheckWithWhatIsAccepted) {
  const std::string text = with(stereo(), "in_ir_res", std::string("in_ir_res = ") + GetParam().value);
  const TempFile file(text);
  const std::string path = file.path();
  EXPECT_EQ(
      run({"check", path}),
      prints_out(
          1, path + ":16: error: mode.in_ir_res: " + GetParam().complaint + "\n" + path + ": 1 error, 0 warnings\n"));
}

constexpr const char* kOutOfRange = "66816 is out of range; accepted: 1 to 4095";

INSTANTIATE_TEST_SUITE_P(
    Lists, StrictList,
    testing::Values(ListRow{"both_wrap_to_a_size", "{66816,66336}", kOutOfRange},
                    ListRow{"first_wraps", "{66816,800}", kOutOfRange},
                    ListRow{"second_wraps", "{1280,66336}", "66336 is out of range; accepted: 1 to 4095"},
                    ListRow{"both_with_letters",
                            "{1280x,800foo}",
                            "'1280x' is not a number; accepted: 2 numbers in braces, each 1 to 4095"},
                    ListRow{"second_with_letters",
                            "{1280,800foo}",
                            "'800foo' is not a number; accepted: 2 numbers in braces, each 1 to 4095"}),
    [](const auto& test) { return std::string(test.param.name); });

// --- bytes that are no UTF-8

TEST_F(OddInput, DescriptionThatIsNoUtf8IsReplacedInJson) {
  const TempFile file(with(stereo(), "dpu_desc", "dpu_desc = a\xFF\xE2\x82z"));
  const Outcome applied = run({"apply", "--json", file.path()});
  EXPECT_EQ(applied.code, 0) << applied.err;
  EXPECT_EQ(json::parse(applied.out).at("description"), "a\xEF\xBF\xBD\xEF\xBF\xBDz");
  const Outcome checked = run({"check", "--json", file.path()});
  EXPECT_EQ(checked.code, 0);
  EXPECT_EQ(json::parse(checked.out).at("errors"), 0);
}

TEST_F(OddInput, NumberThatIsNoUtf8IsQuotedInJsonWithReplacements) {
  const TempFile file(with(stereo(), "laser_type", "laser_type = \xFF\xFE\x80"));
  const Outcome checked = run({"check", "--json", file.path()});
  EXPECT_EQ(checked.code, 1);
  const json report = json::parse(checked.out);
  EXPECT_EQ(report.at("errors"), 1);
  EXPECT_THAT(report.at("findings").at(0).dump(), HasSubstr("mode.laser_type"));
  EXPECT_THAT(report.at("findings").at(0).dump(), HasSubstr("\xEF\xBF\xBD"));
  const Outcome applied = run({"apply", "--json", file.path()});
  EXPECT_EQ(applied.code, 1);
  EXPECT_EQ(json::parse(applied.out).at("steps").back().at("code"), -5);
}

TEST_F(OddInput, SectionAndKeyNamesThatAreNoUtf8AreJson) {
  const TempFile file(stereo() + "\n[odd\xFF]\nk\x80y = \xC3(\n");
  const json report = json::parse(run({"check", "--json", file.path()}).out);
  EXPECT_EQ(report.at("errors"), 0);
  EXPECT_EQ(report.at("findings").size(), 1U);
}

// --- other files

TEST_F(OddInput, CarriageReturnsBeforeTheLineEndsChangeNothing) {
  const TempFile plain(stereo());
  const TempFile other(with_line_ends(stereo(), "\r\n"));
  const std::string path = other.path();
  EXPECT_EQ(run({"check", path}), prints_out(0, path + ": 0 errors, 0 warnings\n"));
  const Outcome expected = run({"apply", "--json", plain.path()});
  reset_engine();
  EXPECT_EQ(run({"apply", "--json", path}), expected);
  EXPECT_EQ(expected.code, 0);
}

TEST_F(OddInput, ByteOrderMarkIsNamed) {
  const TempFile file(kByteOrderMark + stereo());
  const std::string path = file.path();
  const Outcome checked = run({"check", path});
  EXPECT_EQ(checked.code, 1);
  EXPECT_THAT(checked.out, HasSubstr(path + ":1: error: "));
  EXPECT_THAT(checked.out, HasSubstr("the file starts with a byte-order mark, which is not skipped\n"));
  const Outcome applied = run({"apply", path});
  EXPECT_EQ(applied.code, 1);
  EXPECT_EQ(
      applied.err,
      "vq3900-tool: " + path + ": load configuration failed with code -5; try 'vq3900-tool check " + path + "'\n");
}

struct BinaryRow {
  const char* name;
  std::string bytes;
};

class BinaryInput : public ToolTest, public testing::WithParamInterface<BinaryRow> {};

TEST_P(BinaryInput, FailsInCheckAndApplyWithTheirReports) {
  const TempFile file(GetParam().bytes);
  const std::string path = file.path();
  const Outcome checked = run({"check", path});
  EXPECT_EQ(checked.code, 1);
  EXPECT_EQ(checked.err, "");
  EXPECT_THAT(checked.out, HasSubstr("error: "));
  EXPECT_GE(json::parse(run({"check", "--json", path}).out).at("errors"), 1);

  const Outcome applied = run({"apply", path});
  EXPECT_EQ(applied.code, 1);
  EXPECT_THAT(applied.out, HasSubstr(" failed with code "));
  EXPECT_THAT(applied.err, HasSubstr("try 'vq3900-tool check " + path + "'\n"));
  EXPECT_LT(json::parse(run({"apply", "--json", path}).out).at("steps").back().at("code"), 0);
}

INSTANTIATE_TEST_SUITE_P(Files, BinaryInput,
                         testing::Values(BinaryRow{"empty", ""}, BinaryRow{"zeros", std::string(4096, '\0')},
                                         BinaryRow{"ones", std::string(4096, '\xFF')},
                                         BinaryRow{"random", random_bytes(20000)},
                                         BinaryRow{"utf16", utf16("[mode]\nversion = 1\n")},
                                         BinaryRow{"old_mac_line_ends", with_line_ends("[mode]\nversion = 1\n", "\r")},
                                         BinaryRow{"one_long_line", std::string(100000, '[')}),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_F(OddInput, ZeroByteInAValueIsAFailureOfThatValue) {
  const TempFile file(with(stereo(), "laser_type", std::string("laser_type = 1\0", 15)));
  const std::string path = file.path();
  EXPECT_EQ(run({"check", path}),
            prints_out(1,
                       path +
                           ":12: error: mode.laser_type: the value has a zero byte in it; accepted: 0 to "
                           "4294967295\n" +
                           path + ": 1 error, 0 warnings\n"));
  EXPECT_EQ(run({"apply", path}).code, 1);
}

TEST_F(OddInput, ZeroByteInATextIsFound) {
  const TempFile file(with(stereo(), "dpu_desc", std::string("dpu_desc = a\0b", 14)));
  EXPECT_THAT(run({"check", file.path()}).out,
              HasSubstr("mode.dpu_desc: the value has a zero byte in it; accepted: at most 16 characters\n"));
}

TEST_F(OddInput, GoodFileIsTakenAfterABadOne) {
  const TempFile bad(random_bytes(2000));
  const TempFile good(stereo());
  EXPECT_EQ(run({"apply", bad.path()}).code, 1);
  EXPECT_EQ(run({"apply", good.path()}).code, 0);
}

}  // namespace
}  // namespace vq3900::test
