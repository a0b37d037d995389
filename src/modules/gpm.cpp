#include "modules/gpm.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace vq3900 {

namespace {

using Params = DeGpmParams_S;
constexpr std::size_t kColumns = 16;

consteval std::uint8_t at(std::uint32_t address) {
  return element_at(startup::kGpm, address);
}

// The entry of the column list: the enabled columns in ascending order, zeros behind.
std::uint32_t list_entry(const Params& params, std::size_t entry) {
  for (std::uint32_t column = 0; column < kColumns; ++column) {
    if (params.gp_col_enabled[column] != 1) continue;
    if (entry == 0) return column;
    --entry;
  }
  return 0;
}

template <std::size_t Entry>
constexpr Field<Params> column(std::uint8_t element, const char* name) {
  constexpr std::uint32_t kNibble = 0xFU << (4 * (Entry % 8));
  return derived<Params>(
      name, element, kNibble, [](const Params& params) -> double { return list_entry(params, Entry); });
}

constexpr std::uint32_t kHighCoordinate = 0x00FFF000;
constexpr std::uint32_t kLowCoordinate = 0x00000FFF;
constexpr std::uint32_t kHighHalf = 0xFFFF0000;
constexpr std::uint32_t kLowHalf = 0x0000FFFF;

// Coordinates and tolerances come back unsigned: a negative one as its 12-bit pattern.
constexpr auto kFields = std::to_array<Field<Params>>({
    integer<&Params::x_coordinate, 1>("x_coordinate[1]", at(0x50001300), kHighCoordinate),
    integer<&Params::x_coordinate, 0>("x_coordinate[0]", at(0x50001300), kLowCoordinate),
    integer<&Params::x_coordinate, 3>("x_coordinate[3]", at(0x50001304), kHighCoordinate),
    integer<&Params::x_coordinate, 2>("x_coordinate[2]", at(0x50001304), kLowCoordinate),
    integer<&Params::x_coordinate, 5>("x_coordinate[5]", at(0x50001308), kHighCoordinate),
    integer<&Params::x_coordinate, 4>("x_coordinate[4]", at(0x50001308), kLowCoordinate),
    integer<&Params::x_coordinate, 7>("x_coordinate[7]", at(0x5000130C), kHighCoordinate),
    integer<&Params::x_coordinate, 6>("x_coordinate[6]", at(0x5000130C), kLowCoordinate),
    integer<&Params::x_coordinate, 9>("x_coordinate[9]", at(0x50001310), kHighCoordinate),
    integer<&Params::x_coordinate, 8>("x_coordinate[8]", at(0x50001310), kLowCoordinate),
    integer<&Params::x_coordinate, 11>("x_coordinate[11]", at(0x50001314), kHighCoordinate),
    integer<&Params::x_coordinate, 10>("x_coordinate[10]", at(0x50001314), kLowCoordinate),
    integer<&Params::x_coordinate, 13>("x_coordinate[13]", at(0x50001318), kHighCoordinate),
    integer<&Params::x_coordinate, 12>("x_coordinate[12]", at(0x50001318), kLowCoordinate),
    integer<&Params::x_coordinate, 15>("x_coordinate[15]", at(0x5000131C), kHighCoordinate),
    integer<&Params::x_coordinate, 14>("x_coordinate[14]", at(0x5000131C), kLowCoordinate),
    integer<&Params::y_coordinate, 1>("y_coordinate[1]", at(0x50001320), kHighCoordinate),
    integer<&Params::y_coordinate, 0>("y_coordinate[0]", at(0x50001320), kLowCoordinate),
    integer<&Params::y_coordinate, 3>("y_coordinate[3]", at(0x50001324), kHighCoordinate),
    integer<&Params::y_coordinate, 2>("y_coordinate[2]", at(0x50001324), kLowCoordinate),
    integer<&Params::y_coordinate, 5>("y_coordinate[5]", at(0x50001328), kHighCoordinate),
    integer<&Params::y_coordinate, 4>("y_coordinate[4]", at(0x50001328), kLowCoordinate),
    integer<&Params::y_coordinate, 7>("y_coordinate[7]", at(0x5000132C), kHighCoordinate),
    integer<&Params::y_coordinate, 6>("y_coordinate[6]", at(0x5000132C), kLowCoordinate),
    integer<&Params::y_coordinate, 9>("y_coordinate[9]", at(0x50001330), kHighCoordinate),
    integer<&Params::y_coordinate, 8>("y_coordinate[8]", at(0x50001330), kLowCoordinate),
    integer<&Params::y_coordinate, 11>("y_coordinate[11]", at(0x50001334), kHighCoordinate),
    integer<&Params::y_coordinate, 10>("y_coordinate[10]", at(0x50001334), kLowCoordinate),
    integer<&Params::y_coordinate, 13>("y_coordinate[13]", at(0x50001338), kHighCoordinate),
    integer<&Params::y_coordinate, 12>("y_coordinate[12]", at(0x50001338), kLowCoordinate),
    integer<&Params::y_coordinate, 15>("y_coordinate[15]", at(0x5000133C), kHighCoordinate),
    integer<&Params::y_coordinate, 14>("y_coordinate[14]", at(0x5000133C), kLowCoordinate),
    integer<&Params::enable_bits_per_row, 1>("enable_bits_per_row[1]", at(0x50001340), kHighHalf),
    integer<&Params::enable_bits_per_row, 0>("enable_bits_per_row[0]", at(0x50001340), kLowHalf),
    integer<&Params::enable_bits_per_row, 3>("enable_bits_per_row[3]", at(0x50001344), kHighHalf),
    integer<&Params::enable_bits_per_row, 2>("enable_bits_per_row[2]", at(0x50001344), kLowHalf),
    integer<&Params::enable_bits_per_row, 5>("enable_bits_per_row[5]", at(0x50001348), kHighHalf),
    integer<&Params::enable_bits_per_row, 4>("enable_bits_per_row[4]", at(0x50001348), kLowHalf),
    integer<&Params::enable_bits_per_row, 7>("enable_bits_per_row[7]", at(0x5000134C), kHighHalf),
    integer<&Params::enable_bits_per_row, 6>("enable_bits_per_row[6]", at(0x5000134C), kLowHalf),
    integer<&Params::enable_bits_per_row, 9>("enable_bits_per_row[9]", at(0x50001350), kHighHalf),
    integer<&Params::enable_bits_per_row, 8>("enable_bits_per_row[8]", at(0x50001350), kLowHalf),
    integer<&Params::enable_bits_per_row, 11>("enable_bits_per_row[11]", at(0x50001354), kHighHalf),
    integer<&Params::enable_bits_per_row, 10>("enable_bits_per_row[10]", at(0x50001354), kLowHalf),
    integer<&Params::enable_bits_per_row, 13>("enable_bits_per_row[13]", at(0x50001358), kHighHalf),
    integer<&Params::enable_bits_per_row, 12>("enable_bits_per_row[12]", at(0x50001358), kLowHalf),
    integer<&Params::enable_bits_per_row, 15>("enable_bits_per_row[15]", at(0x5000135C), kHighHalf),
    integer<&Params::enable_bits_per_row, 14>("enable_bits_per_row[14]", at(0x5000135C), kLowHalf),

    integer<&Params::enable>("enable", at(0x50001360), 0x80000000),
    integer<&Params::gp_enabled_cols>("gp_enabled_cols", at(0x50001360), 0x1F000000),
    integer<&Params::texture_t1>("texture_t1", at(0x50001360), 0x007FF000),
    integer<&Params::texture_t0>("texture_t0", at(0x50001360), 0x000007FF),

    integer<&Params::gp_ref_dy_t_neg>("gp_ref_dy_t_neg", at(0x50001368), kHighCoordinate),
    integer<&Params::gp_ref_dy_t>("gp_ref_dy_t", at(0x50001368), kLowCoordinate),

    integer<&Params::active_t>("active_t", at(0x50001364), 0x001FF000),
    integer<&Params::ncost_t>("ncost_t", at(0x50001364), 0x000003FF),

    column<0>(at(0x5000136C), "column_list[0]"),
    column<1>(at(0x5000136C), "column_list[1]"),
    column<2>(at(0x5000136C), "column_list[2]"),
    column<3>(at(0x5000136C), "column_list[3]"),
    column<4>(at(0x5000136C), "column_list[4]"),
    column<5>(at(0x5000136C), "column_list[5]"),
    column<6>(at(0x5000136C), "column_list[6]"),
    column<7>(at(0x5000136C), "column_list[7]"),
    column<8>(at(0x50001370), "column_list[8]"),
    column<9>(at(0x50001370), "column_list[9]"),
    column<10>(at(0x50001370), "column_list[10]"),
    column<11>(at(0x50001370), "column_list[11]"),
    column<12>(at(0x50001370), "column_list[12]"),
    column<13>(at(0x50001370), "column_list[13]"),
    column<14>(at(0x50001370), "column_list[14]"),
    column<15>(at(0x50001370), "column_list[15]"),

    integer<&Params::hist_dy_dist>("hist_dy_dist", at(0x50001374), 0x0000001F),
    integer<&Params::gpm_config_flag>("gpm_config_flag", at(0x50001374), 0x00000100),
});
static_assert(well_formed(kFields, startup::kGpm));

// Flags the columns of the first entries of the list. It has 16 entries, whatever number the device reports.
void flag_columns(const RegisterTables& tables, Params& params) {
  for (std::uint8_t& flag : params.gp_col_enabled)
    flag = 0;
  std::size_t entry = 0;
  for (const FieldBits& field : kFields) {
    if (field.element != at(0x5000136C) && field.element != at(0x50001370)) continue;
    if (entry++ >= params.gp_enabled_cols) break;
    params.gp_col_enabled[get_reg_field(tables.gpm[field.element].value, field.mask)] = 1;
  }
}

consteval std::uint8_t status_at(std::uint32_t address) {
  return element_at(startup::kGpStatus, address);
}

using Status = DeGpStatusParams_S;

// A status word: unsigned, or with the sign that the device's rule takes from a width. Three fields are wider than the
// 6 bits of that rule.
template <auto... Path>
constexpr Field<Status> unsigned_status(const char* name, std::uint8_t element, std::uint32_t mask) {
  return read_only(integer<Path...>(name, element, mask));
}
template <auto... Path>
constexpr Field<Status> signed_status(const char* name, std::uint8_t element, std::uint32_t mask, std::uint32_t width) {
  return read_only(fixed<Path...>(name, element, mask, {width, 0}));
}

constexpr auto kStatusFields = std::to_array<Field<Status>>({
    signed_status<&Status::status, 0>("status[0]", status_at(0x5000137C), 0xFFF00000, 12),
    unsigned_status<&Status::status, 1>("status[1]", status_at(0x5000137C), 0x0001FF00),
    signed_status<&Status::status, 2>("status[2]", status_at(0x50001380), 0xFFF00000, 12),
    signed_status<&Status::status, 3>("status[3]", status_at(0x50001380), 0x000FC000, 6),
    signed_status<&Status::status, 4>("status[4]", status_at(0x50001380), 0x00001FFF, 6),
    unsigned_status<&Status::triple, 0, 0>("triple[0][0]", status_at(0x50001384), 0x1FF00000),
    signed_status<&Status::triple, 0, 1>("triple[0][1]", status_at(0x50001384), 0x0007FFC0, 6),
    unsigned_status<&Status::triple, 0, 2>("triple[0][2]", status_at(0x50001384), 0x0000001F),
    unsigned_status<&Status::triple, 1, 0>("triple[1][0]", status_at(0x50001388), 0x1FF00000),
    signed_status<&Status::triple, 1, 1>("triple[1][1]", status_at(0x50001388), 0x0007FFC0, 6),
    unsigned_status<&Status::triple, 1, 2>("triple[1][2]", status_at(0x50001388), 0x0000001F),
    unsigned_status<&Status::triple, 2, 0>("triple[2][0]", status_at(0x5000138C), 0x1FF00000),
    signed_status<&Status::triple, 2, 1>("triple[2][1]", status_at(0x5000138C), 0x0007FFC0, 6),
    unsigned_status<&Status::triple, 2, 2>("triple[2][2]", status_at(0x5000138C), 0x0000001F),
});
static_assert(well_formed(kStatusFields, startup::kGpStatus));

// The words of the single points have all one form.
constexpr std::size_t kFirstPoint = status_at(0x50001400);
constexpr std::uint32_t kPointWidth = 6;  // of the second word's sign, which its 8 bits exceed

void decode_point(std::uint32_t value, std::int32_t (&point)[3]) {
  point[0] = static_cast<std::int32_t>(get_reg_field(value, 0x000003FF));
  point[1] = static_cast<std::int32_t>(decode_signed(get_reg_field(value, 0xFF000000), kPointWidth, 0));
  point[2] = static_cast<std::int32_t>(get_reg_field(value, 0x007FF000));
}

}  // namespace

