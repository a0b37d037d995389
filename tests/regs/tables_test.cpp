// Copy-out and merge-back of every register table.
#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>

#include "support/capture.h"
#include "support/elements.h"
#include "support/engine_fixture.h"

namespace vq3900::test {
namespace {

constexpr const char* kMismatch = "register element address or mask incompatible!\n";
constexpr DeRegElement_S kUntouched{0xEEEEEEEE, 0xEEEEEEEE, 0xEEEEEEEE};

// One table. Counts pass through the widest type here and are cut by the row.
struct TableCase {
  const char* name;
  std::uint16_t size;
  std::int32_t (*copy)(DeRegElement_S*, std::uint16_t);
  const char* copy_message;
  std::int32_t (*update)(const DeRegElement_S*, std::uint8_t);  // null: no merge-back
  const char* update_message;                                   // null: no size check
  bool compares_mask = true;
};

void PrintTo(const TableCase& table, std::ostream* stream) {
  *stream << table.name;
}

template <std::int32_t (*Copy)(DeRegElement_S*, std::uint8_t)>
std::int32_t narrow(DeRegElement_S* dst, std::uint16_t count) {
  return Copy(dst, static_cast<std::uint8_t>(count));
}

template <std::int32_t Camera>
std::int32_t lut_info(DeRegElement_S* dst, std::uint16_t count) {
  return de_copy_rectify_lut_info_register_table(Camera, dst, static_cast<std::uint8_t>(count));
}

const TableCase kTables[] = {
    {"BasicControl",
     5,
     narrow<de_copy_basic_d2c_d2d_ctrl_register_table>,
     "reg_num > inner_basic_reg_table_size! \n",
     de_update_basic_d2c_d2d_ctrl_register_table,
     "reg_num > inner_basic_d2c_d2d_ctrl_reg_table_size! \n",
     false},
    {"D2dParameters",
     2,
     narrow<de_copy_d2d_params_register_table>,
     "reg_num > inner_basic_reg_table_size! \n",
     de_update_d2d_params_register_table,
     "reg_num > inner_basic_params_reg_table_size! \n"},
    {"D2cParameters",
     12,
     narrow<de_copy_d2c_params_register_table>,
     "reg_num > inner_d2c_reg_table_size! \n",
     de_update_d2c_params_register_table,
     "reg_num > inner_d2c_reg_table_size! \n"},
    {"Prefilter",
     18,
     narrow<de_copy_prefilter_register_table>,
     "reg_num > inner_pref_reg_table size! \n",
     de_update_prefilter_register_table,
     "reg_num > inner_pref_reg_table! \n"},
    {"ExtendChop",
     7,
     narrow<de_copy_extend_chop_register_table>,
     "reg_num > EXTAND_CHOP_REG_TABLE_SIZE! \n",
     de_update_extend_chop_register_table,
     "reg_num > EXTAND_CHOP_REG_TABLE_SIZE! \n"},
    {"Disparity",
     12,
     narrow<de_copy_disp_calc_register_table>,
     "reg_num > DISP_CALC_REG_TABLE_SIZE! \n",
     de_update_disp_calc_register_table,
     "reg_num > DISP_CALC_REG_TABLE_SIZE! \n"},
    {"GlobalPoints",
     30,
     narrow<de_copy_gpm_register_table>,
     "reg_num > inner_gpm_reg_table_size! \n",
     de_update_gpm_register_table,
     "reg_num > inner_gpm_reg_table_size! \n"},
    {"GlobalPointStatus",
     261,
     de_copy_gp_status_register_table,
     "reg_num > inner_gp_status_reg_table! \n",
     de_update_gp_status_register_table,
     nullptr},
    {"RectifyControl",
     3,
     narrow<de_copy_rectify_ctrl_register_table>,
     "reg_num > inner_rectify_ctrl_reg_table_size! \n",
     de_update_rectify_ctrl_register_table,
     "reg_num > inner_rectify_ctrl_reg_table_size! \n"},
    {"RectifyParameters",
     23,
     narrow<de_copy_rectify_params_register_table>,
     "reg_num > inner_rectify_reg_table_size! \n",
     de_update_rectify_params_register_table,
     "reg_num > inner_rectify_reg_table_size! \n"},
    {"Sbg2rParameters",
     23,
     narrow<de_copy_sbg2r_params_register_table>,
     "reg_num > SBG_ROTATE_RECT_LUT_REG_TABLE_SIZE! \n",
     de_update_sbg2r_params_register_table,
     "reg_num > SBG_ROTATE_RECT_LUT_REG_TABLE_SIZE! \n"},
    {"RectifyLutInfoCamera0", 7, lut_info<0>, "reg_num > inner_sbg2r_lut_reg_table size! \n", nullptr, nullptr},
    {"RectifyLutInfoCamera1", 7, lut_info<1>, "reg_num > inner_sbg2r_lut_reg_table size! \n", nullptr, nullptr},
};

class TableCopy : public EngineTest, public testing::WithParamInterface<TableCase> {
 protected:
  const TableCase& table() const { return GetParam(); }

