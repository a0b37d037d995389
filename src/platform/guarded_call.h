// Calling back into the host: the one place that knows how this system cancels threads.
#ifndef VQ3900_PLATFORM_GUARDED_CALL_H
#define VQ3900_PLATFORM_GUARDED_CALL_H

#include <optional>
#include <utility>

#if defined(__GLIBCXX__) && !defined(_WIN32)
#include <cxxabi.h>
#define VQ3900_CANCELLATION_UNWINDS 1
#endif

namespace vq3900 {

// The call's result, or nothing when it throws. The cancellation of a thread, which unwinds the stack here like an
// exception, goes on.
template <typename Call>
auto guarded_call(Call&& call) -> std::optional<decltype(call())> {
  try {
    return std::forward<Call>(call)();
#ifdef VQ3900_CANCELLATION_UNWINDS
  } catch (const abi::__forced_unwind&) {
    throw;
#endif
  } catch (...) {
    return std::nullopt;
  }
}

}  // namespace vq3900

#endif
