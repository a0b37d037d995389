// Setters, getters and converters of the blocks.
#include "stateful_steps.h"

namespace vq3900::fuzz {

namespace {

// --- basic

void set_mode(World& world) {
  const auto mode = world.rarely() ? world.take<std::int32_t>() : world.take<std::uint8_t>() % 3;
  expect_refused_if(mode != 0 && mode != 1, set_camera_mode(mode, world.take<std::uint8_t>()));
}

void set_image(World& world) {
  require(set_upsample(world.take<std::uint8_t>() % 3, world.take<std::uint32_t>()) == VQ3900_OK);
  require(set_input_ir_resolution(world.take<std::uint32_t>()) == VQ3900_OK);
  require(set_ref_plane_dist(real<float>(world)) == VQ3900_OK);
}

void set_geometry(World& world) {
  const auto [baseline, focal_length] = reals<float, 2>(world);
  expect_one_of(set_pbf_params(baseline, focal_length), {0, -2});
}

void ask_basic(World& world) {
  fetch(world, get_camera_mode);
  fetch(world, get_scale_mode);
  fetch(world, get_ref_plane_dist);
  fetch(world, get_pbf);
  static_cast<void>(get_upsample());
}

void convert_basic(World&) {
  require(convert_basic_config_to_registers() == VQ3900_OK);
}

void decode_basic(World&) {
  require(convert_basic_register_to_params() == VQ3900_OK);
}

// --- D2C and D2D

void set_projection(World& world) {
  const auto depth = reals<float, 4>(world);
  const auto color = reals<float, 4>(world);
  const auto pose = reals<float, 12>(world);
  const float* const given = world.rarely() ? nullptr : pose.data();
  expect_refused_if(given == nullptr, set_d2c_calib_params(depth.data(), color.data(), given));
}

void configure_d2c(World& world) {
  const auto mode = world.rarely() ? world.take<std::int32_t>() : world.take<std::uint8_t>() % 4;
  const auto width = real<float>(world);
  const auto position = world.take<std::uint32_t>();
  const auto rows = world.take<std::uint32_t>();
  require(set_d2c_config(mode, width, position, rows, world.take<std::int32_t>()) == VQ3900_OK);
  expect_one_of(set_d2c_params(mode, width, position, rows), {0, -2});
}

void ask_d2c(World& world) {
  D2cConfig config{};
  std::array<double, 12> w{};
  double* const given = world.rarely() ? nullptr : w.data();
  expect_refused_if(given == nullptr, get_d2c_params(&config, given));
}

void convert_d2c(World&) {
  require(convert_d2c_ctrl_to_register_elements() == VQ3900_OK);
  expect_one_of(convert_d2c_params_to_register_elements(), {0, 4096});
}

void decode_d2c(World&) {
  require(convert_W_mat_register_to_float() == VQ3900_OK);
  require(convert_d2c_register_to_params_cfg() == VQ3900_OK);
}

void set_d2d(World& world) {
  const auto shift = static_cast<std::uint8_t>(world.take<std::uint8_t>() % 8);
  expect_refused_if(shift > 4, set_d2d_unit(shift));
  set_hw_d2d_enable((world.take<std::uint8_t>() & 1) != 0);
}

void convert_d2d(World&) {
  require(convert_d2d_config_to_register_element() == VQ3900_OK);
  expect_one_of(convert_d2d_params_to_register_elements(), {0, 4096});
}

void decode_d2d(World&) {
  require(convert_d2d_register_to_config() == VQ3900_OK);
}

// --- disparity

void set_matcher(World& world) {
  require(set_depth_engine_win_size(world.take<std::uint32_t>()) == VQ3900_OK);
  require(set_min_disp(world.take<std::int8_t>()) == VQ3900_OK);
  require(set_lrc_params(world.take<DeLrcParams_S>()) == VQ3900_OK);
  const auto coefficients = reals<double, 4>(world);
  const double* const given = world.rarely() ? nullptr : coefficients.data();
  expect_refused_if(given == nullptr, set_subpixel_coef(given));
}

void ask_matcher(World& world) {
  fetch(world, get_depth_engine_win_size);
  fetch(world, get_min_disp);
  fetch(world, get_grow_match_params);
  fetch(world, get_shadow_check_params);
  fetch(world, get_arm_short_params);
  fetch(world, get_tile_width_overlap);
  fetch(world, get_seed_params);
  fetch(world, get_lrc_params);
  fetch(world, get_smoothfilter_params);
  std::array<double, 4> coefficients{};
  double* array = world.rarely() ? nullptr : coefficients.data();
  double** const given = or_null(world, array);
  expect_refused_if(given == nullptr || array == nullptr, get_subpixel_coef(given));
}

void convert_matcher(World&) {
  require(convert_calc_disp_float_to_registers() == VQ3900_OK);
}

void decode_matcher(World&) {
  require(convert_calc_disp_registers_to_float() == VQ3900_OK);
}

// --- prefilter and extend-chop

void set_prefilter(World& world) {
  const auto size = world.rarely() ? world.take<std::int32_t>() : 4 + world.take<std::uint8_t>() % 6;
  expect_refused_if(size != 5 && size != 7 && size != 9,
                    set_prefilter_size_speckleTh(size, world.take<std::uint8_t>()));
}

void set_extend_chop(World& world) {
  const auto ref = world.take<std::array<std::int32_t, 4>>();
  const auto tar = world.take<std::array<std::int32_t, 4>>();
  const auto chop = world.take<std::array<std::int32_t, 4>>();
  const std::int32_t* const given = world.rarely() ? nullptr : chop.data();
  expect_one_of(set_extend_chop_params(ref.data(), tar.data(), given), {0, -2, -4});
}

void ask_image(World& world) {
  std::uint32_t size = 0;
  std::uint8_t threshold = 0;
  std::uint8_t* const given = or_null(world, threshold);
  expect_refused_if(given == nullptr, get_prefilter_size_speckleTh(&size, given));
  fetch(world, get_prefilter_img_size);
  std::array<std::int32_t, 4> tar{};
  std::array<std::int32_t, 4> chop{};
  std::int32_t* const wanted = world.rarely() ? nullptr : chop.data();
  expect_refused_if(wanted == nullptr, get_extend_chop_params(tar.data(), wanted));
}

void convert_image(World&) {
  require(convert_prefilter_float_to_registers() == VQ3900_OK);
  require(convert_extend_chop_float_to_registers() == VQ3900_OK);
}

void decode_image(World&) {
  require(convert_prefilter_registers_to_float() == VQ3900_OK);
  require(convert_extend_chop_registers_to_float() == VQ3900_OK);
}

// --- global points

void set_points(World& world) {
  require(set_gpm_enable(world.take<std::uint32_t>()) == VQ3900_OK);
  const auto x = world.take<std::array<std::int32_t, 16>>();
  const auto y = world.take<std::array<std::int32_t, 16>>();
  const std::int32_t* const columns = world.rarely() ? nullptr : x.data();
  expect_refused_if(columns == nullptr, set_x_y_coordinates(columns, y.data()));
  const auto rows = world.take<std::array<std::uint16_t, 16>>();
  const std::uint16_t* const patterns = world.rarely() ? nullptr : rows.data();
  expect_refused_if(patterns == nullptr, set_gpm_enable_columns(patterns, world.take<std::uint8_t>()));
  const auto config = world.take<DeGpmConfig_S>();
  const DeGpmConfig_S* const given = or_null(world, config);
  expect_refused_if(given == nullptr, set_gpm_config(given, world.take<std::uint8_t>()));
}

void ask_points(World& world) {
  fetch(world, get_gpm_params);
  DeGpStatusParams_S status{};
  void* const whole = world.rarely() ? nullptr : &status;
  expect_refused_if(whole == nullptr, get_global_points_status(whole));
  std::array<std::uint8_t, 3> first{};
  void* const part = world.rarely() ? nullptr : first.data();
  expect_refused_if(part == nullptr, de_copy_gp_status_params(part));
  require(de_update_gp_status_params() == VQ3900_ERROR_TRANSFER);
}

void convert_points(World&) {
  require(convert_gpm_float_to_registers() == VQ3900_OK);
}

void decode_points(World&) {
  require(convert_gpm_registers_to_float() == VQ3900_OK);
  require(convert_gp_status_registers_to_float() == VQ3900_OK);
}

constexpr std::array kSteps = std::to_array<Step>({
    set_mode,
    set_image,
    set_geometry,
    ask_basic,
    convert_basic,
    decode_basic,
    [](World& world) { store(world, de_update_basic_params); },
    [](World& world) { fetch(world, de_copy_basic_params); },
    set_projection,
    configure_d2c,
    ask_d2c,
    convert_d2c,
    decode_d2c,
    [](World& world) { store(world, de_update_d2c_config); },
    [](World& world) { fetch(world, de_copy_d2c_config); },
    set_d2d,
    convert_d2d,
    decode_d2d,
    [](World& world) { store(world, de_update_d2d_config); },
    [](World& world) { fetch(world, get_d2d_config); },
    set_matcher,
    ask_matcher,
    convert_matcher,
    decode_matcher,
    [](World& world) { store(world, set_grow_match_params); },
    [](World& world) { store(world, set_shadow_check_params); },
    [](World& world) { store(world, set_arm_short_params); },
    [](World& world) { store(world, set_tile_width_overlap); },
    [](World& world) { store(world, set_seed_params); },
    [](World& world) { store(world, set_smoothfilter_params); },
    [](World& world) { store(world, de_update_disp_calc_params); },
    [](World& world) { fetch(world, de_copy_disp_calc_params); },
    set_prefilter,
    set_extend_chop,
    ask_image,
    convert_image,
    decode_image,
    [](World& world) { store(world, de_update_prefilter_params); },
    [](World& world) { fetch(world, de_copy_prefilter_params); },
    [](World& world) { store(world, de_update_extend_chop_params); },
    [](World& world) { fetch(world, de_copy_extend_chop_params); },
    set_points,
    ask_points,
    convert_points,
    decode_points,
    [](World& world) { store(world, de_update_gpm_params); },
    [](World& world) { fetch(world, de_copy_gpm_params); },
});

}  // namespace

std::span<const Step> block_steps() {
  return kSteps;
}

}  // namespace vq3900::fuzz
