// A register block as data: one row for each field, walked in both directions.
//
// A row names the record member, the register element and mask that hold it, and how it is coded. Rows that only one
// direction knows say so. Registers are named by address and resolved to the table's element at compile time.
#ifndef VQ3900_MODULES_REGISTER_FIELD_H
#define VQ3900_MODULES_REGISTER_FIELD_H

#include "vq3900_depth_engine.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <span>
#include <type_traits>

#include "modules/fixed_point.h"
#include "state/member_path.h"
#include "state/register_tables.h"

namespace vq3900 {

enum class Coding : std::uint8_t {
  kInteger,        // the low bits of an integer
  kFixed,          // fixed point, decoded as two's complement
  kFixedUnsigned,  // fixed point, decoded as unsigned
  kFixedCut,       // fixed point, unsigned, cut to the field without a check
};

enum class Use : std::uint8_t {
  kBothWays,
  kWriteOnly,  // never read back
  kReadOnly,   // never written to the register
};

// Where a field lies and how it is coded, whatever record it belongs to.
struct FieldBits {
  const char* name = nullptr;  // of the record member, or of what a constant stands for
  std::uint8_t element = 0;
  std::uint32_t mask = 0;
  Coding coding = Coding::kInteger;
  FixedFormat format = {};
  Use use = Use::kBothWays;

