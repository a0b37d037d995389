// Changing calibration images with the tool.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <bit>
#include <string>

#include "support/calib_tool_builds.h"

namespace vq3900::test {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

constexpr std::size_t kD2d = 16384;
constexpr std::size_t kD2dBaseline = 60 + 36;
constexpr std::size_t kD2dFocal = 60 + 44;
constexpr std::size_t kD2cFocal = 8192 + 60 + 176;

float float_at(const ImageBytes& bytes, std::size_t offset) {
  return std::bit_cast<float>(word_at(bytes, offset));
}

using ImageUpdateTool = CalibImageToolTest;

TEST_F(ImageUpdateTool, SetBaselineWritesTheD2dSectionAloneAndShowsTheChange) {
  build_euroc();
  const Outcome outcome =
      run({"image", "set-baseline", path("euroc.bin"), "-o", path("d2d.bin"), "--baseline", "-111"});
  EXPECT_EQ(outcome.code, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_THAT(outcome.out, StartsWith("D2D     f                               baseline"));
  EXPECT_THAT(outcome.out, HasSubstr("\n0       458.653992                      -110.077843 -> -111 "));
  EXPECT_THAT(outcome.out, EndsWith("\n" + path("d2d.bin") + ": 4096 bytes written, the D2D section alone\n"));
  const ImageBytes section = written("d2d.bin");
  ASSERT_EQ(section.size(), 4096U);
  EXPECT_EQ(float_at(section, kD2dBaseline), -111.0F);
  EXPECT_EQ(run({"image", "info", path("d2d.bin")}).code, 0);
}

TEST_F(ImageUpdateTool, SetBaselineTakesASectionAndAnIndex) {
  build_euroc();
  const std::string image = path("euroc.bin");
  ASSERT_EQ(run({"image", "set-baseline", image, "-o", path("a.bin"), "--baseline", "-111", "--index", "0"}).code, 0);
  ASSERT_EQ(run({"image", "set-baseline", path("a.bin"), "-o", path("b.bin"), "--baseline", "-112"}).code, 0);
  EXPECT_EQ(float_at(written("b.bin"), kD2dBaseline), -112.0F);
  EXPECT_EQ(run({"image", "set-baseline", image, "-o", path("c.bin"), "--baseline", "-111", "--index", "1"}),
            prints_err(1, "vq3900-tool: " + image + ": has no D2D record 1; there are 1\n"));
}

TEST_F(ImageUpdateTool, SetFbWritesTheWholeImage) {
  build_euroc();
  const Outcome outcome = run({"image", "set-fb", path("euroc.bin"), "-o", path("new.bin"), "--pair", "460.5,-109.5"});
  EXPECT_EQ(outcome.code, 0) << outcome.err;
  EXPECT_THAT(outcome.out, HasSubstr("\n0       458.653992 -> 460.5             -110.077843 -> -109.5"));
  EXPECT_THAT(outcome.out, HasSubstr("\nD2C     f\n0       458.653992 -> 460.5\n"));
  EXPECT_THAT(outcome.out, EndsWith("\n" + path("new.bin") + ": 20480 bytes written\n"));
  const ImageBytes image = written("new.bin");
  EXPECT_EQ(float_at(image, kD2cFocal), 460.5F);
  EXPECT_EQ(float_at(image, kD2cFocal + 4), 460.5F);
  EXPECT_EQ(float_at(image, kD2d + kD2dFocal), 460.5F);
  EXPECT_EQ(float_at(image, kD2d + kD2dBaseline), -109.5F);
  EXPECT_EQ(run({"image", "info", path("new.bin")}).code, 0);
}

TEST_F(ImageUpdateTool, KeepFChangesTheBaselineOfTheMatchingRecordAlone) {
  build_euroc();
  const Outcome outcome = run({"image",
                               "set-fb",
                               path("euroc.bin"),
                               "-o",
                               path("d2d.bin"),
                               "--keep-f",
                               "--pair",
                               "100,-50",
                               "--pair",
                               "458.5,-109.5"});
  EXPECT_EQ(outcome.code, 0) << outcome.err;
  EXPECT_THAT(outcome.out, EndsWith("\n" + path("d2d.bin") + ": 4096 bytes written, the D2D section alone\n"));
  EXPECT_EQ(word_at(written("d2d.bin"), kD2dFocal), word_at(written("euroc.bin"), kD2d + kD2dFocal));
  EXPECT_EQ(float_at(written("d2d.bin"), kD2dBaseline), -109.5F);
}

TEST_F(ImageUpdateTool, FailureSaysWhatTheLibrarySaysAndWritesNothing) {
  build_kitti();
  const std::string image = path("kitti.bin");
  const Outcome outcome = run({"image", "set-fb", image, "-o", path("new.bin"), "--pair", "100,-50"});
  EXPECT_EQ(outcome.code, 1);
  EXPECT_EQ(outcome.out, "");
  EXPECT_THAT(outcome.err, EndsWith("input fb_set error\nvq3900-tool: " + image + ": not changed, code -2\n"));
  EXPECT_EQ(run({"image", "set-baseline", "/no/such", "-o", path("new.bin"), "--baseline", "-50"}),
            prints_err(1, "Open file error: /no/such\nvq3900-tool: /no/such: not changed, code -1\n"));
  EXPECT_EQ(run({"image", "set-baseline", example("calib_kitti.ini"), "-o", path("new.bin"), "--baseline", "-50"}).err,
            "Unknown file size.\nvq3900-tool: " + example("calib_kitti.ini") + ": not changed, code -2\n");
  EXPECT_EQ(run({"image", "set-baseline", image, "-o", path("none/new.bin"), "--baseline", "-50"}),
            prints_err(1,
                       "Original baseline: -53.716766\nOpen file error: " + path("none/new.bin") +
                           "\nvq3900-tool: " + image + ": not changed, code -1\n"));
  EXPECT_THAT(names(), ElementsAre("kitti.bin", "kitti_factory_align_section.bin"));
}

TEST_F(ImageUpdateTool, OutputThatIsTheInputIsRefused) {
  build_kitti();
  const ImageBytes before = written("kitti.bin");
  EXPECT_EQ(run({"image", "set-baseline", path("kitti.bin"), "-o", path("kitti.bin"), "--baseline", "-50"}),
            prints_err(2, "vq3900-tool: " + path("kitti.bin") + ": is one of the inputs; name another output\n"));
  EXPECT_EQ(written("kitti.bin"), before);
}

TEST_F(ImageUpdateTool, BadUsageIsExitCodeTwo) {
  for (const Arguments& arguments : {Arguments{"image", "set-baseline", "a", "-o", "b"},
                                     {"image", "set-baseline", "a", "-o", "b", "--baseline", "nan"},
                                     {"image", "set-baseline", "a", "-o", "b", "--baseline", "wide"},
                                     {"image", "set-baseline", "a", "-o", "b", "--baseline", "1", "--index", "-1"},
                                     {"image", "set-fb", "a", "-o", "b"},
                                     {"image", "set-fb", "a", "-o", "b", "--pair", "1"},
                                     {"image", "set-fb", "a", "-o", "b", "--pair", "1,2,3"},
                                     {"image", "set-fb", "a", "-o", "b", "--pair", "1,inf"}}) {
    SCOPED_TRACE(testing::PrintToString(arguments));
    EXPECT_EQ(run(arguments).code, 2);
  }
}

}  // namespace
}  // namespace vq3900::test
