// The images of two real rigs, held against files that were looked at. With VQ3900_UPDATE_GOLDEN set in the environment
// the files are written anew.
#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <ostream>
#include <string>
#include <vector>

#include "support/calib_builds.h"
#include "support/calib_images.h"
#include "support/calib_rigs.h"
#include "support/capture.h"
#include "support/engine_fixture.h"
#include "support/image_files.h"
#include "support/little_endian_memory.h"
#include "support/numbers.h"

namespace vq3900::test {
namespace {

constexpr std::uint32_t kTimestamp = 1700000000;

struct Rig {
  const char* name;  // of the configuration among the examples, and of the golden files
  CalibrateParamsMulti (*calib)();
  std::uint32_t width, height;          // rectified
  std::uint32_t lut_width, lut_height;  // 0: no LUT
};

void PrintTo(const Rig& rig, std::ostream* stream) {
  *stream << rig.name;
}

constexpr Rig kRigs[] = {{"calib_euroc", euroc_rig, 752, 480, 0, 0},
                         {"calib_euroc_lut", euroc_rig, 752, 480, 60, 40},
                         {"calib_kitti", kitti_rig, 1392, 512, 0, 0},
                         {"calib_kitti_lut", kitti_rig, 696, 256, 52, 20}};

std::string golden_path(const std::string& name) {
  return std::string(VQ3900_TEST_DATA) + "/" + name + ".bin";
}

void expect_golden(const ImageBytes& actual, const std::string& name) {
  SCOPED_TRACE(name);
  if (std::getenv("VQ3900_UPDATE_GOLDEN") != nullptr) {
    std::ofstream file(golden_path(name), std::ios::binary);
    file.write(reinterpret_cast<const char*>(actual.data()), static_cast<std::streamsize>(actual.size()));
    EXPECT_TRUE(file.flush());
  }
  expect_same_bytes(actual, bytes_of_file(golden_path(name)));
}

std::size_t lut_bytes(const Rig& rig) {
  return rig.lut_width == 0 ? 0 : 52 + std::size_t{4} * 4 * rig.lut_width * rig.lut_height;
}

class GoldenImages : public EngineTest, public testing::WithParamInterface<Rig> {
 protected:
  static BufferBuild build() {
    const Rig& rig = GetParam();
    give_temperatures();
    const std::uint64_t serial_number[] = {0x0102030405060708, 0x1112131415161718, 0x2122232425262728};
    set_sn(&serial_number[0], &serial_number[1], &serial_number[2]);
    CalibInput input;
    input.add(record_of(rig.calib()), example(std::string(rig.name) + ".ini"));
    const int lut_size = rig.lut_width == 0 ? -1 : 4096 + 48 + static_cast<int>(lut_bytes(rig));
    BufferBuild build = built_in_memory(input, {20480, lut_size, 60 + 6288}, kTimestamp);
    EXPECT_EQ(build.outcome.code, 0) << build.outcome.out << build.outcome.err;
    return build;
  }

