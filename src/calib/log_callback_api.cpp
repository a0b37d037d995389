// The log callback of callers that are not C++.
#include "vq3900_depth_engine.h"

#include <exception>

DeLogCallback* de_log_callback_create(void (*fn)(const char* text, void* user), void* user) try {
  if (fn == nullptr) return nullptr;
  return new DeLogCallback([fn, user](const char* text) { fn(text, user); });
} catch (const std::exception&) {  // no memory
  return nullptr;
}

void de_log_callback_destroy(DeLogCallback* callback) {
  delete callback;
}
