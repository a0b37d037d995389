#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "support/capture.h"
#include "support/d2c_state.h"
#include "support/engine_fixture.h"
#include "support/fields.h"
#include "support/numbers.h"
#include "support/registers.h"

namespace vq3900::test {
namespace {

using D2c = EngineTest;

void set_baseline(float baseline) {
  engine().basic.baseline = baseline;
}

// --- record ---

TEST_F(D2c, RecordTravelsWhole) {
  const auto in = counting_bytes<D2cConfig>();
  auto out = filled_with<D2cConfig>(0xEE);
  EXPECT_EQ(outcome_of([&] { return de_update_d2c_config(&in); }), silent_success());
  EXPECT_EQ(outcome_of([&] { return de_copy_d2c_config(&out); }), silent_success());
  EXPECT_EQ(bytes_of(out), bytes_of(in));
}

TEST_F(D2c, ParamsGetterCopiesRecordAndMatrix) {
  const auto in = counting_bytes<D2cConfig>();
  de_update_d2c_config(&in);
  for (std::size_t i = 0; i < 12; ++i)
    engine().d2c.w[i] = 1.5 * static_cast<double>(i) - 4;
  auto out = filled_with<D2cConfig>(0xEE);
  Matrix w{};
  EXPECT_EQ(outcome_of([&] { return get_d2c_params(&out, w.data()); }), silent_success());
  EXPECT_EQ(bytes_of(out), bytes_of(in));
  EXPECT_EQ(w, engine().d2c.w);
}

TEST_F(D2c, NullPointersAreRefusedAndChangeNothing) {
  const auto in = counting_bytes<D2cConfig>();
  de_update_d2c_config(&in);
  auto out = filled_with<D2cConfig>(0xEE);
  Matrix w{};
  w.fill(5);
  const std::array<float, 12> some{1, 1, 0, 0};
  EXPECT_EQ(outcome_of([] { return de_update_d2c_config(nullptr); }), silent(-2));
  EXPECT_EQ(outcome_of([] { return de_copy_d2c_config(nullptr); }), silent(-2));
  EXPECT_EQ(outcome_of([&] { return get_d2c_params(nullptr, w.data()); }), silent(-2));
  EXPECT_EQ(outcome_of([&] { return get_d2c_params(&out, nullptr); }), silent(-2));
  EXPECT_EQ(outcome_of([&] { return set_d2c_calib_params(nullptr, some.data(), some.data()); }), silent(-2));
  EXPECT_EQ(outcome_of([&] { return set_d2c_calib_params(some.data(), nullptr, some.data()); }), silent(-2));
  EXPECT_EQ(outcome_of([&] { return set_d2c_calib_params(some.data(), some.data(), nullptr); }), silent(-2));
  EXPECT_EQ(bytes_of(config()), bytes_of(in));
  EXPECT_EQ(bytes_of(out), std::vector<unsigned char>(32, 0xEE));
  EXPECT_EQ(w[11], 5);
  EXPECT_EQ(matrix(), Matrix{});
}

// --- setters ---

struct RecoveryCase {
  const char* name;
  std::int32_t mode;
  std::uint32_t recovery_mode_2, recovery_mode_1;
  float expand_width;
};

class D2cRecovery : public EngineTest, public testing::WithParamInterface<RecoveryCase> {
 protected:
  // Values that no mode gives, so that "unchanged" shows.
  D2cRecovery() {
    auto in = filled_with<D2cConfig>(0x3C);
    in.recovery_mode_2 = 7;
    in.recovery_mode_1 = 9;
    in.d2c_recovery_expand_width = 0.25F;
    de_update_d2c_config(&in);
  }

