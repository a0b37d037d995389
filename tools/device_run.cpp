#include "device_run.h"

#include <fmt/format.h>

#include <array>
#include <cmath>
#include <functional>
#include <utility>

#include "accepted_values.h"
#include "config/de_input.h"
#include "key_values.h"
#include "platform/file.h"
#include "register_blocks.h"
#include "stdout_capture.h"

namespace vq3900::tool {

namespace {

using sim::Direction;
using sim::SimDevice;

// The nominal pinhole camera of the rig: its focal length, the principal point in the middle of the image.
DeCameraIntrinsic_S nominal_camera(const RigGeometry& geometry, const std::uint16_t (&size)[2]) {
  const float cx = static_cast<float>(size[0] - 1) / 2.0F;
  const float cy = static_cast<float>(size[1] - 1) / 2.0F;
  return {geometry.focal_length, geometry.focal_length, cx, cy, size[0], size[1]};
}

constexpr std::array<float, 9> kNoRotation{1, 0, 0, 0, 1, 0, 0, 0, 1};

std::int32_t set_geometry(const RigGeometry& geometry) {
  dpu_scheme_config scheme{};
  get_dpu_scheme_config(&scheme);
  set_ref_plane_dist(geometry.ref_distance.value_or(static_cast<float>(scheme.ref_dist)));
  return set_pbf_params(geometry.baseline, geometry.focal_length);
}

std::int32_t write_basic() {
  DeBasicParams_S params{};
  de_copy_basic_params(&params);
  return de_set_baisc_params_to_registers(&params);
}

std::int32_t write_d2d() {
  D2dConfig config{};
  get_d2d_config(&config);
  return de_set_d2d_params_to_registers(&config);
}

std::int32_t write_d2c(const RigGeometry& geometry, const dpu_mode& mode) {
  D2cConfig config{};
  de_copy_d2c_config(&config);
  const DeCameraIntrinsic_S camera = nominal_camera(geometry, mode.chop_out_res);
  const DeExtrinsic_S same_place{{1, 0, 0, 0, 1, 0, 0, 0, 1}, {0, 0, 0}};
  return de_set_d2c_params_to_registers(&camera, &camera, &same_place, &config);
}

std::int32_t write_prefilter() {
  DePrefilterParams_S params{};
  de_copy_prefilter_params(&params);
  return de_set_prefilter_params_to_registers(&params);
}

std::int32_t write_extend_chop() {
  DeExtendChopParams_S params{};
  de_copy_extend_chop_params(&params);
  return de_set_extend_chop_params_to_registers(&params);
}

std::int32_t write_disparity() {
  DeDispCalcParams_S params{};
  de_copy_disp_calc_params(&params);
  return de_set_disp_calc_params_to_registers(&params);
}

std::int32_t write_gpm() {
  DeGpmParams_S params{};
  de_copy_gpm_params(&params);
  return de_set_gpm_params_to_registers(&params);
}

// Both cameras look straight ahead and have no distortion.
std::int32_t write_rectify(const RigGeometry& geometry, const dpu_mode& mode) {
  const DeCameraIntrinsic_S camera = nominal_camera(geometry, mode.in_ir_res);
  const std::array<float, 4> intrinsic{camera.fx, camera.fy, camera.cx, camera.cy};
  const std::array<float, 8> no_distortion{};
  for (const std::uint32_t id : {1U, 0U}) {
    const std::int32_t code =
        set_rectify_params_brown(id, &camera, no_distortion.data(), kNoRotation.data(), intrinsic.data());
    if (code != 0) return code;
  }
  DeRectifyParams_S params{};
  DeRectifyCtrlParams_S ctrl{};
  de_copy_rectify_params(&params, &ctrl);
  return de_set_rectify_params_to_registers(&params, &ctrl);
}

// No entry point writes the rectification control table: the host does.
std::int32_t write_rectify_control(SimDevice& device) {
  convert_rectify_control_float_to_register();
  std::array<DeRegElement_S, VQ3900_RECTIFY_CTRL_REGISTERS> elements{};
  de_copy_rectify_ctrl_register_table(elements.data(), VQ3900_RECTIFY_CTRL_REGISTERS);
  return SimDevice::write(elements.data(), VQ3900_RECTIFY_CTRL_REGISTERS, &device);
}

// The record of a get entry point is of no interest here: the registers are.
template <auto Get, typename... Records>
std::int32_t read_into() {
  std::tuple<Records...> records{};
  return std::apply([](Records&... record) { return Get(&record...); }, records);
}

std::int32_t read_rectify(std::uint32_t distort_type) {
  DeRectifyParams_S params{};
  DeRectifyCtrlParams_S ctrl{};
  return de_get_rectify_params_from_registers(&params, &ctrl, distort_type, 1);
}

class Runner {
 public:
  Runner(DeviceRun& run, SimDevice& device) : run_(run), device_(device) {}

