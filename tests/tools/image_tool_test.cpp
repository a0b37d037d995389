#include "vq3900_depth_engine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "platform/file.h"
#include "state/engine.h"
#include "support/capture.h"
#include "support/config_image_format.h"
#include "support/config_images.h"
#include "support/registers.h"
#include "support/tool_runs.h"

namespace vq3900::test {
namespace {

using nlohmann::json;
using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using Arguments = std::vector<std::string>;

class ImageTool : public ToolTest {
 protected:
  // Arguments that build an image from the sample groups and these configurations.
  static Arguments config_arguments(const std::string& output, const Arguments& dpu) {
    Arguments arguments{"image", "config", "-o", output, "--d2c", example("d2c_groups.ini"), "--ir-pre"};
    arguments.push_back(example("ir_pre_groups.ini"));
    for (const std::string& path : dpu)
      arguments.insert(arguments.end(), {"--dpu", path});
    return arguments;
  }

  static std::string stereo() { return example("stereo_1280x800.ini"); }
  static std::string mono() { return example("mono_640x480.ini"); }

  ImageBytes written() const { return bytes_of_file(out_.text()); }

  void write(const ImageBytes& bytes) const {
    std::ofstream(out_.text(), std::ios::binary) << std::string(bytes.begin(), bytes.end());
  }

  bool output_exists() const { return read_file(out_.c_str()).has_value(); }

