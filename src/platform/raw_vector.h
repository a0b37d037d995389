// Arrays that are written before they are read: clearing them first would be a pass over memory for nothing.
#ifndef VQ3900_PLATFORM_RAW_VECTOR_H
#define VQ3900_PLATFORM_RAW_VECTOR_H

#include <memory>
#include <new>
#include <utility>
#include <vector>

namespace vq3900 {

// Leaves new elements as the memory is, where the vector would fill them with zeros.
template <typename Element>
struct RawAllocator : std::allocator<Element> {
  void construct(Element* at) noexcept { ::new (static_cast<void*>(at)) Element; }
  template <typename... Arguments>
  void construct(Element* at, Arguments&&... arguments) {
    std::construct_at(at, std::forward<Arguments>(arguments)...);
  }
};

template <typename Element>
using RawVector = std::vector<Element, RawAllocator<Element>>;

}  // namespace vq3900

#endif
