// The parameter snapshot file: five records back to back in 462 bytes.
#ifndef VQ3900_REGS_SNAPSHOT_H
#define VQ3900_REGS_SNAPSHOT_H

#include "vq3900_depth_engine.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "bytes/layout.h"

namespace vq3900 {

struct Snapshot {
  DeBasicParams_S basic{};
  DePrefilterParams_S prefilter{};
  DeExtendChopParams_S extend_chop{};
  DeDispCalcParams_S disparity{};
  DeGpmParams_S gpm{};
};

inline constexpr std::size_t kSnapshotSize = 462;

std::span<const LayoutRow<Snapshot>> snapshot_layout();

std::array<std::uint8_t, kSnapshotSize> write_snapshot(const Snapshot& snapshot);
void read_snapshot(std::span<const std::uint8_t, kSnapshotSize> bytes, Snapshot& snapshot);

}  // namespace vq3900

#endif
