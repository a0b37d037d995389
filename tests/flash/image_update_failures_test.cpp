// Updates of sources that are missing, of a wrong size or hostile, and of destinations that cannot be written.
#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

#include "support/calib_builds.h"
#include "support/capture.h"
#include "support/numbers.h"
#include "support/update_images.h"

namespace vq3900::test {
namespace {

constexpr float kPair[] = {500, -55};

// One of the three updates, with arguments that it accepts for the sample image.
struct Update {
  const char* name;
  std::int32_t (*call)(const char* source, const char* destination);
  bool takes_section;
};

constexpr Update kUpdates[] = {
    {"update_baseline_de", [](const char* s, const char* d) { return update_baseline_de(s, -55, d, -1); }, true},
    {"update_multi_baseline_de",
     [](const char* s, const char* d) { return update_multi_baseline_de(s, kPair, 1, d); },
     true},
    {"update_multi_fb_d2c_de",
     [](const char* s, const char* d) { return update_multi_fb_d2c_de(s, kPair, 1, d); },
     false},
};

void PrintTo(const Update& update, std::ostream* stream) {
  *stream << update.name;
}

std::string name_of(const testing::TestParamInfo<Update>& info) {
  return info.param.name;
}

ImageBytes sample_image() {
  return update_image({{-50, 500}}, {500});
}

class EveryUpdate : public UpdateTest, public testing::WithParamInterface<Update> {
 protected:
  Outcome run(const char* source, const char* destination) const {
    return outcome_of([&] { return GetParam().call(source, destination); });
  }
  Outcome run() const { return run(source(), destination()); }

