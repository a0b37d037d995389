// The loaded configuration groups: numbered sections of one kind, with the file's version.
#ifndef VQ3900_STATE_GROUP_STATE_H
#define VQ3900_STATE_GROUP_STATE_H

#include "vq3900_depth_engine.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace vq3900 {

template <typename Item, std::size_t Most>
struct Groups {
  static constexpr std::size_t kMost = Most;

  std::array<Item, Most> items{};
  std::uint16_t count = 0;
  std::uint32_t version = 0;
};

using D2cGroups = Groups<d2c_cfg_item, 100>;
using IrPreGroups = Groups<ir_pre_cfg_item, 10>;

}  // namespace vq3900

#endif
