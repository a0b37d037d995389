// Checks the register fields of a block against a map that the test writes down: every value of every field, on
// backgrounds that the neighbours must survive.
#ifndef VQ3900_TESTS_SUPPORT_FIELDS_H
#define VQ3900_TESTS_SUPPORT_FIELDS_H

#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <type_traits>
#include <vector>

#include "state/engine.h"
#include "support/registers.h"

namespace vq3900::test {

inline constexpr std::uint32_t kBackgrounds[] = {0x00000000, 0xFFFFFFFF, 0xA5A5A5A5};

// Calls the visitor with every register table. The LUT tables come last: they repeat the address of a control register.
template <typename Visitor>
void for_each_table(RegisterTables& tables, Visitor&& visit) {
  visit(std::span<DeRegElement_S>(tables.basic_ctrl));
  visit(std::span<DeRegElement_S>(tables.d2d));
  visit(std::span<DeRegElement_S>(tables.d2c));
  visit(std::span<DeRegElement_S>(tables.prefilter));
  visit(std::span<DeRegElement_S>(tables.extend_chop));
  visit(std::span<DeRegElement_S>(tables.disp_calc));
  visit(std::span<DeRegElement_S>(tables.gpm));
  visit(std::span<DeRegElement_S>(tables.gp_status));
  visit(std::span<DeRegElement_S>(tables.rectify_ctrl));
  for (auto& table : tables.rectify)
    visit(std::span<DeRegElement_S>(table));
  for (auto& table : tables.rectify_lut_info)
    visit(std::span<DeRegElement_S>(table));
}

inline void fill_all_registers(std::uint32_t value) {
  for_each_table(engine().registers, [value](std::span<DeRegElement_S> table) { fill_values(table, value); });
}

inline std::vector<DeRegElement_S> all_elements(RegisterTables& tables) {
  std::vector<DeRegElement_S> elements;
  for_each_table(tables, [&elements](std::span<DeRegElement_S> table) {
    elements.insert(elements.end(), table.begin(), table.end());
  });
  return elements;
}

// The value of a register, whichever table holds it.
inline std::uint32_t& word_at(RegisterTables& tables, std::uint32_t address) {
  std::uint32_t* found = nullptr;
  for_each_table(tables, [&](std::span<DeRegElement_S> table) {
    for (DeRegElement_S& element : table) {
      if (found == nullptr && element.address == address) found = &element.value;
    }
  });
  static std::uint32_t nowhere;
  if (found == nullptr) ADD_FAILURE() << "no register of address 0x" << std::hex << address;
  return found == nullptr ? nowhere : *found;
}

inline std::uint32_t& word_at(std::uint32_t address) {
  return word_at(engine().registers, address);
}

// The registers that differ from what a test expects, in words; empty: none does, and no address or mask changed.
inline std::string differences_from(const RegisterTables& expected) {
  RegisterTables actual = engine().registers;
  if (std::memcmp(&actual, &expected, sizeof actual) == 0) return {};
  RegisterTables wanted = expected;
  const std::vector<DeRegElement_S> is = all_elements(actual);
  const std::vector<DeRegElement_S> should = all_elements(wanted);
  std::string text;
  for (std::size_t i = 0; i < is.size(); ++i) {
    if (is[i] == should[i]) continue;
    text += testing::PrintToString(is[i]) + " should be " + testing::PrintToString(should[i]) + "\n";
  }
  return text;
}

// Bits of a register, inclusive, as register descriptions give them.
struct Bits {
  std::uint32_t address;
  unsigned high;
  unsigned low;

