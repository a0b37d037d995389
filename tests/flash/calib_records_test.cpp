#include "flash/calib_records.h"

#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <memory>
#include <span>
#include <utility>
#include <vector>

#include "support/calib_builds.h"
#include "support/calib_images.h"
#include "support/calib_samples.h"
#include "support/little_endian_memory.h"
#include "support/lut_grids.h"
#include "support/numbers.h"
#include "support/registers.h"

namespace vq3900::test {
namespace {

// --- the bytes of records

// A conversion's result and register tables of which no two words are alike.
struct Samples {
  Samples() {
    converted.rect = counting_bytes<DeStereoRectifyParams_S>();
    converted.d2c = counting_bytes<DeCameraD2CParams_S>();
    converted.depth = counting_bytes<DepthCalcParams_S>();
    tables = std::make_unique<RegisterTables>();
    std::uint32_t value = 0x01020304;
    for (auto& table : tables->rectify)
      number(table, value);
    for (auto& table : tables->rectify_lut_info)
      number(table, value);
    number(tables->d2c, value);
    number(tables->d2d, value);
  }

  template <typename Table>
  static void number(Table& table, std::uint32_t& value) {
    for (DeRegElement_S& element : table)
      element.value = value += 0x01010101;
  }

  ConvertedCalibration converted;
  CalibInputConfig config;
  std::unique_ptr<RegisterTables> tables;
};

template <typename Record>
ImageBytes written(std::span<const LayoutRow<Record>> layout, const Record& record, std::size_t size) {
  ImageBytes bytes(size, 0xEE);
  write_record(layout, record, bytes);
  return bytes;
}

template <typename Table>
ImageBytes table_bytes(const Table& table) {
  ImageBytes bytes;
  for (const DeRegElement_S& element : table) {
    for (const std::uint32_t word : {element.address, element.mask, element.value}) {
      bytes.resize(bytes.size() + 4);
      put_word(bytes, bytes.size() - 4, word);
    }
  }
  return bytes;
}

template <typename Record>
ImageBytes memory_of(const Record& record, std::size_t offset, std::size_t size) {
  return part(little_endian_bytes_of(record), offset, size);
}

TEST(RectifyRecordBytes, HoldKeyTablesAndTheConversionsResult) {
  Samples s;
  s.config.mipi_channel_status = 0x83;
  const RectifyRecord record = rectify_record(s.converted, s.config, *s.tables);
  const ImageBytes bytes = written(rectify_record_layout(), record, 964);
  EXPECT_EQ(part(bytes, 0, 16), ImageBytes(16));
  EXPECT_EQ(part(bytes, 16, 4), memory_of(s.converted.rect, 16, 4));  // camera 1's rectified width and height
  EXPECT_EQ(part(bytes, 20, 4), memory_of(s.converted.rect, 216, 4));
  EXPECT_EQ(word_at(bytes, 24), 1U);
  EXPECT_EQ(part(bytes, 28, 276), table_bytes(s.tables->rectify[0]));
  EXPECT_EQ(word_at(bytes, 28) & 0xFFFF0000, 0x52080000U);
  EXPECT_EQ(part(bytes, 304, 72), ImageBytes(72));
  EXPECT_EQ(part(bytes, 376, 276), table_bytes(s.tables->rectify[1]));
  EXPECT_EQ(word_at(bytes, 376) & 0xFFFF0000, 0x52000000U);
  EXPECT_EQ(part(bytes, 652, 72), ImageBytes(72));
  EXPECT_EQ(part(bytes, 724, 216), memory_of(s.converted.rect, 0, 216));
  EXPECT_EQ(part(bytes, 940, 24), memory_of(s.converted.rect, 220, 24));
}

TEST(D2cRecordBytes, HoldKeyTableAndTheConversionsResultButForTheValidIntrinsics) {
  Samples s;
  s.config.mipi_channel_status = 2;
  s.config.d2d_params_unit = 0.5F;
  s.config.d2d_params_unit_in_R_en = 1;
  const ImageBytes bytes = written(d2c_record_layout(), d2c_record(s.converted, s.config, *s.tables), 328);
  EXPECT_EQ(part(bytes, 0, 16), ImageBytes(16));
  EXPECT_EQ(part(bytes, 16, 4), memory_of(s.converted.d2c, 16, 4));
  EXPECT_EQ(part(bytes, 20, 4), memory_of(s.converted.d2c, 36, 4));
  expect_words(bytes, {{24, 50}, {28, 0}});
  EXPECT_EQ(part(bytes, 32, 144), table_bytes(s.tables->d2c));
  EXPECT_EQ(part(bytes, 176, 20), memory_of(s.converted.d2c, 0, 20));
  EXPECT_EQ(part(bytes, 196, 20), memory_of(s.converted.d2c, 40, 20));
  EXPECT_EQ(part(bytes, 216, 112), memory_of(s.converted.d2c, 60, 112));
}

TEST(D2dRecordBytes, HoldKeyDepthValuesAndTable) {
  Samples s;
  s.config.mipi_channel_status = 1;
  s.config.disp_offset = -31;
  s.config.ref_dist = 1234;
  const ImageBytes bytes = written(d2d_record_layout(), d2d_record(s.converted, s.config, *s.tables), 84);
  EXPECT_EQ(part(bytes, 0, 16), ImageBytes(16));
  expect_words(bytes, {{16, 0xFFFFFFE2}, {20, 0}, {24, 1200}, {28, 1}});
  EXPECT_EQ(part(bytes, 32, 28), memory_of(s.converted.depth, 0, 28));
  EXPECT_EQ(part(bytes, 60, 24), table_bytes(s.tables->d2d));
  expect_words(bytes, {{60, 0x50001204}, {72, 0x50001208}, {76, 0xFFFFFFFF}});  // iZ0, then PBF
}

// --- the numbers of keys

struct RoundingRow {
  float value;
  std::int64_t expected;  // cut to 32 bits
};

std::int32_t cut(std::int64_t number) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(static_cast<std::uint64_t>(number)));
}

