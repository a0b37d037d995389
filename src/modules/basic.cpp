#include "modules/basic.h"

#include <array>
#include <cstdint>

#include "modules/d2d.h"

namespace vq3900 {

namespace {

using Params = DeBasicParams_S;

consteval std::uint8_t at(std::uint32_t address) {
  return element_at(startup::kBasicCtrl, address);
}

constexpr auto kFields = std::to_array<Field<Params>>({
    write_only(integer<&Params::cam_mode>("cam_mode", at(0x50001000), 0x00010000)),
    // Comes back from the bit that the D2C control writes depth_mode to.
    read_only(integer<&Params::cam_mode>("cam_mode", at(0x50001200), 0x80000000)),
    integer<&Params::upsample_enable>("upsample_enable", at(0x50001000), 0x00001000),
    integer<&Params::upsample_main_en>("upsample_main_en", at(0x50001028), 0x00004000),
    read_only(integer<&Params::upsample_aux_en>("upsample_aux_en", at(0x50001028), 0x00008000)),
    integer<&Params::scale_mode>("scale_mode", at(0x50001000), 0x00000030),
});
static_assert(well_formed(kFields, startup::kBasicCtrl));

constexpr auto kStereoFields = std::to_array<Field<Params>>({
    write_only(integer<&Params::upsample_main_en>("upsample_main_en", at(0x50001000), 0x00002000)),
    write_only(integer<&Params::upsample_aux_en>("upsample_aux_en", at(0x50001028), 0x00008000)),
});
static_assert(well_formed(kStereoFields, startup::kBasicCtrl));

}  // namespace

std::span<const Field<DeBasicParams_S>> basic_fields() {
  return kFields;
}

std::span<const Field<DeBasicParams_S>> basic_stereo_fields() {
  return kStereoFields;
}

void encode_basic(const DeBasicParams_S& params, RegisterTables& tables) {
  encode_fields(kFields, params, tables.basic_ctrl, nullptr);
  if (params.cam_mode == 1) encode_fields(kStereoFields, params, tables.basic_ctrl, nullptr);
}

void decode_basic(const RegisterTables& tables, DeBasicParams_S& params) {
  decode_fields(kFields, tables.basic_ctrl, params);
  const DepthConstants constants = decode_depth_constants(tables);
  if (params.cam_mode == 0) params.ref_plane_dist = static_cast<float>(1.0 / constants.inverse_reference);
  params.pbf = static_cast<float>(constants.pbf);
}

float pixel_baseline_factor(float baseline, float focal_length_pix) {
  const float product = baseline * focal_length_pix;
  return static_cast<float>(1.0 / widen(product));
}

}  // namespace vq3900