  constexpr std::uint32_t limit() const {
    const unsigned width = high - low + 1;
    return width == 32 ? 0xFFFFFFFF : (1U << width) - 1;
  }
  constexpr std::uint32_t replaced(std::uint32_t word, std::uint32_t value) const {
    return (word & ~(limit() << low)) | ((value & limit()) << low);
  }
};

// A member of a record and the bits that hold it.
template <typename Record>
struct FieldRow {
  const char* name;
  Bits bits;
  void (*put)(Record&, std::uint32_t);
  std::uint32_t (*take)(const Record&);
};

// Bits that a conversion sets whatever the fields are.
struct SetBits {
  Bits bits;
  std::uint32_t value;
};

template <typename>
struct RecordOfMember;
template <typename Record, typename Member>
struct RecordOfMember<Member Record::*> {
  using type = Record;
};

template <auto Member, std::size_t... Index>
constexpr auto& reach(auto& record) {
  if constexpr (sizeof...(Index) == 0) {
    return record.*Member;
  } else {
    return ((record.*Member)[Index], ...);
  }
}

// A row for an integer member, or for one element of a member that is an array.
template <auto Member, std::size_t... Index>
constexpr auto field_row(const char* name, std::uint32_t address, unsigned high, unsigned low) {
  using Record = typename RecordOfMember<decltype(Member)>::type;
  return FieldRow<Record>{
      name,
      {address, high, low},
      [](Record& record, std::uint32_t value) {
        auto& member = reach<Member, Index...>(record);
        member = static_cast<std::remove_reference_t<decltype(member)>>(value);
      },
      [](const Record& record) { return static_cast<std::uint32_t>(reach<Member, Index...>(record)); }};
}

// All values of a field of up to 12 bits when asked for; else its limits, walking bits and patterns.
inline std::vector<std::uint32_t> field_values(const Bits& bits, bool all) {
  const std::uint32_t limit = bits.limit();
  std::vector<std::uint32_t> values;
  if (all && limit < 0x1000) {
    for (std::uint32_t value = 0; value <= limit; ++value)
      values.push_back(value);
    return values;
  }
  values = {0, limit, 0xA5A5A5A5 & limit, 0x5A5A5A5A & limit};
  for (std::uint32_t bit = 1; bit != 0 && bit <= limit; bit <<= 1) {
    values.push_back(bit);
    values.push_back(limit ^ bit);
  }
  return values;
}

// Values that do not fit the field: the bits above it must go nowhere.
inline std::vector<std::uint32_t> too_wide_values(const Bits& bits) {
  if (bits.limit() == 0xFFFFFFFF) return {};
  return {bits.limit() + 1, ~bits.limit(), 0xFFFFFFFF};
}

// Converts the quiet record on every background: its fields and the set bits appear, every other bit of every table
// survives.
template <typename Record>
void expect_other_bits_survive(std::span<const FieldRow<Record>> rows, std::span<const SetBits> set_bits, Record& live,
                               const Record& quiet, std::int32_t (*convert)()) {
  for (const std::uint32_t background : kBackgrounds) {
    SCOPED_TRACE(testing::Message() << "background 0x" << std::hex << background);
    fill_all_registers(background);
    RegisterTables expected = engine().registers;
    for (const FieldRow<Record>& row : rows) {
      std::uint32_t& word = word_at(expected, row.bits.address);
      word = row.bits.replaced(word, row.take(quiet));
    }
    for (const SetBits& set : set_bits) {
      std::uint32_t& word = word_at(expected, set.bits.address);
      word = set.bits.replaced(word, set.value);
    }
    live = quiet;
    EXPECT_EQ(convert(), 0);
    EXPECT_EQ(differences_from(expected), "");
  }
}

// Converts the quiet record with one field changed: that field's bits follow, nothing else does.
template <typename Record>
void expect_fields_land_in_their_bits(std::span<const FieldRow<Record>> rows, Record& live, const Record& quiet,
                                      std::int32_t (*convert)()) {
  for (const std::uint32_t background : kBackgrounds) {
    fill_all_registers(background);
    const RegisterTables filled = engine().registers;
    live = quiet;
    convert();
    const RegisterTables base = engine().registers;
    for (const FieldRow<Record>& row : rows) {
      RegisterTables expected = base;
      std::uint32_t& word = word_at(expected, row.bits.address);
      std::vector<std::uint32_t> values = field_values(row.bits, background == 0xA5A5A5A5);
      for (const std::uint32_t value : too_wide_values(row.bits))
        values.push_back(value);
      for (const std::uint32_t value : values) {
        engine().registers = filled;
        live = quiet;
        row.put(live, value);
        convert();
        word = row.bits.replaced(word, value);
        ASSERT_EQ(differences_from(expected), "") << row.name << " = 0x" << std::hex << value << " on 0x" << background;
      }
    }
  }
}

// Puts every value into the field's bits and converts back. All other bits are the background's.
template <typename Record>
void expect_fields_come_back(std::span<const FieldRow<Record>> rows, Record& live, const Record& quiet,
                             std::int32_t (*convert)()) {
  for (const std::uint32_t background : kBackgrounds) {
    for (const FieldRow<Record>& row : rows) {
      fill_all_registers(background);
      std::uint32_t& word = word_at(row.bits.address);
      for (const std::uint32_t value : field_values(row.bits, background == 0xA5A5A5A5)) {
        word = row.bits.replaced(word, value);
        live = quiet;
        ASSERT_EQ(convert(), 0);
        ASSERT_EQ(row.take(live), value) << row.name << " of register 0x" << std::hex << row.bits.address << " on 0x"
                                         << background;
      }
    }
  }
}

}  // namespace vq3900::test

#endif
