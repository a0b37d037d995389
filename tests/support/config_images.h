// Configuration images in tests: what they are built from, and looking at their bytes.
#ifndef VQ3900_TESTS_SUPPORT_CONFIG_IMAGES_H
#define VQ3900_TESTS_SUPPORT_CONFIG_IMAGES_H

#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "support/capture.h"
#include "support/de_input_text.h"

#if defined(__unix__)
#include <sys/resource.h>

#include <csignal>
#endif

namespace vq3900::test {

using ImageBytes = std::vector<std::uint8_t>;

// --- what images are built from

inline std::string example(const std::string& name) {
  return std::string(VQ3900_EXAMPLES) + "/" + name;
}

inline std::string groups_head(int count, const std::string& version) {
  return "[basic]\nnum = " + std::to_string(count) + "\nversion = " + version + "\n";
}

// D2C groups that differ in their description, d2c 1, d2c 2, ...
inline std::string d2c_groups_text(int count, const std::string& version = "1.0.2.5") {
  std::string text = groups_head(count, version);
  for (int i = 1; i <= count; ++i) {
    const std::string number = std::to_string(i);
    text += "[group" + number + "]\ndesc = d2c " + number +
            "\nres_chop_out = {11,12}\nres_d2c_in = {13,14}\nres_d2c_valid = {15,16}\nres_depth = {17,18}\n"
            "res_rgb = {19,20}\nscale = 2\nextend = {21,22,23,24}\nmipi_channel_status = 1\n";
  }
  return text;
}

// IR-pre groups that differ in their target brightness, 1, 2, ..., and share their description.
inline std::string ir_pre_groups_text(int count, const std::string& version = "1.0.2.5") {
  std::string text = groups_head(count, version);
  for (int i = 1; i <= count; ++i) {
    const std::string number = std::to_string(i);
    text += "[group" + number + "]\ndpu_desc = same for all\ntarget_brightness = " + number +
            "\nexp_time_range = {1,2,3,4}\ngain_range = {5,6,7,8}\nlaser_current_range = {9,10,11,12}\n"
            "target_th = 13\ncenter_weight = 14\nskip_frame = 15\nsmooth_steps = 16\ndelay_ms = 17\n"
            "meter_method = 18\nexp_en = 1\ngain_en = 0\nldm_power_en = 1\nroi_size = {19,20}\nbox_cnt = {21,22}\n"
            "box_weight_16 = {1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16}\n";
  }
  return text;
}

// The record of a build, with the paths that it points to.
class ConfigInput {
 public:
  ConfigInput(std::vector<std::string> dpu, const std::string& d2c, const std::string& ir_pre) : dpu_(std::move(dpu)) {
    for (const std::string& path : dpu_)
      paths_.push_back(path.c_str());
    record_.dpu_config_paths = paths_.data();
    record_.dpu_config_count = static_cast<std::uint8_t>(paths_.size());
    set_path(record_.d2c_config_path, d2c);
    set_path(record_.ir_pre_config_path, ir_pre);
  }
  ConfigInput(const ConfigInput&) = delete;
  ConfigInput& operator=(const ConfigInput&) = delete;

  // With the sample groups, and with all samples.
  explicit ConfigInput(std::vector<std::string> dpu)
      : ConfigInput(std::move(dpu), example("d2c_groups.ini"), example("ir_pre_groups.ini")) {}
  ConfigInput() : ConfigInput({example("stereo_1280x800.ini"), example("mono_640x480.ini")}) {}

  de_config_flash_input& record() { return record_; }
  const char*& path(std::size_t index) { return paths_.at(index); }

 private:
  // A path of 256 bytes takes the whole field, without a terminator.
  static void set_path(char (&field)[256], const std::string& path) {
    ASSERT_LE(path.size(), sizeof field);
    std::copy(path.begin(), path.end(), field);
  }

  std::vector<std::string> dpu_;
  std::vector<const char*> paths_;
  de_config_flash_input record_{};
};

// A path for a file that a test creates, gone at the end of its scope.
class OutputPath {
 public:
  OutputPath() : path_(TempFile::unused_path()) {}
  ~OutputPath() { std::remove(path_.c_str()); }
  OutputPath(const OutputPath&) = delete;
  OutputPath& operator=(const OutputPath&) = delete;

