#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "support/capture.h"
#include "support/numbers.h"
#include "support/update_images.h"

namespace vq3900::test {
namespace {

using UpdateBaseline = UpdateTest;
using UpdateMultiBaseline = UpdateTest;
using UpdateMultiFb = UpdateTest;

// Writes the values into a D2D record of an image or section.
void put_d2d(ImageBytes& bytes, const FlashSection& section, std::size_t index, float baseline, float f,
             std::uint32_t word) {
  const std::size_t at = record_offset(section, index);
  put_float(bytes, at + kD2dBaseline, baseline);
  put_float(bytes, at + kD2dFocal, f);
  put_word(bytes, at + kD2dValue, word);
}

void put_d2c(ImageBytes& image, std::size_t index, float f) {
  put_float(image, record_offset(flash::kD2c, index) + kD2cFocal, f);
  put_float(image, record_offset(flash::kD2c, index) + kD2cFocal + 4, f);
}

// --- update_baseline_de

TEST_F(UpdateBaseline, EveryRecordGetsBaselineAndItsFactor) {
  give(d2d_section_of(update_image({{-50, 500}, {1, 500}, {7.5F, 612.25F}})));
  EXPECT_EQ(baseline(-55),
            prints_out(0, "Original baseline: -50.000000\nOriginal baseline: 1.000000\nOriginal baseline: 7.500000\n"));
  ImageBytes expected = bytes_of_file(source());
  put_d2d(expected, d2d_alone(), 0, -55, 500, 0xFD9DEB60);
  put_d2d(expected, d2d_alone(), 1, -55, 500, 0xFD9DEB60);
  put_d2d(expected, d2d_alone(), 2, -55, 612.25F, 0xFE0DC58C);
  expect_result(expected, {d2d_alone()});
}

struct FactorRow {
  float baseline, f;
  std::uint32_t word;
};

// Worked out as float(1 / double(float(baseline * f))) * 2^40.
TEST_F(UpdateBaseline, FactorIsTheReciprocalOfTheProduct) {
  constexpr FactorRow kRows[] = {{-50, 500, 0xFD60E950},
                                 {-50.25F, 501.5F, 0xFD663F54},
                                 {40, 500, 0x0346DC5C},
                                 {60, 500, 0x022F3D94},
                                 {-110, 458.654F, 0xFEB37620},
                                 {75.5F, 612.25F, 0x016AF2A2},
                                 {1, 256.5F, 0xFF804000}};
  for (const FactorRow& row : kRows) {
    SCOPED_TRACE(testing::Message() << row.baseline << " * " << row.f);
    give(d2d_section_of(update_image({{1000, row.f}})));
    EXPECT_EQ(baseline(row.baseline), prints_out(0, "Original baseline: 1000.000000\n"));
    EXPECT_EQ(word_at(result(), 60 + kD2dValue), row.word);
    EXPECT_EQ(word_at(result(), 60 + kD2dBaseline), bits_of(row.baseline));
  }
}

TEST_F(UpdateBaseline, FactorGoesUnderTheMaskOfTheRecord) {
  give(update_image({{1, 500, 0x0000FFFF, 0xABCD1234}, {1, 500, 0x00FFFF00, 0xABCD1234}, {1, 500, 0, 0xABCD1234}}));
  EXPECT_EQ(baseline(40).code, 0);
  const ImageBytes section = result();
  EXPECT_EQ(word_at(section, 60 + kD2dValue), 0xABCDDC5CU);  // 0x0346DC5C
  EXPECT_EQ(word_at(section, 144 + kD2dValue), 0xABDC5C34U);
  EXPECT_EQ(word_at(section, 228 + kD2dValue), 0xABCD1234U);
}

TEST_F(UpdateBaseline, OneRecordAloneWhenItsIndexIsGiven) {
  const ImageBytes image = update_image(three_records());
  give(image);
  EXPECT_EQ(baseline(-55, 0), prints_out(0, "Original baseline: -50.000000\n"));
  ImageBytes expected = d2d_section_of(image);
  put_d2d(expected, d2d_alone(), 0, -55, 500, 0xFD9DEB60);
  expect_result(expected, {d2d_alone()});
  EXPECT_EQ(baseline(-50, 2), prints_out(0, "Original baseline: -60.000000\n"));
  expected = d2d_section_of(image);
  put_d2d(expected, d2d_alone(), 2, -50, 640, 0xFDF3B644);
  expect_result(expected, {d2d_alone()});
}

TEST_F(UpdateBaseline, IndexBeyondTheRecordsChangesTimeAndChecksumAlone) {
  const ImageBytes image = update_image(three_records());
  give(image);
  for (const int index : {3, 5, 2147483647}) {
    EXPECT_EQ(baseline(-55, index), silent_success());
    expect_result(d2d_section_of(image), {d2d_alone()});
  }
}

TEST_F(UpdateBaseline, AnyNegativeIndexMeansAllRecords) {
  give(update_image(three_records()));
  const Outcome all = baseline(-55, -1);
  const ImageBytes section = result();
  EXPECT_EQ(baseline(-55, -2147483647 - 1), all);
  EXPECT_EQ(part(result(), 60, 3 * 84), part(section, 60, 3 * 84));
}

TEST_F(UpdateBaseline, WritesTheSectionAloneFromImagesOfBothSizes) {
  for (const std::size_t size : {kImageSize, kImageWithAlignmentSize}) {
    const ImageBytes image = update_image(three_records(), {500}, size);
    give(image);
    EXPECT_EQ(baseline(-55, 7), silent_success());
    EXPECT_EQ(result().size(), 4096U);
    expect_result(d2d_section_of(image), {d2d_alone()});
  }
}

TEST_F(UpdateBaseline, SectionWithoutRecordsIsStampedAlone) {
  const ImageBytes image = update_image({});
  give(image);
  EXPECT_EQ(baseline(-55), silent_success());
  expect_result(d2d_section_of(image), {d2d_alone()});
}

TEST_F(UpdateBaseline, WhatStandsBehindTheRecordsIsFilled) {
  ImageBytes image = update_image(three_records());
  const ImageBytes clean = d2d_section_of(image);
  put_pattern(image, 16384 + 60 + 3 * 84, 4096 - 60 - 3 * 84);
  give(image);
  EXPECT_EQ(baseline(-55, 5), silent_success());
  expect_result(clean, {d2d_alone()});
}

TEST_F(UpdateBaseline, LongerRecordsKeepWhatFollows) {
  ImageBytes image = update_image({});
  constexpr FlashSection kLonger{"d2d", 0, 4096, 0x4644730A, 0x46446107, 0xB4000, 100};
  put_word(image, 16384 + 52, 2);
  put_word(image, 16384 + 56, 100);
  put_word(image, 16384 + 8, 260);
  put_pattern(image, 16384 + 60, 200);
  put_float(image, 16384 + 160 + kD2dFocal, 500);
  put_float(image, 16384 + 160 + kD2dBaseline, 1);
  put_word(image, 16384 + 160 + kD2dMask, 0xFFFFFFFF);
  give(image);
  EXPECT_EQ(baseline(-55, 1), prints_out(0, "Original baseline: 1.000000\n"));
  ImageBytes expected = d2d_section_of(image);
  put_d2d(expected, kLonger, 1, -55, 500, 0xFD9DEB60);
  expect_result(expected, {kLonger});
}

TEST_F(UpdateBaseline, OverflowOfALaterRecordWritesNothing) {
  give(update_image({{-50, 500}, {7, 0.25F}}));  // 1 / 125 is too large for 32 bits of which 40 are fraction bits
  EXPECT_EQ(baseline(500),
            prints_out(4096,
                       "Original baseline: -50.000000\nOriginal baseline: 7.000000\n" +
                           overflow_lines(static_cast<double>(0.008F), 32, 40, "PBF") + kNotFixed));
  expect_nothing_written();
}

TEST_F(UpdateBaseline, OverflowIsTheCode4096) {
  give(update_image({{-50, 500}}));
  EXPECT_EQ(baseline(0.5F),
            prints_out(4096,
                       "Original baseline: -50.000000\n" + overflow_lines(static_cast<double>(0.004F), 32, 40, "PBF") +
                           kNotFixed));
  expect_nothing_written();
}

TEST_F(UpdateBaseline, FactorOfAllOnesReadsAsAnOverflow) {
  give(update_image({{-50, 1024}}));  // 1 / (-2^30 * 2^10) encodes to 0xFFFFFFFF
  EXPECT_EQ(baseline(-1073741824.0F), prints_out(4096, std::string("Original baseline: -50.000000\n") + kNotFixed));
  expect_nothing_written();
}

TEST_F(UpdateBaseline, ImpossibleBaselinesOverflow) {
  give(update_image({{-50, 500}}));
  for (const float value : {0.0F, -0.0F, kNan}) {
    const Outcome outcome = baseline(value);
    EXPECT_EQ(outcome.code, 4096) << value;
    EXPECT_TRUE(outcome.out.ends_with("error code 01: value overflow in PBF \nConvert to fixed point error\n"));
    expect_nothing_written();
  }
  EXPECT_EQ(baseline(kInfinity).code, 0);  // 1 / infinity is 0
  EXPECT_EQ(word_at(result(), 60 + kD2dValue), 0U);
}

TEST_F(UpdateBaseline, GoodCallAfterAFailureWorks) {
  give(update_image({{-50, 500}}));
  EXPECT_EQ(baseline(0.5F).code, 4096);
  EXPECT_EQ(baseline(-55), prints_out(0, "Original baseline: -50.000000\n"));
  EXPECT_EQ(word_at(result(), 60 + kD2dValue), 0xFD9DEB60U);
}

// --- update_multi_baseline_de

TEST_F(UpdateMultiBaseline, FirstPairLessThanOneAwayGivesTheBaseline) {
  const ImageBytes image = update_image({{-50, 500}});
  give(image);
  EXPECT_EQ(multi_baseline({499.2F, -55, 500.5F, -60}), prints_out(0, original(-50, 500) + updated(-55, 500)));
  ImageBytes expected = d2d_section_of(image);
  put_d2d(expected, d2d_alone(), 0, -55, 500, 0xFD9DEB60);  // f stays
  expect_result(expected, {d2d_alone()});
}

TEST_F(UpdateMultiBaseline, EveryRecordTakesItsOwnPair) {
  const ImageBytes image = update_image(three_records());
  give(d2d_section_of(image));
  EXPECT_EQ(multi_baseline({640.5F, -50, 502, -50.25F, 500, 40}),
            prints_out(0,
                       original(-50, 500) + updated(40, 500) + original(-50.25F, 501.5F) + updated(-50.25F, 501.5F) +
                           original(-60, 640) + updated(-50, 640)));
  ImageBytes expected = d2d_section_of(image);
  put_d2d(expected, d2d_alone(), 0, 40, 500, 0x0346DC5C);
  put_d2d(expected, d2d_alone(), 1, -50.25F, 501.5F, 0xFD663F54);
  put_d2d(expected, d2d_alone(), 2, -50, 640, 0xFDF3B644);
  expect_result(expected, {d2d_alone()});
}

struct ToleranceRow {
  float record_f, pair_f;
  bool matches;
};

TEST_F(UpdateMultiBaseline, ToleranceOfOneIsOpen) {
  constexpr ToleranceRow kRows[] = {{500, 501, false},
                                    {500, 499, false},
                                    {500, 500.99997F, true},
                                    {500, 499.00003F, true},
                                    {500, 501.00003F, false},
                                    {1, 1e-9F, true},  // not when the difference is rounded to a float
                                    {500, kNan, false},
                                    {500, kInfinity, false},
                                    {kNan, kNan, false}};
  for (const ToleranceRow& row : kRows) {
    SCOPED_TRACE(testing::Message() << row.record_f << " and " << row.pair_f);
    give(update_image({{-50, row.record_f}}));
    const Outcome outcome = multi_baseline({row.pair_f, -5000});
    EXPECT_EQ(outcome.code, row.matches ? 0 : -2);
    EXPECT_EQ(outcome.out.ends_with(kNoMatch), !row.matches) << outcome.out;
  }
}

TEST_F(UpdateMultiBaseline, RecordWithoutAPairEndsTheUpdateAndWritesNothing) {
  give(update_image(three_records()));
  EXPECT_EQ(multi_baseline({500, -55}),
            prints_out(-2, original(-50, 500) + updated(-55, 500) + original(-50.25F, 501.5F) + kNoMatch));
  expect_nothing_written();
}

TEST_F(UpdateMultiBaseline, NoPairsAreRefusedBeforeAnyRecord) {
  for (const auto& records : {three_records(), std::vector<D2dValues>{}}) {
    give(update_image(records));
    EXPECT_EQ(multi_baseline({}), prints_out(-2, kNoMatch));
    const float pair[] = {500, -55};
    for (const int count : {-1, -2147483647 - 1})
      EXPECT_EQ(outcome_of([&] { return update_multi_baseline_de(source(), pair, count, destination()); }),
                prints_out(-2, kNoMatch));
    expect_nothing_written();
  }
}

TEST_F(UpdateMultiBaseline, OverflowEndsTheUpdateAndWritesNothing) {
  give(update_image({{-50, 500}}));
  EXPECT_EQ(multi_baseline({500, 0.5F}),
            prints_out(4096,
                       original(-50, 500) + updated(0.5F, 500) +
                           overflow_lines(static_cast<double>(0.004F), 32, 40, "PBF") + kNotFixed));
  expect_nothing_written();
}

TEST_F(UpdateMultiBaseline, SectionWithoutRecordsIsStampedAlone) {
  const ImageBytes image = update_image({});
  give(image);
  EXPECT_EQ(multi_baseline({500, -55}), silent_success());
  expect_result(d2d_section_of(image), {d2d_alone()});
}

TEST_F(UpdateMultiBaseline, WritesTheSectionAloneFromAnImageWithAlignment) {
  give(update_image({{-50, 500}}, {500}, kImageWithAlignmentSize));
  EXPECT_EQ(multi_baseline({500, -55}).code, 0);
  EXPECT_EQ(result().size(), 4096U);
}

// --- update_multi_fb_d2c_de

TEST_F(UpdateMultiFb, PairGoesIntoTheMatchingRecordsOfBothSections) {
  const ImageBytes image = update_image({{1, 612.25F}, {-50, 500}}, {300, 502.5F});
  give(image);
  EXPECT_EQ(multi_fb({503, -48}),
            prints_out(0,
                       examined(300) + examined(502.5F) + updated(503) + original(1, 612.25F) + original(-50, 500) +
                           updated(-48, 503)));
  ImageBytes expected = image;
  put_d2c(expected, 1, 503);
  put_d2d(expected, flash::kD2d, 1, -48, 503, 0xFD491E5C);
  expect_result(expected, {flash::kD2c, flash::kD2d});
}

TEST_F(UpdateMultiFb, FirstMatchingRecordTakesThePair) {
  const ImageBytes image = update_image({{-50, 500}, {-60, 500}}, {500, 500});
  give(image);
  EXPECT_EQ(multi_fb({503, -48}), prints_out(0, examined(500) + updated(503) + original(-50, 500) + updated(-48, 503)));
  ImageBytes expected = image;
  put_d2c(expected, 0, 503);
  put_d2d(expected, flash::kD2d, 0, -48, 503, 0xFD491E5C);
  expect_result(expected, {flash::kD2c, flash::kD2d});
}

TEST_F(UpdateMultiFb, LaterPairWinsAndLooksAtWhatTheEarlierOneLeft) {
  const ImageBytes image = update_image({{-50, 495}}, {495});
  give(image);
  EXPECT_EQ(multi_fb({500, 40, 503, -48}),  // 8 from the record as it was, 3 as it is then
            prints_out(0,
                       examined(495) + updated(500) + examined(500) + updated(503) + original(-50, 495) +
                           updated(40, 500) + original(40, 500) + updated(-48, 503)));
  ImageBytes expected = image;
  put_d2c(expected, 0, 503);
  put_d2d(expected, flash::kD2d, 0, -48, 503, 0xFD491E5C);
  expect_result(expected, {flash::kD2c, flash::kD2d});
}

TEST_F(UpdateMultiFb, ToleranceOfSixIsOpenInBothSections) {
  constexpr ToleranceRow kRows[] = {{500, 506, false},
                                    {500, 494, false},
                                    {500, 505.99997F, true},
                                    {500, 494.00003F, true},
                                    {6, 1e-8F, true},  // not when the difference is rounded to a float
                                    {500, kNan, false},
                                    {kNan, 500, false},
                                    {500, kInfinity, false}};
  for (const ToleranceRow& row : kRows) {
    SCOPED_TRACE(testing::Message() << row.record_f << " and " << row.pair_f);
    const std::vector<float> pairs{row.pair_f, 1e30F};
    give(update_image({{-50, row.pair_f}}, {row.record_f}));
    if (!row.matches) {
      EXPECT_EQ(multi_fb(pairs), prints_out(-2, examined(row.record_f) + kNoMatch));
      give(update_image({{-50, row.record_f}}, {row.pair_f}));
      EXPECT_EQ(multi_fb(pairs).code, -2);
      continue;
    }
    EXPECT_EQ(multi_fb(pairs).code, 0);
    give(update_image({{-50, row.record_f}}, {row.pair_f}));
    EXPECT_EQ(multi_fb(pairs).code, 0);
  }
}

TEST_F(UpdateMultiFb, PairWithoutAD2cRecordEndsTheUpdateAndWritesNothing) {
  give(update_image({{-50, 500}}, {500, 520}));
  EXPECT_EQ(multi_fb({500, -48, 510, -48}),
            prints_out(-2, examined(500) + updated(500) + examined(500) + examined(520) + kNoMatch));
  expect_nothing_written();
}

TEST_F(UpdateMultiFb, PairWithoutAD2dRecordEndsTheUpdateAndWritesNothing) {
  give(update_image({{-50, 600}, {-60, 700}}, {500}));
  EXPECT_EQ(multi_fb({500, -48}),
            prints_out(-2, examined(500) + updated(500) + original(-50, 600) + original(-60, 700) + kNoMatch));
  expect_nothing_written();
}

TEST_F(UpdateMultiFb, PairsForSectionsWithoutRecordsAreRefused) {
  give(update_image({{-50, 500}}, {}));
  EXPECT_EQ(multi_fb({500, -48}), prints_out(-2, kNoMatch));
  give(update_image({}, {500}));
  EXPECT_EQ(multi_fb({500, -48}), prints_out(-2, examined(500) + updated(500) + kNoMatch));
  expect_nothing_written();
}

TEST_F(UpdateMultiFb, WithoutPairsOnlyTimesAndChecksumsAreRefreshed) {
  for (const std::size_t size : {kImageSize, kImageWithAlignmentSize}) {
    ImageBytes image = update_image(three_records(), {500, 501}, size);
    put_pattern(image, 16384 + 60 + 3 * 84, 200);  // behind the records
    if (size > kImageSize) put_pattern(image, kImageSize, 4096);
    put_word(image, 8192 + 4, 0xBAD0BAD0);
    put_word(image, 4, 0xBAD0BAD0);  // no business of this update
    give(image);
    EXPECT_EQ(multi_fb({}), silent_success());
    expect_result(image, {flash::kD2c, flash::kD2d});
    const float pair[] = {1, 1};
    EXPECT_EQ(outcome_of([&] { return update_multi_fb_d2c_de(source(), pair, -1, destination()); }), silent_success());
    expect_result(image, {flash::kD2c, flash::kD2d});
  }
}

TEST_F(UpdateMultiFb, OverflowEndsTheUpdateAndWritesNothing) {
  give(update_image({{-50, 500}}, {500}));
  EXPECT_EQ(multi_fb({500, 0.5F}),
            prints_out(4096,
                       examined(500) + updated(500) + original(-50, 500) + updated(0.5F, 500) +
                           overflow_lines(static_cast<double>(0.004F), 32, 40, "PBF") + kNotFixed));
  expect_nothing_written();
}

}  // namespace
}  // namespace vq3900::test
