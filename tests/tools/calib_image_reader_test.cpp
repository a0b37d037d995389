// Looking into the files of a calibration.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "bytes/crc32.h"
#include "bytes/md5.h"
#include "flash/factory_file.h"
#include "image_compare.h"
#include "image_reader.h"
#include "image_report.h"
#include "support/calib_tool_builds.h"
#include "support/image_samples.h"
#include "support/numbers.h"

namespace vq3900::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::IsSupersetOf;
using tool::Image;
using tool::ImageCheck;
using tool::ImageSection;

constexpr std::size_t kD2c = 8192;
constexpr std::size_t kD2d = 16384;
constexpr std::size_t kLutData = 4096;
constexpr std::size_t kGrid = kLutData + 48;

// The files of the EuRoC rig, built once.
struct CalibFiles {
  ImageBytes image, lut, section, d2d, aligned, factory;
};

class CalibImageReader : public CalibImageToolTest {
 protected:
  const CalibFiles& files() const {
    static const CalibFiles built = make_files();
    return built;
  }

 private:
  CalibFiles make_files() const {
    build_euroc();
    CalibFiles made{
        written("euroc.bin"), written("euroc_lut_section.bin"), written("euroc_factory_align_section.bin"), {}, {}, {}};
    made.d2d = part(made.image, kD2d, 4096);
    write("align", ImageBytes(976, 0x11));
    run(build("aligned.bin", euroc(), {example("calib_euroc.ini")}, {"--align", path("align")}));
    made.aligned = written("aligned.bin");
    FactoryFile factory;
    factory.add("a", std::string(1001, 'a'));
    factory.add("b", std::string(1001, 'b'));
    made.factory = factory.finish({1700000000, {1, 2, 3}});
    return made;
  }
};

std::vector<std::string> faults(const Image& image) {
  std::vector<std::string> names;
  for (const ImageSection& section : image.sections) {
    for (const ImageCheck& check : section.checks) {
      if (!check.good) names.push_back(section.name + ": " + check.what);
    }
  }
  return names;
}

// Makes the checksum of a section right again over the length that its header states.
void repair_crc(ImageBytes& image, std::size_t offset) {
  const std::uint32_t length = word_at(image, offset + 8);
  if (length < 48 || length > image.size() - offset) return;
  put_word(image, offset + 4, 0);
  put_word(image, offset + 4, crc32(0, &image[offset], length));
}

// What is found once the bytes are changed and the checksum is repaired.
template <typename Change>
std::vector<std::string> faults_after(const ImageBytes& bytes, std::size_t section, const Change& change) {
  ImageBytes changed = bytes;
  change(changed);
  repair_crc(changed, section);
  return faults(image_of(changed));
}

// --- what is recognised

TEST_F(CalibImageReader, EveryFileIsRecognisedAndGood) {
  struct Row {
    const ImageBytes& bytes;
    const char* kind;
    std::vector<std::string> sections;
  };
  const CalibFiles& f = files();
  for (const Row& row : {Row{f.image, "calibration image", {"rectify", "d2c", "d2d"}},
                         Row{f.aligned, "calibration image", {"rectify", "d2c", "d2d", "alignment"}},
                         Row{f.d2d, "D2D section", {"d2d"}},
                         Row{f.lut, "LUT file", {"lut directory", "lut data"}},
                         Row{f.factory, "factory-align file", {"factory align"}},
                         Row{f.section, "factory-align section", {"factory align"}}}) {
    SCOPED_TRACE(row.kind);
    const Image image = image_of(row.bytes);
    EXPECT_EQ(image.kind, row.kind);
    EXPECT_THAT(faults(image), IsEmpty());
    std::vector<std::string> sections;
    for (const ImageSection& section : image.sections)
      sections.push_back(section.name);
    EXPECT_EQ(sections, row.sections);
    EXPECT_THAT(compare_images(image, image), IsEmpty());
  }
}

