#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "sim_device.h"
#include "support/capture.h"
#include "support/engine_fixture.h"
#include "support/fields.h"
#include "support/registers.h"

namespace vq3900::test {
namespace {

using Gpm = EngineTest;
using Record = DeGpmParams_S;
using Rows = std::array<std::uint16_t, 16>;
using Points = std::array<std::int32_t, 16>;

constexpr unsigned char kBefore = 0x3C;
constexpr std::uint32_t kColumnsLow = 0x5000136C;
constexpr std::uint32_t kColumnsHigh = 0x50001370;

Record record() {
  Record out;
  EXPECT_EQ(get_gpm_params(&out), 0);
  return out;
}

// The record as bytes, expected to be kBefore but for what the test sets.
std::vector<unsigned char> untouched() {
  const auto filled = filled_with<Record>(kBefore);
  EXPECT_EQ(de_update_gpm_params(&filled), 0);
  return bytes_of(filled);
}

template <typename Value>
void put_at(std::vector<unsigned char>& bytes, std::size_t offset, const Value& value) {
  std::memcpy(&bytes[offset], &value, sizeof value);
}

// The columns in use as bits.
unsigned columns() {
  const Record params = record();
  unsigned bits = 0;
  for (unsigned k = 0; k < 16; ++k) {
    EXPECT_LE(params.gp_col_enabled[k], 1);
    bits |= unsigned{params.gp_col_enabled[k]} << k;
  }
  return bits;
}

std::int32_t enable_columns(unsigned bits, std::uint8_t count) {
  Rows rows{};
  rows[3] = static_cast<std::uint16_t>(bits & 0x0F0F);
  rows[15] = static_cast<std::uint16_t>(bits & 0xF0F0);
  return set_gpm_enable_columns(rows.data(), count);
}

// --- record and setters ---

TEST_F(Gpm, RecordIsZeroAtLoad) {
  EXPECT_EQ(bytes_of(record()), std::vector<unsigned char>(216));
}

TEST_F(Gpm, WholeRecordTravelsWithItsPaddingUnderBothNames) {
  const auto in = counting_bytes<Record>();
  EXPECT_EQ(outcome_of([&] { return de_update_gpm_params(&in); }), silent_success());
  for (const auto get : {get_gpm_params, de_copy_gpm_params}) {
    auto out = filled_with<Record>(0xEE);
    EXPECT_EQ(outcome_of([&] { return get(&out); }), silent_success());
    EXPECT_EQ(bytes_of(out), bytes_of(in));
  }
}

TEST_F(Gpm, NullPointersAreRefusedAndChangeNothing) {
  const std::vector<unsigned char> before = untouched();
  const Points some{1, 2, 3};
  for (const std::int32_t code : {de_update_gpm_params(nullptr),
                                  get_gpm_params(nullptr),
                                  de_copy_gpm_params(nullptr),
                                  set_x_y_coordinates(nullptr, some.data()),
                                  set_x_y_coordinates(some.data(), nullptr),
                                  set_gpm_enable_columns(nullptr, 5),
                                  set_gpm_config(nullptr, 1),
                                  get_global_points_status(nullptr),
                                  de_copy_gp_status_params(nullptr)}) {
    EXPECT_EQ(code, -2);
  }
  EXPECT_EQ(bytes_of(record()), before);
}

TEST_F(Gpm, EnableKeepsTheLowByteInBothCopies) {
  for (const auto& [enable, byte] : {std::pair{1U, 1}, {0U, 0}, {0x100U, 0}, {0xFFFFFF80U, 0x80}}) {
    std::vector<unsigned char> expected = untouched();
    EXPECT_EQ(outcome_of([e = enable] { return set_gpm_enable(e); }), silent_success());
    expected[0] = expected[1] = static_cast<unsigned char>(byte);
    EXPECT_EQ(bytes_of(record()), expected);
  }
}

TEST_F(Gpm, EnableReachesTheRectifierByCameraMode) {
  struct Row {
    std::uint32_t cam_mode, enable;
    int common;
  };
  for (const Row& row : {Row{0, 1, 0}, Row{1, 1, 1}, Row{1, 0, 0}, Row{1, 0x102, 2}, Row{2, 1, 7}}) {
    engine().rectify.rectify_common = 7;
    engine().basic.cam_mode = row.cam_mode;
    EXPECT_EQ(set_gpm_enable(row.enable), 0);
    EXPECT_EQ(engine().rectify.rectify_common, row.common) << row.cam_mode << " " << row.enable;
  }
}

TEST_F(Gpm, CoordinatesAreStoredWhole) {
  std::vector<unsigned char> expected = untouched();
  Points x{};
  Points y{};
  for (int i = 0; i < 16; ++i) {
    x[static_cast<std::size_t>(i)] = -1000 * i - 1;
    y[static_cast<std::size_t>(i)] = 0x01010101 * i;
  }
  EXPECT_EQ(outcome_of([&] { return set_x_y_coordinates(x.data(), y.data()); }), silent_success());
  put_at(expected, 4, x);
  put_at(expected, 68, y);
  EXPECT_EQ(bytes_of(record()), expected);
}

TEST_F(Gpm, ColumnsAreThoseThatAnyRowEnables) {
  std::vector<unsigned char> expected = untouched();
  Rows rows{};
  rows[0] = 0x0001;
  rows[7] = 0x8004;
  rows[15] = 0x0005;
  EXPECT_EQ(outcome_of([&] { return set_gpm_enable_columns(rows.data(), 200); }), silent_success());
  put_at(expected, 132, rows);
  expected[164] = 200;  // as given, not the number of flags
  put_at(expected, 165, std::array<unsigned char, 16>{1, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1});
  EXPECT_EQ(bytes_of(record()), expected);
  // The flags of the last call are cleared.
  EXPECT_EQ(enable_columns(0x0002, 1), 0);
  EXPECT_EQ(columns(), 0x0002U);
}

TEST_F(Gpm, ConfigStoresItsFieldsAndTheFlag) {
  std::vector<unsigned char> expected = untouched();
  const DeGpmConfig_S config{0x11111111, 0x22222222, 0x33333333, 0x44444444, 0x55555555, -64, 64};
  EXPECT_EQ(outcome_of([&] { return set_gpm_config(&config, 0xFE); }), silent_success());
  put_at(expected, 184, config);
  expected[212] = 0xFE;
  EXPECT_EQ(bytes_of(record()), expected);
}

TEST_F(Gpm, SettersTouchNoRegister) {
  const RegisterTables before = engine().registers;
  const Points some{1, 2, 3};
  const DeGpmConfig_S config{1, 2, 3, 4, 5, -6, 6};
  set_camera_mode(1, 0);
  set_gpm_enable(1);
  set_x_y_coordinates(some.data(), some.data());
  enable_columns(0xFFFF, 16);
  set_gpm_config(&config, 1);
  EXPECT_EQ(differences_from(before), "");
}

// --- fields ---

// Pairs of array elements: the odd one in the high bits, the even one in the low bits of consecutive registers.
template <auto Member, std::size_t... Pair>
void add_pairs(std::vector<FieldRow<Record>>& rows, const char* name, std::uint32_t address, unsigned width,
               unsigned high_at, std::index_sequence<Pair...>) {
  (rows.push_back(field_row<Member, 2 * Pair + 1>(name, address + 4 * Pair, high_at + width - 1, high_at)), ...);
  (rows.push_back(field_row<Member, 2 * Pair>(name, address + 4 * Pair, width - 1, 0)), ...);
}

std::vector<FieldRow<Record>> fields() {
  std::vector<FieldRow<Record>> rows{
      field_row<&Record::enable>("enable", 0x50001360, 31, 31),
      field_row<&Record::gp_enabled_cols>("gp_enabled_cols", 0x50001360, 28, 24),
      field_row<&Record::texture_t1>("texture_t1", 0x50001360, 22, 12),
      field_row<&Record::texture_t0>("texture_t0", 0x50001360, 10, 0),
      field_row<&Record::gp_ref_dy_t_neg>("gp_ref_dy_t_neg", 0x50001368, 23, 12),
      field_row<&Record::gp_ref_dy_t>("gp_ref_dy_t", 0x50001368, 11, 0),
      field_row<&Record::active_t>("active_t", 0x50001364, 20, 12),
      field_row<&Record::ncost_t>("ncost_t", 0x50001364, 9, 0),
      field_row<&Record::hist_dy_dist>("hist_dy_dist", 0x50001374, 4, 0),
      field_row<&Record::gpm_config_flag>("gpm_config_flag", 0x50001374, 8, 8),
  };
  constexpr auto kEight = std::make_index_sequence<8>();
  add_pairs<&Record::x_coordinate>(rows, "x_coordinate", 0x50001300, 12, 12, kEight);
  add_pairs<&Record::y_coordinate>(rows, "y_coordinate", 0x50001320, 12, 12, kEight);
  add_pairs<&Record::enable_bits_per_row>(rows, "enable_bits_per_row", 0x50001340, 16, 16, kEight);
  return rows;
}

constexpr SetBits kNoColumns[] = {{{kColumnsLow, 31, 0}, 0}, {{kColumnsHigh, 31, 0}, 0}};

TEST_F(Gpm, ConversionKeepsTheBitsItDoesNotOwn) {
  expect_other_bits_survive<Record>(fields(), kNoColumns, engine().gpm.params, {}, convert_gpm_float_to_registers);
}

TEST_F(Gpm, EveryFieldLandsInItsBits) {
  expect_fields_land_in_their_bits<Record>(fields(), engine().gpm.params, {}, convert_gpm_float_to_registers);
}

TEST_F(Gpm, EveryFieldComesBackUnsignedFromItsBits) {
  expect_fields_come_back<Record>(
      fields(), engine().gpm.params, filled_with<Record>(kBefore), convert_gpm_registers_to_float);
}

TEST_F(Gpm, WordsWorkedOutByHand) {
  fill_all_registers(0);
  Points x{};
  Points y{};
  Rows rows{};
  x[0] = 0x123, x[1] = 0x456, x[14] = -1, x[15] = 0x1789;
  y[2] = -2048, y[3] = 7;
  rows[0] = 0x0011, rows[1] = 0x8000, rows[14] = 0x0002;
  const DeGpmConfig_S config{0x7A1, 0x5B2, 0x1C3, 0x2D4, 3, -64, 64};
  set_gpm_enable(1);
  set_x_y_coordinates(x.data(), y.data());
  set_gpm_enable_columns(rows.data(), 4);
  set_gpm_config(&config, 1);
  EXPECT_EQ(outcome_of(convert_gpm_float_to_registers), silent_success());
  constexpr std::uint32_t kExpected[][2] = {{0x50001300, 0x00456123},
                                            {0x50001304, 0},
                                            {0x5000131C, 0x00789FFF},
                                            {0x50001320, 0},
                                            {0x50001324, 0x00007800},
                                            {0x50001340, 0x80000011},
                                            {0x5000135C, 0x00000002},
                                            {0x50001360, 0x845B27A1},
                                            {0x50001364, 0x001C32D4},
                                            {0x50001368, 0x00FC0040},
                                            {kColumnsLow, 0x0000F410},
                                            {kColumnsHigh, 0},
                                            {0x50001374, 0x00000103}};
  for (const auto& [address, word] : kExpected)
    EXPECT_EQ(word_at(address), word) << std::hex << address;
}

TEST_F(Gpm, NegativeCoordinateComesBackAsItsPattern) {
  const Points x{-1};
  const Points y{-2048};
  set_x_y_coordinates(x.data(), y.data());
  convert_gpm_float_to_registers();
  EXPECT_EQ(word_at(0x50001300), 0x00000FFFU);
  convert_gpm_registers_to_float();
  EXPECT_EQ(record().x_coordinate[0], 4095);
  EXPECT_EQ(record().y_coordinate[0], 2048);
}

TEST_F(Gpm, StartUpTableReadsAsItsSettings) {
  EXPECT_EQ(outcome_of(convert_gpm_registers_to_float), silent_success());
  Record expected{};
  for (std::uint16_t& row : expected.enable_bits_per_row)
    row = 0xFFFF;
  expected.hist_dy_dist = 3;
  expected.gp_ref_dy_t_neg = 0xFC0;
  expected.gp_ref_dy_t = 0x40;
  EXPECT_EQ(bytes_of(record()), bytes_of(expected));
}

TEST_F(Gpm, ReadBackLeavesMirrorPaddingAndRegisters) {
  untouched();
  fill_all_registers(0xA5A5A5A5);
  const RegisterTables before = engine().registers;
  EXPECT_EQ(outcome_of(convert_gpm_registers_to_float), silent_success());
  EXPECT_EQ(differences_from(before), "");
  EXPECT_EQ(record().enable, 1);
  const std::vector<unsigned char> bytes = bytes_of(record());
  for (const unsigned at : {1U, 2U, 3U, 181U, 182U, 183U, 213U, 214U, 215U})
    EXPECT_EQ(bytes[at], kBefore) << at;
}

// --- column list ---

TEST_F(Gpm, TwoColumnsMakeTheListOfTwoNibbles) {
  EXPECT_EQ(enable_columns(0x0005, 2), 0);
  convert_gpm_float_to_registers();
  EXPECT_EQ(word_at(kColumnsLow), 0x00000020U);
  EXPECT_EQ(word_at(kColumnsHigh), 0U);
  convert_gpm_registers_to_float();
  EXPECT_EQ(columns(), 0x0005U);
}

struct ListCase {
  const char* name;
  unsigned columns;
  std::uint32_t low, high;
};

class GpmColumnList : public EngineTest, public testing::WithParamInterface<ListCase> {};

TEST_P(GpmColumnList, IsPackedAscendingWhateverTheCountSays) {
  for (const std::uint8_t count : {std::uint8_t{0}, std::uint8_t{3}, std::uint8_t{255}}) {
    fill_all_registers(0xA5A5A5A5);
    EXPECT_EQ(enable_columns(GetParam().columns, count), 0);
    EXPECT_EQ(convert_gpm_float_to_registers(), 0);
    EXPECT_EQ(word_at(kColumnsLow), GetParam().low);
    EXPECT_EQ(word_at(kColumnsHigh), GetParam().high);
  }
}

INSTANTIATE_TEST_SUITE_P(Gpm, GpmColumnList,
                         testing::Values(ListCase{"None", 0, 0, 0}, ListCase{"FirstLooksLikeNone", 0x0001, 0, 0},
                                         ListCase{"LastAlone", 0x8000, 0xF, 0},
                                         ListCase{"LowerHalf", 0x00FF, 0x76543210, 0},
                                         ListCase{"UpperHalfComesFirst", 0xFF00, 0xFEDCBA98, 0},
                                         ListCase{"NineSpillOver", 0x83FE, 0x87654321, 0xF9},
                                         ListCase{"All", 0xFFFF, 0x76543210, 0xFEDCBA98}),
                         [](const auto& test) { return test.param.name; });

TEST_F(Gpm, EveryColumnPatternComesBackWithItsCount) {
  for (unsigned bits = 0; bits < 0x10000; bits += 13) {
    const auto count = static_cast<std::uint8_t>(std::popcount(bits));
    enable_columns(bits, count);
    convert_gpm_float_to_registers();
    enable_columns(~bits & 0xFFFF, 0);
    ASSERT_EQ(convert_gpm_registers_to_float(), 0);
    ASSERT_EQ(columns(), bits);
    ASSERT_EQ(record().gp_enabled_cols, count);
  }
}

TEST_F(Gpm, OnlyFlagsOfOneAreListed) {
  Record params{};
  params.gp_col_enabled[1] = 2;
  params.gp_col_enabled[2] = 255;
  params.gp_col_enabled[3] = 1;
  de_update_gpm_params(&params);
  convert_gpm_float_to_registers();
  EXPECT_EQ(word_at(kColumnsLow), 0x00000003U);
}

struct ReadListCase {
  const char* name;
  std::uint32_t count, low, high;
  unsigned columns;
};

class GpmReadList : public EngineTest, public testing::WithParamInterface<ReadListCase> {};

TEST_P(GpmReadList, FlagsTheFirstEntries) {
  untouched();
  const ReadListCase& c = GetParam();
  word_at(0x50001360) = c.count << 24;
  word_at(kColumnsLow) = c.low;
  word_at(kColumnsHigh) = c.high;
  EXPECT_EQ(outcome_of(convert_gpm_registers_to_float), silent_success());
  EXPECT_EQ(record().gp_enabled_cols, c.count);
  EXPECT_EQ(columns(), c.columns);
}

INSTANTIATE_TEST_SUITE_P(Gpm, GpmReadList,
                         testing::Values(ReadListCase{"CountZeroClearsAll", 0, 0x76543210, 0xFEDCBA98, 0},
                                         ReadListCase{"CountTwo", 2, 0x00000020, 0, 0x0005},
                                         ReadListCase{"CountBeyondTheListTakesItsZeros", 5, 0x00000002, 0, 0x0005},
                                         ReadListCase{"EntriesAboveEight", 9, 0x87654321, 0xFFFFFFF9, 0x03FE},
                                         ReadListCase{"RepeatedEntries", 16, 0x77777777, 0x77777777, 0x0080},
                                         ReadListCase{"Sixteen", 16, 0x76543210, 0xFEDCBA98, 0xFFFF},
                                         ReadListCase{"SeventeenStopsAtSixteen", 17, 0x77777777, 0x77777777, 0x0080},
                                         ReadListCase{"LargestStopsAtSixteen", 31, 0x76543210, 0xFEDCBA98, 0xFFFF}),
                         [](const auto& test) { return test.param.name; });

// --- status ---

struct StatusRow {
  const char* name;
  std::size_t offset;  // in the status record
  Bits bits;
  unsigned signed_width;  // 0: unsigned
};

constexpr StatusRow kStatus[] = {
    {"Status0", 0, {0x5000137C, 31, 20}, 12},         {"Status1", 4, {0x5000137C, 16, 8}, 0},
    {"Status2", 8, {0x50001380, 31, 20}, 12},         {"Status3", 12, {0x50001380, 19, 14}, 6},
    {"Status4", 16, {0x50001380, 12, 0}, 6},          {"Triple0Word0", 20, {0x50001384, 28, 20}, 0},
    {"Triple0Word1", 24, {0x50001384, 18, 6}, 6},     {"Triple0Word2", 28, {0x50001384, 4, 0}, 0},
    {"Triple1Word0", 32, {0x50001388, 28, 20}, 0},    {"Triple1Word1", 36, {0x50001388, 18, 6}, 6},
    {"Triple1Word2", 40, {0x50001388, 4, 0}, 0},      {"Triple2Word0", 44, {0x5000138C, 28, 20}, 0},
    {"Triple2Word1", 48, {0x5000138C, 18, 6}, 6},     {"Triple2Word2", 52, {0x5000138C, 4, 0}, 0},
    {"Point0Word0", 56, {0x50001400, 9, 0}, 0},       {"Point0Word1", 60, {0x50001400, 31, 24}, 6},
    {"Point0Word2", 64, {0x50001400, 22, 12}, 0},     {"Point1Word1", 72, {0x50001404, 31, 24}, 6},
    {"Point255Word0", 3116, {0x500017FC, 9, 0}, 0},   {"Point255Word1", 3120, {0x500017FC, 31, 24}, 6},
    {"Point255Word2", 3124, {0x500017FC, 22, 12}, 0},
};

std::int32_t status_at(std::size_t offset) {
  std::vector<unsigned char> bytes(3128, 0xEE);
  EXPECT_EQ(get_global_points_status(bytes.data()), 0);
  std::int32_t value = 0;
  std::memcpy(&value, &bytes[offset], sizeof value);
  return value;
}

// The sign is the top bit of the width; a set one leaves the bits below it, a clear one the whole field.
std::int32_t status_value(std::uint32_t field, unsigned signed_width) {
  const auto value = static_cast<std::int32_t>(field);
  if (signed_width == 0 || ((field >> (signed_width - 1)) & 1U) == 0) return value;
  const std::int32_t half = std::int32_t{1} << (signed_width - 1);
  return value % half - half;
}

class GpmStatus : public EngineTest, public testing::WithParamInterface<StatusRow> {};

TEST_P(GpmStatus, EveryValueIsDecodedFromItsBits) {
  const StatusRow& row = GetParam();
  for (const std::uint32_t background : kBackgrounds) {
    fill_values(engine().registers.gp_status, background);
    for (const std::uint32_t field : field_values(row.bits, true)) {
      word_at(row.bits.address) = row.bits.replaced(background, field);
      ASSERT_EQ(convert_gp_status_registers_to_float(), 0);
      ASSERT_EQ(status_at(row.offset), status_value(field, row.signed_width)) << std::hex << field;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Gpm, GpmStatus, testing::ValuesIn(kStatus),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_F(Gpm, StatusWordsWorkedOutByHand) {
  word_at(0x5000137C) = 0xFFF1FF00;  // -1, 511
  word_at(0x50001380) = 0x80080020;  // -2048, 0x20 and 0x20: the most negative numbers of 6 bits
  word_at(0x50001384) = 0x1FF7FFDF;  // 511, 0x1FFF: sign bit 5 set, 31
  word_at(0x50001388) = 0x0007F7C0;  // 0, 0x1FDF: bit 5 clear, so all 13 bits count
  word_at(0x50001400) = 0xDF7FF3FF;  // 1023, 0xDF: bit 5 clear, 2047
  word_at(0x50001404) = 0xE1000000;  // 0xE1: bit 5 set
  EXPECT_EQ(outcome_of(convert_gp_status_registers_to_float), silent_success());
  constexpr std::pair<std::size_t, std::int32_t> kExpected[] = {
      {0, -1},    {4, 511},  {8, -2048}, {12, -32}, {16, -32}, {20, 511}, {24, -1},
      {28, 31},   {32, 0},   {36, 8159}, {40, 0},   {44, 0},   {48, 0},   {52, 0},
      {56, 1023}, {60, 223}, {64, 2047}, {68, 0},   {72, -31}, {76, 0},   {3124, 0}};
  for (const auto& [offset, value] : kExpected)
    EXPECT_EQ(status_at(offset), value) << "offset " << offset;
}

TEST_F(Gpm, EveryPointHasItsRegister) {
  for (std::uint32_t j = 0; j < 256; ++j)
    word_at(0x50001400 + 4 * j) = j << 12 | (255 - j);
  convert_gp_status_registers_to_float();
  for (std::uint32_t j = 0; j < 256; ++j) {
    EXPECT_EQ(status_at(56 + 12 * j), static_cast<std::int32_t>(255 - j));
    EXPECT_EQ(status_at(64 + 12 * j), static_cast<std::int32_t>(j));
  }
}

TEST_F(Gpm, StatusOfATableNeverCopiedOutIsZero) {
  EXPECT_EQ(outcome_of(convert_gp_status_registers_to_float), silent_success());
  for (std::size_t offset = 0; offset < 3128; offset += 4)
    EXPECT_EQ(status_at(offset), 0);
}

TEST_F(Gpm, ShortStatusCopyIsThreeBytes) {
  word_at(0x5000137C) = 0x80100000;  // -2047: 01 F8 FF FF
  convert_gp_status_registers_to_float();
  unsigned char out[5] = {0xEE, 0xEE, 0xEE, 0xEE, 0xEE};
  EXPECT_EQ(outcome_of([&] { return de_copy_gp_status_params(out); }), silent_success());
  EXPECT_EQ(bytes_of(out), (std::vector<unsigned char>{0x01, 0xF8, 0xFF, 0xEE, 0xEE}));
}

TEST_F(Gpm, StatusIsReadOnly) {
  word_at(0x5000137C) = 0x12300000;
  convert_gp_status_registers_to_float();
  const RegisterTables before = engine().registers;
  for (int call = 0; call < 2; ++call) {
    EXPECT_EQ(outcome_of(de_update_gp_status_params), prints_err(-3, "gp_status_params read only!\n"));
  }
  EXPECT_EQ(differences_from(before), "");
  EXPECT_EQ(status_at(0), 0x123);
}

TEST_F(Gpm, AfterAGetThePointsAreZeroAndTheFirstFiveWordsReflectTheDevice) {
  sim::SimDevice device;
  ASSERT_EQ(device.attach(), 0);
  device.poke(0x5000137C, 0x12300400);
  device.poke(0x50001380, 0x45600007);
  device.poke(0x50001384, 0x00100001);
  device.poke(0x50001388, 0x00200002);
  device.poke(0x5000138C, 0x00300003);
  for (std::uint32_t j = 0; j < 256; ++j)
    device.poke(0x50001400 + 4 * j, 0xFFFFFFFF);
  Record gpm;
  auto status = filled_with<DeGpStatusParams_S>(0xEE);
  EXPECT_EQ(outcome_of([&] { return de_get_gpm_params_from_registers(&gpm, &status); }), silent_success());
  constexpr std::pair<std::size_t, std::int32_t> kExpected[] = {
      {0, 0x123}, {4, 4}, {8, 0x456}, {12, 0}, {16, 7}, {20, 1}, {28, 1}, {32, 2}, {40, 2}, {44, 3}, {52, 3}};
  for (const auto& [offset, value] : kExpected)
    EXPECT_EQ(status_at(offset), value) << "offset " << offset;
  for (std::size_t offset = 56; offset < 3128; offset += 4)
    EXPECT_EQ(status_at(offset), 0) << "offset " << offset;
}

}  // namespace
}  // namespace vq3900::test
