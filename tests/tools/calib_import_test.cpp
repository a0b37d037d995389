#include "calib/calib_import.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "calib/stereo_calibration.h"
#include "platform/file.h"
#include "support/temp_folder.h"

namespace vq3900::test {
namespace {

using testing::AllOf;
using testing::DoubleNear;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Pointwise;
using tool::CalibrationError;
using tool::import_calibration;
using tool::ImportOptions;
using tool::LensModel;
using tool::StereoCalibration;

std::string sample(const std::string& name) {
  const std::optional<std::string> text = read_file((std::string(VQ3900_EXAMPLES) + "/" + name).c_str());
  EXPECT_TRUE(text) << name;
  return text.value_or("");
}

std::string kalibr_sample() {
  return sample("euroc_mav_camchain.yaml");
}
std::string kitti_sample() {
  return sample("kitti_2011_09_26_calib_cam_to_cam.txt");
}

// A rig of two 640x480 cameras as a stereo calibration writes it: intrinsics and extrinsics.
constexpr const char* kIntrinsics =
    "%YAML:1.0\n"
    "---\n"
    "M1: !!opencv-matrix\n"
    "   rows: 3\n"
    "   cols: 3\n"
    "   dt: d\n"
    "   data: [ 5.3e+02, 0., 3.4e+02, 0., 531., 2.35e+02, 0., 0., 1. ]\n"
    "D1: !!opencv-matrix\n"
    "   rows: 1\n"
    "   cols: 8\n"
    "   dt: d\n"
    "   data: [ -2.5e-01, -1.5e-02, 1.0e-03, -2.0e-04, 0.25, 0.5, 0.75,\n"
    "       -4.0e-02 ]\n"
    "M2: !!opencv-matrix\n"
    "   rows: 3\n"
    "   cols: 3\n"
    "   dt: f\n"
    "   data: [ 532., 0., 3.2e+02, 0., 533., 2.4e+02, 0., 0., 1. ]\n"
    "D2: !!opencv-matrix\n"
    "   rows: 14\n"
    "   cols: 1\n"
    "   dt: d\n"
    "   data: [ 1., 2., 3., 4., 5., 6., 7., 8., 0., 0., 0., 0., 0., 0. ]\n";
constexpr const char* kExtrinsics =
    "%YAML:1.0\n"
    "---\n"
    "R: !!opencv-matrix\n"
    "   rows: 3\n"
    "   cols: 3\n"
    "   dt: d\n"
    "   data: [ 0., -1., 0., 1., 0., 0., 0., 0., 1. ]\n"
    "T: !!opencv-matrix\n"
    "   rows: 3\n"
    "   cols: 1\n"
    "   dt: d\n"
    "   data: [ -0.05, 0.001, 2.0e-03 ]\n"
    "R1: !!opencv-matrix\n"
    "   rows: 1\n"
    "   cols: 1\n"
    "   dt: d\n"
    "   data: [ .Nan ]\n";

// A file that goes with the test.
class TemporaryFile {
 public:
  explicit TemporaryFile(const std::string& text, const std::string& name = "calibration")
      : path_(test::own_file("calib_import_test_" + name)) {
    write(text);
  }
  ~TemporaryFile() { std::remove(path_.c_str()); }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  const std::string& path() const { return path_; }
  // Anew, since some file systems wait for the disk when a file is emptied and written again.
  void write(const std::string& text) const {
    std::remove(path_.c_str());
    std::ofstream(path_, std::ios::binary) << text;
  }

