// The set entry points: what they write, in which order, and what every failure leaves behind.
#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "sim_device.h"
#include "support/block_samples.h"
#include "support/capture.h"
#include "support/engine_fixture.h"
#include "support/numbers.h"
#include "support/set_entries.h"

namespace vq3900::test {
namespace {

using sim::Direction;
using sim::SimDevice;

constexpr const char* kNotRegistered = "the read and write register function have not been set!";
constexpr const char* kWriteFailed = "write register failed!";

const DeRectifyParams_S kRectify = sample::rectify();
const DeRectifyCtrlParams_S kCtrl = sample::rectify_ctrl();

std::int32_t throws_an_exception(DeRegElement_S* /*elements*/, std::uint32_t /*count*/, void* /*user*/) {
  throw std::runtime_error("the bus is gone");
}

std::int32_t throws_a_number(DeRegElement_S* /*elements*/, std::uint32_t /*count*/, void* /*user*/) {
  throw 0;
}

class SetEntryPoint : public EngineTest, public testing::WithParamInterface<SetEntry> {
 protected:
  SetEntryPoint() { GetParam().prepare(); }

  const SetEntry& entry() const { return GetParam(); }

  // What the library remembers when the call has gone through.
  Bytes state_after_success() const {
    SimDevice device;
    restart(device);
    EXPECT_EQ(entry().call(), 0);
    Bytes state = state_bytes();
    restart(device);
    return state;
  }

  void restart(SimDevice& device) const {
    reset_engine();
    entry().prepare();
    ASSERT_EQ(device.attach(), 0);
  }

