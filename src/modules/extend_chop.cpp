#include "modules/extend_chop.h"

#include <array>
#include <cstdint>

namespace vq3900 {

namespace {

using State = ExtendChopState;
using Params = DeExtendChopParams_S;

consteval std::uint8_t at(std::uint32_t address) {
  return element_at(startup::kExtendChop, address);
}

// Pixels of the output, in 32-bit unsigned arithmetic.
double output_area(const State& state) {
  const auto chop = [&state](std::size_t i) { return static_cast<std::uint32_t>(state.params.chop[i]); };
  const std::uint32_t height = state.extended_height - chop(3) - chop(2);
  const std::uint32_t width = state.extended_width - chop(1) - chop(0);
  return height * width;
}

// The extended size and the last two target values are not read back: no register holds them as they were set.
constexpr auto kFields = std::to_array<Field<State>>({
    write_only(integer<&State::extended_width>("extended_width", at(0x50001070), 0x00FFF000)),
    write_only(integer<&State::extended_height>("extended_height", at(0x50001070), 0x00000FFF)),
    derived<State>("output_area", at(0x50001074), 0xFFFFFFFF, output_area),
    integer<&State::params, &Params::extend_ref, 0>("extend_ref[0]", at(0x50001078), 0x0FFF0000),
    integer<&State::params, &Params::extend_ref, 1>("extend_ref[1]", at(0x50001078), 0x00000FFF),
    integer<&State::params, &Params::extend_ref, 2>("extend_ref[2]", at(0x5000107C), 0x0FFF0000),
    integer<&State::params, &Params::extend_ref, 3>("extend_ref[3]", at(0x5000107C), 0x00000FFF),
    integer<&State::params, &Params::chop, 0>("chop[0]", at(0x500010C8), 0x0FFF0000),
    integer<&State::params, &Params::chop, 1>("chop[1]", at(0x500010C8), 0x00000FFF),
    integer<&State::params, &Params::chop, 2>("chop[2]", at(0x500010CC), 0x0FFF0000),
    integer<&State::params, &Params::chop, 3>("chop[3]", at(0x500010CC), 0x00000FFF),
    integer<&State::params, &Params::extend_tar, 0>("extend_tar[0]", at(0x500012D4), 0x0FFF0000),
    integer<&State::params, &Params::extend_tar, 1>("extend_tar[1]", at(0x500012D4), 0x00000FFF),
});
static_assert(well_formed(kFields, startup::kExtendChop));

}  // namespace

std::span<const Field<ExtendChopState>> extend_chop_fields() {
  return kFields;
}

void extend_image(const PrefilterState& prefilter, ExtendChopState& extend_chop) {
  const auto target = [&extend_chop](std::size_t i) {
    return static_cast<std::uint32_t>(extend_chop.params.extend_tar[i]);
  };
  extend_chop.extended_width = static_cast<std::uint16_t>(target(0) + target(1) + prefilter.image_width);
  extend_chop.extended_height = static_cast<std::uint16_t>(target(2) + target(3) + prefilter.image_height);
}

void encode_extend_chop(const ExtendChopState& extend_chop, RegisterTables& tables) {
  encode_fields(kFields, extend_chop, tables.extend_chop, nullptr);
}

void decode_extend_chop(const RegisterTables& tables, ExtendChopState& extend_chop) {
  decode_fields(kFields, tables.extend_chop, extend_chop);
}

}  // namespace vq3900
