#include "flash/calib_records.h"

#include <algorithm>
#include <cmath>
#include <string_view>

#include "config/units.h"
#include "modules/fixed_point.h"

namespace vq3900 {

namespace {

// Comparisons with this are made in double.
constexpr double kSmallestSize = 1e-6;

std::uint32_t mipi_channel(const CalibInputConfig& config) {
  return config.mipi_channel_status & 1U;
}

std::int32_t low_word(std::int64_t number) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(number));
}

std::int32_t rounded(float value) {
  return low_word(to_integer(std::round(widen(value))));
}

std::int32_t nearest_multiple(float value, std::uint32_t step) {
  const auto steps = static_cast<std::uint32_t>(to_integer(std::round(widen(value) / step)));
  return static_cast<std::int32_t>(steps * step);
}

// The depth unit in hundredths where the projection is in that unit.
std::int32_t hundredfold_unit(const CalibInputConfig& config) {
  const bool in_unit = config.d2d_params_unit_in_R_en != 0;
  return in_unit ? static_cast<std::int32_t>(hundredfold(config.d2d_params_unit)) : 0;
}

// Where a grid starts, in hundredths of a sample, without its sign.
std::int32_t hundredfold_start(std::uint32_t start, std::uint32_t sample_rate_bit) {
  constexpr std::uint32_t kBeyondFloat = 200;
  const float distance = std::fabs(static_cast<float>(static_cast<std::int32_t>(start)));
  const float hundredths = distance * 100.0F;
  const float step = std::ldexp(1.0F, static_cast<int>(std::min(sample_rate_bit, kBeyondFloat)));
  const float samples = hundredths / step;
  return rounded(samples);
}

template <std::size_t Count>
RegisterTable<29> slots(const RegisterTable<Count>& table) {
  RegisterTable<29> padded{};
  std::copy(table.begin(), table.end(), padded.begin());
  return padded;
}

}  // namespace

RectifyRecord rectify_record(const ConvertedCalibration& converted, const CalibInputConfig& config,
                             const RegisterTables& tables) {
  RectifyRecord record;
  record.rect = converted.rect;
  record.key.width = converted.rect.cam1_rectified.width;
  record.key.height = converted.rect.cam1_rectified.height;
  std::copy_n(converted.rect.reserved, 2, record.key.reserved);
  record.key.mipi_channel = mipi_channel(config);
  record.rectify_params = slots(tables.rectify[0]);
  record.sbg2r_params = slots(tables.rectify[1]);
  return record;
}

D2cRecord d2c_record(const ConvertedCalibration& converted, const CalibInputConfig& config,
                     const RegisterTables& tables) {
  D2cRecord record;
  record.d2c = converted.d2c;
  record.key.depth_size[0] = converted.d2c.depth.width;
  record.key.depth_size[1] = converted.d2c.depth.height;
  record.key.valid_size[0] = converted.d2c.valid.width;
  record.key.valid_size[1] = converted.d2c.valid.height;
  record.key.hundredfold_unit = hundredfold_unit(config);
  record.key.mipi_channel = mipi_channel(config);
  record.d2c_params = tables.d2c;
  return record;
}

D2dRecord d2d_record(const ConvertedCalibration& converted, const CalibInputConfig& config,
                     const RegisterTables& tables) {
  D2dRecord record;
  record.depth = converted.depth;
  record.key.disp_offset = nearest_multiple(config.disp_offset, 10);
  record.key.hundredfold_unit = hundredfold_unit(config);
  record.key.ref_dist = is_stereo_camera_type(config.cam_type) ? 0 : nearest_multiple(config.ref_dist, 100);
  record.key.mipi_channel = mipi_channel(config);
  record.d2d_params = tables.d2d;
  return record;
}

LutDirectoryRecord lut_directory_record(const RectifyRecord& rectify, const RectifyLutState& luts,
                                        const RegisterTables& tables, std::uint32_t sections) {
  LutDirectoryRecord record;
  record.md5 = rectify.md5;
  record.key = rectify.key;
  record.four_sections = sections == 4 ? 1 : 0;
  record.camera_1 = luts.camera[1].info;
  record.camera_0 = luts.camera[0].info;
  record.hundredfold_start_x = hundredfold_start(record.camera_1.lut_x_start, record.camera_1.sample_rate_bit);
  record.hundredfold_start_y = hundredfold_start(record.camera_1.lut_y_start, record.camera_1.sample_rate_bit);
  record.camera_1_registers = tables.rectify_lut_info[1];
  record.camera_0_registers = tables.rectify_lut_info[0];
  return record;
}

LutDataHeader lut_data_header(const LutDirectoryRecord& directory, std::uint32_t sections, std::uint32_t words) {
  LutDataHeader header;
  header.size = sections * words * 4 + (kLutDataHeaderSize - kLutDataUncounted);
  header.key.width = directory.camera_1.lut_width;
  header.key.height = directory.camera_1.lut_height;
  header.key.hundredfold_start_x = directory.hundredfold_start_x;
  header.hundredfold_start_y = directory.hundredfold_start_y;
  header.section_words = words;
  return header;
}

std::uint32_t stored_sections(const CalibInputConfig& config, const RectifyLutState& luts) {
  const std::uint32_t sections = is_stereo_camera_type(config.cam_type) ? 4 : 2;
  const auto held = [](const HeldSection& section) { return section.room.held(); };
  return std::all_of(luts.sections.begin(), luts.sections.begin() + sections, held) ? sections : 0;
}

bool has_image_size(const DeCalibRecordCamera_S& camera) {
  return std::fabs(widen(camera.width)) > kSmallestSize && std::fabs(widen(camera.height)) > kSmallestSize;
}

FactoryRecord factory_record(const DeCalibRecord_S& calib, const CalibInputConfig& config) {
  FactoryRecord record;
  const std::string_view label = config.mipi_channel_status != 0 ? "Long mode" : "Close mode";
  std::copy(label.begin(), label.end(), record.label);
  record.mode = mipi_channel(config);
  record.cameras = {calib.left_ir, calib.right_ir, calib.rgb};
  for (std::size_t i = 0; i < record.cameras.size(); ++i) {
    const DeCalibRecordCamera_S& camera = record.cameras[i];
    if (!has_image_size(camera)) continue;
    record.sizes[2 * i] = low_word(to_integer(widen(camera.width)));
    record.sizes[2 * i + 1] = low_word(to_integer(widen(camera.height)));
  }
  return record;
}

}  // namespace vq3900