TEST(D2dKeyNumbers, DisparityOffsetGoesToTheNearestTenHalvesAwayFromZero) {
  constexpr RoundingRow kRows[] = {{0, 0},
                                   {4.9999F, 0},
                                   {5, 10},
                                   {-5, -10},
                                   {-4.9999F, 0},
                                   {14.99F, 10},
                                   {15, 20},
                                   {-15, -20},
                                   {25, 30},
                                   {94.5F, 90},
                                   {95, 100},
                                   {1e12F, 999999995900},  // the float is 999999995904
                                   {1e30F, 0},
                                   {kNan, 0},
                                   {kInfinity, 0},
                                   {-kInfinity, 0}};
  const Samples s;
  for (const RoundingRow& row : kRows) {
    CalibInputConfig config = s.config;
    config.disp_offset = row.value;
    EXPECT_EQ(d2d_record(s.converted, config, *s.tables).key.disp_offset, cut(row.expected)) << row.value;
  }
}

TEST(D2dKeyNumbers, ReferenceDistanceGoesToTheNearestHundred) {
  constexpr RoundingRow kRows[] = {
      {0, 0}, {49.99F, 0}, {50, 100}, {149.9F, 100}, {150, 200}, {-50, -100}, {250, 300}, {1049, 1000}, {kNan, 0}};
  const Samples s;
  for (const RoundingRow& row : kRows) {
    CalibInputConfig config = s.config;
    config.ref_dist = row.value;
    EXPECT_EQ(d2d_record(s.converted, config, *s.tables).key.ref_dist, cut(row.expected)) << row.value;
  }
}

TEST(D2dKeyNumbers, ReferenceDistanceIsZeroForTheCameraTypesWithAMode) {
  Samples s;
  s.config.ref_dist = 1000;
  for (const int type : {0, 1, 2, 3, 4, 255}) {
    s.config.cam_type = static_cast<std::uint8_t>(type);
    EXPECT_EQ(d2d_record(s.converted, s.config, *s.tables).key.ref_dist, type == 2 || type == 3 ? 0 : 1000) << type;
  }
}

