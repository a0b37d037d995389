#include "calib/calib_keys.h"

#include <algorithm>
#include <array>
#include <limits>

namespace vq3900::tool {

namespace {

constexpr std::string_view kByte = "0 to 255";
constexpr std::string_view kSwitch = "0 or 1";
constexpr std::string_view kChop = "-32768 to 32767, cut to whole pixels";
constexpr std::string_view kClip = "whole pixels";
constexpr std::string_view kScale = "above 0";
constexpr std::string_view kOffset = "pixels; below 0.1 counts as 0";
constexpr std::string_view kAny = "any";
constexpr std::string_view kDistortType = "0 to 2";
constexpr std::string_view kSampleBit = "3 to 6";
constexpr std::string_view kExtendRatio = "0 to 4";

constexpr auto kNotes = std::to_array<CalibKeyNote>({
    {"basic", "baseline", "", kAny, "its sign must be that of the calibration's baseline, whose length replaces it"},
    {"basic", "ref_dist", "", kAny, "distance of the reference plane, millimetres"},
    {"basic", "cam_type", "", kByte, "type of the camera; 2 and 3 are stereo types with a mode of their own"},
    {"basic", "mirrored", "", kByte, "1 for mirrored images; kept"},
    {"basic", "mipi_channel_status", "0", kSwitch, "MIPI channel, for images"},
    {"rectify", "distort_type", "", kDistortType, "0 polynomial, 1 LUT, 2 both"},
    {"rectify", "rotate_type", "", kByte, "rotation of the images; kept"},
    {"rectify", "src_img_scale", "1", kScale, "scale of both IR images, before chopping"},
    {"rectify", "src_img_left_chop", "0", kChop, "columns taken off on the left"},
    {"rectify", "src_img_right_chop", "0", kChop, "columns taken off on the right"},
    {"rectify", "src_img_top_chop", "0", kChop, "rows taken off at the top"},
    {"rectify", "src_img_bottom_chop", "0", kChop, "rows taken off at the bottom"},
    {"rectify", "dst_focal_scale", "", kScale, "scale of the rectified focal length, and of the output size"},
    {"rectify", "dst_res_fixed", "0", kSwitch, "1: the output size is not scaled"},
    {"rectify", "lut_sample_bit", "", kSampleBit, "a LUT has a sample every 2 to this power pixels"},
    {"rectify", "lut_extend_ratio", "", kExtendRatio, "LUT size over image size from 1 on; below 1 what is added to 1"},
    {"rectify", "ir_l_comp_coeff", "0", kAny, "temperature compensation of the left IR camera"},
    {"rectify", "ir_r_comp_coeff", "0", kAny, "temperature compensation of the right IR camera"},
    {"rectify", "ldm_comp_coeff", "0", kAny, "temperature compensation of the laser"},
    {"rectify", "ir_l_virtual_cx_offset", "0", kOffset, "added to the rectified cx of the left camera"},
    {"rectify", "ir_r_virtual_cx_offset", "0", kOffset, "added to the rectified cx of the right camera"},
    {"rectify", "ir_virtual_cy_offset", "0", kOffset, "added to the rectified cy of both cameras"},
    {"d2d", "disp_offset", "0", kAny, "disparity offset, pixels"},
    {"d2d", "invalid_disp", "0", "-2147483648 to 2147483647", "disparity that stands for none"},
    {"d2d", "d2d_params_unit", "1", "any; below 0.00001 in magnitude counts as 1", "depth unit, millimetres"},
    {"d2d",
     "depth_mode",
     "0 for cam_type 0 and 1, 1 for 2 and 3, else as before",
     kSwitch,
     "0: depth relative to the reference plane, 1: absolute"},
    {"d2c", "clip_left_w_depth", "", kClip, "clipped off the rectified image on the left"},
    {"d2c", "clip_top_h_depth", "", kClip, "at the top"},
    {"d2c", "clip_right_w_depth", "", kClip, "on the right"},
    {"d2c", "clip_bottom_h_depth", "", kClip, "at the bottom"},
    {"d2c", "depth_scale", "", kScale, "scale from the clipped rectified image to the depth image"},
    {"d2c", "clip_left_w_valid", "", kClip, "clipped off the colour image on the left"},
    {"d2c", "clip_top_h_valid", "", kClip, "at the top"},
    {"d2c", "clip_right_w_valid", "", kClip, "on the right"},
    {"d2c", "clip_bottom_h_valid", "", kClip, "at the bottom"},
    {"d2c", "valid_scale", "", kScale, "scale from the clipped colour image to the valid area"},
    {"d2c", "clip_left_w_rgb", "", kClip, "clipped off the valid area on the left"},
    {"d2c", "clip_top_h_rgb", "", kClip, "at the top"},
    {"d2c", "clip_right_w_rgb", "", kClip, "on the right"},
    {"d2c", "clip_bottom_h_rgb", "", kClip, "at the bottom"},
    {"d2c", "d2d_params_unit_in_R_en", "0", kSwitch, "1: the rotation to the colour camera is multiplied by the unit"},
});

// The texts above that say more than the type of their key.
struct Range {
  std::string_view accepted;
  double low;
  double high;
};
constexpr Range kRanges[] = {
    {kSwitch, 0, 1},
    {kChop, -32768, 32767},
    {kScale, std::numeric_limits<double>::denorm_min(), kUnlimited},
    {kDistortType, 0, 2},
    {kSampleBit, 3, 6},
    {kExtendRatio, 0, 4},
};

}  // namespace

const CalibKeyNote* find_calib_key_note(const KeyDescription& key) {
  const auto* const found = std::find_if(kNotes.begin(), kNotes.end(), [&key](const CalibKeyNote& note) {
    return note.section == key.section && note.key == key.name;
  });
  return found == kNotes.end() ? nullptr : found;
}

AcceptedValues accepted_calib_values(const KeyDescription& key) {
  const CalibKeyNote* const note = find_calib_key_note(key);
  for (const Range& range : kRanges) {
    if (note != nullptr && note->accepted == range.accepted) return {range.low, range.high};
  }
  // By its type alone: another kind of configuration has keys of the same names.
  KeyDescription unnamed = key;
  unnamed.section = "";
  return accepted_values(unnamed);
}

}  // namespace vq3900::tool
