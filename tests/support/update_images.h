// Calibration images for the updates of baseline and focal length, made without the builders.
#ifndef VQ3900_TESTS_SUPPORT_UPDATE_IMAGES_H
#define VQ3900_TESTS_SUPPORT_UPDATE_IMAGES_H

#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "support/calib_images.h"
#include "support/capture.h"
#include "support/config_images.h"
#include "support/de_input_text.h"
#include "support/engine_fixture.h"
#include "support/numbers.h"

namespace vq3900::test {

// Of a D2D record: what the updates look at and change.
struct D2dValues {
  float baseline;
  float f;
  std::uint32_t mask = 0xFFFFFFFF;
  std::uint32_t value = 0x12345678;
};

inline constexpr std::size_t kD2dBaseline = 36;
inline constexpr std::size_t kD2dFocal = 44;
inline constexpr std::size_t kD2dMask = 76;
inline constexpr std::size_t kD2dValue = 80;
inline constexpr std::size_t kD2cFocal = 176;

inline std::size_t record_offset(const FlashSection& section, std::size_t index) {
  return section.offset + kHeaderSize + index * section.record_size;
}

inline void put_float(ImageBytes& bytes, std::size_t offset, float value) {
  put_word(bytes, offset, bits_of(value));
}

// Bytes that tell themselves from their neighbours.
inline void put_pattern(ImageBytes& bytes, std::size_t offset, std::size_t size) {
  for (std::size_t i = 0; i < size; ++i)
    bytes.at(offset + i) = static_cast<std::uint8_t>(31 * i + offset);
}

inline void put_header(ImageBytes& image, const FlashSection& section, std::uint32_t count) {
  put_pattern(image, section.offset, kHeaderSize);
  const std::vector<Word> words{{0, section.tag},
                                {8, 60 + count * section.record_size},
                                {12, section.address},
                                {16, 18},
                                {20, 0x01020304},
                                {48, section.array_tag},
                                {52, count},
                                {56, section.record_size}};
  for (const Word& word : words)
    put_word(image, section.offset + word.offset, word.value);
}

inline void put_checksum(ImageBytes& image, const FlashSection& section) {
  const std::uint32_t length = word_at(image, section.offset + 8);
  put_word(image, section.offset + 4, section_checksum(image, section.offset, length));
}

// An image with those focal lengths in its D2C records and those values in its D2D records.
inline ImageBytes update_image(const std::vector<D2dValues>& d2d, const std::vector<float>& d2c = {500},
                               std::size_t size = kImageSize) {
  ImageBytes image(size, 0xFF);
  put_header(image, flash::kRectify, 0);
  put_header(image, flash::kD2c, static_cast<std::uint32_t>(d2c.size()));
  put_header(image, flash::kD2d, static_cast<std::uint32_t>(d2d.size()));
  for (std::size_t i = 0; i < d2c.size(); ++i) {
    const std::size_t at = record_offset(flash::kD2c, i);
    put_pattern(image, at, 328);
    put_float(image, at + kD2cFocal, d2c[i]);
    put_float(image, at + kD2cFocal + 4, d2c[i] + 0.5F);
  }
  for (std::size_t i = 0; i < d2d.size(); ++i) {
    const std::size_t at = record_offset(flash::kD2d, i);
    put_pattern(image, at, 84);
    put_float(image, at + kD2dBaseline, d2d[i].baseline);
    put_float(image, at + kD2dFocal, d2d[i].f);
    put_word(image, at + kD2dMask, d2d[i].mask);
    put_word(image, at + kD2dValue, d2d[i].value);
  }
  for (const FlashSection& section : {flash::kRectify, flash::kD2c, flash::kD2d})
    put_checksum(image, section);
  return image;
}

inline std::vector<D2dValues> three_records() {
  return {{-50, 500}, {-50.25F, 501.5F}, {-60, 640}};
}

// The D2D section alone, as a file of its own holds it.
inline ImageBytes d2d_section_of(const ImageBytes& image) {
  return part(image, flash::kD2d.offset, flash::kD2d.room);
}

// A section file's D2D records start at its beginning.
inline constexpr FlashSection d2d_alone() {
  FlashSection section = flash::kD2d;
  section.offset = 0;
  return section;
}

inline constexpr const char* kUnknownSize = "Unknown file size.";
inline constexpr const char* kNoMatch = "input fb_set error\n";
inline constexpr const char* kBadHeader = "invalid section header\n";
inline constexpr const char* kNotFixed = "Convert to fixed point error\n";

inline std::string cannot_open(const std::string& path) {
  return "Open file error: " + path + "\n";
}

// A number as the messages have it.
inline std::string number(float value) {
  char text[128];
  std::snprintf(text, sizeof text, "%f", static_cast<double>(value));
  return text;
}

// What the updates print of a record.
inline std::string original(float baseline, float f) {
  return "Original baseline: " + number(baseline) + " , f= " + number(f) + "\n";
}

inline std::string updated(float baseline, float f) {
  return "updated baseline: " + number(baseline) + " , f= " + number(f) + "\n";
}

inline std::string examined(float f) {
  return "fx =  " + number(f) + " \n";
}

inline std::string updated(float f) {
  return "updated  f= " + number(f) + "\n";
}

// A source that the test fills and a destination that is not there at the start.
class UpdateTest : public EngineTest {
 protected:
  ~UpdateTest() override {
    std::remove(source_.c_str());
    std::remove(destination_.c_str());
  }

