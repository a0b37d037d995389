// Registration of the callbacks, the last-error text and the versions.
#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <limits>
#include <string>

#include "sim_device.h"
#include "support/block_samples.h"
#include "support/capture.h"
#include "support/engine_fixture.h"

namespace vq3900::test {
namespace {

using sim::SimDevice;

constexpr const char* kNotRegistered = "the read and write register function have not been set!";
constexpr const char* kReadFailed = "read register failed!";
constexpr const char* kWriteFailed = "write register failed!";

// One entry point of each direction, with a single transfer.
std::int32_t set_unit() {
  const D2dConfig config = sample::d2d();
  return de_set_d2d_params_to_registers(&config);
}

std::int32_t get_unit() {
  D2dConfig config{};
  return de_get_d2d_params_from_registers(&config);
}

using Registration = EngineTest;
using ErrorText = EngineTest;

TEST_F(Registration, TwoCallbacksAreAccepted) {
  SimDevice device;
  EXPECT_EQ(outcome_of([&] { return de_register_read_write_functon(SimDevice::read, SimDevice::write, &device); }),
            silent_success());
  EXPECT_EQ(set_unit(), 0);
  EXPECT_EQ(get_unit(), 0);
  EXPECT_EQ(de_get_error_str(), nullptr);
}

TEST_F(Registration, NullReadCallbackIsRefusedButSetEntryPointsWorkAndGetEntryPointsDoNot) {
  SimDevice device;
  EXPECT_EQ(outcome_of([&] { return de_register_read_write_functon(nullptr, SimDevice::write, &device); }), silent(-1));
  EXPECT_EQ(set_unit(), 0);
  EXPECT_EQ(get_unit(), -1);
  EXPECT_EQ(device.log().size(), 1U);
}

TEST_F(Registration, NullWriteCallbackIsRefusedButGetEntryPointsWorkAndSetEntryPointsDoNot) {
  SimDevice device;
  EXPECT_EQ(outcome_of([&] { return de_register_read_write_functon(SimDevice::read, nullptr, &device); }), silent(-1));
  EXPECT_EQ(get_unit(), 0);
  EXPECT_EQ(set_unit(), -1);
  EXPECT_EQ(device.log().size(), 1U);
}

TEST_F(Registration, NullCallbacksReplaceEarlierOnes) {
  SimDevice device;
  ASSERT_EQ(device.attach(), 0);
  EXPECT_EQ(outcome_of([&] { return de_register_read_write_functon(nullptr, nullptr, &device); }), silent(-1));
  EXPECT_EQ(set_unit(), -1);
  EXPECT_EQ(get_unit(), -1);
  EXPECT_TRUE(device.log().empty());
}

TEST_F(Registration, RefusalSetsNoErrorText) {
  EXPECT_EQ(de_register_read_write_functon(nullptr, nullptr, nullptr), -1);
  EXPECT_EQ(de_get_error_str(), nullptr);
}

TEST_F(Registration, LaterDeviceTakesOver) {
  SimDevice first;
  SimDevice second;
  ASSERT_EQ(first.attach(), 0);
  EXPECT_EQ(set_unit(), 0);
  ASSERT_EQ(second.attach(), 0);
  EXPECT_EQ(set_unit(), 0);
  EXPECT_EQ(get_unit(), 0);
  EXPECT_EQ(first.log().size(), 1U);
  EXPECT_EQ(second.log().size(), 2U);
}

// What a callback was called with.
struct Call {
  std::uint32_t count = 0;
  const void* user = nullptr;
};
Call last_call;

std::int32_t note_call(DeRegElement_S* /*elements*/, std::uint32_t count, void* user) {
  last_call = {count, user};
  return 0;
}

TEST_F(Registration, ContextIsPassedAsItIs) {
  int context = 0;
  for (void* const user : {static_cast<void*>(&context), static_cast<void*>(nullptr)}) {
    ASSERT_EQ(de_register_read_write_functon(note_call, note_call, user), 0);
    last_call = {0, &last_call};
    EXPECT_EQ(set_unit(), 0);
    EXPECT_EQ(last_call.user, user);
    EXPECT_EQ(last_call.count, 5U);
    last_call = {0, &last_call};
    EXPECT_EQ(get_unit(), 0);
    EXPECT_EQ(last_call.user, user);
    EXPECT_EQ(last_call.count, 5U);
  }
}

TEST_F(Registration, ReadCallbackThatFillsNothingLeavesTheLibrarysValues) {
  ASSERT_EQ(de_register_read_write_functon(note_call, note_call, nullptr), 0);
  EXPECT_EQ(set_unit(), 0);
  D2dConfig config{};
  EXPECT_EQ(de_get_d2d_params_from_registers(&config), 0);
  EXPECT_EQ(config.unit_shift, 3U);
}

// Every set and get entry point, with null pointers: the callback is looked at first.
const std::pair<const char*, std::int32_t (*)()> kEntryPoints[] = {
    {"set basic", [] { return de_set_baisc_params_to_registers(nullptr); }},
    {"set prefilter", [] { return de_set_prefilter_params_to_registers(nullptr); }},
    {"set extend chop", [] { return de_set_extend_chop_params_to_registers(nullptr); }},
    {"set disparity", [] { return de_set_disp_calc_params_to_registers(nullptr); }},
    {"set global points", [] { return de_set_gpm_params_to_registers(nullptr); }},
    {"set d2c", [] { return de_set_d2c_params_to_registers(nullptr, nullptr, nullptr, nullptr); }},
    {"set d2d", [] { return de_set_d2d_params_to_registers(nullptr); }},
    {"set rectify", [] { return de_set_rectify_params_to_registers(nullptr, nullptr); }},
    {"get basic", [] { return de_get_baisc_params_from_registers(nullptr); }},
    {"get prefilter", [] { return de_get_prefilter_params_from_registers(nullptr); }},
    {"get extend chop", [] { return de_get_extend_chop_params_from_registers(nullptr); }},
    {"get disparity", [] { return de_get_disp_calc_params_from_registers(nullptr); }},
    {"get global points", [] { return de_get_gpm_params_from_registers(nullptr, nullptr); }},
    {"get d2c", [] { return de_get_d2c_params_from_registers(nullptr); }},
    {"get d2d", [] { return de_get_d2d_params_from_registers(nullptr); }},
    {"get rectify", [] { return de_get_rectify_params_from_registers(nullptr, nullptr, 0, 0); }},
};

TEST_F(ErrorText, IsNullBeforeTheFirstError) {
  EXPECT_EQ(de_get_error_str(), nullptr);
}

TEST_F(ErrorText, EveryEntryPointBeforeRegistrationFailsAndSetsIt) {
  for (const auto& entry : kEntryPoints) {
    SCOPED_TRACE(entry.first);
    reset_engine();
    EXPECT_EQ(outcome_of(entry.second), silent(-1));
    EXPECT_STREQ(de_get_error_str(), kNotRegistered);
  }
}

TEST_F(ErrorText, IsTheSameConstantEveryTime) {
  EXPECT_EQ(set_unit(), -1);
  const char* const text = de_get_error_str();
  EXPECT_EQ(get_unit(), -1);
  EXPECT_EQ(de_get_error_str(), text);
}

TEST_F(ErrorText, WriteCallbackReturning5GivesMinus3AndALaterSuccessLeavesTheText) {
  SimDevice device;
  ASSERT_EQ(device.attach(), 0);
  device.fail_transfer(0, 5);
  EXPECT_EQ(outcome_of(set_unit), silent(-3));
  EXPECT_STREQ(de_get_error_str(), kWriteFailed);
  EXPECT_EQ(set_unit(), 0);
  EXPECT_EQ(get_unit(), 0);
  EXPECT_STREQ(de_get_error_str(), kWriteFailed);
}

TEST_F(ErrorText, EveryCodeButZeroIsAFailedTransfer) {
  constexpr auto kLowest = std::numeric_limits<std::int32_t>::min();
  constexpr auto kHighest = std::numeric_limits<std::int32_t>::max();
  for (const std::int32_t code : {1, -1, -3, 0x10000, kLowest, kHighest}) {
    SCOPED_TRACE(code);
    reset_engine();
    SimDevice device;
    ASSERT_EQ(device.attach(), 0);
    device.fail_transfer(0, code);
    EXPECT_EQ(outcome_of(set_unit), silent(-3));
    EXPECT_STREQ(de_get_error_str(), kWriteFailed);
    device.clear_log();
    EXPECT_EQ(outcome_of(get_unit), silent(-3));
    EXPECT_STREQ(de_get_error_str(), kReadFailed);
  }
}

TEST_F(ErrorText, LaterFailureReplacesIt) {
  EXPECT_EQ(set_unit(), -1);
  EXPECT_STREQ(de_get_error_str(), kNotRegistered);
  SimDevice device;
  ASSERT_EQ(device.attach(), 0);
  device.fail_transfer(0, 1);
  EXPECT_EQ(get_unit(), -3);
  EXPECT_STREQ(de_get_error_str(), kReadFailed);
  EXPECT_EQ(de_register_read_write_functon(nullptr, nullptr, nullptr), -1);
  EXPECT_STREQ(de_get_error_str(), kReadFailed);
  EXPECT_EQ(get_unit(), -1);
  EXPECT_STREQ(de_get_error_str(), kNotRegistered);
}

// Failures that have nothing to do with a transfer, at an entry point and elsewhere.
TEST_F(ErrorText, OtherFailuresLeaveIt) {
  SimDevice device;
  ASSERT_EQ(device.attach(), 0);
  DeBasicParams_S no_plane = sample::basic();
  no_plane.ref_plane_dist = 0;
  const DeRectifyParams_S rectify = sample::rectify();
  const DeRectifyCtrlParams_S ctrl = sample::rectify_ctrl();
  const auto fail = [&] {
    printed_by([&] {
      DeRegElement_S element{};
      EXPECT_EQ(de_set_d2d_params_to_registers(nullptr), -2);
      EXPECT_EQ(de_set_baisc_params_to_registers(&no_plane), 4096);
      EXPECT_EQ(de_set_rectify_params_to_registers(&rectify, &ctrl), -2);
      EXPECT_EQ(de_copy_d2d_params_register_table(&element, 3), -2);
      EXPECT_EQ(de_update_d2d_params_register_table(&element, 1), -2);
      EXPECT_EQ(de_update_gp_status_params(), -3);
      EXPECT_EQ(set_depth_engine_config(), -5);
    });
  };
  fail();
  EXPECT_EQ(de_get_error_str(), nullptr);
  device.fail_transfer(0, 1);
  EXPECT_EQ(get_unit(), -3);
  fail();
  EXPECT_STREQ(de_get_error_str(), kReadFailed);
}

TEST(Version, IsTheLibrarysUnderBothNames) {
  EXPECT_STREQ(de_get_version(), "2.1.4.5");
  EXPECT_STREQ(driver_helper_get_version(), "2.1.4.5");
  EXPECT_EQ(de_get_version(), driver_helper_get_version());
  EXPECT_STREQ(VQ3900_VERSION, "2.1.4.5");
  EXPECT_EQ(VQ3900_VERSION_MAJOR, 2);
}

TEST(Version, CopyFillsTheTextFollowedByAZeroAndNothingBeyond) {
  std::array<char, 12> buffer{};
  buffer.fill('x');
  EXPECT_EQ(outcome_of([&] {
              get_depth_driver_helper_version(buffer.data());
              return 0;
            }),
            silent_success());
  EXPECT_EQ(std::string(buffer.data(), buffer.size()), std::string("2.1.4.5\0xxxx", 12));
}

TEST(Version, CopyToNullDoesNothing) {
  EXPECT_EQ(outcome_of([] {
              get_depth_driver_helper_version(nullptr);
              return 0;
            }),
            silent_success());
}

TEST(Version, LutVersionClears8BytesAndCopiesItsText) {
  for (const auto get : {get_disto_lut_version, get_lut_version}) {
    std::array<char, 12> buffer{};
    buffer.fill('x');
    EXPECT_EQ(outcome_of([&] { return get(buffer.data()); }), silent_success());
    EXPECT_EQ(std::string(buffer.data(), buffer.size()), std::string("1.0.0\0\0\0xxxx", 12));
  }
}

TEST(Version, LutVersionToNullIsRefused) {
  EXPECT_EQ(outcome_of([] { return get_disto_lut_version(nullptr); }), silent(-1));
  EXPECT_EQ(outcome_of([] { return get_lut_version(nullptr); }), silent(-1));
}

}  // namespace
}  // namespace vq3900::test
