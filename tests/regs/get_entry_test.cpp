// The get entry points: what they read, in which order, what comes out, and what every failure leaves behind.
#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "sim_device.h"
#include "support/block_samples.h"
#include "support/capture.h"
#include "support/engine_fixture.h"
#include "support/get_entries.h"

namespace vq3900::test {
namespace {

using sim::Direction;
using sim::SimDevice;

constexpr const char* kNotRegistered = "the read and write register function have not been set!";
constexpr const char* kReadFailed = "read register failed!";
constexpr const char* kMismatch = "register element address or mask incompatible!\n";

// Of the 261 status registers the first 5 are merged.
std::size_t elements_merged(const Elements& table) {
  return table.size() == 261 ? 5 : table.size();
}

std::int32_t throws_an_exception(DeRegElement_S* /*elements*/, std::uint32_t /*count*/, void* /*user*/) {
  throw std::runtime_error("the bus is gone");
}

class GetEntryBase : public EngineTest {
 protected:
  // A library that is fresh but for what the entry needs, in front of a device that holds what the entry reads.
  void start(const GetEntry& entry, SimDevice& device) {
    reset_engine();
    entry.prepare();
    for (const Elements& table : entry.reads) {
      for (const DeRegElement_S& element : table)
        device.poke(element.address, element.value);
    }
    ASSERT_EQ(device.attach(), 0);
    registers_ = library_registers();
    records_ = record_bytes();
  }

  Outcome call(const GetEntry& entry) {
    result_.assign(entry.size + entry.second_size, kUntouched);
    return outcome_of([&] { return entry.call(result_.data(), result_.data() + entry.size); });
  }

  // The tables hold the first elements of what was read, as many of each as is said, and nothing else has changed.
  void expect_merged(const GetEntry& entry, const std::vector<std::size_t>& counts) const {
    Elements expected = registers_;
    for (std::size_t i = 0; i < entry.reads.size(); ++i)
      expected = with_values(expected, {entry.reads[i].data(), counts[i]});
    EXPECT_EQ(library_registers(), expected);
  }

  void expect_nothing_decoded() const {
    EXPECT_EQ(record_bytes(), records_);
    EXPECT_EQ(result_, Bytes(result_.size(), kUntouched));
  }

  Elements registers_;
  Bytes records_;
  Bytes result_;
};

class GetEntryPoint : public GetEntryBase, public testing::WithParamInterface<GetEntry> {
 protected:
  GetEntryPoint() { start(entry(), device_); }

  const GetEntry& entry() const { return GetParam(); }
  Outcome call() { return GetEntryBase::call(entry()); }

  void expect_all_read() const {
    ASSERT_EQ(device_.log().size(), entry().reads.size());
    for (std::size_t i = 0; i < entry().reads.size(); ++i) {
      EXPECT_EQ(device_.log()[i].direction, Direction::kRead);
      EXPECT_EQ(device_.log()[i].elements, entry().reads[i]) << "transfer " << i;
    }
  }

  // Elements merged of each table when the first transfers have gone through.
  std::vector<std::size_t> merged_after(std::size_t transfers) const {
    const bool done = transfers == entry().reads.size();
    std::vector<std::size_t> counts;
    for (std::size_t i = 0; i < entry().reads.size(); ++i) {
      const bool merged = done || (entry().merges == Merges::kOneByOne && i < transfers);
      counts.push_back(merged ? elements_merged(entry().reads[i]) : 0);
    }
    return counts;
  }

