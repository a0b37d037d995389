// The set entry points as data: what each needs, takes and writes.
#ifndef VQ3900_TESTS_SUPPORT_SET_ENTRIES_H
#define VQ3900_TESTS_SUPPORT_SET_ENTRIES_H

#include "vq3900_depth_engine.h"

#include <cstdint>
#include <ostream>
#include <vector>

#include "support/block_samples.h"

namespace vq3900::test {

struct SetEntry {
  const char* name;
  void (*prepare)();       // what the conversion needs beside the record
  std::int32_t (*call)();  // with the samples
  std::vector<std::int32_t (*)()> with_a_null;
  std::vector<Elements> writes;
  Elements only_in_memory;  // registers that the conversion changes and the call does not write
};

inline void PrintTo(const SetEntry& entry, std::ostream* stream) {
  *stream << entry.name;
}

// All eight, in one list.
inline const std::vector<SetEntry>& set_entries() {
  static const D2cConfig kD2cConfig = sample::d2c();
  static const DeRectifyParams_S kRectify = sample::rectify();
  static const DeRectifyCtrlParams_S kRectifyCtrl = sample::rectify_ctrl();
  static const std::vector<SetEntry> kEntries{
      {"Basic",
       [] {},
       sample::write_basic,
       {[] { return de_set_baisc_params_to_registers(nullptr); }},
       {sample::d2d_words(), sample::basic_control_words()},
       {}},
      {"Prefilter",
       sample::set_image_size,
       sample::write_prefilter,
       {[] { return de_set_prefilter_params_to_registers(nullptr); }},
       {sample::prefilter_words()},
       {}},
      {"ExtendChop",
       sample::set_extended_size,
       sample::write_extend_chop,
       {[] { return de_set_extend_chop_params_to_registers(nullptr); }},
       {sample::extend_chop_words()},
       {}},
      {"Disparity",
       [] {},
       sample::write_disparity,
       {[] { return de_set_disp_calc_params_to_registers(nullptr); }},
       {sample::disparity_words()},
       {{0x50001028, 0x0000C400, 0x00000400}}},
      {"GlobalPoints",
       [] {},
       sample::write_gpm,
       {[] { return de_set_gpm_params_to_registers(nullptr); }},
       {sample::gpm_words()},
       {}},
      {"D2c",
       [] { set_camera_mode(0, 1); },
       sample::write_d2c,
       {[] { return de_set_d2c_params_to_registers(nullptr, &sample::kColor, &sample::kPose, &kD2cConfig); },
        [] { return de_set_d2c_params_to_registers(&sample::kDepth, nullptr, &sample::kPose, &kD2cConfig); },
        [] { return de_set_d2c_params_to_registers(&sample::kDepth, &sample::kColor, nullptr, &kD2cConfig); },
        [] { return de_set_d2c_params_to_registers(&sample::kDepth, &sample::kColor, &sample::kPose, nullptr); }},
       {sample::projection_words(), sample::d2c_control_words()},
       {}},
      {"D2d",
       [] {},
       sample::write_d2d,
       {[] { return de_set_d2d_params_to_registers(nullptr); }},
       {sample::d2d_control_words()},
       {}},
      {"Rectify",
       sample::set_rectification,
       sample::write_rectify,
       {[] { return de_set_rectify_params_to_registers(nullptr, &kRectifyCtrl); },
        [] { return de_set_rectify_params_to_registers(&kRectify, nullptr); }},
       {sample::rectify_words(), sample::sbg2r_words()},
       {}},
  };
  return kEntries;
}

}  // namespace vq3900::test

#endif
