#include "modules/d2d.h"

namespace vq3900 {

namespace {

constexpr auto kConstantFields = std::to_array<Field<DepthConstants>>({
    fixed<&DepthConstants::inverse_reference>("1 / ref_plane_dist", element_at(startup::kD2d, 0x50001204), 0xFFFFFFFF,
                                              {32, 38, "iZ0"}),
    fixed<&DepthConstants::pbf>("pbf", element_at(startup::kD2d, 0x50001208), 0xFFFFFFFF, {32, 40, "PBF"}),
});
static_assert(well_formed(kConstantFields, startup::kD2d));

// Two fields lie outside the masks of their registers: the device sets them, the library only reads them.
constexpr auto kConfigFields = std::to_array<Field<D2dConfig>>({
    integer<&D2dConfig::unit_shift>("unit_shift", element_at(startup::kBasicCtrl, 0x5000188C), 0x0000000E),
    read_only(integer<&D2dConfig::hw_d2d_enable>("hw_d2d_enable", element_at(startup::kBasicCtrl, 0x5000188C), 0x1)),
    read_only(integer<&D2dConfig::in_R>("in_R", element_at(startup::kBasicCtrl, 0x50001000), 0x00200000)),
});
static_assert(well_formed(kConfigFields, startup::kBasicCtrl));

bool encode_constant(const Field<DepthConstants>& field, const DepthConstants& constants, RegisterTables& tables,
                     OverflowHandler on_overflow) {
  const std::uint32_t bits = encode_bits(field, constants, on_overflow);
  std::uint32_t& value = tables.d2d[field.element].value;
  value = set_reg_field(bits, value, field.mask);
  return bits != kOverflowed;
}

}  // namespace

std::span<const Field<DepthConstants>> depth_constant_fields() {
  return kConstantFields;
}

std::span<const Field<D2dConfig>> d2d_fields() {
  return kConfigFields;
}

bool encode_depth_constants(const DeBasicParams_S& basic, RegisterTables& tables, OverflowHandler on_overflow) {
  const auto& [reference_field, pbf_field] = kConstantFields;
  const DepthConstants constants{1.0 / widen(basic.ref_plane_dist), widen(basic.pbf)};
  bool fits = true;
  if (basic.depth_mode == 0) fits = encode_constant(reference_field, constants, tables, on_overflow);
  return encode_constant(pbf_field, constants, tables, on_overflow) && fits;
}

void clear_depth_constants(RegisterTables& tables) {
  for (const FieldBits& field : kConstantFields)
    tables.d2d[field.element].value = 0;
}

DepthConstants decode_depth_constants(const RegisterTables& tables) {
  DepthConstants constants;
  decode_fields(kConstantFields, tables.d2d, constants);
  return constants;
}

void encode_d2d(const D2dConfig& config, RegisterTables& tables) {
  encode_fields(kConfigFields, config, tables.basic_ctrl, nullptr);
}

void decode_d2d(const RegisterTables& tables, D2dConfig& config) {
  decode_fields(kConfigFields, tables.basic_ctrl, config);
}

}  // namespace vq3900
