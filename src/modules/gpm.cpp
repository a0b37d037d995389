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

// The enabled columns in ascending order, one nibble an entry, the first entry in the lowest nibble, zeros behind.
std::uint64_t pack_columns(const Params& params) {
  std::uint64_t packed = 0;
  unsigned shift = 0;
  for (std::uint64_t column = 0; column < kColumns; ++column) {
    if (params.gp_col_enabled[column] != 1) continue;
    packed |= column << shift;
    shift += 4;
  }
  return packed;
}

// Flags the first entries of the column list. The list has 16 entries, whatever number the device reports.
void unpack_columns(std::uint64_t packed, Params& params) {
  for (std::uint8_t& flag : params.gp_col_enabled)
    flag = 0;
  for (std::size_t i = 0; i < params.gp_enabled_cols && i < kColumns; ++i) {
    params.gp_col_enabled[(packed >> (4 * i)) & 0xF] = 1;
  }
}

constexpr std::uint8_t kColumnsLow = at(0x5000136C);
constexpr std::uint8_t kColumnsHigh = at(0x50001370);

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

    derived<Params>("column list 0-7", kColumnsLow, 0xFFFFFFFF,
                    [](const Params& params) -> double { return static_cast<std::uint32_t>(pack_columns(params)); }),
    derived<Params>(
        "column list 8-15", kColumnsHigh, 0xFFFFFFFF,
        [](const Params& params) -> double { return static_cast<std::uint32_t>(pack_columns(params) >> 32); }),

    integer<&Params::hist_dy_dist>("hist_dy_dist", at(0x50001374), 0x0000001F),
    integer<&Params::gpm_config_flag>("gpm_config_flag", at(0x50001374), 0x00000100),
});
static_assert(well_formed(kFields, startup::kGpm));

// A status field: its bits, and the width that its sign is decoded with (0: unsigned). Three fields are wider than the
// 6 bits that the device's sign rule uses.
struct StatusField {
  std::uint32_t mask;
  std::uint32_t signed_width;
};

constexpr std::array<StatusField, 2> kStatusOfElement0{{{0xFFF00000, 12}, {0x0001FF00, 0}}};
constexpr std::array<StatusField, 3> kStatusOfElement1{{{0xFFF00000, 12}, {0x000FC000, 6}, {0x00001FFF, 6}}};
constexpr std::array<StatusField, 3> kTriple{{{0x1FF00000, 0}, {0x0007FFC0, 6}, {0x0000001F, 0}}};
constexpr std::array<StatusField, 3> kPoint{{{0x000003FF, 0}, {0xFF000000, 6}, {0x007FF000, 0}}};

constexpr std::size_t kFirstTriple = 2;
constexpr std::size_t kFirstPoint = 5;

template <std::size_t Count>
void decode_status(const std::array<StatusField, Count>& fields, const DeRegElement_S& element, std::int32_t* out) {
  for (const StatusField& field : fields) {
    const std::uint32_t bits = get_reg_field(element.value, field.mask);
    const double value = field.signed_width == 0 ? bits : decode_signed(bits, field.signed_width, 0);
    *out++ = static_cast<std::int32_t>(value);
  }
}

}  // namespace

std::span<const Field<DeGpmParams_S>> gpm_fields() {
  return kFields;
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
  const std::uint64_t high = tables.gpm[kColumnsHigh].value;
  unpack_columns(high << 32 | tables.gpm[kColumnsLow].value, params);
}

void decode_gp_status(const RegisterTables& tables, DeGpStatusParams_S& status) {
  const auto& table = tables.gp_status;
  decode_status(kStatusOfElement0, table[0], &status.status[0]);
  decode_status(kStatusOfElement1, table[1], &status.status[kStatusOfElement0.size()]);
  for (std::size_t i = 0; i < std::size(status.triple); ++i) {
    decode_status(kTriple, table[kFirstTriple + i], status.triple[i]);
  }
  for (std::size_t i = 0; i < std::size(status.point); ++i) {
    decode_status(kPoint, table[kFirstPoint + i], status.point[i]);
  }
}

}  // namespace vq3900
