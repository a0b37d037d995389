#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "state/engine.h"
#include "support/calib_file_fixture.h"
#include "support/capture.h"
#include "support/fields.h"
#include "support/lut_grids.h"

namespace vq3900::test {
namespace {

// --- the main image

TEST_F(CalibFile, OneConfigurationGivesOneRecordOfEachKind) {
  CalibInput input;
  input.add("rig.xml", config());
  EXPECT_EQ(build(input), prints_out(0, digest_trace(3)));
  const ImageBytes image = main_image();
  ASSERT_EQ(image.size(), kImageSize);
  expect_flash_section(image, flash::kRectify, 1);
  expect_flash_section(image, flash::kD2c, 1);
  expect_flash_section(image, flash::kD2d, 1);
  EXPECT_EQ(folder_.names(), (std::vector<std::string>{"config1.ini", "image.bin"}));
}

TEST_F(CalibFile, NothingIsDerived) {
  CalibInput input;
  input.add("rig.xml", config({{"mipi_channel_status", "1"}, {"disp_offset", "26"}, {"cam_type", "1"}}));
  number_registers();
  EXPECT_EQ(build(input), prints_out(0, digest_trace(3)));
  const ImageBytes image = main_image();

  const ImageBytes rectify = record_at(image, flash::kRectify, 0);
  expect_digest(rectify, 0, 16, 12);
  EXPECT_EQ(part(rectify, 16, 8), ImageBytes(8));
  EXPECT_EQ(word_at(rectify, 24), 1U);
  expect_table(rectify, 28, de_copy_rectify_params_register_table, 23);
  EXPECT_EQ(part(rectify, 304, 72), ImageBytes(72));
  expect_table(rectify, 376, de_copy_sbg2r_params_register_table, 23);
  EXPECT_EQ(part(rectify, 652, 288), ImageBytes(288));
  // Temperatures 31.5, 32.25, 35.75 and the coefficients 0.25, -0.5, 0.125.
  expect_words(rectify, {{940, 0x41FC0000}, {944, 0x42010000}, {948, 0x420F0000}});
  expect_words(rectify, {{952, 0x3E800000}, {956, 0xBF000000}, {960, 0x3E000000}});

  const ImageBytes d2c = record_at(image, flash::kD2c, 0);
  expect_digest(d2c, 0, 16, 16);
  expect_words(d2c, {{16, 0}, {20, 0}, {24, 0}, {28, 1}});
  expect_table(d2c, 32, de_copy_d2c_params_register_table, 12);
  EXPECT_EQ(part(d2c, 176, 152), ImageBytes(152));

  const ImageBytes d2d = record_at(image, flash::kD2d, 0);
  expect_digest(d2d, 0, 16, 16);
  expect_words(d2d, {{16, 30}, {20, 0}, {24, 1000}, {28, 1}});
  EXPECT_EQ(part(d2d, 32, 28), ImageBytes(28));
  expect_table(d2d, 60, de_copy_d2d_params_register_table, 2);
}

TEST_F(CalibFile, BuildChangesNoRegister) {
  CalibInput input;
  input.add("rig.xml", config(lut_settings()));
  number_registers();
  const RegisterTables before = engine().registers;
  EXPECT_EQ(build(input).code, 0);
  EXPECT_EQ(differences_from(before), "");
}

TEST_F(CalibFile, NoConfigurationGivesEmptySections) {
  CalibInput input;
  EXPECT_EQ(build(input), silent_success());
  const ImageBytes image = main_image();
  ASSERT_EQ(image.size(), kImageSize);
  for (const FlashSection& section : {flash::kRectify, flash::kD2c, flash::kD2d})
    expect_flash_section(image, section, 0);
  EXPECT_EQ(folder_.names(), std::vector<std::string>{"image.bin"});
}

TEST_F(CalibFile, SameConfigurationTwiceIsStoredOnce) {
  CalibInput input;
  const std::string path = config();
  input.add("rig.xml", path).add("rig.xml", path);
  EXPECT_EQ(build(input), prints_out(0, digest_trace(6)));  // the keys of both are digested
  expect_counts(1, 1, 1);
}

TEST_F(CalibFile, RecordsAreSharedSectionBySection) {
  CalibInput input;
  input.add("1", config());
  input.add("2", config({{"mipi_channel_status", "1"}}));      // is in every key
  input.add("3", config({{"mipi_channel_status", "2"}}));      // not by its bit 1
  input.add("4", config({{"disp_offset", "5"}}));              // is in the D2D key alone
  input.add("5", config({{"disp_offset", "14"}}));             // the same ten
  input.add("6", config({{"d2d_params_unit_in_R_en", "1"}}));  // is in the D2C and D2D keys
  input.add("7", config({{"invalid_disp", "3"}}));             // is in no key
  EXPECT_EQ(build(input), prints_out(0, digest_trace(21)));
  expect_counts(2, 3, 4);
  const ImageBytes image = main_image();
  EXPECT_EQ(word_at(record_at(image, flash::kRectify, 1), 24), 1U);
  expect_words(record_at(image, flash::kD2c, 2), {{24, 100}, {28, 0}});
  expect_words(record_at(image, flash::kD2d, 2), {{16, 10}, {20, 0}, {28, 0}});
  expect_words(record_at(image, flash::kD2d, 3), {{16, 0}, {20, 100}, {28, 0}});
}

TEST_F(CalibFile, FirstOfEqualRecordsIsKept) {
  CalibInput input;
  input.add("1", config({{"ir_l_comp_coeff", "0.25"}})).add("2", config({{"ir_l_comp_coeff", "0.5"}}));
  EXPECT_EQ(build(input).code, 0);
  EXPECT_EQ(word_at(record_at(main_image(), flash::kRectify, 0), 952), 0x3E800000U);
}

TEST_F(CalibFile, TwoBuildsInOneProcessAreEqual) {
  CalibInput input;
  input.add(calib("a.bin", "abc"), config(lut_settings())).add(calib("b.bin", "def"), config());
  const Outcome first = build(input);
  ImageBytes images[3] = {main_image(), lut_file(), factory_file()};
  EXPECT_EQ(build(input), first);
  ImageBytes again[3] = {main_image(), lut_file(), factory_file()};
  const std::vector<std::size_t> sections[3] = {{0, 8192, 16384}, {0, 4096}, {0}};
  for (std::size_t i = 0; i < 3; ++i) {
    for (const std::size_t section : sections[i]) {
      for (ImageBytes* const bytes : {&images[i], &again[i]}) {
        put_word(*bytes, section + 4, 0);
        put_word(*bytes, section + 20, 0);
      }
    }
    expect_same_bytes(again[i], images[i]);
  }
}

TEST_F(CalibFile, SectionsOfAllFilesShareTimeAndSerialNumber) {
  const std::uint64_t words[] = {0x0102030405060708, 9, 10};
  set_sn(&words[0], &words[1], &words[2]);
  hold_alignment_records(1);
  CalibInput input;
  input.alignment_switch(1).add(calib("a.bin", "abc"), config(lut_settings()));
  const Stopwatch watch;
  EXPECT_EQ(build(input).code, 0);
  const ImageBytes files[] = {
      main_image(), main_image(), main_image(), main_image(), lut_file(), lut_file(), factory_file()};
  const std::size_t sections[] = {0, 8192, 16384, 20480, 0, 4096, 0};
  const std::uint32_t time = word_at(files[0], 20);
  EXPECT_TRUE(watch.includes(time));
  for (std::size_t i = 0; i < 7; ++i) {
    EXPECT_EQ(word_at(files[i], sections[i] + 20), time) << i;
    expect_words(part(files[i], sections[i], 60), {{24, 0x05060708}, {28, 0x01020304}, {32, 9}, {40, 10}, {44, 0}});
  }
}

TEST_F(CalibFile, OldFilesAreReplacedWhole) {
  CalibInput input;
  input.add(calib("a.bin", "abc"), config(lut_settings()));
  for (const char* const name : {"image.bin", "image_lut_section.bin", "image_factory_align_section.bin"})
    folder_.write(name, std::string(100000, 'x'));
  EXPECT_EQ(build(input).code, 0);
  EXPECT_EQ(main_image().size(), kImageSize);
  EXPECT_EQ(lut_file().size(), 4096U + 48 + 52);
  EXPECT_EQ(factory_file().size(), 16384U);
}

// --- the alignment section

TEST_F(CalibFile, AlignmentSectionNeedsRecordsAndTheSwitch) {
  struct Row {
    int records, alignment_switch;  // below 0: null
    bool section;
  };
  constexpr Row kRows[] = {{0, 1, false}, {2, 0, false}, {2, -1, false}, {2, 1, true}, {4, 255, true}};
  for (const Row& row : kRows) {
    SCOPED_TRACE(testing::Message() << row.records << " records, switch " << row.alignment_switch);
    EXPECT_EQ(de_release_alignment_records(), 0);
    if (row.records > 0) hold_alignment_records(row.records);
    CalibInput input;
    input.add("rig.xml", config());
    if (row.alignment_switch >= 0) input.alignment_switch(static_cast<std::uint8_t>(row.alignment_switch));
    EXPECT_EQ(build(input), prints_out(0, digest_trace(3)));
    const ImageBytes image = main_image();
    ASSERT_EQ(image.size(), row.section ? kImageWithAlignmentSize : kImageSize);
    expect_flash_section(image, flash::kD2d, 1);
    if (!row.section) continue;
    expect_flash_section(image, flash::kAlignment, static_cast<std::uint32_t>(row.records));
    EXPECT_TRUE(record_at(image, flash::kAlignment, 0) == ImageBytes(976, 0x11));
    EXPECT_TRUE(record_at(image, flash::kAlignment, 1) == ImageBytes(976, 0x22));
  }
}

// --- the LUT file

TEST_F(CalibFile, LutFileIsMadeForDistortTypesOneAndTwoAlone) {
  for (const char* const type : {"0", "1", "2", "3", "255"}) {
    SCOPED_TRACE(type);
    std::filesystem::remove(folder_.path(kLutName));
    CalibInput input;
    input.add("rig.xml", config({{"distort_type", type}}));
    const bool lut = type[0] == '1' || (type[0] == '2' && type[1] == '\0');
    EXPECT_EQ(build(input), prints_out(0, digest_trace(lut ? 4 : 3)));
    EXPECT_EQ(std::filesystem::exists(folder_.path(kLutName)), lut);
  }
}

// Camera 1's grid 8 x 4 from 16, 8 on, camera 0's of the same size; words 1, 2 ... and 101, 102 ...
void prepare_sections() {
  set_cam_mode(1);
  give_grid(1, counting_grid(8, 4, 1));
  give_grid(0, counting_grid(8, 4, 101));
  EXPECT_EQ(convert().code, 0);
}

TEST_F(CalibFile, LutFileHoldsDescriptorsTablesAndPreparedSectionsAsTheyStand) {
  prepare_sections();
  CalibInput input;
  input.add("rig.xml", config(lut_settings()));
  EXPECT_EQ(build(input), prints_out(0, digest_trace(4)));
  const ImageBytes file = lut_file();
  expect_flash_section(file, flash::kDirectory, 1);
  const ImageBytes entry = record_at(file, flash::kDirectory, 0);
  expect_digest(entry, 0, 16, 12);
  EXPECT_EQ(part(entry, 0, 16), part(record_at(main_image(), flash::kRectify, 0), 0, 16));
  expect_words(entry, {{28, 1}, {32, 50}, {36, 25}, {40, 16}, {44, 8}, {48, 0x44002000}, {64, 8}, {68, 4}, {72, 5}});
  EXPECT_EQ(part(entry, 40, 36), part(entry, 76, 36));
  expect_words(entry, {{112, 0x52000074}, {120, 0x00080010}, {196, 0x52080074}, {204, 0x00080010}});

  const std::size_t size = 52 + 4 * 32 * 4;
  expect_lut_data_section(file, size);
  const ImageBytes data = lut_data_record(file, 0, size);
  expect_digest(data, 12, 28, 12);
  expect_words(data, {{0, 0x4644610D}, {4, 1}, {8, 4 * 32 * 4 + 40}, {28, 8}, {32, 4}, {36, 50}, {40, 25}, {44, 0}});
  expect_words(data, {{48, 32}, {52, 1}, {52 + 4 * 4, 9}, {52 + 4 * 16, 5}});  // two tiles
  expect_words(data, {{52 + 128, 0x100001}, {52 + 256, 101}, {52 + 384, 0x100065}});
}

TEST_F(CalibFile, SectionsAreReadWithoutBeingConsumed) {
  prepare_sections();
  CalibInput input;
  input.add("rig.xml", config(lut_settings()));
  EXPECT_EQ(build(input).code, 0);
  const ImageBytes first = lut_file();
  EXPECT_EQ(build(input).code, 0);
  EXPECT_TRUE(lut_data_record(lut_file(), 0, 564) == lut_data_record(first, 0, 564));
  EXPECT_EQ(taken_sections(4)[0].words[0], 1U);
}

TEST_F(CalibFile, OtherCameraTypesStoreTwoSections) {
  prepare_sections();
  for (const char* const type : {"0", "1", "4"}) {
    CalibInput input;
    input.add("rig.xml", config(with(lut_settings(), "cam_type", type)));
    EXPECT_EQ(build(input).code, 0);
    const ImageBytes file = lut_file();
    EXPECT_EQ(word_at(record_at(file, flash::kDirectory, 0), 28), 0U);
    expect_lut_data_section(file, 52 + 2 * 32 * 4);
    EXPECT_EQ(word_at(lut_data_record(file, 0, 52), 8), 2U * 32 * 4 + 40);
  }
}

TEST_F(CalibFile, WithoutPreparedSectionsTheDigestIsStoredAllTheSame) {
  give_grid(1, counting_grid(8, 4, 1));  // not converted
  CalibInput input;
  input.add("1", config(lut_settings()));
  input.add("2", config(with(lut_settings(), "mipi_channel_status", "1")));  // another directory record, the same data
  EXPECT_EQ(build(input), prints_out(0, digest_trace(8)));
  const ImageBytes file = lut_file();
  expect_flash_section(file, flash::kDirectory, 2);
  expect_lut_data_section(file, 52);
  EXPECT_EQ(word_at(record_at(file, flash::kDirectory, 0), 28), 0U);
  expect_words(lut_data_record(file, 0, 52), {{8, 40}, {28, 8}, {32, 4}, {48, 32}});
}

TEST_F(CalibFile, ConfigurationsOfOneRectificationShareADirectoryRecord) {
  CalibInput input;
  input.add("1", config(lut_settings()));
  input.add("2", config(with(lut_settings("1"), "disp_offset", "100")));
  EXPECT_EQ(build(input), prints_out(0, digest_trace(7)));  // no data key for the second
  expect_flash_section(lut_file(), flash::kDirectory, 1);
}

// --- the factory-align file

TEST_F(CalibFile, FactoryFileIsMadeWhenTheFirstExtensionIsBin) {
  struct Row {
    const char* name;
    bool made;
  };
  constexpr Row kRows[] = {{"a.bin", true},
                           {".bin", true},
                           {"a.txt.bin", true},
                           {"a.BIN", false},
                           {"a.bin.txt", false},
                           {"bin", false},
                           {"a.bin ", false},
                           {"a.bi", false},
                           {"a.bins", false},
                           {"a.xbin", false},
                           {"a.", false},
                           {"a..bin", true},
                           {"abin", false}};
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.name);
    std::filesystem::remove(folder_.path(kFactoryName));
    CalibInput input;
    input.add(calib(row.name, "ab"), config()).add(calib("other.bin", "cd"), config());
    EXPECT_EQ(build(input), prints_out(0, digest_trace(6)));
    EXPECT_EQ(std::filesystem::exists(folder_.path(kFactoryName)), row.made);
  }
}

