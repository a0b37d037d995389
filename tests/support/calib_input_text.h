// A complete calibration input configuration as text, and what each of its keys is stored as.
#ifndef VQ3900_TESTS_SUPPORT_CALIB_INPUT_TEXT_H
#define VQ3900_TESTS_SUPPORT_CALIB_INPUT_TEXT_H

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "config/key_table.h"
#include "state/calib_input_state.h"

namespace vq3900::test {

// A key with its text in the complete configuration, another text, and what is stored for them and for its absence from
// the complete configuration; a key without the latter is required.
struct CalibKey {
  const char* section;
  const char* key;
  KeyType type;
  const char* text;
  double value;
  const char* other_text;
  double other;
  std::optional<double> absent;
  double (*stored)(const CalibInputConfig&);

  bool required() const { return !absent.has_value(); }
};

template <auto Member>
double calib_field(const CalibInputConfig& config) {
  return static_cast<double>(config.*Member);
}

// In the order of reading.
inline const std::vector<CalibKey>& calib_keys() {
  using C = CalibInputConfig;
  using enum KeyType;
  constexpr auto kNone = std::nullopt;
  constexpr auto kTenth = static_cast<double>(0.1F);
  constexpr double kLowest = -2147483648.0, kHighest = 2147483647.0;
  static const std::vector<CalibKey> kKeys = {
      {"basic", "baseline", kFloat, "40.5", 40.5, "-50.25", -50.25, kNone, calib_field<&C::baseline>},
      {"basic", "ref_dist", kFloat, "700", 700, "0.1", kTenth, kNone, calib_field<&C::ref_dist>},
      {"basic", "cam_type", kUint8, "3", 3, "200", 200, kNone, calib_field<&C::cam_type>},
      {"basic", "mirrored", kUint8, "1", 1, "0xFE", 254, kNone, calib_field<&C::mirrored>},
      {"basic", "mipi_channel_status", kUint8, "2", 2, "255", 255, 0, calib_field<&C::mipi_channel_status>},

      {"rectify", "distort_type", kUint8, "2", 2, "255", 255, kNone, calib_field<&C::distort_type>},
      {"rectify", "rotate_type", kUint8, "5", 5, "010", 8, kNone, calib_field<&C::rotate_type>},
      {"rectify", "src_img_scale", kFloat, "0.5", 0.5, "0x1p-3", 0.125, 1, calib_field<&C::src_img_scale>},
      {"rectify", "src_img_left_chop", kFloat, "11", 11, "12.9", 12, 0, calib_field<&C::src_img_left_chop>},
      {"rectify", "src_img_right_chop", kFloat, "22", 22, "-3.7", -3, 0, calib_field<&C::src_img_right_chop>},
      {"rectify", "src_img_top_chop", kFloat, "33", 33, "32767.5", 32767, 0, calib_field<&C::src_img_top_chop>},
      {"rectify", "src_img_bottom_chop", kFloat, "44", 44, "-32768", -32768, 0, calib_field<&C::src_img_bottom_chop>},
      {"rectify", "dst_focal_scale", kFloat, "0.75", 0.75, "-1e3", -1000, kNone, calib_field<&C::dst_focal_scale>},
      {"rectify", "dst_res_fixed", kUint8, "1", 1, "77", 77, 0, calib_field<&C::dst_res_fixed>},
      {"rectify", "lut_sample_bit", kInt, "5", 5, "-2147483648", kLowest, kNone, calib_field<&C::lut_sample_bit>},
      {"rectify", "lut_extend_ratio", kFloat, "1.25", 1.25, "-0.5", -0.5, kNone, calib_field<&C::lut_extend_ratio>},
      {"rectify", "ir_l_comp_coeff", kFloat, "0.0625", 0.0625, "6.5", 6.5, 0, calib_field<&C::ir_l_comp_coeff>},
      {"rectify", "ir_r_comp_coeff", kFloat, "0.125", 0.125, "7.5", 7.5, 0, calib_field<&C::ir_r_comp_coeff>},
      {"rectify", "ldm_comp_coeff", kFloat, "0.25", 0.25, "8.5", 8.5, 0, calib_field<&C::ldm_comp_coeff>},
      {"rectify",
       "ir_l_virtual_cx_offset",
       kFloat,
       "9.5",
       9.5,
       "-9.25",
       -9.25,
       0,
       calib_field<&C::ir_l_virtual_cx_offset>},
      {"rectify",
       "ir_r_virtual_cx_offset",
       kFloat,
       "10.5",
       10.5,
       "-10.25",
       -10.25,
       0,
       calib_field<&C::ir_r_virtual_cx_offset>},
      {"rectify",
       "ir_virtual_cy_offset",
       kFloat,
       "11.5",
       11.5,
       "-11.25",
       -11.25,
       0,
       calib_field<&C::ir_virtual_cy_offset>},

      {"d2d", "disp_offset", kFloat, "15.5", 15.5, "-16.5", -16.5, 0, calib_field<&C::disp_offset>},
      {"d2d", "invalid_disp", kInt32, "4095", 4095, "2147483647", kHighest, 0, calib_field<&C::invalid_disp>},
      {"d2d", "d2d_params_unit", kFloat, "0.5", 0.5, "-2.5", -2.5, 1, calib_field<&C::d2d_params_unit>},
      {"d2d", "depth_mode", kInt8, "7", 7, "-128", -128, 1, calib_field<&C::depth_mode>},

      {"d2c", "clip_left_w_depth", kInt, "101", 101, "-101", -101, kNone, calib_field<&C::clip_left_w_depth>},
      {"d2c", "clip_top_h_depth", kInt, "102", 102, "-102", -102, kNone, calib_field<&C::clip_top_h_depth>},
      {"d2c", "clip_right_w_depth", kInt, "103", 103, "-103", -103, kNone, calib_field<&C::clip_right_w_depth>},
      {"d2c", "clip_bottom_h_depth", kInt, "104", 104, "-104", -104, kNone, calib_field<&C::clip_bottom_h_depth>},
      {"d2c", "depth_scale", kFloat, "0.875", 0.875, "2", 2, kNone, calib_field<&C::depth_scale>},
      {"d2c", "clip_left_w_valid", kInt, "201", 201, "-201", -201, kNone, calib_field<&C::clip_left_w_valid>},
      {"d2c", "clip_top_h_valid", kInt, "202", 202, "-202", -202, kNone, calib_field<&C::clip_top_h_valid>},
      {"d2c", "clip_right_w_valid", kInt, "203", 203, "-203", -203, kNone, calib_field<&C::clip_right_w_valid>},
      {"d2c", "clip_bottom_h_valid", kInt, "204", 204, "-204", -204, kNone, calib_field<&C::clip_bottom_h_valid>},
      {"d2c", "valid_scale", kFloat, "1.5", 1.5, "3", 3, kNone, calib_field<&C::valid_scale>},
      {"d2c", "clip_left_w_rgb", kInt, "301", 301, "-301", -301, kNone, calib_field<&C::clip_left_w_rgb>},
      {"d2c", "clip_top_h_rgb", kInt, "302", 302, "-302", -302, kNone, calib_field<&C::clip_top_h_rgb>},
      {"d2c", "clip_right_w_rgb", kInt, "303", 303, "-303", -303, kNone, calib_field<&C::clip_right_w_rgb>},
      {"d2c", "clip_bottom_h_rgb", kInt, "304", 304, "-304", -304, kNone, calib_field<&C::clip_bottom_h_rgb>},
      {"d2c", "d2d_params_unit_in_R_en", kInt8, "1", 1, "-1", -1, 0, calib_field<&C::d2d_params_unit_in_R_en>},
  };
  return kKeys;
}

// The complete configuration, of which a test replaces, adds and removes what it looks at.
class CalibInputText {
 public:
  CalibInputText() {
    for (const CalibKey& key : calib_keys())
      lines_.push_back({key.section, key.key, key.text});
  }

