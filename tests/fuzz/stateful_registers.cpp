// Register tables, callbacks, entry points and the fixed-point helpers.
#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <string>
#include <vector>

#include "stateful_steps.h"

namespace vq3900::fuzz {

namespace {

// --- tables

using Elements = std::vector<DeRegElement_S>;

// Copy is a table's copy-out function, Merge its merge-back, Size its elements.
template <auto Copy, std::size_t Size>
void copy_table(World& world) {
  const std::size_t count = world.take<std::uint16_t>() % (Size + 2);
  Elements elements(count);
  DeRegElement_S* const given = world.rarely() ? nullptr : elements.data();
  const bool refused = count > Size || (given == nullptr && count != 0);
  if constexpr (Size > 255) {
    expect_refused_if(refused, Copy(given, static_cast<std::uint16_t>(count)));
  } else {
    expect_refused_if(refused, Copy(given, static_cast<std::uint8_t>(count)));
  }
}

// The first elements of a table with other values; now and then another address or mask.
template <auto Copy, std::size_t Size>
Elements changed_elements(World& world, std::size_t count) {
  Elements elements(count);
  require(Copy(elements.data(), static_cast<std::uint8_t>(std::min(count, Size))) == VQ3900_OK);
  const auto seed = world.take<std::uint32_t>();
  for (DeRegElement_S& element : elements)
    element.value ^= seed * (element.address | 1U);
  if (!elements.empty() && world.rarely()) {
    DeRegElement_S& odd = elements[world.take<std::uint8_t>() % elements.size()];
    (world.rarely() ? odd.mask : odd.address) ^= world.take<std::uint32_t>();
  }
  return elements;
}

template <auto Merge, auto Copy, std::size_t Size>
void merge_table(World& world) {
  const std::size_t count = world.take<std::uint8_t>() % std::min<std::size_t>(Size + 2, 256);
  const Elements elements = changed_elements<Copy, Size>(world, count);
  const DeRegElement_S* const given = world.rarely() ? nullptr : elements.data();
  expect_one_of(Merge(given, static_cast<std::uint8_t>(count)), {0, -2});
}

void copy_lut_info(World& world) {
  const auto count = static_cast<std::uint8_t>(world.take<std::uint8_t>() % (VQ3900_RECTIFY_LUT_INFO_REGISTERS + 2));
  Elements elements(count);
  expect_refused_if(count > VQ3900_RECTIFY_LUT_INFO_REGISTERS,
                    de_copy_rectify_lut_info_register_table(world.take<std::int32_t>(), elements.data(), count));
}

// --- callbacks and the device

// One callback or both replaced by null, until the device is attached again.
void take_callbacks_away(World& world) {
  const auto which = world.take<std::uint8_t>() % 4;
  const bool read = (which & 1) != 0;
  const bool write = (which & 2) != 0;
  const std::int32_t code = de_register_read_write_functon(
      read ? &sim::SimDevice::read : nullptr, write ? &sim::SimDevice::write : nullptr, &world.device);
  require(code == (read && write ? VQ3900_OK : VQ3900_ERROR_CALLBACK));
}

void attach_device(World& world) {
  require(world.device.attach() == VQ3900_OK);
  world.device.set_tamper({});
  world.device.fail_none();
  world.device.clear_log();
}

void disturb_device(World& world) {
  world.device.clear_log();
  world.device.fail_transfer(world.take<std::uint8_t>() % 4, world.take<std::int32_t>());
}

void poke_device(World& world) {
  static constexpr std::array<std::uint32_t, 3> kBases{0x50001000, 0x52000000, 0x52080000};
  const std::uint32_t base = kBases[world.take<std::uint8_t>() % kBases.size()];
  world.device.poke(base + (world.take<std::uint16_t>() & 0xFFCU), world.take<std::uint32_t>());
}

// The device hands back other values, another address or mask, or throws.
void tamper(World& world) {
  const auto what = world.take<std::uint8_t>() % 4;
  const auto which = world.take<std::uint8_t>();
  const auto bits = world.take<std::uint32_t>();
  world.device.set_tamper([=](std::size_t, sim::Direction, DeRegElement_S* elements, std::uint32_t count) {
    if (what == 3) throw std::runtime_error("bus");
    DeRegElement_S& element = elements[which % count];
    (what == 0 ? element.value : what == 1 ? element.mask : element.address) ^= bits;
  });
}

void ask_error_and_versions(World&) {
  const char* const error = de_get_error_str();
  require(error == nullptr || !std::string(error).empty());
  std::vector<char> version(8);
  get_depth_driver_helper_version(version.data());
  get_depth_driver_helper_version(nullptr);
  require(std::string(version.data()) == de_get_version());
  require(std::string(version.data()) == driver_helper_get_version());
  std::vector<char> lut_version(64);
  require(get_lut_version(lut_version.data()) == VQ3900_OK && get_disto_lut_version(lut_version.data()) == VQ3900_OK);
  require(get_lut_version(nullptr) == -1 && get_disto_lut_version(nullptr) == -1);
}

// --- entry points

void expect_written(bool null, std::int32_t code) {
  expect_one_of(code, {0, -1, -2, -3, 4096});
  require(!null || code == VQ3900_ERROR_ARGUMENT || code == VQ3900_ERROR_CALLBACK);
}

void expect_read(bool null, std::int32_t code) {
  expect_one_of(code, {0, -1, -2, -3});
  require(!null || code == VQ3900_ERROR_ARGUMENT || code == VQ3900_ERROR_CALLBACK);
}

template <typename Record>
void write_block(World& world, std::int32_t (*set)(const Record*)) {
  const Record record = world.take<Record>();
  const Record* const given = or_null(world, record);
  expect_written(given == nullptr, set(given));
}

template <typename Record>
void read_block(World& world, std::int32_t (*get)(Record*)) {
  Record record{};
  Record* const given = or_null(world, record);
  expect_read(given == nullptr, get(given));
}

void write_d2c(World& world) {
  const auto depth = world.take<DeCameraIntrinsic_S>();
  const auto color = world.take<DeCameraIntrinsic_S>();
  const auto pose = world.take<DeExtrinsic_S>();
  const auto config = world.take<D2cConfig>();
  const DeCameraIntrinsic_S* const given = or_null(world, depth);
  expect_written(given == nullptr, de_set_d2c_params_to_registers(given, &color, &pose, &config));
}

void write_rectify(World& world) {
  const auto params = world.take<DeRectifyParams_S>();
  const auto ctrl = world.take<DeRectifyCtrlParams_S>();
  const DeRectifyCtrlParams_S* const given = or_null(world, ctrl);
  expect_written(given == nullptr, de_set_rectify_params_to_registers(&params, given));
}

void read_gpm(World& world) {
  DeGpmParams_S params{};
  DeGpStatusParams_S status{};
  DeGpStatusParams_S* const given = or_null(world, status);
  expect_read(given == nullptr, de_get_gpm_params_from_registers(&params, given));
}

void read_rectify(World& world) {
  DeRectifyParams_S params{};
  DeRectifyCtrlParams_S ctrl{};
  DeRectifyCtrlParams_S* const given = or_null(world, ctrl);
  const std::uint32_t type = world.rarely() ? world.take<std::uint32_t>() : world.take<std::uint8_t>() % 4;
  expect_read(given == nullptr, de_get_rectify_params_from_registers(&params, given, type, world.take<std::uint8_t>()));
}

// --- fixed point

void use_fields(World& world) {
  const auto word = world.take<std::uint32_t>();
  const auto mask = world.take<std::uint32_t>();
  const std::uint32_t field = de_get_reg_field(word, mask);
  require(mask != 0 || field == 0);
  const std::uint32_t replaced = de_set_reg_field(world.take<std::uint32_t>(), word, mask);
  require(mask != 0 || replaced == word);
}

void use_fixed_point(World& world) {
  const auto value = real<double>(world);
  const auto width = world.take<std::uint32_t>();
  const auto frac_bits = world.take<std::int32_t>();
  const std::string name = "name %s %n";
  static_cast<void>(de_float_to_fixed(value, width, frac_bits, world.rarely() ? nullptr : name.c_str()));
  double back = 0;
  const auto raw = world.take<std::uint32_t>();
  de_fixed_to_float(raw, width, frac_bits, or_null(world, back));
  de_fixed_to_float_sign(raw, (raw & 1) != 0, width, frac_bits, or_null(world, back));
}

constexpr std::array kSteps = std::to_array<Step>({
    copy_table<de_copy_basic_d2c_d2d_ctrl_register_table, VQ3900_BASIC_CTRL_REGISTERS>,
    merge_table<de_update_basic_d2c_d2d_ctrl_register_table, de_copy_basic_d2c_d2d_ctrl_register_table,
                VQ3900_BASIC_CTRL_REGISTERS>,
    copy_table<de_copy_d2d_params_register_table, VQ3900_D2D_REGISTERS>,
    merge_table<de_update_d2d_params_register_table, de_copy_d2d_params_register_table, VQ3900_D2D_REGISTERS>,
    copy_table<de_copy_d2c_params_register_table, VQ3900_D2C_REGISTERS>,
    merge_table<de_update_d2c_params_register_table, de_copy_d2c_params_register_table, VQ3900_D2C_REGISTERS>,
    copy_table<de_copy_prefilter_register_table, VQ3900_PREFILTER_REGISTERS>,
    merge_table<de_update_prefilter_register_table, de_copy_prefilter_register_table, VQ3900_PREFILTER_REGISTERS>,
    copy_table<de_copy_extend_chop_register_table, VQ3900_EXTEND_CHOP_REGISTERS>,
    merge_table<de_update_extend_chop_register_table, de_copy_extend_chop_register_table, VQ3900_EXTEND_CHOP_REGISTERS>,
    copy_table<de_copy_disp_calc_register_table, VQ3900_DISP_CALC_REGISTERS>,
    merge_table<de_update_disp_calc_register_table, de_copy_disp_calc_register_table, VQ3900_DISP_CALC_REGISTERS>,
    copy_table<de_copy_gpm_register_table, VQ3900_GPM_REGISTERS>,
    merge_table<de_update_gpm_register_table, de_copy_gpm_register_table, VQ3900_GPM_REGISTERS>,
    copy_table<de_copy_gp_status_register_table, VQ3900_GP_STATUS_REGISTERS>,
    merge_table<de_update_gp_status_register_table, de_copy_gp_status_register_table, VQ3900_GP_STATUS_REGISTERS>,
    copy_table<de_copy_rectify_ctrl_register_table, VQ3900_RECTIFY_CTRL_REGISTERS>,
    merge_table<de_update_rectify_ctrl_register_table, de_copy_rectify_ctrl_register_table,
                VQ3900_RECTIFY_CTRL_REGISTERS>,
    copy_table<de_copy_rectify_params_register_table, VQ3900_RECTIFY_REGISTERS>,
    merge_table<de_update_rectify_params_register_table, de_copy_rectify_params_register_table,
                VQ3900_RECTIFY_REGISTERS>,
    copy_table<de_copy_sbg2r_params_register_table, VQ3900_RECTIFY_REGISTERS>,
    merge_table<de_update_sbg2r_params_register_table, de_copy_sbg2r_params_register_table, VQ3900_RECTIFY_REGISTERS>,
    copy_lut_info,
    take_callbacks_away,
    attach_device,
    disturb_device,
    poke_device,
    tamper,
    ask_error_and_versions,
    [](World& world) { write_block(world, de_set_baisc_params_to_registers); },
    [](World& world) { write_block(world, de_set_prefilter_params_to_registers); },
    [](World& world) { write_block(world, de_set_extend_chop_params_to_registers); },
    [](World& world) { write_block(world, de_set_disp_calc_params_to_registers); },
    [](World& world) { write_block(world, de_set_gpm_params_to_registers); },
    [](World& world) { write_block(world, de_set_d2d_params_to_registers); },
    write_d2c,
    write_rectify,
    [](World& world) { read_block(world, de_get_baisc_params_from_registers); },
    [](World& world) { read_block(world, de_get_prefilter_params_from_registers); },
    [](World& world) { read_block(world, de_get_extend_chop_params_from_registers); },
    [](World& world) { read_block(world, de_get_disp_calc_params_from_registers); },
    [](World& world) { read_block(world, de_get_d2d_params_from_registers); },
    [](World& world) { read_block(world, de_get_d2c_params_from_registers); },
    read_gpm,
    read_rectify,
    use_fields,
    use_fixed_point,
});

}  // namespace

std::span<const Step> register_steps() {
  return kSteps;
}

}  // namespace vq3900::fuzz
