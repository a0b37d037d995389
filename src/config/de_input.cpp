#include "config/de_input.h"

#include <array>
#include <cmath>

#include "config/units.h"
#include "modules/fixed_point.h"

namespace vq3900 {

namespace {

// --- section mode

using Mode = DeInputMode;

constexpr auto kModeKeys = std::to_array<Key<Mode>>({
    key<KeyType::kVersion, &Mode::version>("version"),
    key<KeyType::kUint32, &Mode::record, &dpu_mode::laser_type>("laser_type"),
    text<&Mode::record, &dpu_mode::dpu_desc>("dpu_desc", "dpu_desc is longer than 16 bytes"),
    list<&Mode::record, &dpu_mode::in_ir_res>("in_ir_res", "string to arrary in_ir_res error"),
    list<&Mode::record, &dpu_mode::rectify_out_valid_res>("rectify_out_valid_res",
                                                          "string to arrary rectify_out_valid_res error"),
    list<&Mode::record, &dpu_mode::chop_out_res>("chop_out_res", "string to arrary chop_out_res error"),
});

// --- section basic

using Basic = DeInputBasic;

// The device's depth units in the order of their shift codes.
constexpr std::array kDepthUnits{0.1, 0.2, 0.4, 0.8, 1.6};
constexpr double kDepthUnitTolerance = 0.0001;

bool read_depth_unit(Basic& basic, std::string_view value) {
  const double unit = widen(read_float(value));
  for (std::size_t code = 0; code < kDepthUnits.size(); ++code) {
    if (std::fabs(unit - kDepthUnits[code]) < kDepthUnitTolerance) {
      basic.depth_unit = static_cast<std::uint8_t>(code);
      return true;
    }
  }
  return false;
}

constexpr auto kBasicKeys = std::to_array<Key<Basic>>({
    key<KeyType::kUint8, &Basic::cam_mode>("cam_mode"),
    optional(key<KeyType::kUint8, &Basic::depth_mode>("depth_mode"),
             [](Basic& basic) { basic.depth_mode = static_cast<std::uint8_t>(basic.cam_mode); }),
    key<KeyType::kBool, &Basic::upsample_enable>("upsample_enable"),
    key<KeyType::kUint8, &Basic::scale_mode>("scale_mode"),
    key<KeyType::kUint8, &Basic::rectify_mode>("rectify_mode"),
    key<KeyType::kUint8, &Basic::distort_type>("distort_type"),
    key<KeyType::kBool, &Basic::rotate_90_en>("rotate_90_en"),
    key<KeyType::kBool, &Basic::rotate_clockwise>("rotate_clockwise"),
    key<KeyType::kBool, &Basic::sbg_en>("sbg_en"),
    key<KeyType::kUint8, &Basic::sub_mode_sel>("sub_mode_sel"),
    key<KeyType::kUint32, &Basic::start_rows>("start_rows"),
    key<KeyType::kInt32, &Basic::d2c_buffer_position>("d2c_buffer_position"),
    key<KeyType::kInt32, &Basic::d2c_total_buffer_rows>("d2c_total_buffer_rows"),
    key<KeyType::kUint8, &Basic::d2c_recovery_mode>("d2c_recovery_mode"),
    key<KeyType::kFloat, &Basic::d2c_recovery_expand_width>("d2c_recovery_expand_width"),
    key<KeyType::kInt32, &Basic::depth_sign>("depth_sign"),  // the low byte is kept
    Key<Basic>{"depth_unit", KeyType::kFloat, 1, read_depth_unit, "depth_unit parse error"},
});

// --- section disparity

using Disparity = DeInputDisparity;

constexpr auto kDisparityKeys = std::to_array<Key<Disparity>>({
    key<KeyType::kInt, &Disparity::min_disparity>("min_disparity"),
    key<KeyType::kUint8, &Disparity::pre_win_size>("pre_win_size"),
    key<KeyType::kInt, &Disparity::win_size>("win_size"),
    key<KeyType::kInt, &Disparity::cost_strong_t>("cost_strong_t"),
    key<KeyType::kInt, &Disparity::cost_weak_t>("cost_weak_t"),
    key<KeyType::kInt, &Disparity::conf_region_t>("conf_region_t"),
    key<KeyType::kInt, &Disparity::conf_strong_t>("conf_strong_t"),
    key<KeyType::kInt, &Disparity::conf_grow_t>("conf_grow_t"),
    key<KeyType::kInt, &Disparity::grow_disp_diff_thr>("grow_disp_diff_thr"),
    key<KeyType::kBool, &Disparity::lrc_en>("lrc_en"),
    key<KeyType::kInt, &Disparity::lrc_thresh>("lrc_thresh"),
    key<KeyType::kBool, &Disparity::shadow_en>("shadow_en"),
    key<KeyType::kBool, &Disparity::shadow_ring_base>("shadow_ring_base"),
    key<KeyType::kInt, &Disparity::shadow_win_size>("shadow_win_size"),
    key<KeyType::kInt, &Disparity::shadow_smooth_size>("shadow_smooth_size"),
    key<KeyType::kInt, &Disparity::shadow_tex_thresh>("shadow_tex_thresh"),
    key<KeyType::kInt, &Disparity::shadow_diff_per>("shadow_diff_per"),
    key<KeyType::kInt, &Disparity::shadow_edge_preserving>("shadow_edge_preserving"),
    key<KeyType::kInt, &Disparity::cost_shadow1_t>("cost_shadow1_t"),
    key<KeyType::kInt, &Disparity::cost_shadow2_t>("cost_shadow2_t"),
    key<KeyType::kInt, &Disparity::arm_len>("arm_len"),
    key<KeyType::kBool, &Disparity::arm_short_en>("arm_short_en"),
    key<KeyType::kInt, &Disparity::arm_short_mask>("arm_short_mask"),
    key<KeyType::kInt, &Disparity::tile_width>("tile_width"),
    key<KeyType::kInt, &Disparity::tile_overlap_x>("tile_overlap_x"),
    key<KeyType::kInt, &Disparity::tile_overlap_x_fast>("tile_overlap_x_fast"),
    // "tile_overlap_y", which old files carry in its place, is never read: without this key the load fails.
    key<KeyType::kInt, &Disparity::tile_overlap_y_traverse>("tile_overlap_y_traverse"),
    key<KeyType::kInt, &Disparity::max_see_num>("max_see_num"),
    key<KeyType::kInt, &Disparity::max_seed_try_num>("max_seed_try_num"),
    key<KeyType::kInt, &Disparity::max_seed_valid_try_num>("max_seed_valid_try_num"),
    key<KeyType::kBool, &Disparity::smooth_enable>("smooth_enable"),
    key<KeyType::kUint8, &Disparity::smooth_win_size>("smooth_win_size"),
    list<&Disparity::sp_coef>("sp_coef", "string to arrary sp_coef error"),
});

// --- section extend_chop

using ExtendChop = DeInputExtendChop;

constexpr const char* kExtendFault = "string to arrary extend error";  // whichever of the three it was

constexpr auto kExtendChopKeys = std::to_array<Key<ExtendChop>>({
    list<&ExtendChop::extend_tar>("extend_tar", kExtendFault),
    list<&ExtendChop::extend_ref>("extend_ref", kExtendFault),
    list<&ExtendChop::chop>("chop", kExtendFault),
});

// --- section gpm

using Gpm = DeInputGpm;

bool read_ref_dy_tolerance(Gpm& gpm, std::string_view value) {
  gpm.gp_ref_dy_t = read_int(value);
  gpm.gp_ref_dy_t_neg = static_cast<std::int32_t>(0U - static_cast<std::uint32_t>(gpm.gp_ref_dy_t));
  return true;
}

constexpr auto kGpmKeys = std::to_array<Key<Gpm>>({
    key<KeyType::kBool, &Gpm::enable>("enable"),
    list<&Gpm::x>("x", "string to arrary x_coordinate error"),
    list<&Gpm::y>("y", "string to arrary y_coordinate error"),
    list<&Gpm::enable_bits_per_row>("enable_bits_per_row",
                                    "string to arrary y_coordinate error"),  // names y, not itself
    key<KeyType::kInt, &Gpm::texture_t0>("texture_t0"),
    key<KeyType::kInt, &Gpm::texture_t1>("texture_t1"),
    key<KeyType::kInt, &Gpm::active_t>("active_t"),
    key<KeyType::kInt, &Gpm::ncost_t>("ncost_t"),
    key<KeyType::kUint8, &Gpm::hist_dy_dist>("hist_dy_dist"),
    Key<Gpm>{"gp_ref_dy_t", KeyType::kInt, 1, read_ref_dy_tolerance},
    key<KeyType::kUint8, &Gpm::gp_enabled_cols>("gp_enabled_cols"),
});

// --- section scheme

using Scheme = DeInputScheme;

std::uint32_t nearest_multiple(float value, std::int64_t step) {
  const double steps = std::round(widen(value) / static_cast<double>(step));
  return static_cast<std::uint32_t>(static_cast<std::uint64_t>(to_integer(steps)) * static_cast<std::uint64_t>(step));
}

bool read_disp_offset(Scheme& scheme, std::string_view value) {
  scheme.record.disp_offset = nearest_multiple(read_float(value), 10);
  return true;
}

bool read_ref_dist(Scheme& scheme, std::string_view value) {
  scheme.record.ref_dist = nearest_multiple(read_float(value), 100);
  return true;
}

bool read_unit_in_r(Scheme& scheme, std::string_view value) {
  const bool in_r = read_uint8(value) != 0;
  scheme.record.d2d_params_unit = in_r ? hundredfold(scheme.d2d_params_unit) : 0;
  return true;
}

// A bit of the scheme's flags takes the lowest bit of its key's value.
template <unsigned Bit>
void set_flag(Scheme& scheme, std::uint32_t value) {
  scheme.record.scheme_flags = set_reg_field(value, scheme.record.scheme_flags, 1U << Bit);
}

template <unsigned Bit>
bool read_flag(Scheme& scheme, std::string_view value) {
  set_flag<Bit>(scheme, read_uint8(value));
  return true;
}

template <unsigned Bit>
constexpr Key<Scheme> flag(const char* name) {
  return {name, KeyType::kUint8, 1, read_flag<Bit>, nullptr, [](Scheme& scheme) { set_flag<Bit>(scheme, 0); }};
}

constexpr auto kSchemeKeys = std::to_array<Key<Scheme>>({
    {"disp_offset", KeyType::kFloat, 1, read_disp_offset, nullptr, [](Scheme& s) { s.record.disp_offset = 0; }},
    optional(key<KeyType::kFloat, &Scheme::d2d_params_unit>("d2d_params_unit"),
             [](Scheme& s) { s.record.d2d_params_unit = 0; }),
    {"d2d_params_unit_in_R_en", KeyType::kUint8, 1, read_unit_in_r, nullptr, nullptr, "d2d_params_unit"},
    {"ref_dist", KeyType::kFloat, 1, read_ref_dist, nullptr, [](Scheme& s) { s.record.ref_dist = 0; }},
});

// Bits 0 and 1 of the scheme's flags come from section basic, these from keys of their own.
constexpr auto kSchemeFlagKeys = std::to_array<Key<Scheme>>({
    flag<2>("mono_lut_sbg2r"),
    flag<3>("mono_lut_rectify"),
    flag<4>("hw_d2d_en"),
    flag<5>("mipi_channel_status"),
});

std::optional<std::string> read_scheme(const IniSection& ini, const DeInputBasic& basic, Scheme& scheme) {
  if (auto fault = read_section(kSchemeKeys, ini, "scheme", scheme)) return fault;
  set_flag<0>(scheme, basic.distort_type);
  set_flag<1>(scheme, basic.sbg_en);
  return read_section(kSchemeFlagKeys, ini, "scheme", scheme);
}

// The three lists are stored together or not at all.
std::optional<std::string> read_extend_chop(const IniSection& ini, ExtendChop& extend_chop) {
  ExtendChop read;
  auto fault = read_section(kExtendChopKeys, ini, "extend_chop", read);
  if (!fault) extend_chop = read;
  return fault;
}

}  // namespace

LoadResult read_de_input(const IniDocument& document, DeInputConfig& config) {
  if (document.section("mode").empty()) return {};
  for (const char* const name : {"mode", "basic", "disparity", "extend_chop", "gpm"}) {
    if (document.section(name).empty()) return {VQ3900_LOAD_NO_SECTION, std::string(name) + " section not found!"};
  }

  config.mode = {};
  if (auto fault = read_section(kModeKeys, document.section("mode"), "mode", config.mode))
    return {VQ3900_LOAD_MODE, *fault};

  config.basic = {};
  config.disparity = {};
  config.extend_chop = {};
  config.gpm = {};
  if (auto fault = read_section(kBasicKeys, document.section("basic"), "basic", config.basic))
    return {VQ3900_LOAD_BASIC, *fault};
  if (auto fault = read_section(kDisparityKeys, document.section("disparity"), "disparity", config.disparity)) {
    return {VQ3900_LOAD_DISPARITY, *fault};
  }
  if (auto fault = read_extend_chop(document.section("extend_chop"), config.extend_chop))
    return {VQ3900_LOAD_EXTEND_CHOP, *fault};
  if (auto fault = read_section(kGpmKeys, document.section("gpm"), "gpm", config.gpm)) return {VQ3900_LOAD_GPM, *fault};

  config.scheme = {};
  const IniSection scheme = document.section("scheme");
  if (scheme.empty()) return {};
  if (auto fault = read_scheme(scheme, config.basic, config.scheme)) return {VQ3900_LOAD_SCHEME, *fault};
  return {};
}

std::vector<KeyDescription> de_input_keys() {
  std::vector<KeyDescription> keys;
  describe_keys("mode", kModeKeys, keys);
  describe_keys("basic", kBasicKeys, keys);
  describe_keys("disparity", kDisparityKeys, keys);
  describe_keys("extend_chop", kExtendChopKeys, keys);
  describe_keys("gpm", kGpmKeys, keys);
  describe_keys("scheme", kSchemeKeys, keys);
  describe_keys("scheme", kSchemeFlagKeys, keys);
  return keys;
}

}  // namespace vq3900
