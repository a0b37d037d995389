#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "support/capture.h"
#include "support/engine_fixture.h"
#include "support/fields.h"
#include "support/registers.h"

namespace vq3900::test {
namespace {

using Prefilter = EngineTest;

constexpr std::uint32_t kFirstCoefficient = 0x50001084;

std::uint32_t packed(std::uint32_t width, std::uint32_t height) {
  return width | height << 16;
}

std::uint32_t image_size() {
  std::uint32_t size = 0xEEEEEEEE;
  EXPECT_EQ(get_prefilter_img_size(&size), 0);
  return size;
}

void expect_params(std::uint32_t size, int speckle) {
  std::uint32_t actual_size = 0xEEEEEEEE;
  std::uint8_t actual_speckle = 0xEE;
  EXPECT_EQ(get_prefilter_size_speckleTh(&actual_size, &actual_speckle), 0);
  EXPECT_EQ(actual_size, size);
  EXPECT_EQ(actual_speckle, speckle);
}

void restore_size(std::uint8_t size) {
  const DePrefilterParams_S in{size, 0};
  EXPECT_EQ(de_update_prefilter_params(&in), 0);
}

// --- record and getters ---

TEST_F(Prefilter, EverythingIsZeroAtLoad) {
  expect_params(0, 0);
  EXPECT_EQ(image_size(), 0U);
}

TEST_F(Prefilter, RecordTravelsWholeWithoutTheImageSize) {
  set_input_ir_resolution(packed(640, 480));
  set_prefilter_size_speckleTh(5, 1);
  const DePrefilterParams_S in{0x81, 0x92};
  EXPECT_EQ(outcome_of([&] { return de_update_prefilter_params(&in); }), silent_success());
  auto out = filled_with<DePrefilterParams_S>(0xEE);
  EXPECT_EQ(outcome_of([&] { return de_copy_prefilter_params(&out); }), silent_success());
  EXPECT_EQ(bytes_of(out), (std::vector<unsigned char>{0x81, 0x92}));
  expect_params(0x81, 0x92);
  EXPECT_EQ(image_size(), packed(640, 480));
}

TEST_F(Prefilter, NullPointersAreRefusedAndChangeNothing) {
  const DePrefilterParams_S in{7, 3};
  de_update_prefilter_params(&in);
  std::uint32_t size = 0xEE;
  std::uint8_t speckle = 0xEE;
  EXPECT_EQ(outcome_of([] { return de_update_prefilter_params(nullptr); }), silent(-2));
  EXPECT_EQ(outcome_of([] { return de_copy_prefilter_params(nullptr); }), silent(-2));
  EXPECT_EQ(outcome_of([] { return get_prefilter_img_size(nullptr); }), silent(-2));
  EXPECT_EQ(outcome_of([&] { return get_prefilter_size_speckleTh(nullptr, &speckle); }), silent(-2));
  EXPECT_EQ(outcome_of([&] { return get_prefilter_size_speckleTh(&size, nullptr); }), silent(-2));
  EXPECT_EQ(size, 0xEEU);
  EXPECT_EQ(speckle, 0xEE);
  expect_params(7, 3);
}

// --- setter ---

TEST_F(Prefilter, SizesFiveSevenAndNineAreStored) {
  for (const int size : {5, 7, 9}) {
    EXPECT_EQ(outcome_of([&] { return set_prefilter_size_speckleTh(size, 255); }), silent_success());
    expect_params(static_cast<std::uint32_t>(size), 255);
  }
}

TEST_F(Prefilter, OtherSizesAreRefusedAndChangeNothing) {
  set_input_ir_resolution(packed(640, 480));
  set_prefilter_size_speckleTh(7, 3);
  set_input_ir_resolution(packed(1280, 800));
  for (const std::int32_t size : {6, 0, 4, 8, 10, -5, 256 + 5, std::numeric_limits<std::int32_t>::min()}) {
    SCOPED_TRACE(size);
    EXPECT_EQ(outcome_of([&] { return set_prefilter_size_speckleTh(size, 0); }),
              prints_err(-2, "unsupported size! size: 5, 7,9 \n"));
    expect_params(7, 3);
    EXPECT_EQ(image_size(), packed(640, 480));
  }
  EXPECT_EQ(set_prefilter_size_speckleTh(9, 4), 0);
  expect_params(9, 4);
  EXPECT_EQ(image_size(), packed(1280, 800));
}

struct ImageCase {
  const char* name;
  std::uint32_t cam_mode;
  std::uint32_t rotate;
  std::uint8_t upsample;
  std::uint32_t resolution;
  std::uint32_t expected;
};

class PrefilterImage : public EngineTest, public testing::WithParamInterface<ImageCase> {};

TEST_P(PrefilterImage, FollowsTheBasicBlock) {
  const ImageCase& c = GetParam();
  engine().basic.cam_mode = c.cam_mode;
  engine().basic.sbg2r_rotate = c.rotate;
  engine().basic.upsample_enable = c.upsample;
  set_input_ir_resolution(c.resolution);
  EXPECT_EQ(outcome_of([] { return set_prefilter_size_speckleTh(5, 0); }), silent_success());
  EXPECT_EQ(image_size(), c.expected);
}

INSTANTIATE_TEST_SUITE_P(
    Prefilter, PrefilterImage,
    testing::Values(ImageCase{"Plain", 0, 0, 0, packed(640, 480), packed(640, 480)},
                    ImageCase{"RotationSwaps", 0, 1, 0, packed(640, 480), packed(480, 640)},
                    ImageCase{"UpsamplingReplacesTheSwap", 0, 1, 1, packed(640, 480), packed(1280, 960)},
                    ImageCase{"UpsamplingDoubles", 0, 0, 1, packed(640, 480), packed(1280, 960)},
                    ImageCase{"StereoIsNeverSwapped", 1, 1, 0, packed(640, 480), packed(640, 480)},
                    ImageCase{"StereoUpsampling", 1, 1, 1, packed(640, 480), packed(1280, 960)},
                    ImageCase{"OtherModesAreNotSwapped", 2, 1, 0, packed(640, 480), packed(640, 480)},
                    ImageCase{"AnyNonZeroRotationSwaps", 0, 0x100, 0, packed(640, 480), packed(480, 640)},
                    ImageCase{"AnyNonZeroEnableDoubles", 0, 0, 0x80, packed(640, 480), packed(1280, 960)},
                    ImageCase{"DoublingWrapsIn16Bits", 0, 0, 1, packed(0x8001, 0xFFFF), packed(2, 0xFFFE)},
                    ImageCase{"WholeRange", 0, 0, 0, packed(0xFFFF, 0xABCD), packed(0xFFFF, 0xABCD)}),
    [](const auto& test) { return test.param.name; });

TEST_F(Prefilter, LaterBasicSettingsDoNotReachTheImageByThemselves) {
  set_input_ir_resolution(packed(640, 480));
  set_prefilter_size_speckleTh(5, 0);
  set_input_ir_resolution(packed(320, 240));
  set_upsample(1, 0);
  EXPECT_EQ(image_size(), packed(640, 480));
}

TEST_F(Prefilter, SetterTouchesNoRegister) {
  const RegisterTables before = engine().registers;
  set_input_ir_resolution(packed(640, 480));
  set_prefilter_size_speckleTh(9, 1);
  EXPECT_EQ(differences_from(before), "");
}

// --- record to registers ---

struct SizeRow {
  const char* name;
  std::uint8_t size;
  std::uint32_t first_word;
  std::array<std::uint32_t, 15> words;
};

constexpr SizeRow kSizes[] = {
    {"Five", 5, 0x11950034, {0x21D3019C, 0x1EEC5782, 0x06D78588, 0x1870D763, 0x25CAC26A, 0x55555555}},
    {"Seven",
     7,
     0x131703A0,
     {0x16BA2FDE,
      0x18AC1B10,
      0x11F4E3CF,
      0x1667058C,
      0x039FBFC9,
      0x1A70855A,
      0x148FBE2A,
      0x042DBABA,
      0x29DCBECF,
      0x3CF3CF3C}},
    {"Nine",
     9,
     0x15197300,
     {0x10D97EFA,
      0x12F90ED0,
      0x124A2A95,
      0x12F9925A,
      0x0DA35BBF,
      0x01F0E01E,
      0x11BD10E5,
      0x07C38F18,
      0x0AB80EFF,
      0x1DD2BEC4,
      0x11059EF7,
      0x05131DFB,
      0x10420E02,
      0x260DE270,
      0x2F684BDA}},
};

class PrefilterSize : public EngineTest, public testing::WithParamInterface<SizeRow> {};

TEST_P(PrefilterSize, BringsItsWordsAndKeepsTheBitsItDoesNotOwn) {
  const SizeRow& row = GetParam();
  set_input_ir_resolution(packed(1280, 800));
  set_prefilter_size_speckleTh(row.size, 0x5A);
  for (const std::uint32_t background : kBackgrounds) {
    SCOPED_TRACE(testing::Message() << "background 0x" << std::hex << background);
    fill_all_registers(background);
    RegisterTables expected = engine().registers;
    // Bits 31 to 29 and 15 are not the library's to write.
    word_at(expected, 0x50001080) = (background & 0xE0008000) | row.first_word;
    for (std::uint32_t k = 0; k < 15; ++k)
      word_at(expected, kFirstCoefficient + 4 * k) = row.words[k];
    word_at(expected, 0x500010D0) = (background & 0xFF000000) | 0x00500320;
    word_at(expected, 0x500010D4) = 1280 * 800;
    EXPECT_EQ(outcome_of(convert_prefilter_float_to_registers), silent_success());
    EXPECT_EQ(differences_from(expected), "");
  }
}

INSTANTIATE_TEST_SUITE_P(Prefilter, PrefilterSize, testing::ValuesIn(kSizes),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_F(Prefilter, SmallerSizesClearTheWordsOfLargerOnes) {
  const auto words_are_zero_from = [](std::uint32_t first) {
    for (std::uint32_t k = first; k <= 15; ++k)
      EXPECT_EQ(word_at(kFirstCoefficient + 4 * (k - 1)), 0U) << "word " << k;
    EXPECT_NE(word_at(kFirstCoefficient + 4 * (first - 2)), 0U);
  };
  set_prefilter_size_speckleTh(9, 0);
  convert_prefilter_float_to_registers();
  EXPECT_EQ(word_at(0x500010BC), 0x2F684BDAU);
  set_prefilter_size_speckleTh(7, 0);
  convert_prefilter_float_to_registers();
  words_are_zero_from(11);
  set_prefilter_size_speckleTh(5, 0);
  convert_prefilter_float_to_registers();
  words_are_zero_from(7);
}

TEST_F(Prefilter, SizeFiveGivesTheStartUpCoefficients) {
  RegisterTables expected = engine().registers;
  set_prefilter_size_speckleTh(5, 0);
  convert_prefilter_float_to_registers();
  // The start-up word lacks bit 28 alone.
  word_at(expected, 0x50001080) |= 0x10000000;
  EXPECT_EQ(differences_from(expected), "");
}

struct RestoredCase {
  const char* name;
  std::uint8_t size;
  std::uint32_t word_on_zeros;
};

class PrefilterRestoredSize : public EngineTest, public testing::WithParamInterface<RestoredCase> {};

TEST_P(PrefilterRestoredSize, LeavesSizeCodeAndCoefficients) {
  for (const std::uint32_t background : kBackgrounds) {
    fill_all_registers(background);
    restore_size(GetParam().size);
    RegisterTables expected = engine().registers;
    word_at(expected, 0x50001080) = (background & 0xE000FFFF) | GetParam().word_on_zeros;
    word_at(expected, 0x500010D0) = background & 0xFF000000;
    word_at(expected, 0x500010D4) = 0;
    EXPECT_EQ(outcome_of(convert_prefilter_float_to_registers), silent_success());
    EXPECT_EQ(differences_from(expected), "");
  }
}

INSTANTIATE_TEST_SUITE_P(Prefilter, PrefilterRestoredSize,
                         testing::Values(RestoredCase{"Zero", 0, 0x10000000}, RestoredCase{"Six", 6, 0x12460000},
                                         RestoredCase{"Fifteen", 15, 0x1E1F0000},
                                         RestoredCase{"SixteenIsCutToNothing", 16, 0x10000000},
                                         RestoredCase{"SquareIsCut", 21, 0x1B950000},  // 441 - 256, 21 - 16
                                         RestoredCase{"Largest", 255, 0x101F0000}),
                         [](const auto& test) { return test.param.name; });

constexpr FieldRow<PrefilterState> kImage[] = {
    {"image_width",
     {0x500010D0, 23, 12},
     [](PrefilterState& state, std::uint32_t value) { state.image_width = static_cast<std::uint16_t>(value); },
     [](const PrefilterState& state) -> std::uint32_t { return state.image_width; }},
    {"image_height",
     {0x500010D0, 11, 0},
     [](PrefilterState& state, std::uint32_t value) { state.image_height = static_cast<std::uint16_t>(value); },
     [](const PrefilterState& state) -> std::uint32_t { return state.image_height; }},
};

constexpr FieldRow<PrefilterState> kReadBack[] = {
    {"pre_win_size",
     {0x50001080, 19, 16},
     [](PrefilterState& state, std::uint32_t value) { state.params.pre_win_size = static_cast<std::uint8_t>(value); },
     [](const PrefilterState& state) -> std::uint32_t { return state.params.pre_win_size; }},
    kImage[0],
    kImage[1],
};

TEST_F(Prefilter, ImageSizeLandsInItsBits) {
  // With one side 0 the product stays 0 and only the side moves.
  expect_fields_land_in_their_bits<PrefilterState>(
      kImage, engine().prefilter, {}, convert_prefilter_float_to_registers);
}

TEST_F(Prefilter, ProductIsWholeWhereTheSidesAreCut) {
  fill_all_registers(0);
  set_input_ir_resolution(packed(0xFFFF, 0xFFFF));
  set_prefilter_size_speckleTh(5, 0);
  convert_prefilter_float_to_registers();
  EXPECT_EQ(word_at(0x500010D0), 0x00FFFFFFU);
  EXPECT_EQ(word_at(0x500010D4), 0xFFFE0001U);
}

// --- registers to record ---

TEST_F(Prefilter, EveryFieldComesBackFromItsBits) {
  PrefilterState quiet;
  quiet.params = {0x3C, 0x3C};
  quiet.image_width = quiet.image_height = 0x3C3C;
  expect_fields_come_back<PrefilterState>(kReadBack, engine().prefilter, quiet, convert_prefilter_registers_to_float);
}

TEST_F(Prefilter, SpeckleThresholdIsNeitherWrittenNorReadBack) {
  set_prefilter_size_speckleTh(5, 0);
  convert_prefilter_float_to_registers();
  const RegisterTables before = engine().registers;
  set_prefilter_size_speckleTh(5, 0x5A);
  convert_prefilter_float_to_registers();
  EXPECT_EQ(differences_from(before), "");

  fill_all_registers(0xFFFFFFFF);
  EXPECT_EQ(outcome_of(convert_prefilter_registers_to_float), silent_success());
  expect_params(15, 0x5A);
  EXPECT_EQ(image_size(), packed(0xFFF, 0xFFF));
}

TEST_F(Prefilter, StartUpTableReadsAsSizeFiveWithoutAnImage) {
  set_input_ir_resolution(packed(640, 480));
  set_prefilter_size_speckleTh(9, 7);
  EXPECT_EQ(outcome_of(convert_prefilter_registers_to_float), silent_success());
  expect_params(5, 7);
  EXPECT_EQ(image_size(), 0U);
}

TEST_F(Prefilter, ReadBackTouchesNoRegister) {
  fill_all_registers(0xA5A5A5A5);
  const RegisterTables before = engine().registers;
  convert_prefilter_registers_to_float();
  EXPECT_EQ(differences_from(before), "");
}

}  // namespace
}  // namespace vq3900::test
