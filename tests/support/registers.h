// Register tables and records in test expectations.
#ifndef VQ3900_TESTS_SUPPORT_REGISTERS_H
#define VQ3900_TESTS_SUPPORT_REGISTERS_H

#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <ostream>
#include <span>
#include <string>
#include <vector>

inline bool operator==(const DeRegElement_S& a, const DeRegElement_S& b) {
  return a.address == b.address && a.mask == b.mask && a.value == b.value;
}

inline void PrintTo(const DeRegElement_S& element, std::ostream* stream) {
  char text[64];
  std::snprintf(text, sizeof text, "{0x%08X, 0x%08X, 0x%08X}", element.address, element.mask, element.value);
  *stream << text;
}

namespace vq3900::test {

// The value of the register with that address. A test that names a register the table lacks fails.
inline std::uint32_t value_at(std::span<const DeRegElement_S> table, std::uint32_t address) {
  for (const DeRegElement_S& element : table) {
    if (element.address == address) return element.value;
  }
  ADD_FAILURE() << "no register of address 0x" << std::hex << address;
  return 0;
}

inline void set_value(std::span<DeRegElement_S> table, std::uint32_t address, std::uint32_t value) {
  for (DeRegElement_S& element : table) {
    if (element.address == address) {
      element.value = value;
      return;
    }
  }
  ADD_FAILURE() << "no register of address 0x" << std::hex << address;
}

// Every value of the table set, bits outside the masks included: a background on which neighbours must survive.
inline void fill_values(std::span<DeRegElement_S> table, std::uint32_t value) {
  for (DeRegElement_S& element : table)
    element.value = value;
}

template <typename Record>
std::vector<unsigned char> bytes_of(const Record& record) {
  std::vector<unsigned char> bytes(sizeof record);
  std::memcpy(bytes.data(), &record, sizeof record);
  return bytes;
}

// A record with every byte set, padding included.
template <typename Record>
Record filled_with(unsigned char byte) {
  Record record;
  std::memset(static_cast<void*>(&record), byte, sizeof record);
  return record;
}

// A record whose bytes are all different from their neighbours.
template <typename Record>
Record counting_bytes() {
  unsigned char bytes[sizeof(Record)];
  for (std::size_t i = 0; i < sizeof bytes; ++i)
    bytes[i] = static_cast<unsigned char>(i * 7 + 1);
  Record record;
  std::memcpy(static_cast<void*>(&record), bytes, sizeof record);
  return record;
}

}  // namespace vq3900::test

#endif
