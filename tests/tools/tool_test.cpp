#include "tool.h"

#include "vq3900_depth_engine.h"

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
#include "support/engine_fixture.h"

namespace vq3900::test {
namespace {

using nlohmann::json;
using testing::HasSubstr;

std::string example(const std::string& name) {
  return std::string(VQ3900_EXAMPLES) + "/" + name;
}

class ToolTest : public EngineTest {
 protected:
  static Outcome run(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "vq3900-tool");
    std::vector<const char*> argv;
    for (const std::string& argument : arguments)
      argv.push_back(argument.c_str());
    return outcome_of([&] { return tool::run_tool(static_cast<int>(argv.size()), argv.data()); });
  }
};

// The registers of a block in the tool's JSON, by address.
std::uint32_t value_at(const json& report, const std::string& block_name, std::uint32_t address) {
  for (const json& block : report.at("blocks")) {
    if (block.at("name") != block_name) continue;
    for (const json& element : block.at("registers")) {
      if (element.at("address") == address) return element.at("value");
    }
  }
  ADD_FAILURE() << block_name << " has no register " << address;
  return 0;
}

const json& field_at(const json& report, const std::string& field_name) {
  static const json kNone;
  for (const json& block : report.at("blocks")) {
    for (const json& element : block.at("registers")) {
      if (!element.contains("fields")) continue;
      for (const json& field : element.at("fields")) {
        if (field.at("name") == field_name) return field;
      }
    }
  }
  ADD_FAILURE() << "no field " << field_name;
  return kNone;
}

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

using ToolApply = ToolTest;

TEST_F(ToolApply, SampleGoesToTheDeviceAndComesBackWhole) {
  for (const char* const name : {"stereo_1280x800.ini", "mono_640x480.ini"}) {
    reset_engine();
    const Outcome outcome = run({"apply", example(name)});
    EXPECT_EQ(outcome.code, 0) << outcome.err;
    EXPECT_THAT(outcome.out, HasSubstr("\n135 of 135 registers of the device hold what was converted\n"
"114 of 114 configuration values stand in their register fields\n"));
    EXPECT_EQ(outcome.err, "");
  }
}

TEST_F(ToolApply, TableShowsRegistersAndDecodedFields) {
  const Outcome outcome = run({"apply", example("stereo_1280x800.ini")});
  EXPECT_THAT(outcome.out, HasSubstr("stereo_1280x800: version 0x31303235, input 1280x800"));
  EXPECT_THAT(outcome.out,
              HasSubstr("  0x500010D0  mask 00FFFFFF  value 00500320  image_width 1280, image_height 800\n"));
  EXPECT_THAT(outcome.out, HasSubstr("  0x50001030  mask 1FFFFFF0  value 0BFC0640  win_size 11, min_disparity -4, "));
  EXPECT_THAT(outcome.out, HasSubstr("  write rectify          ok   wrote 23 + 23\n"));
  EXPECT_THAT(outcome.out, HasSubstr("  read gpm               ok   read 30 + 261\n"));
}

TEST_F(ToolApply, JsonHoldsRegistersAndFields) {
  const Outcome outcome = run({"apply", example("mono_640x480.ini"), "--json", "--baseline", "-45", "--focal", "560"});
  ASSERT_EQ(outcome.code, 0) << outcome.err;
  const json report = json::parse(outcome.out);
  EXPECT_EQ(report.at("description"), "mono_640x480");
  EXPECT_EQ(report.at("registers_right"), 135);
  EXPECT_EQ(value_at(report, "prefilter", 0x500010D0), 0x001E0280U);   // 480 x 640: the image is turned
  EXPECT_EQ(value_at(report, "d2d_params", 0x50001204), 0x10624DD3U);  // 2^38 / 1000
  EXPECT_EQ(field_at(report, "min_disparity").at("value"), -64);
  EXPECT_NEAR(field_at(report, "pbf").at("value").get<double>(), 1.0 / (-45.0 * 560.0), 1e-11);
}

TEST_F(ToolApply, BrokenConfigurationEndsWithTheFailingStep) {
  const std::string path = testing::TempDir() + "tool_test_broken.ini";
  std::ofstream(path) << "[mode]\nversion = 1\n";
  const Outcome outcome = run({"apply", path});
  EXPECT_EQ(outcome.code, 1);
  EXPECT_THAT(outcome.out, HasSubstr("  load configuration     failed with code -6\n"));
  EXPECT_THAT(outcome.err, HasSubstr("basic section not found!\n"));
  EXPECT_THAT(outcome.err, HasSubstr("load configuration failed with code -6; try 'vq3900-tool check "));
  std::remove(path.c_str());
}

TEST_F(ToolApply, JsonOfAFailureIsStillJson) {
  const Outcome outcome = run({"apply", example("mono_640x480.ini"), "--json", "--ref-dist", "1"});
  EXPECT_EQ(outcome.code, 1);
  const json report = json::parse(outcome.out);  // the library's lines on standard output do not get into it
  EXPECT_EQ(report.at("steps").back().at("name"), "write basic");
  EXPECT_EQ(report.at("steps").back().at("code"), 4096);
  EXPECT_THAT(outcome.err, HasSubstr("error code 01: value overflow in iZ0 \n"));
}

TEST_F(ToolApply, BaselineOutOfRangeIsReported) {
  const Outcome outcome = run({"apply", example("stereo_1280x800.ini"), "--baseline", "0.5"});
  EXPECT_EQ(outcome.code, 1);
  EXPECT_THAT(outcome.err, HasSubstr("check baseline!\n"));
  EXPECT_THAT(outcome.err, HasSubstr("set rig geometry failed with code -2"));
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
  std::ofstream(path) << "[mode]\nversion = 1\nlaser_type = -1\n[odd]\na = b\n";
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
