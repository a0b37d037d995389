#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "calib/calib_keys.h"
#include "config/calib_input.h"
#include "platform/file.h"
#include "support/capture.h"
#include "support/engine_fixture.h"
#include "support/temp_folder.h"
#include "tool.h"

namespace vq3900::test {
namespace {

using nlohmann::json;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using Arguments = std::vector<std::string>;

std::string example(const std::string& name) {
  return std::string(VQ3900_EXAMPLES) + "/" + name;
}
std::string euroc() {
  return example("euroc_mav_camchain.yaml");
}
std::string kitti() {
  return example("kitti_2011_09_26_calib_cam_to_cam.txt");
}

std::string text_of(const std::string& path) {
  const std::optional<std::string> text = read_file(path.c_str());
  EXPECT_TRUE(text) << path;
  return text.value_or("");
}

class CalibTool : public EngineTest {
 protected:
  ~CalibTool() override {
    std::remove(config_.c_str());
    std::remove(plot_.c_str());
  }

  static Outcome run(Arguments arguments) {
    arguments.insert(arguments.begin(), "vq3900-tool");
    std::vector<const char*> argv;
    for (const std::string& argument : arguments)
      argv.push_back(argument.c_str());
    return outcome_of([&] { return tool::run_tool(static_cast<int>(argv.size()), argv.data()); });
  }

