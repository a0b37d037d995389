// Running the steps of an entry point in order, up to the first that fails.
#ifndef VQ3900_REGS_STEPS_H
#define VQ3900_REGS_STEPS_H

#include <cstdint>

namespace vq3900 {

// Calls the steps in order and answers the first result that is not 0, or 0.
template <typename... Steps>
std::int32_t run_steps(const Steps&... steps) {
  std::int32_t code = 0;
  (void)(((code = steps()) == 0) && ...);
  return code;
}

}  // namespace vq3900

#endif
