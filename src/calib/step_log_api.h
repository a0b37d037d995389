// The calibration converter's step messages: each to standard error and to the caller's log callback.
#ifndef VQ3900_CALIB_STEP_LOG_API_H
#define VQ3900_CALIB_STEP_LOG_API_H

#include "vq3900_depth_engine.h"

#include <functional>
#include <string>
#include <string_view>

#include "platform/diagnostics.h"

namespace vq3900 {

// The caller's callback with a memory: what comes out of it goes on to the caller, whatever it is; a lack of memory
// elsewhere does not. Null or empty, it raises std::bad_function_call when it is called.
class CallerCallback {
 public:
  explicit CallerCallback(DeLogCallback* callback)
      : guarded_([this, callback](const char* text) {
          threw_ = true;
          if (callback == nullptr) throw std::bad_function_call();
          (*callback)(text);
          threw_ = false;
        }) {}
  CallerCallback(const CallerCallback&) = delete;
  CallerCallback& operator=(const CallerCallback&) = delete;

  DeLogCallback* get() { return &guarded_; }
  bool threw() const { return threw_; }

 private:
  bool threw_ = false;
  DeLogCallback guarded_;
};

class StepLog {
 public:
  explicit StepLog(DeLogCallback* callback) : callback_(callback) {}

  // Passes a text to the callback alone.
  void pass(const char* text) const { (*callback_)(text); }

  // Prints a step's message with a line end and passes it on without one.
  void step(std::string_view text) const {
    std::string line{text};
    line += '\n';
    put_err(line);
    line.pop_back();
    pass(line.c_str());
  }

 private:
  DeLogCallback* callback_;
};

}  // namespace vq3900

#endif