TEST_F(CalibImageReader, OneSectionsTagIsEnoughAndNoneIsNot) {
  for (const auto& [offset, tag] : {std::pair{std::size_t{0}, 0x46447308U}, {kD2c, 0x46447309U}, {kD2d, 0x4644730AU}}) {
    ImageBytes bytes(20480, 0xFF);
    EXPECT_FALSE(read_exactly(bytes));
    put_word(bytes, offset, tag);
    EXPECT_EQ(image_of(bytes).kind, "calibration image");
    EXPECT_FALSE(image_of(bytes).good());
  }
  EXPECT_FALSE(read_exactly(ImageBytes(4096, 0xFF)));
  EXPECT_FALSE(read_exactly(ImageBytes(24576, 0x08)));
}

// --- what it holds

TEST_F(CalibImageReader, RecordsHoldTheirFields) {
  const Image image = image_of(files().image);
  const auto& rectify = section_of(image, "rectify").items.at(0);
  EXPECT_EQ(text_of(rectify.fields, "key.width"), "752");
  EXPECT_EQ(text_of(rectify.fields, "cam1"), "752x480, fx 458.653992, fy 457.29599, cx 367.214996, cy 248.375");
  EXPECT_EQ(rectify.registers.at(1).elements.at(0).address, 0x52000000U);
  const auto json = image_json("x", image);
  const auto& cam1 = json.at("sections").at(0).at("items").at(0).at("fields").at("cam1");
  EXPECT_EQ(cam1.at("width"), 752);
  EXPECT_EQ(cam1.at("cy"), 248.375);
  EXPECT_EQ(text_of(section_of(image, "d2d").items.at(0).fields, "focal_length"), "458.653992");
  const auto factory = section_of(image_of(files().section), "factory align").items.at(0).fields;
  EXPECT_EQ(text_of(factory, "label"), "Close mode");
  EXPECT_EQ(text_of(factory, "sizes"), "752, 480, 752, 480, 0, 0");
  EXPECT_EQ(text_of(factory, "left_ir.reserved"), "1952 bytes, all 0x00");
}

TEST_F(CalibImageReader, GridIsSummarisedInPixels) {
  ImageBytes bytes = files().lut;
  const std::size_t words = kGrid + 52;
  for (std::size_t i = 0; i < 4 * 2400; ++i)
    put_word(bytes, words + 4 * i, 0);
  put_word(bytes, words, 0x00800000);      // -0.5 focal lengths
  put_word(bytes, words + 4, 0x00400000);  // 0.25
  const auto json = image_json("x", image_of(bytes));
  const auto& fields = json.at("sections").at(1).at("items").at(0).at("fields");
  const double f = static_cast<double>(458.654F);
  EXPECT_EQ(fields.at("section_a").at("words"), 2400);
  EXPECT_DOUBLE_EQ(fields.at("section_a").at("least").get<double>(), -0.5 * f);
  EXPECT_DOUBLE_EQ(fields.at("section_a").at("greatest").get<double>(), 0.25 * f);
  EXPECT_EQ(fields.at("section_a").at("unit"), "pixels");
  EXPECT_EQ(fields.at("section_d").at("greatest"), 0.0);
  put_word(bytes, 60 + 48, 0x7FC00000);  // a focal length that is none
  const std::string text = image_text("x", image_of(bytes));
  EXPECT_THAT(text, HasSubstr("2400 words, displacements -0.5 to 0.25 focal lengths\n"));
  EXPECT_THAT(text, HasSubstr("camera_1.lut_fx              nan (0x7FC00000)\n"));
}

TEST_F(CalibImageReader, UnusualNumbersStayVisible) {
  ImageBytes bytes = files().d2d;
  put_word(bytes, 60 + 36, 0xFFC00001);  // NaN with a sign and a payload
  put_word(bytes, 60 + 40, 0x7F800000);  // infinity
  put_word(bytes, 28, 0x80000000);       // the serial number's highest bit
  const Image image = image_of(bytes);
  const auto& fields = section_of(image, "d2d").items.at(0).fields;
  EXPECT_EQ(text_of(fields, "baseline"), "nan (0xFFC00001)");
  EXPECT_EQ(text_of(fields, "ref_dist"), "inf");
  EXPECT_EQ(text_of(section_of(image, "d2d").header, "serial_number"), "9223372036854775808, 0, 0");
  const auto json = image_json("x", image);
  EXPECT_EQ(json.at("sections").at(0).at("items").at(0).at("fields").at("baseline"), "nan (0xFFC00001)");
  EXPECT_EQ(json.at("sections").at(0).at("items").at(0).at("fields").at("ref_dist"), "inf");
}