  const std::string& text() const { return path_; }
  const char* c_str() const { return path_.c_str(); }

 private:
  std::string path_;
};

#if defined(__unix__)
// While it lives, a file of this process that would grow beyond so many bytes is cut short, as on a full disk.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes) : old_handler_(std::signal(SIGXFSZ, SIG_IGN)) {
    EXPECT_EQ(getrlimit(RLIMIT_FSIZE, &old_), 0);
    const rlimit limit{bytes, old_.rlim_max};
    EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
  }
  ~FileSizeLimit() {
    setrlimit(RLIMIT_FSIZE, &old_);
    std::signal(SIGXFSZ, old_handler_);
  }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;

 private:
  rlimit old_{};
  void (*old_handler_)(int);
};
#endif

// What the digests of so many items print.
inline std::string digest_trace(int count) {
  std::string text;
  for (int i = 0; i < count; ++i) {
    text +=
        "Md5_gen step 1!\nMd5_gen step 2!\nMd5_gen step 3!\nMd5_gen step 4!\nstart MD5Encode!\nMD5Encode 1!\n"
        "MD5Encode 2!\nMD5Encode 3!\nMD5Encode done!\nMd5_gen end!\n";
  }
  return text;
}

// --- bytes of images

// The bytes of a file; one that cannot be opened fails the test.
inline ImageBytes bytes_of_file(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) ADD_FAILURE() << "cannot open " << path;
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

inline std::uint32_t word_at(const ImageBytes& bytes, std::size_t offset) {
  std::uint32_t word = 0;
  for (std::size_t i = 4; i > 0; --i)
    word = word << 8 | bytes.at(offset + i - 1);
  return word;
}

inline void put_word(ImageBytes& bytes, std::size_t offset, std::uint32_t word) {
  for (std::size_t i = 0; i < 4; ++i)
    bytes.at(offset + i) = static_cast<std::uint8_t>(word >> (8 * i));
}

inline ImageBytes part(const ImageBytes& bytes, std::size_t offset, std::size_t size) {
  if (offset + size > bytes.size()) {
    ADD_FAILURE() << offset << " + " << size << " is behind the end, " << bytes.size();
    return {};
  }
  const auto first = bytes.begin() + static_cast<std::ptrdiff_t>(offset);
  return {first, first + static_cast<std::ptrdiff_t>(size)};
}

// Characters up to the first zero.
inline std::string text_at(const ImageBytes& bytes, std::size_t offset, std::size_t room) {
  const ImageBytes field = part(bytes, offset, room);
  return {field.begin(), std::find(field.begin(), field.end(), 0)};
}

// Compares whole images without printing them.
inline void expect_same_bytes(const ImageBytes& actual, const ImageBytes& expected) {
  ASSERT_EQ(actual.size(), expected.size());
  for (std::size_t i = 0; i < actual.size(); ++i)
    ASSERT_EQ(actual[i], expected[i]) << "byte " << i;
}

// --- files built

inline ImageBytes config_image(ConfigInput& input) {
  const OutputPath path;
  printed_by([&] { EXPECT_TRUE(gen_depth_engine_config_flash_file_de(&input.record(), path.c_str())); });
  return bytes_of_file(path.text());
}

inline void load_and_apply(const std::string& config) {
  EXPECT_EQ(load_de_input_configs(config.c_str()), 0) << config;
  EXPECT_EQ(set_depth_engine_config(), 0) << config;
}

inline ImageBytes sample_register_file() {
  const OutputPath path;
  load_and_apply(example("stereo_1280x800.ini"));
  EXPECT_TRUE(gen_depth_engine_config_flash_file(path.c_str()));
  return bytes_of_file(path.text());
}

inline ImageBytes sample_snapshot() {
  const OutputPath path;
  load_and_apply(example("stereo_1280x800.ini"));
  EXPECT_EQ(de_export_config_params_to_file(path.c_str()), 0);
  return bytes_of_file(path.text());
}

}  // namespace vq3900::test

#endif
