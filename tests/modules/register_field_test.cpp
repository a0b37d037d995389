// Register blocks as rows: how one row is coded in both directions, and that every block's rows lie in its table.
#include "modules/register_field.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cstdint>
#include <string>
#include <type_traits>
#include <vector>

#include "modules/basic.h"
#include "modules/d2c.h"
#include "modules/d2d.h"
#include "modules/disparity.h"
#include "modules/extend_chop.h"
#include "modules/gpm.h"
#include "modules/prefilter.h"
#include "modules/rectify.h"
#include "support/elements.h"

namespace vq3900::test {
namespace {

struct Pair {
  std::int32_t values[2];
};

struct Toy {
  std::uint32_t count = 0;
  std::int32_t offset = 0;
  std::uint8_t flag = 0;
  double ratio = 0;
  float gain = 0;
  Pair pair{};
};

// Out of address order on purpose.
constexpr vq3900::RegisterTable<3> kTable{{{0x100, 0x00FFFFFF, 0}, {0x108, 0xFFFFFFFF, 0}, {0x104, 0x0000FFFF, 0}}};

using Words = std::array<std::uint32_t, 3>;

// The table with these values, on its way through a conversion.
vq3900::RegisterTable<3> table_of(const Words& words) {
  vq3900::RegisterTable<3> table = kTable;
  for (std::size_t i = 0; i < words.size(); ++i)
    table[i].value = words[i];
  return table;
}

Words words_of(const vq3900::RegisterTable<3>& table) {
  return {table[0].value, table[1].value, table[2].value};
}

std::vector<std::string> overflows;

void note_overflow(const FixedOverflow& overflow) {
  overflows.emplace_back(overflow.name);
}

class RegisterRows : public testing::Test {
 protected:
  RegisterRows() { overflows.clear(); }

  template <std::size_t Count>
  static Words encoded(const std::array<Field<Toy>, Count>& rows, const Toy& toy, const Words& before) {
    auto table = table_of(before);
    encode_fields(rows, toy, table, note_overflow);
    return words_of(table);
  }