TEST(KeyUnit, IsAHundredfoldInSinglePrecisionRoundedHalfAwayFromZero) {
  constexpr RoundingRow kRows[] = {{1, 100},
                                   {0.5F, 50},
                                   {0.125F, 13},
                                   {-0.125F, -13},
                                   {10, 1000},
                                   {0.00001F, 0},  // the float is below 1e-5
                                   {0.00002F, 0},
                                   {0.0049F, 0},
                                   {0.0051F, 1},
                                   {1.005F, 101},  // 100.5 as a float, 100.49999... as a double
                                   {3e9F, 299999985664},
                                   {kNan, 0},
                                   {kInfinity, 0}};
  const Samples s;
  for (const RoundingRow& row : kRows) {
    CalibInputConfig config = s.config;
    config.d2d_params_unit = row.value;
    config.d2d_params_unit_in_R_en = 1;
    EXPECT_EQ(d2d_record(s.converted, config, *s.tables).key.hundredfold_unit, cut(row.expected)) << row.value;
    EXPECT_EQ(d2c_record(s.converted, config, *s.tables).key.hundredfold_unit, cut(row.expected)) << row.value;
  }
}

TEST(KeyUnit, IsZeroUnlessTheSettingIsOn) {
  Samples s;
  s.config.d2d_params_unit = 0.5F;
  for (const int setting : {0, 1, 2, -1}) {
    s.config.d2d_params_unit_in_R_en = static_cast<std::int8_t>(setting);
    EXPECT_EQ(d2d_record(s.converted, s.config, *s.tables).key.hundredfold_unit, setting == 0 ? 0 : 50) << setting;
    EXPECT_EQ(d2c_record(s.converted, s.config, *s.tables).key.hundredfold_unit, setting == 0 ? 0 : 50) << setting;
  }
}

TEST(KeyNumbers, RoundingTouchesTheKeyAlone) {
  Samples s;
  s.config.disp_offset = 27;
  s.config.ref_dist = 1234;
  const D2dRecord record = d2d_record(s.converted, s.config, *s.tables);
  EXPECT_EQ(bytes_of(record.depth), bytes_of(s.converted.depth));
}

TEST(KeyNumbers, MipiChannelIsBitZero) {
  Samples s;
  for (const int status : {0, 1, 2, 3, 254, 255}) {
    s.config.mipi_channel_status = static_cast<std::uint8_t>(status);
    const auto bit = static_cast<std::uint32_t>(status % 2);
    EXPECT_EQ(rectify_record(s.converted, s.config, *s.tables).key.mipi_channel, bit) << status;
    EXPECT_EQ(d2c_record(s.converted, s.config, *s.tables).key.mipi_channel, bit) << status;
    EXPECT_EQ(d2d_record(s.converted, s.config, *s.tables).key.mipi_channel, bit) << status;
  }
}

// --- LUT records

struct LutSamples : Samples {
  LutSamples() {
    luts.camera[0].info = lut_info(64, 48);
    luts.camera[0].info.lut_x_start = 0xFFFFFFD0;
    luts.camera[1].info = lut_info(100, 52);
    luts.camera[1].info.lut_cy = 111.5F;
    rectify.md5.fill(0x77);
    rectify.key = {0x0102, 0x0304, {0x0506, 0x0708}, 1};
  }

  RectifyLutState luts;
  RectifyRecord rectify;
};

ImageBytes descriptor_bytes(const RectifyLutInfo& info) {
  return part(turned_numbers(bytes_of(info), {{9, 4}, {sizeof info - 36, 1}}), 0, 36);
}

