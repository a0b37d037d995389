#include "calib/calib_image_build.h"

#include <algorithm>
#include <cstdio>
#include <string_view>

#include "flash/calib_image.h"
#include "progress_bar.h"
#include "stdout_capture.h"

namespace vq3900::tool {

namespace {

// Follows a build by its messages: every configuration begins with the same one.
class BuildProgress {
 public:
  BuildProgress(std::size_t configs, const StreamCapture& terminal, bool shown)
      : configs_(configs), terminal_(terminal), shown_(shown) {}

  void take(std::string_view message) {
    if (message.starts_with("input config params is ")) ++begun_;
    if (!shown_) return;
    const std::size_t done = begun_ == 0 ? 0 : begun_ - 1;
    terminal_.write_through(std::string(kStartOver) + progress_line(done, kPasses * configs_, message));
  }

  void finish() const {
    if (shown_) terminal_.write_through(std::string(kStartOver));
  }

  std::size_t last_config() const { return begun_ == 0 ? 0 : (begun_ - 1) % configs_; }

 private:
  static constexpr std::size_t kPasses = 2;  // the LUT file's size, then the image

  std::size_t configs_;
  const StreamCapture& terminal_;
  bool shown_;
  std::size_t begun_ = 0;
};

// What the library takes, pointing into what it holds.
class FlashInput {
 public:
  explicit FlashInput(const CalibImageParts& parts) : alignment_(parts.alignment.empty() ? 0 : 1) {
    for (const std::string& config : parts.configs)
      configs_.push_back(config.c_str());
    for (const StereoCalibration& calibration : parts.calibrations)
      records_.push_back(to_calib_record(calibration));
    for (const DeCalibRecord_S& record : records_)
      pointers_.push_back(&record);
    input_.config_files = configs_.data();
    input_.config_file_num = static_cast<std::uint8_t>(configs_.size());
    input_.calib_records = pointers_.data();
    input_.calib_record_num = static_cast<std::uint8_t>(pointers_.size());
    input_.alignment_switch = &alignment_;
  }
  FlashInput(const FlashInput&) = delete;
  FlashInput& operator=(const FlashInput&) = delete;

  const CalibFlashInput_S* get() const { return &input_; }

 private:
  std::vector<const char*> configs_;
  std::vector<DeCalibRecord_S> records_;
  std::vector<const DeCalibRecord_S*> pointers_;
  std::uint8_t alignment_;
  CalibFlashInput_S input_{};
};

void hand_over_surroundings(const CalibImageParts& parts) {
  const auto& [word0, word1, word2] = parts.serial_number;
  set_sn(&word0, &word1, &word2);
  set_calib_temp(parts.temperatures.left, parts.temperatures.right, parts.temperatures.ldm);
  de_set_alignment_records(parts.alignment.data(), static_cast<std::int32_t>(parts.alignment.size()));
}

// The size of the LUT file; 0 when it cannot be told.
std::uint32_t lut_size(const FlashInput& input, DeLogCallback& log) {
  std::uint32_t size = 0;
  const StdoutCapture out;  // dropped: the build says the same again
  const StderrCapture err;
  get_lut_section_buffer_size(input.get(), &size, &log);
  return size;
}

void run_build(const FlashInput& input, const CalibImageParts& parts, DeLogCallback& log, CalibImageBuild& build) {
  const std::uint32_t luts = lut_size(input, log);
  std::uint32_t size = 0;
  get_file_buffer_size(input.get(), &size);
  std::vector<std::uint32_t> main(size / sizeof(std::uint32_t));
  build.luts.resize(luts);
  build.factory.resize(kSectionHeaderSize + parts.configs.size() * kFactoryRecordSection.record_size);
  build.code = gen_calib_flash_param_de(input.get(),
                                        main.data(),
                                        &log,
                                        size,
                                        luts == 0 ? nullptr : build.luts.data(),
                                        static_cast<int>(luts),
                                        parts.timestamp,
                                        build.factory.data(),
                                        static_cast<int>(build.factory.size()));
  const auto* const bytes = reinterpret_cast<const std::uint8_t*>(main.data());
  build.main.assign(bytes, bytes + size);
  if (build.luts.size() <= kLutDirectoryRoom) build.luts.clear();
}

}  // namespace

CalibImageBuild build_calib_image(const CalibImageParts& parts) {
  CalibImageBuild build;
  const FlashInput input(parts);
  hand_over_surroundings(parts);
  const bool terminal = is_terminal(stderr);
  StderrCapture err;
  BuildProgress progress(parts.configs.size(), err, terminal);
  DeLogCallback log = [&](const char* text) { progress.take(text); };
  StdoutCapture out;
  run_build(input, parts, log, build);
  build.library_output = out.text();
  progress.finish();
  build.library_output += err.text();
  build.last_config = progress.last_config();
  de_release_alignment_records();
  return build;
}

}  // namespace vq3900::tool