  Elements whole() const {
    Elements elements(table().size);
    EXPECT_EQ(table().copy(elements.data(), table().size), 0);
    return elements;
  }

  // The most elements that one merge can take.
  std::uint8_t merge_limit() const { return static_cast<std::uint8_t>(std::min<std::uint16_t>(table().size, 255)); }

  // The table's own elements, each with a value of its own that has bits inside and outside every mask.
  Elements with_new_values() const {
    Elements elements = whole();
    elements.resize(merge_limit());
    for (std::size_t i = 0; i < elements.size(); ++i)
      elements[i].value = 0xFFFF0F0FU - static_cast<std::uint32_t>(i) * 0x01010101U;
    return elements;
  }

  Outcome merge(const Elements& elements) const {
    return outcome_of([&] { return table().update(elements.data(), static_cast<std::uint8_t>(elements.size())); });
  }
};

class TableMerge : public TableCopy {};
class TableMergeOfTooMany : public TableCopy {};
class TableMergeOfMasks : public TableCopy {};

std::string name_of(const testing::TestParamInfo<TableCase>& test) {
  return test.param.name;
}

template <typename Wanted>
std::vector<TableCase> tables_that(const Wanted& wanted) {
  std::vector<TableCase> tables;
  std::copy_if(std::begin(kTables), std::end(kTables), std::back_inserter(tables), wanted);
  return tables;
}

bool has_merge(const TableCase& table) {
  return table.update != nullptr;
}

bool checks_size(const TableCase& table) {
  return table.update_message != nullptr;
}

bool checks_masks(const TableCase& table) {
  return has_merge(table) && table.compares_mask;
}

INSTANTIATE_TEST_SUITE_P(All, TableCopy, testing::ValuesIn(kTables), name_of);
INSTANTIATE_TEST_SUITE_P(All, TableMerge, testing::ValuesIn(tables_that(has_merge)), name_of);
INSTANTIATE_TEST_SUITE_P(All, TableMergeOfTooMany, testing::ValuesIn(tables_that(checks_size)), name_of);
INSTANTIATE_TEST_SUITE_P(All, TableMergeOfMasks, testing::ValuesIn(tables_that(checks_masks)), name_of);

TEST_P(TableCopy, CopyOfExactlyTheSizeSucceeds) {
  Elements elements(table().size + std::size_t{1}, kUntouched);
  EXPECT_EQ(outcome_of([&] { return table().copy(elements.data(), table().size); }), silent_success());
  EXPECT_EQ(std::count(elements.begin(), elements.end(), kUntouched), 1);
  EXPECT_EQ(elements.back(), kUntouched);
}

TEST_P(TableCopy, CopyOfOneMoreThanTheSizeFailsAndCopiesNothing) {
  Elements elements(table().size + std::size_t{1}, kUntouched);
  EXPECT_EQ(outcome_of([&] { return table().copy(elements.data(), static_cast<std::uint16_t>(table().size + 1)); }),
            prints_err(-2, table().copy_message));
  EXPECT_EQ(elements, Elements(elements.size(), kUntouched));
  EXPECT_EQ(de_get_error_str(), nullptr);
}

TEST_P(TableCopy, CopyOfTheLargestCountFails) {
  const auto largest = std::numeric_limits<std::uint16_t>::max();  // 255 where the count has 8 bits
  Elements elements(largest, kUntouched);
  EXPECT_EQ(outcome_of([&] { return table().copy(elements.data(), largest); }), prints_err(-2, table().copy_message));
  EXPECT_EQ(elements, Elements(elements.size(), kUntouched));
}

TEST_P(TableCopy, CopyOfFewerElementsTakesThemFromTheStart) {
  const Elements all = whole();
  for (std::uint16_t count = 0; count < table().size; ++count) {
    Elements elements(table().size, kUntouched);
    ASSERT_EQ(table().copy(elements.data(), count), 0);
    ASSERT_TRUE(std::equal(elements.begin(), elements.begin() + count, all.begin())) << count;
    ASSERT_EQ(std::count(elements.begin(), elements.end(), kUntouched), table().size - count);
  }
}

TEST_P(TableCopy, CopyOfNothingNeedsNoArray) {
  EXPECT_EQ(outcome_of([&] { return table().copy(nullptr, 0); }), silent_success());
}

TEST_P(TableCopy, CopyToNullIsRefusedSilently) {
  EXPECT_EQ(outcome_of([&] { return table().copy(nullptr, 1); }), silent(-2));
  EXPECT_EQ(outcome_of([&] { return table().copy(nullptr, table().size); }), silent(-2));
  EXPECT_EQ(de_get_error_str(), nullptr);
}

TEST_P(TableMerge, MergeOfExactlyTheSizeStoresWholeValuesUnmasked) {
  const Elements registers = library_registers();
  const Elements merged = with_new_values();
  EXPECT_EQ(merge(merged), silent_success());
  EXPECT_EQ(library_registers(), with_values(registers, merged));
}

TEST_P(TableMergeOfTooMany, FailsAndStoresNothing) {
  const Elements registers = library_registers();
  Elements elements = with_new_values();
  elements.push_back(elements.back());
  EXPECT_EQ(merge(elements), prints_err(-2, table().update_message));
  elements.resize(255, elements.back());
  EXPECT_EQ(merge(elements), prints_err(-2, table().update_message));
  EXPECT_EQ(library_registers(), registers);
  EXPECT_EQ(de_get_error_str(), nullptr);
}

TEST_P(TableMerge, MergeOfNoElementsSucceedsAndChangesNothing) {
  const Elements registers = library_registers();
  const Elements elements = with_new_values();
  EXPECT_EQ(outcome_of([&] { return table().update(elements.data(), 0); }), silent_success());
  EXPECT_EQ(outcome_of([&] { return table().update(nullptr, 0); }), silent_success());
  EXPECT_EQ(library_registers(), registers);
}

TEST_P(TableMerge, MergeFromNullIsRefusedSilently) {
  const Elements registers = library_registers();
  EXPECT_EQ(outcome_of([&] { return table().update(nullptr, 1); }), silent(-2));
  EXPECT_EQ(library_registers(), registers);
}

TEST_P(TableMerge, MergeOfFewerElementsLeavesTheRest) {
  const Elements registers = library_registers();
  Elements merged = with_new_values();
  merged.pop_back();
  EXPECT_EQ(merge(merged), silent_success());
  EXPECT_EQ(library_registers(), with_values(registers, merged));
}

TEST_P(TableMerge, MergeStopsAtEveryWrongAddressAndKeepsEarlierElements) {
  const Elements registers = library_registers();
  for (std::uint8_t wrong = 0; wrong < merge_limit(); ++wrong) {
    reset_engine();
    const Elements good = with_new_values();
    Elements elements = good;
    elements[wrong].address ^= 4;
    ASSERT_EQ(merge(elements), prints_err(-2, kMismatch)) << int{wrong};
    ASSERT_EQ(library_registers(), with_values(registers, {good.data(), wrong})) << int{wrong};
  }
}

TEST_P(TableMergeOfMasks, StopsAtEveryWrongMaskAndKeepsEarlierElements) {
  const Elements registers = library_registers();
  for (std::uint8_t wrong = 0; wrong < merge_limit(); ++wrong) {
    reset_engine();
    const Elements good = with_new_values();
    Elements elements = good;
    elements[wrong].mask ^= 0x80000000;
    ASSERT_EQ(merge(elements), prints_err(-2, kMismatch)) << int{wrong};
    ASSERT_EQ(library_registers(), with_values(registers, {good.data(), wrong})) << int{wrong};
  }
  EXPECT_EQ(de_get_error_str(), nullptr);
}

TEST_P(TableMerge, MergeIgnoresWhatLiesBehindTheCount) {
  const Elements registers = library_registers();
  const Elements good = with_new_values();
  Elements elements = good;
  elements.back() = kUntouched;
  const auto count = static_cast<std::uint8_t>(elements.size() - 1);
  EXPECT_EQ(outcome_of([&] { return table().update(elements.data(), count); }), silent_success());
  EXPECT_EQ(library_registers(), with_values(registers, {good.data(), count}));
}

TEST_P(TableMerge, GoodMergeAfterAFailedOneSucceeds) {
  Elements elements = with_new_values();
  elements.back().address = 0;
  EXPECT_EQ(merge(elements), prints_err(-2, kMismatch));
  const Elements good = with_new_values();
  EXPECT_EQ(merge(good), silent_success());
  Elements stored = whole();
  stored.resize(good.size());
  EXPECT_EQ(stored, good);
}

TEST_P(TableMerge, ValuesMergedTwiceAreThoseOfTheSecondMerge) {
  EXPECT_EQ(merge(with_new_values()), silent_success());
  Elements second = with_new_values();
  for (DeRegElement_S& element : second)
    element.value = ~element.value;
  EXPECT_EQ(merge(second), silent_success());
  Elements stored = whole();
  stored.resize(second.size());
  EXPECT_EQ(stored, second);
}

using Tables = EngineTest;

TEST_F(Tables, MergeWithAWrongMaskAtElement3UpdatesElements0To2) {
  Elements elements(7);
  ASSERT_EQ(de_copy_extend_chop_register_table(elements.data(), 7), 0);
  for (DeRegElement_S& element : elements)
    element.value = 0x11;
  elements[3].mask = 0x0FFF0FFE;
  EXPECT_EQ(outcome_of([&] { return de_update_extend_chop_register_table(elements.data(), 7); }),
            prints_err(-2, kMismatch));
  ASSERT_EQ(de_copy_extend_chop_register_table(elements.data(), 7), 0);
  for (std::size_t i = 0; i < 7; ++i)
    EXPECT_EQ(elements[i].value, i < 3 ? 0x11U : 0U) << i;
}

TEST_F(Tables, ControlTableMergesARightAddressWithAWrongMaskAndKeepsItsOwn) {
  Elements elements(5);
  ASSERT_EQ(de_copy_basic_d2c_d2d_ctrl_register_table(elements.data(), 5), 0);
  const Elements own = elements;
  for (DeRegElement_S& element : elements)
    element = {element.address, 0, 0xDEADBEEF};
  EXPECT_EQ(outcome_of([&] { return de_update_basic_d2c_d2d_ctrl_register_table(elements.data(), 5); }),
            silent_success());
  ASSERT_EQ(de_copy_basic_d2c_d2d_ctrl_register_table(elements.data(), 5), 0);
  for (std::size_t i = 0; i < 5; ++i)
    EXPECT_EQ(elements[i], (DeRegElement_S{own[i].address, own[i].mask, 0xDEADBEEF}));
}

TEST_F(Tables, StatusMergeOf255ElementsStoresThemAllAndLeavesTheLastSix) {
  Elements elements = joined({repeated(5, 0x5000137C, 0xFFFFFFFF, 7), repeated(250, 0x50001400, 0xFFFFFFFF, 9)});
  ASSERT_EQ(elements.size(), 255U);
  EXPECT_EQ(outcome_of([&] { return de_update_gp_status_register_table(elements.data(), 255); }), silent_success());
  Elements stored(261);
  ASSERT_EQ(de_copy_gp_status_register_table(stored.data(), 261), 0);
  EXPECT_EQ(stored, joined({elements, repeated(6, 0x500017E8, 0xFFFFFFFF, 0)}));
}

TEST_F(Tables, StatusTableCanBeMergedBeforeItIsCopiedOut) {
  const DeRegElement_S first{0x5000137C, 0xFFFFFFFF, 0x12345678};
  EXPECT_EQ(outcome_of([&] { return de_update_gp_status_register_table(&first, 1); }), silent_success());
  Elements stored(261);
  ASSERT_EQ(de_copy_gp_status_register_table(stored.data(), 261), 0);
  EXPECT_EQ(stored,
            joined({{first}, repeated(4, 0x50001380, 0xFFFFFFFF, 0), repeated(256, 0x50001400, 0xFFFFFFFF, 0)}));
}

TEST_F(Tables, RectifyLutInfoOfCamera1IsTheSecondTableAndAnyOtherIdGivesTheFirst) {
  constexpr auto kLowest = std::numeric_limits<std::int32_t>::min();
  for (const std::int32_t camera : {1, 0, 2, -1, 257, kLowest}) {
    DeRegElement_S first{};
    EXPECT_EQ(de_copy_rectify_lut_info_register_table(camera, &first, 1), 0) << camera;
    EXPECT_EQ(first.address, camera == 1 ? 0x52000074U : 0x52080074U) << camera;
  }
}

TEST_F(Tables, EqualLookingTablesOfTheTwoCamerasAreNotEachOthers) {
  Elements elements(23);
  ASSERT_EQ(de_copy_sbg2r_params_register_table(elements.data(), 23), 0);
  EXPECT_EQ(outcome_of([&] { return de_update_rectify_params_register_table(elements.data(), 23); }),
            prints_err(-2, kMismatch));
  ASSERT_EQ(de_copy_rectify_params_register_table(elements.data(), 23), 0);
  EXPECT_EQ(outcome_of([&] { return de_update_sbg2r_params_register_table(elements.data(), 23); }),
            prints_err(-2, kMismatch));
}

}  // namespace
}  // namespace vq3900::test
