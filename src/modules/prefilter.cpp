#include "modules/prefilter.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace vq3900 {

namespace {

using Params = DePrefilterParams_S;

consteval std::uint8_t at(std::uint32_t address) {
  return element_at(startup::kPrefilter, address);
}

constexpr auto kFields = std::to_array<Field<PrefilterState>>({
    constant<PrefilterState, 1>("constant", at(0x50001080), 0x10000000),
    derived<PrefilterState>("pre_win_size^2", at(0x50001080), 0x0FF00000,
                            [](const PrefilterState& prefilter) {
                              const double side = prefilter.params.pre_win_size;
                              return side * side;
                            }),
    integer<&PrefilterState::params, &Params::pre_win_size>("pre_win_size", at(0x50001080), 0x000F0000),
    integer<&PrefilterState::image_width>("image_width", at(0x500010D0), 0x00FFF000),
    integer<&PrefilterState::image_height>("image_height", at(0x500010D0), 0x00000FFF),
    derived<PrefilterState>("image_width * image_height", at(0x500010D4), 0xFFFFFFFF,
                            [](const PrefilterState& prefilter) {
                              const double width = prefilter.image_width;
                              return width * prefilter.image_height;
                            }),
});
static_assert(well_formed(kFields, startup::kPrefilter));

constexpr auto kSetFields = std::to_array<Field<CoefficientSet>>({
    write_only(integer<&CoefficientSet::size_code>("size_code", at(0x50001080), 0x00007FFF)),
});
static_assert(well_formed(kSetFields, startup::kPrefilter));
static_assert(disjoint(kFields, kSetFields));

constexpr std::uint8_t kFirstCoefficient = at(0x50001084);

constexpr std::array kCoefficientSets{
    CoefficientSet{5, 0x34, {0x21D3019C, 0x1EEC5782, 0x06D78588, 0x1870D763, 0x25CAC26A, 0x55555555}},
    CoefficientSet{7,
                   0x3A0,
                   {0x16BA2FDE,
                    0x18AC1B10,
                    0x11F4E3CF,
                    0x1667058C,
                    0x039FBFC9,
                    0x1A70855A,
                    0x148FBE2A,
                    0x042DBABA,
                    0x29DCBECF,
                    0x3CF3CF3C}},
    CoefficientSet{9,
                   0x7300,
                   {0x10D97EFA,
                    0x12F90ED0,
                    0x124A2A95,
                    0x12F9925A,
                    0x0DA35BBF,
                    0x01F0E01E,
                    0x11BD10E5,
                    0x07C38F18,
                    0x0AB80EFF,
                    0x1DD2BEC4,
                    0x11059EF7,
                    0x05131DFB,
                    0x10420E02,
                    0x260DE270,
                    0x2F684BDA}},
};

const CoefficientSet* find_set(std::int32_t size) {
  const auto* const found = std::find_if(
      kCoefficientSets.begin(), kCoefficientSets.end(), [size](const CoefficientSet& set) { return set.size == size; });
  return found == kCoefficientSets.end() ? nullptr : found;
}

}  // namespace

bool prefilter_size_supported(std::int32_t size) {
  return find_set(size) != nullptr;
}

ImageSize prefilter_image_size(const DeBasicParams_S& basic) {
  // Upsampling doubles the resolution as it comes in: it takes the place of the rotation.
  if (basic.upsample_enable != 0) {
    return {static_cast<std::uint16_t>(2U * basic.in_ir_width), static_cast<std::uint16_t>(2U * basic.in_ir_height)};
  }
  if (basic.cam_mode == 0 && basic.sbg2r_rotate != 0) return {basic.in_ir_height, basic.in_ir_width};
  return {basic.in_ir_width, basic.in_ir_height};
}

std::span<const Field<PrefilterState>> prefilter_fields() {
  return kFields;
}

std::span<const Field<CoefficientSet>> coefficient_set_fields() {
  return kSetFields;
}

void encode_prefilter(const PrefilterState& prefilter, RegisterTables& tables) {
  encode_fields(kFields, prefilter, tables.prefilter, nullptr);
  const CoefficientSet* const set = find_set(prefilter.params.pre_win_size);
  if (set == nullptr) return;  // a restored record may hold any size
  encode_fields(kSetFields, *set, tables.prefilter, nullptr);
  for (std::size_t i = 0; i < set->words.size(); ++i)
    tables.prefilter[kFirstCoefficient + i].value = set->words[i];
}

void decode_prefilter(const RegisterTables& tables, PrefilterState& prefilter) {
  decode_fields(kFields, tables.prefilter, prefilter);
}

}  // namespace vq3900
