// Whole records across the interface, padding included, with the answer to a null pointer.
#ifndef VQ3900_STATE_RECORD_COPY_H
#define VQ3900_STATE_RECORD_COPY_H

#include "vq3900_depth_engine.h"

#include <cstdint>
#include <cstring>
#include <type_traits>

namespace vq3900 {

template <typename Record>
std::int32_t copy_out(const Record& record, Record* out) {
  static_assert(std::is_trivially_copyable_v<Record>);
  if (out == nullptr) return VQ3900_ERROR_ARGUMENT;
  std::memcpy(out, &record, sizeof(Record));
  return VQ3900_OK;
}

template <typename Record>
std::int32_t copy_in(const Record* in, Record& record) {
  static_assert(std::is_trivially_copyable_v<Record>);
  if (in == nullptr) return VQ3900_ERROR_ARGUMENT;
  std::memcpy(&record, in, sizeof(Record));
  return VQ3900_OK;
}

}  // namespace vq3900

#endif
