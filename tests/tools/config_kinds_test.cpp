// Groups files and calibration inputs, checked and listed by the tool.
#include "config_kinds.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "calib/calib_keys.h"
#include "config/calib_input.h"
#include "config/groups.h"
#include "config_check.h"
#include "platform/file.h"
#include "support/config_images.h"
#include "support/tool_runs.h"

namespace vq3900::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using tool::check_config;
using tool::ConfigKind;

using ConfigKinds = ToolTest;

std::string text_of_sample(const std::string& name) {
  return read_file(example(name).c_str()).value_or("");
}

std::string with_line(std::string text, const std::string& line, const std::string& by) {
  const std::size_t at = text.find(line);
  EXPECT_NE(at, std::string::npos) << line;
  return text.replace(at, line.size(), by);
}

std::vector<std::string> findings(const std::string& text, ConfigKind kind) {
  std::vector<std::string> lines;
  for (const tool::Finding& finding : check_config(text, kind))
    lines.push_back(finding_line("x", finding));
  return lines;
}

TEST_F(ConfigKinds, SamplesAreClean) {
  EXPECT_THAT(findings(text_of_sample("d2c_groups.ini"), ConfigKind::kD2c), IsEmpty());
  EXPECT_THAT(findings(text_of_sample("ir_pre_groups.ini"), ConfigKind::kIrPre), IsEmpty());
  for (const char* const name : {"calib_euroc.ini", "calib_euroc_lut.ini", "calib_kitti.ini", "calib_kitti_lut.ini"})
    EXPECT_THAT(findings(text_of_sample(name), ConfigKind::kCalib), IsEmpty()) << name;
}

TEST_F(ConfigKinds, CommandTakesTheKind) {
  const std::string path = example("d2c_groups.ini");
  EXPECT_EQ(run({"check", "--kind", "d2c", path}), prints_out(0, path + ": 0 errors, 0 warnings\n"));
  EXPECT_EQ(run({"check", "--kind", "ir-pre", path}).code, 1);
  EXPECT_EQ(run({"check", path}).code, 1);
  EXPECT_EQ(run({"check", "--kind", "none", path}).code, 2);
}

TEST_F(ConfigKinds, GroupsThatAreMissingOrWrongAreNamed) {
  const std::string text = text_of_sample("d2c_groups.ini");
  EXPECT_THAT(findings(with_line(text, "num = 3", "num = 4"), ConfigKind::kD2c),
              ElementsAre("x: error: [group4]: the section is missing or empty"));
  EXPECT_THAT(findings(with_line(text, "num = 3", "num = 101"), ConfigKind::kD2c),
              testing::Contains(HasSubstr("basic.num: 101 is out of range; accepted: 0 to 100")));
  EXPECT_THAT(findings(with_line(text, "num = 3", "num = 2"), ConfigKind::kD2c),
              ElementsAre(HasSubstr("warning: [group3]: no such section; it is ignored")));
  EXPECT_THAT(findings(with_line(text, "res_rgb = {960,540}", "res_rgb = {-1,540}"), ConfigKind::kD2c),
              ElementsAre(HasSubstr("error: group2.res_rgb: -1 is out of range; accepted: 0 to 65535")));
  EXPECT_THAT(findings(with_line(text, "scale = 0.75\n", ""), ConfigKind::kD2c),
              ElementsAre("x: error: group2.scale: the key is missing; accepted: a number"));
  EXPECT_THAT(findings(with_line(text, "d2d_params_unit_in_R_en = 1\n", ""), ConfigKind::kD2c),
              ElementsAre(HasSubstr("group1.d2d_params_unit_in_R_en: the key is missing beside d2d_params_unit")));
  EXPECT_THAT(findings(d2c_groups_text(57), ConfigKind::kD2c),
              ElementsAre("x:2: warning: basic.num: an image holds at most 56 groups"));
  EXPECT_THAT(findings(d2c_groups_text(56), ConfigKind::kD2c), IsEmpty());
}

TEST_F(ConfigKinds, IrPreScalarsAreUnsigned) {
  const std::string text = text_of_sample("ir_pre_groups.ini");
  EXPECT_THAT(findings(with_line(text, "delay_ms = 33", "delay_ms = -1"), ConfigKind::kIrPre),
              ElementsAre(HasSubstr("group1.delay_ms: detect negative while parse unsigned")));
  EXPECT_THAT(findings(with_line(text, "num = 2", "num = 11"), ConfigKind::kIrPre),
              testing::Contains(HasSubstr("accepted: 0 to 10")));
}

TEST_F(ConfigKinds, CalibrationInputsAreHeldAgainstWhatTheConversionUses) {
  const std::string text = text_of_sample("calib_euroc_lut.ini");
  EXPECT_THAT(findings(with_line(text, "lut_sample_bit = 4", "lut_sample_bit = 7"), ConfigKind::kCalib),
              ElementsAre(HasSubstr("rectify.lut_sample_bit: 7 is out of range; accepted: 3 to 6")));
  EXPECT_THAT(findings(with_line(text, "depth_scale = 1.0", "depth_scale = 0"), ConfigKind::kCalib),
              ElementsAre(HasSubstr("d2c.depth_scale: 0 is out of range; accepted: above 0")));
  const std::string plain = text_of_sample("calib_euroc.ini");
  EXPECT_THAT(findings(with_line(plain, "lut_sample_bit = 4", "lut_sample_bit = 7"), ConfigKind::kCalib), IsEmpty());
  EXPECT_THAT(findings(with_line(plain, "[d2d]", "[other]"), ConfigKind::kCalib),
              ElementsAre("x: error: [d2d]: the section is missing or empty", HasSubstr("[other]: no such section")));
}

TEST_F(ConfigKinds, KeyReferencesOfTheDocumentationAreUpToDate) {
  const std::optional<std::string> document = read_file(VQ3900_DOCS "/configuration.md");
  ASSERT_TRUE(document);
  for (const char* const kind : {"engine", "d2c", "ir-pre", "calib"})
    EXPECT_THAT(*document, HasSubstr(run({"keys", "--markdown", "--kind", kind}).out)) << kind;
}

TEST_F(ConfigKinds, KeysListsOneKeyALine) {
  for (const auto& [kind, keys] :
       {std::pair{"d2c", d2c_group_keys().size() + 2}, {"ir-pre", ir_pre_group_keys().size() + 2}}) {
    const std::string out = run({"keys", "--kind", kind}).out;
    EXPECT_EQ(static_cast<std::size_t>(std::count(out.begin(), out.end(), '\n')), keys) << kind;
  }
}

// The words of a note and the numbers that are checked say the same.
TEST_F(ConfigKinds, RangesOfCalibrationNotesAreThoseThatAreChecked) {
  for (const KeyDescription& key : calib_input_keys()) {
    const std::string words(tool::find_calib_key_note(key)->accepted);
    const tool::AcceptedValues values = tool::accepted_calib_values(key);
    if (words.find(" to ") != std::string::npos || words == "0 or 1") {
      const std::string shown = words == "0 or 1" ? "0 to 1" : words.substr(0, words.find(','));
      EXPECT_EQ(values.text(), shown) << key.name;
    }
    EXPECT_EQ(values.contains(0), words != "above 0" && words != "3 to 6") << key.name;
  }
}

}  // namespace
}  // namespace vq3900::test