TEST_F(CalibImageReader, BackslashInATextIsDoubled) {
  ImageBytes bytes = files().section;
  bytes[60 + 16] = '\\';
  EXPECT_EQ(text_of(section_of(image_of(bytes), "factory align").items.at(0).fields, "label"), "\\\\lose mode");
}

TEST_F(CalibImageReader, TimeIsATimeAlone) {
  EXPECT_THAT(image_text("x", image_of(files().image)),
              HasSubstr("  time                 0x6553F100 (2023-11-14 22:13:20 UTC)\n"));
  ImageBytes bytes = samples().config;
  put_word(bytes, 20, 0x00000001);
  EXPECT_THAT(image_text("x", image_of(bytes)),
              HasSubstr("  version_or_time      0x00000001 (1970-01-01 00:00:01 UTC)\n"));
}

// --- what is wrong with it

TEST_F(CalibImageReader, EveryHeaderFieldIsChecked) {
  struct Row {
    std::size_t offset;
    std::uint32_t value;
    const char* fault;
  };
  for (const auto& [section, name] : {std::pair{std::size_t{0}, "rectify"}, {kD2c, "d2c"}, {kD2d, "d2d"}}) {
    for (const Row& row : {Row{0, 0x46447307, "tag"},
                           {8, 59, "length"},
                           {8, 0xFFFFFFFF, "CRC-32"},
                           {12, 0xB1000, "flash address"},
                           {16, 17, "format"},
                           {48, 0x46446104, "array tag"},
                           {52, 0x80000001, "count"},
                           {52, 0xFFFFFFFF, "length"},
                           {56, 0, "record size"}}) {
      const auto found = faults_after(
          files().image, section, [&, at = section](ImageBytes& b) { put_word(b, at + row.offset, row.value); });
      EXPECT_THAT(found, Contains(std::string(name) + ": " + row.fault)) << row.offset;
    }
  }
}

TEST_F(CalibImageReader, DigestsRegistersAndUnusedBytesAreChecked) {
  struct Row {
    const char* name;
    const ImageBytes& bytes;
    std::size_t section;
    std::size_t at;
    const char* fault;
  };
  const CalibFiles& f = files();
  for (const Row& row :
       {Row{"digest", f.image, 0, 60, "rectify: digest of item 0"},
        Row{"key", f.image, 0, 60 + 27, "rectify: digest of item 0"},
        Row{"address", f.image, 0, 60 + 28, "rectify: registers of item 0 are the block's"},
        Row{"empty place", f.image, 0, 60 + 28 + 23 * 12, "rectify: registers of item 0 are the block's"},
        Row{"mask", f.image, kD2c, kD2c + 60 + 32 + 4, "d2c: registers of item 0 are the block's"},
        Row{"behind the record", f.image, kD2d, kD2d + 144, "d2d: unused bytes are 0xFF"},
        Row{"last byte", f.image, kD2d, 20479, "d2d: unused bytes are 0xFF"},
        Row{"lut registers", f.lut, 0, 60 + 112, "lut directory: registers of item 0 are the block's"},
        Row{"grid key", f.lut, kLutData, kGrid + 28, "lut data: digest of item 0"},
        Row{"grid size", f.lut, kLutData, kGrid + 48, "lut data: size of item 0"},
        Row{"start", f.lut, 0, 60 + 32, "lut directory: grid of item 0 is there"},
        Row{"factory key", f.section, 0, 60 + 33, "factory align: digest of item 0"},
        Row{"no array tag", f.factory, 0, 48, "factory align: unused bytes are 0xFF"},
        Row{"behind the files", f.factory, 0, 16383, "factory align: unused bytes are 0xFF"}}) {
    EXPECT_THAT(faults_after(row.bytes, row.section, [&](ImageBytes& b) { b[row.at] ^= 1; }), Contains(row.fault))
        << row.name;
  }
}

TEST_F(CalibImageReader, ValuesAndAlignmentRecordsMayBeAnything) {
  EXPECT_THAT(faults_after(files().image, 0, [](ImageBytes& b) { b[60 + 28 + 8] ^= 1; }), IsEmpty());
  EXPECT_THAT(faults_after(files().aligned, 20480, [](ImageBytes& b) { b[20480 + 60] ^= 1; }), IsEmpty());
}

