#include "config/calib_input.h"

#include <array>
#include <cmath>

#include "modules/fixed_point.h"

namespace vq3900 {

namespace {

using Config = CalibInputConfig;

// Optional keys whose absence stores a whole number.
template <KeyType Type, int Default, auto... Path>
constexpr Key<Config> key_or(const char* name) {
  return optional(key<Type, Path...>(name), [](Config& config) {
    auto& member = walk<Path...>(config);
    member = static_cast<std::remove_reference_t<decltype(member)>>(Default);
  });
}

// A chop is written as a number and truncated towards zero to 16 bits.
template <auto Member>
constexpr Key<Config> chop(const char* name) {
  return {name,
          KeyType::kFloat,
          1,
          [](Config& config, std::string_view text) {
            config.*Member = static_cast<std::int16_t>(to_integer(widen(read_float(text))));
            return true;
          },
          nullptr,
          [](Config& config) { config.*Member = 0; }};
}

constexpr auto kBasicKeys = std::to_array<Key<Config>>({
    key<KeyType::kFloat, &Config::baseline>("baseline"),
    key<KeyType::kFloat, &Config::ref_dist>("ref_dist"),
    key<KeyType::kUint8, &Config::cam_type>("cam_type"),
    key<KeyType::kUint8, &Config::mirrored>("mirrored"),
    key_or<KeyType::kUint8, 0, &Config::mipi_channel_status>("mipi_channel_status"),
});

constexpr auto kRectifyKeys = std::to_array<Key<Config>>({
    key<KeyType::kUint8, &Config::distort_type>("distort_type"),
    key<KeyType::kUint8, &Config::rotate_type>("rotate_type"),
    key_or<KeyType::kFloat, 1, &Config::src_img_scale>("src_img_scale"),
    chop<&Config::src_img_left_chop>("src_img_left_chop"),
    chop<&Config::src_img_right_chop>("src_img_right_chop"),
    chop<&Config::src_img_top_chop>("src_img_top_chop"),
    chop<&Config::src_img_bottom_chop>("src_img_bottom_chop"),
    key<KeyType::kFloat, &Config::dst_focal_scale>("dst_focal_scale"),
    key_or<KeyType::kUint8, 0, &Config::dst_res_fixed>("dst_res_fixed"),
    key<KeyType::kInt, &Config::lut_sample_bit>("lut_sample_bit"),
    key<KeyType::kFloat, &Config::lut_extend_ratio>("lut_extend_ratio"),
    key_or<KeyType::kFloat, 0, &Config::ir_l_comp_coeff>("ir_l_comp_coeff"),
    key_or<KeyType::kFloat, 0, &Config::ir_r_comp_coeff>("ir_r_comp_coeff"),
    key_or<KeyType::kFloat, 0, &Config::ldm_comp_coeff>("ldm_comp_coeff"),
    key_or<KeyType::kFloat, 0, &Config::ir_l_virtual_cx_offset>("ir_l_virtual_cx_offset"),
    key_or<KeyType::kFloat, 0, &Config::ir_r_virtual_cx_offset>("ir_r_virtual_cx_offset"),
    key_or<KeyType::kFloat, 0, &Config::ir_virtual_cy_offset>("ir_virtual_cy_offset"),
});

// A unit of (almost) nothing means one: it never stays zero.
void never_zero(Config& config) {
  if (std::fabs(widen(config.d2d_params_unit)) < 1e-5) config.d2d_params_unit = 1.0F;
}

// The mode that a camera type implies; a type that is not known leaves the mode of an earlier load.
void default_depth_mode(Config& config) {
  if (config.cam_type <= 1) config.depth_mode = 0;
  if (is_stereo_camera_type(config.cam_type)) config.depth_mode = 1;
}

constexpr auto kD2dKeys = std::to_array<Key<Config>>({
    key_or<KeyType::kFloat, 0, &Config::disp_offset>("disp_offset"),
    key_or<KeyType::kInt32, 0, &Config::invalid_disp>("invalid_disp"),
    {"d2d_params_unit",
     KeyType::kFloat,
     1,
     [](Config& config, std::string_view text) {
       config.d2d_params_unit = read_float(text);
       never_zero(config);
       return true;
     },
     nullptr,
     [](Config& config) { config.d2d_params_unit = 1.0F; }},
    optional(key<KeyType::kInt8, &Config::depth_mode>("depth_mode"), default_depth_mode),
});

constexpr auto kD2cKeys = std::to_array<Key<Config>>({
    key<KeyType::kInt, &Config::clip_left_w_depth>("clip_left_w_depth"),
    key<KeyType::kInt, &Config::clip_top_h_depth>("clip_top_h_depth"),
    key<KeyType::kInt, &Config::clip_right_w_depth>("clip_right_w_depth"),
    key<KeyType::kInt, &Config::clip_bottom_h_depth>("clip_bottom_h_depth"),
    key<KeyType::kFloat, &Config::depth_scale>("depth_scale"),
    key<KeyType::kInt, &Config::clip_left_w_valid>("clip_left_w_valid"),
    key<KeyType::kInt, &Config::clip_top_h_valid>("clip_top_h_valid"),
    key<KeyType::kInt, &Config::clip_right_w_valid>("clip_right_w_valid"),
    key<KeyType::kInt, &Config::clip_bottom_h_valid>("clip_bottom_h_valid"),
    key<KeyType::kFloat, &Config::valid_scale>("valid_scale"),
    key<KeyType::kInt, &Config::clip_left_w_rgb>("clip_left_w_rgb"),
    key<KeyType::kInt, &Config::clip_top_h_rgb>("clip_top_h_rgb"),
    key<KeyType::kInt, &Config::clip_right_w_rgb>("clip_right_w_rgb"),
    key<KeyType::kInt, &Config::clip_bottom_h_rgb>("clip_bottom_h_rgb"),
    key_or<KeyType::kInt8, 0, &Config::d2d_params_unit_in_R_en>("d2d_params_unit_in_R_en"),
});

}  // namespace

std::optional<std::string> read_calib_input(const IniDocument& document, CalibInputConfig& config) {
  for (const char* const name : {"basic", "rectify", "d2d", "d2c"}) {
    if (document.section(name).empty()) return std::string(name) + " section not found!";
  }
  const auto read = [&](const auto& keys, const char* name) {
    return read_section(keys, document.section(name), name, config, MissingKey::kQuotedFault);
  };
  if (auto fault = read(kBasicKeys, "basic")) return fault;
  if (auto fault = read(kRectifyKeys, "rectify")) return fault;
  if (auto fault = read(kD2dKeys, "d2d")) return fault;
  return read(kD2cKeys, "d2c");
}

std::vector<KeyDescription> calib_input_keys() {
  std::vector<KeyDescription> keys;
  describe_keys("basic", kBasicKeys, keys);
  describe_keys("rectify", kRectifyKeys, keys);
  describe_keys("d2d", kD2dKeys, keys);
  describe_keys("d2c", kD2cKeys, keys);
  return keys;
}

}  // namespace vq3900
