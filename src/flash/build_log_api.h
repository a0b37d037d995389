// What an image build says: to standard output, and to the caller's message callback where the build has one.
#ifndef VQ3900_FLASH_BUILD_LOG_API_H
#define VQ3900_FLASH_BUILD_LOG_API_H

#include "vq3900_depth_engine.h"

#include <string>

#include "calib/step_log_api.h"
#include "platform/diagnostics.h"

namespace vq3900 {

class BuildLog {
 public:
  // Of a build into files, which prints alone.
  BuildLog() = default;
  // Of a build into memory.
  explicit BuildLog(CallerCallback& callback) : callback_(callback.get()) {}

  DeLogCallback* callback() const { return callback_; }

  // Prints a text and passes it on.
  void say(const std::string& text) const {
    put_out(text);
    if (callback_ != nullptr) pass(text.c_str());
  }

  // Passes a text on alone.
  void pass(const char* text) const { (*callback_)(text); }

 private:
  DeLogCallback* callback_ = nullptr;
};

}  // namespace vq3900

#endif