TEST_F(CalibFile, FactoryFileHoldsEachCalibrationFileOnce) {
  CalibInput input;
  const std::string a = calib("a.bin", "abcde"), b = calib("b.txt", "fghij");
  input.add(a, config()).add(b, config()).add(a, config()).add(folder_.path("./a.bin"), config());
  EXPECT_EQ(build(input), prints_out(0, digest_trace(12)));
  const ImageBytes file = factory_file();
  ASSERT_EQ(file.size(), 16384U);
  expect_flash_section(file, flash::factory_files(6), 3);
  EXPECT_EQ(part(file, 60, 18),
            bytes_of_text("abcde\xFF"
                          "fghij\xFF"
                          "abcde\xFF"));
}

TEST_F(CalibFile, SideFilesAreNamedWithoutTheLastFourCharacters) {
  struct Row {
    const char* image;
    const char* stem;
  };
  for (const Row& row : {Row{"picture.img", "picture"}, Row{"x.jpeg", "x."}, Row{"plain", "p"}, Row{".bin", ""}}) {
    SCOPED_TRACE(row.image);
    const TempFolder out;
    CalibInput input;
    input.add(calib("a.bin", "ab"), config(lut_settings()));
    printed_by([&] { EXPECT_EQ(gen_calib_flash_file_de(&input.record(), out.path(row.image).c_str()), 0); });
    std::vector<std::string> expected{
        row.image, std::string(row.stem) + "_lut_section.bin", std::string(row.stem) + "_factory_align_section.bin"};
    std::ranges::sort(expected);
    EXPECT_EQ(out.names(), expected);
  }
}

}  // namespace
}  // namespace vq3900::test
