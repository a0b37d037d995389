// Memory that the library holds between calls.
#ifndef VQ3900_STATE_HELD_ARRAY_H
#define VQ3900_STATE_HELD_ARRAY_H

#include <algorithm>
#include <cstddef>
#include <limits>
#include <new>
#include <span>
#include <type_traits>
#include <utility>

namespace vq3900 {

// An array of the state struct. Its owner releases it: it has no destructor, so that the state needs none either and
// the library is free of static constructors.
template <typename Element>
class HeldArray {
  static_assert(std::is_trivially_copyable_v<Element> && std::is_trivially_destructible_v<Element>);

 public:
  constexpr HeldArray() = default;
  HeldArray(const HeldArray&) = delete;
  HeldArray& operator=(const HeldArray&) = delete;

  // Holds that many elements, which have no value yet. False: no memory, and nothing is held.
  bool allocate(std::size_t count) {
    release();
    if (count > std::numeric_limits<std::ptrdiff_t>::max() / sizeof(Element)) return false;
    elements_ = new (std::nothrow) Element[count];
    size_ = elements_ == nullptr ? 0 : count;
    return elements_ != nullptr;
  }

  // Holds a copy of the elements. False: no memory, and nothing is held.
  bool assign(std::span<const Element> elements) {
    if (!allocate(elements.size())) return false;
    std::copy(elements.begin(), elements.end(), elements_);
    return true;
  }

  // Holds what the other held, which then holds nothing.
  void take(HeldArray& other) {
    release();
    std::swap(elements_, other.elements_);
    std::swap(size_, other.size_);
  }

  void release() {
    delete[] elements_;
    elements_ = nullptr;
    size_ = 0;
  }

  bool held() const { return elements_ != nullptr; }  // also of an array without elements
  std::span<Element> span() { return {elements_, size_}; }
  std::span<const Element> span() const { return {elements_, size_}; }

 private:
  Element* elements_ = nullptr;
  std::size_t size_ = 0;
};

}  // namespace vq3900

#endif
