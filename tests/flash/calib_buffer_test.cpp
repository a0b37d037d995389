#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "support/calib_builds.h"
#include "support/calib_images.h"
#include "support/calib_samples.h"
#include "support/capture.h"
#include "support/engine_fixture.h"
#include "support/image_files.h"
#include "support/little_endian_memory.h"

namespace vq3900::test {
namespace {

class CalibBuffer : public EngineTest {
 protected:
  CalibBuffer() { give_temperatures(); }
};

constexpr std::uint32_t kTimestamp = 1700000000;

// One configuration of the parallel rig.
BufferBuild built(const CalibSettings& settings, const BufferSizes& sizes = {}, std::int64_t timestamp = kTimestamp) {
  CalibInput input;
  input.add(parallel(), plain_text(settings));
  return built_in_memory(input, sizes, timestamp);
}

// --- messages

TEST_F(CalibBuffer, MessagesOfOneConfiguration) {
  const BufferBuild build = built({});
  EXPECT_EQ(build.outcome, (Outcome{0, kContentMode + digest_trace(3), lines_of(step_messages())}));
  EXPECT_EQ(build.passed, passed_of());
}

TEST_F(CalibBuffer, MessagesOfOneConfigurationWithLutAndFactorySection) {
  const BufferBuild build = built(lut_settings(), {20480, kLutSize, kFactorySize});
  EXPECT_EQ(build.outcome,
            (Outcome{0, std::string(kContentMode) + kTwoLutsConverted + digest_trace(5), lines_of(step_messages())}));
  EXPECT_EQ(build.passed, passed_of());
}

TEST_F(CalibBuffer, MessagesOfSeveralConfigurationsFollowOneAnother) {
  const TempFile file(plain_text());
  CalibInput input;
  input.add(parallel(), plain_text()).add(parallel(), file.path()).add(parallel(), plain_text());
  const BufferBuild build = built_in_memory(input);
  EXPECT_EQ(build.outcome,
            (Outcome{0,
                     kContentMode + digest_trace(3) + kPathMode + digest_trace(3) + kContentMode + digest_trace(3),
                     lines_of(step_messages() + step_messages() + step_messages())}));
  EXPECT_EQ(build.passed, passed_of() + passed_of(kPathMode) + passed_of());
}

TEST_F(CalibBuffer, MessagesArePrintedBeforeTheyArePassed) {
  CalibInput input;
  input.add(parallel(), plain_text());
  ImageBytes main(20480);
  DeLogCallback log = [](const char* text) { std::printf("<%s>", text); };
  const Outcome outcome = outcome_of([&] {
    auto* const buffer = reinterpret_cast<std::uint32_t*>(main.data());
    return gen_calib_flash_param_de(&input.record(), buffer, &log, 20480, nullptr, 0, 1, nullptr, 0);
  });
  EXPECT_TRUE(outcome.out.starts_with(std::string(kContentMode) + "<" + kContentMode + "><calibration "))
      << outcome.out;
}

// --- entries

TEST_F(CalibBuffer, EntryThatNamesAFileIsLoadedAsOneAndGivesTheSameImage) {
  const TempFile file(plain_text());
  CalibInput input;
  input.add(parallel(), file.path());
  const BufferBuild from_file = built_in_memory(input);
  EXPECT_EQ(from_file.passed, passed_of(kPathMode));
  expect_same_bytes(from_file.main, built({}).main);
}

TEST_F(CalibBuffer, EntryThatNamesADirectoryIsAText) {
  const TempFolder folder;
  CalibInput input;
  input.add(parallel(), folder.path(""));
  const BufferBuild build = built_in_memory(input);
  EXPECT_LT(build.outcome.code, 0);
  EXPECT_EQ(build.passed.at(0), kContentMode);
}

TEST_F(CalibBuffer, EntryLongerThanAnyPathIsAText) {
  CalibInput input;
  input.add(parallel(), ";" + std::string(5000, 'x') + "\n" + plain_text());
  EXPECT_EQ(built_in_memory(input).passed, passed_of());
}

// --- the image

TEST_F(CalibBuffer, RecordsOfTheParallelRigAreWorkedOutByHand) {
  const BufferBuild build = built({{"mipi_channel_status", "3"}});
  ASSERT_EQ(build.outcome.code, 0);
  expect_flash_section(build.main, flash::kRectify, 1);
  expect_flash_section(build.main, flash::kD2c, 1);
  expect_flash_section(build.main, flash::kD2d, 1);

  const ImageBytes rectify = record_at(build.main, flash::kRectify, 0);
  expect_digest(rectify, 0, 16, 12);
  expect_words(rectify, {{16, 0x01900280}, {20, 0}, {24, 1}});
  for (const std::size_t camera : {724U, 812U}) {  // 500, 500, 320, 200, 640 x 400; no distortion, no rotation
    expect_words(rectify, {{camera, 0x43FA0000}, {camera + 4, 0x43FA0000}, {camera + 8, 0x43A00000}});
    expect_words(rectify, {{camera + 12, 0x43480000}, {camera + 16, 0x01900280}, {camera + 20, 0}, {camera + 48, 0}});
    expect_words(rectify, {{camera + 52, 0x3F800000}, {camera + 68, 0x3F800000}, {camera + 84, 0x3F800000}});
  }
  expect_words(rectify, {{900, 0x43FA0000}, {916, 0x01900280}, {920, 0x43FA0000}, {936, 0x01900280}});
  expect_words(rectify, {{940, 0x41FC0000}, {944, 0x42010000}, {948, 0x420F0000}});
  expect_words(rectify, {{952, 0x3E800000}, {956, 0xBF000000}, {960, 0x3E000000}});

  const ImageBytes d2c = record_at(build.main, flash::kD2c, 0);
  expect_digest(d2c, 0, 16, 16);
  expect_words(d2c, {{16, 0x01900280}, {20, 0x02D00500}, {24, 0}, {28, 1}});
  expect_words(d2c, {{176, 0x43FA0000}, {180, 0x43FA0000}, {184, 0x43A00000}, {188, 0x43480000}, {192, 0x01900280}});
  expect_words(d2c, {{196, 0x44610000}, {200, 0x44610000}, {204, 0x44200000}, {208, 0x43B40000}, {212, 0x02D00500}});
  EXPECT_EQ(part(d2c, 216, 64), ImageBytes(64));
  expect_words(d2c, {{280, 0x3F800000}, {284, 0}, {296, 0x3F800000}, {312, 0x3F800000}, {316, 0xC1C80000}, {320, 0}});

  const ImageBytes d2d = record_at(build.main, flash::kD2d, 0);
  expect_digest(d2d, 0, 16, 16);
  expect_words(d2d, {{16, 0}, {20, 0}, {24, 0}, {28, 1}});
  expect_words(d2d, {{32, 0}, {36, 0xC2480000}, {40, 0x447A0000}, {44, 0x43FA0000}, {48, 0x3F800000}, {52, 0}});
  expect_words(d2d, {{56, 0xFFFFFFF8}, {60, 0x50001204}, {64, 0xFFFFFFFF}, {68, 0x10624DD3}});
  expect_words(d2d, {{72, 0x50001208}, {76, 0xFFFFFFFF}, {80, 0xFD60E950}});  // 1 / (-50 * 500)
}

TEST_F(CalibBuffer, RecordsAreTheConvertersResultAndTheTablesItLeft) {
  prepare_calibration();
  const Conversion direct = converted(sample_rig());
  CalibInput input;
  input.add(record_of(sample_rig()), plain_text());
  const BufferBuild build = built_in_memory(input);
  ASSERT_EQ(build.outcome.code, 0);

  const ImageBytes rectify = record_at(build.main, flash::kRectify, 0);
  const ImageBytes rect = little_endian_bytes_of(direct.rect);
  EXPECT_EQ(part(rectify, 724, 216), part(rect, 0, 216));
  EXPECT_EQ(part(rectify, 940, 24), part(rect, 220, 24));
  expect_table(rectify, 28, de_copy_rectify_params_register_table, 23);
  EXPECT_EQ(part(rectify, 304, 72), ImageBytes(72));
  expect_table(rectify, 376, de_copy_sbg2r_params_register_table, 23);
  EXPECT_EQ(part(rectify, 652, 72), ImageBytes(72));
  const ImageBytes d2c = record_at(build.main, flash::kD2c, 0);
  const ImageBytes color = little_endian_bytes_of(direct.d2c);
  EXPECT_EQ(part(d2c, 176, 20), part(color, 0, 20));
  EXPECT_EQ(part(d2c, 196, 132), part(color, 40, 132));
  expect_table(d2c, 32, de_copy_d2c_params_register_table, 12);
  const ImageBytes d2d = record_at(build.main, flash::kD2d, 0);
  EXPECT_EQ(part(d2d, 32, 28), little_endian_bytes_of(direct.depth));
  expect_table(d2d, 60, de_copy_d2d_params_register_table, 2);
}

TEST_F(CalibBuffer, EachConfigurationsRecordsAreItsOwn) {
  CalibInput input;
  input.add(parallel(), plain_text()).add(parallel(), plain_text());  // the same
  input.add(record_of(sample_rig()), plain_text({{"src_img_right_chop", "40"}, {"disp_offset", "36"}}));
  input.add(parallel(), plain_text({{"mipi_channel_status", "1"}}));
  const BufferBuild build = built_in_memory(input, {20480, -1, 60 + 4 * 6288});
  ASSERT_EQ(build.outcome.code, 0);
  expect_flash_section(build.main, flash::kRectify, 3);
  expect_flash_section(build.main, flash::kD2c, 3);
  expect_flash_section(build.main, flash::kD2d, 3);
  expect_flash_section(build.factory, flash::kFactoryRecords, 4);  // never shared
  EXPECT_EQ(word_at(record_at(build.main, flash::kRectify, 1), 16), 0x01900258U);
  EXPECT_EQ(word_at(record_at(build.main, flash::kD2d, 1), 16), 40U);
  EXPECT_NE(part(record_at(build.main, flash::kRectify, 1), 28, 276),
            part(record_at(build.main, flash::kRectify, 0), 28, 276));
  EXPECT_EQ(part(record_at(build.main, flash::kRectify, 2), 28, 276),
            part(record_at(build.main, flash::kRectify, 0), 28, 276));
}

TEST_F(CalibBuffer, CameraTypesWithoutAModeKeepTheReferenceDistanceInTheKey) {
  for (const char* const type : {"0", "1", "2", "3", "4"}) {
    SCOPED_TRACE(type);
    const BufferBuild build = built({{"cam_type", type}, {"ref_dist", "1049"}});
    ASSERT_EQ(build.outcome.code, 0);
    const ImageBytes d2d = record_at(build.main, flash::kD2d, 0);
    expect_words(d2d, {{24, type[0] == '2' || type[0] == '3' ? 0U : 1000U}, {40, 0x44832000}});  // 1049 itself
  }
}

TEST_F(CalibBuffer, UnitIsInTheKeysWhenTheProjectionIsInIt) {
  const BufferBuild build = built({{"d2d_params_unit", "0.5"}, {"d2d_params_unit_in_R_en", "1"}});
  ASSERT_EQ(build.outcome.code, 0) << build.outcome.out << build.outcome.err;
  EXPECT_EQ(word_at(record_at(build.main, flash::kD2c, 0), 24), 50U);
  EXPECT_EQ(word_at(record_at(build.main, flash::kD2d, 0), 20), 50U);
}

TEST_F(CalibBuffer, WithoutConfigurationsOnlyHeadersAreWritten) {
  const CalibFlashInput_S none{};
  ImageBytes main(20480, 0x5A), lut(100, 0x5A), factory(100, 0x5A);
  EXPECT_EQ(outcome_of([&] {
              return gen_calib_flash_param_de(&none,
                                              reinterpret_cast<std::uint32_t*>(main.data()),
                                              nullptr,  // no message needs it
                                              20480,
                                              lut.data(),
                                              100,
                                              kTimestamp,
                                              factory.data(),
                                              100);
            }),
            silent_success());
  for (const FlashSection& section : {flash::kRectify, flash::kD2c, flash::kD2d})
    expect_flash_section(main, section, 0);
  EXPECT_TRUE(is_all(lut, 0x5A));
  expect_flash_section(factory, flash::kFactoryRecords, 0);
  expect_filler(part(factory, 60, 40));
}

TEST_F(CalibBuffer, AlignmentSectionFollowsTheSwitch) {
  hold_alignment_records(3);
  CalibInput input;
  input.add(parallel(), plain_text()).alignment_switch(1);
  const BufferBuild with_section = built_in_memory(input, {24576});
  ASSERT_EQ(with_section.outcome.code, 0);
  expect_flash_section(with_section.main, flash::kAlignment, 3);
  EXPECT_EQ(time_of(with_section.main, flash::kAlignment), kTimestamp);
  EXPECT_TRUE(record_at(with_section.main, flash::kAlignment, 2) == ImageBytes(976, 0x33));
  input.alignment_switch(0);
  const BufferBuild without = built_in_memory(input, {24576});
  ASSERT_EQ(without.outcome.code, 0);
  expect_filler(part(without.main, 20480, 4096));
}

TEST_F(CalibBuffer, BuffersAreFilledBehindTheImages) {
  const BufferBuild exact = built(lut_settings(), {20480, kLutSize, kFactorySize});
  const BufferBuild large = built(lut_settings(), {20480 + 400, kLutSize + 300, kFactorySize + 200});
  ASSERT_EQ(exact.outcome.code, 0);
  ASSERT_EQ(large.outcome.code, 0);
  expect_same_bytes(part(large.main, 0, 20480), exact.main);
  expect_filler(part(large.main, 20480, 400));
  expect_same_bytes(part(large.lut, 0, kLutSize), exact.lut);
  expect_filler(part(large.lut, kLutSize, 300));
  expect_filler(part(large.factory, kFactorySize, 200));
}

// All buffers in one piece of memory, each said to reach to its end: what is filled never lies over what was built.
TEST_F(CalibBuffer, BuffersMayReachIntoOneAnother) {
  const BufferBuild apart = built(lut_settings(), {20480, kLutSize, kFactorySize});
  CalibInput input;
  input.add(record_of(parallel_rig()), plain_text(lut_settings()));
  ImageBytes block(20480 + kLutSize + kFactorySize + 100);
  std::uint8_t* const lut = block.data();
  std::uint8_t* const main = lut + kLutSize;  // aligned: the size of the LUT file is a multiple of 4
  std::uint8_t* const factory = main + 20480;
  const auto from = [&](const std::uint8_t* start) { return block.data() + block.size() - start; };
  DeLogCallback log = [](const char*) {};
  std::int32_t code = -1;
  printed_by([&] {
    code = gen_calib_flash_param_de(&input.record(),
                                    reinterpret_cast<std::uint32_t*>(main),
                                    &log,
                                    from(main),
                                    lut,
                                    static_cast<int>(from(lut)),
                                    kTimestamp,
                                    factory,
                                    static_cast<int>(from(factory)));
  });
  EXPECT_EQ(code, 0);
  expect_same_bytes(part(block, 0, kLutSize), apart.lut);
  expect_same_bytes(part(block, kLutSize, 20480), apart.main);
  expect_flash_section(part(block, kLutSize + 20480, kFactorySize), flash::kFactoryRecords, 1);
}

TEST_F(CalibBuffer, LutBufferIsLeftAloneWhenNoConfigurationWantsALut) {
  for (const char* const type : {"0", "3", "200"}) {
    const BufferBuild build = built({{"distort_type", type}}, {20480, 5000});
    EXPECT_TRUE(is_all(build.lut, kRubbish)) << type;
  }
  EXPECT_EQ(built({}, {20480, -1}).outcome.code, 0);
}

TEST_F(CalibBuffer, TwoBuildsInOneProcessAreEqual) {
  CalibInput input;
  input.add(record_of(sample_rig()), plain_text(lut_settings())).add(parallel(), plain_text(lut_settings("1")));
  const BufferSizes sizes{20480, 60000, 60 + 2 * 6288};
  const BufferBuild first = built_in_memory(input, sizes);
  const BufferBuild second = built_in_memory(input, sizes);
  EXPECT_EQ(first.outcome.code, 0);
  EXPECT_EQ(second.outcome, first.outcome);
  EXPECT_EQ(second.passed, first.passed);
  expect_same_bytes(second.main, first.main);
  expect_same_bytes(second.lut, first.lut);
  expect_same_bytes(part(second.factory, 60, 2 * 6288), part(first.factory, 60, 2 * 6288));
}

// --- time stamps and serial number

TEST_F(CalibBuffer, TimestampIsStampedWhenItIsOneOrMore) {
  struct Row {
    std::int64_t timestamp;
    std::uint32_t stamp;
  };
  for (const Row& row : {Row{1, 1}, Row{kTimestamp, kTimestamp}, Row{0x123456789, 0x23456789}, Row{0x100000000, 0}}) {
    const Stopwatch watch;
    const BufferBuild build = built(lut_settings(), {20480, kLutSize, kFactorySize}, row.timestamp);
    ASSERT_EQ(build.outcome.code, 0);
    for (const std::size_t section : {0U, 8192U, 16384U})
      EXPECT_EQ(word_at(build.main, section + 20), row.stamp) << section;
    for (const std::size_t section : {0U, 4096U})
      EXPECT_EQ(word_at(build.lut, section + 20), row.stamp) << section;
    EXPECT_TRUE(watch.includes(word_at(build.factory, 20)));
  }
}

TEST_F(CalibBuffer, TimestampOfZeroOrLessMeansNow) {
  for (const std::int64_t timestamp : {std::int64_t{0}, std::int64_t{-1}, INT64_MIN}) {
    const Stopwatch watch;
    const BufferBuild build = built(lut_settings(), {20480, kLutSize, kFactorySize}, timestamp);
    ASSERT_EQ(build.outcome.code, 0);
    for (const std::uint32_t stamp : {word_at(build.main, 20),
                                      word_at(build.main, 16404),
                                      word_at(build.lut, 20),
                                      word_at(build.lut, 4116),
                                      word_at(build.factory, 20)})
      EXPECT_TRUE(watch.includes(stamp));
  }
}

TEST_F(CalibBuffer, SerialNumberStandsInEverySection) {
  const std::uint64_t words[] = {0x0102030405060708, 9, 10};
  set_sn(&words[0], &words[1], &words[2]);
  const BufferBuild build = built(lut_settings(), {20480, kLutSize, kFactorySize});
  for (const ImageBytes& header : {part(build.main, 0, 48),
                                   part(build.main, 8192, 48),
                                   part(build.main, 16384, 48),
                                   part(build.lut, 0, 48),
                                   part(build.lut, 4096, 48),
                                   part(build.factory, 0, 48)})
    expect_words(header, {{24, 0x05060708}, {28, 0x01020304}, {32, 9}, {36, 0}, {40, 10}, {44, 0}});
}

}  // namespace
}  // namespace vq3900::test