  SimDevice device_;
};

INSTANTIATE_TEST_SUITE_P(All, GetEntryPoint, testing::ValuesIn(get_entries()),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_P(GetEntryPoint, ReadsItsTablesInOrderAndMergesThem) {
  EXPECT_EQ(call(), silent_success());
  expect_all_read();
  expect_merged(entry(), merged_after(entry().reads.size()));
  EXPECT_EQ(de_get_error_str(), nullptr);
}

TEST_P(GetEntryPoint, AnswersTheRecordOfTheRegisters) {
  EXPECT_EQ(call(), silent_success());
  EXPECT_EQ(result_, entry().fresh);
  EXPECT_EQ(call(), silent_success());
  EXPECT_EQ(result_, entry().fresh);
}

TEST_P(GetEntryPoint, AnswersWhatWasSetButForWhatTheRegistersDoNotHold) {
  SimDevice device;
  ASSERT_EQ(device.attach(), 0);
  ASSERT_EQ(entry().set(), 0);
  EXPECT_EQ(call(), silent_success());
  EXPECT_EQ(result_, entry().after_set);
}

TEST_P(GetEntryPoint, WithoutReadCallbackFailsAndChangesNothing) {
  de_register_read_write_functon(nullptr, SimDevice::write, &device_);
  EXPECT_EQ(call(), silent(-1));
  EXPECT_STREQ(de_get_error_str(), kNotRegistered);
  expect_nothing_decoded();
  EXPECT_EQ(outcome_of([&] { return entry().call(nullptr, nullptr); }), silent(-1));  // looked at first
  EXPECT_EQ(library_registers(), registers_);
}

TEST_P(GetEntryPoint, NullPointerIsRefusedAndChangesNothing) {
  result_.assign(entry().size + entry().second_size, kUntouched);
  EXPECT_EQ(outcome_of([&] { return entry().call(nullptr, result_.data()); }), silent(-2));
  if (entry().second_size > 0) {
    EXPECT_EQ(outcome_of([&] { return entry().call(result_.data(), nullptr); }), silent(-2));
  }
  expect_nothing_decoded();
  EXPECT_EQ(library_registers(), registers_);
  EXPECT_TRUE(device_.log().empty());
  EXPECT_EQ(de_get_error_str(), nullptr);
}

TEST_P(GetEntryPoint, ReadCallbackAloneSuffices) {
  EXPECT_EQ(de_register_read_write_functon(SimDevice::read, nullptr, &device_), -1);
  EXPECT_EQ(call(), silent_success());
  EXPECT_EQ(result_, entry().fresh);
}

// Fails each transfer in turn: tables merged before stay merged, nothing is decoded, the caller's records stay.
TEST_P(GetEntryPoint, EveryFailingTransferEndsTheCallBeforeAnythingIsDecoded) {
  const std::size_t transfers = entry().reads.size();
  for (std::size_t failing = 0; failing < transfers; ++failing) {
    SCOPED_TRACE(failing);
    start(entry(), device_);
    device_.clear_log();
    device_.fail_transfer(failing, -7);
    EXPECT_EQ(call(), silent(-3));
    EXPECT_STREQ(de_get_error_str(), kReadFailed);
    EXPECT_EQ(device_.log().size(), failing + 1);
    expect_merged(entry(), merged_after(failing));
    expect_nothing_decoded();
  }
  start(entry(), device_);
  device_.clear_log();
  device_.fail_transfer(transfers, -7);
  EXPECT_EQ(call(), silent_success());
  EXPECT_EQ(result_, entry().fresh);
}

TEST_P(GetEntryPoint, GoodCallAfterAFailedOneAnswersTheRecordAndKeepsTheErrorText) {
  device_.fail_transfer(entry().reads.size() - 1, 1);
  EXPECT_EQ(call(), silent(-3));
  device_.fail_none();
  device_.clear_log();
  EXPECT_EQ(call(), silent_success());
  expect_all_read();
  EXPECT_EQ(result_, entry().fresh);
  EXPECT_STREQ(de_get_error_str(), kReadFailed);
}

TEST_P(GetEntryPoint, ThrowingCallbackIsAFailedTransfer) {
  ASSERT_EQ(de_register_read_write_functon(throws_an_exception, throws_an_exception, nullptr), 0);
  EXPECT_EQ(call(), silent(-3));
  EXPECT_STREQ(de_get_error_str(), kReadFailed);
  expect_nothing_decoded();
  EXPECT_EQ(library_registers(), registers_);
}

// A callback that gives one element back changed.
struct Tampering {
  const char* name;
  const char* entry;
  std::size_t transfer;
  std::size_t element;
  std::uint32_t DeRegElement_S::*member;
  std::vector<std::size_t> merged;  // elements of each table
  std::size_t transfers;
};

constexpr auto kAddress = &DeRegElement_S::address;
constexpr auto kMask = &DeRegElement_S::mask;

const Tampering kRefused[] = {
    {"BasicD2dAddress", "Basic", 0, 1, kAddress, {1, 0}, 1},
    {"BasicD2dMask", "Basic", 0, 0, kMask, {0, 0}, 1},
    {"BasicControlAddress", "Basic", 1, 3, kAddress, {2, 3}, 2},
    {"PrefilterMask", "Prefilter", 0, 3, kMask, {3}, 1},
    {"ExtendChopAddress", "ExtendChop", 0, 6, kAddress, {6}, 1},
    {"DisparityMask", "Disparity", 0, 9, kMask, {9}, 1},
    {"GlobalPointsAddress", "GlobalPoints", 0, 5, kAddress, {5, 0}, 2},
    {"GlobalPointStatusMask", "GlobalPoints", 1, 2, kMask, {30, 2}, 2},
    {"D2cProjectionAddress", "D2c", 0, 0, kAddress, {0, 0}, 1},
    {"D2cControlAddress", "D2c", 1, 4, kAddress, {12, 4}, 2},
    {"D2dControlAddress", "D2d", 0, 0, kAddress, {0}, 1},
    {"RectifyCamera1Mask", "Rectify", 0, 7, kMask, {7, 23, 3}, 3},  // merged last
    {"RectifyCamera0Address", "Rectify", 1, 22, kAddress, {0, 22, 0}, 3},
    {"RectifyControlMask", "Rectify", 2, 1, kMask, {0, 23, 1}, 3},
};

// The control table takes any mask; status elements from 5 on are not merged.
const Tampering kAccepted[] = {
    {"BasicControlMask", "Basic", 1, 2, kMask, {2, 5}, 2},
    {"D2cControlMask", "D2c", 1, 0, kMask, {12, 5}, 2},
    {"D2dControlMask", "D2d", 0, 4, kMask, {5}, 1},
    {"GlobalPointStatusAddress5", "GlobalPoints", 1, 5, kAddress, {30, 5}, 2},
    {"GlobalPointStatusMask260", "GlobalPoints", 1, 260, kMask, {30, 5}, 2},
};

void PrintTo(const Tampering& tampering, std::ostream* stream) {
  *stream << tampering.name;
}

class TamperingCallback : public GetEntryBase, public testing::WithParamInterface<Tampering> {
 protected:
  TamperingCallback()
      : entry_(*std::find_if(get_entries().begin(), get_entries().end(),
                             [](const GetEntry& entry) { return std::string(entry.name) == GetParam().entry; })) {
    start(entry_, device_);
    device_.set_tamper([](std::size_t index, Direction, DeRegElement_S* elements, std::uint32_t) {
      if (index == GetParam().transfer) elements[GetParam().element].*GetParam().member ^= 0x10;
    });
  }

  const GetEntry& entry_;
  SimDevice device_;
};

class RefusedTampering : public TamperingCallback {};
class AcceptedTampering : public TamperingCallback {};

INSTANTIATE_TEST_SUITE_P(All, RefusedTampering, testing::ValuesIn(kRefused),
                         [](const auto& test) { return std::string(test.param.name); });
INSTANTIATE_TEST_SUITE_P(All, AcceptedTampering, testing::ValuesIn(kAccepted),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_P(RefusedTampering, EndsTheCallAndKeepsTheElementsMergedBefore) {
  EXPECT_EQ(call(entry_), prints_err(-2, kMismatch));
  EXPECT_EQ(device_.log().size(), GetParam().transfers);
  expect_merged(entry_, GetParam().merged);
  expect_nothing_decoded();
  EXPECT_EQ(de_get_error_str(), nullptr);

  device_.set_tamper(nullptr);
  EXPECT_EQ(call(entry_), silent_success());
  EXPECT_EQ(result_, entry_.fresh);
}

TEST_P(AcceptedTampering, GoesUnnoticed) {
  EXPECT_EQ(call(entry_), silent_success());
  expect_merged(entry_, GetParam().merged);
  EXPECT_EQ(result_, entry_.fresh);
}

class GetEntryPoints : public EngineTest {
 protected:
  GetEntryPoints() { EXPECT_EQ(device_.attach(), 0); }

  void device_holds(const Elements& elements) {
    for (const DeRegElement_S& element : elements)
      device_.poke(element.address, element.value);
  }

  SimDevice device_;
};

class GetGlobalPoints : public GetEntryPoints {
 protected:
  std::int32_t get_points() { return de_get_gpm_params_from_registers(&params_, &short_status_); }

  DeGpStatusParams_S status() {
    auto status = filled_with<DeGpStatusParams_S>(kUntouched);
    EXPECT_EQ(get_global_points_status(&status), 0);
    return status;
  }

  DeGpmParams_S params_{};
  DeGpStatusParams_S short_status_{};
};

TEST_F(GetGlobalPoints, CallTheReadCallbackWithCounts30And261InThatOrder) {
  EXPECT_EQ(get_points(), 0);
  ASSERT_EQ(device_.log().size(), 2U);
  EXPECT_EQ(device_.log()[0].elements.size(), 30U);
  EXPECT_EQ(device_.log()[1].elements.size(), 261U);
}

TEST_F(GetGlobalPoints, PointWordsAre0AfterwardsAndTheFirstFiveWordsReflectTheDevice) {
  device_holds(sample::gp_status_words());
  EXPECT_EQ(get_points(), 0);
  EXPECT_EQ(bytes_of(status()), bytes_of(sample::gp_status()));
}

TEST_F(GetGlobalPoints, PointWordsComeFromTheLibrarysOwnTable) {
  const Elements own = joined({repeated(5, 0x5000137C, sample::kAll, 0), {{0x50001400, sample::kAll, 0x0500A00B}}});
  ASSERT_EQ(de_update_gp_status_register_table(own.data(), 6), 0);
  device_holds(sample::gp_status_words());
  EXPECT_EQ(get_points(), 0);
  DeGpStatusParams_S expected = sample::gp_status();
  std::ranges::copy(std::array{11, 5, 10}, expected.point[0]);
  EXPECT_EQ(bytes_of(status()), bytes_of(expected));
}

TEST_F(GetEntryPoints, BasicOfAProgrammedDepthModeReadsItAsCameraModeAndLeavesTheReferencePlane) {
  device_holds(sample::d2d_words());
  device_.poke(0x50001200, 0x80000000);
  DeBasicParams_S params{};
  EXPECT_EQ(de_get_baisc_params_from_registers(&params), 0);
  EXPECT_EQ(params.cam_mode, 1U);
  EXPECT_EQ(params.depth_mode, 0U);
  EXPECT_EQ(params.ref_plane_dist, 0.0F);
  EXPECT_EQ(params.pbf, sample::kPbf);
}

TEST_F(GetEntryPoints, CameraModeIsThatOfWhicheverReadBackRanLast) {
  device_.poke(0x50001200, 0x80000123);
  std::uint32_t cam_mode = 0;
  D2cConfig d2c{};
  EXPECT_EQ(de_get_d2c_params_from_registers(&d2c), 0);
  EXPECT_EQ(get_camera_mode(&cam_mode), 0);
  EXPECT_EQ(cam_mode, 0x23U);
  DeBasicParams_S basic{};
  EXPECT_EQ(de_get_baisc_params_from_registers(&basic), 0);
  EXPECT_EQ(get_camera_mode(&cam_mode), 0);
  EXPECT_EQ(cam_mode, 1U);
}

TEST_F(GetEntryPoints, D2cDecodesTheProjection) {
  device_holds(sample::projection_words());
  D2cConfig config{};
  EXPECT_EQ(de_get_d2c_params_from_registers(&config), 0);
  std::vector<double> w(12);
  EXPECT_EQ(get_d2c_params(&config, w.data()), 0);
  EXPECT_EQ(w,
            (std::vector<double>{
                2.3125, 0.75, -24, 592, -0.765625, 3.0625, 118, -196, 1.0 / 2048, -1.0 / 512, 1.3125, 0.125}));
}

TEST_F(GetEntryPoints, BitsOutsideTheMasksAreKeptAndWrittenBack) {
  const Elements control = sample::control(0x00200000, 0x11, 0x23000000, 0xAB00, 0x7);
  device_holds(control);
  D2dConfig config{};
  EXPECT_EQ(de_get_d2d_params_from_registers(&config), 0);
  EXPECT_EQ(sample::write_d2d(), 0);
  EXPECT_EQ(device_.log().back().elements, control);
}

TEST_F(GetEntryPoints, DisparityTakesTheSmoothFlagFromTheLibrarysControlTable) {
  device_.poke(0x50001028, 0x400);
  DeDispCalcParams_S params{};
  EXPECT_EQ(de_get_disp_calc_params_from_registers(&params), 0);
  EXPECT_EQ(params.smooth_enable_flag, 0U);
  D2dConfig d2d{};
  EXPECT_EQ(de_get_d2d_params_from_registers(&d2d), 0);  // reads the control table
  EXPECT_EQ(de_get_disp_calc_params_from_registers(&params), 0);
  EXPECT_EQ(params.smooth_enable_flag, 1U);
}

class GetRectification : public GetEntryPoints {
 protected:
  // A library with its parameters set, in front of a device that holds the sample.
  void start(std::int32_t cam_mode) {
    reset_engine();
    ASSERT_EQ(device_.attach(), 0);
    sample::set_rectification();
    ASSERT_EQ(set_camera_mode(cam_mode, 1), 0);
    device_holds(joined({sample::rectify_words(), sample::sbg2r_words(), sample::rectify_ctrl_words()}));
    params_ = filled_with<DeRectifyParams_S>(kUntouched);
    ctrl_ = filled_with<DeRectifyCtrlParams_S>(kUntouched);
  }

  std::int32_t get(std::uint32_t distort_type, std::uint8_t block) {
    return de_get_rectify_params_from_registers(&params_, &ctrl_, distort_type, block);
  }

  void expect_records(const DeRectifyParams_S& params, const DeRectifyCtrlParams_S& ctrl) const {
    EXPECT_EQ(bytes_of(params_), bytes_of(params));
    EXPECT_EQ(bytes_of(ctrl_), bytes_of(ctrl));
  }

  DeRectifyParams_S params_{};
  DeRectifyCtrlParams_S ctrl_{};
};

TEST_F(GetRectification, RefusedDistortionTypeMergesTheTablesAndDecodesNothing) {
  for (const std::uint32_t refused : {3U, 0xFFFFFFFFU}) {
    start(1);
    ASSERT_EQ(set_rectify_status(1, 1, 7), 0);
    const Bytes records = record_bytes();
    Elements expected = with_values(library_registers(), sample::rectify_words());
    expected = with_values(with_values(expected, sample::sbg2r_words()), sample::rectify_ctrl_words());
    EXPECT_EQ(outcome_of([&] { return get(refused, 0); }), silent(-2));
    EXPECT_EQ(library_registers(), expected);
    EXPECT_EQ(record_bytes(), records);
    expect_records(filled_with<DeRectifyParams_S>(kUntouched), filled_with<DeRectifyCtrlParams_S>(kUntouched));
    EXPECT_EQ(de_get_error_str(), nullptr);
  }
}

TEST_F(GetRectification, AnyDistortionTypeIsTakenWhileBothCamerasAreOff) {
  start(1);
  EXPECT_EQ(get(3, 0), 0);
  expect_records(sample::rectify(), sample::rectify_ctrl());
}

TEST_F(GetRectification, FlagsAreThoseOfTheRegistersWhateverTheDistortionType) {
  start(1);
  ASSERT_EQ(set_rectify_status(1, 1, 7), 0);
  EXPECT_EQ(get(2, 0), 0);
  EXPECT_EQ(engine().rectify.kk_en, 1U);
  EXPECT_EQ(engine().rectify.lut_en0, 0U);
  EXPECT_EQ(engine().rectify.lut_en1, 0U);
}

TEST_F(GetRectification, StereoModeIgnoresTheBlockChoice) {
  for (const std::uint8_t block : std::array<std::uint8_t, 2>{0, 1}) {
    start(1);
    EXPECT_EQ(get(0, block), 0);
    expect_records(sample::rectify(), sample::rectify_ctrl());
  }
}

// Camera 0's intrinsics stay as they were set.
TEST_F(GetRectification, SingleCameraDecodesTheChosenBlockIntoCamera1) {
  const DeRectifyParams_S stereo = sample::rectify();
  const RectifyIntrinsic other{1, 2, 3, 4, 5, 6};
  for (const std::uint8_t block : std::array<std::uint8_t, 4>{0, 1, 2, 255}) {
    start(0);
    EXPECT_EQ(get(0, block), 0);
    if (block == 0) {
      expect_records({0, 1, {}, other, stereo.cam0}, {{}, 0, 0, 0, 0, {}, 0x123});
    } else {
      expect_records({0, 0, {}, other, stereo.cam1}, {{}, 1, 0, 1, 0, {}, 0x456});
    }
  }
}

}  // namespace
}  // namespace vq3900::test
