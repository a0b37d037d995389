// Setters, getters and converters of the rectification.
#include <algorithm>
#include <vector>

#include "stateful_steps.h"

namespace vq3900::fuzz {

namespace {

std::int32_t some_switch(World& world) {
  return world.rarely() ? world.take<std::int32_t>() : world.take<std::uint8_t>() % 3;
}

void set_switches(World& world) {
  const std::int32_t camera_0 = some_switch(world);
  const std::int32_t camera_1 = world.take<std::uint8_t>() % 2 == 0 ? camera_0 : some_switch(world);
  expect_one_of(set_rectify_status(camera_0, camera_1, world.take<std::uint32_t>()), {0, -2});
  require(set_rectify_common(world.take<std::uint8_t>()) == VQ3900_OK);
}

void set_correction(World& world) {
  const auto type = world.rarely() ? world.take<std::int32_t>() : world.take<std::uint8_t>() % 4;
  expect_one_of(set_rectify_kk_lut(type), {0, -2});
}

void set_rotation(World& world) {
  const auto rotate = world.take<std::int8_t>();
  const auto clockwise = world.take<std::uint8_t>();
  const auto on = world.take<std::uint8_t>();
  expect_one_of(set_rectify_sbg2r_config(rotate, clockwise, on, world.take<std::uint8_t>()), {0, -2});
}

RectifyIntrinsic some_intrinsic(World& world) {
  const auto [fx, fy, cx, cy] = reals<float, 4>(world);
  return {fx, fy, cx, cy, world.take<std::uint16_t>(), world.take<std::uint16_t>()};
}

void set_polynomial(World& world) {
  const RectifyIntrinsic intrinsic = some_intrinsic(world);
  const auto distortion = reals<float, 8>(world);
  const auto rotation = reals<float, 9>(world);
  const auto pinhole = reals<float, 4>(world);
  const auto camera = world.take<std::uint8_t>() % 3U;
  const float* const given = world.rarely() ? nullptr : distortion.data();
  const std::int32_t code = set_rectify_params_brown(camera, &intrinsic, given, rotation.data(), pinhole.data());
  expect_one_of(code, {0, -2});
  require(given != nullptr || code == VQ3900_ERROR_ARGUMENT);
}

// The arrays are as large as the grid says, whatever it says.
void set_grid(World& world) {
  RectifyLutInfo info{};
  info.lut_x_start = world.take<std::uint32_t>();
  info.lut_y_start = world.take<std::uint32_t>();
  info.lut_fx = real<float>(world);
  info.lut_fy = real<float>(world);
  info.lut_cx = real<float>(world);
  info.lut_cy = real<float>(world);
  info.lut_width = world.take<std::uint8_t>() % 40;
  info.lut_height = world.take<std::uint8_t>() % 40;
  if (!world.rarely()) info.lut_width &= ~3U;
  if (!world.rarely()) info.lut_height &= ~3U;
  info.sample_rate_bit = world.rarely() ? world.take<std::uint32_t>() : world.take<std::uint8_t>() % 8;
  std::vector<double> dx(std::size_t{info.lut_width} * info.lut_height, real<double>(world));
  std::vector<double> dy(dx.size(), static_cast<double>(world.take<std::int8_t>()) / 256);
  if (!world.rarely()) std::fill(dx.begin(), dx.end(), static_cast<double>(world.take<std::int8_t>()) / 256);
  if (world.rarely() && !dy.empty()) dy[world.take<std::uint16_t>() % dy.size()] = real<double>(world);
  info.dx = world.rarely() ? nullptr : dx.data();
  info.dy = world.rarely() ? nullptr : dy.data();
  const RectifyIntrinsic intrinsic = some_intrinsic(world);
  const auto rotation = reals<float, 9>(world);
  const auto pinhole = reals<float, 4>(world);
  const auto camera = world.take<std::uint8_t>() % 3U;
  const RectifyLutInfo* const given = or_null(world, info);
  expect_one_of(set_rectify_params_map(camera, &intrinsic, given, rotation.data(), pinhole.data()), {0, -2});
}

void convert(World&) {
  require(convert_rectify_control_float_to_register() == VQ3900_OK);
  expect_one_of(convert_rectify_params_to_register_elements(), {0, -2, 4096});
}

void decode(World& world) {
  require(convert_rectify_registers_to_float((world.take<std::uint8_t>() & 1) != 0) == VQ3900_OK);
}

void take_sections(World& world) {
  std::uint32_t length = 0;
  require(de_get_lut_len(&length) == VQ3900_OK);
  require(de_get_lut_len(nullptr) == VQ3900_ERROR_ARGUMENT);
  std::array<std::vector<std::uint32_t>, 4> words;
  std::array<LutSection, 4> sections{};
  for (std::size_t i = 0; i < sections.size(); ++i) {
    words[i].resize(length);
    sections[i].data = words[i].data();
  }
  const auto count = static_cast<std::uint8_t>(world.rarely() ? world.take<std::uint8_t>() : 4);
  expect_one_of(de_copy_rectify_lut_register_section(world.rarely() ? nullptr : sections.data(), count), {0, -2});
}

void ask_rectify(World& world) {
  RectifyLutInfo info{};
  RectifyLutInfo* const grid = or_null(world, info);
  expect_refused_if(grid == nullptr, de_get_rectify_lut_params_float(world.take<std::int32_t>(), grid));
  DeRectifyParams_S params{};
  DeRectifyCtrlParams_S ctrl{};
  DeRectifyParams_S* const given = or_null(world, params);
  expect_refused_if(given == nullptr, de_copy_rectify_params(given, &ctrl));
}

void store_rectify(World& world) {
  const auto params = world.take<DeRectifyParams_S>();
  const auto ctrl = world.take<DeRectifyCtrlParams_S>();
  const DeRectifyParams_S* const given = or_null(world, params);
  expect_refused_if(given == nullptr, de_update_rectify_params(given, &ctrl));
}

constexpr std::array kSteps = std::to_array<Step>({set_switches,
                                                   set_correction,
                                                   set_rotation,
                                                   set_polynomial,
                                                   set_grid,
                                                   convert,
                                                   decode,
                                                   take_sections,
                                                   ask_rectify,
                                                   store_rectify});

}  // namespace

std::span<const Step> rectify_steps() {
  return kSteps;
}

}  // namespace vq3900::fuzz
