#include "sim_device.h"

#include <gtest/gtest.h>

#include "support/engine_fixture.h"
#include "support/registers.h"

namespace vq3900::test {
namespace {

using sim::Direction;
using sim::MaskMode;
using sim::SimDevice;

DeRegElement_S written(SimDevice& device, DeRegElement_S element) {
  SimDevice::write(&element, 1, &device);
  SimDevice::read(&element, 1, &device);
  return element;
}

TEST(SimDevice, ReadsBackWhatWasWrittenAndZeroElsewhere) {
  SimDevice device;
  EXPECT_EQ(written(device, {0x50001000, 0xFF, 0x12}).value, 0x12U);
  DeRegElement_S other{0x50001004, 0xFF, 0x77};
  EXPECT_EQ(SimDevice::read(&other, 1, &device), 0);
  EXPECT_EQ(other.value, 0U);
}

TEST(SimDevice, StoresAllBitsOrTheMaskedOnes) {
  SimDevice device;
  device.poke(0x50001000, 0xFFFF0000);
  EXPECT_EQ(written(device, {0x50001000, 0x0000FF00, 0x00001234}).value, 0x00001234U);

  device.poke(0x50001000, 0xFFFF0000);
  device.set_mask_mode(MaskMode::kStoreMasked);
  EXPECT_EQ(written(device, {0x50001000, 0x0000FF00, 0x00001234}).value, 0xFFFF1200U);
}

TEST(SimDevice, ReportsBitsWrittenOutsideTheMask) {
  SimDevice device;
  written(device, {0x50001000, 0x0000FF00, 0x00001200});
  EXPECT_TRUE(device.stray_bits().empty());
  written(device, {0x50001000, 0x0000FF00, 0x00001234});
  ASSERT_EQ(device.stray_bits().size(), 1U);
  EXPECT_EQ(device.stray_bits()[0].address, 0x50001000U);
  EXPECT_EQ(device.stray_bits()[0].value, 0x1234U);
}

TEST(SimDevice, FailsTheTransferAskedForAndMovesNothing) {
  SimDevice device;
  device.fail_transfer(1, 5);
  DeRegElement_S element{0x50001000, 0xFF, 1};
  EXPECT_EQ(SimDevice::write(&element, 1, &device), 0);
  element.value = 2;
  EXPECT_EQ(SimDevice::write(&element, 1, &device), 5);
  EXPECT_EQ(device.peek(0x50001000), 1U);
  EXPECT_EQ(SimDevice::write(&element, 1, &device), 0);
  EXPECT_EQ(device.peek(0x50001000), 2U);
}

TEST(SimDevice, LogsEveryTransferWithItsResult) {
  SimDevice device;
  device.fail_transfer(1, -7);
  DeRegElement_S element{0x50001000, 0xFF, 3};
  SimDevice::write(&element, 1, &device);
  SimDevice::read(&element, 1, &device);
  ASSERT_EQ(device.log().size(), 2U);
  EXPECT_EQ(device.log()[0].direction, Direction::kWrite);
  EXPECT_EQ(device.log()[0].elements, (std::vector<DeRegElement_S>{{0x50001000, 0xFF, 3}}));
  EXPECT_EQ(device.log()[0].result, 0);
  EXPECT_EQ(device.log()[1].direction, Direction::kRead);
  EXPECT_EQ(device.log()[1].result, -7);
  device.clear_log();
  EXPECT_TRUE(device.log().empty());
}

TEST(SimDevice, HandsElementsToTheTamperBeforeTheyGoBack) {
  SimDevice device;
  device.set_tamper([](std::size_t, Direction, DeRegElement_S* elements, std::uint32_t) { elements[0].mask = 0xAB; });
  DeRegElement_S element{0x50001000, 0xFF, 3};
  SimDevice::read(&element, 1, &device);
  EXPECT_EQ(element.mask, 0xABU);
}

using AttachedSimDevice = EngineTest;

TEST_F(AttachedSimDevice, ServesTheLibrarysEntryPoints) {
  SimDevice device;
  ASSERT_EQ(device.attach(), 0);
  const D2dConfig config{3, 0, 0};
  EXPECT_EQ(de_set_d2d_params_to_registers(&config), 0);
  EXPECT_EQ(device.peek(0x5000188C), 6U);
}

}  // namespace
}  // namespace vq3900::test
