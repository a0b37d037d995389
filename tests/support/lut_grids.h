// Displacement grids for the rectification LUT: samples, the words they are converted to, and the sections as a caller
// gets them. All arrays are heap arrays of exactly their size, so that a sanitizer sees every access beside them.
#ifndef VQ3900_TESTS_SUPPORT_LUT_GRIDS_H
#define VQ3900_TESTS_SUPPORT_LUT_GRIDS_H

#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "state/engine.h"
#include "support/capture.h"

namespace vq3900::test {

using Words = std::vector<std::uint32_t>;

inline constexpr std::uint32_t kUnwritten = 0xEEEEEEEE;
inline constexpr const char* kConvertsDx = "convert lut_dx from float to register \n";
inline constexpr const char* kConvertsDy = "convert lut_dy from float to register \n";
inline constexpr const char* kConvertsEnd = "convert lut_dx and lut_dy end \n";
inline const std::string kConverted = std::string(kConvertsDx) + kConvertsDy + kConvertsEnd;

inline std::string lut_step_failed(int camera) {
  return "convert_rectify_lut_float_to_register error!,camera id = " + std::to_string(camera) + " \n";
}

inline std::string grid_missing(int camera) {
  return "cam_id= " + std::to_string(camera) + ", dx,dy id null!\n";
}

// The displacement that is converted to the word.
inline double displacement(std::uint32_t word) {
  return std::ldexp(static_cast<double>(word), -24);
}

// A descriptor without arrays.
inline RectifyLutInfo lut_info(std::uint32_t width, std::uint32_t height) {
  RectifyLutInfo info{};
  info.lut_x_start = 16;
  info.lut_y_start = 8;
  info.lut_fx = 512.5F;
  info.lut_fy = 600.25F;
  info.lut_cx = 320.75F;
  info.lut_cy = 240.125F;
  info.lut_width = width;
  info.lut_height = height;
  info.sample_rate_bit = 5;
  return info;
}

struct LutGrid {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::vector<double> dx;
  std::vector<double> dy;

  RectifyLutInfo info() { return info(lut_info(width, height)); }

  // A descriptor with the arrays of this grid.
  RectifyLutInfo info(RectifyLutInfo described) {
    described.dx = dx.data();
    described.dy = dy.data();
    return described;
  }
};

// Samples that are converted to first, first + 1 and so on, row by row; those of dy to 0x100000 more.
inline LutGrid counting_grid(std::uint32_t width, std::uint32_t height, std::uint32_t first) {
  LutGrid grid{width, height, std::vector<double>(width * height), std::vector<double>(width * height)};
  for (std::uint32_t i = 0; i < width * height; ++i) {
    grid.dx[i] = displacement(first + i);
    grid.dy[i] = displacement(first + i + 0x100000);
  }
  return grid;
}

// Where the sample of that row-major index stands among the words.
inline std::size_t word_index(std::uint32_t width, std::size_t sample) {
  const std::size_t x = sample % width, y = sample / width;
  return (y / 4 * (width / 4) + x / 4) * 16 + y % 4 * 4 + x % 4;
}

inline Words words_of(std::uint32_t width, const std::vector<double>& samples) {
  Words words(samples.size());
  for (std::size_t i = 0; i < samples.size(); ++i) {
    words[word_index(width, i)] = static_cast<std::uint32_t>(std::llround(std::ldexp(samples[i], 24))) & 0xFFFFFF;
  }
  return words;
}

// The words as they come out when that many are asked for.
inline Words resized(Words words, std::size_t length) {
  words.resize(length);
  return words;
}

// Gives a camera the grid, with parameters that every register takes.
inline std::int32_t set_map(std::uint32_t camera, const RectifyLutInfo& info) {
  const RectifyIntrinsic rectified{512, 512, 320, 240, 640, 480};
  const float rotation[]{1, 0, 0, 0, 1, 0, 0, 0, 1};
  const float intrinsic[]{512, 512, 0, 0};
  return set_rectify_params_map(camera, &rectified, &info, rotation, intrinsic);
}

// The library has its own copy: nothing of the caller's arrays is left when this returns.
inline void give_grid(std::uint32_t camera, LutGrid grid) {
  EXPECT_EQ(set_map(camera, grid.info()), 0);
}

inline void set_cam_mode(std::uint32_t mode) {
  engine().basic.cam_mode = mode;
}

inline Outcome convert() {
  return outcome_of(convert_rectify_params_to_register_elements);
}

inline std::uint32_t lut_length() {
  std::uint32_t length = kUnwritten;
  EXPECT_EQ(de_get_lut_len(&length), 0);
  return length;
}

struct SectionCopy {
  std::uint32_t address = kUnwritten;
  std::uint32_t count = kUnwritten;
  Words words;
  bool operator==(const SectionCopy&) const = default;
};

inline void PrintTo(const SectionCopy& section, std::ostream* stream) {
  *stream << std::hex << "0x" << section.address << std::dec << ", " << section.count << " words, " << std::hex;
  for (const std::uint32_t word : section.words)
    *stream << " " << word;
  *stream << std::dec;
}

// The first 2 or 4 sections as a caller gets them whose arrays have one word a sample.
inline std::vector<SectionCopy> taken_sections(std::uint8_t number) {
  std::vector<SectionCopy> copies(number);
  std::vector<LutSection> out;
  for (SectionCopy& copy : copies) {
    copy.words.assign(lut_length(), kUnwritten);
    out.push_back({copy.address, copy.count, copy.words.data()});
  }
  EXPECT_EQ(outcome_of([&] { return de_copy_rectify_lut_register_section(out.data(), number); }), silent_success());
  for (std::size_t i = 0; i < number; ++i) {
    EXPECT_EQ(out[i].data, copies[i].words.data());
    copies[i].address = out[i].address;
    copies[i].count = out[i].count;
  }
  return copies;
}

// A section of which there is nothing: its words are as the caller had them.
inline SectionCopy nothing(std::size_t length) {
  return {0, 0, Words(length, kUnwritten)};
}

}  // namespace vq3900::test

#endif