TEST_F(CalibImageReader, UnusedBytesOfTheConfigurationFilesAreChecked) {
  ImageBytes config = samples().config;
  config[8191] = 0;  // behind the last configuration
  EXPECT_THAT(faults(image_of(config)), ElementsAre("dpu: unused bytes are 0xFF"));
  config = samples().config;
  config[36 + 948] = 0;  // the filler of an item
  EXPECT_THAT(faults(image_of(config)), IsSupersetOf({"dpu: unused bytes are 0xFF"}));
  ImageBytes registers = samples().registers;
  registers[28] = 0;
  EXPECT_THAT(faults(image_of(registers)), ElementsAre("registers: unused bytes are 0xFF"));
  registers = samples().registers;
  registers[568] ^= 1;  // the address of the cut register
  EXPECT_THAT(faults(image_of(registers)), ElementsAre("registers: registers are the block's"));
}

TEST_F(CalibImageReader, SixteenSmallNumbersAreNoDigest) {
  const auto fields = image_of(samples().snapshot).sections.at(0).items.at(0).fields;
  const std::string columns = text_of(fields, "gpm.gp_col_enabled");
  EXPECT_EQ(std::count(columns.begin(), columns.end(), ','), 15) << columns;
}

// --- comparing

TEST_F(CalibImageReader, DifferencesAreNamedInOrder) {
  ImageBytes changed = files().image;
  changed[kD2d + 60 + 39] ^= 0x80;  // the baseline's sign
  changed[60 + 28 + 8] ^= 1;
  changed[7000] = 0;
  std::vector<std::string> places;
  for (const auto& difference : compare_images(image_of(files().image), image_of(changed)))
    places.push_back(difference.place);
  EXPECT_THAT(places,
              ElementsAre("rectify[0].rectify_params[0].value",
                          testing::StartsWith("rectify[0].rectify_params[0]."),
                          "byte 7000",
                          "d2d[0].baseline"));
}

TEST_F(CalibImageReader, WordOfAGridIsShownWhereItDiffers) {
  ImageBytes changed = files().lut;
  const std::size_t at = kGrid + 52 + std::size_t{4} * 100;
  changed[at] ^= 1;
  const auto found = compare_images(image_of(files().lut), image_of(changed));
  ASSERT_EQ(found.size(), 1U);
  EXPECT_EQ(found.at(0).place, "lut data[0].section_a");
  EXPECT_THAT(found.at(0).first, HasSubstr(" from byte 400 on"));
  EXPECT_NE(found.at(0).first, found.at(0).second);
}

// --- hostile files

TEST_F(CalibImageReader, MutatedFilesNeverBreakIt) {
  constexpr std::uint32_t kSeed = 20260229;
  SCOPED_TRACE(kSeed);
  Random random(kSeed);
  constexpr std::array<std::uint32_t, 8> kWords{0, 1, 48, 60, 0x7FFFFFFF, 0x80000000, 0xFFFFFFF4, 0xFFFFFFFF};
  const CalibFiles& f = files();
  const std::array<const ImageBytes*, 6> all{&f.image, &f.lut, &f.section, &f.d2d, &f.aligned, &f.factory};
  for (int round = 0; round < 600; ++round) {
    ImageBytes bytes = *all[random.word() % all.size()];
    if (random.word() % 4 == 0) bytes.resize(random.word() % (bytes.size() + 1));
    if (bytes.size() < 200) continue;
    for (int change = 0; change < 3; ++change) {
      const std::size_t section = random.word() % 2 == 0 ? 0 : random.word() % (bytes.size() / 4096 + 1) * 4096;
      const std::size_t at = std::min(section + random.word() % 120 / 4 * 4, bytes.size() - 4) / 4 * 4;
      if (at >= 4) put_word(bytes, at, kWords[random.word() % kWords.size()]);
    }
    const std::optional<Image> image = read_exactly(bytes);
    if (!image || round % 20 != 0) continue;
    EXPECT_FALSE(image_text("x", *image).empty());
    EXPECT_FALSE(
        image_json("x", *image).dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace).empty());
    compare_images(*image, image_of(f.image));
  }
}

}  // namespace
}  // namespace vq3900::test
