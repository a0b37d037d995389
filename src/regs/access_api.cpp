// Registration of the callbacks, the last-error text and the versions.
#include <algorithm>
#include <cstring>
#include <string_view>

#include "state/engine.h"

using vq3900::engine;

namespace {

constexpr std::string_view kVersion = VQ3900_VERSION;
constexpr std::size_t kVersionField = 8;  // bytes cleared before a version is copied

}  // namespace

int32_t de_register_read_write_functon(de_read_register_func read_fn, de_write_register_func write_fn, void* user) {
  vq3900::AccessState& access = engine().access;
  access.read = read_fn;
  access.write = write_fn;
  access.user = user;
  return read_fn == nullptr || write_fn == nullptr ? VQ3900_ERROR_CALLBACK : VQ3900_OK;
}

const char* de_get_error_str(void) {
  return engine().access.last_error;
}

const char* de_get_version(void) {
  return kVersion.data();
}

const char* driver_helper_get_version(void) {
  return de_get_version();
}

void get_depth_driver_helper_version(char* buffer) {
  static_assert(kVersion.size() < kVersionField);
  if (buffer == nullptr) return;
  std::memset(buffer, 0, kVersionField);
  std::ranges::copy(kVersion, buffer);
}
