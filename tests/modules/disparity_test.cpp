#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "support/capture.h"
#include "support/engine_fixture.h"
#include "support/fields.h"
#include "support/numbers.h"
#include "support/registers.h"

namespace vq3900::test {
namespace {

using Disparity = EngineTest;
using Record = DeDispCalcParams_S;

Record record() {
  auto out = filled_with<Record>(0);
  EXPECT_EQ(de_copy_disp_calc_params(&out), 0);
  return out;
}

template <typename Change>
void change_record(Change change) {
  Record params = record();
  change(params);
  EXPECT_EQ(de_update_disp_calc_params(&params), 0);
}

// --- record ---

TEST_F(Disparity, RecordIsZeroAtLoad) {
  EXPECT_EQ(bytes_of(record()), std::vector<unsigned char>(152));
}

TEST_F(Disparity, WholeRecordTravelsWithItsPadding) {
  const auto in = counting_bytes<Record>();
  auto out = filled_with<Record>(0xEE);
  EXPECT_EQ(outcome_of([&] { return de_update_disp_calc_params(&in); }), silent_success());
  EXPECT_EQ(outcome_of([&] { return de_copy_disp_calc_params(&out); }), silent_success());
  EXPECT_EQ(bytes_of(out), bytes_of(in));
}

TEST_F(Disparity, NullPointersAreRefusedAndChangeNothing) {
  const auto in = counting_bytes<Record>();
  de_update_disp_calc_params(&in);
  double* nowhere = nullptr;
  for (const std::int32_t code : {de_update_disp_calc_params(nullptr),
                                  de_copy_disp_calc_params(nullptr),
                                  get_depth_engine_win_size(nullptr),
                                  get_min_disp(nullptr),
                                  set_grow_match_params(nullptr),
                                  get_grow_match_params(nullptr),
                                  set_shadow_check_params(nullptr),
                                  get_shadow_check_params(nullptr),
                                  set_arm_short_params(nullptr),
                                  get_arm_short_params(nullptr),
                                  set_tile_width_overlap(nullptr),
                                  get_tile_width_overlap(nullptr),
                                  set_seed_params(nullptr),
                                  get_seed_params(nullptr),
                                  get_lrc_params(nullptr),
                                  set_smoothfilter_params(nullptr),
                                  get_smoothfilter_params(nullptr),
                                  set_subpixel_coef(nullptr),
                                  get_subpixel_coef(nullptr),
                                  get_subpixel_coef(&nowhere)}) {
    EXPECT_EQ(code, -2);
  }
  EXPECT_EQ(bytes_of(record()), bytes_of(in));
}

// --- setters and getters ---

TEST_F(Disparity, WindowSizeIsStoredUnchecked) {
  for (const std::uint32_t size : {9U, 0U, 0xFFFFFFFFU}) {
    std::uint32_t out = 1;
    EXPECT_EQ(outcome_of([&] { return set_depth_engine_win_size(size); }), silent_success());
    EXPECT_EQ(record().win_size, size);
    EXPECT_EQ(get_depth_engine_win_size(&out), 0);
    EXPECT_EQ(out, size);
  }
}

TEST_F(Disparity, MinimumDisparityIsSignExtendedAndAnsweredAsAByte) {
  for (const auto& [value, byte] : {std::pair{-8, 0xF8}, {-128, 0x80}, {127, 0x7F}, {0, 0}}) {
    std::uint8_t out = 1;
    EXPECT_EQ(outcome_of([v = value] { return set_min_disp(static_cast<std::int8_t>(v)); }), silent_success());
    EXPECT_EQ(record().min_disparity, value);
    EXPECT_EQ(get_min_disp(&out), 0);
    EXPECT_EQ(out, byte);
  }
  change_record([](Record& params) { params.min_disparity = 0x12345678; });
  std::uint8_t out = 1;
  EXPECT_EQ(get_min_disp(&out), 0);
  EXPECT_EQ(out, 0x78);
}

constexpr unsigned char kBefore = 0x3C;

// Sets a group whose bytes all differ into a record filled with one byte. The group's bytes appear at their place in
// the record, every other byte stays; the getter answers the fields and leaves its caller's padding.
template <typename Group, typename Set>
void expect_group(std::size_t offset, std::vector<std::size_t> padding, Set set, std::int32_t (*get)(Group*)) {
  const auto filled = filled_with<Record>(kBefore);
  de_update_disp_calc_params(&filled);
  const auto in = counting_bytes<Group>();
  std::vector<unsigned char> group = bytes_of(in);
  for (const std::size_t at : padding)
    group[at] = kBefore;
  std::vector<unsigned char> expected(sizeof(Record), kBefore);
  std::copy(group.begin(), group.end(), expected.begin() + static_cast<std::ptrdiff_t>(offset));

  EXPECT_EQ(outcome_of([&] { return set(in); }), silent_success());
  EXPECT_EQ(bytes_of(record()), expected);
  auto out = filled_with<Group>(kBefore);
  EXPECT_EQ(outcome_of([&] { return get(&out); }), silent_success());
  EXPECT_EQ(bytes_of(out), group);
}

TEST_F(Disparity, GrowMatchGroupIsStoredAndAnswered) {
  expect_group(
      8, {}, [](const DeGrowMatchParams_S& in) { return set_grow_match_params(&in); }, get_grow_match_params);
}

TEST_F(Disparity, ShadowCheckGroupIsStoredAndAnsweredWithoutItsPadding) {
  expect_group(
      32,
      {2, 3},
      [](const DeShadowCheckParams_S& in) { return set_shadow_check_params(&in); },
      get_shadow_check_params);
}

TEST_F(Disparity, ArmShortGroupIsStoredAndAnswered) {
  expect_group(
      64, {}, [](const DeArmShortParams_S& in) { return set_arm_short_params(&in); }, get_arm_short_params);
}

TEST_F(Disparity, TileGroupIsStoredAndAnswered) {
  expect_group(
      76, {}, [](const DeTileParams_S& in) { return set_tile_width_overlap(&in); }, get_tile_width_overlap);
}

TEST_F(Disparity, LrcPairIsTakenByValueAndAnswered) {
  expect_group(
      92, {}, [](const DeLrcParams_S& in) { return set_lrc_params(in); }, get_lrc_params);
}

TEST_F(Disparity, SeedGroupIsStoredAndAnswered) {
  expect_group(
      100, {}, [](const DeSeedParams_S& in) { return set_seed_params(&in); }, get_seed_params);
}

TEST_F(Disparity, SmoothFilterFlagFollowsTheEnableNotTheCaller) {
  struct Row {
    DeSmoothFilterParams_S in;
    int flag;
  };
  for (const Row& row : {Row{{1, 5, 0}, 1}, Row{{0, 5, 1}, 0}, Row{{255, 200, 77}, 1}}) {
    const auto filled = filled_with<Record>(kBefore);
    de_update_disp_calc_params(&filled);
    EXPECT_EQ(outcome_of([&] { return set_smoothfilter_params(&row.in); }), silent_success());
    std::vector<unsigned char> expected(sizeof(Record), kBefore);
    expected[112] = row.in.smooth_enable;
    expected[113] = row.in.smooth_win_size;
    expected[114] = static_cast<unsigned char>(row.flag);
    EXPECT_EQ(bytes_of(record()), expected);
    DeSmoothFilterParams_S out{9, 9, 9};
    EXPECT_EQ(get_smoothfilter_params(&out), 0);
    EXPECT_EQ(bytes_of(out), std::vector<unsigned char>(expected.begin() + 112, expected.begin() + 115));
  }
}

TEST_F(Disparity, SmoothFilterGetterAnswersARestoredFlagAsItIs) {
  change_record([](Record& params) { params.smooth_enable_flag = 0x7F; });
  DeSmoothFilterParams_S out{};
  EXPECT_EQ(get_smoothfilter_params(&out), 0);
  EXPECT_EQ(out.smooth_enable_flag, 0x7F);
}

TEST_F(Disparity, CoefficientsAreAnsweredThroughAPointerToAPointer) {
  const double in[]{0.5, -0.25, static_cast<double>(kInfinity), 1e300};
  EXPECT_EQ(outcome_of([&] { return set_subpixel_coef(in); }), silent_success());
  double out[5]{9, 9, 9, 9, 9};
  double* at = out;
  EXPECT_EQ(outcome_of([&] { return get_subpixel_coef(&at); }), silent_success());
  EXPECT_EQ(at, out);
  for (std::size_t i = 0; i < 4; ++i) {
    EXPECT_EQ(out[i], in[i]);
    EXPECT_EQ(record().sp_coef[i], in[i]);
  }
  EXPECT_EQ(out[4], 9);
}

TEST_F(Disparity, SettersTouchNoRegister) {
  const RegisterTables before = engine().registers;
  const auto shadow = counting_bytes<DeShadowCheckParams_S>();
  const DeSmoothFilterParams_S smooth{1, 5, 1};
  set_depth_engine_win_size(9);
  set_min_disp(-8);
  set_shadow_check_params(&shadow);
  set_smoothfilter_params(&smooth);
  EXPECT_EQ(differences_from(before), "");
}

// --- fields ---

constexpr FieldRow<Record> kFields[] = {
    field_row<&Record::tile_overlap_x_fast>("tile_overlap_x_fast", 0x500012C0, 15, 15),
    field_row<&Record::tile_overlap_x>("tile_overlap_x", 0x500012C0, 14, 12),
    field_row<&Record::tile_width>("tile_width", 0x500012C0, 11, 0),
    field_row<&Record::max_seed_try_num>("max_seed_try_num", 0x500012C4, 31, 20),
    field_row<&Record::max_seed_valid_try_num>("max_seed_valid_try_num", 0x500012C4, 19, 8),
    field_row<&Record::max_see_num>("max_see_num", 0x500012C4, 7, 0),
    field_row<&Record::lrc_en>("lrc_en", 0x500012C8, 31, 31),
    field_row<&Record::lrc_thresh>("lrc_thresh", 0x500012C8, 29, 28),
    field_row<&Record::grow_disp_diff_thr>("grow_disp_diff_thr", 0x500012C8, 25, 24),
    field_row<&Record::conf_grow_t>("conf_grow_t", 0x500012C8, 23, 16),
    field_row<&Record::conf_region_t>("conf_region_t", 0x500012C8, 15, 8),
    field_row<&Record::conf_strong_t>("conf_strong_t", 0x500012C8, 7, 0),
    field_row<&Record::arm_len>("arm_len", 0x500012CC, 27, 24),
    field_row<&Record::cost_weak_t>("cost_weak_t", 0x500012CC, 23, 12),
    field_row<&Record::cost_strong_t>("cost_strong_t", 0x500012CC, 11, 0),
    field_row<&Record::tile_overlap_y_traverse>("tile_overlap_y_traverse", 0x500012D0, 31, 24),
    field_row<&Record::cost_shadow2_t>("cost_shadow2_t", 0x500012D0, 23, 12),
    field_row<&Record::cost_shadow1_t>("cost_shadow1_t", 0x500012D0, 11, 0),
    field_row<&Record::shadow_en>("shadow_en", 0x500012E0, 31, 31),
    field_row<&Record::shadow_ring_base>("shadow_ring_base", 0x500012E0, 30, 30),
    field_row<&Record::shadow_edge_preserving>("shadow_edge_preserving", 0x500012E0, 22, 16),
    field_row<&Record::shadow_diff_per>("shadow_diff_per", 0x500012E0, 11, 8),
    field_row<&Record::shadow_tex_thresh>("shadow_tex_thresh", 0x500012E0, 7, 0),
    field_row<&Record::shadow_win_size>("shadow_win_size", 0x500012E4, 12, 8),
    field_row<&Record::shadow_smooth_size>("shadow_smooth_size", 0x500012E4, 3, 0),
    field_row<&Record::smooth_enable>("smooth_enable", 0x50001008, 16, 16),
    field_row<&Record::smooth_win_size>("smooth_win_size", 0x50001008, 11, 8),
    field_row<&Record::smooth_enable_flag>("smooth_enable_flag", 0x50001028, 10, 10),
};

constexpr FieldRow<Record> kWrittenOnly[] = {
    field_row<&Record::arm_short_en>("arm_short_en", 0x50001034, 31, 31),
    field_row<&Record::arm_short_mask>("arm_short_mask", 0x50001034, 29, 0),
};

constexpr FieldRow<Record> kWindow[] = {field_row<&Record::win_size>("win_size", 0x50001030, 28, 24)};

std::vector<FieldRow<Record>> written_fields() {
  std::vector<FieldRow<Record>> rows(std::begin(kFields), std::end(kFields));
  rows.insert(rows.end(), std::begin(kWrittenOnly), std::end(kWrittenOnly));
  return rows;
}

// What a record of zeros leads to besides the fields above.
constexpr SetBits kSetBits[] = {
    {{0x500010E0, 28, 16}, 0},       // a1
    {{0x500010E0, 12, 0}, 0},        // a0
    {{0x500010E4, 26, 16}, 0},       // a3
    {{0x500010E4, 12, 0}, 0},        // a2
    {{0x500012C0, 31, 16}, 0x4040},  // constants
    {{0x500012C8, 27, 26}, 2},
    {{0x500012CC, 31, 30}, 2},
    {{0x500012CC, 29, 28}, 0},
    {{0x50001030, 28, 24}, 0},  // win_size
    {{0x50001030, 23, 16}, 0},  // min_disparity
    {{0x50001030, 15, 4}, 1},   // (0 - 1)^2
};

TEST_F(Disparity, ConversionKeepsTheBitsItDoesNotOwn) {
  expect_other_bits_survive<Record>(
      written_fields(), kSetBits, engine().disparity, {}, convert_calc_disp_float_to_registers);
}

TEST_F(Disparity, EveryFieldLandsInItsBits) {
  expect_fields_land_in_their_bits<Record>(
      written_fields(), engine().disparity, {}, convert_calc_disp_float_to_registers);
}

TEST_F(Disparity, EveryFieldComesBackFromItsBits) {
  const auto quiet = filled_with<Record>(kBefore);
  expect_fields_come_back<Record>(kFields, engine().disparity, quiet, convert_calc_disp_registers_to_float);
  expect_fields_come_back<Record>(kWindow, engine().disparity, quiet, convert_calc_disp_registers_to_float);
}

TEST_F(Disparity, WordsOfATunedRecordWorkedOutByHand) {
  const DeGrowMatchParams_S grow{0x123, 0x456, 0x21, 0x43, 0x65, 3};
  const DeShadowCheckParams_S shadow{1, 1, 17, 9, 0x87, 5, 0x55, 0x2AB, 0x3CD};
  const DeArmShortParams_S arm{11, 1, 0x00320000};
  const DeTileParams_S tile{0x280, 5, 1, 0x18};
  const DeSeedParams_S seed{0x64, 0x7FF, 0x3FE};
  const DeSmoothFilterParams_S smooth{1, 5, 0};
  const double coefficients[]{0.666015625, -0.166015625, 0.5, -0.25};
  set_grow_match_params(&grow);
  set_shadow_check_params(&shadow);
  set_arm_short_params(&arm);
  set_tile_width_overlap(&tile);
  set_seed_params(&seed);
  set_lrc_params({1, 2});
  set_smoothfilter_params(&smooth);
  set_subpixel_coef(coefficients);
  set_depth_engine_win_size(9);
  set_min_disp(-8);
  fill_all_registers(0);
  EXPECT_EQ(outcome_of(convert_calc_disp_float_to_registers), silent_success());

  constexpr std::uint32_t kExpected[][2] = {{0x500010E0, 0x1F5602AA},
                                            {0x500010E4, 0x07000200},
                                            {0x500012C0, 0x4040D280},
                                            {0x500012C4, 0x7FF3FE64},
                                            {0x500012C8, 0xAB652143},
                                            {0x500012CC, 0x8B456123},
                                            {0x500012D0, 0x183CD2AB},
                                            {0x500012E0, 0xC0550587},
                                            {0x500012E4, 0x00001109},
                                            {0x50001008, 0x00010500},
                                            {0x50001030, 0x09F80400},
                                            {0x50001034, 0x80320000},
                                            {0x50001028, 0x00000400}};
  for (const auto& [address, word] : kExpected)
    EXPECT_EQ(word_at(address), word) << std::hex << address;
}

TEST_F(Disparity, ReadBackTouchesNothingElse) {
  fill_all_registers(0xA5A5A5A5);
  const RegisterTables before = engine().registers;
  const auto in = filled_with<Record>(kBefore);
  de_update_disp_calc_params(&in);
  EXPECT_EQ(outcome_of(convert_calc_disp_registers_to_float), silent_success());
  EXPECT_EQ(differences_from(before), "");
  // Padding and the short-arm rule are not read.
  const std::vector<unsigned char> bytes = bytes_of(record());
  for (const unsigned at : {34U, 35U, 68U, 69U, 70U, 71U, 72U, 73U, 74U, 75U, 115U, 116U, 117U, 118U, 119U})
    EXPECT_EQ(bytes[at], kBefore) << at;
}

TEST_F(Disparity, ShortArmRuleIsNeverReadBack) {
  const DeArmShortParams_S arm{1, 0, 0x2AAAAAAA};
  set_arm_short_params(&arm);
  fill_all_registers(0xFFFFFFFF);
  convert_calc_disp_registers_to_float();
  EXPECT_EQ(record().arm_len, 15U);
  EXPECT_EQ(record().arm_short_en, 0U);
  EXPECT_EQ(record().arm_short_mask, 0x2AAAAAAAU);
}

TEST_F(Disparity, SmoothFlagComesFromTheControlTable) {
  word_at(0x50001008) = 0x00010500;
  word_at(0x50001028) = 0;
  convert_calc_disp_registers_to_float();
  EXPECT_EQ(record().smooth_enable, 1);
  EXPECT_EQ(record().smooth_enable_flag, 0);
  word_at(0x50001008) = 0;
  word_at(0x50001028) = 0x00000400;
  convert_calc_disp_registers_to_float();
  EXPECT_EQ(record().smooth_enable, 0);
  EXPECT_EQ(record().smooth_enable_flag, 1);
}

// --- window and minimum disparity ---

struct WindowCase {
  const char* name;
  std::uint32_t size;
  std::uint32_t word;
};

class DisparityWindow : public EngineTest, public testing::WithParamInterface<WindowCase> {};

TEST_P(DisparityWindow, BringsItsAreaIn32BitArithmetic) {
  fill_all_registers(0);
  set_depth_engine_win_size(GetParam().size);
  EXPECT_EQ(outcome_of(convert_calc_disp_float_to_registers), silent_success());
  EXPECT_EQ(word_at(0x50001030), GetParam().word);
}

INSTANTIATE_TEST_SUITE_P(Disparity, DisparityWindow,
                         testing::Values(WindowCase{"ZeroWrapsToOne", 0, 0x00000010}, WindowCase{"One", 1, 0x01000000},
                                         WindowCase{"Nine", 9, 0x09000400}, WindowCase{"Widest", 31, 0x1F003840},
                                         WindowCase{"SizeIsCutAreaIsNot", 32, 0x00003C10},
                                         WindowCase{"AreaIsCut", 66, 0x02000810},
                                         WindowCase{"AreaWraps", 0x10001, 0x01000000},
                                         WindowCase{"LargestWraps", 0xFFFFFFFF, 0x1F000040}),
                         [](const auto& test) { return test.param.name; });

TEST_F(Disparity, EveryWindowSizeHasItsArea) {
  for (std::uint32_t size = 1; size < 32; ++size) {
    word_at(0x50001030) = 0xFFFFFFFF;
    set_depth_engine_win_size(size);
    convert_calc_disp_float_to_registers();
    EXPECT_EQ(word_at(0x50001030), 0xE000000F | size << 24 | (size - 1) * (size - 1) << 4);
  }
}

TEST_F(Disparity, MinimumDisparityRoundTripsOverItsWholeRange) {
  for (int value = -128; value <= 127; ++value) {
    word_at(0x50001030) = 0xA5A5A5A5;
    set_min_disp(static_cast<std::int8_t>(value));
    convert_calc_disp_float_to_registers();
    EXPECT_EQ(de_get_reg_field(word_at(0x50001030), 0x00FF0000), static_cast<std::uint32_t>(value) & 0xFF);
    set_min_disp(0);
    convert_calc_disp_registers_to_float();
    EXPECT_EQ(record().min_disparity, value);
  }
}

TEST_F(Disparity, MinimumDisparityOfARestoredRecordIsNotCheckedForItsSign) {
  for (const auto& [value, word] : {std::pair{128, 0x00800010U}, {255, 0x00FF0010U}, {-256, 0x00000010U}}) {
    fill_all_registers(0);
    change_record([v = value](Record& params) { params.min_disparity = v; });
    EXPECT_EQ(outcome_of(convert_calc_disp_float_to_registers), silent_success());
    EXPECT_EQ(word_at(0x50001030), word);
  }
}

TEST_F(Disparity, MinimumDisparityOutOfRangeLeavesAllOnes) {
  for (const std::int32_t value :
       {256, -257, std::numeric_limits<std::int32_t>::max(), std::numeric_limits<std::int32_t>::min()}) {
    fill_all_registers(0);
    change_record([value](Record& params) { params.min_disparity = value; });
    EXPECT_EQ(outcome_of(convert_calc_disp_float_to_registers), prints_out(0, overflow_lines(value, 8, 0, "min_disp")));
    EXPECT_EQ(word_at(0x50001030), 0x00FF0010U);
  }
}

// --- coefficients ---

struct CoefficientRow {
  const char* name;
  std::size_t index;
  Bits bits;
};

constexpr CoefficientRow kCoefficients[] = {{"subpixel_coef_a1", 1, {0x500010E0, 28, 16}},
                                            {"subpixel_coef_a0", 0, {0x500010E0, 12, 0}},
                                            {"subpixel_coef_a3", 3, {0x500010E4, 26, 16}},
                                            {"subpixel_coef_a2", 2, {0x500010E4, 12, 0}}};

class DisparityCoefficient : public EngineTest, public testing::WithParamInterface<CoefficientRow> {
 protected:
  static unsigned width() { return GetParam().bits.high - GetParam().bits.low + 1; }
};

// Sets one coefficient, the others 0, and expects its field on every background.
void expect_coefficient(const CoefficientRow& row, double value, std::uint32_t field, const std::string& printed) {
  for (const std::uint32_t background : kBackgrounds) {
    fill_all_registers(background);
    engine().disparity = {};
    convert_calc_disp_float_to_registers();
    RegisterTables expected = engine().registers;
    std::uint32_t& word = word_at(expected, row.bits.address);
    word = row.bits.replaced(word, field);
    fill_all_registers(background);
    engine().disparity.sp_coef[row.index] = value;
    EXPECT_EQ(outcome_of(convert_calc_disp_float_to_registers), prints_out(0, printed)) << value;
    EXPECT_EQ(differences_from(expected), "") << value;
  }
}

TEST_P(DisparityCoefficient, HasTenFractionBits) {
  const std::uint32_t limit = GetParam().bits.limit();
  const double range = limit + 1.0;
  expect_coefficient(GetParam(), 1.0, 0x400, "");
  expect_coefficient(GetParam(), 0.5 / 1024, 1, "");
  expect_coefficient(GetParam(), 0.4999 / 1024, 0, "");
  expect_coefficient(GetParam(), -0.4999 / 1024, 0, "");
  expect_coefficient(GetParam(), -0.5 / 1024, limit, "");
  expect_coefficient(GetParam(), -0.25, limit + 1 - 0x100, "");
  expect_coefficient(GetParam(), limit / 1024.0, limit, "");  // no check of the sign
  expect_coefficient(GetParam(), -range / 1024, 0, "");
}

TEST_P(DisparityCoefficient, OutOfRangeLeavesAllOnes) {
  const std::uint32_t limit = GetParam().bits.limit();
  for (const double value : {(limit + 1.0) / 1024, (limit + 0.5) / 1024, -(limit + 2.0) / 1024}) {
    expect_coefficient(GetParam(), value, limit, overflow_lines(value, width(), 10, GetParam().name));
  }
}

TEST_P(DisparityCoefficient, EveryRawFieldComesBackAndForth) {
  for (std::uint32_t raw = 0; raw <= GetParam().bits.limit(); ++raw) {
    std::uint32_t& word = word_at(GetParam().bits.address);
    word = GetParam().bits.replaced(0xA5A5A5A5, raw);
    const std::uint32_t before = word;
    ASSERT_EQ(convert_calc_disp_registers_to_float(), 0);
    ASSERT_EQ(record().sp_coef[GetParam().index], signed_number(raw, width(), 10));
    word = GetParam().bits.replaced(word, ~raw);
    ASSERT_EQ(convert_calc_disp_float_to_registers(), 0);
    ASSERT_EQ(word, before);
  }
}

INSTANTIATE_TEST_SUITE_P(Disparity, DisparityCoefficient, testing::ValuesIn(kCoefficients),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_F(Disparity, LastCoefficientOfOneFitsAndTwoDoesNot) {
  const double one[]{0, 0, 0, 1.0};
  set_subpixel_coef(one);
  EXPECT_EQ(outcome_of(convert_calc_disp_float_to_registers), silent_success());
  EXPECT_EQ(word_at(0x500010E4), 0x04000000U);
  convert_calc_disp_registers_to_float();
  EXPECT_EQ(record().sp_coef[3], -1.0);  // the top bit of its 11 is the sign
  const double two[]{0, 0, 0, 2.0};
  set_subpixel_coef(two);
  EXPECT_EQ(outcome_of(convert_calc_disp_float_to_registers),
            prints_out(0,
                       "current lut value: 2.00000000000000000000; dingdianhua value: 2048.00000000000000000000; m_fp: "
                       "2048; return value: 0; max value: 2047 \n"
                       "error code 01: value overflow in subpixel_coef_a3 \n"));
  EXPECT_EQ(word_at(0x500010E4), 0x07FF0000U);
}

TEST_F(Disparity, OverflowsAreReportedInTheOrderOfTheRegisters) {
  const double huge[]{100, 101, 102, 103};
  set_subpixel_coef(huge);
  change_record([](Record& params) { params.min_disparity = 1000; });
  std::string expected = overflow_lines(101, 13, 10, "subpixel_coef_a1") +
                         overflow_lines(100, 13, 10, "subpixel_coef_a0") +
                         overflow_lines(103, 11, 10, "subpixel_coef_a3") +
                         overflow_lines(102, 13, 10, "subpixel_coef_a2") + overflow_lines(1000, 8, 0, "min_disp");
  EXPECT_EQ(outcome_of(convert_calc_disp_float_to_registers), prints_out(0, std::move(expected)));
}

TEST_F(Disparity, CoefficientsThatAreNoNumbersLeaveAllOnes) {
  const double infinity = static_cast<double>(kInfinity);
  const double odd[]{static_cast<double>(kNan), infinity, -infinity, 0};
  set_subpixel_coef(odd);
  fill_all_registers(0);
  const Outcome outcome = outcome_of(convert_calc_disp_float_to_registers);
  EXPECT_EQ(outcome.code, 0);
  EXPECT_EQ(std::count(outcome.out.begin(), outcome.out.end(), '\n'), 6);
  EXPECT_EQ(word_at(0x500010E0), 0x1FFF1FFFU);
  EXPECT_EQ(word_at(0x500010E4), 0x00001FFFU);
}

}  // namespace
}  // namespace vq3900::test
