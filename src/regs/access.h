// The register access frame: handing elements to the caller's callbacks, and the last-error text.
#ifndef VQ3900_REGS_ACCESS_H
#define VQ3900_REGS_ACCESS_H

#include "vq3900_depth_engine.h"

#include <cstdint>
#include <span>

#include "state/access_state.h"

namespace vq3900 {

// Whether the callback is registered: 0, or -1 with the last-error text set.
std::int32_t require_read_callback(AccessState& access);
std::int32_t require_write_callback(AccessState& access);

// One call of the callback with all elements: 0, or -3 with the last-error text set.
std::int32_t read_elements(AccessState& access, std::span<DeRegElement_S> elements);
std::int32_t write_elements(AccessState& access, std::span<DeRegElement_S> elements);

}  // namespace vq3900

#endif