TEST(LutDirectoryBytes, HoldKeyStartsDescriptorsAndTables) {
  LutSamples s;
  s.luts.camera[1].info.lut_x_start = 0xFFFFFFF0;  // -16
  s.luts.camera[1].info.lut_y_start = 24;
  s.luts.camera[1].info.sample_rate_bit = 4;
  const LutDirectoryRecord record = lut_directory_record(s.rectify, s.luts, *s.tables, 4);
  const ImageBytes bytes = written(lut_directory_layout(), record, 280);
  EXPECT_EQ(part(bytes, 0, 16), ImageBytes(16, 0x77));
  expect_words(bytes, {{16, 0x03040102}, {20, 0x07080506}, {24, 1}, {28, 1}, {32, 100}, {36, 150}});
  EXPECT_EQ(part(bytes, 40, 36), descriptor_bytes(s.luts.camera[1].info));
  EXPECT_EQ(part(bytes, 76, 36), descriptor_bytes(s.luts.camera[0].info));
  EXPECT_EQ(part(bytes, 112, 84), table_bytes(s.tables->rectify_lut_info[1]));
  EXPECT_EQ(part(bytes, 196, 84), table_bytes(s.tables->rectify_lut_info[0]));
  expect_words(bytes, {{112, 0x52000074}, {196, 0x52080074}});
}

TEST(LutDirectoryBytes, TellFourSectionsFromTwoAndNone) {
  const LutSamples s;
  EXPECT_EQ(lut_directory_record(s.rectify, s.luts, *s.tables, 4).four_sections, 1U);
  EXPECT_EQ(lut_directory_record(s.rectify, s.luts, *s.tables, 2).four_sections, 0U);
  EXPECT_EQ(lut_directory_record(s.rectify, s.luts, *s.tables, 0).four_sections, 0U);
}

TEST(LutDirectoryBytes, StartIsAHundredfoldOfSamplesWithoutSign) {
  struct Row {
    std::uint32_t start, bit;
    std::int32_t expected;
  };
  constexpr Row kRows[] = {{0, 3, 0},
                           {1, 3, 13},           // 12.5
                           {0xFFFFFFFF, 3, 13},  // -1
                           {0xFFFFFFF0, 4, 100},
                           {0xFFFFFFD0, 4, 300},
                           {1, 5, 3},
                           {512, 3, 6400},
                           {0xFFFFFE00, 6, 800},
                           {0x80000000, 31, 100},  // -2^31
                           {7, 40, 0}};
  LutSamples s;
  for (const Row& row : kRows) {
    SCOPED_TRACE(testing::Message() << row.start << " / 2^" << row.bit);
    s.luts.camera[1].info.lut_x_start = row.start;
    s.luts.camera[1].info.lut_y_start = 0;
    s.luts.camera[1].info.sample_rate_bit = row.bit;
    EXPECT_EQ(lut_directory_record(s.rectify, s.luts, *s.tables, 4).hundredfold_start_x, row.expected);
    std::swap(s.luts.camera[1].info.lut_x_start, s.luts.camera[1].info.lut_y_start);
    EXPECT_EQ(lut_directory_record(s.rectify, s.luts, *s.tables, 4).hundredfold_start_y, row.expected);
  }
}

TEST(LutDataBytes, HeaderNamesTheGridAndItsSize) {
  LutSamples s;
  s.luts.camera[1].info.lut_x_start = 0xFFFFFFD0;
  s.luts.camera[1].info.sample_rate_bit = 4;
  const LutDirectoryRecord directory = lut_directory_record(s.rectify, s.luts, *s.tables, 4);
  const ImageBytes bytes = written(lut_data_layout(), lut_data_header(directory, 4, 5200), 52);
  expect_words(bytes, {{0, 0x4644610D}, {4, 1}, {8, 4 * 5200 * 4 + 40}});
  expect_words(bytes, {{28, 100}, {32, 52}, {36, 300}, {40, 50}, {44, 0}, {48, 5200}});
  EXPECT_EQ(lut_data_header(directory, 2, 5200).size, 2U * 5200 * 4 + 40);
  EXPECT_EQ(lut_data_header(directory, 0, 5200).size, 40U);
}

