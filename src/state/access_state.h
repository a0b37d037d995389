// What the register access frame remembers: the caller's callbacks and the last error.
#ifndef VQ3900_STATE_ACCESS_STATE_H
#define VQ3900_STATE_ACCESS_STATE_H

#include "vq3900_depth_engine.h"

namespace vq3900 {

struct AccessState {
  de_read_register_func read = nullptr;
  de_write_register_func write = nullptr;
  void* user = nullptr;
  const char* last_error = nullptr;  // one of the constant texts, never cleared
};

}  // namespace vq3900

#endif
