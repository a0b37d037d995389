// Exported functions in any order with any arguments, on the simulated device: no crash, no undefined behaviour, and
// codes that the manual knows.
#include "vq3900_depth_engine.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <vector>

#include "fuzz_support.h"
#include "sim_device.h"
#include "support/engine_reset.h"

namespace {

using vq3900::fuzz::Input;

// A record whose bytes are the input's.
template <typename Record>
Record record(Input& in) {
  return in.take<Record>();
}

void known(std::int32_t code) {
  vq3900::fuzz::require((code <= 0 && code >= -6) || code == 4096);
}

// --- basic, D2C, D2D

void set_basic(Input& in) {
  known(set_camera_mode(in.take<std::int32_t>() % 3, in.take<std::uint8_t>()));
  known(set_upsample(in.take<std::uint8_t>(), in.take<std::uint32_t>()));
  known(set_ref_plane_dist(in.take<float>()));
  known(set_input_ir_resolution(in.take<std::uint32_t>()));
  known(set_pbf_params(in.take<float>(), in.take<float>()));
  known(convert_basic_config_to_registers());
}

void set_d2c(Input& in) {
  const auto depth = record<std::array<float, 4>>(in);
  const auto color = record<std::array<float, 4>>(in);
  const auto pose = record<std::array<float, 12>>(in);
  known(set_d2c_config(in.take<std::int32_t>(),
                       in.take<float>(),
                       in.take<std::uint32_t>(),
                       in.take<std::uint32_t>(),
                       in.take<std::int32_t>()));
  known(set_d2c_calib_params(depth.data(), color.data(), pose.data()));
  known(convert_d2c_ctrl_to_register_elements());
  known(convert_d2c_params_to_register_elements());
}

void set_d2d(Input& in) {
  known(set_d2d_unit(in.take<std::uint8_t>()));
  set_hw_d2d_enable((in.take<std::uint8_t>() & 1) != 0);
  known(convert_d2d_config_to_register_element());
  known(convert_d2d_params_to_register_elements());
}

// --- whole records to the device and back

template <typename Record, std::int32_t (*Set)(const Record*), std::int32_t (*Get)(Record*)>
void write_and_read(Input& in) {
  Record written = record<Record>(in);
  known(Set(&written));
  known(Get(&written));
}

void write_and_read_gpm(Input& in) {
  DeGpmParams_S params = record<DeGpmParams_S>(in);
  DeGpStatusParams_S status{};
  known(de_set_gpm_params_to_registers(&params));
  known(de_get_gpm_params_from_registers(&params, &status));
}

void write_and_read_d2c(Input& in) {
  const auto depth = record<DeCameraIntrinsic_S>(in);
  const auto color = record<DeCameraIntrinsic_S>(in);
  const auto pose = record<DeExtrinsic_S>(in);
  D2cConfig config = record<D2cConfig>(in);
  known(de_set_d2c_params_to_registers(&depth, &color, &pose, &config));
  known(de_get_d2c_params_from_registers(&config));
}

void write_and_read_rectify(Input& in) {
  DeRectifyParams_S params = record<DeRectifyParams_S>(in);
  DeRectifyCtrlParams_S ctrl = record<DeRectifyCtrlParams_S>(in);
  known(de_set_rectify_params_to_registers(&params, &ctrl));
  known(de_get_rectify_params_from_registers(&params, &ctrl, in.take<std::uint32_t>(), in.take<std::uint8_t>()));
}

// --- rectification

void set_rectify(Input& in) {
  const auto intrinsic = record<RectifyIntrinsic>(in);
  const auto distortion = record<std::array<float, 8>>(in);
  const auto rotation = record<std::array<float, 9>>(in);
  const auto pinhole = record<std::array<float, 4>>(in);
  known(set_rectify_status(in.take<std::int8_t>(), in.take<std::int8_t>(), in.take<std::uint32_t>()));
  known(set_rectify_kk_lut(in.take<std::int8_t>()));
  known(set_rectify_params_brown(
      in.take<std::uint8_t>() % 3, &intrinsic, distortion.data(), rotation.data(), pinhole.data()));
  known(convert_rectify_control_float_to_register());
  known(convert_rectify_params_to_register_elements());
}

void set_map(Input& in) {
  auto info = record<RectifyLutInfo>(in);
  info.lut_width %= 36;
  info.lut_height %= 36;
  const auto value = in.take<double>();
  std::vector<double> dx(std::size_t{info.lut_width} * info.lut_height, value);
  std::vector<double> dy(dx.size(), in.take<double>());
  info.dx = (in.take<std::uint8_t>() & 7) == 0 ? nullptr : dx.data();
  info.dy = dy.data();
  const auto intrinsic = record<RectifyIntrinsic>(in);
  const auto rotation = record<std::array<float, 9>>(in);
  const auto pinhole = record<std::array<float, 4>>(in);
  known(set_rectify_params_map(in.take<std::uint8_t>() % 3, &intrinsic, &info, rotation.data(), pinhole.data()));
  known(convert_rectify_params_to_register_elements());
}

void take_sections(Input& in) {
  std::uint32_t length = 0;
  known(de_get_lut_len(&length));
  std::array<std::vector<std::uint32_t>, 4> words;
  std::array<LutSection, 4> sections{};
  for (std::size_t i = 0; i < sections.size(); ++i) {
    words[i].resize(length);
    sections[i].data = words[i].data();
  }
  known(de_copy_rectify_lut_register_section(sections.data(), in.take<std::uint8_t>() % 6));
}

// --- calibration and images

std::string calib_text(Input& in) {
  const auto number = [&](int low, int high) {
    return std::to_string(low + in.take<std::uint16_t>() % (high - low + 1));
  };
  std::string text = "[basic]\nbaseline=" + number(-60, 60) + "\nref_dist=" + number(0, 2000) +
                     "\ncam_type=" + number(0, 4) + "\nmirrored=0\nmipi_channel_status=" + number(0, 3) +
                     "\n[rectify]\ndistort_type=" + number(0, 3) + "\nrotate_type=0\nsrc_img_scale=" + number(0, 2) +
                     "\nsrc_img_left_chop=" + number(-10, 30) + "\ndst_focal_scale=" + number(0, 3) +
                     "\nlut_sample_bit=" + number(2, 7) + "\nlut_extend_ratio=" + number(0, 4) +
                     "\n[d2d]\ndisp_offset=" + number(-20, 20) + "\nd2d_params_unit=" + number(0, 3) +
                     "\ndepth_mode=" + number(0, 1) + "\n[d2c]\n";
  for (const char* const image : {"depth", "valid", "rgb"}) {
    for (const char* const side : {"left_w", "top_h", "right_w", "bottom_h"})
      text += std::string("clip_") + side + "_" + image + "=" + number(0, 40) + "\n";
  }
  return text + "depth_scale=1\nvalid_scale=1\nd2d_params_unit_in_R_en=" + number(0, 1) + "\n";
}

void fill_camera(Input& in, DeCalibRecordCamera_S& camera) {
  camera.width = static_cast<float>(in.take<std::uint16_t>() % 400);
  camera.height = static_cast<float>(in.take<std::uint16_t>() % 300);
  camera.fx = camera.fy = static_cast<float>(in.take<std::uint16_t>() % 500);
  camera.cx = camera.width / 2;
  camera.cy = camera.height / 2;
  camera.distortion[0] = static_cast<float>(in.take<std::int8_t>()) / 256;
}

DeCalibRecord_S calibration(Input& in) {
  DeCalibRecord_S calib{};
  calib.distortion_model = in.take<std::uint8_t>() % 7;
  fill_camera(in, calib.left_ir);
  fill_camera(in, calib.right_ir);
  fill_camera(in, calib.rgb);
  const float turn = static_cast<float>(in.take<std::int8_t>()) / 512;
  const std::array<float, 9> rotation{std::cos(turn), -std::sin(turn), 0, std::sin(turn), std::cos(turn), 0, 0, 0, 1};
  std::copy(rotation.begin(), rotation.end(), calib.ir_rotation);
  std::copy(rotation.begin(), rotation.end(), calib.rgb_rotation);
  calib.ir_translation[0] = in.take<std::int8_t>();
  calib.rgb_translation[0] = in.take<std::int8_t>();
  return calib;
}

void build_image(Input& in) {
  const std::array<std::string, 2> texts{calib_text(in), calib_text(in)};
  const std::array<const char*, 2> configs{texts[0].c_str(), texts[1].c_str()};
  const std::array<DeCalibRecord_S, 2> calibs{calibration(in), calibration(in)};
  const std::array<const DeCalibRecord_S*, 2> records{&calibs[0], &calibs[1]};
  const std::uint8_t alignment = in.take<std::uint8_t>() & 1;
  const CalibFlashInput_S input{nullptr, 0, configs.data(), 2, records.data(), 2, &alignment};
  set_calib_temp(30, 30, 30);

  DeLogCallback log = [](const char*) {};
  std::uint32_t image_size = 0;
  std::uint32_t lut_size = 0;
  get_file_buffer_size(&input, &image_size);
  get_lut_section_buffer_size(&input, &lut_size, &log);
  // Exactly as large as they must be, so that a byte more is noticed.
  std::vector<std::uint32_t> image(image_size / 4);
  std::vector<std::uint8_t> lut(lut_size);
  std::vector<std::uint8_t> factory(60 + 2 * 6288);
  const std::int32_t code = gen_calib_flash_param_de(&input,
                                                     image.data(),
                                                     &log,
                                                     image_size,
                                                     lut.data(),
                                                     static_cast<int>(lut_size),
                                                     1,
                                                     factory.data(),
                                                     static_cast<int>(factory.size()));
  known(code);
  vq3900::fuzz::require(code != -4 || lut_size == 0);  // what the query says is enough
}

void set_companions(Input& in) {
  std::array<DeAlignRecord_S, 4> alignment{};
  std::array<DeDepthConfig_S, 3> depth{};
  const auto serial = record<std::array<std::uint64_t, 3>>(in);
  set_sn(&serial[0], &serial[1], &serial[2]);
  known(de_set_alignment_records(alignment.data(), in.take<std::int8_t>() % 5));
  known(set_optimized_d2d_params(depth.data(), in.take<std::int8_t>() % 4));
}

// --- the device

void disturb_device(Input& in, vq3900::sim::SimDevice& device) {
  device.clear_log();
  device.fail_none();
  if ((in.take<std::uint8_t>() & 1) != 0) device.fail_transfer(in.take<std::uint8_t>() % 4, in.take<std::int32_t>());
  device.poke(0x50001000 + (in.take<std::uint16_t>() & 0xFFCU), in.take<std::uint32_t>());
}

void step(Input& in, vq3900::sim::SimDevice& device) {
  switch (in.take<std::uint8_t>() % 17) {
    case 0:
      return set_basic(in);
    case 1:
      return set_d2c(in);
    case 2:
      return set_d2d(in);
    case 3:
      return write_and_read<DeBasicParams_S, de_set_baisc_params_to_registers, de_get_baisc_params_from_registers>(in);
    case 4:
      return write_and_read<DePrefilterParams_S,
                            de_set_prefilter_params_to_registers,
                            de_get_prefilter_params_from_registers>(in);
    case 5:
      return write_and_read<DeExtendChopParams_S,
                            de_set_extend_chop_params_to_registers,
                            de_get_extend_chop_params_from_registers>(in);
    case 6:
      return write_and_read<DeDispCalcParams_S,
                            de_set_disp_calc_params_to_registers,
                            de_get_disp_calc_params_from_registers>(in);
    case 7:
      return write_and_read<D2dConfig, de_set_d2d_params_to_registers, de_get_d2d_params_from_registers>(in);
    case 8:
      return write_and_read_gpm(in);
    case 9:
      return write_and_read_d2c(in);
    case 10:
      return write_and_read_rectify(in);
    case 11:
      return set_rectify(in);
    case 12:
      return set_map(in);
    case 13:
      return take_sections(in);
    case 14:
      return build_image(in);
    case 15:
      return set_companions(in);
    default:
      return disturb_device(in, device);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  vq3900::test::reset_engine();
  vq3900::sim::SimDevice device;
  device.attach();
  Input in{data, size};
  for (int steps = 0; steps < 64 && !in.empty(); ++steps)
    step(in, device);
  return 0;
}
