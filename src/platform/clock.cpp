#include "platform/clock.h"

#include <ctime>

namespace vq3900 {

std::int64_t calendar_time() {
  return static_cast<std::int64_t>(std::time(nullptr));
}

}  // namespace vq3900
