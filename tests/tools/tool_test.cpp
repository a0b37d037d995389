#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "platform/file.h"
#include "stdout_capture.h"
#include "support/capture.h"
#include "support/config_images.h"
#include "support/tool_runs.h"

namespace vq3900::test {
namespace {

using nlohmann::json;
using testing::HasSubstr;

using ToolUsage = ToolTest;

TEST_F(ToolUsage, BadUsageIsOneLineOnStandardErrorAndExitCodeTwo) {
  for (const std::vector<std::string>& arguments :
       std::vector<std::vector<std::string>>{{},
                                             {"fly"},
                                             {"apply"},
                                             {"check"},
                                             {"apply", "--nonsense", "x"},
                                             {"regs", "no_block"},
                                             {"regs", "a", "b"},
                                             {"apply", "x.ini", "--baseline", "wide"}}) {
    const Outcome outcome = run(arguments);
    EXPECT_EQ(outcome.code, 2) << testing::PrintToString(arguments);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
    EXPECT_TRUE(outcome.err.starts_with("vq3900-tool: ")) << outcome.err;
  }
}

TEST_F(ToolUsage, HelpAndVersionAreNoFailure) {
  EXPECT_EQ(run({"--version"}), prints_out(0, "vq3900-tool 2.1.4.5\n"));
  const Outcome help = run({"--help"});
  EXPECT_EQ(help.code, 0);
  for (const char* const command : {"apply", "regs", "check", "keys"})
    EXPECT_THAT(help.out, HasSubstr(command));
}

using ToolRegs = ToolTest;

TEST_F(ToolRegs, ShowsTheStartUpTables) {
  const Outcome outcome = run({"regs"});
  EXPECT_EQ(outcome.code, 0);
  EXPECT_THAT(outcome.out, HasSubstr("  0x50001200  mask DCFFFFFF  value 0C1800C0  "));
  EXPECT_THAT(outcome.out, HasSubstr("  0x50001400  mask FFFFFFFF  value 00000000  and the same up to 0x500017FC\n"));
}

TEST_F(ToolRegs, ShowsOneBlockAlone) {
  const Outcome outcome = run({"regs", "d2d_params"});
  EXPECT_EQ(outcome.out,
            "Disparity to depth (d2d_params, 2 registers)\n"
            "  0x50001204  mask FFFFFFFF  value 00000000  1 / ref_plane_dist 0\n"
            "  0x50001208  mask FFFFFFFF  value 00000000  pbf 0\n\n");
}

TEST_F(ToolRegs, JsonHoldsEveryTable) {
  const Outcome outcome = run({"regs", "--json"});
  const json report = json::parse(outcome.out);
  std::size_t registers = 0;
  for (const json& block : report.at("blocks"))
    registers += block.at("registers").size();
  EXPECT_EQ(report.at("blocks").size(), 13U);
  EXPECT_EQ(registers, 5U + 2 + 12 + 18 + 7 + 12 + 30 + 261 + 3 + 23 + 23 + 7 + 7);
  EXPECT_EQ(value_at(report, "gpm", 0x50001368), 0x00FC0040U);
}

using ToolCheck = ToolTest;

TEST_F(ToolCheck, CleanConfigurationPasses) {
  EXPECT_EQ(run({"check", example("stereo_1280x800.ini")}),
            prints_out(0, example("stereo_1280x800.ini") + ": 0 errors, 0 warnings\n"));
}

TEST_F(ToolCheck, ErrorsFailAndAreCounted) {
  const std::string path = testing::TempDir() + "tool_test_check.ini";
  std::ofstream(path) << "[mode]\nversion = 1\nlaser_type = -1\n[odd]\nlong = a\na = b\n";
  const Outcome text = run({"check", path});
  EXPECT_EQ(text.code, 1);
  EXPECT_THAT(text.out,
              HasSubstr(path + ":3: error: mode.laser_type: detect negative while parse unsigned; accepted: 0 "
                               "to 4294967295\n"));
  EXPECT_THAT(text.out, HasSubstr(path + ":5: warning: [odd]: no such section; it is ignored\n"));

  const json report = json::parse(run({"check", "--json", path}).out);
  EXPECT_EQ(report.at("errors"), 9);  // four sections, four keys, one value
  EXPECT_EQ(report.at("findings").size(), 11U);
  std::remove(path.c_str());
}

TEST_F(ToolCheck, UnreadableFileFails) {
  EXPECT_EQ(run({"check", "/no/such/file"}), prints_err(1, "vq3900-tool: /no/such/file: cannot be opened\n"));
}

using ToolKeys = ToolTest;

TEST_F(ToolKeys, KeyReferenceOfTheDocumentationIsUpToDate) {
  const std::optional<std::string> document = read_file(VQ3900_DOCS "/configuration.md");
  ASSERT_TRUE(document);
  EXPECT_THAT(*document, HasSubstr(run({"keys", "--markdown"}).out));
}

TEST_F(ToolKeys, ListsOneKeyALine) {
  const Outcome outcome = run({"keys"});
  EXPECT_EQ(std::count(outcome.out.begin(), outcome.out.end(), '\n'), 78);
  EXPECT_THAT(outcome.out, HasSubstr("disparity    pre_win_size               integer           required"));
}

TEST(StdoutCapture, CatchesWhatIsPrintedAndGivesTheStreamBack) {
  const Printed printed = printed_by([] {
    std::fputs("before\n", stdout);
    tool::StdoutCapture capture;
    std::fputs("inside\n", stdout);
    EXPECT_EQ(capture.text(), "inside\n");
    std::fputs("behind\n", stdout);
  });
  EXPECT_EQ(printed.out, "before\nbehind\n");
}

}  // namespace
}  // namespace vq3900::test