  static ImageBytes golden(const char* ending = "") {
    return bytes_of_file(golden_path(GetParam().name + std::string(ending)));
  }
};

INSTANTIATE_TEST_SUITE_P(Rigs, GoldenImages, testing::ValuesIn(kRigs),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_P(GoldenImages, BuildGivesTheGoldenBytes) {
  const BufferBuild images = build();
  expect_golden(images.main, GetParam().name);
  if (GetParam().lut_width > 0) expect_golden(images.lut, GetParam().name + std::string("_lut_section"));
}

TEST_P(GoldenImages, HeadersChecksumsAndDigestsHold) {
  const ImageBytes image = golden();
  ASSERT_EQ(image.size(), kImageSize);
  for (const FlashSection& section : {flash::kRectify, flash::kD2c, flash::kD2d}) {
    expect_flash_section(image, section, 1);
    EXPECT_EQ(time_of(image, section), kTimestamp);
    expect_words(part(image, section.offset, 48), {{24, 0x05060708}, {28, 0x01020304}, {40, 0x25262728}});
  }
  expect_digest(record_at(image, flash::kRectify, 0), 0, 16, 12);
  expect_digest(record_at(image, flash::kD2c, 0), 0, 16, 16);
  expect_digest(record_at(image, flash::kD2d, 0), 0, 16, 16);
  if (GetParam().lut_width == 0) return;
  const ImageBytes luts = golden("_lut_section");
  expect_flash_section(part(luts, 0, 4096), flash::kDirectory, 1);
  expect_lut_data_section(luts, lut_bytes(GetParam()));
  expect_digest(record_at(luts, flash::kDirectory, 0), 0, 16, 12);
  expect_digest(lut_data_record(luts, 0, 52), 12, 28, 12);
}

TEST_P(GoldenImages, FactorySectionHolds) {
  const DeCalibRecord_S calib = record_of(GetParam().calib());
  const ImageBytes factory = build().factory;
  expect_flash_section(factory, flash::kFactoryRecords, 1);
  const ImageBytes record = record_at(factory, flash::kFactoryRecords, 0);
  expect_digest(record, 0, 16, 20);
  EXPECT_TRUE(part(record, 60, 2016) == little_endian_bytes_of(calib.left_ir));
  EXPECT_TRUE(part(record, 4092, 2016) == little_endian_bytes_of(calib.rgb));
  expect_words(record,
               {{36, static_cast<std::uint32_t>(GetParam().calib().left_ir.width)},
                {40, static_cast<std::uint32_t>(GetParam().calib().left_ir.height)}});
}

float float_at(const ImageBytes& bytes, std::size_t offset) {
  return std::bit_cast<float>(word_at(bytes, offset));
}

TEST_P(GoldenImages, RecordsSayWhatTheRigIs) {
  const Rig& rig = GetParam();
  const bool kitti = rig.calib == kitti_rig;
  const float scale = rig.width == 696 ? 0.5F : 1.0F;
  const ImageBytes rectify = record_at(golden(), flash::kRectify, 0);
  EXPECT_EQ(word_at(rectify, 16), rig.height << 16 | rig.width);
  EXPECT_EQ(float_at(rectify, 900), rig.calib().left_ir.fx * scale);
  EXPECT_EQ(float_at(rectify, 920), rig.calib().right_ir.fx * scale);
  EXPECT_EQ(float_at(rectify, 744), rig.calib().left_ir.distortion[0]);
  EXPECT_EQ(float_at(rectify, 832), rig.calib().right_ir.distortion[0]);

  const ImageBytes d2d = record_at(golden(), flash::kD2d, 0);
  // The length of the translation in the depth unit.
  EXPECT_NEAR(static_cast<double>(float_at(d2d, 36)), kitti ? -53.71677 : -110.07784, 2e-5);
  EXPECT_EQ(float_at(d2d, 44), rig.calib().left_ir.fx * scale);
  const float product = float_at(d2d, 36) * float_at(d2d, 44);
  const auto factor = static_cast<double>(static_cast<float>(1.0 / static_cast<double>(product)));
  const auto encoded = static_cast<std::uint32_t>(std::llround(std::ldexp(factor, 40)));
  EXPECT_EQ(word_at(d2d, 80), encoded);

  const ImageBytes d2c = record_at(golden(), flash::kD2c, 0);
  EXPECT_EQ(word_at(d2c, 20), kitti ? 512U << 16 | 1392U : 0U);
  EXPECT_EQ(float_at(d2c, 248), rig.calib().rgb.distortion[0]);
}

TEST_P(GoldenImages, LutStartsWhereTheExtensionBegins) {
  const Rig& rig = GetParam();
  if (rig.lut_width == 0) return;
  const ImageBytes entry = record_at(golden("_lut_section"), flash::kDirectory, 0);
  // Half of a quarter of 752 x 480 and of an eighth of 696 x 256, in whole steps of 16 pixels.
  const std::uint32_t x_steps = rig.width == 752 ? 6 : 3, y_steps = rig.width == 752 ? 4 : 1;
  expect_words(entry, {{28, 1}, {32, 100 * x_steps}, {36, 100 * y_steps}});
  expect_words(entry, {{40, 0U - 16 * x_steps}, {44, 0U - 16 * y_steps}, {64, rig.lut_width}, {68, rig.lut_height}});
}

}  // namespace
}  // namespace vq3900::test