TEST(LutSections, AreFourOrTwoByCameraTypeAndNoneWhenNoneAreHeld) {
  RectifyLutState luts;
  CalibInputConfig config;
  for (const int type : {0, 1, 2, 3, 4}) {
    config.cam_type = static_cast<std::uint8_t>(type);
    EXPECT_EQ(stored_sections(config, luts), 0U) << type;
  }
  for (HeldSection& section : luts.sections)
    ASSERT_TRUE(section.room.allocate(8));
  for (const int type : {0, 1, 2, 3, 4}) {
    config.cam_type = static_cast<std::uint8_t>(type);
    EXPECT_EQ(stored_sections(config, luts), type == 2 || type == 3 ? 4U : 2U) << type;
  }
  for (HeldSection& section : luts.sections)
    section.room.release();
}

// --- the factory record

TEST(FactoryRecordBytes, HoldLabelModeSizesAndCameras) {
  DeCalibRecord_S calib = counting_bytes<DeCalibRecord_S>();
  for (DeCalibRecordCamera_S* const camera : {&calib.left_ir, &calib.right_ir, &calib.rgb}) {
    *camera = counting_bytes<DeCalibRecordCamera_S>();
    camera->height = 400.75F;
  }
  calib.left_ir.width = 640.9F;
  calib.right_ir.width = -1.5F;
  calib.rgb.width = 1920;
  const ImageBytes bytes = written(factory_record_layout(), factory_record(calib, {}), 6288);
  EXPECT_EQ(part(bytes, 0, 16), ImageBytes(16));
  EXPECT_EQ(text_at(bytes, 16, 16), "Close mode");
  EXPECT_EQ(part(bytes, 26, 6), ImageBytes(6));
  expect_words(bytes, {{32, 0}, {36, 640}, {40, 400}, {44, 0xFFFFFFFF}, {48, 400}, {52, 1920}, {56, 400}});
  EXPECT_EQ(part(bytes, 60, 2016), memory_of(calib.left_ir, 0, 2016));
  EXPECT_EQ(part(bytes, 2076, 2016), memory_of(calib.right_ir, 0, 2016));
  EXPECT_EQ(part(bytes, 4092, 2016), memory_of(calib.rgb, 0, 2016));
  EXPECT_EQ(part(bytes, 6108, 180), ImageBytes(180));
}

TEST(FactoryRecordBytes, LabelGoesByTheWholeStatusAndTheModeWordByItsLowestBit) {
  const auto calib = record_of(parallel_rig());
  for (const int status : {0, 1, 2, 255}) {
    CalibInputConfig config;
    config.mipi_channel_status = static_cast<std::uint8_t>(status);
    const ImageBytes bytes = written(factory_record_layout(), factory_record(calib, config), 6288);
    EXPECT_EQ(text_at(bytes, 16, 16), status == 0 ? "Close mode" : "Long mode") << status;
    EXPECT_EQ(word_at(bytes, 32), static_cast<std::uint32_t>(status % 2)) << status;
  }
}

TEST(FactoryRecordBytes, SizeIsTakenOnlyWhenBothNumbersAreAboveAMillionth) {
  struct Row {
    float width, height;
    bool taken;
  };
  constexpr Row kRows[] = {{640, 400, true},
                           {0, 400, false},
                           {640, 0, false},
                           {1e-6F, 400, false},  // the float is below 1e-6
                           {1.1e-6F, 400, true},
                           {-640, -400, true},
                           {kNan, 400, false},
                           {640, kNan, false},
                           {kInfinity, 400, true}};
  for (const Row& row : kRows) {
    SCOPED_TRACE(testing::Message() << row.width << " x " << row.height);
    DeCalibRecord_S calib = record_of(parallel_rig());
    calib.rgb.width = row.width;
    calib.rgb.height = row.height;
    EXPECT_EQ(has_image_size(calib.rgb), row.taken);
    const FactoryRecord record = factory_record(calib, {});
    const bool whole = std::isfinite(row.width) && std::fabs(row.width) >= 1;
    EXPECT_EQ(record.sizes[4], row.taken && whole ? static_cast<std::int32_t>(row.width) : 0);
    EXPECT_EQ(record.sizes[5], row.taken ? static_cast<std::int32_t>(row.height) : 0);
    EXPECT_EQ(record.sizes[0], 640);
  }
}

}  // namespace
}  // namespace vq3900::test
