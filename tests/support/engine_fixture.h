// Every test case starts from the state that the library has when it is loaded.
#ifndef VQ3900_TESTS_SUPPORT_ENGINE_FIXTURE_H
#define VQ3900_TESTS_SUPPORT_ENGINE_FIXTURE_H

#include <gtest/gtest.h>

#include "support/engine_reset.h"

namespace vq3900::test {

class EngineTest : public testing::Test {
 protected:
  EngineTest() { reset_engine(); }
  ~EngineTest() override { reset_engine(); }
};

}  // namespace vq3900::test

#endif
