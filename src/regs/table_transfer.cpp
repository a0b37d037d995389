#include "regs/table_transfer.h"

#include <cstddef>

namespace vq3900 {

bool merge_elements(std::span<const DeRegElement_S> elements, std::span<DeRegElement_S> table, Compare compare) {
  for (std::size_t i = 0; i < elements.size(); ++i) {
    if (elements[i].address != table[i].address) return false;
    if (compare == Compare::kAddressAndMask && elements[i].mask != table[i].mask) return false;
    table[i].value = elements[i].value;  // whole: the device reports bits outside the mask as well
  }
  return true;
}

}  // namespace vq3900
