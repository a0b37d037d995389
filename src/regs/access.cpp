#include "regs/access.h"

#include "platform/guarded_call.h"

namespace vq3900 {

namespace {

constexpr const char* kNotRegistered = "the read and write register function have not been set!";
constexpr const char* kReadFailed = "read register failed!";
constexpr const char* kWriteFailed = "write register failed!";

template <typename Callback>
std::int32_t require(AccessState& access, Callback callback) {
  if (callback != nullptr) return VQ3900_OK;
  access.last_error = kNotRegistered;
  return VQ3900_ERROR_CALLBACK;
}

template <typename Callback>
std::int32_t transfer(AccessState& access, Callback callback, std::span<DeRegElement_S> elements, const char* failure) {
  const auto count = static_cast<std::uint32_t>(elements.size());
  // A throwing callback has failed: no exception crosses the C interface.
  const auto result = guarded_call([&] { return callback(elements.data(), count, access.user); });
  if (result == 0) return VQ3900_OK;
  access.last_error = failure;
  return VQ3900_ERROR_TRANSFER;
}

}  // namespace

std::int32_t require_read_callback(AccessState& access) {
  return require(access, access.read);
}

std::int32_t require_write_callback(AccessState& access) {
  return require(access, access.write);
}

std::int32_t read_elements(AccessState& access, std::span<DeRegElement_S> elements) {
  return transfer(access, access.read, elements, kReadFailed);
}

std::int32_t write_elements(AccessState& access, std::span<DeRegElement_S> elements) {
  return transfer(access, access.write, elements, kWriteFailed);
}

}  // namespace vq3900