  static Outcome apply(const std::string& calibration, const std::string& config, const Arguments& more = {}) {
    Arguments arguments{"calib", "apply", calibration, "--config", config, "--temps", "30,31.5,35"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return run(arguments);
  }

  // A sample configuration with the line of one key replaced.
  std::string changed(const std::string& name, const std::string& key, const std::string& value) const {
    std::string text = text_of(example(name));
    const std::size_t at = text.find("\n" + key + " = ");
    EXPECT_NE(at, std::string::npos) << key;
    text.replace(at + 1, text.find('\n', at + 1) - at - 1, key + " = " + value);
    std::ofstream(config_, std::ios::binary) << text;
    return config_;
  }

  std::string config_ = test::own_file("calib_tool_test.ini");
  std::string plot_ = test::own_file("calib_tool_test.svg");
};

void expect_bad_usage(const Outcome& outcome, const std::string& said) {
  EXPECT_EQ(outcome.code, 2);
  EXPECT_EQ(outcome.out, "");
  EXPECT_THAT(outcome.err, StartsWith("vq3900-tool: "));
  EXPECT_THAT(outcome.err, HasSubstr(said));
  EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
}

// --- usage

TEST_F(CalibTool, BadUsageIsOneLineAndExitCodeTwo) {
  const std::string config = example("calib_euroc.ini");
  expect_bad_usage(run({"calib"}), "subcommand");
  expect_bad_usage(run({"calib", "fly"}), "'fly' is no command");
  expect_bad_usage(run({"calib", "show"}), "calibration");
  expect_bad_usage(run({"calib", "apply", euroc()}), "is required");
  expect_bad_usage(run({"calib", "apply", euroc(), "--config", config}), "--temps");
  expect_bad_usage(run({"calib", "show", euroc(), "--unit", "inch"}), "--unit");
  for (const char* const size :
       {"640", "640x", "x480", "0x480", "640x480x1", "640.5x480", "65536x1", "nanx1", "-1x1", ""})
    expect_bad_usage(run({"calib", "show", euroc(), std::string("--size=") + size}), "--size");
  for (const char* const temps : {"30", "30,30", "30,30,", "30,30,30,30", "30,x,30", "nan,30,30", "30;30;30"})
    expect_bad_usage(run({"calib", "apply", euroc(), "--config", config, std::string("--temps=") + temps}), "--temps");
  expect_bad_usage(run({"keys", "--kind", "none"}), "--kind");
}

// --- show

TEST_F(CalibTool, ShowPrintsWhatWasRead) {
  const Outcome outcome = run({"calib", "show", kitti()});
  EXPECT_EQ(outcome.code, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_THAT(outcome.out, StartsWith(kitti() + ": KITTI calib_cam_to_cam, Brown distortion\n"));
  EXPECT_THAT(outcome.out,
              HasSubstr("right IR camera (camera 0)\n"
                        "  image         1392x512\n"
                        "  fx, fy        989.527, 987.839\n"
                        "  cx, cy        702.000, 245.559\n"
                        "  distortion    k1 -0.364466, k2 0.179002, k3 -0.0531406, p1 0.00114811, p2 -0.000629856\n"));
  EXPECT_THAT(outcome.out, HasSubstr("  translation   -537.000, 4.822, -12.525 mm\n"));
  EXPECT_THAT(outcome.out, HasSubstr("\ncolour camera\n"));
  EXPECT_THAT(outcome.out, EndsWith("\nbaseline -537.168 mm, angle between the IR cameras 2.123 degrees\n"));
}

TEST_F(CalibTool, ShowSaysThatThereIsNoColourCamera) {
  EXPECT_THAT(run({"calib", "show", euroc()}).out, HasSubstr("\nno colour camera\n"));
}

TEST_F(CalibTool, ShowPrintsJson) {
  const json report = json::parse(run({"calib", "show", euroc(), "--json"}).out);
  EXPECT_EQ(report.at("format"), "Kalibr camchain");
  EXPECT_EQ(report.at("left").at("fx"), 458.654);
  EXPECT_EQ(report.at("left").at("distortion").at("p1"), 0.00019359);
  EXPECT_EQ(report.at("right").at("pose").at("rotation").size(), 9U);
  EXPECT_NEAR(report.at("baseline_mm").get<double>(), -110.0778422, 1e-6);
  EXPECT_TRUE(report.at("color").is_null());
  EXPECT_EQ(json::parse(run({"calib", "show", kitti(), "--json"}).out).at("color").at("width"), 1392);
}

TEST_F(CalibTool, BadCalibrationIsOneLineAndExitCodeOne) {
  EXPECT_EQ(run({"calib", "show", "/no/such"}), prints_err(1, "vq3900-tool: /no/such: cannot be opened\n"));
  EXPECT_EQ(run({"calib", "show", euroc(), "--size", "752x480"}),
            prints_err(1, "vq3900-tool: " + euroc() + ": names its own image sizes; leave --size out\n"));
  EXPECT_EQ(apply("/no/such", example("calib_euroc.ini")), prints_err(1, "vq3900-tool: /no/such: cannot be opened\n"));
}

TEST_F(CalibTool, SizeAndUnitGoWithFilesThatHaveNone) {
  std::ofstream(config_) << "%YAML:1.0\nM1: &m {rows: 3, cols: 3, dt: d, data: [500, 0, 320, 0, 500, 240, 0, 0, 1]}\n"
                            "M2: *m\nD1: &d {rows: 1, cols: 4, dt: d, data: [0, 0, 0, 0]}\nD2: *d\n"
                            "R: {rows: 3, cols: 3, dt: d, data: [1, 0, 0, 0, 1, 0, 0, 0, 1]}\n"
                            "T: {rows: 3, cols: 1, dt: d, data: [-5, 0, 0]}\n";
  for (const auto& [unit, baseline] : {std::pair{"mm", -5}, {"cm", -50}, {"m", -5000}}) {
    const json report = json::parse(run({"calib", "show", config_, "--size", "640x480", "--unit", unit, "--json"}).out);
    EXPECT_EQ(report.at("baseline_mm"), baseline);
    EXPECT_EQ(report.at("right").at("height"), 480);
  }
  EXPECT_THAT(run({"calib", "show", config_, "--size", "640x480"}).out, HasSubstr("  distortion    none\n"));
}

// --- apply

TEST_F(CalibTool, SamplesAreAppliedWithoutAComplaint) {
  struct Row {
    std::string calibration;
    const char* config;
    bool lut;
  };
  for (const Row& row : {Row{euroc(), "calib_euroc.ini", false},
                         {euroc(), "calib_euroc_lut.ini", true},
                         {kitti(), "calib_kitti.ini", false},
                         {kitti(), "calib_kitti_lut.ini", true}}) {
    reset_engine();
    const Outcome outcome = apply(row.calibration, example(row.config));
    EXPECT_EQ(outcome.code, 0) << row.config;
    EXPECT_EQ(outcome.err, "") << row.config;
    EXPECT_EQ(outcome.out.find("undistortion LUT") != std::string::npos, row.lut) << row.config;
    EXPECT_THAT(outcome.out, HasSubstr("rectified images differ by at most 0.0000 pixels\n"));
    EXPECT_THAT(outcome.out, EndsWith("temperatures    left 30, right 31.5, laser 35\n"));
  }
}

TEST_F(CalibTool, ApplyPrintsRectificationD2cAndD2d) {
  const Outcome outcome = apply(kitti(), example("calib_kitti_lut.ini"));
  // Half the size: 984.2439 / 2 and 1392 / 2.
  EXPECT_THAT(outcome.out, HasSubstr("  unrectified   696x256, fx 492.122, fy 490.407, cx 345.000, cy 116.598\n"));
  EXPECT_THAT(outcome.out, HasSubstr("  rectified     696x256, fx 494.763, fy 494.763, "));  // the largest of the four
  EXPECT_THAT(outcome.out, HasSubstr("  colour        1392x512, fx 959.791, "));
  EXPECT_THAT(outcome.out, HasSubstr("  baseline      -53.7168 units, -537.168 mm\n"));
  EXPECT_THAT(outcome.out, HasSubstr("  focal length  492.122 pixels\n  depth unit    10 mm\n"));
  EXPECT_THAT(outcome.out, HasSubstr("note: depth is in units of 10 mm and the translation in mm"));
  EXPECT_THAT(outcome.out, HasSubstr("  left          52x20 samples, every 16 pixels from (-48, -16)\n"));
  EXPECT_THAT(outcome.out, Not(HasSubstr("0x5200")));
}

TEST_F(CalibTool, UnitInTheRotationIsSaid) {
  std::string text = text_of(changed("calib_kitti.ini", "d2d_params_unit", "2"));
  const std::string key = "d2d_params_unit_in_R_en = ";
  text.replace(text.find("\n" + key) + 1, key.size() + 1, key + "1");
  std::ofstream(config_, std::ios::binary) << text;
  const Outcome outcome = apply(kitti(), config_);
  EXPECT_EQ(outcome.code, 0) << outcome.err;
  EXPECT_THAT(outcome.out, HasSubstr("  the rotation carries the depth unit of 2 mm\n"));
}

TEST_F(CalibTool, RegistersAreShownOnRequest) {
  const Outcome outcome = apply(euroc(), example("calib_euroc_lut.ini"), {"--regs"});
  for (const char* const title : {"Disparity to depth (d2d_params, 2 registers)\n",
                                  "Depth to colour (d2c_params, 12 registers)\n",
                                  "Rectification, camera 0 (rectify_params, 23 registers)\n",
                                  "Rectification, camera 1 (sbg2r_params, 23 registers)\n",
                                  "Rectification LUT information, camera 0 (rectify_lut_info_0, 7 registers)\n",
                                  "Rectification LUT information, camera 1 (rectify_lut_info_1, 7 registers)\n"}) {
    EXPECT_THAT(outcome.out, HasSubstr(title));
  }
  EXPECT_THAT(outcome.out, HasSubstr("lut_height 40, lut_width 60\n"));
  EXPECT_THAT(outcome.out, HasSubstr("height 480, width 752\n"));
}

TEST_F(CalibTool, ApplyPrintsJson) {
  const Outcome outcome = apply(kitti(), example("calib_kitti_lut.ini"), {"--json", "--regs"});
  ASSERT_EQ(outcome.code, 0) << outcome.err;
  EXPECT_EQ(outcome.err, "");
  const json report = json::parse(outcome.out);
  EXPECT_EQ(report.at("code"), 0);
  EXPECT_TRUE(report.at("failed_step").is_null());
  EXPECT_EQ(report.at("log").size(), 6U);
  EXPECT_EQ(report.at("log").at(0), "calibration distortion model: 0");
  EXPECT_EQ(report.at("left").at("rectified").at("width"), 696);
  EXPECT_NEAR(report.at("d2d").at("baseline").get<double>(), -53.7168, 1e-4);
  EXPECT_EQ(report.at("d2d").at("unit_mm"), 10);
  EXPECT_EQ(report.at("d2c").at("color").at("height"), 512);
  EXPECT_EQ(report.at("lut").at("left").at("step"), 16);
  EXPECT_EQ(report.at("blocks").size(), 6U);
  EXPECT_EQ(report.at("temperatures").at("right"), 31.5);
  EXPECT_LT(report.at("rows").at("largest_difference").get<double>(), 0.001);

  const json plain = json::parse(apply(euroc(), example("calib_euroc.ini"), {"--json"}).out);
  EXPECT_FALSE(plain.contains("blocks"));
  EXPECT_TRUE(plain.at("lut").is_null());
  EXPECT_TRUE(plain.at("d2c").is_null());
}

// --- failures of apply: a key of a sample with another value, and the hint

struct FailureCase {
  const char* name;
  const char* config;
  const char* key;
  const char* value;
  const char* said;  // by the library
  const char* hint;
};

void PrintTo(const FailureCase& row, std::ostream* stream) {
  *stream << row.name;
}

class CalibFailure : public CalibTool, public testing::WithParamInterface<FailureCase> {};

TEST_P(CalibFailure, EndsWithLogAndHint) {
  const FailureCase& row = GetParam();
  const std::string calibration = std::string(row.config).find("kitti") == std::string::npos ? euroc() : kitti();
  const std::string config = changed(row.config, row.key, row.value);
  const Outcome outcome = apply(calibration, config);
  EXPECT_EQ(outcome.code, 1);
  EXPECT_EQ(outcome.out, "");
  EXPECT_THAT(outcome.err, HasSubstr(row.said));
  EXPECT_THAT(outcome.err, HasSubstr("vq3900-tool: " + config + ": "));
  EXPECT_THAT(outcome.err, HasSubstr(row.hint));
  EXPECT_THAT(outcome.err, EndsWith("\n"));

  const json report = json::parse(apply(calibration, config, {"--json", "--regs"}).out);
  EXPECT_NE(report.at("code"), 0);
  EXPECT_THAT(report.at("hint").get<std::string>(), HasSubstr(row.hint));
  EXPECT_FALSE(report.contains("blocks"));
}

INSTANTIATE_TEST_SUITE_P(
    Rows, CalibFailure,
    testing::Values(
        FailureCase{"Sign",
                    "calib_euroc.ini",
                    "baseline",
                    "110",
                    "Baseline sign check error.\n",
                    "must have the sign of the calibration's, -110.078 mm"},
        FailureCase{"BaselineTooLong",
                    "calib_kitti.ini",
                    "d2d_params_unit",
                    "1",
                    "check baseline!\n",
                    "change d2d_params_unit"},
        FailureCase{"UnitInRotation",
                    "calib_kitti.ini",
                    "d2d_params_unit_in_R_en",
                    "1",
                    "convert_d2c_params_float_to_register() failed!\n",
                    "look at d2d_params_unit_in_R_en"},
        FailureCase{"Sampling", "calib_euroc_lut.ini", "lut_sample_bit", "2", "sample_rate_bit >=3", "must be 3 to 6"},
        FailureCase{"SamplingFar",
                    "calib_euroc_lut.ini",
                    "lut_sample_bit",
                    "7",
                    "lut sample bit out of range\n",
                    "must be 3 to 6"},
        FailureCase{"Extension",
                    "calib_euroc_lut.ini",
                    "lut_extend_ratio",
                    "5",
                    "lut extend ratio out of range\n",
                    "must be 0 to 4"},
        FailureCase{"NothingLeft",
                    "calib_euroc.ini",
                    "src_img_left_chop",
                    "800",
                    "parse_rectify_d2c_params_from_stereo_with_rgb_calib_params() failed!\n",
                    "look at image sizes"},
        FailureCase{"ShortFocal",
                    "calib_euroc.ini",
                    "src_img_scale",
                    "0.02",
                    "focal_length_pix is incorrect! \n",
                    "at least 10 pixels"},
        FailureCase{"BadValue", "calib_euroc.ini", "cam_type", "256", "Caught an exception: ", "keys --kind calib"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_F(CalibTool, TemperaturesBelowOneFailWithAHint) {
  const Outcome outcome =
      run({"calib", "apply", euroc(), "--config", example("calib_euroc.ini"), "--temps", "0.5,30,30"});
  EXPECT_EQ(outcome.code, 1);
  EXPECT_EQ(outcome.err,
            "invalid calibration temperature,left:0.500000,right:30.000000,ldm:30.000000\n"
            "vq3900-tool: " +
                example("calib_euroc.ini") +
                ": convert calibration failed with code -2; each of the three values of --temps must be at least 1\n");
}

TEST_F(CalibTool, MissingConfigurationFails) {
  const Outcome outcome = apply(euroc(), "/no/such.ini");
  EXPECT_EQ(outcome.code, 1);
  EXPECT_THAT(outcome.err, StartsWith("Cannot open file /no/such.ini\n"));
  EXPECT_THAT(outcome.err, HasSubstr("/no/such.ini: load calibration input configuration failed with code -1; "));
}

TEST_F(CalibTool, GoodRunFollowsAFailedOne) {
  EXPECT_EQ(apply(euroc(), changed("calib_euroc.ini", "baseline", "110")).code, 1);
  EXPECT_EQ(apply(euroc(), example("calib_euroc_lut.ini")).code, 0);
}

// --- the picture

// Whether every element is closed in order and attributes are quoted: what a reader of XML needs first.
::testing::AssertionResult well_formed(const std::string& text) {
  std::vector<std::string> open;
  for (std::size_t at = 0; (at = text.find('<', at)) != std::string::npos;) {
    const std::size_t end = text.find('>', at);
    if (end == std::string::npos) return testing::AssertionFailure() << "tag without end at " << at;
    const std::string tag = text.substr(at + 1, end - at - 1);
    if (tag.find('<') != std::string::npos) return testing::AssertionFailure() << "'<' in tag " << tag;
    if (std::count(tag.begin(), tag.end(), '"') % 2 != 0) return testing::AssertionFailure() << "quotes in " << tag;
    const std::string name = tag.substr(0, tag.find_first_of(" /", 1));
    if (tag.front() == '/') {
      if (open.empty() || "/" + open.back() != tag) return testing::AssertionFailure() << "unexpected <" << tag << ">";
      open.pop_back();
    } else if (tag.back() != '/') {
      open.push_back(name);
    }
    at = end + 1;
  }
  for (std::size_t at = 0; (at = text.find('&', at)) != std::string::npos; ++at) {
    const std::string entity = text.substr(at, text.find(';', at) - at + 1);
    if (entity != "&amp;" && entity != "&lt;" && entity != "&gt;") return testing::AssertionFailure() << entity;
  }
  return open.empty() ? testing::AssertionSuccess() : testing::AssertionFailure() << "open: " << open.back();
}

TEST_F(CalibTool, PlotIsWellFormedAndRepeatable) {
  for (const char* const config : {"calib_euroc.ini", "calib_euroc_lut.ini"}) {
    ASSERT_EQ(apply(euroc(), example(config), {"--plot", plot_}).code, 0);
    const std::string first = text_of(plot_);
    EXPECT_TRUE(well_formed(first));
    EXPECT_THAT(first, StartsWith("<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"1200\" height=\""));
    EXPECT_THAT(first, Not(HasSubstr("nan")));
    EXPECT_THAT(first, Not(HasSubstr("inf")));
    EXPECT_THAT(first, Not(HasSubstr("\"-0\"")));
    reset_engine();
    ASSERT_EQ(apply(euroc(), example(config), {"--plot", plot_}).code, 0);
    EXPECT_EQ(text_of(plot_), first);
  }
}

TEST_F(CalibTool, PlotNamesCalibrationBaselineFocalLengthAndLargestDisplacement) {
  ASSERT_EQ(apply(euroc(), example("calib_euroc_lut.ini"), {"--plot", plot_}).code, 0);
  const std::string plot = text_of(plot_);
  EXPECT_THAT(plot, HasSubstr(">euroc_mav_camchain.yaml</text>"));
  EXPECT_THAT(plot, HasSubstr("baseline -110.08 mm, focal length 458.65 pixels"));
  EXPECT_THAT(plot, HasSubstr("; LUT of 60x40 samples, every 16 pixels</text>"));
  EXPECT_EQ(plot.find("class=\"outside\"") != std::string::npos, true);

  ASSERT_EQ(apply(kitti(), example("calib_kitti.ini"), {"--plot", plot_}).code, 0);
  EXPECT_THAT(text_of(plot_), HasSubstr("; lens model, no LUT</text>"));
}

// By how many pixels the left camera's lens moves a pixel.
double displacement(double u, double v) {
  const double x = (u - 367.215) / 458.654, y = (v - 248.375) / 457.296;
  const double r2 = x * x + y * y;
  const double g = -0.28340811 * r2 + 0.07395907 * r2 * r2;
  const double p1 = 0.00019359, p2 = 1.76187114e-05;
  const double dx = (x * g + 2 * p1 * x * y + p2 * (r2 + 2 * x * x)) * 458.654;
  const double dy = (y * g + p1 * (r2 + 2 * y * y) + 2 * p2 * x * y) * 457.296;
  return std::hypot(dx, dy);
}

// It lies in one of the corners, the last samples inside the image being at 736 and 464.
TEST_F(CalibTool, LargestDisplacementOfTheLutIsThatOfTheLensModel) {
  ASSERT_EQ(apply(euroc(), example("calib_euroc_lut.ini"), {"--plot", plot_}).code, 0);
  const double largest =
      std::max({displacement(0, 0), displacement(736, 0), displacement(0, 464), displacement(736, 464)});
  const std::string plot = text_of(plot_);
  const std::string mark = "largest displacement ";
  const std::size_t at = plot.find(mark);
  ASSERT_NE(at, std::string::npos);
  EXPECT_NEAR(std::stod(plot.substr(at + mark.size())), largest, 0.02);
}

TEST_F(CalibTool, PlotTitleIsEscaped) {
  const std::string odd = test::own_file("calib <&> \xC3\xA4 test.yaml");
  std::ofstream(odd, std::ios::binary) << text_of(euroc());
  ASSERT_EQ(apply(odd, example("calib_euroc.ini"), {"--plot", plot_}).code, 0);
  std::remove(odd.c_str());
  const std::string plot = text_of(plot_);
  EXPECT_TRUE(well_formed(plot));
  EXPECT_THAT(plot, HasSubstr(">calib &lt;&amp;&gt; ?? test.yaml</text>"));
}

TEST_F(CalibTool, PlotOfALensWithoutDistortionHasNoArrows) {
  std::string text = text_of(euroc());
  for (const char* const list : {"[-0.28340811, 0.07395907, 0.00019359, 1.76187114e-05]",
                                 "[-0.28368365, 0.07451284, -0.00010473, -3.55590700e-05]"}) {
    text.replace(text.find(list), std::string(list).size(), "[0, 0, 0, 0]");
  }
  const std::string plain = test::own_file("calib_tool_test_plain.yaml");
  std::ofstream(plain, std::ios::binary) << text;
  for (const char* const config : {"calib_euroc.ini", "calib_euroc_lut.ini"}) {
    ASSERT_EQ(apply(plain, example(config), {"--plot", plot_}).code, 0);
    EXPECT_TRUE(well_formed(text_of(plot_)));
    EXPECT_THAT(text_of(plot_), HasSubstr("largest displacement 0.00 pixels"));
  }
  std::remove(plain.c_str());
}

TEST_F(CalibTool, PlotThatCannotBeWrittenFailsBehindTheReport) {
  const Outcome outcome = apply(euroc(), example("calib_euroc.ini"), {"--plot", "/no/such/folder/x.svg"});
  EXPECT_EQ(outcome.code, 1);
  EXPECT_THAT(outcome.out, HasSubstr("disparity to depth"));
  EXPECT_EQ(outcome.err, "vq3900-tool: /no/such/folder/x.svg: cannot be written\n");
}

TEST_F(CalibTool, FailedRunLeavesNoPlot) {
  EXPECT_EQ(apply(euroc(), changed("calib_euroc.ini", "baseline", "110"), {"--plot", plot_}).code, 1);
  EXPECT_FALSE(read_file(plot_.c_str()));
}

// --- keys

TEST_F(CalibTool, KeyReferenceOfTheDocumentationIsUpToDate) {
  EXPECT_THAT(text_of(VQ3900_DOCS "/configuration.md"), HasSubstr(run({"keys", "--kind", "calib", "--markdown"}).out));
}

TEST_F(CalibTool, KeysListsOneKeyALine) {
  const Outcome outcome = run({"keys", "--kind", "calib"});
  EXPECT_EQ(std::count(outcome.out.begin(), outcome.out.end(), '\n'), 41);
  EXPECT_THAT(outcome.out, HasSubstr("d2d      d2d_params_unit          number   else 1     "));
  EXPECT_EQ(run({"keys", "--kind", "engine"}), run({"keys"}));
}

TEST(CalibKeys, EveryKeyHasANoteAndOptionalOnesADefault) {
  for (const KeyDescription& key : calib_input_keys()) {
    const tool::CalibKeyNote* const note = tool::find_calib_key_note(key);
    ASSERT_NE(note, nullptr) << key.name;
    EXPECT_EQ(note->absent.empty(), key.required) << key.name;
    EXPECT_FALSE(note->accepted.empty() || note->meaning.empty()) << key.name;
  }
}

TEST(CalibKeys, SampleConfigurationsHoldEveryKey) {
  for (const char* const name : {"calib_euroc.ini", "calib_euroc_lut.ini", "calib_kitti.ini", "calib_kitti_lut.ini"}) {
    const std::string text = text_of(example(name));
    for (const KeyDescription& key : calib_input_keys())
      EXPECT_THAT(text, HasSubstr(std::string("\n") + key.name + " = ")) << name;
  }
}

}  // namespace
}  // namespace vq3900::test
