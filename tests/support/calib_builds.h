// What calibration images are built from, and building them.
#ifndef VQ3900_TESTS_SUPPORT_CALIB_BUILDS_H
#define VQ3900_TESTS_SUPPORT_CALIB_BUILDS_H

#include "vq3900_depth_engine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "support/byte_strings.h"
#include "support/calib_samples.h"
#include "support/capture.h"
#include "support/config_images.h"
#include "support/de_input_text.h"

namespace vq3900::test {

// --- configurations and calibrations ---------------------------------------------------------------------------------

using CalibSettings = std::vector<CalibSetting>;

// The plain configuration with some settings of its own.
inline std::string plain_text(const CalibSettings& changes = {}) {
  CalibInputText text;
  for (const CalibSettings* const settings : {&plain_settings(), &changes}) {
    for (const CalibSetting& setting : *settings)
      text.set(setting.key, setting.value);
  }
  return text.text();
}

// With a LUT of 48 x 32 samples for the cameras of 640 x 400, which starts 48 pixels to the left and 32 above.
inline CalibSettings lut_settings(const char* distort_type = "2") {
  return {{"distort_type", distort_type}, {"lut_sample_bit", "4"}, {"lut_extend_ratio", "0.125"}};
}
inline constexpr std::size_t kLutWords = 48 * 32;

inline CalibSettings with(CalibSettings settings, const std::string& key, const std::string& value) {
  settings.push_back({key, value});
  return settings;
}

inline void give_temperatures() {
  set_calib_temp_info(31.5F, 32.25F, 35.75F);
}

inline DeCalibRecordCamera_S record_of(const DeCalibCamera_S& camera) {
  DeCalibRecordCamera_S record{};
  record.width = static_cast<float>(camera.width);
  record.height = static_cast<float>(camera.height);
  record.fx = camera.fx;
  record.fy = camera.fy;
  record.cx = camera.cx;
  record.cy = camera.cy;
  std::ranges::copy(camera.distortion, record.distortion);
  record.polynomial_param = camera.polynomial_param;
  return record;
}

inline DeCalibRecord_S record_of(const CalibrateParamsMulti& calib) {
  DeCalibRecord_S record{};
  record.distortion_model = calib.distortion_model;
  record.model_override = calib.model_override;
  record.left_ir = record_of(calib.left_ir);
  record.right_ir = record_of(calib.right_ir);
  record.rgb = record_of(calib.rgb);
  std::ranges::copy(calib.ir_rotation, record.ir_rotation);
  std::ranges::copy(calib.ir_translation, record.ir_translation);
  std::ranges::copy(calib.rgb_rotation, record.rgb_rotation);
  std::ranges::copy(calib.rgb_translation, record.rgb_translation);
  return record;
}

inline const DeCalibRecord_S& parallel() {
  static const DeCalibRecord_S kRecord = record_of(parallel_rig());
  return kRecord;
}

// A folder for the files of one test.
class TempFolder {
 public:
  TempFolder() : path_(TempFile::unused_path()) { std::filesystem::create_directory(path_); }
  ~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  std::string path(const std::string& name) const { return path_ + "/" + name; }

  // Writes a file and answers its path.
  std::string write(const std::string& name, const std::string& bytes) const {
    std::ofstream(path(name), std::ios::binary) << bytes;
    return path(name);
  }

  // Names of the files that are there, in order.
  std::vector<std::string> names() const {
    std::vector<std::string> all;
    for (const auto& entry : std::filesystem::directory_iterator(path_))
      all.push_back(entry.path().filename().string());
    std::ranges::sort(all);
    return all;
  }

 private:
  std::string path_;
};

// The record that a builder takes, with everything that it points to.
class CalibInput {
 public:
  CalibInput() = default;
  CalibInput(const CalibInput&) = delete;
  CalibInput& operator=(const CalibInput&) = delete;

  // For the builder of files.
  CalibInput& add(const std::string& calib_path, const std::string& config) {
    calib_paths_.push_back(calib_path);
    configs_.push_back(config);
    return *this;
  }

  // For the builder of buffers.
  CalibInput& add(const DeCalibRecord_S& calib, const std::string& config) {
    calibs_.push_back(calib);
    configs_.push_back(config);
    return *this;
  }

  CalibInput& alignment_switch(std::uint8_t value) {
    switch_ = value;
    return *this;
  }

  // Points to what has been added by now.
  CalibFlashInput_S& record() {
    record_ = {};
    path_pointers_.clear();
    config_pointers_.clear();
    calib_pointers_.clear();
    for (const std::string& path : calib_paths_)
      path_pointers_.push_back(path.c_str());
    for (const std::string& config : configs_)
      config_pointers_.push_back(config.c_str());
    for (const DeCalibRecord_S& calib : calibs_)
      calib_pointers_.push_back(&calib);
    record_.calib_params_files = path_pointers_.data();
    record_.calib_params_file_num = static_cast<std::uint8_t>(path_pointers_.size());
    record_.config_files = config_pointers_.data();
    record_.config_file_num = static_cast<std::uint8_t>(config_pointers_.size());
    record_.calib_records = calib_pointers_.data();
    record_.calib_record_num = static_cast<std::uint8_t>(calib_pointers_.size());
    record_.alignment_switch = switch_ ? &*switch_ : nullptr;
    return record_;
  }

