// Records as they lie in the memory of a little-endian machine, whatever machine the test runs on.
#ifndef VQ3900_TESTS_SUPPORT_LITTLE_ENDIAN_MEMORY_H
#define VQ3900_TESTS_SUPPORT_LITTLE_ENDIAN_MEMORY_H

#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "support/registers.h"

namespace vq3900::test {

// Numbers of one size, one behind the other. Characters and padding are numbers of one byte.
struct NumberRun {
  std::size_t count;
  std::size_t size;
};
using NumberRuns = std::vector<NumberRun>;

// The numbers of a record from its first byte to its last.
inline NumberRuns numbers_of(const DeBasicParams_S* /*type*/) {
  return {{3, 4}, {4, 1}, {1, 4}, {4, 1}, {1, 4}, {4, 1}, {1, 4}, {2, 2}, {1, 4}};
}
inline NumberRuns numbers_of(const DePrefilterParams_S* /*type*/) {
  return {{2, 1}};
}
inline NumberRuns numbers_of(const DeExtendChopParams_S* /*type*/) {
  return {{12, 4}};
}
inline NumberRuns numbers_of(const DeDispCalcParams_S* /*type*/) {
  return {{8, 4}, {4, 1}, {19, 4}, {8, 1}, {4, 8}};
}
inline NumberRuns numbers_of(const DeGpmParams_S* /*type*/) {
  return {{4, 1}, {32, 4}, {16, 2}, {20, 1}, {7, 4}, {4, 1}};
}
inline NumberRuns numbers_of(const d2c_cfg_item* /*type*/) {
  return {{32, 1}, {6, 2}, {2, 4}, {4, 2}, {1, 4}, {4, 2}};
}
inline NumberRuns numbers_of(const ir_pre_cfg_item* /*type*/) {
  return {{32, 1}, {21, 4}, {20, 2}};
}
// Intrinsics are four words and two half-words.
inline NumberRuns numbers_of(const DeStereoRectifyParams_S* /*type*/) {
  return {{4, 4}, {2, 2}, {21, 4}, {2, 2}, {21, 4}, {2, 2}, {4, 4}, {4, 2}, {6, 4}};
}
inline NumberRuns numbers_of(const DeCameraD2CParams_S* /*type*/) {
  return {{4, 4}, {2, 2}, {4, 4}, {2, 2}, {4, 4}, {2, 2}, {28, 4}};
}
inline NumberRuns numbers_of(const DepthCalcParams_S* /*type*/) {
  return {{7, 4}};
}
inline NumberRuns numbers_of(const DeCalibRecordCamera_S* /*type*/) {
  return {{14, 4}, {1, 8}, {1952, 1}};
}

// Turns the bytes of numbers between this machine's order and the little-endian one.
inline std::vector<unsigned char> turned_numbers(std::vector<unsigned char> bytes, const NumberRuns& runs) {
  auto at = bytes.begin();
  for (const NumberRun& run : runs) {
    for (std::size_t i = 0; i < run.count; ++i) {
      if (bytes.end() - at < static_cast<std::ptrdiff_t>(run.size)) {
        ADD_FAILURE() << "more numbers than bytes";
        return bytes;
      }
      const auto behind = at + static_cast<std::ptrdiff_t>(run.size);
      if constexpr (std::endian::native == std::endian::big) std::reverse(at, behind);
      at = behind;
    }
  }
  EXPECT_EQ(at, bytes.end()) << "fewer numbers than bytes";
  return bytes;
}

template <typename Record>
std::vector<unsigned char> little_endian_bytes_of(const Record& record) {
  return turned_numbers(bytes_of(record), numbers_of(&record));
}

// Fills a record, padding included, with what a little-endian machine would read the bytes as.
template <typename Record>
void fill_from_little_endian(Record& record, const std::vector<unsigned char>& bytes) {
  ASSERT_EQ(bytes.size(), sizeof record);
  const std::vector<unsigned char> memory = turned_numbers(bytes, numbers_of(&record));
  std::memcpy(static_cast<void*>(&record), memory.data(), sizeof record);
}

}  // namespace vq3900::test

#endif
