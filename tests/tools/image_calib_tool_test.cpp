// Building calibration images with the tool.
#include "vq3900_depth_engine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "calib/calib_import.h"
#include "calib/calib_record.h"
#include "calib/stereo_calibration.h"
#include "platform/file.h"
#include "progress_bar.h"
#include "support/calib_tool_builds.h"

namespace vq3900::test {
namespace {

using nlohmann::json;
using testing::AllOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

class ImageCalibTool : public CalibImageToolTest {
 protected:
  std::string plain() const { return example("calib_euroc.ini"); }
  std::string lut() const { return example("calib_euroc_lut.ini"); }

  // The configuration with one line replaced.
  std::string changed(const std::string& line, const std::string& by) const {
    std::string text = read_file(plain().c_str()).value_or("");
    const std::size_t at = text.find(line);
    EXPECT_NE(at, std::string::npos) << line;
    text.replace(at, line.size(), by);
    std::ofstream(path("changed.ini"), std::ios::binary) << text;
    return path("changed.ini");
  }
};

void expect_usage(const Outcome& outcome, const std::string& said) {
  EXPECT_EQ(outcome.code, 2);
  EXPECT_EQ(outcome.out, "");
  EXPECT_THAT(outcome.err, AllOf(StartsWith("vq3900-tool: "), HasSubstr(said)));
  EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
}

// --- what is built

TEST_F(ImageCalibTool, BuildsTheImageItsLutFileAndItsFactorySection) {
  EXPECT_EQ(
      run(build("a.bin", euroc(), {plain(), lut()})),
      prints_out(0,
                 path("a.bin") + ": 20480 bytes written\n" + path("a_lut_section.bin") + ": 42596 bytes written\n" +
                     path("a_factory_align_section.bin") + ": 12636 bytes written\n"));
  EXPECT_THAT(names(), ElementsAre("a.bin", "a_factory_align_section.bin", "a_lut_section.bin"));
  EXPECT_EQ(written("a.bin").size(), 20480U);
  EXPECT_EQ(written("a_lut_section.bin").size(), 4096U + 48 + 52 + 4 * 2400 * 4);
  EXPECT_EQ(written("a_factory_align_section.bin").size(), 60U + 2 * 6288);
}

TEST_F(ImageCalibTool, WithoutALutThereIsNoLutFile) {
  EXPECT_EQ(run(build("a.bin", euroc(), {plain()})).code, 0);
  EXPECT_THAT(names(), ElementsAre("a.bin", "a_factory_align_section.bin"));
}

TEST_F(ImageCalibTool, LutFileOfAnotherBuildIsPointedTo) {
  write("a_lut_section.bin", {1, 2, 3});
  const Outcome outcome = run(build("a.bin", euroc(), {plain()}));
  EXPECT_EQ(outcome.code, 0);
  EXPECT_EQ(outcome.err,
            "vq3900-tool: " + path("a_lut_section.bin") + ": is of another build; this image has no LUT\n");
  EXPECT_EQ(written("a_lut_section.bin"), (ImageBytes{1, 2, 3}));
}

TEST_F(ImageCalibTool, HeadersCarrySerialNumberAndTimestamp) {
  const Arguments stamps{"--sn", "1,0x1122334455667788,18446744073709551615", "--timestamp", "4294967295"};
  ASSERT_EQ(run(build("a.bin", euroc(), {lut()}, stamps)).code, 0);
  for (const char* const name : {"a.bin", "a_lut_section.bin"}) {
    const ImageBytes bytes = written(name);
    EXPECT_EQ(word_at(bytes, 20), 0xFFFFFFFFU);
    EXPECT_EQ(word_at(bytes, 24), 1U);
    EXPECT_EQ(word_at(bytes, 32), 0x55667788U);
    EXPECT_EQ(word_at(bytes, 36), 0x11223344U);
    EXPECT_EQ(word_at(bytes, 40), 0xFFFFFFFFU);
    EXPECT_EQ(word_at(bytes, 44), 0xFFFFFFFFU);
  }
}

TEST_F(ImageCalibTool, EveryConfigurationMayHaveItsOwnCalibration) {
  Arguments arguments = build("a.bin", euroc(), {plain(), example("calib_kitti.ini")});
  arguments.insert(arguments.end(), {"--calib", kitti()});
  ASSERT_EQ(run(arguments).code, 0);
  EXPECT_EQ(word_at(written("a.bin"), 52), 2U);  // two rectifications
  EXPECT_EQ(word_at(written("a.bin"), 60 + 16), 480U << 16 | 752U);
}

TEST_F(ImageCalibTool, AlignmentRecordsGoAlong) {
  ImageBytes records(2 * 976);
  for (std::size_t i = 0; i < records.size(); ++i)
    records[i] = static_cast<std::uint8_t>(i * 7);
  write("align", records);
  const Arguments align{"--align", path("align")};
  ASSERT_EQ(run(build("a.bin", euroc(), {plain()}, align)).code, 0);
  const ImageBytes image = written("a.bin");
  ASSERT_EQ(image.size(), 24576U);
  EXPECT_EQ(word_at(image, 20480), 0x4644730BU);
  EXPECT_EQ(word_at(image, 20480 + 52), 2U);
  expect_same_bytes(part(image, 20480 + 60, records.size()), records);
  ASSERT_EQ(run(build("b.bin", euroc(), {plain()})).code, 0);  // they are released behind the build
  EXPECT_EQ(written("b.bin").size(), 20480U);
}

TEST_F(ImageCalibTool, RecordOfACalibrationIsTheLibrarysCalibration) {
  for (const std::string& file : {euroc(), kitti()}) {
    const tool::StereoCalibration calibration = tool::import_calibration(file);
    const DeCalibRecord_S record = to_calib_record(calibration);
    CalibrateParamsMulti read{};
    ASSERT_EQ(set_calibrate_params_multi(&record, read), 0);
    const CalibrateParamsMulti direct = to_calibrate_params(calibration);
    EXPECT_EQ(read.distortion_model, direct.distortion_model);
    EXPECT_EQ(read.right_ir.width, direct.right_ir.width);
    EXPECT_EQ(read.left_ir.cy, direct.left_ir.cy);
    EXPECT_EQ(read.rgb.fx, direct.rgb.fx);
    EXPECT_EQ(read.right_ir.distortion[7], direct.right_ir.distortion[7]);
    EXPECT_EQ(read.ir_rotation[5], direct.ir_rotation[5]);
    EXPECT_EQ(read.ir_translation[0], direct.ir_translation[0]);
    EXPECT_EQ(read.rgb_translation[2], direct.rgb_translation[2]);
  }
}

// --- usage

TEST_F(ImageCalibTool, BadUsageIsOneLineAndExitCodeTwo) {
  const Arguments configs{plain()};
  for (const char* const time : {"0", "-1", "4294967296", "soon"})
    expect_usage(run(build("a.bin", euroc(), configs, {std::string("--timestamp=") + time})), "--timestamp");
  for (const char* const number :
       {"1", "1,2", "1,2,3,4", "1,2,", "1,2,0x", "1,2,-3", "1,2,18446744073709551616", "a,b,c"})
    expect_usage(run(build("a.bin", euroc(), configs, {std::string("--sn=") + number})), "--sn");
  expect_usage(run(build("a.bin", euroc(), configs, {"--calib", kitti()})),
               "--calib is given 2 times for 1 configurations; give it once, or once for each --config");
  expect_usage(run(build("a.bin", euroc(), Arguments(256, plain()))), "--config is given 256 times");
  expect_usage(run(build("a.bin", euroc(), {})), "--config");
  expect_usage(run({"image", "calib", "-o", path("a.bin"), "--config", plain(), "--calib", euroc()}), "--temps");
  expect_usage(run({"image", "calib", "-o", path("a.bin"), "--config", plain(), "--temps", "30,30,35"}), "--calib");
  EXPECT_THAT(names(), IsEmpty());
}

TEST_F(ImageCalibTool, OutputThatIsAnInputIsRefusedAndStays) {
  write("a.bin", {});
  std::filesystem::copy_file(plain(), path("a.bin"), std::filesystem::copy_options::overwrite_existing);
  const ImageBytes before = written("a.bin");
  const std::string refused = ": is one of the inputs; name another output\n";
  EXPECT_EQ(run(build("a.bin", euroc(), {path("a.bin")})), prints_err(2, "vq3900-tool: " + path("a.bin") + refused));
  EXPECT_EQ(run(build("a.bin", path("a.bin"), {plain()})), prints_err(2, "vq3900-tool: " + path("a.bin") + refused));
  EXPECT_EQ(written("a.bin"), before);

  write("b_lut_section.bin", ImageBytes(976));  // a side file would replace it
  EXPECT_EQ(run(build("b.bin", euroc(), {lut()}, {"--align", path("b_lut_section.bin")})),
            prints_err(2, "vq3900-tool: " + path("b_lut_section.bin") + refused));
  EXPECT_THAT(names(), ElementsAre("a.bin", "b_lut_section.bin"));
}

// --- failures

TEST_F(ImageCalibTool, FailureSaysWhatTheLibrarySaysWithAHintAndLeavesEveryFile) {
  write("a.bin", {'o', 'l', 'd'});
  const Outcome outcome = run(build("a.bin", euroc(), {plain(), changed("baseline = -110.0", "baseline = 110.0")}));
  EXPECT_EQ(outcome.code, 1);
  EXPECT_EQ(outcome.out, "");
  EXPECT_THAT(outcome.err, HasSubstr("Baseline sign check error"));
  EXPECT_THAT(outcome.err, AllOf(Not(HasSubstr("MD5Encode")), Not(HasSubstr("Md5_gen"))));
  EXPECT_THAT(outcome.err,
              EndsWith("vq3900-tool: " + path("changed.ini") +
                       ": build calibration image failed with code -2; baseline of section basic must have the sign of "
                       "the calibration's, -110.078 mm\n"));
  EXPECT_EQ(written("a.bin"), (ImageBytes{'o', 'l', 'd'}));
  EXPECT_THAT(names(), ElementsAre("a.bin", "changed.ini"));
}

TEST_F(ImageCalibTool, InputsThatCannotBeReadAreNamed) {
  EXPECT_EQ(run(build("a.bin", euroc(), {"/no/such"})), prints_err(1, "vq3900-tool: /no/such: cannot be opened\n"));
  EXPECT_EQ(run(build("a.bin", "/no/such", {plain()})), prints_err(1, "vq3900-tool: /no/such: cannot be opened\n"));
  EXPECT_EQ(run(build("a.bin", euroc(), {plain()}, {"--align", "/no/such"})),
            prints_err(1, "vq3900-tool: /no/such: cannot be opened\n"));
  EXPECT_THAT(names(), IsEmpty());
}

TEST_F(ImageCalibTool, AlignmentFileHoldsOneToFourRecords) {
  for (const std::size_t size : {0U, 975U, 977U, 5U * 976U, 4U * 976U + 1U}) {
    write("align", ImageBytes(size));
    EXPECT_EQ(run(build("a.bin", euroc(), {plain()}, {"--align", path("align")})),
              prints_err(1, "vq3900-tool: " + path("align") + ": 1 to 4 alignment records of 976 bytes are expected\n"))
        << size;
  }
  write("align", ImageBytes(std::size_t{4} * 976));
  EXPECT_EQ(run(build("a.bin", euroc(), {plain()}, {"--align", path("align")})).code, 0);
}

TEST_F(ImageCalibTool, FolderThatIsNotThereIsAFailure) {
  EXPECT_EQ(run(build("none/a.bin", euroc(), {plain()})),
            prints_err(1, "vq3900-tool: " + path("none/a.bin") + ": cannot be written\n"));
}

#ifdef __unix__
TEST_F(ImageCalibTool, FullDiskLeavesTheOldFilesWhole) {
  write("a.bin", {'o', 'l', 'd'});
  {
    const FileSizeLimit limit(30000);  // enough for the image, not for the LUT file
    const Outcome outcome = run(build("a.bin", euroc(), {lut()}));
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(
        outcome.err,
        "vq3900-tool: " + path("a_lut_section.bin") + ": 30000 of 42596 bytes are on the disk; the disk may be full\n");
  }
  EXPECT_EQ(written("a.bin"), (ImageBytes{'o', 'l', 'd'}));
  EXPECT_THAT(names(), ElementsAre("a.bin"));
}

TEST_F(ImageCalibTool, LinkStaysALink) {
  write("real.bin", {1});
  std::filesystem::create_symlink("real.bin", path("a.bin"));
  ASSERT_EQ(run(build("a.bin", euroc(), {plain()})).code, 0);
  EXPECT_TRUE(std::filesystem::is_symlink(path("a.bin")));
  EXPECT_EQ(written("real.bin").size(), 20480U);
}
#endif

// --- the documentation

TEST_F(ImageCalibTool, WorkedExampleOfTheDocumentationHoldsItsCheckValues) {
  build_euroc();
  const std::optional<std::string> document = read_file(VQ3900_DOCS "/formats.md");
  ASSERT_TRUE(document);
  for (const std::string& name : {std::string("euroc.bin"), std::string("euroc_lut_section.bin")}) {
    const json report = json::parse(run({"image", "info", "--json", path(name)}).out);
    for (const json& section : report.at("sections")) {
      const json& header = section.at("header");
      char crc[16];
      std::snprintf(crc, sizeof crc, "0x%08X", header.at("crc32").get<unsigned>());
      std::string row = "| `" + name + "` | " + section.at("name").get<std::string>() + " | ";
      row += std::to_string(header.at("length").get<unsigned>()) + " | " + crc + " | ";
      row += section.at("items").at(0).at("fields").at("md5").get<std::string>() + " |\n";
      EXPECT_THAT(*document, HasSubstr(row));
    }
  }
}

// --- progress

TEST(ProgressLine, ShowsABarWithTheStepInOneLine) {
  EXPECT_EQ(tool::progress_line(0, 4, "begin"), "[                    ] 0/4  begin");
  EXPECT_EQ(tool::progress_line(1, 4, "step\nmore"), "[#####               ] 1/4  step");
  EXPECT_EQ(tool::progress_line(9, 4, "a\tb"), "[####################] 4/4  a?b");
  EXPECT_EQ(tool::progress_line(0, 0, ""), "[####################] 0/0  ");
  EXPECT_EQ(tool::progress_line(1, 4, std::string(200, 'x')).size(), 79U);
}

}  // namespace
}  // namespace vq3900::test