  // Runs one call and notes its transfers. False once a call has failed.
  bool step(std::string name, const std::function<std::int32_t()>& call) {
    if (run_.failure() != nullptr) return false;
    const std::size_t first = device_.log().size();
    RunStep step{std::move(name), call(), {}, {}};
    for (std::size_t i = first; i < device_.log().size(); ++i) {
      const sim::Transfer& transfer = device_.log()[i];
      (transfer.direction == Direction::kWrite ? step.written : step.read).push_back(transfer.elements.size());
    }
    run_.steps.push_back(std::move(step));
    return run_.failure() == nullptr;
  }

 private:
  DeviceRun& run_;
  SimDevice& device_;
};

// The blocks that a device is programmed with: the status is read only, and there is no LUT here.
bool is_programmed(const RegisterBlock& block) {
  return block.name != "gp_status" && !block.name.starts_with("rectify_lut_info");
}

// Holds the device's registers against the library's tables.
void compare_registers(const SimDevice& device, DeviceRun& run) {
  for (const RegisterBlock& block : register_blocks()) {
    if (!is_programmed(block)) continue;
    for (const DeRegElement_S& element : block.registers()) {
      ++run.registers;
      if (device.peek(element.address) == element.value) ++run.registers_right;
    }
  }
}

// Holds the configuration's values against the device's register fields, which it was never told of by itself.
void compare_values(const SimDevice& device, const std::string& config_path, DeviceRun& run) {
  IniDocument document;
  document.parse(read_file(config_path.c_str()).value_or(""));
  for (const KeyDescription& key : de_input_keys()) {
    const IniField* const field = document.section(key.section).find(key.name);
    if (field == nullptr) continue;
    const std::vector<double> numbers = numbers_of(key, field->value);
    for (std::size_t i = 0; i < numbers.size(); ++i) {
      const auto place = register_field_of(key, i);
      if (!place) continue;
      ++run.values;
      const double found = decode_bits(place->bits, device.peek(place->address));
      if (std::fabs(found - numbers[i]) > place->resolution) {
        run.missing.push_back(fmt::format("{}.{}", key.section, key.name));
      }
    }
  }
}

// The distortion type of a configuration, which the library hands out only in part.
std::uint32_t distort_type(const std::string& config_path) {
  IniDocument document;
  document.parse(read_file(config_path.c_str()).value_or(""));
  const IniField* const field = document.section("basic").find("distort_type");
  return field == nullptr ? 0 : read_uint8(field->value);
}

}  // namespace

DeviceRun run_on_device(const std::string& config_path, const RigGeometry& geometry, SimDevice& device) {
  DeviceRun run;
  Runner runner(run, device);
  StdoutCapture capture;
  device.attach();

  runner.step("load configuration", [&] { return load_de_input_configs(config_path.c_str()); });
  runner.step("apply configuration", set_depth_engine_config);
  de_copy_dpu_mode_config(&run.mode, &run.version);
  get_dpu_scheme_config(&run.scheme);
  runner.step("set rig geometry", [&] { return set_geometry(geometry); });

  runner.step("write prefilter", write_prefilter);
  runner.step("write extend_chop", write_extend_chop);
  runner.step("write disp_calc", write_disparity);
  runner.step("write gpm", write_gpm);
  runner.step("write rectify", [&] { return write_rectify(geometry, run.mode); });
  runner.step("write rectify control", [&] { return write_rectify_control(device); });
  // The matcher's smoothing flag lies in the control table: what writes that table comes behind the matcher.
  runner.step("write d2c", [&] { return write_d2c(geometry, run.mode); });
  runner.step("write d2d", write_d2d);
  runner.step("write basic", write_basic);
  if (run.failure() == nullptr) {
    compare_registers(device, run);
    compare_values(device, config_path, run);
  }

  // The D2C read-back sets the camera mode from other bits: it comes last.
  runner.step("read prefilter", read_into<de_get_prefilter_params_from_registers, DePrefilterParams_S>);
  runner.step("read extend_chop", read_into<de_get_extend_chop_params_from_registers, DeExtendChopParams_S>);
  runner.step("read disp_calc", read_into<de_get_disp_calc_params_from_registers, DeDispCalcParams_S>);
  runner.step("read gpm", read_into<de_get_gpm_params_from_registers, DeGpmParams_S, DeGpStatusParams_S>);
  runner.step("read rectify", [&] { return read_rectify(distort_type(config_path)); });
  runner.step("read basic", read_into<de_get_baisc_params_from_registers, DeBasicParams_S>);
  runner.step("read d2d", read_into<de_get_d2d_params_from_registers, D2dConfig>);
  runner.step("read d2c", read_into<de_get_d2c_params_from_registers, D2cConfig>);

  run.library_output = capture.text();
  return run;
}

}  // namespace vq3900::tool
