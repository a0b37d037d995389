// The calibration converter's step messages: each to standard error and to the caller's log callback.
#ifndef VQ3900_CALIB_STEP_LOG_API_H
#define VQ3900_CALIB_STEP_LOG_API_H

#include "vq3900_depth_engine.h"

#include <functional>
#include <string>

#include "platform/diagnostics.h"

namespace vq3900 {

class StepLog {
 public:
  explicit StepLog(DeLogCallback* callback) : callback_(callback) {}

  // Passes a text to the callback alone. A callback that is null or empty raises std::bad_function_call; what the
  // callback throws passes through.
  void pass(const char* text) const {
    if (callback_ == nullptr) throw std::bad_function_call();
    (*callback_)(text);
  }

  // Prints a step's message with a line end and passes it on without one.
  void step(const std::string& text) const {
    print_err("%s\n", text.c_str());
    pass(text.c_str());
  }

 private:
  DeLogCallback* callback_;
};

}  // namespace vq3900

#endif
