#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

#include "support/capture.h"
#include "support/engine_fixture.h"
#include "support/fields.h"
#include "support/numbers.h"
#include "support/registers.h"

namespace vq3900::test {
namespace {

using Basic = EngineTest;

DeBasicParams_S record() {
  DeBasicParams_S params;
  EXPECT_EQ(de_copy_basic_params(&params), 0);
  return params;
}

template <typename Change>
void change_record(Change change) {
  DeBasicParams_S params = record();
  change(params);
  EXPECT_EQ(de_update_basic_params(&params), 0);
}

// --- record and getters ---

TEST_F(Basic, RecordIsZeroAtLoad) {
  EXPECT_EQ(bytes_of(record()), std::vector<unsigned char>(44));
}

TEST_F(Basic, WholeRecordTravelsWithItsPadding) {
  const auto in = counting_bytes<DeBasicParams_S>();
  auto out = filled_with<DeBasicParams_S>(0xEE);
  EXPECT_EQ(outcome_of([&] { return de_update_basic_params(&in); }), silent_success());
  EXPECT_EQ(outcome_of([&] { return de_copy_basic_params(&out); }), silent_success());
  EXPECT_EQ(bytes_of(out), bytes_of(in));
}

TEST_F(Basic, NullRecordIsRefusedAndChangesNothing) {
  const auto in = counting_bytes<DeBasicParams_S>();
  de_update_basic_params(&in);
  EXPECT_EQ(outcome_of([] { return de_update_basic_params(nullptr); }), silent(-2));
  EXPECT_EQ(outcome_of([] { return de_copy_basic_params(nullptr); }), silent(-2));
  EXPECT_EQ(bytes_of(record()), bytes_of(in));
}

TEST_F(Basic, GettersCopyTheFieldsOfTheRecord) {
  change_record([](DeBasicParams_S& params) {
    params.cam_mode = 0xFFFFFFFE;
    params.upsample_enable = 200;
    params.scale_mode = 0x80000003;
    params.ref_plane_dist = -1.5F;
    params.pbf = 0.25F;
  });
  std::uint32_t cam_mode = 0;
  std::uint32_t scale_mode = 0;
  float dist = 0;
  float pbf = 0;
  EXPECT_EQ(get_camera_mode(&cam_mode), 0);
  EXPECT_EQ(get_scale_mode(&scale_mode), 0);
  EXPECT_EQ(get_ref_plane_dist(&dist), 0);
  EXPECT_EQ(get_pbf(&pbf), 0);
  EXPECT_EQ(cam_mode, 0xFFFFFFFEU);
  EXPECT_EQ(scale_mode, 0x80000003U);
  EXPECT_EQ(dist, -1.5F);
  EXPECT_EQ(pbf, 0.25F);
  EXPECT_EQ(get_upsample(), 200);
}

TEST_F(Basic, GettersRefuseNull) {
  EXPECT_EQ(outcome_of([] { return get_camera_mode(nullptr); }), silent(-2));
  EXPECT_EQ(outcome_of([] { return get_scale_mode(nullptr); }), silent(-2));
  EXPECT_EQ(outcome_of([] { return get_ref_plane_dist(nullptr); }), silent(-2));
  EXPECT_EQ(outcome_of([] { return get_pbf(nullptr); }), silent(-2));
}

TEST_F(Basic, SettersTouchNoRegister) {
  const RegisterTables before = engine().registers;
  set_camera_mode(1, 1);
  set_upsample(1, 3);
  set_ref_plane_dist(900);
  set_input_ir_resolution(0x03200500);
  set_pbf_params(50, 600);
  const auto in = counting_bytes<DeBasicParams_S>();
  de_update_basic_params(&in);
  EXPECT_EQ(differences_from(before), "");
}

// --- setters ---

TEST_F(Basic, CameraModesZeroAndOneAreStoredWithTheDepthMode) {
  EXPECT_EQ(outcome_of([] { return set_camera_mode(1, 255); }), silent_success());
  EXPECT_EQ(record().cam_mode, 1U);
  EXPECT_EQ(record().depth_mode, 255);
  EXPECT_EQ(outcome_of([] { return set_camera_mode(0, 0); }), silent_success());
  EXPECT_EQ(record().cam_mode, 0U);
  EXPECT_EQ(record().depth_mode, 0);
}

TEST_F(Basic, RefusedCameraModeStillStoresTheDepthMode) {
  std::uint8_t depth_mode = 1;
  for (const std::int32_t mode : {2, -1, 256, std::numeric_limits<std::int32_t>::min()}) {
    SCOPED_TRACE(mode);
    EXPECT_EQ(outcome_of([&] { return set_camera_mode(mode, depth_mode); }), silent(-2));
    EXPECT_EQ(record().depth_mode, depth_mode);
    EXPECT_EQ(record().cam_mode, 0U);
    ++depth_mode;
  }
  set_camera_mode(1, 0);
  EXPECT_EQ(set_camera_mode(2, 7), -2);
  EXPECT_EQ(record().cam_mode, 1U);
}

struct UpsampleCase {
  const char* name;
  std::uint32_t cam_mode;
  std::uint8_t enable;
  std::uint32_t scale_mode;
  int main_en;
  int aux_en;
};

class BasicUpsample : public EngineTest, public testing::WithParamInterface<UpsampleCase> {};

TEST_P(BasicUpsample, SetsFlagsByCameraMode) {
  const UpsampleCase& c = GetParam();
  change_record([&](DeBasicParams_S& params) {
    params.cam_mode = c.cam_mode;
    params.upsample_enable = params.upsample_main_en = params.upsample_aux_en = 9;
    params.scale_mode = 77;
  });
  EXPECT_EQ(outcome_of([&] { return set_upsample(c.enable, c.scale_mode); }), silent_success());
  EXPECT_EQ(record().upsample_enable, c.enable);
  EXPECT_EQ(get_upsample(), c.enable);
  EXPECT_EQ(record().upsample_main_en, c.main_en);
  EXPECT_EQ(record().upsample_aux_en, c.aux_en);
  EXPECT_EQ(record().scale_mode, c.scale_mode);
}

INSTANTIATE_TEST_SUITE_P(Basic, BasicUpsample,
                         testing::Values(UpsampleCase{"OnInSingleCameraMode", 0, 1, 2, 1, 0},
                                         UpsampleCase{"OnInStereoMode", 1, 1, 2, 1, 1},
                                         UpsampleCase{"OffStoresTheScaleMode", 0, 0, 3, 0, 0},
                                         UpsampleCase{"OffInStereoMode", 1, 0, 3, 0, 0},
                                         UpsampleCase{"EnableIsStoredAsItIs", 1, 255, 0xFFFFFFFF, 1, 1},
                                         UpsampleCase{"OnlyModeOneIsStereo", 2, 1, 0, 1, 0},
                                         UpsampleCase{"RestoredModeIsNotCutToBits", 0x101, 1, 0, 1, 0}),
                         [](const auto& test) { return test.param.name; });

TEST_F(Basic, UpsampleKeepsTheCameraModeThatItFound) {
  set_upsample(1, 0);
  set_camera_mode(1, 0);
  EXPECT_EQ(record().upsample_aux_en, 0);
}

TEST_F(Basic, ReferencePlaneIsStoredUnchecked) {
  for (const float dist : {0.0F, -0.0F, -1000.5F, 1e-45F, kInfinity, kNan}) {
    EXPECT_EQ(outcome_of([&] { return set_ref_plane_dist(dist); }), silent_success());
    EXPECT_EQ(bits_of(record().ref_plane_dist), bits_of(dist));
  }
}

TEST_F(Basic, ResolutionIsWidthLowHeightHigh) {
  EXPECT_EQ(outcome_of([] { return set_input_ir_resolution(0x03200500); }), silent_success());
  EXPECT_EQ(record().in_ir_width, 1280);
  EXPECT_EQ(record().in_ir_height, 800);
  set_input_ir_resolution(0xFFFF0001);
  EXPECT_EQ(record().in_ir_width, 1);
  EXPECT_EQ(record().in_ir_height, 0xFFFF);
}

// --- baseline and focal length ---

TEST_F(Basic, BaselineOutOfRangeStoresNothing) {
  set_pbf_params(50, 600);
  const auto before = bytes_of(record());
  for (const float baseline : {0.5F, -0.5F, 0.0F, 0.99999994F, -0.99999994F, 500.00003F, -500.00003F, kInfinity}) {
    SCOPED_TRACE(baseline);
    EXPECT_EQ(outcome_of([&] { return set_pbf_params(baseline, 600); }), prints_out(-2, "check baseline!\n"));
    EXPECT_EQ(bytes_of(record()), before);
  }
  // The baseline is looked at first.
  EXPECT_EQ(outcome_of([] { return set_pbf_params(0.5F, 5); }), prints_out(-2, "check baseline!\n"));
}

TEST_F(Basic, BaselineLimitsAreAccepted) {
  for (const float baseline : {1.0F, -1.0F, 500.0F, -500.0F}) {
    EXPECT_EQ(outcome_of([&] { return set_pbf_params(baseline, 10); }), silent_success());
    EXPECT_EQ(record().baseline, baseline);
    EXPECT_EQ(record().focal_length_pix, 10.0F);
    EXPECT_EQ(record().pbf, static_cast<float>(1.0 / (10.0 * static_cast<double>(baseline))));
  }
}

TEST_F(Basic, NegativeBaselineKeepsItsSign) {
  EXPECT_EQ(outcome_of([] { return set_pbf_params(-50, 600); }), silent_success());
  EXPECT_EQ(record().baseline, -50.0F);
  EXPECT_EQ(record().pbf, static_cast<float>(-1.0 / 30000));
}

TEST_F(Basic, ShortFocalLengthKeepsTheNewBaselineAndTheOldFactor) {
  set_pbf_params(100, 1000);
  for (const float focal : {5.0F, 9.999999F, 0.0F, -600.0F, -kInfinity}) {
    SCOPED_TRACE(focal);
    EXPECT_EQ(outcome_of([&] { return set_pbf_params(50, focal); }),
              prints_err(-2, "focal_length_pix is incorrect! \n"));
    EXPECT_EQ(record().baseline, 50.0F);
    EXPECT_EQ(record().focal_length_pix, 1000.0F);
    EXPECT_EQ(record().pbf, static_cast<float>(1.0 / 100000));
  }
  float pbf = 0;
  EXPECT_EQ(get_pbf(&pbf), 0);
  EXPECT_EQ(pbf, static_cast<float>(1.0 / 100000));
  EXPECT_EQ(outcome_of([] { return set_pbf_params(50, 600); }), silent_success());
  EXPECT_EQ(record().pbf, static_cast<float>(1.0 / 30000));
}

TEST_F(Basic, NanPassesBothChecks) {
  EXPECT_EQ(outcome_of([] { return set_pbf_params(kNan, 600); }), silent_success());
  EXPECT_NE(record().baseline, record().baseline);
  EXPECT_NE(record().pbf, record().pbf);
  EXPECT_EQ(outcome_of([] { return set_pbf_params(50, kNan); }), silent_success());
  EXPECT_EQ(record().baseline, 50.0F);
  EXPECT_NE(record().focal_length_pix, record().focal_length_pix);
  EXPECT_EQ(outcome_of([] { return set_pbf_params(kNan, 5); }), prints_err(-2, "focal_length_pix is incorrect! \n"));
}

TEST_F(Basic, EndlessProductGivesAFactorOfZero) {
  EXPECT_EQ(set_pbf_params(500, 1e37F), 0);  // the product leaves single precision
  EXPECT_EQ(record().pbf, 0.0F);
  EXPECT_EQ(set_pbf_params(-50, kInfinity), 0);
  EXPECT_EQ(bits_of(record().pbf), bits_of(-0.0F));
}

TEST_F(Basic, FactorRoundsTheProductToSingleAndDividesInDouble) {
  constexpr std::uint32_t kSeed = 390001;
  Random random(kSeed);
  int differs_from_double_product = 0;
  int differs_from_single_quotient = 0;
  for (int i = 0; i < 500; ++i) {
    SCOPED_TRACE(testing::Message() << "seed " << kSeed << ", pair " << i);
    const float baseline = random.between(1, 500) * ((random.word() & 1U) != 0 ? 1.0F : -1.0F);
    const float focal = random.between(10, 3000);
    ASSERT_EQ(set_pbf_params(baseline, focal), 0);

    const float product = baseline * focal;
    const double quotient = 1.0 / static_cast<double>(product);
    ASSERT_EQ(bits_of(record().pbf), bits_of(static_cast<float>(quotient)));

    const double wide_product = static_cast<double>(baseline) * static_cast<double>(focal);
    if (static_cast<float>(1.0 / wide_product) != static_cast<float>(quotient)) ++differs_from_double_product;
    if (1.0F / product != static_cast<float>(quotient)) ++differs_from_single_quotient;
  }
  EXPECT_GT(differs_from_double_product, 50);  // the inputs tell the precisions of the product apart
  EXPECT_EQ(differs_from_single_quotient, 0);  // two roundings of a quotient of floats are as good as one
}

// --- record to registers ---

struct EncodeCase {
  const char* name;
  std::uint32_t background;
  std::uint32_t cam_mode;
  std::uint8_t enable, main_en, aux_en;
  std::uint32_t scale_mode;
  std::uint32_t word0, word1;
};

class BasicToRegisters : public EngineTest, public testing::WithParamInterface<EncodeCase> {};

TEST_P(BasicToRegisters, WritesTheTwoWordsAndNothingElse) {
  const EncodeCase& c = GetParam();
  fill_all_registers(c.background);
  RegisterTables expected = engine().registers;
  word_at(expected, 0x50001000) = c.word0;
  word_at(expected, 0x50001028) = c.word1;
  change_record([&](DeBasicParams_S& params) {
    params.cam_mode = c.cam_mode;
    params.upsample_enable = c.enable;
    params.upsample_main_en = c.main_en;
    params.upsample_aux_en = c.aux_en;
    params.scale_mode = c.scale_mode;
    params.depth_mode = 1;
  });
  EXPECT_EQ(outcome_of(convert_basic_config_to_registers), silent_success());
  EXPECT_EQ(differences_from(expected), "");
}

constexpr std::uint32_t kOnes = 0xFFFFFFFF;
constexpr std::uint32_t kMixed = 0xA5A5A5A5;

INSTANTIATE_TEST_SUITE_P(
    Basic, BasicToRegisters,
    testing::Values(EncodeCase{"ZeroRecordOnZeros", 0, 0, 0, 0, 0, 0, 0x00000000, 0x00000000},
                    EncodeCase{"ZeroRecordOnOnes", kOnes, 0, 0, 0, 0, 0, 0xFFFEEFCF, 0xFFFFBFFF},
                    EncodeCase{"ZeroRecordOnMixed", kMixed, 0, 0, 0, 0, 0, 0xA5A4A585, 0xA5A5A5A5},
                    EncodeCase{"SingleCamera", 0, 0, 1, 1, 1, 2, 0x00001020, 0x00004000},
                    EncodeCase{"SingleCameraOnOnes", kOnes, 0, 1, 1, 0, 1, 0xFFFEFFDF, 0xFFFFFFFF},
                    EncodeCase{"Stereo", 0, 1, 1, 1, 1, 2, 0x00013020, 0x0000C000},
                    EncodeCase{"StereoOnMixed", kMixed, 1, 1, 1, 1, 3, 0xA5A5B5B5, 0xA5A5E5A5},
                    EncodeCase{"StereoAllOffOnOnes", kOnes, 1, 0, 0, 0, 0, 0xFFFFCFCF, 0xFFFF3FFF},
                    EncodeCase{"StereoMainOnly", 0, 1, 0, 1, 0, 0, 0x00012000, 0x00004000},
                    EncodeCase{"StereoAuxOnly", 0, 1, 0, 0, 1, 0, 0x00010000, 0x00008000},
                    EncodeCase{"StereoEnableOnly", 0, 1, 1, 0, 0, 0, 0x00011000, 0x00000000},
                    EncodeCase{"ModeTwoHasNoLowBit", 0, 2, 1, 1, 1, 0, 0x00001000, 0x00004000},
                    EncodeCase{"ModeThreeWritesItsBitButNoStereoFields", 0, 3, 1, 1, 1, 0, 0x00011000, 0x00004000},
                    EncodeCase{"ModeThreeKeepsStereoBits", kOnes, 3, 0, 0, 0, 0, 0xFFFFEFCF, 0xFFFFBFFF},
                    EncodeCase{"ValuesAreCutToTheirFields", 0, 1, 2, 6, 0xFE, 0xFFFFFFF4, 0x00010000, 0x00000000},
                    EncodeCase{"CutValuesKeepTheirLowBits", 0, 1, 3, 0xFF, 5, 0xFFFFFFF7, 0x00013030, 0x0000C000}),
    [](const auto& test) { return test.param.name; });

TEST_F(Basic, StereoBitsStayWhenTheModeGoesBackToSingleCamera) {
  set_camera_mode(1, 0);
  set_upsample(1, 0);
  convert_basic_config_to_registers();
  set_camera_mode(0, 0);
  set_upsample(0, 0);
  convert_basic_config_to_registers();
  EXPECT_EQ(word_at(0x50001000), 0x00002000U);
  EXPECT_EQ(word_at(0x50001028), 0x00008000U);
}

// --- registers to record ---

TEST_F(Basic, StartUpTableGivesCameraModeZero) {
  set_camera_mode(1, 0);
  EXPECT_EQ(outcome_of(convert_basic_register_to_params), silent_success());
  EXPECT_EQ(record().cam_mode, 0U);
}

TEST_F(Basic, CameraModeComesBackFromTheDepthModeBit) {
  fill_all_registers(0);
  word_at(0x50001000) = 0x00010000;  // the bit that the camera mode was written to
  convert_basic_register_to_params();
  EXPECT_EQ(record().cam_mode, 0U);
  word_at(0x50001200) = 0x80000000;
  word_at(0x50001000) = 0;
  convert_basic_register_to_params();
  EXPECT_EQ(record().cam_mode, 1U);
  fill_all_registers(0xFFFFFFFF);
  word_at(0x50001200) = 0x7FFFFFFF;
  convert_basic_register_to_params();
  EXPECT_EQ(record().cam_mode, 0U);
}

TEST_F(Basic, CameraModeAfterAReadBackIsTheDepthModeProgrammed) {
  set_camera_mode(0, 1);
  convert_basic_config_to_registers();
  convert_d2c_ctrl_to_register_elements();
  convert_basic_register_to_params();
  EXPECT_EQ(record().cam_mode, 1U);
  EXPECT_EQ(record().depth_mode, 1);
}

TEST_F(Basic, LastReadBackDecidesTheCameraMode) {
  word_at(0x50001200) = 0x80000055;
  convert_basic_register_to_params();
  convert_d2c_register_to_params_cfg();
  EXPECT_EQ(record().cam_mode, 0x55U);
  convert_basic_register_to_params();
  EXPECT_EQ(record().cam_mode, 1U);
}

constexpr FieldRow<DeBasicParams_S> kReadBack[] = {
    field_row<&DeBasicParams_S::cam_mode>("cam_mode", 0x50001200, 31, 31),
    field_row<&DeBasicParams_S::scale_mode>("scale_mode", 0x50001000, 5, 4),
    field_row<&DeBasicParams_S::upsample_enable>("upsample_enable", 0x50001000, 12, 12),
    field_row<&DeBasicParams_S::upsample_main_en>("upsample_main_en", 0x50001028, 14, 14),
    field_row<&DeBasicParams_S::upsample_aux_en>("upsample_aux_en", 0x50001028, 15, 15),
};

TEST_F(Basic, EveryFieldComesBackFromItsBits) {
  expect_fields_come_back<DeBasicParams_S>(
      kReadBack, engine().basic, filled_with<DeBasicParams_S>(0x3C), convert_basic_register_to_params);
}

TEST_F(Basic, ReadBackLeavesWhatTheRegistersDoNotHold) {
  fill_all_registers(0xFFFFFFFF);
  auto params = counting_bytes<DeBasicParams_S>();
  params.baseline = 50;
  params.focal_length_pix = 600;
  params.ref_plane_dist = 700;
  de_update_basic_params(&params);
  convert_basic_register_to_params();
  auto expected = params;
  expected.cam_mode = 1;
  expected.scale_mode = 3;
  expected.upsample_enable = expected.upsample_main_en = expected.upsample_aux_en = 1;
  expected.pbf = -static_cast<float>(std::ldexp(1.0, -40));  // all ones is -1 in two's complement
  EXPECT_EQ(bytes_of(record()), bytes_of(expected));
}

struct DepthCase {
  const char* name;
  std::uint32_t raw;
  float ref_plane_dist;
  float pbf;
};

class BasicDepthConstants : public EngineTest, public testing::WithParamInterface<DepthCase> {};

TEST_P(BasicDepthConstants, ComeBackInSinglePrecision) {
  const DepthCase& c = GetParam();
  word_at(0x50001204) = c.raw;
  word_at(0x50001208) = c.raw;
  EXPECT_EQ(outcome_of(convert_basic_register_to_params), silent_success());
  EXPECT_EQ(bits_of(record().ref_plane_dist), bits_of(c.ref_plane_dist));
  EXPECT_EQ(bits_of(record().pbf), bits_of(c.pbf));
}

INSTANTIATE_TEST_SUITE_P(
    Basic, BasicDepthConstants,
    testing::Values(DepthCase{"OneMetre", 0x10624DD3, 1000.0F, 274877907.0F / 1099511627776.0F},
                    DepthCase{"MinusOneMetre", 0xEF9DB22D, -1000.0F, -0.00025F},
                    DepthCase{"ZeroHasNoDistance", 0, kInfinity, 0.0F},
                    DepthCase{"LargestPositive", 0x7FFFFFFF, 128.0F, 1.0F / 512},
                    DepthCase{"MostNegative", 0x80000000, -128.0F, -1.0F / 512},
                    DepthCase{"SmallestPositive", 1, 274877906944.0F, 1.0F / 1099511627776.0F},
                    DepthCase{"SmallestNegative", 0xFFFFFFFF, -274877906944.0F, -1.0F / 1099511627776.0F}),
    [](const auto& test) { return test.param.name; });

TEST_F(Basic, ReferencePlaneIsReadInCameraModeZeroOnlyTheFactorAlways) {
  set_camera_mode(0, 0);
  set_ref_plane_dist(5);
  word_at(0x50001204) = 0x10624DD3;
  word_at(0x50001208) = 0x00800000;  // 2^23 / 2^40
  word_at(0x50001200) = 0x80000000;  // the mode just read decides, not the one before
  convert_basic_register_to_params();
  EXPECT_EQ(record().ref_plane_dist, 5.0F);
  EXPECT_EQ(record().pbf, 1.0F / 131072);
  word_at(0x50001200) = 0;
  convert_basic_register_to_params();
  EXPECT_EQ(record().ref_plane_dist, 1000.0F);
}

TEST_F(Basic, ReadBackTouchesNoRegister) {
  fill_all_registers(0xA5A5A5A5);
  const RegisterTables before = engine().registers;
  convert_basic_register_to_params();
  EXPECT_EQ(differences_from(before), "");
}

}  // namespace
}  // namespace vq3900::test
