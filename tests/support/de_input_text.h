// A complete depth-engine configuration as text, what each of its keys is stored as, and files that hold texts.
#ifndef VQ3900_TESTS_SUPPORT_DE_INPUT_TEXT_H
#define VQ3900_TESTS_SUPPORT_DE_INPUT_TEXT_H

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <fstream>
#include <ios>
#include <iterator>
#include <random>
#include <sstream>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "state/de_input_state.h"

namespace vq3900::test {

// All sections and all keys, all different from 0. Loading and applying it succeeds.
inline constexpr const char* kDeInputText = R"([mode]
version = 2.1.4.5
laser_type = 3
dpu_desc = mono 1280x800
in_ir_res = {1280,800}
rectify_out_valid_res = {1272,796}
chop_out_res = {1264,792}
[basic]
cam_mode = 0
depth_mode = 1
upsample_enable = true
scale_mode = 2
rectify_mode = 1
distort_type = 1
rotate_90_en = true
rotate_clockwise = true
sbg_en = true
sub_mode_sel = 5
start_rows = 321
d2c_buffer_position = 123
d2c_total_buffer_rows = 456
d2c_recovery_mode = 2
d2c_recovery_expand_width = 0.25
depth_sign = 1
depth_unit = 0.4
[disparity]
min_disparity = -8
pre_win_size = 7
win_size = 9
cost_strong_t = 101
cost_weak_t = 102
conf_region_t = 103
conf_strong_t = 104
conf_grow_t = 105
grow_disp_diff_thr = 2
lrc_en = true
lrc_thresh = 3
shadow_en = true
shadow_ring_base = true
shadow_win_size = 11
shadow_smooth_size = 12
shadow_tex_thresh = 13
shadow_diff_per = 14
shadow_edge_preserving = 15
cost_shadow1_t = 201
cost_shadow2_t = 202
arm_len = 6
arm_short_en = true
arm_short_mask = 0x1234567
tile_width = 640
tile_overlap_x = 4
tile_overlap_x_fast = 1
tile_overlap_y_traverse = 32
max_see_num = 51
max_seed_try_num = 52
max_seed_valid_try_num = 53
smooth_enable = true
smooth_win_size = 5
sp_coef = {0.5,-0.25,1.5,0.75}
[extend_chop]
extend_tar = {16,17,8,9}
extend_ref = {12,13,6,7}
chop = {4,5,2,3}
[gpm]
enable = true
x = {10,11,12,13,14,15,16,17,18,19,20,21,22,23,24,25}
y = {-30,31,32,33,34,35,36,37,38,39,40,41,42,43,44,45}
enable_bits_per_row = {1,4,0,0,0,0,0,0,0,0,0,0,0,0,0,0x8000}
texture_t0 = 61
texture_t1 = 62
active_t = 63
ncost_t = 64
hist_dy_dist = 65
gp_ref_dy_t = 66
gp_enabled_cols = 3
[scheme]
disp_offset = 40
d2d_params_unit = 0.5
d2d_params_unit_in_R_en = 1
ref_dist = 700
mono_lut_sbg2r = 1
mono_lut_rectify = 1
hw_d2d_en = 1
mipi_channel_status = 1
)";

// The complete configuration, of which a test replaces, adds and removes what it looks at.
class DeInputText {
 public:
  DeInputText() {
    std::istringstream lines(kDeInputText);
    for (std::string line; std::getline(lines, line);) {
      if (line.front() == '[') {
        sections_.push_back({line.substr(1, line.size() - 2), {}});
      } else {
        const std::size_t at = line.find(" = ");
        sections_.back().fields.emplace_back(line.substr(0, at), line.substr(at + 3));
      }
    }
  }

  // Gives the key another value; a key that is not there joins the end of its section.
  DeInputText& set(std::string_view section, std::string_view key, std::string_view value) {
    Fields& fields = fields_of(section);
    const auto field = std::find_if(fields.begin(), fields.end(), [&](const Field& f) { return f.first == key; });
    if (field != fields.end()) {
      field->second = value;
    } else {
      fields.emplace_back(key, value);
    }
    return *this;
  }

  DeInputText& remove(std::string_view section, std::string_view key) {
    Fields& fields = fields_of(section);
    const auto is_key = [&](const Field& field) { return field.first == key; };
    if (std::find_if(fields.begin(), fields.end(), is_key) == fields.end()) ADD_FAILURE() << "no key " << key;
    fields.erase(std::remove_if(fields.begin(), fields.end(), is_key), fields.end());
    return *this;
  }

  // Leaves the header of the section alone.
  DeInputText& empty_section(std::string_view section) {
    fields_of(section).clear();
    return *this;
  }