  OutputPath out_;
};

// Its exit code and its complaint, one line; nothing on standard output.
void expect_bad_usage(const Outcome& outcome) {
  EXPECT_EQ(outcome.code, 2) << outcome.err;
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
  EXPECT_TRUE(outcome.err.starts_with("vq3900-tool: ")) << outcome.err;
}

std::string complaint(const std::string& path, const std::string& text) {
  return "vq3900-tool: " + path + ": " + text + "\n";
}

// --- usage

TEST_F(ImageTool, BadUsageIsOneLineOnStandardErrorAndExitCodeTwo) {
  const std::string out = out_.text();
  for (const Arguments& arguments : std::vector<Arguments>{{"image"},
                                                           {"image", "fly"},
                                                           {"image", "config"},
                                                           {"image", "config", "-o", out},
                                                           {"image", "config", "-o", out, "--d2c", "a"},
                                                           {"image", "config", "-o", out, "--ir-pre", "a"},
                                                           {"image", "config", "--d2c", "a", "--ir-pre", "b"},
                                                           {"image", "registers", stereo()},
                                                           {"image", "registers", "-o", out},
                                                           {"image", "snapshot", stereo()},
                                                           {"image", "snapshot", "-o", out},
                                                           {"image", "info"},
                                                           {"image", "info", "a", "b"},
                                                           {"image", "info", "--yaml", "a"},
                                                           {"image", "diff"},
                                                           {"image", "diff", "a"},
                                                           {"image", "calib"},
                                                           {"image", "set-baseline"},
                                                           {"image", "set-fb"},
                                                           {"formats", "x"}}) {
    SCOPED_TRACE(testing::PrintToString(arguments));
    expect_bad_usage(run(arguments));
  }
  EXPECT_FALSE(output_exists());
}

TEST_F(ImageTool, HelpNamesTheCommands) {
  const Outcome help = run({"image", "--help"});
  EXPECT_EQ(help.code, 0);
  for (const char* const command :
       {"config", "registers", "snapshot", "calib", "set-baseline", "set-fb", "info", "diff"})
    EXPECT_THAT(help.out, HasSubstr(command));
}

// --- image config

TEST_F(ImageTool, ConfigBuildsTheLibrarysImage) {
  EXPECT_EQ(run(config_arguments(out_.text(), {stereo(), mono()})),
            prints_out(0, out_.text() + ": 16384 bytes written\n"));
  const ImageBytes built = written();
  reset_engine();
  ConfigInput input;
  expect_same_bytes(built, config_image(input));
}

TEST_F(ImageTool, ConfigTakesNoneToEightConfigurations) {
  for (std::size_t count = 0; count <= 8; ++count) {
    SCOPED_TRACE(count);
    EXPECT_EQ(run(config_arguments(out_.text(), Arguments(count, mono()))),
              prints_out(0, out_.text() + ": 16384 bytes written\n"));
    EXPECT_EQ(word_at(written(), 28), count == 0 ? 0xFFFFFFFFU : count);
  }
}

TEST_F(ImageTool, ConfigRefusesANinthConfiguration) {
  expect_bad_usage(run(config_arguments(out_.text(), Arguments(9, mono()))));
  EXPECT_FALSE(output_exists());
}

TEST_F(ImageTool, ConfigSaysHowManyConfigurationsAreTooMany) {
  EXPECT_EQ(run(config_arguments(out_.text(), Arguments(9, mono()))),
            prints_err(2,
                       "vq3900-tool: --dpu is given 9 times; an image holds up to 8 configurations; see 'vq3900-tool "
                       "--help'\n"));
  EXPECT_FALSE(output_exists());
}

TEST_F(ImageTool, ConfigTakesOneFileAFlag) {
  for (const std::size_t flags : {1U, 2U, 8U}) {
    SCOPED_TRACE(flags);
    Arguments arguments = config_arguments(out_.text(), Arguments(flags, mono()));
    arguments.push_back("behind.ini");  // a second value of the last --dpu
    EXPECT_EQ(run(arguments),
              prints_err(2,
                         "vq3900-tool: 'behind.ini' is not expected here; --dpu takes one file and is given once for "
                         "each; see 'vq3900-tool --help'\n"));
  }
  EXPECT_FALSE(output_exists());
}

TEST_F(ImageTool, ConfigNamesWhatStandsInThePlaceOfAFile) {
  for (const char* const value : {"--d2c", "-o", ""}) {
    Arguments arguments = config_arguments(out_.text(), {});
    arguments.insert(arguments.begin() + 2, {"--dpu", value});
    EXPECT_EQ(
        run(arguments),
        prints_err(
            2, "vq3900-tool: --dpu: a file is expected, not '" + std::string(value) + "'; see 'vq3900-tool --help'\n"));
  }
  Arguments unknown = config_arguments(out_.text(), {mono()});
  unknown.push_back("--yaml");
  EXPECT_EQ(run(unknown), prints_err(2, "vq3900-tool: '--yaml' is not expected here; see 'vq3900-tool --help'\n"));
  EXPECT_FALSE(output_exists());
}

TEST_F(ImageTool, ConfigReplacesALongerFile) {
  write(ImageBytes(20000, 'x'));
  EXPECT_EQ(run(config_arguments(out_.text(), {mono()})).code, 0);
  EXPECT_EQ(written().size(), 16384U);
}

TEST_F(ImageTool, ConfigPassesOnWhatTheLibrarySaysOfAFailureButNoTrace) {
  const Outcome outcome = run(config_arguments(out_.text(), {mono(), "/no/such/file"}));
  EXPECT_EQ(outcome.code, 1);
  EXPECT_EQ(outcome.out, "");
  EXPECT_THAT(outcome.err, HasSubstr("Cannot open file/no/such/file\n"));
  EXPECT_THAT(outcome.err,
              HasSubstr("error: load_input_configs, path=/no/such/file \nerror: convert dpu configs failed \n"));
  EXPECT_THAT(outcome.err, HasSubstr("vq3900-tool: " + out_.text() + ": 0 of 16384 bytes are on the disk"));
  EXPECT_THAT(outcome.err, AllOf(Not(HasSubstr("MD5")), Not(HasSubstr("Md5_gen"))));
}

TEST_F(ImageTool, ConfigSaysWhichGroupFileFails) {
  Arguments arguments = config_arguments(out_.text(), {mono()});
  *std::find(arguments.begin(), arguments.end(), example("d2c_groups.ini")) = "/no/d2c";
  const Outcome d2c = run(arguments);
  EXPECT_EQ(d2c.code, 1);
  EXPECT_THAT(d2c.err, HasSubstr("error: load_input_configs, path=/no/d2c \nerror: convert d2c configs failed \n"));

  arguments = config_arguments(out_.text(), {mono()});
  *std::find(arguments.begin(), arguments.end(), example("ir_pre_groups.ini")) = "/no/ir_pre";
  const Outcome ir_pre = run(arguments);
  EXPECT_EQ(ir_pre.code, 1);
  EXPECT_THAT(ir_pre.err,
              HasSubstr("error: load_input_configs, path=/no/ir_pre \nerror: convert ir_pre_isp configs failed \n"));
}

TEST_F(ImageTool, ConfigRefusesMoreGroupsThanTheSectionHolds) {
  const TempFile groups(d2c_groups_text(57));
  Arguments arguments = config_arguments(out_.text(), {});
  *std::find(arguments.begin(), arguments.end(), example("d2c_groups.ini")) = groups.path();
  const Outcome outcome = run(arguments);
  EXPECT_EQ(outcome.code, 1);
  EXPECT_THAT(outcome.err, HasSubstr("error: convert d2c configs failed \n"));
  EXPECT_FALSE(output_exists());
}

TEST_F(ImageTool, ConfigTakesGroupPathsOfUpTo256Bytes) {
  Arguments arguments = config_arguments(out_.text(), {});
  auto d2c = std::find(arguments.begin(), arguments.end(), example("d2c_groups.ini"));
  *d2c = lengthened(example("d2c_groups.ini"), 256);
  EXPECT_EQ(run(arguments).code, 0);
  *d2c = lengthened(example("d2c_groups.ini"), 257);
  EXPECT_EQ(run(arguments), prints_err(1, complaint(*d2c, "the path is longer than 256 bytes")));
}

// --- image registers, image snapshot

TEST_F(ImageTool, RegistersBuildsTheRegisterFile) {
  EXPECT_EQ(run({"image", "registers", "-o", out_.text(), stereo()}),
            prints_out(0, out_.text() + ": 928 bytes written\n"));
  const ImageBytes built = written();
  reset_engine();
  expect_same_bytes(built, sample_register_file());
}

TEST_F(ImageTool, SnapshotSavesTheRecords) {
  EXPECT_EQ(run({"image", "snapshot", "-o", out_.text(), stereo()}),
            prints_out(0, out_.text() + ": 462 bytes written\n"));
  const ImageBytes built = written();
  reset_engine();
  expect_same_bytes(built, sample_snapshot());
}

TEST_F(ImageTool, BadConfigurationLeavesTheOutputAlone) {
  const TempFile broken("[mode]\nversion = 1\n");
  for (const char* const command : {"registers", "snapshot"}) {
    write({'o', 'l', 'd'});
    for (const std::string& path : {std::string(broken.path()), std::string("/no/such/file")}) {
      const Outcome outcome = run({"image", command, "-o", out_.text(), path});
      EXPECT_EQ(outcome.code, 1);
      EXPECT_EQ(outcome.out, "");
      EXPECT_THAT(outcome.err, EndsWith(complaint(out_.text(), "not built")));
      EXPECT_EQ(written(), (ImageBytes{'o', 'l', 'd'}));
    }
  }
}

TEST_F(ImageTool, BadConfigurationIsExplainedByItsFirstErrors) {
  const TempFile broken("[mode]\nversion = 1\nlaser_type = -1\n");
  const std::string path = broken.path();
  for (const char* const command : {"registers", "snapshot"}) {
    const Outcome outcome = run({"image", command, "-o", out_.text(), path});
    EXPECT_EQ(outcome.code, 1);
    EXPECT_THAT(outcome.err, HasSubstr(path + ": error: [basic]: the section is missing or empty\n"));
    EXPECT_THAT(outcome.err, HasSubstr(path + ": and "));
    EXPECT_THAT(outcome.err, EndsWith(" more errors\n" + complaint(out_.text(), "not built")));
    EXPECT_FALSE(output_exists());
  }
}

TEST_F(ImageTool, OutputThatIsAnInputIsRefusedAndStays) {
  const std::optional<std::string> groups = read_file(example("d2c_groups.ini").c_str());
  const std::string refused = complaint(out_.text(), "is one of the inputs; name another output");
  const auto put = [&](const std::string& text) { std::ofstream(out_.text(), std::ios::binary) << text; };
  put(*groups);
  Arguments arguments = config_arguments(out_.text(), {mono()});
  *std::find(arguments.begin(), arguments.end(), example("d2c_groups.ini")) = out_.text();
  EXPECT_EQ(run(arguments), prints_err(2, refused));
  EXPECT_EQ(read_file(out_.c_str()), groups);

  const std::optional<std::string> config = read_file(stereo().c_str());
  put(*config);
  for (const char* const command : {"registers", "snapshot"})
    EXPECT_EQ(run({"image", command, "-o", out_.text(), out_.text()}), prints_err(2, refused));
  EXPECT_EQ(run(config_arguments(out_.text(), {mono(), out_.text()})), prints_err(2, refused));
  EXPECT_EQ(read_file(out_.c_str()), config);
}

TEST_F(ImageTool, FailedBuildLeavesTheOldImageAndNothingBesideIt) {
  write({'o', 'l', 'd'});
  EXPECT_EQ(run(config_arguments(out_.text(), {mono(), "/no/such/file"})).code, 1);
  EXPECT_EQ(written(), (ImageBytes{'o', 'l', 'd'}));
  EXPECT_FALSE(read_file((out_.text() + ".part").c_str()));
}

// --- destinations

struct Builder {
  const char* name;
  Arguments (*arguments)(const std::string& output);
};

class ImageToolBuilder : public ImageTool, public testing::WithParamInterface<Builder> {
 public:
  static Arguments config(const std::string& output) { return config_arguments(output, {mono()}); }
  static Arguments registers(const std::string& output) { return {"image", "registers", "-o", output, mono()}; }
  static Arguments snapshot(const std::string& output) { return {"image", "snapshot", "-o", output, mono()}; }
};

TEST_P(ImageToolBuilder, OutputThatCannotBeCreatedIsAFailure) {
  for (const std::string& path : {testing::TempDir() + "vq3900_no_such_folder/file", testing::TempDir()}) {
    EXPECT_EQ(run(GetParam().arguments(path)),
              prints_err(1, "error: create or open file failed, path=" + path + " \n" + complaint(path, "not built")));
  }
}

#ifdef __linux__
TEST_P(ImageToolBuilder, FullDiskIsNoticed) {
  const Outcome outcome = run(GetParam().arguments("/dev/full"));
  EXPECT_EQ(outcome.code, 1);
  EXPECT_EQ(outcome.out, "");
  EXPECT_THAT(outcome.err,
              AllOf(HasSubstr("vq3900-tool: /dev/full: 0 of "),
                    HasSubstr(" bytes are on the disk"),
                    HasSubstr("the disk may be full")));
}
#endif

#ifdef __unix__
TEST_P(ImageToolBuilder, ShortWriteIsNoticed) {
  const FileSizeLimit limit(400);
  const Outcome outcome = run(GetParam().arguments(out_.text()));
  EXPECT_EQ(outcome.code, 1);
  EXPECT_EQ(outcome.out, "");
  EXPECT_THAT(outcome.err, AllOf(HasSubstr(": 400 of "), HasSubstr("the disk may be full")));
  EXPECT_FALSE(output_exists());
  EXPECT_FALSE(read_file((out_.text() + ".part").c_str()));
}
#endif

TEST_P(ImageToolBuilder, InfoFindsNothingWrong) {
  ASSERT_EQ(run(GetParam().arguments(out_.text())).code, 0);
  const Outcome outcome = run({"image", "info", out_.text()});
  EXPECT_EQ(outcome.code, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_THAT(outcome.out, EndsWith(" checks, 0 bad\n"));
  const json report = json::parse(run({"image", "info", "--json", out_.text()}).out);
  EXPECT_EQ(report.at("file"), out_.text());
  EXPECT_EQ(report.at("good"), true);
  EXPECT_EQ(report.at("size"), written().size());
}

INSTANTIATE_TEST_SUITE_P(Commands, ImageToolBuilder,
                         testing::Values(Builder{"config", ImageToolBuilder::config},
                                         Builder{"registers", ImageToolBuilder::registers},
                                         Builder{"snapshot", ImageToolBuilder::snapshot}),
                         [](const auto& test) { return std::string(test.param.name); });

// --- image info

TEST_F(ImageTool, InfoShowsAnImageForPeople) {
  ConfigInput input;
  write(config_image(input));
  const Outcome outcome = run({"image", "info", out_.text()});
  EXPECT_EQ(outcome.code, 0);
  EXPECT_TRUE(outcome.out.starts_with(out_.text() + ": configuration image, 16384 bytes\n"));
  EXPECT_THAT(outcome.out, HasSubstr("\nSection d2c at 8192: 3 items\n"));
  EXPECT_THAT(outcome.out, HasSubstr("0x31303235 (version 1.0.2.5, or "));
  EXPECT_THAT(outcome.out, HasSubstr("0x50001030  mask 1FFFFFF0  value 0BFC0640  win_size 11, min_disparity -4, "));
  EXPECT_THAT(outcome.out, HasSubstr("\n33 checks, 0 bad\n"));
}

TEST_F(ImageTool, InfoFailsOnABadChecksumAndOnABadDigest) {
  ConfigInput input;
  const ImageBytes image = config_image(input);
  for (const std::size_t offset : {std::size_t{4}, kD2c.offset + 36 + 20, kIrPre.offset + 36 + 84}) {
    ImageBytes bad = image;
    bad[offset] ^= 1;
    write(bad);
    const Outcome text = run({"image", "info", out_.text()});
    EXPECT_EQ(text.code, 1) << offset;
    EXPECT_THAT(text.out, HasSubstr("\n  BAD  CRC-32: stored 0x"));
    const Outcome report = run({"image", "info", out_.text(), "--json"});
    EXPECT_EQ(report.code, 1);
    EXPECT_EQ(json::parse(report.out).at("good"), false);
  }
}

TEST_F(ImageTool, InfoFailsOnForeignAndMissingFiles) {
  for (const std::size_t size : {0U, 100U, 928U, 16384U, 70000U}) {
    write(ImageBytes(size, 0x5A));
    EXPECT_EQ(run({"image", "info", out_.text()}),
              prints_err(1, complaint(out_.text(), std::to_string(size) + " bytes that are no file of the library")));
  }
  EXPECT_EQ(run({"image", "info", "/no/such/file"}), prints_err(1, complaint("/no/such/file", "cannot be opened")));
  EXPECT_EQ(run({"image", "info", testing::TempDir()}),
            prints_err(1, complaint(testing::TempDir(), "cannot be opened")));
}

TEST_F(ImageTool, InfoReadsHostileHeaders) {
  ConfigInput input;
  const ImageBytes image = config_image(input);
  for (const std::size_t field : {8U, 28U, 32U}) {
    for (const std::uint32_t value : {0U, 1U, 0x80000000U, 0xFFFFFFFFU}) {
      ImageBytes bad = image;
      put_word(bad, kD2c.offset + field, value);
      write(bad);
      EXPECT_EQ(run({"image", "info", out_.text()}).code, 1) << field << " " << value;
    }
  }
}

// --- image diff

TEST_F(ImageTool, DiffOfEqualFilesIsEmpty) {
  ConfigInput input;
  write(config_image(input));
  EXPECT_EQ(run({"image", "diff", out_.text(), out_.text()}), prints_out(0, "0 differences\n"));
  EXPECT_EQ(run({"image", "diff", "--json", out_.text(), out_.text()}), prints_out(0, "[]\n"));
}

TEST_F(ImageTool, DiffNamesSectionItemRegisterAndField) {
  ConfigInput input;
  ImageBytes image = config_image(input);
  const OutputPath other;
  write(image);
  put_word(image, 36 + 444 + 10 * 12 + 8, 0x0CFC0640);
  std::ofstream(other.text(), std::ios::binary) << std::string(image.begin(), image.end());
  EXPECT_EQ(run({"image", "diff", out_.text(), other.text()}),
            prints_out(1,
                       "dpu[0].disp_calc[10].value: 0x0BFC0640 -> 0x0CFC0640\n"
                       "dpu[0].disp_calc[10].win_size: 11 -> 12\n"
                       "2 differences\n"));
  const json report = json::parse(run({"image", "diff", "--json", out_.text(), other.text()}).out);
  ASSERT_EQ(report.size(), 2U);
  EXPECT_EQ(report.at(1), (json{{"place", "dpu[0].disp_calc[10].win_size"}, {"first", "11"}, {"second", "12"}}));
}

TEST_F(ImageTool, DiffNamesBytesOutsideEveryField) {
  ImageBytes image = sample_register_file();
  const OutputPath other;
  write(image);
  image[29] = image[30] = 0x12;
  std::ofstream(other.text(), std::ios::binary) << std::string(image.begin(), image.end());
  EXPECT_EQ(run({"image", "diff", out_.text(), other.text()}),
            prints_out(1, "bytes 29 to 30: ffff -> 1212\n1 difference\n"));
  const json report = json::parse(run({"image", "diff", "--json", out_.text(), other.text()}).out);
  EXPECT_EQ(report, (json::array({json{{"place", "bytes 29 to 30"}, {"first", "ffff"}, {"second", "1212"}}})));
}

TEST_F(ImageTool, DiffFailsOnForeignAndMissingFiles) {
  write(sample_snapshot());
  EXPECT_EQ(run({"image", "diff", out_.text(), "/no/such/file"}),
            prints_err(2, complaint("/no/such/file", "cannot be opened")));
  EXPECT_EQ(run({"image", "diff", "/no/such/file", out_.text()}),
            prints_err(2, complaint("/no/such/file", "cannot be opened")));
  const Outcome foreign = run({"image", "diff", stereo(), out_.text(), "--json"});
  EXPECT_EQ(foreign.code, 2);
  EXPECT_THAT(foreign.err, HasSubstr("no file of the library\n"));
}

// --- formats

TEST_F(ImageTool, FormatTablesOfTheDocumentationAreUpToDate) {
  const Outcome formats = run({"formats"});
  EXPECT_EQ(formats.code, 0);
  EXPECT_EQ(formats.err, "");
  const std::optional<std::string> document = read_file(VQ3900_DOCS "/formats.md");
  ASSERT_TRUE(document);
  EXPECT_THAT(*document, HasSubstr(formats.out));
}

TEST_F(ImageTool, FormatTablesNameOffsetSizeTypeAndField) {
  const std::string out = run({"formats"}).out;
  EXPECT_THAT(out, HasSubstr("| 28 | 4 | u32 | `item_count` |\n"));
  EXPECT_THAT(out, HasSubstr("| 588 | 360 | 30 x register | `gpm` |\n| 948 | 12 | 12 x 0xFF |  |\n"));
  EXPECT_THAT(out, HasSubstr("| 60 | 4 | float | `scale` |\n"));
  EXPECT_THAT(out, HasSubstr("| 124 | 32 | 16 x u16 | `box_weight_16` |\n"));
  EXPECT_THAT(out, HasSubstr("| 576 | 4 | u32 | `gpm.count` |\n"));
  for (const char* const size : {"36", "984", "72", "156", "928", "462", "60", "964", "328", "84", "280", "52", "6288"})
    EXPECT_THAT(out, HasSubstr(std::string("\n") + size + " bytes.\n"));
}

}  // namespace
}  // namespace vq3900::test
