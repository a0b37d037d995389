#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <limits>
#include <vector>

#include "support/capture.h"
#include "support/engine_fixture.h"
#include "support/fields.h"
#include "support/registers.h"

namespace vq3900::test {
namespace {

using Record = DeExtendChopParams_S;
using Four = std::array<std::int32_t, 4>;

constexpr const char* kNoImage = "missing setting prefilter imgage size,namely ir resolution\n";
constexpr std::uint32_t kExtendedSize = 0x50001070;
constexpr std::uint32_t kOutputArea = 0x50001074;

Record record() {
  Record out;
  EXPECT_EQ(de_copy_extend_chop_params(&out), 0);
  return out;
}

std::int32_t set(const Four& ref, const Four& tar, const Four& chop) {
  return set_extend_chop_params(ref.data(), tar.data(), chop.data());
}

class ExtendChop : public EngineTest {
 protected:
  static void set_image(std::uint32_t width, std::uint32_t height) {
    set_input_ir_resolution(width | height << 16);
    EXPECT_EQ(set_prefilter_size_speckleTh(5, 0), 0);
  }

  // The extended size as the register gets it.
  static std::uint32_t extended_size() {
    convert_extend_chop_float_to_registers();
    return word_at(kExtendedSize);
  }
};

// --- record and getters ---

TEST_F(ExtendChop, RecordIsZeroAtLoad) {
  EXPECT_EQ(bytes_of(record()), std::vector<unsigned char>(48));
}

TEST_F(ExtendChop, RecordTravelsWhole) {
  const auto in = counting_bytes<Record>();
  auto out = filled_with<Record>(0xEE);
  EXPECT_EQ(outcome_of([&] { return de_update_extend_chop_params(&in); }), silent_success());
  EXPECT_EQ(outcome_of([&] { return de_copy_extend_chop_params(&out); }), silent_success());
  EXPECT_EQ(bytes_of(out), bytes_of(in));
}

TEST_F(ExtendChop, NullPointersAreRefusedAndChangeNothing) {
  set_image(640, 480);
  const auto in = counting_bytes<Record>();
  de_update_extend_chop_params(&in);
  const Four some{1, 2, 3, 4};
  Four out{9, 9, 9, 9};
  EXPECT_EQ(outcome_of([] { return de_update_extend_chop_params(nullptr); }), silent(-2));
  EXPECT_EQ(outcome_of([] { return de_copy_extend_chop_params(nullptr); }), silent(-2));
  EXPECT_EQ(outcome_of([&] { return set_extend_chop_params(nullptr, some.data(), some.data()); }), silent(-2));
  EXPECT_EQ(outcome_of([&] { return set_extend_chop_params(some.data(), nullptr, some.data()); }), silent(-2));
  EXPECT_EQ(outcome_of([&] { return set_extend_chop_params(some.data(), some.data(), nullptr); }), silent(-2));
  EXPECT_EQ(outcome_of([&] { return get_extend_chop_params(nullptr, out.data()); }), silent(-2));
  EXPECT_EQ(outcome_of([&] { return get_extend_chop_params(out.data(), nullptr); }), silent(-2));
  EXPECT_EQ(bytes_of(record()), bytes_of(in));
  EXPECT_EQ(out, (Four{9, 9, 9, 9}));
  EXPECT_EQ(extended_size(), 0U);
}

TEST_F(ExtendChop, SetterStoresEachGroupInItsPlace) {
  set_image(640, 480);
  EXPECT_EQ(outcome_of([] { return set({1, 2, 3, 4}, {-5, 6, 7, 8}, {9, 10, 11, 0x7FFFFFFF}); }), silent_success());
  const Record expected{{1, 2, 3, 4}, {9, 10, 11, 0x7FFFFFFF}, {-5, 6, 7, 8}};
  EXPECT_EQ(bytes_of(record()), bytes_of(expected));
}

TEST_F(ExtendChop, GetterAnswersTargetAndChop) {
  const Record in{{1, 2, 3, 4}, {5, 6, 7, 8}, {9, 10, 11, 12}};
  de_update_extend_chop_params(&in);
  Four tar{};
  Four chop{};
  EXPECT_EQ(outcome_of([&] { return get_extend_chop_params(tar.data(), chop.data()); }), silent_success());
  EXPECT_EQ(tar, (Four{9, 10, 11, 12}));
  EXPECT_EQ(chop, (Four{5, 6, 7, 8}));
}

// --- extended size ---

TEST_F(ExtendChop, WithoutAnImageTheGroupsAreStoredAndTheSizeIsRefused) {
  EXPECT_EQ(outcome_of([] { return set({1, 2, 3, 4}, {5, 6, 7, 8}, {9, 10, 11, 12}); }), prints_err(-4, kNoImage));
  Four tar{};
  Four chop{};
  get_extend_chop_params(tar.data(), chop.data());
  EXPECT_EQ(tar, (Four{5, 6, 7, 8}));
  EXPECT_EQ(chop, (Four{9, 10, 11, 12}));
  EXPECT_EQ(record().extend_ref[0], 1);
  EXPECT_EQ(extended_size(), 0U);
}

TEST_F(ExtendChop, RefusalKeepsTheEarlierExtendedSize) {
  set_image(640, 480);
  EXPECT_EQ(set({}, {16, 16, 8, 8}, {}), 0);
  set_image(0, 0);
  EXPECT_EQ(outcome_of([] { return set({}, {100, 100, 100, 100}, {}); }), prints_err(-4, kNoImage));
  EXPECT_EQ(extended_size(), 672U << 12 | 496U);
  set_image(320, 240);
  EXPECT_EQ(outcome_of([] { return set({}, {1, 1, 1, 1}, {}); }), silent_success());
  EXPECT_EQ(extended_size(), 322U << 12 | 242U);
}

TEST_F(ExtendChop, OneSideOfTheImageIsEnough) {
  set_image(0, 480);
  EXPECT_EQ(outcome_of([] { return set({}, {1, 2, 3, 4}, {}); }), silent_success());
  EXPECT_EQ(extended_size(), 3U << 12 | 487U);
  set_image(640, 0);
  EXPECT_EQ(outcome_of([] { return set({}, {1, 2, 3, 4}, {}); }), silent_success());
  EXPECT_EQ(extended_size(), 643U << 12 | 7U);
}

TEST_F(ExtendChop, ImageIsThatOfThePrefilterNotTheResolution) {
  set_input_ir_resolution(640 | 480U << 16);
  EXPECT_EQ(outcome_of([] { return set({}, {}, {}); }), prints_err(-4, kNoImage));
  set_upsample(1, 0);
  set_image(640, 480);
  EXPECT_EQ(set({}, {16, 16, 8, 8}, {}), 0);
  EXPECT_EQ(extended_size(), 1312U << 12 | 976U);
}

TEST_F(ExtendChop, ExtensionsWrapIn16Bits) {
  set_image(10, 20);
  EXPECT_EQ(set({}, {-11, 0, 0x10000, -21}, {}), 0);
  EXPECT_EQ(engine().extend_chop.extended_width, 0xFFFF);
  EXPECT_EQ(engine().extend_chop.extended_height, 0xFFFF);
  EXPECT_EQ(extended_size(), 0x00FFFFFFU);
  constexpr std::int32_t kMax = std::numeric_limits<std::int32_t>::max();
  constexpr std::int32_t kMin = std::numeric_limits<std::int32_t>::min();
  EXPECT_EQ(set({}, {kMax, kMax, kMin, kMin}, {}), 0);  // -2 and 0 in the low 16 bits
  EXPECT_EQ(engine().extend_chop.extended_width, 8);
  EXPECT_EQ(engine().extend_chop.extended_height, 20);
}

TEST_F(ExtendChop, RestoredRecordKeepsTheExtendedSizeOfTheLastSetter) {
  set_image(640, 480);
  set({}, {16, 16, 8, 8}, {});
  const Record in{{}, {}, {100, 100, 100, 100}};
  de_update_extend_chop_params(&in);
  EXPECT_EQ(extended_size(), 672U << 12 | 496U);
}

TEST_F(ExtendChop, SetterTouchesNoRegister) {
  const RegisterTables before = engine().registers;
  set_image(640, 480);
  EXPECT_EQ(set({1, 2, 3, 4}, {5, 6, 7, 8}, {9, 10, 11, 12}), 0);
  EXPECT_EQ(differences_from(before), "");
}

// --- fields ---

template <auto Group, std::size_t Index>
constexpr FieldRow<ExtendChopState> param(const char* name, std::uint32_t address, unsigned high, unsigned low) {
  return {name,
          {address, high, low},
          [](ExtendChopState& state, std::uint32_t value) {
            (state.params.*Group)[Index] = static_cast<std::int32_t>(value);
          },
          [](const ExtendChopState& state) { return static_cast<std::uint32_t>((state.params.*Group)[Index]); }};
}

constexpr FieldRow<ExtendChopState> kPairs[] = {
    param<&Record::extend_ref, 0>("extend_ref[0]", 0x50001078, 27, 16),
    param<&Record::extend_ref, 1>("extend_ref[1]", 0x50001078, 11, 0),
    param<&Record::extend_ref, 2>("extend_ref[2]", 0x5000107C, 27, 16),
    param<&Record::extend_ref, 3>("extend_ref[3]", 0x5000107C, 11, 0),
    param<&Record::chop, 0>("chop[0]", 0x500010C8, 27, 16),
    param<&Record::chop, 1>("chop[1]", 0x500010C8, 11, 0),
    param<&Record::chop, 2>("chop[2]", 0x500010CC, 27, 16),
    param<&Record::chop, 3>("chop[3]", 0x500010CC, 11, 0),
    param<&Record::extend_tar, 0>("extend_tar[0]", 0x500012D4, 27, 16),
    param<&Record::extend_tar, 1>("extend_tar[1]", 0x500012D4, 11, 0),
};

constexpr SetBits kSetBits[] = {{{kExtendedSize, 23, 12}, 0}, {{kExtendedSize, 11, 0}, 0}, {{kOutputArea, 31, 0}, 0}};

TEST_F(ExtendChop, ConversionKeepsTheBitsItDoesNotOwn) {
  expect_other_bits_survive<ExtendChopState>(
      kPairs, kSetBits, engine().extend_chop, {}, convert_extend_chop_float_to_registers);
}

TEST_F(ExtendChop, EveryFieldLandsInItsBits) {
  // One chop value leaves the other side of the area 0, so the area stays 0.
  expect_fields_land_in_their_bits<ExtendChopState>(
      kPairs, engine().extend_chop, {}, convert_extend_chop_float_to_registers);
}

TEST_F(ExtendChop, EveryFieldComesBackUnsigned) {
  ExtendChopState quiet;
  quiet.params = filled_with<Record>(0x3C);
  expect_fields_come_back<ExtendChopState>(kPairs, engine().extend_chop, quiet, convert_extend_chop_registers_to_float);
  set_image(640, 480);
  EXPECT_EQ(set({-1, 0, 0, 0}, {}, {0, 0, 0, -2}), 0);
  convert_extend_chop_float_to_registers();
  convert_extend_chop_registers_to_float();
  EXPECT_EQ(record().extend_ref[0], 4095);
  EXPECT_EQ(record().chop[3], 4094);
}

TEST_F(ExtendChop, WordsWorkedOutByHand) {
  set_image(640, 480);
  EXPECT_EQ(set({1, 0x234, 0x567, 0x89A}, {16, 16, 8, 8}, {4, 4, 2, 2}), 0);
  EXPECT_EQ(outcome_of(convert_extend_chop_float_to_registers), silent_success());
  constexpr std::uint32_t kExpected[][2] = {{kExtendedSize, 0x002A01F0},
                                            {kOutputArea, 326688},
                                            {0x50001078, 0x00010234},
                                            {0x5000107C, 0x0567089A},
                                            {0x500010C8, 0x00040004},
                                            {0x500010CC, 0x00020002},
                                            {0x500012D4, 0x00100010}};
  for (const auto& [address, word] : kExpected)
    EXPECT_EQ(word_at(address), word) << std::hex << address;
}

struct AreaCase {
  const char* name;
  std::uint16_t width, height;
  Four chop;
  std::uint32_t area;
};

class ExtendChopArea : public EngineTest, public testing::WithParamInterface<AreaCase> {};

TEST_P(ExtendChopArea, IsFormedIn32BitArithmetic) {
  const AreaCase& c = GetParam();
  fill_all_registers(0xA5A5A5A5);
  engine().extend_chop.extended_width = c.width;
  engine().extend_chop.extended_height = c.height;
  for (std::size_t i = 0; i < 4; ++i)
    engine().extend_chop.params.chop[i] = c.chop[i];
  EXPECT_EQ(outcome_of(convert_extend_chop_float_to_registers), silent_success());
  EXPECT_EQ(word_at(kOutputArea), c.area);
}

constexpr std::int32_t kMax = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kMin = std::numeric_limits<std::int32_t>::min();

INSTANTIATE_TEST_SUITE_P(ExtendChop, ExtendChopArea,
                         testing::Values(AreaCase{"BothSidesChopped", 672, 496, {4, 4, 2, 2}, 326688},
                                         AreaCase{"WidthTakesTheFirstTwo", 100, 10, {7, 3, 0, 0}, 900},
                                         AreaCase{"HeightTakesTheLastTwo", 100, 10, {0, 0, 4, 1}, 500},
                                         AreaCase{"NegativeChopWidens", 10, 10, {-5, 0, 0, -1}, 165},
                                         AreaCase{"OneNegativeSideWraps", 1, 3, {2, 0, 0, 0}, 0xFFFFFFFD},
                                         AreaCase{"TwoNegativeSidesMultiply", 1, 1, {2, 1, 3, 1}, 6},
                                         AreaCase{"LargestImage", 0xFFFF, 0xFFFF, {0, 0, 0, 0}, 0xFFFE0001},
                                         AreaCase{"ProductWraps", 0, 0, {-0x10000, 0, -0x10001, 0}, 0x00010000},
                                         AreaCase{"SumsWrap", 0, 1, {kMin, kMin, 0, 0}, 0},
                                         AreaCase{"ExtremesWrap", 0, 1, {kMax, kMax, 0, 0}, 2}),
                         [](const auto& test) { return test.param.name; });

TEST_F(ExtendChop, ExtendedSizeIsWholeInTheAreaAndCutInItsField) {
  engine().extend_chop.extended_width = 0x1001;
  engine().extend_chop.extended_height = 0x2003;
  convert_extend_chop_float_to_registers();
  EXPECT_EQ(word_at(kExtendedSize), 0x00001003U);
  EXPECT_EQ(word_at(kOutputArea), 0x1001U * 0x2003U);
}

TEST_F(ExtendChop, LastTargetValuesAndExtendedSizeAreNotReadBack) {
  set_image(640, 480);
  set({}, {16, 16, 8, 9}, {});
  fill_all_registers(0xFFFFFFFF);
  const RegisterTables before = engine().registers;
  EXPECT_EQ(outcome_of(convert_extend_chop_registers_to_float), silent_success());
  EXPECT_EQ(differences_from(before), "");
  const Record expected{{4095, 4095, 4095, 4095}, {4095, 4095, 4095, 4095}, {4095, 4095, 8, 9}};
  EXPECT_EQ(bytes_of(record()), bytes_of(expected));
  EXPECT_EQ(extended_size(), 0xFF000000U | 672U << 12 | 497U);
}

}  // namespace
}  // namespace vq3900::test