  std::vector<const char*>& config_pointers() { return config_pointers_; }
  std::vector<const DeCalibRecord_S*>& calib_pointers() { return calib_pointers_; }

 private:
  std::vector<std::string> calib_paths_, configs_;
  std::vector<DeCalibRecord_S> calibs_;
  std::optional<std::uint8_t> switch_;
  std::vector<const char*> path_pointers_, config_pointers_;
  std::vector<const DeCalibRecord_S*> calib_pointers_;
  CalibFlashInput_S record_{};
};

inline void hold_alignment_records(int count) {
  std::vector<DeAlignRecord_S> records(static_cast<std::size_t>(count));
  for (std::size_t i = 0; i < records.size(); ++i)
    std::ranges::fill(records[i].data, static_cast<std::uint8_t>(0x11 * (i + 1)));
  EXPECT_EQ(de_set_alignment_records(records.data(), count), 0);
}

inline void hold_optimized_entries() {
  DeDepthConfig_S entries[3] = {};
  EXPECT_EQ(set_optimized_d2d_params(entries, 3), 0);
}

// --- builds into memory ----------------------------------------------------------------------------------------------

inline constexpr int kFactorySize = 60 + 6288;                              // of one configuration
inline constexpr int kLutBytes = 52 + 4 * 4 * static_cast<int>(kLutWords);  // of one configuration's grids
inline constexpr int kLutSize = 4096 + 48 + kLutBytes;

inline constexpr const char* kPathMode = "input config params is file path\n";
inline constexpr const char* kContentMode = "input config params is file content\n";

// The caller's memory: each buffer ends where its memory ends. A size below 0 stands for a null pointer.
struct BufferSizes {
  std::int64_t main = 20480;
  int lut = -1;
  int factory = -1;
};

struct BufferBuild {
  Outcome outcome;
  std::vector<std::string> passed;  // to the callback
  ImageBytes main, lut, factory;
};

inline constexpr std::uint8_t kRubbish = 0x5A;

class CallerMemory {
 public:
  explicit CallerMemory(std::int64_t size)
      : null_(size < 0), bytes_(ImageBytes(static_cast<std::size_t>(std::max<std::int64_t>(size, 0)), kRubbish)) {}

  // The page is writable: its owner gives its bytes as they are to be read.
  std::uint8_t* data() { return null_ ? nullptr : const_cast<std::uint8_t*>(bytes_.bytes().data()); }
  ImageBytes bytes() const { return {bytes_.bytes().begin(), bytes_.bytes().end()}; }

 private:
  bool null_;
  GuardedBytes bytes_;
};

inline BufferBuild built_in_memory(CalibFlashInput_S& record, const BufferSizes& sizes = {},
                                   std::int64_t timestamp = 1700000000) {
  BufferBuild build;
  CallerMemory main{sizes.main}, lut{sizes.lut}, factory{sizes.factory};
  DeLogCallback log = [&build](const char* text) { build.passed.emplace_back(text); };
  build.outcome = outcome_of([&] {
    return gen_calib_flash_param_de(&record,
                                    reinterpret_cast<std::uint32_t*>(main.data()),
                                    &log,
                                    sizes.main,
                                    lut.data(),
                                    std::max(sizes.lut, 0),
                                    timestamp,
                                    factory.data(),
                                    std::max(sizes.factory, 0));
  });
  build.main = main.bytes();
  build.lut = lut.bytes();
  build.factory = factory.bytes();
  return build;
}

inline BufferBuild built_in_memory(CalibInput& input, const BufferSizes& sizes = {},
                                   std::int64_t timestamp = 1700000000) {
  return built_in_memory(input.record(), sizes, timestamp);
}

// Texts joined to those before.
inline std::vector<std::string> operator+(std::vector<std::string> first, const std::vector<std::string>& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

// What the callback receives of a configuration that is converted.
inline std::vector<std::string> passed_of(const char* mode = kContentMode) {
  return std::vector<std::string>{mode} + step_messages();
}

inline bool is_all(const ImageBytes& bytes, std::uint8_t value) {
  return std::ranges::all_of(bytes, [value](std::uint8_t byte) { return byte == value; });
}

// The text without the lines that digests print.
inline std::string without_digest_traces(std::string text) {
  const std::string trace = digest_trace(1);
  for (std::size_t at = text.find(trace); at != std::string::npos; at = text.find(trace, at))
    text.erase(at, trace.size());
  return text;
}

}  // namespace vq3900::test

#endif
