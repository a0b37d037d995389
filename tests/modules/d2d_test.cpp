#include "modules/d2d.h"

#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "support/capture.h"
#include "support/engine_fixture.h"
#include "support/fields.h"
#include "support/numbers.h"
#include "support/registers.h"

namespace vq3900::test {
namespace {

using D2d = EngineTest;

constexpr std::uint32_t kReference = 0x50001204;
constexpr std::uint32_t kPbf = 0x50001208;

D2dConfig config() {
  D2dConfig out;
  EXPECT_EQ(get_d2d_config(&out), 0);
  return out;
}

void expect_config(int unit_shift, int in_r, int hw_d2d_enable) {
  EXPECT_EQ(config().unit_shift, unit_shift);
  EXPECT_EQ(config().in_R, in_r);
  EXPECT_EQ(config().hw_d2d_enable, hw_d2d_enable);
}

// --- record and setters ---

TEST_F(D2d, RecordIsZeroAtLoad) {
  expect_config(0, 0, 0);
}

TEST_F(D2d, RecordTravelsWhole) {
  const D2dConfig in{0x81, 0x92, 0xA3};
  EXPECT_EQ(outcome_of([&] { return de_update_d2d_config(&in); }), silent_success());
  auto out = filled_with<D2dConfig>(0xEE);
  EXPECT_EQ(outcome_of([&] { return get_d2d_config(&out); }), silent_success());
  EXPECT_EQ(bytes_of(out), (std::vector<unsigned char>{0x81, 0x92, 0xA3}));
}

TEST_F(D2d, NullRecordIsRefusedAndChangesNothing) {
  const D2dConfig in{1, 2, 3};
  de_update_d2d_config(&in);
  EXPECT_EQ(outcome_of([] { return de_update_d2d_config(nullptr); }), silent(-2));
  EXPECT_EQ(outcome_of([] { return get_d2d_config(nullptr); }), silent(-2));
  expect_config(1, 2, 3);
}

TEST_F(D2d, UnitShiftsFromZeroToFourAreStored) {
  const D2dConfig in{9, 2, 3};
  de_update_d2d_config(&in);
  for (std::uint8_t unit = 0; unit <= 4; ++unit) {
    EXPECT_EQ(outcome_of([&] { return set_d2d_unit(unit); }), silent_success());
    expect_config(unit, 2, 3);
  }
}

TEST_F(D2d, UnitShiftAboveFourIsRefusedAndChangesNothing) {
  set_d2d_unit(3);
  for (const int unit : {5, 8, 128, 255}) {
    EXPECT_EQ(outcome_of([&] { return set_d2d_unit(static_cast<std::uint8_t>(unit)); }),
              prints_err(-2, "D2D:unit_shift is incorrect! \n"));
    expect_config(3, 0, 0);
  }
  EXPECT_EQ(set_d2d_unit(4), 0);
  expect_config(4, 0, 0);
}

TEST_F(D2d, HardwareEnableIsStoredAsZeroOrOne) {
  const D2dConfig in{1, 2, 99};
  de_update_d2d_config(&in);
  set_hw_d2d_enable(true);
  expect_config(1, 2, 1);
  set_hw_d2d_enable(false);
  expect_config(1, 2, 0);
}

TEST_F(D2d, SettersTouchNoRegister) {
  const RegisterTables before = engine().registers;
  set_d2d_unit(4);
  set_hw_d2d_enable(true);
  EXPECT_EQ(differences_from(before), "");
}

// --- configuration and the control table ---

constexpr FieldRow<D2dConfig> kWritten[] = {field_row<&D2dConfig::unit_shift>("unit_shift", 0x5000188C, 3, 1)};

constexpr FieldRow<D2dConfig> kReadBack[] = {
    field_row<&D2dConfig::unit_shift>("unit_shift", 0x5000188C, 3, 1),
    field_row<&D2dConfig::hw_d2d_enable>("hw_d2d_enable", 0x5000188C, 0, 0),
    field_row<&D2dConfig::in_R>("in_R", 0x50001000, 21, 21),
};

TEST_F(D2d, OnlyTheUnitIsWritten) {
  // Neither the enable bit nor in_R follows the record.
  for (const D2dConfig& quiet : {D2dConfig{0, 0, 0}, D2dConfig{0, 1, 1}, D2dConfig{5, 0, 1}}) {
    expect_other_bits_survive<D2dConfig>(kWritten, {}, engine().d2d, quiet, convert_d2d_config_to_register_element);
  }
}

TEST_F(D2d, UnitLandsInItsBits) {
  expect_fields_land_in_their_bits<D2dConfig>(kWritten, engine().d2d, {}, convert_d2d_config_to_register_element);
}

TEST_F(D2d, EveryFieldComesBackFromItsBits) {
  expect_fields_come_back<D2dConfig>(kReadBack, engine().d2d, {7, 7, 7}, convert_d2d_register_to_config);
}

TEST_F(D2d, UnitWordsWorkedOutByHand) {
  constexpr std::uint32_t kWords[] = {0x0, 0x2, 0x4, 0x6, 0x8};
  for (std::uint8_t unit = 0; unit <= 4; ++unit) {
    set_d2d_unit(unit);
    EXPECT_EQ(outcome_of(convert_d2d_config_to_register_element), silent_success());
    EXPECT_EQ(word_at(0x5000188C), kWords[unit]);
  }
}

TEST_F(D2d, ReadBackReportsFlagsThatNoConversionWrites) {
  set_hw_d2d_enable(true);
  EXPECT_EQ(outcome_of(convert_d2d_config_to_register_element), silent_success());
  EXPECT_EQ(outcome_of(convert_d2d_register_to_config), silent_success());
  expect_config(0, 0, 0);  // the enable was never written
  word_at(0x50001000) = 0x00200000;
  word_at(0x5000188C) = 0x0000000F;
  EXPECT_EQ(outcome_of(convert_d2d_register_to_config), silent_success());
  expect_config(7, 1, 1);
}

// --- depth constants ---

struct ConstantCase {
  const char* name;
  float value;
  std::uint32_t word;
};

class D2dReference : public EngineTest, public testing::WithParamInterface<ConstantCase> {};
class D2dFactor : public EngineTest, public testing::WithParamInterface<ConstantCase> {};

TEST_P(D2dReference, IsTheReciprocalWith38FractionBits) {
  for (const std::uint32_t background : kBackgrounds) {
    fill_all_registers(background);
    RegisterTables expected = engine().registers;
    word_at(expected, kReference) = GetParam().word;
    word_at(expected, kPbf) = 0;
    set_ref_plane_dist(GetParam().value);
    EXPECT_EQ(outcome_of(convert_d2d_params_to_register_elements), silent_success());
    EXPECT_EQ(differences_from(expected), "");
  }
}

INSTANTIATE_TEST_SUITE_P(
    D2d, D2dReference,
    testing::Values(ConstantCase{"OneMetre", 1000, 0x10624DD3}, ConstantCase{"MinusOneMetre", -1000, 0xEF9DB22D},
                    ConstantCase{"Power", 128, 0x80000000}, ConstantCase{"MinusPower", -128, 0x80000000},
                    ConstantCase{"CloseEnough", 65, 0xFC0FC0FC}, ConstantCase{"MinusSixtyFourWrapsToZero", -64, 0},
                    ConstantCase{"Far", 274877906944.0F, 1}, ConstantCase{"FartherRoundsUp", 549755813888.0F, 1},
                    ConstantCase{"FarthestRoundsDown", 1e12F, 0}, ConstantCase{"NegativeRoundsToZero", -1e12F, 0},
                    ConstantCase{"Infinite", kInfinity, 0}, ConstantCase{"MinusInfinite", -kInfinity, 0}),
    [](const auto& test) { return test.param.name; });

TEST_P(D2dFactor, HasFortyFractionBits) {
  for (const std::uint32_t background : kBackgrounds) {
    fill_all_registers(background);
    RegisterTables expected = engine().registers;
    word_at(expected, kReference) = 0x10624DD3;
    word_at(expected, kPbf) = GetParam().word;
    set_ref_plane_dist(1000);
    engine().basic.pbf = GetParam().value;
    EXPECT_EQ(outcome_of(convert_d2d_params_to_register_elements), silent_success());
    EXPECT_EQ(differences_from(expected), "");
  }
}

INSTANTIATE_TEST_SUITE_P(D2d, D2dFactor,
                         testing::Values(ConstantCase{"Zero", 0, 0}, ConstantCase{"MinusZero", -0.0F, 0},
                                         ConstantCase{"FiftyTimesSixHundred", 1.0F / 30000, 0x022F3D94},
                                         ConstantCase{"Negative", -1.0F / 30000, 0xFDD0C26C},
                                         ConstantCase{"Power", 1.0F / 512, 0x80000000},
                                         ConstantCase{"MinusPower", -1.0F / 512, 0x80000000},
                                         ConstantCase{"MinusRangeWrapsToZero", -1.0F / 256, 0},
                                         ConstantCase{"SmallestStep", 1.0F / 1099511627776.0F, 1},
                                         ConstantCase{"Denormal", 1e-45F, 0}),
                         [](const auto& test) { return test.param.name; });

TEST_F(D2d, ConstantsFollowTheBasicSetters) {
  set_ref_plane_dist(1000);
  ASSERT_EQ(set_pbf_params(50, 600), 0);
  EXPECT_EQ(outcome_of(convert_d2d_params_to_register_elements), silent_success());
  EXPECT_EQ(word_at(kReference), 0x10624DD3U);
  EXPECT_EQ(word_at(kPbf), 0x022F3D94U);
}

TEST_F(D2d, ClearedConstantsAreZero) {
  set_ref_plane_dist(1000);
  ASSERT_EQ(set_pbf_params(50, 600), 0);
  ASSERT_EQ(convert_d2d_params_to_register_elements(), 0);
  clear_depth_constants(engine().registers);
  EXPECT_EQ(word_at(kReference), 0U);
  EXPECT_EQ(word_at(kPbf), 0U);
}

TEST_F(D2d, ReciprocalIsFormedInDouble) {
  constexpr std::uint32_t kSeed = 390004;
  Random random(kSeed);
  int not_single = 0;
  for (int i = 0; i < 300; ++i) {
    SCOPED_TRACE(testing::Message() << "seed " << kSeed << ", distance " << i);
    const float dist = random.between(65, 6000);
    set_ref_plane_dist(dist);
    ASSERT_EQ(convert_d2d_params_to_register_elements(), 0);
    const double reciprocal = 1.0 / static_cast<double>(dist);
    ASSERT_EQ(word_at(kReference), static_cast<std::uint32_t>(std::llround(std::ldexp(reciprocal, 38))));
    const float single = 1.0F / dist;
    if (std::llround(std::ldexp(static_cast<double>(single), 38)) != std::llround(std::ldexp(reciprocal, 38)))
      ++not_single;
  }
  EXPECT_GT(not_single, 200);  // the inputs tell the precisions apart
}

TEST_F(D2d, NonZeroDepthModeKeepsTheReferenceRegisterAndIgnoresItsDistance) {
  word_at(kReference) = 0x12345678;
  engine().basic.pbf = 1.0F / 512;
  for (const int depth_mode : {1, 2, 128, 255}) {
    set_camera_mode(0, static_cast<std::uint8_t>(depth_mode));
    set_ref_plane_dist(0);  // would overflow
    EXPECT_EQ(outcome_of(convert_d2d_params_to_register_elements), silent_success());
    EXPECT_EQ(word_at(kReference), 0x12345678U);
    EXPECT_EQ(word_at(kPbf), 0x80000000U);
  }
}

TEST_F(D2d, CameraModeHasNoSayInTheReference) {
  set_camera_mode(1, 0);
  set_ref_plane_dist(1000);
  EXPECT_EQ(outcome_of(convert_d2d_params_to_register_elements), silent_success());
  EXPECT_EQ(word_at(kReference), 0x10624DD3U);
}

// --- overflow ---

TEST_F(D2d, CloseReferencePlaneOverflowsAndTheFactorIsStillWritten) {
  set_ref_plane_dist(64);
  engine().basic.pbf = 1.0F / 512;
  EXPECT_EQ(
      outcome_of(convert_d2d_params_to_register_elements),
      prints_out(4096,
                 "current lut value: 0.01562500000000000000; dingdianhua value: 4294967296.00000000000000000000; m_fp: "
                 "4294967296; return value: 0; max value: 4294967295 \n"
                 "error code 01: value overflow in iZ0 \n"));
  EXPECT_EQ(word_at(kReference), 0xFFFFFFFFU);
  EXPECT_EQ(word_at(kPbf), 0x80000000U);

  set_ref_plane_dist(1000);
  EXPECT_EQ(outcome_of(convert_d2d_params_to_register_elements), silent_success());
  EXPECT_EQ(word_at(kReference), 0x10624DD3U);
}

TEST_F(D2d, LargeFactorOverflowsAfterTheReferenceIsWritten) {
  set_ref_plane_dist(1000);
  engine().basic.pbf = 1.0F / 256;
  EXPECT_EQ(outcome_of(convert_d2d_params_to_register_elements),
            prints_out(4096, overflow_lines(1.0 / 256, 32, 40, "PBF")));
  EXPECT_EQ(word_at(kReference), 0x10624DD3U);
  EXPECT_EQ(word_at(kPbf), 0xFFFFFFFFU);
}

TEST_F(D2d, BothOverflowsAreReportedInOrder) {
  set_ref_plane_dist(-1);
  engine().basic.pbf = 0.5F;
  EXPECT_EQ(outcome_of(convert_d2d_params_to_register_elements),
            prints_out(4096, overflow_lines(-1, 32, 38, "iZ0") + overflow_lines(0.5, 32, 40, "PBF")));
  EXPECT_EQ(word_at(kReference), 0xFFFFFFFFU);
  EXPECT_EQ(word_at(kPbf), 0xFFFFFFFFU);
}

TEST_F(D2d, DistancesWithoutAReciprocalOverflow) {
  for (const float dist : {0.0F, -0.0F, kNan, 1e-45F}) {
    set_ref_plane_dist(dist);
    word_at(kReference) = 0;
    const Outcome outcome = outcome_of(convert_d2d_params_to_register_elements);
    EXPECT_EQ(outcome.code, 4096);
    EXPECT_EQ(outcome.err, "");
    EXPECT_TRUE(outcome.out.ends_with("error code 01: value overflow in iZ0 \n")) << outcome.out;
    EXPECT_EQ(word_at(kReference), 0xFFFFFFFFU);
    EXPECT_EQ(word_at(kPbf), 0U);
  }
}

TEST_F(D2d, FactorsThatAreNoNumbersOverflow) {
  set_ref_plane_dist(1000);
  for (const float factor : {kNan, kInfinity, -kInfinity}) {
    engine().basic.pbf = factor;
    const Outcome outcome = outcome_of(convert_d2d_params_to_register_elements);
    EXPECT_EQ(outcome.code, 4096);
    EXPECT_TRUE(outcome.out.ends_with("error code 01: value overflow in PBF \n")) << outcome.out;
    EXPECT_EQ(word_at(kPbf), 0xFFFFFFFFU);
  }
}

TEST_F(D2d, LegitimateAllOnesReadsAsOverflowWithoutAMessage) {
  set_ref_plane_dist(-274877906944.0F);  // -2^38
  EXPECT_EQ(outcome_of(convert_d2d_params_to_register_elements), silent(4096));
  EXPECT_EQ(word_at(kReference), 0xFFFFFFFFU);
  set_ref_plane_dist(1000);
  engine().basic.pbf = -1.0F / 1099511627776.0F;  // -2^-40
  EXPECT_EQ(outcome_of(convert_d2d_params_to_register_elements), silent(4096));
  EXPECT_EQ(word_at(kPbf), 0xFFFFFFFFU);
}

// --- register table ---

TEST_F(D2d, TableCopiesTwoElementsAndRefusesThree) {
  word_at(kReference) = 11;
  word_at(kPbf) = 22;
  std::array<DeRegElement_S, 3> elements{};
  EXPECT_EQ(outcome_of([&] { return de_copy_d2d_params_register_table(elements.data(), 3); }),
            prints_err(-2, "reg_num > inner_basic_reg_table_size! \n"));
  EXPECT_EQ(elements[0], (DeRegElement_S{}));
  EXPECT_EQ(outcome_of([&] { return de_copy_d2d_params_register_table(elements.data(), 2); }), silent_success());
  EXPECT_EQ(elements[0], (DeRegElement_S{kReference, 0xFFFFFFFF, 11}));
  EXPECT_EQ(elements[1], (DeRegElement_S{kPbf, 0xFFFFFFFF, 22}));
  EXPECT_EQ(elements[2], (DeRegElement_S{}));
}

TEST_F(D2d, MergeStopsAtFirstMismatchAndKeepsEarlierElements) {
  const std::array<DeRegElement_S, 3> elements{
      {{kReference, 0xFFFFFFFF, 33}, {kPbf, 0x7FFFFFFF, 44}, {kPbf, 0xFFFFFFFF, 55}}};
  EXPECT_EQ(outcome_of([&] { return de_update_d2d_params_register_table(elements.data(), 3); }),
            prints_err(-2, "reg_num > inner_basic_params_reg_table_size! \n"));
  EXPECT_EQ(word_at(kReference), 0U);
  EXPECT_EQ(outcome_of([&] { return de_update_d2d_params_register_table(elements.data(), 2); }),
            prints_err(-2, "register element address or mask incompatible!\n"));
  EXPECT_EQ(word_at(kReference), 33U);
  EXPECT_EQ(word_at(kPbf), 0U);
  EXPECT_EQ(outcome_of([] { return de_update_d2d_params_register_table(nullptr, 0); }), silent_success());
}

}  // namespace
}  // namespace vq3900::test