  void give(const ImageBytes& bytes) {
    given_ = bytes;
    std::remove(source_.c_str());  // some file systems wait for the disk when a file is replaced
    std::FILE* const file = std::fopen(source_.c_str(), "wb");
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(std::fwrite(bytes.data(), 1, bytes.size(), file), bytes.size());
    EXPECT_EQ(std::fclose(file), 0);
  }

  const char* source() const { return source_.c_str(); }
  const char* destination() const { return destination_.c_str(); }
  ImageBytes result() const { return bytes_of_file(destination_); }
  bool destination_exists() const { return std::filesystem::exists(destination_); }

  Outcome baseline(float value, int index = -1) const {
    return outcome_of([&] { return update_baseline_de(source(), value, destination(), index); });
  }
  Outcome multi_baseline(const std::vector<float>& pairs) const {
    const int count = static_cast<int>(pairs.size() / 2);
    const float none = 0;
    return outcome_of(
        [&] { return update_multi_baseline_de(source(), pairs.empty() ? &none : pairs.data(), count, destination()); });
  }
  Outcome multi_fb(const std::vector<float>& pairs) const {
    const int count = static_cast<int>(pairs.size() / 2);
    const float none = 0;
    return outcome_of(
        [&] { return update_multi_fb_d2c_de(source(), pairs.empty() ? &none : pairs.data(), count, destination()); });
  }

  // That a call failed without a trace in the file system.
  void expect_nothing_written() const {
    EXPECT_FALSE(destination_exists());
    EXPECT_TRUE(bytes_of_file(source_) == given_);
  }

  // That the destination is what is expected, with the time of the call and a checksum that is right in the sections.
  void expect_result(ImageBytes expected, const std::vector<FlashSection>& sections) const {
    const ImageBytes actual = result();
    ASSERT_EQ(actual.size(), expected.size());
    for (const FlashSection& section : sections) {
      EXPECT_TRUE(watch_.includes(time_of(actual, section))) << section.name;
      put_word(expected, section.offset + 20, time_of(actual, section));
      put_checksum(expected, section);
    }
    expect_same_bytes(actual, expected);
    EXPECT_TRUE(bytes_of_file(source_) == given_);
  }

 private:
  Stopwatch watch_;
  std::string source_ = TempFile::unused_path();
  std::string destination_ = TempFile::unused_path();
  ImageBytes given_;
};

}  // namespace vq3900::test

#endif
