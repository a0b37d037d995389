// The rectification block's displacement LUT: a camera's sampled grid as register words.
#ifndef VQ3900_MODULES_RECTIFY_LUT_H
#define VQ3900_MODULES_RECTIFY_LUT_H

#include "vq3900_depth_engine.h"

#include <cstdint>
#include <span>

#include "modules/fixed_point.h"
#include "modules/register_field.h"
#include "state/rectify_lut_state.h"
#include "state/register_tables.h"

namespace vq3900 {

inline constexpr std::uint32_t kMinSampleRateBit = 3;

std::span<const Field<RectifyLutInfo>> rectify_lut_info_fields();

// What the conversion tells while it works.
enum class LutProgress : std::uint8_t { kDx, kDy, kEnd };
struct LutEvents {
  OverflowHandler on_overflow;
  void (*on_progress)(LutProgress);
};

enum class LutFault : std::uint8_t { kNone, kSize, kGridMissing, kOverflow, kNoMemory };

// Where a camera's grid goes: the LUT information table, and the sections of its displacements in a camera's block.
struct LutTarget {
  RegisterTable<VQ3900_RECTIFY_LUT_INFO_REGISTERS>& table;
  HeldSection& dx;
  HeldSection& dy;
  std::uint32_t block;
};

// Takes a grid over: descriptor and copies of the arrays; a missing array stays missing. False: no memory.
bool copy_grid(const RectifyLutInfo& info, RectifyLut& lut);

// The same with the arrays themselves and their owner.
void keep_grid(const RectifyLutInfo& info, GridOwner owner, RectifyLut& lut);

// Ends the owner of a kept grid: its arrays are copied. Without memory for that nothing is held any more.
void end_owner(RectifyLut& lut);

// Allocates the four sections anew, without a word, each counted as camera 1's grid. False: no memory.
bool prepare_sections(RectifyLutState& state);

// Hands a section out, as many words as the grid given last has samples, and releases it. Words that were not encoded
// are 0; a section that was never prepared has no address, no count, and no words at all.
void hand_out(HeldSection& section, std::uint32_t length, LutSection& out);

// Converts a grid. The sample rate written is camera 1's, whichever camera's grid it is. Up to the fault everything is
// written.
LutFault encode_lut(const RectifyLut& lut, std::uint32_t camera_1_sample_rate_bit, const LutTarget& target,
                    const LutEvents& events);

}  // namespace vq3900

#endif