  DeInputText& remove_section(std::string_view section) {
    fields_of(section);
    sections_.erase(
        std::remove_if(sections_.begin(), sections_.end(), [&](const Section& s) { return s.name == section; }),
        sections_.end());
    return *this;
  }

  std::string text() const {
    std::string text;
    for (const Section& section : sections_) {
      text += "[" + section.name + "]\n";
      for (const Field& field : section.fields)
        text += field.first + " = " + field.second + "\n";
    }
    return text;
  }

 private:
  using Field = std::pair<std::string, std::string>;
  using Fields = std::vector<Field>;
  struct Section {
    std::string name;
    Fields fields;
  };

  Fields& fields_of(std::string_view name) {
    const auto at = std::find_if(sections_.begin(), sections_.end(), [&](const Section& s) { return s.name == name; });
    if (at != sections_.end()) return at->fields;
    ADD_FAILURE() << "no section " << name;
    sections_.push_back({std::string(name), {}});
    return sections_.back().fields;
  }

  std::vector<Section> sections_;
};

// A file with the bytes it is given, gone at the end of its scope.
class TempFile {
 public:
  explicit TempFile(std::string_view bytes) : path_(unused_path()) {
    std::ofstream file(path_, std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!file.flush()) ADD_FAILURE() << "cannot write " << path_;
  }
  ~TempFile() { std::remove(path_.c_str()); }
  TempFile(const TempFile&) = delete;
  TempFile& operator=(const TempFile&) = delete;

  const char* path() const { return path_.c_str(); }

  // A path in the folder for temporary files that no other process and no other call has.
  static std::string unused_path() {
    std::random_device random;
    return testing::TempDir() + "vq3900_" + std::to_string(random()) + "_" + std::to_string(random());
  }

 private:
  std::string path_;
};

// The same file by a path of just that length: separators may be repeated.
inline std::string lengthened(std::string path, std::size_t length) {
  const std::size_t separator = path.find_last_of("/\\");
  return path.insert(separator, length - path.size(), path[separator]);
}

// A key, what the complete text makes of it, another value for it, and where it is kept.
struct KeyCase {
  using Values = std::vector<double>;
  const char* section;
  const char* key;
  Values value;
  const char* other_text;
  Values other;
  Values (*stored)(const DeInputConfig&);
};

namespace stored {

using Values = KeyCase::Values;
using Config = DeInputConfig;
using Basic = DeInputBasic;
using Disparity = DeInputDisparity;
using ExtendChop = DeInputExtendChop;
using Gpm = DeInputGpm;

template <typename Field>
Values values(const Field& field) {
  if constexpr (std::is_arithmetic_v<Field>) {
    return {static_cast<double>(field)};
  } else {
    return Values(std::begin(field), std::end(field));
  }
}

inline Values version(const Config& config) {
  return values(config.mode.version);
}

template <auto Field>
Values mode(const Config& config) {
  return values(config.mode.record.*Field);
}

template <auto Field>
Values basic(const Config& config) {
  return values(config.basic.*Field);
}

template <auto Field>
Values disparity(const Config& config) {
  return values(config.disparity.*Field);
}

template <auto Field>
Values extend_chop(const Config& config) {
  return values(config.extend_chop.*Field);
}

template <auto Field>
Values gpm(const Config& config) {
  return values(config.gpm.*Field);
}

inline Values ref_dy_tolerance(const Config& config) {
  return values(std::array{config.gpm.gp_ref_dy_t, config.gpm.gp_ref_dy_t_neg});
}

template <auto Field>
Values scheme(const Config& config) {
  return values(config.scheme.record.*Field);
}

template <unsigned Bit>
Values flag(const Config& config) {
  return values(config.scheme.record.scheme_flags >> Bit & 1);
}

}  // namespace stored

