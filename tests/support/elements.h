// Register elements written out in test expectations, and the library's own as they stand.
#ifndef VQ3900_TESTS_SUPPORT_ELEMENTS_H
#define VQ3900_TESTS_SUPPORT_ELEMENTS_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <span>
#include <vector>

#include "state/engine.h"
#include "support/registers.h"

namespace vq3900::test {

using Elements = std::vector<DeRegElement_S>;
using Bytes = std::vector<unsigned char>;

// Registers in a row with one mask, a value each.
inline Elements consecutive(std::uint32_t address, std::uint32_t mask, std::initializer_list<std::uint32_t> values) {
  Elements elements;
  for (const std::uint32_t value : values) {
    elements.push_back({address, mask, value});
    address += 4;
  }
  return elements;
}

// Registers in a row with one mask and one value.
inline Elements repeated(std::size_t count, std::uint32_t address, std::uint32_t mask, std::uint32_t value) {
  Elements elements;
  for (std::size_t i = 0; i < count; ++i, address += 4)
    elements.push_back({address, mask, value});
  return elements;
}

inline Elements joined(std::initializer_list<Elements> parts) {
  Elements all;
  for (const Elements& part : parts)
    all.insert(all.end(), part.begin(), part.end());
  return all;
}

// Every register element that the library holds, one table behind the other.
inline Elements library_registers() {
  static_assert(sizeof(RegisterTables) % sizeof(DeRegElement_S) == 0);
  Elements all(sizeof(RegisterTables) / sizeof(DeRegElement_S));
  std::memcpy(all.data(), &engine().registers, sizeof(RegisterTables));
  return all;
}

// The same registers with the values of others in their places.
inline Elements with_values(Elements registers, std::span<const DeRegElement_S> values) {
  for (const DeRegElement_S& value : values) {
    const auto same = [&value](const DeRegElement_S& element) {
      return element.address == value.address && element.mask == value.mask;
    };
    const auto found = std::find_if(registers.begin(), registers.end(), same);
    if (found == registers.end()) {
      ADD_FAILURE() << "no register " << testing::PrintToString(value);
    } else {
      found->value = value.value;
    }
  }
  return registers;
}

// What the library remembers apart from callbacks and error text: with the register tables, or the records alone.
inline Bytes state_bytes() {
  Bytes bytes(sizeof(Engine));
  std::memcpy(bytes.data(), &engine(), sizeof(Engine));
  std::fill_n(bytes.begin() + offsetof(Engine, access), sizeof(AccessState), static_cast<unsigned char>(0));
  return bytes;
}

inline Bytes record_bytes() {
  Bytes bytes = state_bytes();
  std::fill_n(bytes.begin() + offsetof(Engine, registers), sizeof(RegisterTables), static_cast<unsigned char>(0));
  return bytes;
}

inline Bytes operator+(Bytes first, const Bytes& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

}  // namespace vq3900::test

#endif