  template <std::size_t Count>
  static Toy decoded(const std::array<Field<Toy>, Count>& rows, const Words& words, Toy toy = {}) {
    decode_fields(rows, table_of(words), toy);
    return toy;
  }
};

// --- finding elements ------------------------------------------------------------------------------------------------

static_assert(element_at(kTable, 0x100) == 0);
static_assert(element_at(kTable, 0x108) == 1);
static_assert(element_at(kTable, 0x104) == 2);

template <std::uint32_t Address>
concept CanBeNamed = requires {
  typename std::integral_constant<std::uint8_t, element_at(kTable, Address)>;
};

static_assert(CanBeNamed<0x104>);
static_assert(!CanBeNamed<0x10C>, "a register that the table lacks does not compile");
static_assert(!CanBeNamed<0>);

// --- one row in both directions --------------------------------------------------------------------------------------

TEST_F(RegisterRows, IntegerGoesUnderItsMaskAndComesBack) {
  constexpr auto kRows = std::to_array<Field<Toy>>({integer<&Toy::count>("count", 0, 0x0000FF00)});
  Toy toy;
  toy.count = 0x12;
  EXPECT_EQ(encoded(kRows, toy, {0xA5A5A5A5, 1, 2}), (Words{0xA5A512A5, 1, 2}));
  EXPECT_EQ(decoded(kRows, {0xA5A512A5, 1, 2}).count, 0x12U);
}

TEST_F(RegisterRows, IntegerLosesTheBitsAboveItsField) {
  constexpr auto kRows = std::to_array<Field<Toy>>({integer<&Toy::count>("count", 0, 0x0000FF00)});
  Toy toy;
  toy.count = 0xFFFFFF01;
  EXPECT_EQ(encoded(kRows, toy, {}), (Words{0x100, 0, 0}));
}

TEST_F(RegisterRows, IntegerOf32BitsPassesWhole) {
  constexpr auto kRows = std::to_array<Field<Toy>>({integer<&Toy::count>("count", 1, 0xFFFFFFFF)});
  for (const std::uint32_t count : {0U, 1U, 0x7FFFFFFFU, 0x80000001U, 0xFFFFFFFFU}) {
    Toy toy;
    toy.count = count;
    EXPECT_EQ(encoded(kRows, toy, {}), (Words{0, count, 0}));
    EXPECT_EQ(decoded(kRows, {0, count, 0}).count, count);
  }
}

TEST_F(RegisterRows, NegativeIntegerIsWrittenAsItsBitsAndComesBackUnsigned) {
  constexpr auto kRows = std::to_array<Field<Toy>>({integer<&Toy::offset>("offset", 0, 0x00FFF000)});
  Toy toy;
  toy.offset = -1;
  EXPECT_EQ(encoded(kRows, toy, {}), (Words{0x00FFF000, 0, 0}));
  EXPECT_EQ(decoded(kRows, {0x00FFF000, 0, 0}).offset, 4095);
}

TEST_F(RegisterRows, PathReachesIntoNestedMembersAndArrays) {
  constexpr auto kRows = std::to_array<Field<Toy>>({
      integer<&Toy::pair, &Pair::values, 0>("pair[0]", 2, 0x000000FF),
      integer<&Toy::pair, &Pair::values, 1>("pair[1]", 2, 0x0000FF00),
  });
  Toy toy;
  toy.pair = {{0x12, 0x34}};
  EXPECT_EQ(encoded(kRows, toy, {}), (Words{0, 0, 0x3412}));
  EXPECT_EQ(decoded(kRows, {0, 0, 0x3412}).pair.values[0], 0x12);
  EXPECT_EQ(decoded(kRows, {0, 0, 0x3412}).pair.values[1], 0x34);
}

TEST_F(RegisterRows, ByteMemberKeepsTheLowBitsOfAWiderField) {
  constexpr auto kRows = std::to_array<Field<Toy>>({integer<&Toy::flag>("flag", 0, 0x00FFFF00)});
  EXPECT_EQ(decoded(kRows, {0x00123400, 0, 0}).flag, 0x34U);
}

TEST_F(RegisterRows, FixedPointIsTwosComplement) {
  constexpr auto kRows = std::to_array<Field<Toy>>({fixed<&Toy::ratio>("ratio", 0, 0x0000FF00, {8, 4, "r"})});
  Toy toy;
  toy.ratio = -1.5;  // -24 / 16
  EXPECT_EQ(encoded(kRows, toy, {0x5A5A5A5A, 0, 0}), (Words{0x5A5AE85A, 0, 0}));
  EXPECT_EQ(decoded(kRows, {0x0000E800, 0, 0}).ratio, -1.5);
  EXPECT_EQ(decoded(kRows, {0x00001800, 0, 0}).ratio, 1.5);
}

TEST_F(RegisterRows, UnsignedFixedPointComesBackUnsigned) {
  constexpr auto kRows =
      std::to_array<Field<Toy>>({fixed<&Toy::ratio>("ratio", 0, 0x0000FF00, {8, 4, "r"}, Coding::kFixedUnsigned)});
  Toy toy;
  toy.ratio = 14.5;
  EXPECT_EQ(encoded(kRows, toy, {}), (Words{0x0000E800, 0, 0}));
  EXPECT_EQ(decoded(kRows, {0x0000E800, 0, 0}).ratio, 14.5);
}

TEST_F(RegisterRows, FixedPointRoundsToASingleFloatAndTruncatesToAnInteger) {
  constexpr auto kRows = std::to_array<Field<Toy>>({
      fixed<&Toy::gain>("gain", 1, 0xFFFFFFFF, {32, 0, "g"}, Coding::kFixedUnsigned),
      fixed<&Toy::offset>("offset", 0, 0x000000FF, {8, 4, "o"}),
  });
  const Toy toy = decoded(kRows, {0xE8, 0x01000001, 0});
  EXPECT_EQ(toy.gain, 16777216.0F);  // 2^24 + 1 is no float
  EXPECT_EQ(toy.offset, -1);         // -1.5
}

TEST_F(RegisterRows, ConstantIsWrittenWhateverTheRecordAndNeverRead) {
  constexpr auto kRows = std::to_array<Field<Toy>>({constant<Toy, 2>("constant", 0, 0x00C00000)});
  EXPECT_EQ(encoded(kRows, {}, {0x00FFFFFF, 0, 0}), (Words{0x00BFFFFF, 0, 0}));
  EXPECT_FALSE(kRows[0].read_back());
  EXPECT_EQ(decoded(kRows, {0xFFFFFFFF, 0, 0}).count, 0U);
}

TEST_F(RegisterRows, DerivedBitsAreComputedAndNeverRead) {
  constexpr auto kRows = std::to_array<Field<Toy>>(
      {derived<Toy>("count^2", 0, 0x00000FFF, [](const Toy& toy) -> double { return toy.count * toy.count; })});
  Toy toy;
  toy.count = 65;  // 4225: 0x1081, cut to 12 bits
  EXPECT_EQ(encoded(kRows, toy, {}), (Words{0x081, 0, 0}));
  EXPECT_EQ(decoded(kRows, {0x081, 0, 0}, toy).count, 65U);
}

TEST_F(RegisterRows, WriteOnlyRowLeavesTheMemberOnTheWayBack) {
  constexpr auto kRows = std::to_array<Field<Toy>>({write_only(integer<&Toy::count>("count", 0, 0xFF))});
  Toy toy;
  toy.count = 7;
  EXPECT_EQ(encoded(kRows, toy, {}), (Words{7, 0, 0}));
  EXPECT_EQ(decoded(kRows, {9, 0, 0}, toy).count, 7U);
}

TEST_F(RegisterRows, ReadOnlyRowLeavesTheRegister) {
  constexpr auto kRows = std::to_array<Field<Toy>>({read_only(integer<&Toy::count>("count", 0, 0xFF))});
  Toy toy;
  toy.count = 7;
  EXPECT_EQ(encoded(kRows, toy, {9, 0, 0}), (Words{9, 0, 0}));
  EXPECT_EQ(decoded(kRows, {9, 0, 0}, toy).count, 9U);
}

TEST_F(RegisterRows, CrossedRowsWriteOneBitAndReadTheOther) {
  constexpr auto kRows = std::to_array<Field<Toy>>({
      write_only(integer<&Toy::flag>("flag", 0, 0x1)),
      read_only(integer<&Toy::flag>("flag", 0, 0x2)),
  });
  Toy toy;
  toy.flag = 1;
  EXPECT_EQ(encoded(kRows, toy, {}), (Words{1, 0, 0}));
  EXPECT_EQ(decoded(kRows, {1, 0, 0}, toy).flag, 0U);
  EXPECT_EQ(decoded(kRows, {2, 0, 0}, toy).flag, 1U);
}

// --- overflow --------------------------------------------------------------------------------------------------------

constexpr auto kThreeRows = std::to_array<Field<Toy>>({
    integer<&Toy::count>("count", 0, 0x000000FF),
    fixed<&Toy::ratio>("ratio", 0, 0x0000FF00, {8, 0, "the ratio"}),
    integer<&Toy::flag>("flag", 2, 0x000000FF),
});

Toy overflowing() {
  Toy toy;
  toy.count = 0x12;
  toy.ratio = 256;
  toy.flag = 0x34;
  return toy;
}

TEST_F(RegisterRows, OverflowIsWrittenAsAllOnesAndTheRowsBehindItFollow) {
  EXPECT_EQ(encoded(kThreeRows, overflowing(), {0x00A50000, 0, 0}), (Words{0x00A5FF12, 0, 0x34}));
  EXPECT_EQ(overflows, (std::vector<std::string>{"the ratio"}));
}

TEST_F(RegisterRows, EncodingUntilOverflowStopsBeforeTheOverflowingRow) {
  auto table = table_of({0x00A5A5A5, 0, 0xA5});
  EXPECT_FALSE(encode_fields_until_overflow(kThreeRows, overflowing(), table, note_overflow));
  EXPECT_EQ(words_of(table), (Words{0x00A5A512, 0, 0xA5}));
  EXPECT_EQ(overflows, (std::vector<std::string>{"the ratio"}));
}

TEST_F(RegisterRows, EncodingUntilOverflowWritesEverythingThatFits) {
  Toy toy = overflowing();
  toy.ratio = 255;
  auto table = table_of({0x00A5A5A5, 0, 0xA5});
  EXPECT_TRUE(encode_fields_until_overflow(kThreeRows, toy, table, note_overflow));
  EXPECT_EQ(words_of(table), (Words{0x00A5FF12, 0, 0x34}));
  EXPECT_TRUE(overflows.empty());
}

TEST_F(RegisterRows, EncodingUntilOverflowTakesA32BitFieldOfAllOnesForAnOverflow) {
  constexpr auto kRows = std::to_array<Field<Toy>>({fixed<&Toy::ratio>("ratio", 1, 0xFFFFFFFF, {32, 0, "r"})});
  Toy toy;
  toy.ratio = -1;
  auto table = table_of({0, 0xA5, 0});
  EXPECT_FALSE(encode_fields_until_overflow(kRows, toy, table, note_overflow));
  EXPECT_EQ(words_of(table), (Words{0, 0xA5, 0}));
  EXPECT_TRUE(overflows.empty());
}

TEST_F(RegisterRows, IntegerOfAllOnesIsNoOverflow) {
  constexpr auto kRows = std::to_array<Field<Toy>>({integer<&Toy::count>("count", 1, 0xFFFFFFFF)});
  Toy toy;
  toy.count = 0xFFFFFFFF;
  auto table = table_of({});
  EXPECT_TRUE(encode_fields_until_overflow(kRows, toy, table, note_overflow));
  EXPECT_EQ(words_of(table), (Words{0, 0xFFFFFFFF, 0}));
}

TEST_F(RegisterRows, EncodingUntilOverflowSkipsReadOnlyRows) {
  constexpr auto kRows = std::to_array<Field<Toy>>(
      {read_only(fixed<&Toy::ratio>("ratio", 0, 0x0000FF00, {8, 0, "r"})), integer<&Toy::flag>("flag", 2, 0xFF)});
  auto table = table_of({0xA500, 0, 0});
  EXPECT_TRUE(encode_fields_until_overflow(kRows, overflowing(), table, note_overflow));
  EXPECT_EQ(words_of(table), (Words{0xA500, 0, 0x34}));
}

// --- rows that must not compile --------------------------------------------------------------------------------------

template <const auto& Rows>
concept Accepted = requires {
  typename std::enable_if_t<well_formed(Rows, kTable)>;
};

constexpr Field<Toy> row(std::uint8_t element, std::uint32_t mask) {
  return integer<&Toy::count>("count", element, mask);
}

constexpr std::array kAdjacent{row(0, 0xF), row(0, 0xF0), row(2, 0xF0), row(0, 0x00FFFF00)};
constexpr std::array kWholeRegister{row(1, 0xFFFFFFFF)};
constexpr std::array kReadOnlyOutsideTheMask{row(0, 0xF), read_only(row(0, 0xF0000000))};
constexpr std::array kReadOnlyOverWritten{row(0, 0xFF), read_only(row(0, 0x0F))};
constexpr std::array kSameBitsOfOtherRegisters{row(0, 0xFF), row(1, 0xFF), row(2, 0xFF)};
static_assert(Accepted<kAdjacent>);
static_assert(Accepted<kWholeRegister>);
static_assert(Accepted<kReadOnlyOutsideTheMask>);
static_assert(Accepted<kReadOnlyOverWritten>);
static_assert(Accepted<kSameBitsOfOtherRegisters>);

constexpr std::array kNotContiguous{row(0, 0x505)};
constexpr std::array kReadOnlyNotContiguous{read_only(row(0, 0x505))};
constexpr std::array kOutsideTheMask{row(0, 0x01000000)};
constexpr std::array kPartlyOutsideTheMask{row(2, 0x0001FF00)};
constexpr std::array kOverlap{row(0, 0xFF), row(0, 0x180)};
constexpr std::array kOverlapOfWriteOnly{row(0, 0xFF), write_only(row(0, 0x80))};
constexpr std::array kOverlapOfConstant{constant<Toy, 1>("constant", 1, 0x3), row(1, 0x2)};
constexpr std::array kOutsideTheTable{row(3, 0xF)};
constexpr std::array kReadOnlyOutsideTheTable{read_only(row(3, 0xF))};
constexpr std::array kEmptyMask{row(0, 0)};
static_assert(!Accepted<kNotContiguous>);
static_assert(!Accepted<kReadOnlyNotContiguous>);
static_assert(!Accepted<kOutsideTheMask>);
static_assert(!Accepted<kPartlyOutsideTheMask>);
static_assert(!Accepted<kOverlap>);
static_assert(!Accepted<kOverlapOfWriteOnly>);
static_assert(!Accepted<kOverlapOfConstant>);
static_assert(!Accepted<kOutsideTheTable>);
static_assert(!Accepted<kReadOnlyOutsideTheTable>);
static_assert(!Accepted<kEmptyMask>);

// --- the blocks ------------------------------------------------------------------------------------------------------

struct Block {
  const char* name;
  std::vector<FieldBits> rows;
  Elements table;
};

template <typename Record, typename Table>
Block block(const char* name, std::span<const Field<Record>> fields, const Table& table) {
  Block block{name, {}, {table.begin(), table.end()}};
  for (const Field<Record>& field : fields) {
    block.rows.push_back(field);
    EXPECT_TRUE(!field.written() || field.load != nullptr) << field.name;
    EXPECT_TRUE(!field.read_back() || field.store != nullptr) << field.name;
  }
  return block;
}

std::vector<Block> control_blocks() {
  return {block("basic", basic_fields(), startup::kBasicCtrl),
          block("basic, stereo", basic_stereo_fields(), startup::kBasicCtrl),
          block("D2D", d2d_fields(), startup::kBasicCtrl),
          block("D2C control", d2c_ctrl_fields(), startup::kBasicCtrl),
          block("disparity control", disparity_ctrl_fields(), startup::kBasicCtrl)};
}

std::vector<Block> all_blocks() {
  std::vector<Block> blocks = control_blocks();
  for (const Block& other : {block("depth constants", depth_constant_fields(), startup::kD2d),
                             block("D2C projection", d2c_projection_fields(), startup::kD2c),
                             block("prefilter", prefilter_fields(), startup::kPrefilter),
                             block("extend chop", extend_chop_fields(), startup::kExtendChop),
                             block("disparity", disparity_fields(), startup::kDispCalc),
                             block("global points", gpm_fields(), startup::kGpm),
                             block("rectify, common", rectify_common_fields(), startup::rectify(kCamera0Block)),
                             block("rectify, kk", rectify_kk_fields(), startup::rectify(kCamera1Block)),
                             block("rectify control 0", rectify_ctrl_fields(0), startup::kRectifyCtrl),
                             block("rectify control 1", rectify_ctrl_fields(1), startup::kRectifyCtrl),
                             block("sbg2r", sbg2r_fields(), startup::kRectifyCtrl)}) {
    blocks.push_back(other);
  }
  return blocks;
}

bool contiguous(std::uint32_t mask) {
  if (mask == 0) return false;
  const std::uint32_t run = mask >> std::countr_zero(mask);
  return (run & (run + 1)) == 0;
}

TEST(RegisterBlocks, RowsLieInTheirTables) {
  for (const Block& block : all_blocks()) {
    ASSERT_FALSE(block.rows.empty()) << block.name;
    for (const FieldBits& row : block.rows) {
      SCOPED_TRACE(testing::Message() << block.name << ": " << row.name);
      EXPECT_TRUE(contiguous(row.mask));
      ASSERT_LT(row.element, block.table.size());
      if (row.written()) {
        EXPECT_EQ(row.mask & ~block.table[row.element].mask, 0U);
      }
    }
  }
}

TEST(RegisterBlocks, FixedPointRowsHaveANameAndFitTheirMasks) {
  for (const Block& block : all_blocks()) {
    for (const FieldBits& row : block.rows) {
      SCOPED_TRACE(testing::Message() << block.name << ": " << row.name);
      if (!is_checked(row.coding) || !row.written()) continue;  // others never overflow
      EXPECT_NE(row.format.name, nullptr);
      EXPECT_LE(row.format.width, static_cast<std::uint32_t>(std::popcount(row.mask)));
    }
  }
}

TEST(RegisterBlocks, WrittenRowsDoNotOverlap) {
  for (const Block& block : all_blocks()) {
    std::vector<std::uint32_t> written(block.table.size());
    for (const FieldBits& row : block.rows) {
      if (!row.written()) continue;
      EXPECT_EQ(row.mask & written[row.element], 0U) << block.name << ": " << row.name;
      written[row.element] |= row.mask;
    }
  }
}

TEST(RegisterBlocks, ControlTablesBlocksOwnEveryBitOfItsMasksOnce) {
  std::vector<std::uint32_t> written{0, 0, 0x80000000, 0, 0};  // the depth mode has no row
  for (const Block& block : control_blocks()) {
    for (const FieldBits& row : block.rows) {
      if (!row.written()) continue;
      EXPECT_EQ(row.mask & written[row.element], 0U) << block.name << ": " << row.name;
      written[row.element] |= row.mask;
    }
  }
  EXPECT_EQ(written, (std::vector<std::uint32_t>{0x00013030, 0x0000C400, 0xDCFFFFFF, 0x000000FF, 0x0000000E}));
}

}  // namespace
}  // namespace vq3900::test
