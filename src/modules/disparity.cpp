#include "modules/disparity.h"

#include <array>
#include <cstdint>

namespace vq3900 {

namespace {

using Params = DeDispCalcParams_S;

consteval std::uint8_t at(std::uint32_t address) {
  return element_at(startup::kDispCalc, address);
}

// The window's area less its border, in 32-bit unsigned arithmetic: a window of 0 wraps to 1.
double window_area(const Params& params) {
  const std::uint32_t side = params.win_size - 1;
  return side * side;
}

constexpr FixedFormat coefficient(std::uint32_t width, const char* name) {
  return {width, 10, name};
}

constexpr auto kFields = std::to_array<Field<Params>>({
    fixed<&Params::sp_coef, 1>("sp_coef[1]", at(0x500010E0), 0x1FFF0000, coefficient(13, "subpixel_coef_a1")),
    fixed<&Params::sp_coef, 0>("sp_coef[0]", at(0x500010E0), 0x00001FFF, coefficient(13, "subpixel_coef_a0")),
    fixed<&Params::sp_coef, 3>("sp_coef[3]", at(0x500010E4), 0x07FF0000, coefficient(11, "subpixel_coef_a3")),
    fixed<&Params::sp_coef, 2>("sp_coef[2]", at(0x500010E4), 0x00001FFF, coefficient(13, "subpixel_coef_a2")),

    constant<Params, 0x4040>("constant", at(0x500012C0), 0xFFFF0000),
    integer<&Params::tile_overlap_x_fast>("tile_overlap_x_fast", at(0x500012C0), 0x00008000),
    integer<&Params::tile_overlap_x>("tile_overlap_x", at(0x500012C0), 0x00007000),
    integer<&Params::tile_width>("tile_width", at(0x500012C0), 0x00000FFF),

    integer<&Params::max_seed_try_num>("max_seed_try_num", at(0x500012C4), 0xFFF00000),
    integer<&Params::max_seed_valid_try_num>("max_seed_valid_try_num", at(0x500012C4), 0x000FFF00),
    integer<&Params::max_see_num>("max_see_num", at(0x500012C4), 0x000000FF),

    integer<&Params::lrc_en>("lrc_en", at(0x500012C8), 0x80000000),
    integer<&Params::lrc_thresh>("lrc_thresh", at(0x500012C8), 0x30000000),
    constant<Params, 2>("constant", at(0x500012C8), 0x0C000000),
    integer<&Params::grow_disp_diff_thr>("grow_disp_diff_thr", at(0x500012C8), 0x03000000),
    integer<&Params::conf_grow_t>("conf_grow_t", at(0x500012C8), 0x00FF0000),
    integer<&Params::conf_region_t>("conf_region_t", at(0x500012C8), 0x0000FF00),
    integer<&Params::conf_strong_t>("conf_strong_t", at(0x500012C8), 0x000000FF),

    constant<Params, 2>("constant", at(0x500012CC), 0xC0000000),
    constant<Params, 0>("constant", at(0x500012CC), 0x30000000),
    integer<&Params::arm_len>("arm_len", at(0x500012CC), 0x0F000000),
    integer<&Params::cost_weak_t>("cost_weak_t", at(0x500012CC), 0x00FFF000),
    integer<&Params::cost_strong_t>("cost_strong_t", at(0x500012CC), 0x00000FFF),

    integer<&Params::tile_overlap_y_traverse>("tile_overlap_y_traverse", at(0x500012D0), 0xFF000000),
    integer<&Params::cost_shadow2_t>("cost_shadow2_t", at(0x500012D0), 0x00FFF000),
    integer<&Params::cost_shadow1_t>("cost_shadow1_t", at(0x500012D0), 0x00000FFF),

    integer<&Params::shadow_en>("shadow_en", at(0x500012E0), 0x80000000),
    integer<&Params::shadow_ring_base>("shadow_ring_base", at(0x500012E0), 0x40000000),
    integer<&Params::shadow_edge_preserving>("shadow_edge_preserving", at(0x500012E0), 0x007F0000),
    integer<&Params::shadow_diff_per>("shadow_diff_per", at(0x500012E0), 0x00000F00),
    integer<&Params::shadow_tex_thresh>("shadow_tex_thresh", at(0x500012E0), 0x000000FF),

    integer<&Params::shadow_win_size>("shadow_win_size", at(0x500012E4), 0x00001F00),
    integer<&Params::shadow_smooth_size>("shadow_smooth_size", at(0x500012E4), 0x0000000F),

    integer<&Params::smooth_enable>("smooth_enable", at(0x50001008), 0x00010000),
    integer<&Params::smooth_win_size>("smooth_win_size", at(0x50001008), 0x00000F00),

    integer<&Params::win_size>("win_size", at(0x50001030), 0x1F000000),
    fixed<&Params::min_disparity>("min_disparity", at(0x50001030), 0x00FF0000, {8, 0, "min_disp"}),
    derived<Params>("(win_size - 1)^2", at(0x50001030), 0x0000FFF0, window_area),

    // The short-arm rule is never read back: the record keeps what was set.
    write_only(integer<&Params::arm_short_en>("arm_short_en", at(0x50001034), 0x80000000)),
    write_only(integer<&Params::arm_short_mask>("arm_short_mask", at(0x50001034), 0x3FFFFFFF)),
});
static_assert(well_formed(kFields, startup::kDispCalc));

constexpr auto kCtrlFields = std::to_array<Field<Params>>({
    integer<&Params::smooth_enable_flag>("smooth_enable_flag", element_at(startup::kBasicCtrl, 0x50001028), 0x00000400),
});
static_assert(well_formed(kCtrlFields, startup::kBasicCtrl));

}  // namespace

std::span<const Field<DeDispCalcParams_S>> disparity_fields() {
  return kFields;
}

std::span<const Field<DeDispCalcParams_S>> disparity_ctrl_fields() {
  return kCtrlFields;
}

void encode_disparity(const DeDispCalcParams_S& params, RegisterTables& tables, OverflowHandler on_overflow) {
  encode_fields(kFields, params, tables.disp_calc, on_overflow);
  encode_fields(kCtrlFields, params, tables.basic_ctrl, on_overflow);
}

void decode_disparity(const RegisterTables& tables, DeDispCalcParams_S& params) {
  decode_fields(kFields, tables.disp_calc, params);
  decode_fields(kCtrlFields, tables.basic_ctrl, params);
}

}  // namespace vq3900