 private:
  std::string path_;
};

// The first occurrence of a text replaced; one that is not there fails the test.
std::string with(std::string text, const std::string& what, const std::string& by) {
  const std::size_t at = text.find(what);
  EXPECT_NE(at, std::string::npos) << what;
  return at == std::string::npos ? text : text.replace(at, what.size(), by);
}

StereoCalibration imported(const std::string& text, const ImportOptions& options = {}) {
  const TemporaryFile file(text);
  return import_calibration(file.path(), options);
}

ImportOptions sized() {
  ImportOptions options;
  options.size = tool::ImageSize{640, 480};
  return options;
}

// The message of a refusal behind the file's name; empty when the calibration is taken.
std::string refusal(const std::string& text, const ImportOptions& options = {}) {
  const TemporaryFile file(text);
  try {
    import_calibration(file.path(), options);
  } catch (const CalibrationError& error) {
    const std::string message = error.what();
    EXPECT_TRUE(message.starts_with(file.path() + ": ")) << message;
    EXPECT_EQ(message.find('\n'), std::string::npos) << message;
    return message.substr(std::min(message.size(), file.path().size() + 2));
  }
  return "";
}

// --- good files

TEST(KalibrImport, ReadsBothCamerasInTheLibrarysOrderAndMillimetres) {
  const StereoCalibration rig = imported(kalibr_sample());
  EXPECT_EQ(rig.model, LensModel::kBrown);
  EXPECT_EQ(rig.left.size.width, 752);
  EXPECT_EQ(rig.left.size.height, 480);
  EXPECT_EQ(rig.left.fx, 458.654);
  EXPECT_EQ(rig.left.fy, 457.296);
  EXPECT_EQ(rig.left.cx, 367.215);
  EXPECT_EQ(rig.left.cy, 248.375);
  EXPECT_THAT(rig.left.distortion, ElementsAre(-0.28340811, 0.07395907, 0, 0, 0, 0, 0.00019359, 1.76187114e-05));
  EXPECT_EQ(rig.right.fx, 457.587);
  EXPECT_EQ(rig.right_pose.rotation(1, 2), 0.01408983584669731);
  EXPECT_THAT(rig.right_pose.translation,
              Pointwise(DoubleNear(1e-9), {-110.07380812713924, 0.39912154701445685, -0.8537025033513194}));
  EXPECT_FALSE(rig.color);
  EXPECT_NEAR(tool::signed_baseline_of(rig.right_pose), -110.0778422, 1e-6);
}

TEST(KalibrImport, ThirdCameraIsColourAndItsPoseGoesByWayOfTheSecond) {
  const std::string quarter_turn =
      "cam2:\n  camera_model: pinhole\n  intrinsics: [500, 501, 320, 240]\n  distortion_model: radtan\n"
      "  distortion_coeffs: [0.1, 0.2, 0.3, 0.4]\n  resolution: [640, 480]\n  T_cn_cnm1:\n"
      "  - [0, -1, 0, 0.5]\n  - [1, 0, 0, 0.25]\n  - [0, 0, 1, 0.125]\n  - [0, 0, 0, 1]\n";
  const StereoCalibration rig = imported(kalibr_sample() + quarter_turn);
  ASSERT_TRUE(rig.color);
  EXPECT_THAT(rig.color->camera.distortion, ElementsAre(0.1, 0.2, 0, 0, 0, 0, 0.3, 0.4));
  // x' = -y + 500, y' = x + 250, z' = z + 125 of the second camera's translation
  EXPECT_THAT(
      rig.color->pose.translation,
      Pointwise(DoubleNear(1e-9), {500 - 0.39912154701445685, 250 - 110.07380812713924, 125 - 0.8537025033513194}));
  EXPECT_NEAR(rig.color->pose.rotation(0, 1), -0.9998980485065276, 1e-15);
  EXPECT_NEAR(rig.color->pose.rotation(1, 0), 0.9999972564774497, 1e-15);
}

TEST(KalibrImport, EquidistantKeepsFourCoefficients) {
  std::string text = kalibr_sample();
  text = with(with(text, "radtan", "equidistant"), "radtan", "equidistant");
  const StereoCalibration rig = imported(text);
  EXPECT_EQ(rig.model, LensModel::kEquidistant);
  EXPECT_THAT(rig.left.distortion, ElementsAre(-0.28340811, 0.07395907, 0.00019359, 1.76187114e-05, 0, 0, 0, 0));
  EXPECT_EQ(tool::to_calibrate_params(rig).distortion_model, 2);
}

TEST(KittiImport, ReadsThreeCamerasUnrectified) {
  const StereoCalibration rig = imported(kitti_sample());
  EXPECT_EQ(rig.left.size.width, 1392);
  EXPECT_EQ(rig.left.size.height, 512);
  EXPECT_EQ(rig.right.fx, 989.5267);
  EXPECT_EQ(rig.right.fy, 987.8386);
  EXPECT_EQ(rig.right.cx, 702);
  EXPECT_EQ(rig.right.cy, 245.559);
  EXPECT_THAT(rig.left.distortion, ElementsAre(-0.3728755, 0.2037299, -0.07233722, 0, 0, 0, 0.002219027, 0.001383707));
  EXPECT_THAT(rig.right_pose.translation, Pointwise(DoubleNear(1e-9), {-537.0, 4.822061, -12.52488}));
  EXPECT_NEAR(rig.right_pose.rotation(0, 2), -0.03083487, 1e-12);
  ASSERT_TRUE(rig.color);
  EXPECT_EQ(rig.color->camera.fx, 959.791);
  EXPECT_THAT(rig.color->pose.translation, Pointwise(DoubleNear(1e-9), {59.56621, 0.2900141, 2.577209}));
}

TEST(KittiImport, PosesAreRelativeToTheLeftCameraAndColourMayBeAbsent) {
  std::string text = kitti_sample();
  text = with(text, "T_00: 2.573699e-16 -1.059758e-16 1.614870e-16", "T_00: 0.1 0.2 0.3");
  text = with(text,
              "R_01: 9.993513e-01 1.860866e-02 -3.083487e-02 -1.887662e-02 9.997863e-01 -8.421873e-03 3.067156e-02 "
              "8.998467e-03 9.994890e-01",
              "R_01: 0 -1 0 1 0 0 0 0 1");
  text.erase(text.find("S_02"));
  const StereoCalibration rig = imported(text);
  // X_1 = R (X_0 - T_00) + T_01
  EXPECT_THAT(rig.right_pose.translation, Pointwise(DoubleNear(1e-9), {-337.0, -95.177939, -312.52488}));
  EXPECT_FALSE(rig.color);
}

TEST(KittiImport, WindowsLineEndsDoNoHarm) {
  std::string text;
  for (const char c : kitti_sample())
    text += c == '\n' ? std::string("\r\n") : std::string(1, c);
  EXPECT_EQ(imported(text).left.fx, 984.2439);
}

TEST(FileStorageImport, ReadsTheKeysFromTwoFilesInEitherOrder) {
  const TemporaryFile intrinsics(kIntrinsics, "intrinsics.yml");
  const TemporaryFile extrinsics(kExtrinsics, "extrinsics.yml");
  for (const std::string& paths :
       {intrinsics.path() + "," + extrinsics.path(), extrinsics.path() + "," + intrinsics.path()}) {
    const StereoCalibration rig = import_calibration(paths, sized());
    EXPECT_EQ(rig.left.size.width, 640);
    EXPECT_EQ(rig.left.fx, 530);
    EXPECT_EQ(rig.left.fy, 531);
    EXPECT_EQ(rig.left.cx, 340);
    EXPECT_EQ(rig.left.cy, 235);
    EXPECT_THAT(rig.left.distortion, ElementsAre(-0.25, -0.015, 0.25, 0.5, 0.75, -0.04, 0.001, -0.0002));
    EXPECT_THAT(rig.right.distortion, ElementsAre(1, 2, 5, 6, 7, 8, 3, 4));
    EXPECT_THAT(rig.right_pose.translation, Pointwise(DoubleNear(1e-12), {-50.0, 1.0, 2.0}));
    EXPECT_EQ(rig.right_pose.rotation(0, 1), -1);
    EXPECT_NEAR(tool::degrees_of(rig.right_pose.rotation), 90, 1e-9);
  }
}

TEST(FileStorageImport, OneFileMayHoldAllAndTheUnitMayBeGiven) {
  std::string text = kExtrinsics;
  text += std::string(kIntrinsics).substr(std::string(kIntrinsics).find("M1"));
  ImportOptions options = sized();
  options.unit = 1;
  EXPECT_THAT(imported(text, options).right_pose.translation, Pointwise(DoubleNear(1e-12), {-0.05, 0.001, 0.002}));
}

TEST(FileStorageImport, FileWhoseNameHasACommaIsOneFile) {
  const TemporaryFile file(kalibr_sample(), "a,b");
  EXPECT_EQ(import_calibration(file.path()).left.fx, 458.654);
}

TEST(StereoCalibration, BecomesTheLibrarysRecord) {
  const CalibrateParamsMulti params = tool::to_calibrate_params(imported(kitti_sample()));
  EXPECT_EQ(params.distortion_model, 0);
  EXPECT_EQ(params.model_override, 0);
  EXPECT_EQ(params.left_ir.width, 1392);
  EXPECT_EQ(params.left_ir.height, 512);
  EXPECT_EQ(params.left_ir.fx, 984.2439F);
  EXPECT_EQ(params.right_ir.cy, 245.559F);
  EXPECT_THAT(params.right_ir.distortion,
              ElementsAre(-0.3644661F, 0.1790019F, -0.05314062F, 0, 0, 0, 0.001148107F, -0.0006298563F));
  EXPECT_EQ(params.ir_translation[0], -537.0F);
  EXPECT_EQ(params.ir_rotation[2], -0.03083487F);
  EXPECT_EQ(params.rgb.cx, 696.0217F);
  EXPECT_NEAR(params.rgb_translation[0], 59.56621F, 1e-5F);
}

TEST(StereoCalibration, WithoutColourTheRecordHasAZeroCameraInPlace) {
  const CalibrateParamsMulti params = tool::to_calibrate_params(imported(kalibr_sample()));
  EXPECT_EQ(params.rgb.width, 0);
  EXPECT_EQ(params.rgb.fx, 0);
  EXPECT_THAT(params.rgb_rotation, ElementsAre(1, 0, 0, 0, 1, 0, 0, 0, 1));
  EXPECT_THAT(params.rgb_translation, ElementsAre(0, 0, 0));
}

TEST(StereoCalibration, BaselineHasTheSignOfItsLargestComponent) {
  EXPECT_EQ(tool::signed_baseline_of({{}, {3, -4, 0}}), -5);
  EXPECT_EQ(tool::signed_baseline_of({{}, {-3, 0, 4}}), 5);
}

// --- bad files: what is changed in a good one, and what is said

struct BadCase {
  const char* name;
  const char* what;
  const char* by;
  const char* said;
};

void PrintTo(const BadCase& row, std::ostream* stream) {
  *stream << row.name;
}

class BadKalibr : public testing::TestWithParam<BadCase> {};

TEST_P(BadKalibr, IsRefusedInOneLine) {
  EXPECT_EQ(refusal(with(kalibr_sample(), GetParam().what, GetParam().by)), GetParam().said);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, BadKalibr,
    testing::Values(
        BadCase{"NoSecondCamera", "cam1:", "camera:", "cam1: missing"},
        BadCase{"NoIntrinsics", "  intrinsics: [458", "  intrinsic: [458", "line 2: cam0.intrinsics: missing"},
        BadCase{"ThreeIntrinsics", "458.654, ", "", "line 3: cam0.intrinsics: 3 numbers, expected 4"},
        BadCase{"Word", "458.654", "wide", "line 3: cam0.intrinsics: 'wide' is no number"},
        BadCase{"Empty", "458.654", "''", "line 3: cam0.intrinsics: '' is no number"},
        BadCase{"TrailingUnit", "458.654", "458.654px", "line 3: cam0.intrinsics: '458.654px' is no number"},
        BadCase{"NotANumber", "458.654", "nan", "line 3: cam0.intrinsics: 'nan' is not finite"},
        BadCase{"Infinite", "367.215", "-inf", "line 3: cam0.intrinsics: '-inf' is not finite"},
        BadCase{"OverflowsToInfinity", "367.215", "1e999", "line 3: cam0.intrinsics: '1e999' is not finite"},
        BadCase{"TooLarge", "367.215", "1e10", "line 3: cam0.intrinsics: '1e10' is too large"},
        BadCase{"NegativeFocalLength",
                "457.296",
                "-1",
                "line 3: cam0.intrinsics: focal lengths 458.654 and -1; they must be above 0"},
        BadCase{"ScalarForList", "[458.654, 457.296, 367.215, 248.375]", "12", "line 3: cam0.intrinsics: no list"},
        BadCase{"MapForList", "[458.654, 457.296, 367.215, 248.375]", "{a: 1}", "line 3: cam0.intrinsics: no list"},
        BadCase{"ListInList", "458.654", "[1]", "line 3: cam0.intrinsics: no single value"},
        BadCase{"Omni", "pinhole", "omni", "line 2: cam0.camera_model: only the pinhole model is supported"},
        BadCase{"Fov", "radtan", "fov", "line 4: cam0.distortion_model: only radtan and equidistant are supported"},
        BadCase{"MixedModels",
                "radtan",
                "equidistant",
                "line 8: cam1: another distortion model than cam0; the library takes one for all"},
        BadCase{"ThreeCoefficients",
                ", 1.76187114e-05",
                "",
                "line 5: cam0.distortion_coeffs: 3 numbers, expected 4, 5 or 8: k1, k2, p1, p2, k3, k4, k5, k6"},
        BadCase{"HalfPixels",
                "[752, 480]",
                "[752.5, 480]",
                "line 6: cam0.resolution: 752.5 is no image size; 1 to 65535 whole pixels"},
        BadCase{
            "NoRows", "[752, 480]", "[752, 0]", "line 6: cam0.resolution: 0 is no image size; 1 to 65535 whole pixels"},
        BadCase{"Huge",
                "[752, 480]",
                "[65536, 1]",
                "line 6: cam0.resolution: 65536 is no image size; 1 to 65535 whole pixels"},
        BadCase{"OneSide", "[752, 480]", "[752]", "line 6: cam0.resolution: 1 numbers, expected 2"},
        BadCase{"NoPose", "T_cn_cnm1", "T_cam_imu", "line 8: cam1.T_cn_cnm1: missing"},
        BadCase{"ThreeRows", "  - [0.0, 0.0, 0.0, 1.0]\n", "", "line 14: cam1.T_cn_cnm1: 3 rows, expected 4"},
        BadCase{"LastRow",
                "[0.0, 0.0, 0.0, 1.0]",
                "[0.0, 0.0, 0.0, 2.0]",
                "line 14: cam1.T_cn_cnm1: the last row must be 0 0 0 1"},
        BadCase{"Stretched",
                "0.9999972564774497",
                "1.1",
                "line 14: cam1.T_cn_cnm1: not a rotation: R times its transpose is off by 0.21"},
        BadCase{"CameraIsAList",
                "cam0:\n  camera_model: pinhole\n",
                "cam0: [1]\ncamX:\n  camera_model: pinhole\n",
                "line 1: cam0: no map of keys and values"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(BadKalibrFile, MirroringMatrixIsNoRotation) {
  const std::string text = with(kalibr_sample(),
                                "- [-0.000343393120588828, -0.014090668452670353, 0.9999006626381794,",
                                "- [0.000343393120588828, 0.014090668452670353, -0.9999006626381794,");
  EXPECT_EQ(refusal(text), "line 14: cam1.T_cn_cnm1: not a rotation: it mirrors");
}

TEST(BadKalibrFile, CamerasInOnePlaceHaveNoBaseline) {
  std::string text = with(kalibr_sample(), "-0.11007380812713924", "0");
  text = with(with(text, "0.00039912154701445685", "0"), "-0.0008537025033513194", "0");
  EXPECT_EQ(refusal(text), "both cameras stand in one place: no baseline");
}

TEST(BadKalibrFile, BrokenYamlNamesTheLine) {
  EXPECT_THAT(refusal(with(kalibr_sample(), "[752, 480]", "[752, 480")),
              AllOf(HasSubstr("line "), HasSubstr("no YAML: ")));
  EXPECT_THAT(refusal("cam0:\n\t- x\n"), HasSubstr("no YAML: "));
  EXPECT_EQ(refusal("cam0: *nobody\n"), "line 1: no YAML: the referenced anchor is not defined");
}

class BadKitti : public testing::TestWithParam<BadCase> {};

TEST_P(BadKitti, IsRefusedInOneLine) {
  EXPECT_EQ(refusal(with(kitti_sample(), GetParam().what, GetParam().by)), GetParam().said);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, BadKitti,
    testing::Values(
        BadCase{"NoRightCamera", "S_01:", "S_x1:", "S_01: missing"},
        BadCase{"NoRotation", "R_01:", "R_rect_01:", "R_01: missing"},
        BadCase{"NoColourDistortion", "D_02:", "X_02:", "D_02: missing"},
        BadCase{"EightInMatrix", "9.842439e+02 ", "", "line 4: K_00: 8 numbers, expected 9"},
        BadCase{"Word", "9.842439e+02", "9,842439e+02", "line 4: K_00: '9,842439e+02' is no number"},
        BadCase{"Infinite", "9.842439e+02", "inf", "line 4: K_00: 'inf' is not finite"},
        BadCase{"Skew", "9.842439e+02 0.000000e+00", "9.842439e+02 0.5", "line 4: K_00: skew 0.5; it must be 0"},
        BadCase{"NoCameraMatrix",
                "2.331966e+02 0.000000e+00 0.000000e+00 1.0",
                "2.331966e+02 0.000000e+00 0.000000e+00 2.0",
                "line 4: K_00: no camera matrix; expected fx 0 cx, 0 fy cy, 0 0 1"},
        BadCase{"SixCoefficients",
                "D_00: ",
                "D_00: 1 ",
                "line 5: D_00: 6 numbers, expected 4, 5 or 8: k1, k2, p1, p2, k3, k4, k5, k6"},
        BadCase{"Twice", "S_01:", "S_00:", "line 8: S_00: stands there a second time"},
        BadCase{"NoColon", "corner_dist:", "corner_dist", "line 2: no ':' behind a key"},
        BadCase{
            "Identity", "R_00: 1.0", "R_00: 3.0", "line 6: R_00: not a rotation: R times its transpose is off by 8"},
        BadCase{"TwoInTranslation", "-5.370000e-01 ", "", "line 12: T_01: 2 numbers, expected 3"},
        BadCase{"EmptyEntry", "S_00: 1.392000e+03 5.120000e+02", "S_00:", "line 3: S_00: 0 numbers, expected 2"}),
    [](const auto& row) { return std::string(row.param.name); });

class BadFileStorage : public testing::TestWithParam<BadCase> {};

TEST_P(BadFileStorage, IsRefusedInOneLine) {
  const std::string whole = std::string(kExtrinsics) + std::string(kIntrinsics).substr(14);
  EXPECT_EQ(refusal(with(whole, GetParam().what, GetParam().by), sized()), GetParam().said);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, BadFileStorage,
    testing::Values(BadCase{"NoDistortion", "D1:", "E1:", "D1: missing"},
                    BadCase{"NoTranslation", "T:", "t:", "T: missing"},
                    BadCase{"ScalarForMatrix",
                            "M1: !!opencv-matrix\n",
                            "M1: 5\nX: !!opencv-matrix\n",
                            "line 18: M1: no map of keys and values"},
                    BadCase{"CountDiffers", "cols: 8", "cols: 7", "line 27: D1.data: 8 numbers, expected 7"},
                    BadCase{"ManyRows", "rows: 14", "rows: 1000000000", "line 35: D2.rows: 1e+09; 1 to 14 is expected"},
                    BadCase{"NegativeRows", "rows: 14", "rows: -14", "line 35: D2.rows: -14; 1 to 14 is expected"},
                    BadCase{
                        "Bytes", "dt: f", "dt: u", "line 32: M2.dt: only matrices of numbers are supported: dt d or f"},
                    BadCase{"NaN", "531.", ".Nan", "line 22: M1.data: '.Nan' is no number"},
                    BadCase{"ThinPrism",
                            "8., 0., 0.",
                            "8., 0., 0.5",
                            "line 38: D2.data: number 10 is 0.5; thin-prism and tilt coefficients must be 0"},
                    BadCase{"RotationVector",
                            "rows: 3\n   cols: 3\n   dt: d\n   data: [ 0., -1., 0., 1., 0., 0., 0., 0., 1. ]",
                            "rows: 3\n   cols: 1\n   dt: d\n   data: [ 0., -1., 0. ]",
                            "line 7: R.data: 3 numbers, expected 9"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(BadFileStorageFile, SizeMustBeGivenAndFit) {
  EXPECT_EQ(refusal(kIntrinsics), "says nothing of the image size; give it with --size WxH");
  ImportOptions options;
  options.size = tool::ImageSize{0, 480};
  EXPECT_EQ(refusal(kIntrinsics, options), "0 is no image size; 1 to 65535 whole pixels");
  EXPECT_EQ(refusal(kIntrinsics, sized()), "R: missing");
}

TEST(BadCalibrationFile, IsNoCalibrationAtAll) {
  const char* const kNone = "neither a Kalibr camchain nor a KITTI calib_cam_to_cam nor OpenCV FileStorage YAML";
  EXPECT_EQ(refusal("hello\n"), kNone);
  EXPECT_EQ(refusal("S_rect_00: 1 2\ncamera0:\n"), kNone);
  EXPECT_EQ(refusal(""), "is empty");
  EXPECT_EQ(refusal(std::string("cam0:\0", 6)), "is no text");
  EXPECT_EQ(refusal(std::string((1 << 20) + 1, '#')), "too large for a calibration: over 1048576 bytes");
  EXPECT_EQ(refusal("cam0: " + std::string(100000, '[')), "brackets nested too deep");
}

TEST(BadCalibrationFile, OptionsThatDoNotBelongAreRefused) {
  EXPECT_EQ(refusal(kalibr_sample(), sized()), "names its own image sizes; leave --size out");
  ImportOptions options;
  options.unit = 1;
  EXPECT_EQ(refusal(kitti_sample(), options), "is in metres; leave --unit out");
}

TEST(BadCalibrationFile, SecondFileOfAnotherFormatAndMissingFilesAreNamed) {
  const TemporaryFile first(kalibr_sample(), "first");
  const auto message = [](const std::string& paths) -> std::string {
    try {
      import_calibration(paths);
    } catch (const CalibrationError& error) {
      return error.what();
    }
    return "";
  };
  EXPECT_EQ(message(first.path() + "," + first.path()),
            first.path() + ": a second file belongs to OpenCV FileStorage YAML alone");
  EXPECT_EQ(message(first.path() + ",/no/such"), "/no/such: cannot be opened");
  EXPECT_EQ(message("/no/such"), "/no/such: cannot be opened");
  EXPECT_EQ(message(testing::TempDir()), testing::TempDir() + ": cannot be opened");
  EXPECT_EQ(message(","), ": cannot be opened");
}

TEST(BadCalibrationFile, ValuesInMessagesAreShortAndPrintable) {
  EXPECT_EQ(refusal(with(kitti_sample(), "9.842439e+02", std::string(300, '7') + "x")),
            "line 4: K_00: '" + std::string(40, '7') + "...' is no number");
  EXPECT_EQ(refusal(with(kitti_sample(), "9.842439e+02", "\x1B[2J")), "line 4: K_00: '?[2J' is no number");
}

// --- hostile files: whatever is done to a good one, it is taken or refused, and what is taken makes sense

using Random = std::mt19937;

std::size_t below(Random& random, std::size_t limit) {
  return random() % limit;  // the same everywhere, unlike the standard distributions
}

std::string mutated(std::string text, Random& random) {
  static const std::array<std::string, 14> kSnippets{
      "nan", "-", "1e308", "[", "]", "{", "\n", ":", "&a ", "*a", "!!x ", "- ", "\"", "0x"};
  for (std::size_t i = below(random, 4) + 1; i > 0 && !text.empty(); --i) {
    const std::size_t at = below(random, text.size());
    switch (below(random, 5)) {
      case 0:
        text[at] = static_cast<char>(random() & 0xFF);
        break;
      case 1:
        text.resize(at);
        break;
      case 2:
        text.erase(at, below(random, 12) + 1);
        break;
      case 3:
        text.insert(at, kSnippets[below(random, kSnippets.size())]);
        break;
      default:
        text.insert(at, text.substr(below(random, text.size()), below(random, 60)));
    }
  }
  return text;
}

void expect_sane(const StereoCalibration& rig) {
  for (const tool::CalibratedCamera* const camera : {&rig.left, &rig.right}) {
    EXPECT_GE(camera->size.width, 1);
    EXPECT_LE(camera->size.width, 65535);
    EXPECT_GT(camera->fx, 0);
    EXPECT_TRUE(std::isfinite(camera->cx) && std::isfinite(camera->cy));
  }
  EXPECT_GT(determinant(rig.right_pose.rotation), 0.9);
  EXPECT_GT(norm(rig.right_pose.translation), 0);
}

TEST(HostileCalibration, MutatedSamplesAreTakenOrRefusedInOneLine) {
  constexpr unsigned kSeed = 20240607;
  SCOPED_TRACE(testing::Message() << "seed " << kSeed);
  Random random(kSeed);
  const std::string storage = std::string(kExtrinsics) + std::string(kIntrinsics).substr(14);
  const TemporaryFile file("");
  for (const auto& [text, options] :
       {std::pair{kalibr_sample(), ImportOptions{}}, {kitti_sample(), ImportOptions{}}, {storage, sized()}}) {
    int taken = 0;
    for (int round = 0; round < 500; ++round) {
      file.write(mutated(text, random));
      try {
        expect_sane(import_calibration(file.path(), options));
        ++taken;
      } catch (const CalibrationError& error) {
        const std::string message = error.what();
        EXPECT_TRUE(message.starts_with(file.path() + ": ")) << message;
        EXPECT_EQ(message.find('\n'), std::string::npos) << message;
      }
    }
    EXPECT_GT(taken, 10);
    EXPECT_LT(taken, 490);
  }
}

TEST(HostileCalibration, EveryTruncationIsRefusedOrComplete) {
  const TemporaryFile file("");
  for (const std::string& text : {kalibr_sample(), kitti_sample()}) {
    for (std::size_t size = 0; size < text.size(); size += 3) {
      file.write(text.substr(0, size));
      try {
        expect_sane(import_calibration(file.path()));
      } catch (const CalibrationError& error) {
        EXPECT_NE(std::string(error.what()), "");
      }
    }
  }
}

}  // namespace
}  // namespace vq3900::test
