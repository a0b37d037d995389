#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "support/capture.h"
#include "support/config_image_fixture.h"
#include "support/config_image_format.h"
#include "support/config_images.h"
#include "support/de_input_text.h"
#include "support/image_files.h"
#include "support/registers.h"

namespace vq3900::test {
namespace {

// --- failing files

struct FailingFile {
  const char* name;
  std::function<DeInputText()> text;
  const char* err;
  const char* setter_message;  // null: loading fails
};

const std::vector<FailingFile>& failing_files() {
  static const std::vector<FailingFile> files = {
      {"missing_section", [] { return DeInputText().remove_section("gpm"); }, "gpm section not found!\n", nullptr},
      {"bad_depth_unit",
       [] { return DeInputText().set("basic", "depth_unit", "0.3"); },
       "depth_unit parse error\n",
       nullptr},
      {"bad_number", [] { return DeInputText().set("disparity", "win_size", "x"); }, "", nullptr},
      {"camera_mode", [] { return DeInputText().set("basic", "cam_mode", "2"); }, "", "set_camera_mode error!\n"},
      {"rectify_status",
       [] { return DeInputText().set("basic", "rectify_mode", "2"); },
       "",
       "set_rectify_status error!\n"},
      {"rotation",
       [] { return DeInputText().set("basic", "cam_mode", "1").set("basic", "rectify_mode", "2"); },
       "stereo mode:  nonsupport rotation !\n",
       "set_rectify_sbg2r_config error!\n"},
  };
  return files;
}

class ConfigImageFailingFile : public ConfigImage, public testing::WithParamInterface<FailingFile> {};

TEST_P(ConfigImageFailingFile, EndsTheBuildAtItsPlaceWithItsMessages) {
  const TempFile bad(GetParam().text().text());
  const std::string message =
      GetParam().setter_message == nullptr
          ? not_loaded(bad.path())
          : GetParam().setter_message + ("error: set_depth_engine_config, path=" + std::string(bad.path()) + " \n");
  for (const std::size_t place : {0U, 1U, 2U}) {
    SCOPED_TRACE(place);
    std::vector<std::string> dpu(3, example("mono_640x480.ini"));
    dpu[place] = bad.path();
    ConfigInput input(dpu);
    expect_failure(input, digest_trace(static_cast<int>(place)) + message + kDpuFailed, GetParam().err);
    EXPECT_EQ(engine().d2c_groups.count, 0);  // groups are not loaded
    EXPECT_EQ(engine().ir_pre_groups.count, 0);
  }
}

TEST_P(ConfigImageFailingFile, IsForgottenByTheNextBuild) {
  const TempFile bad(GetParam().text().text());
  ConfigInput failing({example("mono_640x480.ini"), bad.path()}, example("d2c_groups.ini"), "none");
  build(failing);
  ConfigInput input;
  const ImageBytes image = built(input, 7);
  expect_section(image, kDpu, 2);
  EXPECT_EQ(part(item_of(image, kDpu, 0), 0, 108), part(item_of(golden_image(), kDpu, 0), 0, 108));
}

INSTANTIATE_TEST_SUITE_P(Files, ConfigImageFailingFile, testing::ValuesIn(failing_files()),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_F(ConfigImage, FileWithoutSectionModeCannotBeTheFirst) {
  const TempFile empty("[other]\nkey = 1\n");
  ConfigInput input({empty.path()});
  expect_failure(input,
                 "set_extend_chop_params error!\nerror: set_depth_engine_config, path=" + std::string(empty.path()) +
                     " \n" + kDpuFailed,
                 "unsupported size! size: 5, 7,9 \nmissing setting prefilter imgage size,namely ir resolution\n");
}

TEST_F(ConfigImage, MissingFileEndsTheBuild) {
  ConfigInput input({example("mono_640x480.ini"), "/no/such/file"});
  expect_failure(input, digest_trace(1) + not_loaded("/no/such/file") + kDpuFailed, "Cannot open file/no/such/file\n");
}

TEST_F(ConfigImage, NullPathInTheArrayIsAFileThatCannotBeOpened) {
  ConfigInput input;
  input.path(1) = nullptr;
  expect_failure(input, digest_trace(1) + not_loaded("(null)") + kDpuFailed, "Cannot open file\n");
}

TEST_F(ConfigImage, FailedFileLeavesTheRecordsAtThePointOfFailure) {
  const TempFile first(DeInputText().text());
  const TempFile bad(DeInputText()
                         .set("mode", "laser_type", "77")
                         .set("basic", "cam_mode", "1")
                         .set("basic", "rectify_mode", "2")
                         .set("disparity", "win_size", "21")
                         .text());
  ConfigInput input({first.path(), bad.path(), first.path()}, example("d2c_groups.ini"), "none");
  build(input);
  EXPECT_EQ(engine().input.mode.record.laser_type, 77U);  // loaded whole,
  EXPECT_EQ(engine().basic.cam_mode, 1U);                 // applied up to the rotation,
  EXPECT_EQ(engine().disparity.win_size, 9U);             // which comes before the window
}

TEST_F(ConfigImage, FailingD2cFileEndsTheBuildWithItsMessages) {
  std::string no_second = d2c_groups_text(2);
  no_second.replace(no_second.find("[group2]"), 8, "[group3]");
  std::string bad_number = d2c_groups_text(1);
  bad_number.replace(bad_number.find("scale = 2"), 9, "scale = x");
  for (const auto& [text, err] :
       {std::pair{std::string("[basic]\nversion = 1\n"), "Field num not found in section basic\n"},
        {no_second, "check section group2 error\n"},
        {bad_number, ""}}) {
    const TempFile d2c(text);
    ConfigInput input({example("mono_640x480.ini")}, d2c.path(), example("ir_pre_groups.ini"));
    expect_failure(input, digest_trace(1) + not_loaded(d2c.path()) + kD2cFailed, err);
    EXPECT_EQ(engine().ir_pre_groups.count, 0);
  }
}

TEST_F(ConfigImage, FailingIrPreFileEndsTheBuildAfterTheOtherSections) {
  const TempFile ir_pre("[basic]\nnum = 1\nversion = 1\n");
  ConfigInput input({example("mono_640x480.ini")}, example("d2c_groups.ini"), ir_pre.path());
  expect_failure(input, digest_trace(1 + 3) + not_loaded(ir_pre.path()) + kIrPreFailed, "check section group1 error\n");
  EXPECT_EQ(engine().d2c_groups.count, 3);
}

TEST_F(ConfigImage, EmptyGroupPathsFailInTheLoader) {
  ConfigInput no_d2c({}, "", example("ir_pre_groups.ini"));
  expect_failure(no_d2c, not_loaded("") + kD2cFailed, "Cannot open file\n");
  ConfigInput no_ir_pre({}, example("d2c_groups.ini"), "");
  expect_failure(no_ir_pre, digest_trace(3) + not_loaded("") + kIrPreFailed, "Cannot open file\n");
}

TEST_F(ConfigImage, GroupPathsOf256BytesNeedNoTerminator) {
  const TempFile d2c(d2c_groups_text(1));
  const TempFile ir_pre(ir_pre_groups_text(1));
  ConfigInput input({}, lengthened(d2c.path(), 256), lengthened(ir_pre.path(), 256));
  ASSERT_EQ(input.record().ir_pre_config_path[255], ir_pre.path()[std::strlen(ir_pre.path()) - 1]);
  const ImageBytes image = built(input, 2);
  expect_section(image, kD2c, 1);
  expect_section(image, kIrPre, 1);

  const std::string missing = lengthened("/no/such/file", 256);
  ConfigInput failing({}, missing, lengthened(ir_pre.path(), 256));
  expect_failure(failing, not_loaded(missing) + kD2cFailed, "Cannot open file" + missing + "\n");
}

// --- destinations

TEST_F(ConfigImage, LongerFileIsReplaced) {
  fill_output(20000);
  ConfigInput input;
  expect_same_bytes(built(input, 7), golden_image());
}

TEST_F(ConfigImage, DestinationThatCannotBeCreatedIsPrintedAndNothingLoaded) {
  ConfigInput input;
  const auto before = bytes_of(engine());
  const std::string missing = testing::TempDir() + "vq3900_no_such_folder/file";
  for (const std::string& path : {missing, std::string(), testing::TempDir()}) {
    EXPECT_EQ(outcome_of([&] { return gen_depth_engine_config_flash_file_de(&input.record(), path.c_str()); }),
              prints_out(0, not_created(path)));
  }
  EXPECT_EQ(outcome_of([&] { return gen_depth_engine_config_flash_file_de(&input.record(), nullptr); }),
            prints_out(0, not_created("(null)")));
  EXPECT_EQ(bytes_of(engine()), before);
}

TEST_F(ConfigImage, NullInputIsRefusedAndTheFileLeftAlone) {
  fill_output(100);
  const auto before = bytes_of(engine());
  EXPECT_EQ(outcome_of([&] { return gen_depth_engine_config_flash_file_de(nullptr, out_.c_str()); }), silent(0));
  EXPECT_EQ(outcome_of([] { return gen_depth_engine_config_flash_file_de(nullptr, nullptr); }), silent(0));
  EXPECT_EQ(written().size(), 100U);
  EXPECT_EQ(bytes_of(engine()), before);
}

#ifdef __linux__
TEST_F(ConfigImage, FullDiskGoesUnseen) {
  ConfigInput input;
  EXPECT_EQ(outcome_of([&] { return gen_depth_engine_config_flash_file_de(&input.record(), "/dev/full"); }),
            prints_out(1, digest_trace(7)));
}
#endif

#ifdef __unix__
TEST_F(ConfigImage, ShortWriteGoesUnseen) {
  ConfigInput input;
  const FileSizeLimit limit(8192);
  EXPECT_EQ(build(input), prints_out(1, digest_trace(7)));
  EXPECT_EQ(written().size(), 8192U);
}
#endif

}  // namespace
}  // namespace vq3900::test
