#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <utility>
#include <vector>

#include "support/capture.h"
#include "support/d2c_state.h"
#include "support/engine_fixture.h"
#include "support/fields.h"
#include "support/numbers.h"
#include "support/registers.h"

namespace vq3900::test {
namespace {

using D2c = EngineTest;

// --- register table ---

TEST_F(D2c, TableCopiesTwelveElementsAndRefusesThirteen) {
  std::array<DeRegElement_S, 13> elements{};
  EXPECT_EQ(outcome_of([&] { return de_copy_d2c_params_register_table(elements.data(), 13); }),
            prints_err(-2, "reg_num > inner_d2c_reg_table_size! \n"));
  EXPECT_EQ(elements[0], (DeRegElement_S{}));
  EXPECT_EQ(outcome_of([&] { return de_copy_d2c_params_register_table(elements.data(), 12); }), silent_success());
  EXPECT_EQ(elements[11], (DeRegElement_S{0x5000123C, 0xFFFFFFFF, 0x0393B6AB}));
}

TEST_F(D2c, MergeStopsAtFirstMismatchAndKeepsEarlierElements) {
  std::array<DeRegElement_S, 13> elements{};
  de_copy_d2c_params_register_table(elements.data(), 12);
  elements[0].value = elements[2].value = 5;
  elements[1].mask = 0;
  EXPECT_EQ(outcome_of([&] { return de_update_d2c_params_register_table(elements.data(), 13); }),
            prints_err(-2, "reg_num > inner_d2c_reg_table_size! \n"));
  EXPECT_EQ(outcome_of([&] { return de_update_d2c_params_register_table(elements.data(), 0); }), silent_success());
  EXPECT_EQ(word_at(0x50001210), 0x20000000U);
  EXPECT_EQ(outcome_of([&] { return de_update_d2c_params_register_table(elements.data(), 12); }),
            prints_err(-2, "register element address or mask incompatible!\n"));
  EXPECT_EQ(word_at(0x50001210), 5U);
  EXPECT_EQ(word_at(0x50001218), 0U);
}

// --- control fields ---

constexpr FieldRow<D2cConfig> kWritten[] = {
    field_row<&D2cConfig::d2c_buffer_position>("d2c_buffer_position", 0x50001200, 11, 0),
    field_row<&D2cConfig::d2c_total_buffer_rows>("d2c_total_buffer_rows", 0x50001200, 23, 12),
    field_row<&D2cConfig::recovery_mode_2>("recovery_mode_2", 0x50001200, 27, 27),
    field_row<&D2cConfig::recovery_mode_1>("recovery_mode_1", 0x50001200, 28, 28),
    field_row<&D2cConfig::depth_sign>("depth_sign", 0x50001200, 30, 30),
};

constexpr FieldRow<D2cConfig> kReadBack[] = {
    field_row<&D2cConfig::d2c_buffer_position>("d2c_buffer_position", 0x50001200, 11, 0),
    field_row<&D2cConfig::d2c_total_buffer_rows>("d2c_total_buffer_rows", 0x50001200, 23, 12),
    field_row<&D2cConfig::recovery_mode_1>("recovery_mode_1", 0x50001200, 27, 27),
    field_row<&D2cConfig::recovery_mode_2>("recovery_mode_2", 0x50001200, 28, 28),
    field_row<&D2cConfig::depth_sign>("depth_sign", 0x50001200, 30, 30),
};

constexpr SetBits kSetBits[] = {
    {{0x50001200, 26, 26}, 1},  // constant
    {{0x50001200, 31, 31}, 0},  // depth_mode of the basic block
    {{0x5000120C, 7, 0}, 0},    // expand width
};

TEST_F(D2c, ControlKeepsTheBitsItDoesNotOwn) {
  expect_other_bits_survive<D2cConfig>(
      kWritten, kSetBits, engine().d2c.config, {}, convert_d2c_ctrl_to_register_elements);
}

TEST_F(D2c, EveryControlFieldLandsInItsBits) {
  expect_fields_land_in_their_bits<D2cConfig>(kWritten, engine().d2c.config, {}, convert_d2c_ctrl_to_register_elements);
}

TEST_F(D2c, EveryControlFieldComesBackFromItsBits) {
  expect_fields_come_back<D2cConfig>(
      kReadBack, engine().d2c.config, filled_with<D2cConfig>(0x3C), convert_d2c_register_to_params_cfg);
}

TEST_F(D2c, StartUpControlWordIsThatOfItsSettings) {
  fill_all_registers(0);
  set_d2c_config(2, 0.33203125F, 0xC0, 0x180, 0);  // 85 / 256
  EXPECT_EQ(outcome_of(convert_d2c_ctrl_to_register_elements), silent_success());
  EXPECT_EQ(word_at(0x50001200), 0x0C1800C0U);
  EXPECT_EQ(word_at(0x5000120C), 0x00000055U);
}

TEST_F(D2c, ControlWordsWorkedOutByHand) {
  fill_all_registers(0);
  set_camera_mode(0, 1);
  set_d2c_config(1, 0, 0xABC, 0x123, 1);
  convert_d2c_ctrl_to_register_elements();
  EXPECT_EQ(word_at(0x50001200), 0xD4123ABCU);
  set_camera_mode(0, 0);
  set_d2c_config(0, 0, 0xFFF, 0xFFF, 0);
  convert_d2c_ctrl_to_register_elements();
  EXPECT_EQ(word_at(0x50001200), 0x04FFFFFFU);
}

TEST_F(D2c, DepthModeOfTheBasicBlockIsWrittenToTheTopBit) {
  for (const auto& [depth_mode, word] :
       {std::pair{0, 0x04000000U}, {1, 0x84000000U}, {2, 0x04000000U}, {255, 0x84000000U}}) {
    fill_all_registers(0);
    set_camera_mode(0, static_cast<std::uint8_t>(depth_mode));
    convert_d2c_ctrl_to_register_elements();
    EXPECT_EQ(word_at(0x50001200), word) << depth_mode;
  }
}

struct ExpandCase {
  const char* name;
  float width;
  std::uint32_t field;
};

class D2cExpandWidth : public EngineTest, public testing::WithParamInterface<ExpandCase> {};

TEST_P(D2cExpandWidth, IsTruncatedAfterAddingOneHalf) {
  for (const std::uint32_t background : kBackgrounds) {
    word_at(0x5000120C) = background;
    change_config([](D2cConfig& in) { in.d2c_recovery_expand_width = GetParam().width; });
    EXPECT_EQ(outcome_of(convert_d2c_ctrl_to_register_elements), silent_success());
    EXPECT_EQ(word_at(0x5000120C), (background & 0xFFFFFF00) | GetParam().field);
  }
}

INSTANTIATE_TEST_SUITE_P(D2c, D2cExpandWidth,
                         testing::Values(ExpandCase{"Zero", 0, 0}, ExpandCase{"ThreeTenths", 0.3F, 77},
                                         ExpandCase{"AThirdOrSo", 0.33F, 84}, ExpandCase{"HalfAStep", 1.0F / 512, 1},
                                         ExpandCase{"BelowHalfAStep", 0.00195312F, 0},
                                         ExpandCase{"Largest", 255.0F / 256, 255}, ExpandCase{"RoundsOut", 0.999F, 0},
                                         ExpandCase{"OneIsCut", 1, 0}, ExpandCase{"OneAndAHalfIsCut", 1.5F, 128},
                                         ExpandCase{"SmallNegative", -0.005F, 0},  // trunc(-0.78)
                                         ExpandCase{"Negative", -0.01F, 0xFE},     // trunc(-2.06)
                                         ExpandCase{"MinusOne", -1, 0x01},         // trunc(-255.5)
                                         ExpandCase{"BeyondInt32", 8388609, 0}, ExpandCase{"Nan", kNan, 0},
                                         ExpandCase{"Infinity", kInfinity, 0},
                                         ExpandCase{"MinusInfinity", -kInfinity, 0}, ExpandCase{"Huge", 1e30F, 0}),
                         [](const auto& test) { return test.param.name; });

TEST_F(D2c, ExpandWidthComesBackInSteps) {
  for (std::uint32_t field = 0; field < 256; ++field) {
    word_at(0x5000120C) = 0xA5A5A500 | field;
    EXPECT_EQ(convert_d2c_register_to_params_cfg(), 0);
    EXPECT_EQ(config().d2c_recovery_expand_width, static_cast<float>(field) / 256);
  }
  set_d2c_config(2, 0.3F, 0, 0, 0);
  convert_d2c_ctrl_to_register_elements();
  convert_d2c_register_to_params_cfg();
  EXPECT_EQ(config().d2c_recovery_expand_width, 0.30078125F);
}

TEST_F(D2c, RecoveryBitsComeBackCrossed) {
  set_d2c_config(2, 0, 0, 0, 0);
  convert_d2c_ctrl_to_register_elements();
  convert_d2c_register_to_params_cfg();
  EXPECT_EQ(config().recovery_mode_1, 1U);
  EXPECT_EQ(config().recovery_mode_2, 0U);
  // A second trip crosses them again.
  convert_d2c_ctrl_to_register_elements();
  convert_d2c_register_to_params_cfg();
  EXPECT_EQ(config().recovery_mode_1, 0U);
  EXPECT_EQ(config().recovery_mode_2, 1U);
}

TEST_F(D2c, ReadBackTakesTheCameraModeFromTheLowByte) {
  for (std::uint32_t low = 0; low < 256; ++low) {
    word_at(0x50001200) = 0xFFFFFF00 | low;
    EXPECT_EQ(convert_d2c_register_to_params_cfg(), 0);
    std::uint32_t cam_mode = 0xFFFFFFFF;
    get_camera_mode(&cam_mode);
    EXPECT_EQ(cam_mode, low);
    EXPECT_EQ(config().d2c_buffer_position, 0xF00 | low);
  }
}

TEST_F(D2c, ReadBackReplacesTheWholeRecordAndMatrix) {
  fill_all_registers(0);
  word_at(0x50001200) = 0x84000000;  // bits 26 and 31: not read back
  const auto in = filled_with<D2cConfig>(0xFF);
  de_update_d2c_config(&in);
  set_camera_mode(1, 0);
  engine().d2c.w.fill(3);
  EXPECT_EQ(outcome_of(convert_d2c_register_to_params_cfg), silent_success());
  EXPECT_EQ(bytes_of(config()), std::vector<unsigned char>(32));
  EXPECT_EQ(matrix(), Matrix{});
  DeBasicParams_S basic;
  de_copy_basic_params(&basic);
  EXPECT_EQ(basic.depth_mode, 0);
  EXPECT_EQ(basic.cam_mode, 0U);
}

TEST_F(D2c, ReadBackDecodesTheMatrixAsWell) {
  word_at(0x50001214) = 0xE0000000;
  convert_d2c_register_to_params_cfg();
  EXPECT_EQ(matrix()[0], 1.0);
  EXPECT_EQ(matrix()[1], -1.0);
}

}  // namespace
}  // namespace vq3900::test