  // The other value for every key.
  static CalibInputText other() {
    CalibInputText text;
    for (const CalibKey& key : calib_keys())
      text.set(key.key, key.other_text);
    return text;
  }

  CalibInputText& set(std::string_view key, std::string_view value) {
    line_of(key).value = value;
    return *this;
  }

  CalibInputText& add(std::string_view section, std::string_view key, std::string_view value) {
    lines_.push_back({std::string(section), std::string(key), std::string(value)});
    return *this;
  }

  CalibInputText& remove(std::string_view key) {
    line_of(key);
    std::erase_if(lines_, [key](const Line& line) { return line.key == key; });
    return *this;
  }

  // Leaves the header of the section alone.
  CalibInputText& empty_section(std::string_view section) {
    std::erase_if(lines_, [section](const Line& line) { return line.section == section; });
    return *this;
  }

  CalibInputText& remove_section(std::string_view section) {
    std::erase(sections_, section);
    return *this;
  }

  CalibInputText& reverse_sections() {
    std::ranges::reverse(sections_);
    return *this;
  }

  std::string section(std::string_view name, std::string_view line_end = "\n") const {
    std::string text = std::string("[").append(name).append("]").append(line_end);
    for (const Line& line : lines_) {
      if (line.section == name) text.append(line.key).append(" = ").append(line.value).append(line_end);
    }
    return text;
  }

  std::string text(std::string_view line_end = "\n") const {
    std::string text;
    for (const std::string& name : sections_)
      text += section(name, line_end);
    return text;
  }

 private:
  struct Line {
    std::string section, key, value;
  };

  Line& line_of(std::string_view key) {
    const auto at = std::ranges::find_if(lines_, [key](const Line& line) { return line.key == key; });
    if (at != lines_.end()) return *at;
    ADD_FAILURE() << "no key " << key;
    return lines_.emplace_back();
  }

  std::vector<std::string> sections_ = {"basic", "rectify", "d2d", "d2c"};
  std::vector<Line> lines_;
};

}  // namespace vq3900::test

#endif
