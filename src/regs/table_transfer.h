// Moving elements between a register table and an array: copy-out and merge-back.
#ifndef VQ3900_REGS_TABLE_TRANSFER_H
#define VQ3900_REGS_TABLE_TRANSFER_H

#include "vq3900_depth_engine.h"

#include <cstdint>
#include <span>

namespace vq3900 {

enum class Compare : std::uint8_t { kAddressAndMask, kAddress };

// Stores the values of the elements as long as they are the table's own. False: one was not; those before it are
// stored. The table is at least as long as the elements.
bool merge_elements(std::span<const DeRegElement_S> elements, std::span<DeRegElement_S> table, Compare compare);

}  // namespace vq3900

#endif
