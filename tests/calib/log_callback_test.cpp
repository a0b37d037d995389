#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/calib_samples.h"
#include "support/capture.h"
#include "support/engine_fixture.h"
#include "support/failing_new.h"

namespace vq3900::test {
namespace {

using LogCallback = EngineTest;

void append(const char* text, void* user) {
  static_cast<std::vector<std::string>*>(user)->emplace_back(text);
}

int calls = 0;
void* last_user = nullptr;

void note(const char* text, void* user) {
  EXPECT_NE(text, nullptr);
  ++calls;
  last_user = user;
}

TEST_F(LogCallback, PassesTextAndUserToTheFunction) {
  std::vector<std::string> texts;
  DeLogCallback* const log = de_log_callback_create(append, &texts);
  ASSERT_NE(log, nullptr);
  ASSERT_TRUE(*log);
  (*log)("one");
  (*log)("");
  de_log_callback_destroy(log);
  EXPECT_EQ(texts, (std::vector<std::string>{"one", ""}));
}

TEST_F(LogCallback, UserMayBeNull) {
  calls = 0;
  last_user = &calls;
  DeLogCallback* const log = de_log_callback_create(note, nullptr);
  ASSERT_NE(log, nullptr);
  (*log)("text");
  de_log_callback_destroy(log);
  EXPECT_EQ(calls, 1);
  EXPECT_EQ(last_user, nullptr);
}

TEST_F(LogCallback, CallbacksAreIndependent) {
  std::vector<std::string> first, second;
  DeLogCallback* const a = de_log_callback_create(append, &first);
  DeLogCallback* const b = de_log_callback_create(append, &second);
  ASSERT_NE(a, nullptr);
  ASSERT_NE(b, nullptr);
  EXPECT_NE(a, b);
  (*b)("two");
  de_log_callback_destroy(b);
  (*a)("one");
  de_log_callback_destroy(a);
  EXPECT_EQ(first, std::vector<std::string>{"one"});
  EXPECT_EQ(second, std::vector<std::string>{"two"});
}

TEST_F(LogCallback, NullFunctionMakesNone) {
  int user = 0;
  EXPECT_EQ(outcome_of([&] { return de_log_callback_create(nullptr, &user) == nullptr ? 1 : 0; }), silent(1));
  EXPECT_EQ(de_log_callback_create(nullptr, nullptr), nullptr);
}

TEST_F(LogCallback, NullIsDestroyedWithoutEffect) {
  EXPECT_EQ(outcome_of([] {
              de_log_callback_destroy(nullptr);
              return 0;
            }),
            silent_success());
}

TEST_F(LogCallback, NothingIsMadeWithoutMemory) {
  for (long successes = 0;; ++successes) {
    ASSERT_LT(successes, 10);
    DeLogCallback* log = nullptr;
    {
      const FailingNew failing(successes);
      log = de_log_callback_create(note, nullptr);
    }
    EXPECT_EQ(log == nullptr, allocation_failed);
    de_log_callback_destroy(log);
    if (!allocation_failed) break;
  }
}

TEST_F(LogCallback, ConverterPassesItsStepsThroughIt) {
  std::vector<std::string> texts;
  DeLogCallback* const log = de_log_callback_create(append, &texts);
  prepare_calibration();
  for (int run = 0; run < 2; ++run) {
    texts.clear();
    DeStereoRectifyParams_S rect;
    DeCameraD2CParams_S d2c;
    DepthCalcParams_S depth;
    EXPECT_EQ(outcome_of([&] {
                return align_ir_ir_rgb_params_to_register_converter(parallel_rig(), &rect, &d2c, &depth, log);
              }),
              prints_err(0, lines_of(step_messages())));
    EXPECT_EQ(texts, step_messages());
  }
  de_log_callback_destroy(log);
}

}  // namespace
}  // namespace vq3900::test
