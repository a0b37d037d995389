#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string>
#include <utility>

#include "support/capture.h"
#include "support/config_image_format.h"
#include "support/config_images.h"
#include "support/image_files.h"
#include "support/numbers.h"
#include "support/registers.h"

namespace vq3900::test {
namespace {

class RegisterFile : public ImageFile {
 protected:
  Outcome build() const {
    return outcome_of([&] { return gen_depth_engine_config_flash_file(out_.c_str()); });
  }

  ImageBytes built() const {
    EXPECT_EQ(build(), silent(1));
    return written();
  }
};

TEST_F(RegisterFile, SampleGivesTheGoldenBytes) {
  load_and_apply(example("stereo_1280x800.ini"));
  expect_same_bytes(built(), bytes_of_file(VQ3900_TEST_DATA "/register_file.bin"));
}

TEST_F(RegisterFile, GoldenBytesHoldCountsRegistersAndFillersWhereTheFormatSays) {
  const ImageBytes file = bytes_of_file(VQ3900_TEST_DATA "/register_file.bin");
  ASSERT_EQ(file.size(), 928U);
  expect_words(file, {{0, 2}, {32, 5}, {112, 18}, {336, 7}, {432, 12}, {576, 30}});
  expect_registers(file, 4, std::array<Register, 2>{{{0x50001204, 0}, {0x50001208, 0}}});
  expect_registers(file, 36, kStereoControl);
  expect_registers(file, 116, kStereoPrefilter);
  expect_registers(file, 340, kStereoExtendChop);
  expect_registers(file, 436, kStereoDisparity, 11);
  expect_words(file, {{568, 0x50001034}, {572, 0xFFFFFFFF}});  // the twelfth disparity register, its value lost
  expect_registers(file, 580, kStereoGpm, 29);                 // up to the last byte
  for (const auto& [offset, size] : {std::pair{28U, 4U}, {96U, 16U}, {332U, 4U}, {424U, 8U}})
    expect_filler(part(file, offset, size));
}

TEST_F(RegisterFile, RegistersAreThoseOfTheLibrarysTables) {
  load_and_apply(example("mono_640x480.ini"));
  const DeRegElement_S d2d[] = {{0x50001204, 0xFFFFFFFF, 0x11223344}, {0x50001208, 0xFFFFFFFF, 0xFF00FF01}};
  ASSERT_EQ(de_update_d2d_params_register_table(d2d, 2), 0);
  const ImageBytes file = built();
  expect_words(file, {{12, 0x11223344}, {24, 0xFF00FF01}});  // as they stand: depth constants are not converted
  expect_table(file, 4, de_copy_d2d_params_register_table, 2);
  expect_table(file, 36, de_copy_basic_d2c_d2d_ctrl_register_table, 5);
  expect_table(file, 116, de_copy_prefilter_register_table, 18);
  expect_table(file, 340, de_copy_extend_chop_register_table, 7);
  expect_table(file, 436, de_copy_disp_calc_register_table, 11);
  expect_table(file, 580, de_copy_gpm_register_table, 29);
}

TEST_F(RegisterFile, WordAt576Is30WhateverTheTwelfthDisparityRegisterHeld) {
  load_and_apply(example("stereo_1280x800.ini"));
  const ImageBytes before = built();
  for (const std::uint32_t mask : {0U, 1U, 0x3FFFFFFFU}) {
    const DeArmShortParams_S arm{9, 1, mask};
    set_arm_short_params(&arm);
    const ImageBytes file = built();
    EXPECT_EQ(value_at(engine().registers.disp_calc, 0x50001034), 0x80000000U | mask);
    EXPECT_EQ(word_at(file, 576), 30U);
    expect_same_bytes(file, before);
  }
}

TEST_F(RegisterFile, ThirtiethGpmRegisterIsNotInTheFile) {
  load_and_apply(example("stereo_1280x800.ini"));
  const ImageBytes before = built();
  const DeGpmConfig_S config{24, 48, 12, 200, 3, -77, 77};
  set_gpm_config(&config, 0);
  expect_same_bytes(built(), before);
  EXPECT_EQ(value_at(engine().registers.gpm, 0x50001368), 0x00FB304DU);
}

TEST_F(RegisterFile, RecordsAreConvertedAndRectificationIsLeftAlone) {
  const DeRegElement_S rectify[] = {
      {0x52080070, 0x0FFF041F, 1}, {0x52000070, 0x0FFF001F, 2}, {0x520000A0, 0x0000001E, 4}};
  load_and_apply(example("stereo_1280x800.ini"));
  ASSERT_EQ(de_update_rectify_ctrl_register_table(rectify, 3), 0);
  set_depth_engine_win_size(3);
  EXPECT_EQ(word_at(built(), 436 + 10 * 12 + 8), 0x03FC0040U);
  EXPECT_EQ(engine().registers.rectify_ctrl[0].value, 1U);
  EXPECT_EQ(engine().registers.rectify_ctrl[2].value, 4U);
}

TEST_F(RegisterFile, WithoutAnyConfigurationTheRecordsAreZero) {
  const ImageBytes file = built();
  expect_words(file, {{0, 2}, {32, 5}, {36 + 24 + 8, 0x04000000}, {112, 18}, {576, 30}});
  EXPECT_EQ(word_at(file, 436 + 10 * 12 + 8), 0x00000010U);  // (0 - 1)^2
}

TEST_F(RegisterFile, OverflowIsPrintedAndTheFileWrittenAllTheSame) {
  load_and_apply(example("stereo_1280x800.ini"));
  const double coefficients[] = {9, 0, 0, 0};
  set_subpixel_coef(coefficients);
  EXPECT_EQ(build(), prints_out(1, overflow_lines(9, 13, 10, "subpixel_coef_a0")));
  EXPECT_EQ(word_at(written(), 436 + 8), 0x00001FFFU);
}

TEST_F(RegisterFile, LongerFileIsReplacedAndASecondCallGivesTheSame) {
  load_and_apply(example("stereo_1280x800.ini"));
  fill_output(5000);
  const ImageBytes first = built();
  EXPECT_EQ(first.size(), 928U);
  expect_same_bytes(built(), first);
}

TEST_F(RegisterFile, DestinationThatCannotBeCreatedIsPrintedAndNothingConverted) {
  load_and_apply(example("stereo_1280x800.ini"));
  const auto before = bytes_of(engine().registers);
  const std::string missing = testing::TempDir() + "vq3900_no_such_folder/file";
  for (const std::string& path : {missing, std::string(), testing::TempDir()}) {
    EXPECT_EQ(outcome_of([&] { return gen_depth_engine_config_flash_file(path.c_str()); }),
              prints_out(0, not_created(path)));
  }
  EXPECT_EQ(outcome_of([] { return gen_depth_engine_config_flash_file(nullptr); }),
            prints_out(0, not_created("(null)")));
  EXPECT_EQ(bytes_of(engine().registers), before);
}

#ifdef __linux__
TEST_F(RegisterFile, FullDiskGoesUnseen) {
  EXPECT_EQ(outcome_of([] { return gen_depth_engine_config_flash_file("/dev/full"); }), silent(1));
}
#endif

}  // namespace
}  // namespace vq3900::test