  void expect_written(const SimDevice& device) const {
    ASSERT_EQ(device.log().size(), entry().writes.size());
    for (std::size_t i = 0; i < entry().writes.size(); ++i) {
      EXPECT_EQ(device.log()[i].direction, Direction::kWrite);
      EXPECT_EQ(device.log()[i].elements, entry().writes[i]) << "transfer " << i;
    }
  }
};

INSTANTIATE_TEST_SUITE_P(All, SetEntryPoint, testing::ValuesIn(set_entries()),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_P(SetEntryPoint, WritesItsTablesInOrderAndNoBitOutsideTheirMasks) {
  SimDevice device;
  ASSERT_EQ(device.attach(), 0);
  EXPECT_EQ(outcome_of(entry().call), silent_success());
  expect_written(device);
  EXPECT_TRUE(device.stray_bits().empty());
  EXPECT_EQ(de_get_error_str(), nullptr);
}

TEST_P(SetEntryPoint, LibraryHoldsWhatItWroteAndNoOtherRegisterChanges) {
  Elements expected = with_values(library_registers(), entry().only_in_memory);
  for (const Elements& table : entry().writes)
    expected = with_values(expected, table);
  SimDevice device;
  ASSERT_EQ(device.attach(), 0);
  EXPECT_EQ(entry().call(), 0);
  EXPECT_EQ(library_registers(), expected);
}

TEST_P(SetEntryPoint, SecondCallWritesTheSame) {
  SimDevice device;
  ASSERT_EQ(device.attach(), 0);
  EXPECT_EQ(entry().call(), 0);
  device.clear_log();
  EXPECT_EQ(outcome_of(entry().call), silent_success());
  expect_written(device);
}

TEST_P(SetEntryPoint, WithoutWriteCallbackFailsAndChangesNothing) {
  SimDevice device;
  de_register_read_write_functon(SimDevice::read, nullptr, &device);
  const Bytes before = state_bytes();
  EXPECT_EQ(outcome_of(entry().call), silent(-1));
  EXPECT_STREQ(de_get_error_str(), kNotRegistered);
  EXPECT_EQ(state_bytes(), before);
  for (const auto& call : entry().with_a_null)
    EXPECT_EQ(outcome_of(call), silent(-1));  // the callback is looked at first
  EXPECT_TRUE(device.log().empty());
}

TEST_P(SetEntryPoint, NullPointerIsRefusedAndChangesNothing) {
  SimDevice device;
  ASSERT_EQ(device.attach(), 0);
  const Bytes before = state_bytes();
  for (const auto& call : entry().with_a_null)
    EXPECT_EQ(outcome_of(call), silent(-2));
  EXPECT_EQ(state_bytes(), before);
  EXPECT_TRUE(device.log().empty());
  EXPECT_EQ(de_get_error_str(), nullptr);
}

TEST_P(SetEntryPoint, WriteCallbackAloneSuffices) {
  SimDevice device;
  EXPECT_EQ(de_register_read_write_functon(nullptr, SimDevice::write, &device), -1);
  EXPECT_EQ(outcome_of(entry().call), silent_success());
  expect_written(device);
}

// Fails each transfer in turn. Records and tables are those of a success; the device has the tables before the failure.
TEST_P(SetEntryPoint, EveryFailingTransferEndsTheCallAndLeavesTheRestDone) {
  const Bytes converted = state_after_success();
  const std::size_t transfers = entry().writes.size();
  for (std::size_t failing = 0; failing <= transfers; ++failing) {
    SCOPED_TRACE(failing);
    SimDevice device;
    restart(device);
    device.fail_transfer(failing, 5);
    EXPECT_EQ(outcome_of(entry().call), silent(failing < transfers ? -3 : 0));
    EXPECT_STREQ(de_get_error_str(), failing < transfers ? kWriteFailed : nullptr);
    EXPECT_EQ(state_bytes(), converted);
    EXPECT_EQ(device.log().size(), std::min(failing + 1, transfers));
    for (std::size_t i = 0; i < transfers; ++i) {
      for (const DeRegElement_S& element : entry().writes[i])
        EXPECT_EQ(device.peek(element.address), i < failing ? element.value : 0);
    }
  }
}

TEST_P(SetEntryPoint, GoodCallAfterAFailedOneWritesEverythingAndKeepsTheErrorText) {
  SimDevice device;
  ASSERT_EQ(device.attach(), 0);
  device.fail_transfer(entry().writes.size() - 1, -1);
  EXPECT_EQ(outcome_of(entry().call), silent(-3));
  device.clear_log();
  device.fail_none();
  EXPECT_EQ(outcome_of(entry().call), silent_success());
  expect_written(device);
  EXPECT_STREQ(de_get_error_str(), kWriteFailed);
}

TEST_P(SetEntryPoint, ThrowingCallbackIsAFailedTransfer) {
  const Bytes converted = state_after_success();
  for (const auto callback : {throws_an_exception, throws_a_number}) {
    reset_engine();
    entry().prepare();
    ASSERT_EQ(de_register_read_write_functon(callback, callback, nullptr), 0);
    EXPECT_EQ(outcome_of(entry().call), silent(-3));
    EXPECT_STREQ(de_get_error_str(), kWriteFailed);
    EXPECT_EQ(state_bytes(), converted);
  }
}

TEST_P(SetEntryPoint, ElementsOfTheCallbackAreACopy) {
  const Bytes converted = state_after_success();
  SimDevice device;
  restart(device);
  device.set_tamper([](std::size_t, Direction, DeRegElement_S* elements, std::uint32_t count) {
    std::fill_n(elements, count, DeRegElement_S{1, 2, 3});
  });
  EXPECT_EQ(outcome_of(entry().call), silent_success());
  EXPECT_EQ(state_bytes(), converted);
}

class SetEntryPoints : public EngineTest {
 protected:
  SetEntryPoints() { EXPECT_EQ(device_.attach(), 0); }

  SimDevice device_;
};

TEST_F(SetEntryPoints, RecordsAreStoredWholeWithTheirPadding) {
  const auto basic = counting_bytes<DeBasicParams_S>();
  const auto disparity = counting_bytes<DeDispCalcParams_S>();
  const auto gpm = counting_bytes<DeGpmParams_S>();
  auto d2c = counting_bytes<D2cConfig>();
  d2c.d2c_recovery_expand_width = 0.5F;
  printed_by([&] {
    de_set_baisc_params_to_registers(&basic);
    de_set_disp_calc_params_to_registers(&disparity);
    de_set_gpm_params_to_registers(&gpm);
    de_set_d2c_params_to_registers(&sample::kDepth, &sample::kColor, &sample::kPose, &d2c);
  });
  EXPECT_EQ(bytes_of(engine().basic), bytes_of(basic));
  EXPECT_EQ(bytes_of(engine().disparity), bytes_of(disparity));
  EXPECT_EQ(bytes_of(engine().gpm.params), bytes_of(gpm));
  EXPECT_EQ(bytes_of(engine().d2c.config), bytes_of(d2c));
}

TEST_F(SetEntryPoints, BasicWritesTwoElementsAndThenTheFiveOfTheControlTable) {
  EXPECT_EQ(sample::write_basic(), 0);
  ASSERT_EQ(device_.log().size(), 2U);
  ASSERT_EQ(device_.log()[0].elements.size(), 2U);
  EXPECT_EQ(device_.log()[0].elements[0].address, 0x50001204U);
  EXPECT_EQ(device_.log()[0].elements[1].address, 0x50001208U);
  EXPECT_EQ(device_.log()[1].elements.size(), 5U);
}

std::string overflow_at_infinity() {
  return "current lut value: inf; dingdianhua value: inf; m_fp: 18446744073709551615; return value: 4294967295; max "
         "value: 4294967295 \nerror code 01: value overflow in iZ0 \n";
}

TEST_F(SetEntryPoints, BasicWithAReferencePlaneOf0OverflowsBeforeAnyTransfer) {
  DeBasicParams_S params = sample::basic();
  params.ref_plane_dist = 0;
  const Elements expected = with_values(with_values(library_registers(), sample::basic_control_words()),
                                        consecutive(0x50001204, sample::kAll, {0xFFFFFFFF, 0x022F3D94}));
  EXPECT_EQ(outcome_of([&] { return de_set_baisc_params_to_registers(&params); }),
            prints_out(4096, overflow_at_infinity()));
  EXPECT_TRUE(device_.log().empty());
  EXPECT_EQ(de_get_error_str(), nullptr);
  EXPECT_EQ(bytes_of(engine().basic), bytes_of(params));
  EXPECT_EQ(library_registers(), expected);

  EXPECT_EQ(outcome_of(sample::write_basic), silent_success());
  ASSERT_EQ(device_.log().size(), 2U);
  EXPECT_EQ(device_.log()[0].elements, sample::d2d_words());
}

TEST_F(SetEntryPoints, BasicReportsBothConstantsThatOverflow) {
  DeBasicParams_S params = sample::basic();
  params.ref_plane_dist = 0;
  params.pbf = 1;
  EXPECT_EQ(outcome_of([&] { return de_set_baisc_params_to_registers(&params); }),
            prints_out(4096, overflow_at_infinity() + overflow_lines(1, 32, 40, "PBF")));
  params.ref_plane_dist = 1000;
  EXPECT_EQ(outcome_of([&] { return de_set_baisc_params_to_registers(&params); }),
            prints_out(4096, overflow_lines(1, 32, 40, "PBF")));
  EXPECT_TRUE(device_.log().empty());
}

TEST_F(SetEntryPoints, BasicTakesAnAllOnesConstantForAnOverflowWithoutPrinting) {
  DeBasicParams_S params = sample::basic();
  params.pbf = -1.0F / 1099511627776.0F;  // -2^-40 encodes to 0xFFFFFFFF
  EXPECT_EQ(outcome_of([&] { return de_set_baisc_params_to_registers(&params); }), silent(4096));
  EXPECT_TRUE(device_.log().empty());
}

TEST_F(SetEntryPoints, BasicInAbsoluteDepthModeLeavesTheReferencePlaneRegister) {
  DeBasicParams_S params = sample::basic();
  params.depth_mode = 1;
  params.ref_plane_dist = 0;
  set_value(engine().registers.d2d, 0x50001204, 0x1234);
  EXPECT_EQ(outcome_of([&] { return de_set_baisc_params_to_registers(&params); }), silent_success());
  EXPECT_EQ(device_.peek(0x50001204), 0x1234U);
  EXPECT_EQ(device_.peek(0x50001208), 0x022F3D94U);
}

TEST_F(SetEntryPoints, PrefilterOfAnUnsupportedWindowLeavesTheCoefficients) {
  const DePrefilterParams_S params{6, 0};
  EXPECT_EQ(outcome_of([&] { return de_set_prefilter_params_to_registers(&params); }), silent_success());
  EXPECT_EQ(device_.peek(0x50001080), 0x12460034U);  // 1, 36, 6, the size code of 5
  EXPECT_EQ(device_.peek(0x50001084), 0x21D3019CU);
}

TEST_F(SetEntryPoints, ExtendChopUsesTheExtendedSizeOfTheLastSetter) {
  const DeExtendChopParams_S params = sample::extend_chop();
  EXPECT_EQ(de_set_extend_chop_params_to_registers(&params), 0);
  EXPECT_EQ(device_.peek(0x50001070), 0U);
  EXPECT_EQ(device_.peek(0x50001074), 45U);  // (0 - 3 - 2) * (0 - 5 - 4)
}

TEST_F(SetEntryPoints, DisparityMakesOneWriteAndKeepsTheSmoothFlagInMemory) {
  EXPECT_EQ(sample::write_disparity(), 0);
  EXPECT_EQ(device_.log().size(), 1U);
  EXPECT_EQ(device_.bank().count(0x50001028), 0U);
  EXPECT_EQ(value_at(engine().registers.basic_ctrl, 0x50001028), 0x400U);
}

TEST_F(SetEntryPoints, DisparityWritesAnOverflowingCoefficientAsAllOnes) {
  DeDispCalcParams_S params = sample::disparity();
  params.sp_coef[3] = 2;
  EXPECT_EQ(outcome_of([&] { return de_set_disp_calc_params_to_registers(&params); }),
            prints_out(0, overflow_lines(2, 11, 10, "subpixel_coef_a3")));
  EXPECT_EQ(device_.peek(0x500010E4), 0x07FF0400U);
}

TEST_F(SetEntryPoints, GlobalPointsWriteTheToleranceRegisterLast) {
  EXPECT_EQ(sample::write_gpm(), 0);
  EXPECT_EQ(device_.log()[0].elements.back().address, 0x50001368U);
}

TEST_F(SetEntryPoints, D2cWritesAnOverflowingEntryAsAllOnesAndSucceeds) {
  DeCameraIntrinsic_S depth = sample::kDepth;
  depth.fx = 1;  // W0 becomes 1184
  const D2cConfig config = sample::d2c();
  const DeExtrinsic_S pose{{1, 0, 0, 0, 1, 0, 0.25F, 0, 1}, {}};
  const Outcome outcome =
      outcome_of([&] { return de_set_d2c_params_to_registers(&depth, &sample::kColor, &pose, &config); });
  EXPECT_EQ(outcome.code, 0);
  EXPECT_TRUE(outcome.out.starts_with(overflow_lines(1184, 32, 29, "W0"))) << outcome.out;
  EXPECT_EQ(device_.peek(0x50001210), 0xFFFFFFFFU);
  EXPECT_EQ(device_.peek(0x5000123C), 0U);
  ASSERT_EQ(device_.log().size(), 2U);
  EXPECT_EQ(de_get_error_str(), nullptr);
}

TEST_F(SetEntryPoints, D2dWritesTheControlTableAloneAndTheUnitOfItUnchecked) {
  const D2dConfig config{0xFF, 1, 1};
  EXPECT_EQ(outcome_of([&] { return de_set_d2d_params_to_registers(&config); }), silent_success());
  ASSERT_EQ(device_.log().size(), 1U);
  EXPECT_EQ(device_.log()[0].elements, sample::control(0, 0, 0x0C1800C0, 0x55, 0xE));
}

TEST_F(SetEntryPoints, RectifyWithoutParametersIsRefusedWithTheRecordsStored) {
  const Elements before = library_registers();
  EXPECT_EQ(outcome_of(sample::write_rectify), prints_err(-2, "need to set rectify params! \n"));
  EXPECT_TRUE(device_.log().empty());
  EXPECT_EQ(library_registers(), before);
  DeRectifyParams_S params{};
  DeRectifyCtrlParams_S ctrl{};
  ASSERT_EQ(de_copy_rectify_params(&params, &ctrl), 0);
  EXPECT_EQ(bytes_of(params), bytes_of(kRectify));
  EXPECT_EQ(bytes_of(ctrl), bytes_of(kCtrl));

  sample::set_rectification();
  EXPECT_EQ(outcome_of(sample::write_rectify), silent_success());
}

TEST_F(SetEntryPoints, RectifyOfASingleCameraNeedsCamera1sParameters) {
  const RectifyIntrinsic intrinsic{1, 2, 3, 4, 5, 6};
  const float rotation[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
  const float distortion[8] = {};
  const float camera[4] = {512, 256, 320, 240};
  ASSERT_EQ(set_camera_mode(1, 1), 0);
  ASSERT_EQ(set_rectify_params_brown(0, &intrinsic, distortion, rotation, camera), 0);
  EXPECT_EQ(outcome_of(sample::write_rectify), silent_success());  // in stereo mode one camera is enough
  ASSERT_EQ(set_camera_mode(0, 1), 0);
  EXPECT_EQ(outcome_of(sample::write_rectify), prints_err(-2, "need to set rectify params! \n"));
  EXPECT_EQ(device_.log().size(), 2U);
}

TEST_F(SetEntryPoints, RectifyWritesCamera0sBlockFirstAndNoControlTable) {
  sample::set_rectification();
  EXPECT_EQ(sample::write_rectify(), 0);
  ASSERT_EQ(device_.log().size(), 2U);
  EXPECT_EQ(device_.log()[0].elements[0].address, 0x52080000U);
  EXPECT_EQ(device_.log()[1].elements[0].address, 0x52000000U);
  EXPECT_EQ(device_.bank().count(0x52080070), 0U);
  EXPECT_EQ(device_.bank().count(0x52000070), 0U);
}

TEST_F(SetEntryPoints, RectifyOfASingleCameraWritesCamera1sParametersToBothBlocks) {
  sample::set_rectification();
  ASSERT_EQ(set_camera_mode(0, 1), 0);
  EXPECT_EQ(outcome_of(sample::write_rectify), silent_success());
  for (const DeRegElement_S& element : sample::sbg2r_words()) {
    EXPECT_EQ(device_.peek(element.address), element.value);
    EXPECT_EQ(device_.peek(element.address + 0x80000), element.value);
  }
}

TEST_F(SetEntryPoints, RectifyOverflowOfCamera1EndsBeforeAnyTransferAndBeforeCamera0) {
  sample::set_rectification();
  DeRectifyParams_S params = kRectify;
  params.cam1.fx = 5000;
  const Elements before = library_registers();
  EXPECT_EQ(outcome_of([&] { return de_set_rectify_params_to_registers(&params, &kCtrl); }),
            prints_out(4096,
                       overflow_lines(5000, 32, 20, "rectify_fx") +
                           "convert_rectify_commom_float_to_register error!,camera id = 1 \n"));
  EXPECT_TRUE(device_.log().empty());
  EXPECT_EQ(engine().rectify.camera[1].intrinsic.fx, 5000.0F);
  EXPECT_EQ(library_registers(),
            with_values(before,
                        consecutive(0x52000030,
                                    sample::kAll,
                                    {0x20000000, 0, 0xE0000000, 0, 0x40000000, 0xF0000000, 0, 0, 0x80000000})));
}

TEST_F(SetEntryPoints, RectifyOverflowOfCamera0LeavesCamera1Converted) {
  sample::set_rectification();
  DeRectifyParams_S params = kRectify;
  params.cam0.cy = 5000;
  EXPECT_EQ(outcome_of([&] { return de_set_rectify_params_to_registers(&params, &kCtrl); }),
            prints_out(4096,
                       overflow_lines(5000, 32, 20, "rectify_cy") +
                           "convert_rectify_commom_float_to_register error!,camera id = 0 \n"));
  EXPECT_TRUE(device_.log().empty());
  const Elements camera_1(engine().registers.rectify[1].begin(), engine().registers.rectify[1].end());
  EXPECT_EQ(camera_1, sample::sbg2r_words());
  EXPECT_EQ(de_get_error_str(), nullptr);
}

}  // namespace
}  // namespace vq3900::test