std::span<const Field<DeGpmParams_S>> gpm_fields() {
  return kFields;
}

std::span<const Field<DeGpStatusParams_S>> gp_status_fields() {
  return kStatusFields;
}

void enable_columns(std::span<const std::uint16_t, 16> bits_per_row, DeGpmParams_S& params) {
  unsigned any_row = 0;
  for (std::size_t row = 0; row < bits_per_row.size(); ++row) {
    params.enable_bits_per_row[row] = bits_per_row[row];
    any_row |= bits_per_row[row];
  }
  for (std::size_t column = 0; column < kColumns; ++column) {
    params.gp_col_enabled[column] = static_cast<std::uint8_t>((any_row >> column) & 1U);
  }
}

void encode_gpm(const DeGpmParams_S& params, RegisterTables& tables) {
  encode_fields(kFields, params, tables.gpm, nullptr);
}

void decode_gpm(const RegisterTables& tables, DeGpmParams_S& params) {
  decode_fields(kFields, tables.gpm, params);
  flag_columns(tables, params);
}

void decode_gp_status(const RegisterTables& tables, DeGpStatusParams_S& status) {
  decode_fields(kStatusFields, tables.gp_status, status);
  for (std::size_t i = 0; i < std::size(status.point); ++i) {
    decode_point(tables.gp_status[kFirstPoint + i].value, status.point[i]);
  }
}

}  // namespace vq3900
