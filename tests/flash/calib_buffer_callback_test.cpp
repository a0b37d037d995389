// Builds into memory whose callback is missing or throws, and ones without memory.
#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

#include "state/engine.h"
#include "support/calib_builds.h"
#include "support/calib_images.h"
#include "support/calib_samples.h"
#include "support/capture.h"
#include "support/engine_fixture.h"
#include "support/failing_new.h"

namespace vq3900::test {
namespace {

class CalibBufferCallback : public EngineTest {
 protected:
  CalibBufferCallback() { give_temperatures(); }
  ~CalibBufferCallback() override { expect_good_build(); }

  // Whatever failed before, this works.
  static void expect_good_build() {
    give_temperatures();
    CalibInput input;
    input.add(record_of(parallel_rig()), plain_text(lut_settings()));
    const BufferBuild build = built_in_memory(input, {20480, kLutSize, kFactorySize});
    EXPECT_EQ(build.outcome,
              (Outcome{0, std::string(kContentMode) + kTwoLutsConverted + digest_trace(5), lines_of(step_messages())}));
    EXPECT_EQ(build.passed, passed_of());
    expect_flash_section(build.main, flash::kRectify, 1);
    expect_flash_section(build.lut, flash::kDirectory, 1);
    expect_flash_section(build.factory, flash::kFactoryRecords, 1);
  }
};

TEST_F(CalibBufferCallback, MissingCallbackRaisesAtTheFirstMessage) {
  CalibInput input;
  input.add(parallel(), plain_text());
  DeLogCallback empty;
  for (DeLogCallback* const callback : {static_cast<DeLogCallback*>(nullptr), &empty}) {
    ImageBytes main(20480);
    hold_optimized_entries();
    const Printed printed = printed_by([&] {
      auto* const buffer = reinterpret_cast<std::uint32_t*>(main.data());
      EXPECT_THROW(gen_calib_flash_param_de(&input.record(), buffer, callback, 20480, nullptr, 0, 1, nullptr, 0),
                   std::bad_function_call);
    });
    EXPECT_EQ(printed.out, kContentMode);
    EXPECT_EQ(printed.err, "");
    EXPECT_FALSE(engine().calib.optimized_d2d.held());
    EXPECT_TRUE(is_all(main, 0xFF));
    expect_good_build();
  }
}

TEST_F(CalibBufferCallback, WhatTheCallbackThrowsPassesThroughAtEveryMessage) {
  CalibInput input;
  input.add(parallel(), plain_text(lut_settings())).add(parallel(), plain_text(lut_settings()));
  for (std::size_t before = 0; before < 14; ++before) {
    SCOPED_TRACE(before);
    ImageBytes main(20480), lut(kLutSize, kRubbish), factory(60 + 2 * 6288);
    std::size_t messages = 0;
    DeLogCallback log = [&](const char*) {
      EXPECT_TRUE(is_all(main, 0xFF));  // nothing is handed over before everything is built
      EXPECT_TRUE(is_all(lut, messages < 7 ? kRubbish : 0xFF));
      if (messages++ == before) throw std::runtime_error("enough");
    };
    hold_optimized_entries();
    printed_by([&] {
      auto* const buffer = reinterpret_cast<std::uint32_t*>(main.data());
      EXPECT_THROW(gen_calib_flash_param_de(
                       &input.record(), buffer, &log, 20480, lut.data(), kLutSize, 1, factory.data(), 60 + 2 * 6288),
                   std::runtime_error);
    });
    EXPECT_EQ(messages, before + 1);
    EXPECT_TRUE(is_all(main, 0xFF));
    EXPECT_TRUE(is_all(lut, before < 7 ? kRubbish : 0xFF));  // cleared from the first LUT on
    EXPECT_TRUE(is_all(factory, 0xFF));
    EXPECT_FALSE(engine().calib.optimized_d2d.held());
    expect_good_build();
  }
}

TEST_F(CalibBufferCallback, LackOfMemoryOfTheCallbackPassesThroughToo) {
  CalibInput input;
  input.add(parallel(), plain_text());
  DeLogCallback log = [](const char*) { throw std::bad_alloc(); };
  ImageBytes main(20480);
  printed_by([&] {
    auto* const buffer = reinterpret_cast<std::uint32_t*>(main.data());
    EXPECT_THROW(gen_calib_flash_param_de(&input.record(), buffer, &log, 20480, nullptr, 0, 1, nullptr, 0),
                 std::bad_alloc);
  });
}

TEST_F(CalibBufferCallback, DifferentCountsNeedTheCallbackToo) {
  CalibFlashInput_S record{};
  record.calib_record_num = 1;
  const Printed printed = printed_by([&] {
    EXPECT_THROW(gen_calib_flash_param_de(&record, nullptr, nullptr, 0, nullptr, 0, 1, nullptr, 0),
                 std::bad_function_call);
  });
  EXPECT_EQ(printed.out, "error: calib params nums not match the config file num\n");
}

// --- no memory

TEST_F(CalibBufferCallback, NoMemoryIsNeverAnExceptionAndWritesNothing) {
  CalibInput input;
  input.add(parallel(), plain_text(lut_settings()));
  CalibFlashInput_S& record = input.record();
  ImageBytes main(20480), lut(kLutSize), factory(kFactorySize);
  auto* const buffer = reinterpret_cast<std::uint32_t*>(main.data());
  DeLogCallback log = [](const char*) {};
  bool failed = true;
  for (long successes = 0; failed; successes += 1 + successes / 16) {
    std::int32_t code = 0;
    printed_by([&] {
      const FailingNew failing(successes);
      code =
          gen_calib_flash_param_de(&record, buffer, &log, 20480, lut.data(), kLutSize, 1, factory.data(), kFactorySize);
      failed = allocation_failed;
    });
    // The configuration loader answers -3 to every exception.
    ASSERT_TRUE(failed ? code == -2 || code == -3 : code == 0) << code << " after " << successes;
    for (const ImageBytes& bytes : {main, lut, factory})
      ASSERT_TRUE(!failed || is_all(bytes, 0) || is_all(bytes, 0xFF)) << successes;
  }
}

}  // namespace
}  // namespace vq3900::test
