#include "state/engine.h"

namespace vq3900 {

namespace {
constinit Engine process_engine;
}

Engine& engine() {
  return process_engine;
}

}  // namespace vq3900
