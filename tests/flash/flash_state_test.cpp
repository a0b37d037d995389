#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <vector>

#include "state/engine.h"
#include "support/calib_builds.h"
#include "support/calib_images.h"
#include "support/capture.h"
#include "support/elements.h"
#include "support/engine_fixture.h"
#include "support/failing_new.h"
#include "support/numbers.h"

namespace vq3900::test {
namespace {

using SerialNumber = EngineTest;
using CalibTemperatures = EngineTest;
using AlignmentRecords = EngineTest;

constexpr std::uint64_t kFirst = 0x1112131415161718, kSecond = 0x2122232425262728, kThird = 0x3132333435363738;

ImageBytes image_without_configurations(std::uint8_t alignment_switch = 0) {
  CalibInput input;
  input.alignment_switch(alignment_switch);
  const BufferBuild build = built_in_memory(input, {24576});
  EXPECT_EQ(build.outcome, silent_success());
  return build.main;
}

TEST_F(SerialNumber, IsZeroAtTheStart) {
  EXPECT_EQ(part(image_without_configurations(), 24, 24), ImageBytes(24));
}

TEST_F(SerialNumber, StandsInEverySectionMadeAfterwards) {
  EXPECT_EQ(outcome_of([] {
              set_sn(&kFirst, &kSecond, &kThird);
              return 0;
            }),
            silent_success());
  hold_alignment_records(1);
  const ImageBytes image = image_without_configurations(1);
  for (const std::size_t section : {0U, 8192U, 16384U, 20480U}) {
    expect_words(image, {{section + 24, 0x15161718}, {section + 28, 0x11121314}, {section + 32, 0x25262728}});
    expect_words(image, {{section + 36, 0x21222324}, {section + 40, 0x35363738}, {section + 44, 0x31323334}});
  }
}

TEST_F(SerialNumber, IsReplacedWholeByTheNextCall) {
  set_sn(&kFirst, &kSecond, &kThird);
  const std::uint64_t zero = 0;
  set_sn(&zero, &kThird, &zero);
  EXPECT_EQ(engine().flash.serial_number, (std::array<std::uint64_t, 3>{0, kThird, 0}));
}

TEST_F(SerialNumber, NullPointerChangesNothing) {
  set_sn(&kFirst, &kSecond, &kThird);
  const Bytes before = state_bytes();
  const std::uint64_t other = 7;
  set_sn(nullptr, &other, &other);
  set_sn(&other, nullptr, &other);
  set_sn(&other, &other, nullptr);
  set_sn(nullptr, nullptr, nullptr);
  EXPECT_EQ(state_bytes(), before);
}

TEST_F(CalibTemperatures, AreThoseOfTheOtherSetter) {
  set_calib_temp(31.5F, 32.25F, 35.75F);
  const Bytes through_this = state_bytes();
  reset_engine();
  set_calib_temp_info(31.5F, 32.25F, 35.75F);
  EXPECT_EQ(state_bytes(), through_this);
  EXPECT_EQ(engine().calib.left_temperature, 31.5F);
  EXPECT_EQ(engine().calib.right_temperature, 32.25F);
  EXPECT_EQ(engine().calib.ldm_temperature, 35.75F);
}

TEST_F(CalibTemperatures, AreForwardedUnchangedWhateverTheyAre) {
  EXPECT_EQ(outcome_of([] {
              set_calib_temp(-1, kNan, kInfinity);
              return 0;
            }),
            silent_success());
  EXPECT_EQ(bits_of(engine().calib.left_temperature), bits_of(-1.0F));
  EXPECT_EQ(bits_of(engine().calib.right_temperature), bits_of(kNan));
  EXPECT_EQ(bits_of(engine().calib.ldm_temperature), bits_of(kInfinity));
}

// --- alignment records

std::vector<DeAlignRecord_S> records_of(std::size_t count, std::uint8_t first) {
  std::vector<DeAlignRecord_S> records(count);
  for (DeAlignRecord_S& record : records)
    std::ranges::fill(record.data, first++);
  return records;
}

std::int32_t set(const std::vector<DeAlignRecord_S>& records) {
  return de_set_alignment_records(records.data(), static_cast<std::int32_t>(records.size()));
}

// What the image's alignment section holds: the first byte of every record.
std::vector<int> held() {
  const ImageBytes image = image_without_configurations(1);
  if (word_at(image, 20480) == 0x5A5A5A5A || word_at(image, 20480) == 0xFFFFFFFF) return {};
  const std::uint32_t count = count_of(image, flash::kAlignment);
  expect_flash_section(image, flash::kAlignment, count);
  std::vector<int> bytes;
  for (std::uint32_t i = 0; i < count; ++i) {
    const ImageBytes record = record_at(image, flash::kAlignment, i);
    EXPECT_TRUE(is_all(record, record[0]));
    bytes.push_back(record[0]);
  }
  return bytes;
}

TEST_F(AlignmentRecords, OneToFourAreHeldAndStandInTheImage) {
  for (const std::size_t count : {1U, 2U, 3U, 4U}) {
    EXPECT_EQ(outcome_of([&] { return set(records_of(count, 0x10)); }), silent_success());
    EXPECT_EQ(held().size(), count);
    EXPECT_EQ(held().back(), static_cast<int>(0x10 + count - 1));
  }
}

TEST_F(AlignmentRecords, AreCopied) {
  std::vector<DeAlignRecord_S> records = records_of(2, 0x21);
  EXPECT_EQ(set(records), 0);
  std::ranges::fill(records[0].data, std::uint8_t{0x99});
  EXPECT_EQ(held(), (std::vector<int>{0x21, 0x22}));
}

TEST_F(AlignmentRecords, StayForFurtherImagesUntilTheyAreReplacedOrReleased) {
  EXPECT_EQ(set(records_of(3, 0x10)), 0);
  EXPECT_EQ(held(), (std::vector<int>{0x10, 0x11, 0x12}));
  EXPECT_EQ(held(), (std::vector<int>{0x10, 0x11, 0x12}));
  EXPECT_EQ(set(records_of(1, 0x40)), 0);
  EXPECT_EQ(held(), std::vector<int>{0x40});
  EXPECT_EQ(outcome_of(de_release_alignment_records), silent_success());
  EXPECT_EQ(held(), std::vector<int>{});
}

TEST_F(AlignmentRecords, CountOfZeroReleases) {
  for (const bool with_array : {false, true}) {
    EXPECT_EQ(set(records_of(2, 0x10)), 0);
    const std::vector<DeAlignRecord_S> records = records_of(1, 0x20);
    EXPECT_EQ(outcome_of([&] { return de_set_alignment_records(with_array ? records.data() : nullptr, 0); }),
              silent_success());
    EXPECT_EQ(held(), std::vector<int>{});
  }
}

TEST_F(AlignmentRecords, ReleaseOfNothingSucceeds) {
  EXPECT_EQ(outcome_of(de_release_alignment_records), silent_success());
  EXPECT_EQ(outcome_of(de_release_alignment_records), silent_success());
}

TEST_F(AlignmentRecords, RefusalKeepsWhatIsHeld) {
  EXPECT_EQ(set(records_of(2, 0x10)), 0);
  const std::vector<DeAlignRecord_S> five = records_of(5, 0x50);
  for (const std::int32_t count :
       {5, 6, -1, std::numeric_limits<std::int32_t>::max(), std::numeric_limits<std::int32_t>::min()}) {
    EXPECT_EQ(outcome_of([&] { return de_set_alignment_records(five.data(), count); }), silent(-2)) << count;
  }
  EXPECT_EQ(outcome_of([] { return de_set_alignment_records(nullptr, 1); }), silent(-2));
  EXPECT_EQ(outcome_of([] { return de_set_alignment_records(nullptr, -1); }), silent(-2));
  EXPECT_EQ(held(), (std::vector<int>{0x10, 0x11}));
}

TEST_F(AlignmentRecords, WithoutMemoryTheOldOnesStay) {
  EXPECT_EQ(set(records_of(2, 0x10)), 0);
  const std::vector<DeAlignRecord_S> others = records_of(3, 0x50);
  std::int32_t code = 0;
  {
    const FailingNew none(0);
    code = set(others);
  }
  EXPECT_EQ(code, -2);
  EXPECT_EQ(held(), (std::vector<int>{0x10, 0x11}));
  EXPECT_EQ(set(others), 0);
  EXPECT_EQ(held(), (std::vector<int>{0x50, 0x51, 0x52}));
}

}  // namespace
}  // namespace vq3900::test