// In the order of the key tables; d2d_params_unit_in_R_en is kept nowhere and has tests of its own.
inline const std::vector<KeyCase>& de_input_key_cases() {
  using namespace stored;
  static const std::vector<KeyCase> kCases = {
      {"mode", "version", {0x32313435}, "9.8.7", {0x393837}, version},
      {"mode", "laser_type", {3}, "4294967295", {4294967295}, mode<&dpu_mode::laser_type>},
      {"mode", "in_ir_res", {1280, 800}, "{640,65537}", {640, 1}, mode<&dpu_mode::in_ir_res>},
      {"mode", "rectify_out_valid_res", {1272, 796}, "{ 0x10, 010 }", {16, 8}, mode<&dpu_mode::rectify_out_valid_res>},
      {"mode", "chop_out_res", {1264, 792}, "{,7,,-1,}", {7, 65535}, mode<&dpu_mode::chop_out_res>},

      {"basic", "cam_mode", {0}, "255", {255}, basic<&Basic::cam_mode>},
      {"basic", "depth_mode", {1}, "0xFE", {254}, basic<&Basic::depth_mode>},
      {"basic", "upsample_enable", {1}, "FALSE", {0}, basic<&Basic::upsample_enable>},
      {"basic", "scale_mode", {2}, "255", {255}, basic<&Basic::scale_mode>},
      {"basic", "rectify_mode", {1}, "3", {3}, basic<&Basic::rectify_mode>},
      {"basic", "distort_type", {1}, "7", {7}, basic<&Basic::distort_type>},
      {"basic", "rotate_90_en", {1}, "0", {0}, basic<&Basic::rotate_90_en>},
      {"basic", "rotate_clockwise", {1}, "0", {0}, basic<&Basic::rotate_clockwise>},
      {"basic", "sbg_en", {1}, "False", {0}, basic<&Basic::sbg_en>},
      {"basic", "sub_mode_sel", {5}, "200", {200}, basic<&Basic::sub_mode_sel>},
      {"basic", "start_rows", {321}, "4294967295", {4294967295}, basic<&Basic::start_rows>},
      {"basic", "d2c_buffer_position", {123}, "-2147483648", {-2147483648.0}, basic<&Basic::d2c_buffer_position>},
      {"basic", "d2c_total_buffer_rows", {456}, "2147483647", {2147483647}, basic<&Basic::d2c_total_buffer_rows>},
      {"basic", "d2c_recovery_mode", {2}, "250", {250}, basic<&Basic::d2c_recovery_mode>},
      {"basic", "d2c_recovery_expand_width", {0.25}, "-1.5e3", {-1500}, basic<&Basic::d2c_recovery_expand_width>},
      {"basic", "depth_sign", {1}, "-2", {254}, basic<&Basic::depth_sign>},
      {"basic", "depth_unit", {2}, "1.6", {4}, basic<&Basic::depth_unit>},

      {"disparity", "min_disparity", {-8}, "2147483647", {2147483647}, disparity<&Disparity::min_disparity>},
      {"disparity", "pre_win_size", {7}, "255", {255}, disparity<&Disparity::pre_win_size>},
      {"disparity", "win_size", {9}, "-2147483648", {-2147483648.0}, disparity<&Disparity::win_size>},
      {"disparity", "cost_strong_t", {101}, "-1", {-1}, disparity<&Disparity::cost_strong_t>},
      {"disparity", "cost_weak_t", {102}, "-1", {-1}, disparity<&Disparity::cost_weak_t>},
      {"disparity", "conf_region_t", {103}, "-1", {-1}, disparity<&Disparity::conf_region_t>},
      {"disparity", "conf_strong_t", {104}, "-1", {-1}, disparity<&Disparity::conf_strong_t>},
      {"disparity", "conf_grow_t", {105}, "-1", {-1}, disparity<&Disparity::conf_grow_t>},
      {"disparity", "grow_disp_diff_thr", {2}, "-1", {-1}, disparity<&Disparity::grow_disp_diff_thr>},
      {"disparity", "lrc_en", {1}, "0", {0}, disparity<&Disparity::lrc_en>},
      {"disparity", "lrc_thresh", {3}, "-1", {-1}, disparity<&Disparity::lrc_thresh>},
      {"disparity", "shadow_en", {1}, "0", {0}, disparity<&Disparity::shadow_en>},
      {"disparity", "shadow_ring_base", {1}, "0", {0}, disparity<&Disparity::shadow_ring_base>},
      {"disparity", "shadow_win_size", {11}, "-1", {-1}, disparity<&Disparity::shadow_win_size>},
      {"disparity", "shadow_smooth_size", {12}, "-1", {-1}, disparity<&Disparity::shadow_smooth_size>},
      {"disparity", "shadow_tex_thresh", {13}, "-1", {-1}, disparity<&Disparity::shadow_tex_thresh>},
      {"disparity", "shadow_diff_per", {14}, "-1", {-1}, disparity<&Disparity::shadow_diff_per>},
      {"disparity", "shadow_edge_preserving", {15}, "-1", {-1}, disparity<&Disparity::shadow_edge_preserving>},
      {"disparity", "cost_shadow1_t", {201}, "-1", {-1}, disparity<&Disparity::cost_shadow1_t>},
      {"disparity", "cost_shadow2_t", {202}, "-1", {-1}, disparity<&Disparity::cost_shadow2_t>},
      {"disparity", "arm_len", {6}, "-1", {-1}, disparity<&Disparity::arm_len>},
      {"disparity", "arm_short_en", {1}, "0", {0}, disparity<&Disparity::arm_short_en>},
      {"disparity", "arm_short_mask", {0x1234567}, "-1", {-1}, disparity<&Disparity::arm_short_mask>},
      {"disparity", "tile_width", {640}, "-1", {-1}, disparity<&Disparity::tile_width>},
      {"disparity", "tile_overlap_x", {4}, "-1", {-1}, disparity<&Disparity::tile_overlap_x>},
      {"disparity", "tile_overlap_x_fast", {1}, "-1", {-1}, disparity<&Disparity::tile_overlap_x_fast>},
      {"disparity", "tile_overlap_y_traverse", {32}, "-1", {-1}, disparity<&Disparity::tile_overlap_y_traverse>},
      {"disparity", "max_see_num", {51}, "-1", {-1}, disparity<&Disparity::max_see_num>},
      {"disparity", "max_seed_try_num", {52}, "-1", {-1}, disparity<&Disparity::max_seed_try_num>},
      {"disparity", "max_seed_valid_try_num", {53}, "-1", {-1}, disparity<&Disparity::max_seed_valid_try_num>},
      {"disparity", "smooth_enable", {1}, "0", {0}, disparity<&Disparity::smooth_enable>},
      {"disparity", "smooth_win_size", {5}, "255", {255}, disparity<&Disparity::smooth_win_size>},
      {"disparity",
       "sp_coef",
       {0.5, -0.25, 1.5, 0.75},
       "{0.1, 1e-3,-7 ,.5x}",
       {0.1, 1e-3, -7, 0.5},
       disparity<&Disparity::sp_coef>},

      {"extend_chop",
       "extend_tar",
       {16, 17, 8, 9},
       "{-1,2147483648,0x10,010}",
       {-1, -2147483648.0, 16, 8},
       extend_chop<&ExtendChop::extend_tar>},
      {"extend_chop", "extend_ref", {12, 13, 6, 7}, "{9, 8, 7, 6}", {9, 8, 7, 6}, extend_chop<&ExtendChop::extend_ref>},
      {"extend_chop", "chop", {4, 5, 2, 3}, "{5,4,3,2}", {5, 4, 3, 2}, extend_chop<&ExtendChop::chop>},

      {"gpm", "enable", {1}, "0", {0}, gpm<&Gpm::enable>},
      {"gpm",
       "x",
       {10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24, 25},
       "{1,2,3,4,5,6,7,8,9,8,7,6,5,4,3,-2}",
       {1, 2, 3, 4, 5, 6, 7, 8, 9, 8, 7, 6, 5, 4, 3, -2},
       gpm<&Gpm::x>},
      {"gpm",
       "y",
       {-30, 31, 32, 33, 34, 35, 36, 37, 38, 39, 40, 41, 42, 43, 44, 45},
       "{1,2,3,4,5,6,7,8,9,8,7,6,5,4,3,2}",
       {1, 2, 3, 4, 5, 6, 7, 8, 9, 8, 7, 6, 5, 4, 3, 2},
       gpm<&Gpm::y>},
      {"gpm",
       "enable_bits_per_row",
       {1, 4, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x8000},
       "{65535,65536,3,4,5,6,7,8,9,8,7,6,5,4,3,2}",
       {65535, 0, 3, 4, 5, 6, 7, 8, 9, 8, 7, 6, 5, 4, 3, 2},
       gpm<&Gpm::enable_bits_per_row>},
      {"gpm", "texture_t0", {61}, "-1", {-1}, gpm<&Gpm::texture_t0>},
      {"gpm", "texture_t1", {62}, "-1", {-1}, gpm<&Gpm::texture_t1>},
      {"gpm", "active_t", {63}, "-1", {-1}, gpm<&Gpm::active_t>},
      {"gpm", "ncost_t", {64}, "-1", {-1}, gpm<&Gpm::ncost_t>},
      {"gpm", "hist_dy_dist", {65}, "255", {255}, gpm<&Gpm::hist_dy_dist>},
      {"gpm", "gp_ref_dy_t", {66, -66}, "-5", {-5, 5}, ref_dy_tolerance},
      {"gpm", "gp_enabled_cols", {3}, "255", {255}, gpm<&Gpm::gp_enabled_cols>},

      {"scheme", "disp_offset", {40}, "15", {20}, scheme<&dpu_scheme_config::disp_offset>},
      {"scheme", "d2d_params_unit", {50}, "0.25", {25}, scheme<&dpu_scheme_config::d2d_params_unit>},
      {"scheme", "ref_dist", {700}, "250", {300}, scheme<&dpu_scheme_config::ref_dist>},
      {"scheme", "mono_lut_sbg2r", {1}, "2", {0}, flag<2>},
      {"scheme", "mono_lut_rectify", {1}, "2", {0}, flag<3>},
      {"scheme", "hw_d2d_en", {1}, "254", {0}, flag<4>},
      {"scheme", "mipi_channel_status", {1}, "0", {0}, flag<5>},
  };
  return kCases;
}

}  // namespace vq3900::test

#endif
