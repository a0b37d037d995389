// The LUT file and the factory-align section of images in memory.
#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "support/calib_builds.h"
#include "support/calib_images.h"
#include "support/calib_samples.h"
#include "support/capture.h"
#include "support/engine_fixture.h"
#include "support/image_files.h"
#include "support/little_endian_memory.h"
#include "support/lut_grids.h"

namespace vq3900::test {
namespace {

class CalibBufferSections : public EngineTest {
 protected:
  CalibBufferSections() { give_temperatures(); }
};

constexpr std::uint32_t kTimestamp = 1700000000;

// One configuration of the parallel rig.
BufferBuild built(const CalibSettings& settings, const BufferSizes& sizes = {}, std::int64_t timestamp = kTimestamp) {
  CalibInput input;
  input.add(parallel(), plain_text(settings));
  return built_in_memory(input, sizes, timestamp);
}

// --- the LUT file

TEST_F(CalibBufferSections, LutFileHoldsTheGeneratedGrids) {
  const BufferBuild build = built(lut_settings(), {20480, kLutSize});
  ASSERT_EQ(build.outcome.code, 0);
  expect_flash_section(build.lut, flash::kDirectory, 1);
  const ImageBytes entry = record_at(build.lut, flash::kDirectory, 0);
  expect_digest(entry, 0, 16, 12);
  // From -48, -32 on in steps of 16 pixels; intrinsics 500, 500, 320, 200; 48 x 32 samples.
  expect_words(entry, {{16, 0x01900280}, {20, 0}, {24, 0}, {28, 1}, {32, 300}, {36, 200}});
  for (const std::size_t camera : {40U, 76U}) {
    expect_words(entry, {{camera, 0xFFFFFFD0}, {camera + 4, 0xFFFFFFE0}, {camera + 8, 0x43FA0000}});
    expect_words(entry, {{camera + 12, 0x43FA0000}, {camera + 16, 0x43A00000}, {camera + 20, 0x43480000}});
    expect_words(entry, {{camera + 24, 48}, {camera + 28, 32}, {camera + 32, 4}});
  }
  const auto copy_1 = [](DeRegElement_S* out, std::uint8_t n) {
    return de_copy_rectify_lut_info_register_table(1, out, n);
  };
  const auto copy_0 = [](DeRegElement_S* out, std::uint8_t n) {
    return de_copy_rectify_lut_info_register_table(0, out, n);
  };
  expect_table(entry, 112, copy_1, 7);
  expect_table(entry, 196, copy_0, 7);
  expect_words(entry, {{112, 0x52000074}, {120, 0x03E003D0}, {196, 0x52080074}});

  expect_lut_data_section(build.lut, kLutBytes);
  const ImageBytes data = lut_data_record(build.lut, 0, kLutBytes);
  expect_digest(data, 12, 28, 12);
  expect_words(data, {{0, 0x4644610D}, {4, 1}, {8, 4 * 48 * 32 * 4 + 40}, {28, 48}, {32, 32}, {36, 300}, {40, 200}});
  expect_words(data, {{44, 0}, {48, 48 * 32}});
  EXPECT_TRUE(is_all(part(data, 52, kLutBytes - 52), 0));  // nothing distorts
}

TEST_F(CalibBufferSections, LutWordsAreThoseOfThePreparedSections) {
  CalibInput input;
  input.add(record_of(sample_rig()), plain_text(lut_settings()));
  const BufferBuild build = built_in_memory(input, {20480, kLutSize});
  ASSERT_EQ(build.outcome.code, 0);
  const ImageBytes data = lut_data_record(build.lut, 0, kLutBytes);
  const std::vector<SectionCopy> sections = taken_sections(4);  // the build has left them
  ASSERT_EQ(sections[0].words.size(), kLutWords);
  for (std::size_t i = 0; i < 4 * kLutWords; ++i)
    ASSERT_EQ(word_at(data, 52 + 4 * i), sections[i / kLutWords].words[i % kLutWords]) << i;
  EXPECT_FALSE(is_all(part(data, 52, 4 * kLutWords), 0));
}

TEST_F(CalibBufferSections, OtherCameraTypesStoreTwoSections) {
  const BufferBuild build = built(with(lut_settings(), "cam_type", "1"), {20480, 4096 + 48 + 52 + 8 * 1536});
  ASSERT_EQ(build.outcome.code, 0);
  EXPECT_EQ(word_at(record_at(build.lut, flash::kDirectory, 0), 28), 0U);
  expect_lut_data_section(build.lut, 52 + 2 * 1536 * 4);
}

TEST_F(CalibBufferSections, EqualGridsAreStoredOnceAndDirectoryRecordsForEachRectification) {
  CalibInput input;
  input.add(parallel(), plain_text(lut_settings()));
  input.add(parallel(), plain_text(with(lut_settings(), "mipi_channel_status", "1")));  // the same grid
  input.add(parallel(), plain_text(lut_settings("1")));                                 // the same rectification
  input.add(parallel(), plain_text({{"mipi_channel_status", "1"}}));                    // no LUT
  input.add(parallel(), plain_text(with(lut_settings(), "src_img_right_chop", "64")));  // another grid
  const BufferBuild build = built_in_memory(input, {20480, 60000});
  ASSERT_EQ(build.outcome.code, 0);
  EXPECT_EQ(without_digest_traces(build.outcome.out),
            std::string(kContentMode) + kTwoLutsConverted + kContentMode + kTwoLutsConverted + kContentMode +
                kTwoLutsConverted + kContentMode + kContentMode + kTwoLutsConverted);
  EXPECT_EQ(build.outcome.out.size() - without_digest_traces(build.outcome.out).size(),
            digest_trace(4 + 4 + 3 + 3 + 4).size());
  expect_flash_section(part(build.lut, 0, 4096), flash::kDirectory, 3);
  const std::size_t second = 52 + 4 * 44 * 32 * 4;
  expect_lut_data_section(part(build.lut, 0, 4096 + 48 + kLutBytes + second), kLutBytes + second);
  expect_words(lut_data_record(build.lut, kLutBytes, 52),
               {{8, 4 * 44 * 32 * 4 + 40}, {28, 44}, {32, 32}, {48, 44 * 32}});
}

// Each grid is in the image what it is in one of its own, also after later conversions.
TEST_F(CalibBufferSections, EachConfigurationsGridIsItsOwn) {
  CalibInput all;
  ImageBytes alone;
  for (const char* const chop : {"0", "64", "128"}) {  // of widths that differ, so that no grid is shared
    const std::string text = plain_text(with(lut_settings(), "src_img_right_chop", chop));
    all.add(record_of(sample_rig()), text);
    CalibInput one;
    one.add(record_of(sample_rig()), text);
    const BufferBuild build = built_in_memory(one, {20480, 100000});
    ASSERT_EQ(build.outcome.code, 0);
    const std::size_t size = word_at(lut_data_record(build.lut, 0, 52), 8) + 12;
    const ImageBytes record = lut_data_record(build.lut, 0, size);
    EXPECT_FALSE(is_all(part(record, 52, size - 52), 0));
    alone.insert(alone.end(), record.begin(), record.end());
  }
  const BufferBuild together = built_in_memory(all, {20480, 200000});
  ASSERT_EQ(together.outcome.code, 0);
  expect_same_bytes(lut_data_record(together.lut, 0, alone.size()), alone);
}

// --- the factory-align section

TEST_F(CalibBufferSections, FactorySectionHoldsTheCalibrationRecordsCameras) {
  DeCalibRecord_S calib = record_of(sample_rig());
  std::ranges::fill(calib.left_ir.reserved, std::uint8_t{0xA1});
  std::ranges::fill(calib.right_ir.reserved, std::uint8_t{0xB2});
  std::ranges::fill(calib.rgb.reserved, std::uint8_t{0xC3});
  calib.left_ir.width = 640.75F;
  CalibInput input;
  input.add(calib, plain_text({{"mipi_channel_status", "2"}})).add(parallel(), plain_text());
  const Stopwatch watch;
  const BufferBuild build = built_in_memory(input, {20480, -1, 60 + 2 * 6288}, kTimestamp);
  ASSERT_EQ(build.outcome.code, 0);
  expect_flash_section(build.factory, flash::kFactoryRecords, 2);
  EXPECT_TRUE(watch.includes(word_at(build.factory, 20)));

  ImageBytes expected(6288);
  const std::string label = "Long mode";
  std::copy(label.begin(), label.end(), expected.begin() + 16);
  const std::vector<Word> words{{32, 0}, {36, 640}, {40, 400}, {44, 640}, {48, 400}, {52, 1280}, {56, 720}};
  for (const Word& word : words)
    put_word(expected, word.offset, word.value);
  const std::array<std::uint8_t, 16> digest = peer_md5(part(expected, 16, 20));
  std::ranges::copy(digest, expected.begin());
  std::ptrdiff_t at = 60;
  for (const DeCalibRecordCamera_S* const camera : {&calib.left_ir, &calib.right_ir, &calib.rgb}) {
    std::ranges::copy(little_endian_bytes_of(*camera), expected.begin() + at);
    at += 2016;
  }
  expect_same_bytes(record_at(build.factory, flash::kFactoryRecords, 0), expected);

  const ImageBytes second = record_at(build.factory, flash::kFactoryRecords, 1);
  expect_digest(second, 0, 16, 20);
  EXPECT_EQ(text_at(second, 16, 16), "Close mode");
  EXPECT_EQ(word_at(second, 32), 0U);
}

TEST_F(CalibBufferSections, ModeWordKeepsBitZeroOfTheStatus) {
  for (const auto& [status, word] : {std::pair{"1", 1U}, std::pair{"2", 0U}, std::pair{"255", 1U}}) {
    const BufferBuild build = built({{"mipi_channel_status", status}}, {20480, -1, kFactorySize});
    const ImageBytes record = record_at(build.factory, flash::kFactoryRecords, 0);
    EXPECT_EQ(text_at(record, 16, 16), "Long mode") << status;
    EXPECT_EQ(word_at(record, 32), word) << status;
    expect_digest(record, 0, 16, 20);
  }
}

TEST_F(CalibBufferSections, CameraWithoutASizeIsReportedAndItsSizeStaysZero) {
  DeCalibRecord_S calib = parallel();
  calib.rgb = {};
  CalibInput input;
  input.add(calib, plain_text());
  const BufferBuild build = built_in_memory(input, {20480, -1, kFactorySize});
  EXPECT_EQ(build.outcome.code, 0);
  EXPECT_EQ(without_digest_traces(build.outcome.out), std::string(kContentMode) + "input params is invalid!\n");
  EXPECT_EQ(build.passed, passed_of());  // it is printed alone
  expect_words(record_at(build.factory, flash::kFactoryRecords, 0), {{44, 640}, {48, 400}, {52, 0}, {56, 0}});
  EXPECT_EQ(built_in_memory(input).outcome.out, kContentMode + digest_trace(3));  // nobody asked
}

TEST_F(CalibBufferSections, WithoutAFactoryBufferTheImageIsTheSame) {
  const BufferBuild without = built({});
  EXPECT_EQ(without.outcome.code, 0);
  expect_same_bytes(built({}, {20480, -1, kFactorySize}).main, without.main);
}

}  // namespace
}  // namespace vq3900::test