  constexpr bool written() const { return use != Use::kReadOnly; }
  constexpr bool read_back() const { return use != Use::kWriteOnly; }
};

template <typename Record>
struct Field : FieldBits {
  double (*load)(const Record&) = nullptr;         // for written fields
  void (*store)(Record&, double value) = nullptr;  // for fields read back
};

// The index of a register in its table. A register that is not there fails the build.
template <std::size_t Count>
consteval std::uint8_t element_at(const RegisterTable<Count>& table, std::uint32_t address) {
  for (std::size_t i = 0; i < Count; ++i) {
    if (table[i].address == address) return static_cast<std::uint8_t>(i);
  }
  throw "the table has no register of this address";
}

namespace detail {

template <auto... Path>
double load(const RecordOf<Path...>& record) {
  return static_cast<double>(walk<Path...>(record));
}

// Every 32-bit integer passes through a double unchanged.
template <auto... Path>
void store(RecordOf<Path...>& record, double value) {
  auto& member = walk<Path...>(record);
  using Member = std::remove_reference_t<decltype(member)>;
  if constexpr (std::is_floating_point_v<Member>) {
    member = static_cast<Member>(value);
  } else {
    member = static_cast<Member>(to_integer(value));
  }
}

}  // namespace detail

// An integer member, both ways.
template <auto... Path>
constexpr Field<RecordOf<Path...>> integer(const char* name, std::uint8_t element, std::uint32_t mask) {
  return {{name, element, mask}, detail::load<Path...>, detail::store<Path...>};
}

// A real member in fixed point, both ways.
template <auto... Path>
constexpr Field<RecordOf<Path...>> fixed(const char* name, std::uint8_t element, std::uint32_t mask, FixedFormat format,
                                         Coding coding = Coding::kFixed) {
  return {{name, element, mask, coding, format}, detail::load<Path...>, detail::store<Path...>};
}

template <typename Record>
constexpr Field<Record> write_only(Field<Record> field) {
  field.use = Use::kWriteOnly;
  return field;
}

template <typename Record>
constexpr Field<Record> read_only(Field<Record> field) {
  field.use = Use::kReadOnly;
  return field;
}

// Bits that always take the same value; never read back.
template <typename Record, std::uint32_t Value>
constexpr Field<Record> constant(const char* name, std::uint8_t element, std::uint32_t mask) {
  return write_only<Record>({{name, element, mask}, [](const Record&) { return double{Value}; }});
}

// Bits computed from the record; never read back.
template <typename Record>
constexpr Field<Record> derived(const char* name, std::uint8_t element, std::uint32_t mask,
                                double (*load)(const Record&)) {
  return write_only<Record>({{name, element, mask}, load});
}

// The field's bits for the record: what goes under the mask, or kOverflowed after telling the handler.
template <typename Record>
std::uint32_t encode_bits(const Field<Record>& field, const Record& record, OverflowHandler on_overflow) {
  const double value = field.load(record);
  if (field.coding == Coding::kInteger) return static_cast<std::uint32_t>(to_integer(value));
  if (field.coding == Coding::kFixedCut) {
    const double scaled = std::ldexp(value, field.format.frac_bits) + 0.5;
    return static_cast<std::uint32_t>(to_integer(scaled));  // truncates
  }
  return encode_fixed(value, field.format, on_overflow);
}

// Whether the encoder checks a field's range, so that all ones mean an overflow.
constexpr bool is_checked(Coding coding) {
  return coding == Coding::kFixed || coding == Coding::kFixedUnsigned;
}

// Writes every field in the order of the rows. An overflow is told to the handler and written as all ones.
template <typename Record, std::size_t Count>
void encode_fields(const std::array<Field<Record>, Count>& fields, const Record& record,
                   std::span<DeRegElement_S> table, OverflowHandler on_overflow) {
  for (const Field<Record>& field : fields) {
    if (!field.written()) continue;
    std::uint32_t& value = table[field.element].value;
    value = set_reg_field(encode_bits(field, record, on_overflow), value, field.mask);
  }
}

// The same up to the first overflow, which is not written. False: an overflow.
template <typename Record, std::size_t Count>
bool encode_fields_until_overflow(const std::array<Field<Record>, Count>& fields, const Record& record,
                                  std::span<DeRegElement_S> table, OverflowHandler on_overflow) {
  for (const Field<Record>& field : fields) {
    if (!field.written()) continue;
    const std::uint32_t bits = encode_bits(field, record, on_overflow);
    if (is_checked(field.coding) && bits == kOverflowed) return false;
    std::uint32_t& value = table[field.element].value;
    value = set_reg_field(bits, value, field.mask);
  }
  return true;
}

// What a field's bits stand for.
inline double decode_bits(const FieldBits& field, std::uint32_t register_value) {
  const std::uint32_t bits = get_reg_field(register_value, field.mask);
  switch (field.coding) {
    case Coding::kFixed:
      return decode_signed(bits, field.format.width, field.format.frac_bits);
    case Coding::kFixedUnsigned:
    case Coding::kFixedCut:
      return decode_unsigned(bits, field.format.frac_bits);
    case Coding::kInteger:
      break;
  }
  return bits;
}

template <typename Record, std::size_t Count>
void decode_fields(const std::array<Field<Record>, Count>& fields, std::span<const DeRegElement_S> table,
                   Record& record) {
  for (const Field<Record>& field : fields) {
    if (field.read_back()) field.store(record, decode_bits(field, table[field.element].value));
  }
}

// Checked at compile time for every block: masks are contiguous, written fields lie under their element's mask and do
// not overlap.
template <typename Record, std::size_t Count, std::size_t Elements>
consteval bool well_formed(const std::array<Field<Record>, Count>& fields, const RegisterTable<Elements>& table) {
  std::array<std::uint32_t, Elements> written{};
  for (const Field<Record>& field : fields) {
    if (field.mask == 0 || field.element >= Elements) return false;
    const std::uint64_t run = field.mask >> std::countr_zero(field.mask);
    if ((run & (run + 1)) != 0) return false;
    if (!field.written()) continue;
    if ((field.mask & ~table[field.element].mask) != 0) return false;
    if ((field.mask & written[field.element]) != 0) return false;
    written[field.element] |= field.mask;
  }
  return true;
}

// Whether two sets of rows of one table write different bits.
template <typename RecordA, std::size_t CountA, typename RecordB, std::size_t CountB>
consteval bool disjoint(const std::array<Field<RecordA>, CountA>& a, const std::array<Field<RecordB>, CountB>& b) {
  const auto overlap = [](const FieldBits& x, const FieldBits& y) {
    return x.written() && y.written() && x.element == y.element && (x.mask & y.mask) != 0;
  };
  return std::none_of(a.begin(), a.end(), [&](const FieldBits& x) {
    return std::any_of(b.begin(), b.end(), [&](const FieldBits& y) { return overlap(x, y); });
  });
}

}  // namespace vq3900

#endif