  static void expect_recovery() {
    EXPECT_EQ(config().recovery_mode_2, GetParam().recovery_mode_2);
    EXPECT_EQ(config().recovery_mode_1, GetParam().recovery_mode_1);
    EXPECT_EQ(config().d2c_recovery_expand_width, GetParam().expand_width);
    EXPECT_EQ(config().reserved, 0x3C3C3C3CU);
    for (const std::uint8_t byte : config().reserved2)
      EXPECT_EQ(byte, 0x3C);
  }
};

TEST_P(D2cRecovery, IsSetByTheConfigSetter) {
  EXPECT_EQ(outcome_of([] { return set_d2c_config(GetParam().mode, 0.75F, 0xFFFFF001, 0xFFFFF002, -5); }),
            silent_success());
  expect_recovery();
  EXPECT_EQ(config().d2c_buffer_position, 0xFFFFF001U);
  EXPECT_EQ(config().d2c_total_buffer_rows, 0xFFFFF002U);
  EXPECT_EQ(config().depth_sign, 1);
}

TEST_P(D2cRecovery, IsSetByTheParamsSetterBeforeItRefusesTheBaseline) {
  EXPECT_EQ(outcome_of([] { return set_d2c_params(GetParam().mode, 0.75F, 1, 2); }),
            prints_out(-2, "check baseline!\n"));
  expect_recovery();
  EXPECT_EQ(config().d2c_buffer_position, 0x3C3C3C3CU);
  EXPECT_EQ(config().d2c_total_buffer_rows, 0x3C3C3C3CU);
  EXPECT_EQ(config().depth_sign, 0x3C);

  set_baseline(50);
  EXPECT_EQ(outcome_of([] { return set_d2c_params(GetParam().mode, 0.75F, 1, 2); }), silent_success());
  expect_recovery();
  EXPECT_EQ(config().d2c_buffer_position, 1U);
  EXPECT_EQ(config().d2c_total_buffer_rows, 2U);
  EXPECT_EQ(config().depth_sign, 0);
}

INSTANTIATE_TEST_SUITE_P(D2c, D2cRecovery,
                         testing::Values(RecoveryCase{"Off", 0, 0, 0, 0.25F}, RecoveryCase{"ModeOne", 1, 0, 1, 0.25F},
                                         RecoveryCase{"ModeTwoExpands", 2, 1, 0, 0.75F},
                                         RecoveryCase{"ModeThreeChangesNothing", 3, 7, 9, 0.25F},
                                         RecoveryCase{"NegativeModeChangesNothing", -1, 7, 9, 0.25F},
                                         RecoveryCase{"ModeIsNotCutToAByte", 0x102, 7, 9, 0.25F}),
                         [](const auto& test) { return test.param.name; });

TEST_F(D2c, DepthSignIsAnyNonZeroArgument) {
  for (const auto& [argument, sign] : {std::pair{0, 0}, {1, 1}, {-1, 1}, {256, 1}, {0x10000, 1}}) {
    EXPECT_EQ(set_d2c_config(0, 0, 0, 0, argument), 0);
    EXPECT_EQ(config().depth_sign, sign) << argument;
  }
}

TEST_F(D2c, BaselineFrom1To200DecidesTheDepthSign) {
  for (const auto& [baseline, sign] : {std::pair{1.0F, 0}, {-1.0F, 1}, {200.0F, 0}, {-200.0F, 1}, {50.0F, 0}}) {
    SCOPED_TRACE(baseline);
    set_baseline(baseline);
    EXPECT_EQ(outcome_of([] { return set_d2c_params(0, 0, 3, 4); }), silent_success());
    EXPECT_EQ(config().depth_sign, sign);
  }
}

TEST_F(D2c, BaselineOutOfRangeIsRefused) {
  for (const float baseline :
       {0.5F, -0.5F, 0.0F, -0.0F, 0.99999994F, 200.00002F, -200.00002F, 500.0F, kInfinity, -kInfinity, kNan}) {
    SCOPED_TRACE(baseline);
    set_baseline(baseline);
    EXPECT_EQ(outcome_of([] { return set_d2c_params(0, 0, 3, 4); }), prints_out(-2, "check baseline!\n"));
    EXPECT_EQ(config().d2c_buffer_position, 0U);
  }
}

TEST_F(D2c, BaselineIsTheOneOfTheBasicBlock) {
  set_pbf_params(-80, 600);
  EXPECT_EQ(outcome_of([] { return set_d2c_params(2, 0.5F, 3, 4); }), silent_success());
  EXPECT_EQ(config().depth_sign, 1);
}

TEST_F(D2c, SettersTouchNoRegister) {
  const RegisterTables before = engine().registers;
  const std::array<float, 12> some{1, 1, 0, 0};
  set_baseline(50);
  set_d2c_config(2, 0.5F, 1, 2, 1);
  set_d2c_params(2, 0.5F, 1, 2);
  set_d2c_calib_params(some.data(), some.data(), some.data());
  EXPECT_EQ(differences_from(before), "");
}

// --- projection from calibration ---

TEST_F(D2c, IdentityPoseScalesAndShifts) {
  const float depth[]{500, 400, 320, 200};
  const float color[]{1000, 600, 640, 360};
  const float pose[]{1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0};
  EXPECT_EQ(outcome_of([&] { return set_d2c_calib_params(depth, color, pose); }), silent_success());
  // W2 = 640 - 320 * 2, W6 = 360 - 200 * 1.5
  EXPECT_EQ(matrix(), (Matrix{2, 0, 0, 0, 0, 1.5, 60, 0, 0, 0, 1, 0}));

  set_d2c_calib_params(depth, depth, pose);
  EXPECT_EQ(matrix(), (Matrix{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0}));
}

TEST_F(D2c, GeneralPoseGivesTheMatrixWorkedOutByHand) {
  const float depth[]{2, 4, 1, 3};
  const float color[]{8, 16, 5, 7};
  const float pose[]{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
  EXPECT_EQ(set_d2c_calib_params(depth, color, pose), 0);
  EXPECT_EQ(matrix(), (Matrix{21.5, 14, 5.5, 140, 56.5, 34, 0.5, 260, 3.5, 2, -0.5, 12}));
}

// One row of W: each operation of the inputs is a float, the principal point comes off in double.
void expected_row(const float* depth, float focal, float center, const float* r, float t, const float* r2, float t2,
                  double* w) {
  const float fr0 = focal * r[0], fr1 = focal * r[1], fr2 = focal * r[2], ft = focal * t;
  const float cr0 = center * r2[0], cr1 = center * r2[1], cr2 = center * r2[2], ct = center * t2;
  const float s0 = fr0 + cr0, s1 = fr1 + cr1, s2 = fr2 + cr2, st = ft + ct;
  const float q0 = s0 / depth[0], q1 = s1 / depth[1];
  w[0] = static_cast<double>(q0);
  w[1] = static_cast<double>(q1);
  const double off_x = w[0] * static_cast<double>(depth[2]);
  const double off_y = w[1] * static_cast<double>(depth[3]);
  w[2] = static_cast<double>(s2) - off_x;
  w[2] = w[2] - off_y;
  w[3] = static_cast<double>(st);
}

Matrix expected_matrix(const float* depth, const float* color, const float* e) {
  Matrix w{};
  expected_row(depth, color[0], color[2], e, e[9], e + 6, e[11], &w[0]);
  expected_row(depth, color[1], color[3], e + 3, e[10], e + 6, e[11], &w[4]);
  const float q8 = e[6] / depth[0], q9 = e[7] / depth[1];
  w[8] = static_cast<double>(q8);
  w[9] = static_cast<double>(q9);
  w[10] = static_cast<double>(e[8]) - w[8] * static_cast<double>(depth[2]);
  w[10] = w[10] - w[9] * static_cast<double>(depth[3]);
  w[11] = static_cast<double>(e[11]);
  return w;
}

TEST_F(D2c, ProjectionIsExactInMixedPrecision) {
  constexpr std::uint32_t kSeed = 390002;
  Random random(kSeed);
  int not_double = 0;
  int not_single = 0;
  for (int i = 0; i < 400; ++i) {
    SCOPED_TRACE(testing::Message() << "seed " << kSeed << ", calibration " << i);
    float depth[4], color[4], pose[12];
    for (float* camera : {depth, color}) {
      camera[0] = random.between(300, 2000);
      camera[1] = random.between(300, 2000);
      camera[2] = random.between(200, 1000);
      camera[3] = random.between(200, 1000);
    }
    for (int k = 0; k < 9; ++k)
      pose[k] = random.between(-1, 1);
    for (int k = 9; k < 12; ++k)
      pose[k] = random.between(-60, 60);
    ASSERT_EQ(set_d2c_calib_params(depth, color, pose), 0);
    const Matrix expected = expected_matrix(depth, color, pose);
    const Matrix actual = matrix();
    for (std::size_t k = 0; k < 12; ++k)
      ASSERT_EQ(bits_of(actual[k]), bits_of(expected[k])) << "W" << k;

    const double wide = (static_cast<double>(color[0]) * static_cast<double>(pose[0]) +
                         static_cast<double>(color[2]) * static_cast<double>(pose[6])) /
                        static_cast<double>(depth[0]);
    if (wide != expected[0]) ++not_double;
    if (static_cast<double>(static_cast<float>(expected[2])) != expected[2]) ++not_single;
  }
  EXPECT_GT(not_double, 350);  // the inputs tell the precisions apart
  EXPECT_GT(not_single, 350);
}

// --- matrix and registers ---

struct EntryRow {
  const char* name;
  std::size_t index;
  std::uint32_t address;
  int frac_bits;
  std::uint32_t hand_word;  // of -0.00375; with 40 fraction bits of 0.00015625
};

constexpr EntryRow kEntries[] = {
    {"W0", 0, 0x50001210, 29, 0xFFE147AE},
    {"W1", 1, 0x50001214, 29, 0xFFE147AE},
    {"W2", 2, 0x50001218, 17, 0xFFFFFE14},
    {"W3", 3, 0x5000121C, 12, 0xFFFFFFF1},
    {"W4", 4, 0x50001220, 29, 0xFFE147AE},
    {"W5", 5, 0x50001224, 29, 0xFFE147AE},
    {"W6", 6, 0x50001228, 18, 0xFFFFFC29},
    {"W7", 7, 0x5000122C, 12, 0xFFFFFFF1},
    {"W8", 8, 0x50001230, 40, 0x0A3D70A4},
    {"W9", 9, 0x50001234, 40, 0x0A3D70A4},
    {"W10", 10, 0x50001238, 30, 0xFFC28F5C},
    {"W11", 11, 0x5000123C, 27, 0xFFF851EC},
};

class D2cEntry : public EngineTest, public testing::WithParamInterface<EntryRow> {};

TEST_P(D2cEntry, EncodesTheWordsWorkedOutByHandAndNothingElse) {
  const EntryRow& row = GetParam();
  for (const std::uint32_t background : kBackgrounds) {
    fill_all_registers(background);
    engine().d2c.w = {};
    engine().d2c.w[row.index] = std::ldexp(1.0, 20 - row.frac_bits);
    RegisterTables expected = engine().registers;
    for (const EntryRow& entry : kEntries)
      word_at(expected, entry.address) = 0;
    word_at(expected, row.address) = 0x00100000;
    EXPECT_EQ(outcome_of(convert_d2c_params_to_register_elements), silent_success());
    EXPECT_EQ(differences_from(expected), "");
  }
}

TEST_P(D2cEntry, RawWordsComeBackAndForth) {
  constexpr std::uint32_t kSeed = 390003;
  const EntryRow& row = GetParam();
  Random random(kSeed);
  std::vector<std::uint32_t> raws = field_values({row.address, 31, 0}, false);
  for (int i = 0; i < 200; ++i)
    raws.push_back(random.word());
  for (const std::uint32_t raw : raws) {
    if (raw == 0xFFFFFFFF) continue;  // reads as an overflow, see below
    SCOPED_TRACE(testing::Message() << "seed " << kSeed << ", raw 0x" << std::hex << raw);
    word_at(row.address) = raw;
    ASSERT_EQ(convert_W_mat_register_to_float(), 0);
    ASSERT_EQ(matrix()[row.index], signed_number(raw, 32, row.frac_bits));
    word_at(row.address) = ~raw;
    ASSERT_EQ(convert_d2c_params_to_register_elements(), 0);
    ASSERT_EQ(word_at(row.address), raw);
  }
}

TEST_P(D2cEntry, OverflowNamesTheEntryAndWritesAllOnesAndTheOthers) {
  const EntryRow& row = GetParam();
  fill_all_registers(0);
  engine().d2c.w.fill(std::ldexp(1.0, -20));
  const double value = std::ldexp(1.0, 32 - row.frac_bits);
  engine().d2c.w[row.index] = value;
  EXPECT_EQ(outcome_of(convert_d2c_params_to_register_elements),
            prints_out(4096, overflow_lines(value, 32, row.frac_bits, row.name)));
  for (const EntryRow& entry : kEntries) {
    const std::uint32_t other = entry.frac_bits >= 20 ? 1U << (entry.frac_bits - 20) : 0;
    EXPECT_EQ(word_at(entry.address), entry.index == row.index ? 0xFFFFFFFF : other) << entry.name;
  }
  engine().d2c.w[row.index] = 0;
  EXPECT_EQ(outcome_of(convert_d2c_params_to_register_elements), silent_success());
  EXPECT_EQ(word_at(row.address), 0U);
}

TEST_P(D2cEntry, LegitimateAllOnesReadsAsOverflowWithoutAMessage) {
  const EntryRow& row = GetParam();
  engine().d2c.w[row.index] = -std::ldexp(1.0, -row.frac_bits);
  EXPECT_EQ(outcome_of(convert_d2c_params_to_register_elements), silent(4096));
  EXPECT_EQ(word_at(row.address), 0xFFFFFFFFU);
}

INSTANTIATE_TEST_SUITE_P(D2c, D2cEntry, testing::ValuesIn(kEntries),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_F(D2c, NegativeNumbersAreRoundedAndWrapped) {
  engine().d2c.w.fill(-0.00375);
  engine().d2c.w[8] = engine().d2c.w[9] = 0.00015625;  // 40 fraction bits leave room for +-1/256 alone
  EXPECT_EQ(outcome_of(convert_d2c_params_to_register_elements), silent_success());
  for (const EntryRow& row : kEntries)
    EXPECT_EQ(word_at(row.address), row.hand_word) << row.name;
}

TEST_F(D2c, PositiveNumbersReachIntoTheSignBit) {
  engine().d2c.w[0] = 7.5;
  EXPECT_EQ(outcome_of(convert_d2c_params_to_register_elements), silent_success());
  EXPECT_EQ(word_at(0x50001210), 0xF0000000U);
  convert_W_mat_register_to_float();
  EXPECT_EQ(matrix()[0], -0.5);
}

TEST_F(D2c, EveryOverflowIsReportedInOrder) {
  engine().d2c.w.fill(1e12);
  const Outcome outcome = outcome_of(convert_d2c_params_to_register_elements);
  EXPECT_EQ(outcome.code, 4096);
  EXPECT_EQ(outcome.err, "");
  std::string names;
  for (std::size_t at = 0; (at = outcome.out.find("overflow in ", at)) != std::string::npos;) {
    at += std::strlen("overflow in ");
    names += outcome.out.substr(at, outcome.out.find('\n', at) - at);
  }
  EXPECT_EQ(names, "W0 W1 W2 W3 W4 W5 W6 W7 W8 W9 W10 W11 ");
}

TEST_F(D2c, NumbersThatAreNoneOverflow) {
  for (const double value :
       {static_cast<double>(kNan), static_cast<double>(kInfinity), -static_cast<double>(kInfinity)}) {
    engine().d2c.w = {};
    engine().d2c.w[3] = value;
    const Outcome outcome = outcome_of(convert_d2c_params_to_register_elements);
    EXPECT_EQ(outcome.code, 4096);
    EXPECT_TRUE(outcome.out.ends_with("error code 01: value overflow in W3 \n"));
    EXPECT_EQ(word_at(0x5000121C), 0xFFFFFFFFU);
  }
}

TEST_F(D2c, FocalLengthOfZeroOverflowsAtTheConversion) {
  const float depth[]{0, 0, 320, 200};
  const float pose[]{1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0};
  EXPECT_EQ(outcome_of([&] { return set_d2c_calib_params(depth, depth, pose); }), silent_success());
  EXPECT_EQ(outcome_of(convert_d2c_params_to_register_elements).code, 4096);
}

TEST_F(D2c, StartUpTableDecodesToTheIdentityAndAnOffset) {
  EXPECT_EQ(outcome_of(convert_W_mat_register_to_float), silent_success());
  const double offset = 60012203;  // 0x0393B6AB
  EXPECT_EQ(matrix(), (Matrix{1, 0, 0, offset / 4096, 0, 1, 0, 0, 0, 0, 1, offset / 134217728}));
}

}  // namespace
}  // namespace vq3900::test
