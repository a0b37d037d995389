#include "modules/rectify_lut.h"

#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "support/capture.h"
#include "support/elements.h"
#include "support/engine_fixture.h"
#include "support/fields.h"
#include "support/lut_grids.h"
#include "support/numbers.h"
#include "support/registers.h"

namespace vq3900::test {
namespace {

using RectifyLutTest = EngineTest;
using Nine = std::array<double, 9>;
using Info = RectifyLutInfo;
using InfoTable = RegisterTable<7>;

constexpr const char* kLowRate = "sample_rate_bit >=3 ! \n";
constexpr const char* kBadSize = "lut width and height must be multiples of 4! \n";

constexpr RectifyIntrinsic kRectified{1, 2, 3, 4, 5, 6};
constexpr float kRotation[]{1, 2, 3, 4, 5, 6, 7, 8, 9};
constexpr float kIntrinsic[]{2, 4, 1, 3};
constexpr Nine kMatrix{0.5, 1, 3.5, 1, 1.25, 3.25, 1.5, 1.5, 3};  // of the two above

Outcome set_odd_map(std::uint32_t camera, const Info& info) {
  return outcome_of([&] { return set_rectify_params_map(camera, &kRectified, &info, kRotation, kIntrinsic); });
}

Info descriptor(std::int32_t camera) {
  auto info = filled_with<Info>(0xEE);
  EXPECT_EQ(outcome_of([&] { return de_get_rectify_lut_params_float(camera, &info); }), silent_success());
  return info;
}

void expect_descriptor(const Info& actual, const Info& expected) {
  EXPECT_EQ(actual.lut_x_start, expected.lut_x_start);
  EXPECT_EQ(actual.lut_y_start, expected.lut_y_start);
  EXPECT_EQ(actual.lut_fx, expected.lut_fx);
  EXPECT_EQ(actual.lut_fy, expected.lut_fy);
  EXPECT_EQ(actual.lut_cx, expected.lut_cx);
  EXPECT_EQ(actual.lut_cy, expected.lut_cy);
  EXPECT_EQ(actual.lut_width, expected.lut_width);
  EXPECT_EQ(actual.lut_height, expected.lut_height);
  EXPECT_EQ(actual.sample_rate_bit, expected.sample_rate_bit);
  EXPECT_EQ(actual.dx, nullptr);
  EXPECT_EQ(actual.dy, nullptr);
}

InfoTable info_table(std::int32_t camera) {
  InfoTable table{};
  EXPECT_EQ(de_copy_rectify_lut_info_register_table(camera, table.data(), 7), 0);
  return table;
}

Words values_of(const InfoTable& table) {
  Words values;
  for (const DeRegElement_S& element : table)
    values.push_back(element.value);
  return values;
}

void fill_info_tables(std::uint32_t value) {
  for (InfoTable& table : engine().registers.rectify_lut_info)
    fill_values(table, value);
}

// --- setter

TEST_F(RectifyLutTest, MapStoresIntrinsicsMatrixAndDescriptor) {
  LutGrid grid = counting_grid(8, 4, 1);
  const Elements registers = library_registers();
  EXPECT_EQ(set_odd_map(1, grid.info()), silent_success());
  const RectifyCameraParams& camera = engine().rectify.camera[1];
  EXPECT_EQ(bytes_of(camera.intrinsic), bytes_of(kRectified));
  EXPECT_EQ(camera.matrix, kMatrix);
  EXPECT_FALSE(camera.kk_set);
  EXPECT_TRUE(engine().rectify_lut.camera[1].map_set);
  expect_descriptor(descriptor(1), grid.info());
  EXPECT_EQ(library_registers(), registers);
}

struct CameraCase {
  const char* name;
  std::uint32_t cam_mode, cam_id;
  int camera;  // -1: refused
};

class RectifyLutCamera : public EngineTest, public testing::WithParamInterface<CameraCase> {};

TEST_P(RectifyLutCamera, IsChosenByModeAndId) {
  const CameraCase& c = GetParam();
  set_cam_mode(c.cam_mode);
  const Bytes before = state_bytes();
  LutGrid grid = counting_grid(8, 4, 1);
  EXPECT_EQ(set_odd_map(c.cam_id, grid.info()), silent(c.camera < 0 ? -2 : 0));
  for (const int camera : {0, 1}) {
    const bool chosen = camera == c.camera;
    const auto index = static_cast<std::size_t>(camera);
    EXPECT_EQ(engine().rectify.camera[index].matrix, chosen ? kMatrix : Nine{});
    EXPECT_EQ(engine().rectify_lut.camera[index].map_set, chosen);
    EXPECT_EQ(engine().rectify_lut.camera[index].grid.dx() != nullptr, chosen);
    EXPECT_EQ(descriptor(camera).lut_width, chosen ? 8U : 0U);
  }
  EXPECT_EQ(state_bytes() == before, c.camera < 0);
}

INSTANTIATE_TEST_SUITE_P(
    RectifyLut, RectifyLutCamera,
    testing::Values(CameraCase{"SingleIsAlwaysCamera1", 0, 0, 1}, CameraCase{"SingleCamera1", 0, 1, 1},
                    CameraCase{"SingleTakesAnyId", 0, 0xFFFFFFFF, 1}, CameraCase{"StereoCamera0", 1, 0, 0},
                    CameraCase{"StereoCamera1", 1, 1, 1}, CameraCase{"StereoRefusesCamera2", 1, 2, -1},
                    CameraCase{"StereoRefusesLargeIds", 1, 0x100, -1}, CameraCase{"OtherModesAreStereo", 3, 0, 0},
                    CameraCase{"OtherModesRefuseCamera2", 3, 2, -1}),
    [](const auto& test) { return test.param.name; });

TEST_F(RectifyLutTest, NullParametersAreRefusedAndChangeNothing) {
  LutGrid grid = counting_grid(8, 4, 1);
  const Info info = grid.info();
  const Bytes before = state_bytes();
  const auto refused = [&](auto... arguments) {
    EXPECT_EQ(outcome_of([&] { return set_rectify_params_map(1, arguments...); }), silent(-2));
    EXPECT_EQ(state_bytes(), before);
  };
  refused(nullptr, &info, kRotation, kIntrinsic);
  refused(&kRectified, nullptr, kRotation, kIntrinsic);
  refused(&kRectified, &info, nullptr, kIntrinsic);
  refused(&kRectified, &info, kRotation, nullptr);
  EXPECT_EQ(set_odd_map(1, info), silent_success());
}

TEST_F(RectifyLutTest, SampleRateBelow3IsRefusedButIntrinsicsAndMatrixAreStored) {
  for (const std::uint32_t rate : {0U, 1U, 2U}) {
    reset_engine();
    LutGrid grid = counting_grid(8, 4, 1);
    Info info = grid.info();
    info.sample_rate_bit = rate;
    EXPECT_EQ(set_odd_map(1, info), prints_err(-2, kLowRate)) << rate;
    EXPECT_EQ(bytes_of(engine().rectify.camera[1].intrinsic), bytes_of(kRectified));
    EXPECT_EQ(engine().rectify.camera[1].matrix, kMatrix);
    EXPECT_FALSE(engine().rectify_lut.camera[1].map_set);
    EXPECT_EQ(engine().rectify_lut.camera[1].grid.dx(), nullptr);
    EXPECT_EQ(lut_length(), 0U);
    expect_descriptor(descriptor(1), {});
    EXPECT_EQ(convert(), prints_err(-2, "need to set rectify params! \n"));
  }
}

TEST_F(RectifyLutTest, RefusedSampleRateKeepsTheGridBefore) {
  LutGrid first = counting_grid(8, 4, 1);
  EXPECT_EQ(set_map(1, first.info()), 0);
  LutGrid second = counting_grid(4, 4, 500);
  Info info = second.info();
  info.sample_rate_bit = 2;
  EXPECT_EQ(outcome_of([&] { return set_map(1, info); }), prints_err(-2, kLowRate));
  EXPECT_EQ(lut_length(), 32U);
  expect_descriptor(descriptor(1), first.info());
  EXPECT_EQ(convert(), prints_out(0, kConverted));
  EXPECT_EQ(taken_sections(2)[0].words, words_of(8, first.dx));
  EXPECT_EQ(set_map(1, second.info()), 0);
  EXPECT_EQ(convert(), prints_out(0, kConverted));
  EXPECT_EQ(taken_sections(2)[0].words, words_of(4, second.dx));
}

TEST_F(RectifyLutTest, SampleRatesFrom3OnAreTaken) {
  for (const std::uint32_t rate : {3U, 4U, 6U, 7U, 0xFFFFFFFFU}) {
    Info info = lut_info(4, 4);
    info.sample_rate_bit = rate;
    EXPECT_EQ(outcome_of([&] { return set_map(1, info); }), silent_success()) << rate;
    EXPECT_EQ(descriptor(1).sample_rate_bit, rate);
  }
}

// As many samples as 0xFFFFFFFC in either direction have can be held nowhere.
TEST_F(RectifyLutTest, GridThatDoesNotFitInMemoryIsRefusedAndKeepsTheGridBefore) {
  LutGrid first = counting_grid(8, 4, 1);
  EXPECT_EQ(set_map(1, first.info()), 0);
  double sample = 0;
  for (const bool only_dy : {false, true}) {
    Info info = lut_info(0xFFFFFFFC, 0xFFFFFFFC);
    (only_dy ? info.dy : info.dx) = &sample;
    EXPECT_EQ(set_odd_map(1, info), silent(-2));
    EXPECT_EQ(engine().rectify.camera[1].matrix, kMatrix);
    EXPECT_EQ(lut_length(), 32U);
    expect_descriptor(descriptor(1), first.info());
    EXPECT_NE(engine().rectify_lut.camera[1].grid.dx(), nullptr);
    EXPECT_NE(engine().rectify_lut.camera[1].grid.dy(), nullptr);
  }
}

// --- length and descriptors

TEST_F(RectifyLutTest, LengthIsThatOfTheGridGivenLast) {
  set_cam_mode(1);
  EXPECT_EQ(lut_length(), 0U);
  give_grid(1, counting_grid(8, 4, 1));
  EXPECT_EQ(lut_length(), 32U);
  give_grid(0, counting_grid(4, 4, 1));
  EXPECT_EQ(lut_length(), 16U);
  give_grid(1, counting_grid(12, 8, 1));
  EXPECT_EQ(lut_length(), 96U);
  EXPECT_EQ(convert().code, 0);
  EXPECT_EQ(lut_length(), 96U);
  taken_sections(4);
  EXPECT_EQ(lut_length(), 96U);
}

TEST_F(RectifyLutTest, LengthWrapsIn32Bits) {
  EXPECT_EQ(set_map(1, lut_info(0x10001, 0x10000)), 0);
  EXPECT_EQ(lut_length(), 0x10000U);
}

TEST_F(RectifyLutTest, DescriptorsAreThoseOfTheirCameras) {
  set_cam_mode(1);
  for (const std::int32_t camera : {0, 1, 2})
    expect_descriptor(descriptor(camera), {});
  Info infos[] = {lut_info(8, 4), lut_info(12, 16)};
  infos[1].lut_x_start = 0xFFFFFFF0;
  infos[1].lut_fx = -1.5F;
  infos[1].sample_rate_bit = 99;
  for (const std::uint32_t camera : {0U, 1U})
    EXPECT_EQ(set_map(camera, infos[camera]), 0);
  for (const std::int32_t camera : {0, 1, 2, -1, 257, std::numeric_limits<std::int32_t>::min()})
    expect_descriptor(descriptor(camera), infos[camera == 1 ? 1 : 0]);
}

TEST_F(RectifyLutTest, DescriptorStaysWhenItsGridIsConverted) {
  LutGrid grid = counting_grid(8, 4, 1);
  EXPECT_EQ(set_map(1, grid.info()), 0);
  EXPECT_EQ(convert().code, 0);
  expect_descriptor(descriptor(1), grid.info());
}

TEST_F(RectifyLutTest, NullOutputsAreRefused) {
  EXPECT_EQ(outcome_of([] { return de_get_lut_len(nullptr); }), silent(-2));
  EXPECT_EQ(outcome_of([] { return de_get_rectify_lut_params_float(1, nullptr); }), silent(-2));
  EXPECT_EQ(outcome_of([] { return de_get_rectify_lut_params_float(0, nullptr); }), silent(-2));
}

// --- information tables

// A grid of 8 x 4 whose numbers are exact; -16, 8; 512.5, 600.25; 320.75, 240.125; 2^5.
Info sample_info() {
  Info info = lut_info(8, 4);
  info.lut_x_start = 0xFFFFFFF0;
  return info;
}

const Words kSampleWords{0x000803F0, 0x20080000, 0x25840000, 0x50300000, 0x3C080000, 0x00040008, 0x00000200};

void give_sample(std::uint32_t camera) {
  LutGrid grid = counting_grid(8, 4, 1);
  EXPECT_EQ(set_map(camera, grid.info(sample_info())), 0);
}

TEST_F(RectifyLutTest, StereoCamera1GoesIntoItsOwnTable) {
  for (const std::uint32_t mode : {1U, 2U, 0x100U}) {
    reset_engine();
    set_cam_mode(mode);
    give_sample(1);
    EXPECT_EQ(convert(), prints_out(0, kConverted));
    EXPECT_EQ(values_of(info_table(1)), kSampleWords);
    EXPECT_EQ(values_of(info_table(0)), Words(7));
  }
}

TEST_F(RectifyLutTest, StereoCamera0GoesIntoItsOwnTableWithTheSampleRateOfCamera1) {
  for (const auto& [rate, bits] : {std::pair{3U, 0U}, {4U, 0x100U}, {5U, 0x200U}, {6U, 0x300U}, {7U, 0U}}) {
    reset_engine();
    set_cam_mode(1);
    LutGrid grid = counting_grid(4, 4, 1);
    Info info = grid.info();
    info.sample_rate_bit = rate;
    EXPECT_EQ(set_map(1, info), 0);
    give_sample(0);  // has 5
    EXPECT_EQ(convert(), prints_out(0, kConverted + kConverted));
    Words expected = kSampleWords;
    expected[6] = bits;
    EXPECT_EQ(values_of(info_table(0)), expected);
    EXPECT_EQ(info_table(1)[6].value, bits);
    EXPECT_EQ(info_table(1)[5].value, 0x00040004U);
  }
}

// Camera 1 was never given a grid: its sample rate is 0, and 0 - 3 ends in the bits 01.
TEST_F(RectifyLutTest, StereoCamera0AloneTakesTheSampleRateThatCamera1DoesNotHave) {
  set_cam_mode(1);
  give_sample(0);
  EXPECT_EQ(convert(), prints_out(0, kConverted));
  Words expected = kSampleWords;
  expected[6] = 0x100;
  EXPECT_EQ(values_of(info_table(0)), expected);
  EXPECT_EQ(values_of(info_table(1)), Words(7));
}

TEST_F(RectifyLutTest, SingleCameraGoesIntoBothTables) {
  give_sample(1);
  EXPECT_EQ(convert(), prints_out(0, kConverted));
  EXPECT_EQ(values_of(info_table(0)), kSampleWords);
  EXPECT_EQ(values_of(info_table(1)), kSampleWords);
  for (std::size_t i = 0; i < 7; ++i)
    EXPECT_EQ(info_table(1)[i].address, info_table(0)[i].address - 0x80000);
}

TEST_F(RectifyLutTest, SingleCameraCopiesWholeValuesFromTable0) {
  give_sample(1);
  fill_values(engine().registers.rectify_lut_info[0], 0xA5A5A5A5);
  fill_values(engine().registers.rectify_lut_info[1], 0xFFFFFFFF);
  EXPECT_EQ(convert().code, 0);
  const Words expected{
      0xA408A7F0, 0x20080000, 0x25840000, 0x50300000, 0x3C080000, 0xA404A408, 0xA5A5A6A5};  // around the masks
  EXPECT_EQ(values_of(info_table(0)), expected);
  EXPECT_EQ(values_of(info_table(1)), expected);
}

TEST_F(RectifyLutTest, NothingElseIsWrittenThanParametersAndLutInformation) {
  for (const std::uint32_t mode : {0U, 1U}) {
    reset_engine();
    set_cam_mode(mode);
    give_sample(1);
    fill_all_registers(0xA5A5A5A5);
    RegisterTables expected = engine().registers;
    EXPECT_EQ(convert().code, 0);
    expected.rectify = engine().registers.rectify;
    expected.rectify_lut_info[1] = engine().registers.rectify_lut_info[1];
    if (mode == 0) expected.rectify_lut_info[0] = engine().registers.rectify_lut_info[0];
    EXPECT_EQ(differences_from(expected), "");
  }
}

// --- fields

struct EncodedInfo {
  LutFault fault;
  InfoTable table;
};

// The information table of a descriptor on a background. There is no grid, which is what the conversion ends with.
EncodedInfo encoded(const Info& info, std::uint32_t background = 0) {
  RectifyLut lut;
  lut.info = info;
  HeldSection dx, dy;
  EncodedInfo result{LutFault::kNone, startup::rectify_lut_info(0x52000000)};
  fill_values(result.table, background);
  result.fault = encode_lut(lut,
                            info.sample_rate_bit,
                            {result.table, dx, dy, 0x52000000},
                            {[](const FixedOverflow&) {}, [](LutProgress) { ADD_FAILURE() << "there is no grid"; }});
  return result;
}

// The table of lut_info(4, 4) on a background, with one field replaced.
void expect_field(const Info& info, std::size_t element, const Bits& bits, std::uint32_t value) {
  for (const std::uint32_t background : kBackgrounds) {
    const EncodedInfo plain = encoded(lut_info(4, 4), background);
    InfoTable expected = plain.table;
    expected[element].value = bits.replaced(expected[element].value, value);
    const EncodedInfo changed = encoded(info, background);
    ASSERT_EQ(changed.fault, LutFault::kGridMissing);
    ASSERT_EQ(values_of(changed.table), values_of(expected)) << value << " on " << background;
  }
}

TEST_F(RectifyLutTest, FieldsKeepTheBitsTheyDoNotOwn) {
  for (const auto& [background, first, size, rate] : {std::array{0x00000000U, 0x00080010U, 0x00040004U, 0x00000200U},
                                                      std::array{0xFFFFFFFFU, 0xFC08FC10U, 0xFC04FC04U, 0xFFFFFEFFU}}) {
    EXPECT_EQ(values_of(encoded(lut_info(4, 4), background).table),
              (Words{first, 0x20080000, 0x25840000, 0x50300000, 0x3C080000, size, rate}));
  }
}

TEST_F(RectifyLutTest, StartsAreTwosComplementOf10Bits) {
  for (std::int32_t start = -1024; start <= 1023; ++start) {
    Info info = lut_info(4, 4);
    info.lut_x_start = static_cast<std::uint32_t>(start);
    expect_field(info, 0, {0, 9, 0}, info.lut_x_start);
    info = lut_info(4, 4);
    info.lut_y_start = static_cast<std::uint32_t>(start);
    expect_field(info, 0, {0, 25, 16}, info.lut_y_start);
  }
}

TEST_F(RectifyLutTest, SizesAreCutTo10Bits) {
  for (const std::uint32_t size : {0U, 4U, 8U, 512U, 1020U, 1024U, 1028U, 0xFFFFFFFCU}) {
    Info info = lut_info(size, 4);
    expect_field(info, 5, {0, 9, 0}, size);
    info = lut_info(4, size);
    expect_field(info, 5, {0, 25, 16}, size);
  }
}

TEST_F(RectifyLutTest, SampleRateIsCountedFrom3InTwoBits) {
  for (const std::uint32_t rate : {3U, 4U, 5U, 6U, 7U, 8U, 0xFFFFFFFFU, 0U}) {
    Info info = lut_info(4, 4);
    info.sample_rate_bit = rate;
    expect_field(info, 6, {0, 9, 8}, rate - 3);
  }
}

struct IntrinsicRow {
  const char* name;
  float Info::*member;
  std::size_t element;
  int frac_bits;
};

constexpr IntrinsicRow kIntrinsicRows[] = {{"lut_fx", &Info::lut_fx, 1, 20},
                                           {"lut_fy", &Info::lut_fy, 2, 20},
                                           {"lut_cx", &Info::lut_cx, 3, 22},
                                           {"lut_cy", &Info::lut_cy, 4, 22}};

TEST_F(RectifyLutTest, IntrinsicsTakeWholeRegisters) {
  for (const IntrinsicRow& row : kIntrinsicRows) {
    SCOPED_TRACE(row.name);
    const float limit = row.frac_bits == 20 ? 4096.0F : 1024.0F;
    for (const auto& [value, word] : {std::pair{0.0F, 0x00000000U},
                                      {-0.0F, 0x00000000U},
                                      {limit / 4, 0x40000000U},
                                      {limit / 2, 0x80000000U},
                                      {std::nextafter(limit, 0.0F), 0xFFFFFF00U},
                                      {-limit / 4, 0xC0000000U},
                                      {-limit / 2, 0x80000000U},
                                      {-limit, 0x00000000U},
                                      {std::ldexp(1.0F, -row.frac_bits), 0x00000001U},
                                      {std::ldexp(1.0F, -row.frac_bits - 1), 0x00000001U},
                                      {std::ldexp(-2.0F, -row.frac_bits), 0xFFFFFFFEU}}) {
      Info info = lut_info(4, 4);
      info.*row.member = value;
      expect_field(info, row.element, {0, 31, 0}, word);
    }
  }
}

TEST_F(RectifyLutTest, FieldsAreNamedInTheOrderOfTheirEncoding) {
  std::string names;
  for (const Field<Info>& field : rectify_lut_info_fields())
    names.append(field.name).append(", ");
  EXPECT_EQ(names,
            "lut_x_start, lut_y_start, lut_fx, lut_fy, lut_cx, lut_cy, lut_width, lut_height, sample_rate_bit - 3, ");
}

// --- overflow

struct OverflowCase {
  const char* name;
  const char* field;
  double value;
  unsigned width;
  int frac_bits;
  Words words;  // afterwards, on zeros
  void (*put)(Info&);
};

// The words of lut_info() after that many fields.
Words written(std::size_t fields) {
  Words words{0x00080010, 0x20080000, 0x25840000, 0x50300000, 0x3C080000, 0, 0};
  for (std::size_t element = fields - 1; element < 7; ++element)
    words[element] = 0;
  if (fields == 1) words[0] = 0x10;
  return words;
}

constexpr double kLowest = -2147483648.0;

// Fields before the one that overflows are written.
const OverflowCase kOverflowCases[] = {
    {"StartOf1024Columns", "lut_x_start", 1024, 10, 0, Words(7), [](Info& info) { info.lut_x_start = 1024; }},
    {"StartOfMinus1025Columns", "lut_x_start", -1025, 10, 0, Words(7), [](Info& i) { i.lut_x_start = 0xFFFFFBFF; }},
    {"StartOf1024Rows", "lut_y_start", 1024, 10, 0, written(1), [](Info& info) { info.lut_y_start = 1024; }},
    {"LowestStart", "lut_y_start", kLowest, 10, 0, written(1), [](Info& info) { info.lut_y_start = 0x80000000; }},
    {"Fx", "lut_fx", 4096, 32, 20, written(2), [](Info& info) { info.lut_fx = 4096; }},
    {"Fy", "lut_fy", -4097, 32, 20, written(3), [](Info& info) { info.lut_fy = -4097; }},
    {"Cx", "lut_cx", 1024, 32, 22, written(4), [](Info& info) { info.lut_cx = 1024; }},
    {"Cy", "lut_cy", -1025, 32, 22, written(5), [](Info& info) { info.lut_cy = -1025; }},
};

class RectifyLutOverflow : public EngineTest, public testing::WithParamInterface<OverflowCase> {};

TEST_P(RectifyLutOverflow, IsNamedAndEndsTheConversion) {
  const OverflowCase& c = GetParam();
  for (const std::uint32_t mode : {0U, 1U}) {
    reset_engine();
    set_cam_mode(mode);
    LutGrid grid = counting_grid(8, 4, 1);
    Info info = grid.info();
    c.put(info);
    EXPECT_EQ(set_map(1, info), 0);
    const std::string lines = overflow_lines(c.value, c.width, c.frac_bits, c.field);
    EXPECT_EQ(convert(), prints_out(4096, lines + lut_step_failed(1)));
    EXPECT_EQ(values_of(info_table(mode == 0 ? 0 : 1)), c.words);
    EXPECT_EQ(values_of(info_table(mode == 0 ? 1 : 0)), Words(7));
    EXPECT_EQ(convert(), prints_out(4096, lines + lut_step_failed(1)));  // the grid is still held

    EXPECT_EQ(set_map(1, grid.info()), 0);
    EXPECT_EQ(convert(), prints_out(0, kConverted));
  }
}

INSTANTIATE_TEST_SUITE_P(RectifyLut, RectifyLutOverflow, testing::ValuesIn(kOverflowCases),
                         [](const auto& test) { return test.param.name; });

TEST_F(RectifyLutTest, IntrinsicOfAllOnesReadsAsOverflowWithoutTheEncodersLines) {
  for (const IntrinsicRow& row : kIntrinsicRows) {
    LutGrid grid = counting_grid(8, 4, 1);
    Info info = grid.info();
    info.*row.member = std::ldexp(-1.0F, -row.frac_bits);
    EXPECT_EQ(set_map(1, info), 0);
    EXPECT_EQ(convert(), prints_out(4096, lut_step_failed(1))) << row.name;
  }
}

TEST_F(RectifyLutTest, NumbersThatAreNoneOverflow) {
  for (const IntrinsicRow& row : kIntrinsicRows) {
    for (const float value : {kNan, kInfinity, -kInfinity}) {
      Info info = lut_info(4, 4);
      info.*row.member = value;
      EXPECT_EQ(encoded(info).fault, LutFault::kOverflow) << row.name << " " << value;
      EXPECT_EQ(encoded(info).table[row.element].value, 0U);
    }
  }
}

// --- grids that cannot be converted

struct MissingCase {
  const char* name;
  bool dx, dy;  // given
};

class RectifyLutMissing : public EngineTest, public testing::WithParamInterface<MissingCase> {
 protected:
  static void give(std::uint32_t camera) {
    LutGrid grid = counting_grid(8, 4, 1);
    Info info = sample_info();
    if (GetParam().dx) info.dx = grid.dx.data();
    if (GetParam().dy) info.dy = grid.dy.data();
    EXPECT_EQ(set_map(camera, info), 0);
    EXPECT_EQ(lut_length(), 32U);
  }
};

TEST_P(RectifyLutMissing, ArrayIsRefusedAfterTheInformationIsWritten) {
  for (const std::uint32_t mode : {0U, 1U}) {
    reset_engine();
    set_cam_mode(mode);
    give(1);
    EXPECT_EQ(convert(), (Outcome{-2, lut_step_failed(1), grid_missing(1)}));
    EXPECT_EQ(values_of(info_table(mode == 0 ? 0 : 1)), kSampleWords);
    EXPECT_EQ(values_of(info_table(mode == 0 ? 1 : 0)), Words(7));
    give_sample(1);
    EXPECT_EQ(convert(), prints_out(0, kConverted));
  }
}

TEST_P(RectifyLutMissing, ArrayOfCamera0LeavesCamera1Converted) {
  set_cam_mode(1);
  give_sample(1);
  give(0);
  EXPECT_EQ(convert(), (Outcome{-2, kConverted + lut_step_failed(0), grid_missing(0)}));
  EXPECT_EQ(values_of(info_table(1)), kSampleWords);
  EXPECT_EQ(values_of(info_table(0)), kSampleWords);
  EXPECT_EQ(taken_sections(2)[0].count, 32U);
}

INSTANTIATE_TEST_SUITE_P(RectifyLut, RectifyLutMissing,
                         testing::Values(MissingCase{"Dx", false, true}, MissingCase{"Dy", true, false},
                                         MissingCase{"Both", false, false}),
                         [](const auto& test) { return test.param.name; });

TEST_F(RectifyLutTest, Camera1sFaultLeavesCamera0Unconverted) {
  set_cam_mode(1);
  EXPECT_EQ(set_map(1, lut_info(8, 4)), 0);
  give_sample(0);
  const auto before = engine().registers.rectify[0];
  EXPECT_EQ(convert(), (Outcome{-2, lut_step_failed(1), grid_missing(1)}));
  EXPECT_EQ(values_of(info_table(0)), Words(7));
  EXPECT_EQ(Elements(before.begin(), before.end()),
            Elements(engine().registers.rectify[0].begin(), engine().registers.rectify[0].end()));
  EXPECT_NE(engine().rectify_lut.camera[0].grid.dx(), nullptr);
}

TEST_F(RectifyLutTest, SizeThatIsNoMultipleOf4IsRefusedBeforeAnythingIsConverted) {
  for (const auto& [width, height] :
       {std::pair{5U, 4U}, {4U, 6U}, {7U, 4U}, {1U, 1U}, {2U, 2U}, {0U, 1U}, {3U, 0U}, {10U, 10U}}) {
    for (const std::uint32_t mode : {0U, 1U}) {
      reset_engine();
      set_cam_mode(mode);
      LutGrid grid = counting_grid(width, height, 1);
      EXPECT_EQ(set_map(1, grid.info()), 0);
      fill_info_tables(0xA5A5A5A5);
      EXPECT_EQ(convert(), (Outcome{-2, lut_step_failed(1), kBadSize})) << width << " x " << height;
      EXPECT_EQ(values_of(info_table(0)), Words(7, 0xA5A5A5A5));
      EXPECT_EQ(values_of(info_table(1)), Words(7, 0xA5A5A5A5));
      give_sample(1);
      EXPECT_EQ(convert(), prints_out(0, kConverted));
    }
  }
}

TEST_F(RectifyLutTest, OddSizeOfCamera0LeavesCamera1Converted) {
  set_cam_mode(1);
  give_sample(1);
  give_grid(0, counting_grid(6, 4, 1));
  EXPECT_EQ(convert(), (Outcome{-2, kConverted + lut_step_failed(0), kBadSize}));
  EXPECT_EQ(values_of(info_table(1)), kSampleWords);
  EXPECT_EQ(values_of(info_table(0)), Words(7));
}

}  // namespace
}  // namespace vq3900::test
