// The state that the library has when it is loaded.
#ifndef VQ3900_TESTS_SUPPORT_ENGINE_RESET_H
#define VQ3900_TESTS_SUPPORT_ENGINE_RESET_H

#include <cstring>
#include <memory>
#include <new>

#include "state/engine.h"

namespace vq3900::test {

// Puts the state back as it is at load, padding included.
inline void reset_engine() {
  Engine& state = engine();
  release_held_memory(state);
  std::destroy_at(&state);
  std::memset(static_cast<void*>(&state), 0, sizeof state);
  new (&state) Engine{};
}

}  // namespace vq3900::test

#endif