  // A call that fails like that and leaves no trace, and a good one behind it.
  void expect_refused(const ImageBytes& bytes, const Outcome& expected) {
    give(bytes);
    EXPECT_EQ(run(), expected);
    expect_nothing_written();
  }
};

INSTANTIATE_TEST_SUITE_P(Updates, EveryUpdate, testing::ValuesIn(kUpdates), name_of);

TEST_P(EveryUpdate, SourceThatIsNotThereIsNamed) {
  const std::string missing = TempFile::unused_path();
  EXPECT_EQ(run(missing.c_str(), destination()), prints_out(-1, cannot_open(missing)));
  EXPECT_FALSE(destination_exists());
}

TEST_P(EveryUpdate, NullPathsCannotBeOpened) {
  give(sample_image());
  EXPECT_EQ(run(nullptr, destination()), prints_out(-1, cannot_open("(null)")));
  EXPECT_EQ(run(source(), nullptr).code, -1);
  EXPECT_TRUE(run(source(), nullptr).out.ends_with(cannot_open("(null)")));
  expect_nothing_written();
}

TEST_P(EveryUpdate, DirectoryCannotBeOpenedAsSourceOrDestination) {
  const TempFolder folder;
  const std::string path = folder.path("");
  EXPECT_EQ(run(path.c_str(), destination()), prints_out(-1, cannot_open(path)));
  give(sample_image());
  const Outcome outcome = run(source(), path.c_str());
  EXPECT_EQ(outcome.code, -1);
  EXPECT_TRUE(outcome.out.ends_with(cannot_open(path)));
  EXPECT_TRUE(folder.names().empty());
}

TEST_P(EveryUpdate, DestinationInAFolderThatIsNotThereIsNamed) {
  give(sample_image());
  const std::string path = TempFile::unused_path() + "/x";
  const Outcome outcome = run(source(), path.c_str());
  EXPECT_EQ(outcome.code, -1);
  EXPECT_TRUE(outcome.out.ends_with(cannot_open(path)));
  EXPECT_EQ(run().code, 0);  // a good call behind it
}

#if defined(__unix__)
TEST_P(EveryUpdate, FullDiskIsADestinationThatCannotBeOpened) {
  give(sample_image());
  const Outcome outcome = run(source(), "/dev/full");
  EXPECT_EQ(outcome.code, -1);
  EXPECT_TRUE(outcome.out.ends_with(cannot_open("/dev/full")));
  EXPECT_EQ(outcome.err, "");
}
#endif

TEST_P(EveryUpdate, SourceOfAnyOtherSizeIsRefused) {
  for (const std::size_t size : {0U, 1U, 60U, 4095U, 4097U, 16384U, 20479U, 20481U, 24575U, 24577U, 40000U}) {
    SCOPED_TRACE(size);
    ImageBytes bytes = sample_image();
    bytes.resize(size, 0xFF);
    expect_refused(bytes, prints_out(-2, kUnknownSize));
  }
}

TEST_P(EveryUpdate, SectionAloneIsTakenByTheFirstTwoAlone) {
  if (GetParam().takes_section) {
    give(d2d_section_of(sample_image()));
    EXPECT_EQ(run().code, 0);
    EXPECT_EQ(result().size(), 4096U);
  } else {
    expect_refused(d2d_section_of(sample_image()), prints_out(-2, kUnknownSize));
  }
}

TEST_P(EveryUpdate, DestinationMayBeTheSource) {
  give(sample_image());
  EXPECT_EQ(run(source(), destination()).code, 0);
  EXPECT_EQ(run(source(), source()).code, 0);
  ImageBytes in_place = bytes_of_file(source());
  ImageBytes apart = result();
  ASSERT_EQ(in_place.size(), apart.size());
  for (const std::size_t section : {GetParam().takes_section ? std::size_t{0} : std::size_t{8192},
                                    GetParam().takes_section ? std::size_t{0} : std::size_t{16384}}) {
    for (ImageBytes* const bytes : {&in_place, &apart}) {
      put_word(*bytes, section + 4, 0);
      put_word(*bytes, section + 20, 0);
    }
  }
  expect_same_bytes(in_place, apart);
}

TEST_P(EveryUpdate, DestinationIsReplacedWhole) {
  give(sample_image());
  EXPECT_EQ(run().code, 0);
  const std::size_t size = result().size();
  std::FILE* const file = std::fopen(destination(), "wb");
  const ImageBytes rubbish(50000, 'x');
  EXPECT_EQ(std::fwrite(rubbish.data(), 1, rubbish.size(), file), rubbish.size());
  std::fclose(file);
  EXPECT_EQ(run().code, 0);
  EXPECT_EQ(result().size(), size);
}

TEST_P(EveryUpdate, TagsAndTheStoredChecksumAreNotLookedAt) {
  ImageBytes image = sample_image();
  for (const std::size_t section : {8192U, 16384U}) {
    for (const std::size_t offset : {0U, 4U, 12U, 16U, 48U})
      put_word(image, section + offset, 0xBAD0BAD0);
  }
  give(image);
  EXPECT_EQ(run().code, 0);
}

TEST_P(EveryUpdate, FailureLeavesAnOldDestinationAlone) {
  give(sample_image());
  EXPECT_EQ(run().code, 0);
  const ImageBytes before = result();
  ImageBytes hostile = sample_image();
  put_word(hostile, 16384 + 52, 0xFFFFFFFF);
  give(hostile);
  EXPECT_EQ(run(), prints_out(-2, kBadHeader));
  EXPECT_TRUE(result() == before);
}

// --- hostile headers

struct HeaderRow {
  const char* name;
  std::uint32_t count, size, length;
  bool accepted;
};

constexpr HeaderRow kD2dHeaders[] = {
    {"as they are", 1, 84, 144, true},
    {"most records", 48, 84, 60 + 48 * 84, true},
    {"a record too many", 49, 84, 144, false},
    {"any count", 0xFFFFFFFF, 84, 144, false},
    {"any size", 1, 0xFFFFFFFF, 144, false},
    {"largest size", 1, 4036, 144, true},
    {"size beyond the room", 1, 4037, 144, false},
    {"product of 2^32", 0x10000, 0x10000, 144, false},
    {"product that wraps to 84", 0x30C30C31, 84, 144, false},
    {"sum that wraps", 1, 0xFFFFFFC4, 144, false},
    {"both at their limits", 0xFFFFFFFF, 0xFFFFFFFF, 144, false},
    {"size a byte short", 1, 83, 144, false},
    {"size of nothing", 1, 0, 144, false},
    {"size of nothing, many", 0xFFFFFFFF, 0, 144, false},
    {"longest length", 1, 84, 4096, true},
    {"length beyond the room", 1, 84, 4097, false},
    {"any length", 1, 84, 0xFFFFFFFF, false},
    {"length of nothing", 1, 84, 0, true},
    {"length inside the header", 1, 84, 7, true},
};

constexpr HeaderRow kD2cHeaders[] = {
    {"most records", 24, 328, 60 + 24 * 328, true},
    {"a record too many", 25, 328, 388, false},
    {"any count", 0xFFFFFFFF, 328, 388, false},
    {"largest size", 1, 8132, 388, true},
    {"size beyond the room", 1, 8133, 388, false},
    {"product of 2^32", 0x10000, 0x10000, 388, false},
    {"smallest size that holds what is changed", 1, 184, 388, true},
    {"size a byte short of that", 1, 183, 388, false},
    {"size of nothing", 1, 0, 388, false},
    {"longest length", 1, 328, 8192, true},
    {"length beyond the room", 1, 328, 8193, false},
    {"any length", 1, 328, 0xFFFFFFFF, false},
};

ImageBytes image_with_header(const FlashSection& section, const HeaderRow& row) {
  ImageBytes image = sample_image();
  put_word(image, section.offset + 52, row.count);
  put_word(image, section.offset + 56, row.size);
  put_word(image, section.offset + 8, row.length);
  for (std::uint32_t i = 1; row.accepted && i < row.count; ++i) {  // equal records, which every update finds
    const ImageBytes first = part(image, section.offset + kHeaderSize, row.size);
    std::ranges::copy(first, image.begin() + static_cast<std::ptrdiff_t>(section.offset + 60 + i * row.size));
  }
  return image;
}

TEST_P(EveryUpdate, D2dHeaderMustFitItsSection) {
  for (const HeaderRow& row : kD2dHeaders) {
    SCOPED_TRACE(row.name);
    const ImageBytes image = image_with_header(flash::kD2d, row);
    if (row.accepted) {
      give(image);
      EXPECT_EQ(run().code, 0);
      std::remove(destination());
      continue;
    }
    expect_refused(image, prints_out(-2, kBadHeader));
    if (GetParam().takes_section) expect_refused(d2d_section_of(image), prints_out(-2, kBadHeader));
  }
}

TEST_P(EveryUpdate, ChecksumCoversTheLengthOfTheHeader) {
  for (const std::uint32_t length : {0U, 7U, 60U, 143U, 4096U}) {
    ImageBytes image = sample_image();
    put_word(image, 16384 + 8, length);
    give(image);
    EXPECT_EQ(run().code, 0);
    const std::size_t at = GetParam().takes_section ? 0 : 16384;
    const std::uint32_t expected =
        length < 8 ? peer_crc32(0, ImageBytes{0x0A, 's', 'D', 'F', 0, 0, 0}) : section_checksum(result(), at, length);
    EXPECT_EQ(word_at(result(), at + 4), length == 0 ? 0 : expected) << length;
  }
}

TEST_F(UpdateTest, D2cHeaderMustFitItsSection) {
  for (const HeaderRow& row : kD2cHeaders) {
    SCOPED_TRACE(row.name);
    give(image_with_header(flash::kD2c, row));
    const Outcome outcome = multi_fb({500, -55});
    if (row.accepted) {
      EXPECT_EQ(outcome.code, 0) << outcome.out;
      std::remove(destination());
    } else {
      EXPECT_EQ(outcome, prints_out(-2, kBadHeader));
      expect_nothing_written();
    }
  }
}

TEST_F(UpdateTest, ShortD2cRecordsKeepTheirNeighbours) {
  ImageBytes image = update_image({{-50, 500}}, {});
  for (const auto& [offset, word] : {Word{8, 60 + 2 * 184}, Word{52, 2}, Word{56, 184}})
    put_word(image, 8192 + offset, word);
  put_pattern(image, 8192 + 60, 2 * 184);
  put_float(image, 8192 + 60 + kD2cFocal, 300);
  put_float(image, 8192 + 60 + 184 + kD2cFocal, 501);
  give(image);
  EXPECT_EQ(multi_fb({500, -55}).code, 0);
  put_float(image, 8192 + 60 + 184 + kD2cFocal, 500);
  put_float(image, 8192 + 60 + 184 + kD2cFocal + 4, 500);
  EXPECT_TRUE(part(result(), 8192 + 60, 2 * 184) == part(image, 8192 + 60, 2 * 184));
}

TEST_F(UpdateTest, HeadersOfOtherSectionsDoNotMatterToTheFirstTwo) {
  ImageBytes image = sample_image();
  put_word(image, 52, 0xFFFFFFFF);
  put_word(image, 8192 + 52, 0xFFFFFFFF);
  give(image);
  EXPECT_EQ(baseline(-55).code, 0);
  EXPECT_EQ(multi_baseline({500, -55}).code, 0);
}

TEST_F(UpdateTest, NullPairsAreRefusedSilentlyBeforeAnything) {
  give(sample_image());
  for (const int count : {0, 1, -1}) {
    EXPECT_EQ(outcome_of([&] { return update_multi_baseline_de(source(), nullptr, count, destination()); }),
              silent(-2));
    EXPECT_EQ(outcome_of([&] { return update_multi_fb_d2c_de(source(), nullptr, count, destination()); }), silent(-2));
    EXPECT_EQ(outcome_of([&] { return update_multi_baseline_de("none", nullptr, count, destination()); }), silent(-2));
    EXPECT_EQ(outcome_of([&] { return update_multi_fb_d2c_de("none", nullptr, count, destination()); }), silent(-2));
  }
  expect_nothing_written();
}

// --- mutations

// Changes some bytes, mostly of headers.
void mutate(ImageBytes& image, Random& random) {
  const std::uint32_t changes = 1 + random.word() % 4;
  for (std::uint32_t i = 0; i < changes; ++i) {
    const std::size_t section = image.size() < kImageSize ? 0 : (random.word() % 2 == 0 ? 8192 : 16384);
    const std::uint32_t word = random.word() >> (random.word() % 32);
    switch (random.word() % 4) {
      case 0:
        put_word(image, section + 52, word);
        break;
      case 1:
        put_word(image, section + 56, word);
        break;
      case 2:
        put_word(image, section + 8, word);
        break;
      default:
        image[random.word() % image.size()] = static_cast<std::uint8_t>(word);
        break;
    }
  }
  if (random.word() % 64 == 0) image.resize(random.word() % (image.size() + 2), 0xFF);
}

TEST_P(EveryUpdate, MutatedSourcesNeverHarmAnything) {
  const ImageBytes image = update_image({{-50, 500}, {-50, 500.5F}, {-50, 499.5F}}, {500, 501});
  Random random(20240521);
  int refused = 0, written = 0;
  const Printed printed = printed_by([&] {
    for (int round = 0; round < 1000; ++round) {
      SCOPED_TRACE(testing::Message() << "round " << round);
      ImageBytes mutated = GetParam().takes_section && random.word() % 2 == 0 ? d2d_section_of(image) : image;
      mutate(mutated, random);
      give(mutated);
      const std::int32_t code = GetParam().call(source(), destination());
      ASSERT_TRUE(code == 0 || code == -2 || code == 4096) << code;
      ASSERT_TRUE(round % 16 != 0 || bytes_of_file(source()) == mutated);
      ASSERT_EQ(destination_exists(), code == 0);
      (code == 0 ? written : refused)++;
      if (code != 0) continue;
      ASSERT_EQ(std::filesystem::file_size(destination()), GetParam().takes_section ? 4096 : mutated.size());
      std::remove(destination());
    }
  });
  EXPECT_EQ(printed.err, "");
  EXPECT_GT(refused, 100);
  EXPECT_GT(written, 100);
}

}  // namespace
}  // namespace vq3900::test
