#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>

#include "device_run.h"
#include "sim_device.h"
#include "support/capture.h"
#include "support/config_images.h"
#include "support/de_input_text.h"
#include "support/sample_texts.h"
#include "support/tool_runs.h"

namespace vq3900::test {
namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::IsEmpty;
using tool::DeviceRun;
using ToolApply = ToolTest;

// --- the command

TEST_F(ToolApply, SampleGoesToTheDeviceAndComesBackWhole) {
  for (const char* const name : {"stereo_1280x800.ini", "mono_640x480.ini"}) {
    reset_engine();
    const Outcome outcome = run({"apply", example(name)});
    EXPECT_EQ(outcome.code, 0) << outcome.err;
    EXPECT_THAT(outcome.out,
                HasSubstr("\n135 of 135 registers of the device hold what was converted\n"
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

// --- on the device

DeviceRun run_text(const std::string& text, sim::SimDevice& device) {
  const TempFile file(text);
  DeviceRun run;
  const Printed printed = printed_by([&] { run = tool::run_on_device(file.path(), {}, device); });
  EXPECT_EQ(printed.err, "");
  EXPECT_TRUE(run.good());
  return run;
}

TEST_F(ToolApply, SmoothingFlagIsOnTheDeviceAfterwards) {
  for (const auto& [value, flag] : {std::pair{"true", 1U << 10}, {"false", 0U}, {"1", 1U << 10}, {"0", 0U}}) {
    SCOPED_TRACE(value);
    reset_engine();
    sim::SimDevice device;
    run_text(with(stereo(), "smooth_enable", std::string("smooth_enable = ") + value), device);
    EXPECT_EQ(device.peek(0x50001028), flag);
  }
}

TEST_F(ToolApply, DistortionTypeChoosesTheCorrectionsOfBothCameras) {
  // The sample's switches, with the polynomial (bit 3), the LUT (bits 2 and 4), and both.
  struct Row {
    const char* type;
    std::uint32_t camera_0, camera_1;
  };
  for (const Row& row :
       {Row{"0", 0x0030040B, 0x0030000B}, Row{"1", 0x00300417, 0x00300017}, Row{"2", 0x0030041F, 0x0030001F}}) {
    SCOPED_TRACE(row.type);
    reset_engine();
    sim::SimDevice device;
    const DeviceRun run = run_text(with(stereo(), "distort_type", std::string("distort_type = ") + row.type), device);
    EXPECT_EQ(device.peek(0x52080070), row.camera_0);
    EXPECT_EQ(device.peek(0x52000070), row.camera_1);
    EXPECT_THAT(run.missing, IsEmpty());
  }
}

TEST_F(ToolApply, UnknownDistortionTypeFailsAtTheReadBack) {
  const TempFile file(with(stereo(), "distort_type", "distort_type = 3"));
  const Outcome outcome = run({"apply", file.path()});
  EXPECT_EQ(outcome.code, 1);
  EXPECT_THAT(outcome.err, HasSubstr("read rectify failed with code -2"));
}

}  // namespace
}  // namespace vq3900::test
