// The get entry points as data: what each reads and answers.
#ifndef VQ3900_TESTS_SUPPORT_GET_ENTRIES_H
#define VQ3900_TESTS_SUPPORT_GET_ENTRIES_H

#include "vq3900_depth_engine.h"

#include <cstddef>
#include <cstdint>
#include <ostream>
#include <utility>
#include <vector>

#include "support/block_samples.h"

namespace vq3900::test {

// What the tests fill the caller's records with.
inline constexpr unsigned char kUntouched = 0xA5;

// When a call merges what it read: each table before the next is read, or all of them when everything is read.
enum class Merges : std::uint8_t { kOneByOne, kAtTheEnd };

struct GetEntry {
  const char* name;
  void (*prepare)();
  std::int32_t (*call)(void* record, void* second_record);
  std::size_t size;
  std::size_t second_size;      // 0: there is one record
  std::vector<Elements> reads;  // what the device answers
  Merges merges;
  Bytes fresh;            // the records that come out of a fresh library
  std::int32_t (*set)();  // writes the sample
  Bytes after_set;        // the records that come out afterwards
};

inline void PrintTo(const GetEntry& entry, std::ostream* stream) {
  *stream << entry.name;
}

template <typename Record, std::int32_t (*Get)(Record*)>
std::int32_t get_record(void* record, void* /*none*/) {
  return Get(static_cast<Record*>(record));
}

inline std::int32_t get_gpm(void* params, void* status) {
  return de_get_gpm_params_from_registers(static_cast<DeGpmParams_S*>(params),
                                          static_cast<DeGpStatusParams_S*>(status));
}

template <std::uint32_t DistortType, std::uint8_t Block>
std::int32_t get_rectify(void* params, void* ctrl) {
  return de_get_rectify_params_from_registers(
      static_cast<DeRectifyParams_S*>(params), static_cast<DeRectifyCtrlParams_S*>(ctrl), DistortType, Block);
}

// An entry with one record.
template <typename Record, std::int32_t (*Get)(Record*)>
GetEntry one_record(const char* name, std::vector<Elements> reads, Bytes fresh, std::int32_t (*set)(),
                    Bytes after_set) {
  return {name,
          [] {},
          get_record<Record, Get>,
          sizeof(Record),
          0,
          std::move(reads),
          Merges::kOneByOne,
          std::move(fresh),
          set,
          std::move(after_set)};
}

// The bytes of a record with changes: what comes back differently from what was set.
template <typename Record, typename Change>
Bytes changed(Record record, const Change& change) {
  change(record);
  return bytes_of(record);
}

// The camera mode comes from the bit that holds the depth mode.
inline Bytes basic_after_set() {
  return changed(sample::basic(), [](DeBasicParams_S& params) { params.cam_mode = 0; });
}

// Five fields have no register.
inline Bytes fresh_basic() {
  return changed(sample::basic(), [](DeBasicParams_S& params) {
    params.cam_mode = 0;
    params.baseline = params.focal_length_pix = 0;
    params.in_ir_width = params.in_ir_height = 0;
    params.sbg2r_rotate = 0;
  });
}

inline Bytes fresh_disparity() {
  return changed(sample::disparity(), [](DeDispCalcParams_S& params) {
    params.arm_short_en = params.arm_short_mask = 0;
    params.smooth_enable_flag = 0;
  });
}

// Tolerances come back unsigned.
inline Bytes gpm_after_set() {
  return changed(sample::gpm(), [](DeGpmParams_S& params) { params.gp_ref_dy_t_neg = 4091; });
}

inline Bytes fresh_gpm() {
  return changed(sample::gpm(), [](DeGpmParams_S& params) {
    params.gp_ref_dy_t_neg = 4091;
    params.enable_mirror = 0;
  });
}

// Three bytes of the status record, the rest of the caller's.
inline Bytes short_status(unsigned char first, unsigned char second, unsigned char third) {
  Bytes status(sizeof(DeGpStatusParams_S), kUntouched);
  status[0] = first;
  status[1] = second;
  status[2] = third;
  return status;
}

// The recovery bits come back crossed, the width in steps of 1/256.
inline Bytes read_d2c() {
  return changed(sample::d2c(), [](D2cConfig& config) {
    std::swap(config.recovery_mode_1, config.recovery_mode_2);
    config.d2c_recovery_expand_width = 0.30078125F;
  });
}

// No set entry point writes the control registers of the rectifier.
inline Bytes rectify_after_set() {
  return changed(sample::rectify(), [](DeRectifyParams_S& params) { params.cam0_en = 0; }) +
         bytes_of(DeRectifyCtrlParams_S{});
}

// All eight, in one list.
inline const std::vector<GetEntry>& get_entries() {
  static const std::vector<GetEntry> kEntries{
      one_record<DeBasicParams_S, de_get_baisc_params_from_registers>(
          "Basic",
          {sample::d2d_words(), sample::basic_control_words()},
          fresh_basic(),
          sample::write_basic,
          basic_after_set()),
      one_record<DePrefilterParams_S, de_get_prefilter_params_from_registers>("Prefilter",
                                                                              {sample::prefilter_words()},
                                                                              bytes_of(DePrefilterParams_S{7, 0}),
                                                                              sample::write_prefilter,
                                                                              bytes_of(sample::prefilter())),
      one_record<DeExtendChopParams_S, de_get_extend_chop_params_from_registers>(
          "ExtendChop",
          {sample::extend_chop_words()},
          bytes_of(DeExtendChopParams_S{{1, 2, 3, 4}, {4, 5, 2, 3}, {15, 17, 0, 0}}),
          sample::write_extend_chop,
          bytes_of(sample::extend_chop())),
      one_record<DeDispCalcParams_S, de_get_disp_calc_params_from_registers>("Disparity",
                                                                             {sample::disparity_words()},
                                                                             fresh_disparity(),
                                                                             sample::write_disparity,
                                                                             bytes_of(sample::disparity())),
      {"GlobalPoints",
       [] {},
       get_gpm,
       sizeof(DeGpmParams_S),
       sizeof(DeGpStatusParams_S),
       {sample::gpm_words(), sample::gp_status_words()},
       Merges::kAtTheEnd,
       fresh_gpm() + short_status(0x01, 0xF8, 0xFF),  // -2047
       sample::write_gpm,
       gpm_after_set() + short_status(0, 0, 0)},
      one_record<D2cConfig, de_get_d2c_params_from_registers>(
          "D2c", {sample::projection_words(), sample::d2c_control_words()}, read_d2c(), sample::write_d2c, read_d2c()),
      one_record<D2dConfig, de_get_d2d_params_from_registers>("D2d",
                                                              {sample::control(0x00200000, 0, 0x0C1800C0, 0x55, 0x7)},
                                                              bytes_of(D2dConfig{3, 1, 1}),
                                                              sample::write_d2d,
                                                              bytes_of(D2dConfig{3, 0, 0})),
      {"Rectify",
       sample::set_rectification,
       get_rectify<0, 0>,
       sizeof(DeRectifyParams_S),
       sizeof(DeRectifyCtrlParams_S),
       {sample::sbg2r_words(), sample::rectify_words(), sample::rectify_ctrl_words()},
       Merges::kAtTheEnd,
       bytes_of(sample::rectify()) + bytes_of(sample::rectify_ctrl()),
       sample::write_rectify,
       rectify_after_set()},
  };
  return kEntries;
}

}  // namespace vq3900::test

#endif
