// The calibration image in the caller's memory.
#include <algorithm>
#include <cstring>
#include <exception>
#include <span>
#include <string>
#include <vector>

#include "bytes/md5_gen_api.h"
#include "flash/calib_steps_api.h"
#include "flash/image_build_api.h"
#include "modules/d2d.h"
#include "platform/clock.h"
#include "platform/diagnostics.h"
#include "regs/steps.h"
#include "state/engine.h"

namespace {

using vq3900::BuildLog;
using vq3900::ConvertedCalibration;

constexpr int32_t kLutBuffer = -4;

constexpr vq3900::CalibWording kWording{
    {"error: load_input_configs, config_num=%d,error_code=%d \n", "error: load_input_configs failed\n"},
    {"error: set_calibrate_params_multi for config number= %d, error code=%d\n",
     "error: set_calibrate_params_multi failed\n"},
    {"error: align_ir_ir_rgb_params_to_register_converter for config number=%d, error code=%d\n",
     "error: align_ir_ir_rgb_params_to_register_converter failed\n"},
};

// A buffer of the caller: null, or `size` bytes.
struct CallerBuffer {
  const char* name;
  uint8_t* data;
  int64_t size;

  bool wanted() const { return data != nullptr; }
  std::span<uint8_t> bytes() const {
    return {data, wanted() && size > 0 ? static_cast<std::size_t>(size) : std::size_t{0}};
  }
  bool holds(std::size_t needed) const { return size >= 0 && static_cast<uint64_t>(size) >= needed; }
  void clear() const { std::ranges::fill(bytes(), uint8_t{0xFF}); }
  void take(std::span<const uint8_t> taken) const { std::ranges::copy(taken, data); }
};

// Says that a buffer is too small, and answers the code for it.
int32_t too_small(const CallerBuffer& buffer, std::size_t needed, int32_t code, const BuildLog& log) {
  log.say(std::string{"error: "} + buffer.name + " too small, size=" + std::to_string(buffer.size) +
          ", needed=" + std::to_string(needed) + "\n");
  return code;
}

// The cameras of every configuration; empty while nobody wants them.
class FactoryAlign {
 public:
  FactoryAlign(const CallerBuffer& buffer, std::size_t configurations) : buffer_(buffer) {
    using vq3900::kFactoryRecordSection;
    if (buffer.wanted()) {
      bytes_.assign(vq3900::kSectionHeaderSize + configurations * kFactoryRecordSection.record_size, 0xFF);
    }
  }

  std::size_t size() const { return bytes_.size(); }
  bool fits() const { return !buffer_.wanted() || buffer_.holds(size()); }

  void add(const DeCalibRecord_S& calib) {
    if (!buffer_.wanted()) return;
    for (const DeCalibRecordCamera_S* camera : {&calib.left_ir, &calib.right_ir, &calib.rgb}) {
      if (!vq3900::has_image_size(*camera)) vq3900::print_out("input params is invalid!\n");
    }
    const auto record = vq3900::factory_record(calib, vq3900::engine().calib_input);
    const std::size_t record_size = vq3900::kFactoryRecordSection.record_size;
    const auto to = std::span{bytes_}.subspan(vq3900::kSectionHeaderSize + count_ * record_size, record_size);
    vq3900::write_record(vq3900::factory_record_layout(), record, to);
    vq3900::Md5_gen(&to[vq3900::kKeyOffset], to.data(), vq3900::kFactoryKeySize);
    ++count_;
  }

  void finish(const vq3900::HeaderStamp& stamp) {
    if (!buffer_.wanted()) return;
    const auto length = static_cast<uint32_t>(bytes_.size());
    vq3900::close_section(
        bytes_, vq3900::kFactoryRecordSection, {count_, vq3900::kFactoryRecordSection.record_size, length}, stamp);
    buffer_.take(bytes_);
  }

 private:
  CallerBuffer buffer_;
  std::vector<uint8_t> bytes_;
  uint32_t count_ = 0;
};

struct CallerBuffers {
  CallerBuffer main;
  CallerBuffer lut;
  CallerBuffer factory;
};

// The caller's buffer for the LUT file, filled with 0xFF from its first use on. Where the file will lie that waits while
// nobody can look: after the last configuration's LUT only a failure calls the caller back.
class LutBuffer {
 public:
  LutBuffer(const CallerBuffer& buffer, const BuildLog& log) : buffer_(buffer), log_(log) {}
  LutBuffer(const LutBuffer&) = delete;
  LutBuffer& operator=(const LutBuffer&) = delete;
  ~LutBuffer() {
    if (used_) fill_behind(0);
  }

  // The step before a LUT: there must be a buffer for it.
  int32_t use(bool by_the_last) {
    if (!buffer_.wanted()) {
      log_.say("error: lut_section_buffer not initialized\n");
      return kLutBuffer;
    }
    used_ = true;
    if (!by_the_last) fill_behind(0);
    return VQ3900_OK;
  }

  bool holds(std::size_t file_size) const { return file_size == 0 || buffer_.holds(file_size); }

  const CallerBuffer& buffer() const { return buffer_; }

  // Makes room for the finished file.
  std::span<uint8_t> room(std::size_t file_size) {
    if (used_) fill_behind(file_size);
    return {buffer_.data, file_size};
  }

 private:
  void fill_behind(std::size_t file_size) {
    if (!filled_) std::ranges::fill(buffer_.bytes().subspan(file_size), uint8_t{0xFF});
    filled_ = true;
  }

  CallerBuffer buffer_;
  BuildLog log_;
  bool used_ = false;
  bool filled_ = false;
};

// Closes all sections and hands them over, all or none.
int32_t hand_over(vq3900::ImageBuild& image, LutBuffer& luts, FactoryAlign& factory, const CallerBuffer& main,
                  int64_t timestamp, const BuildLog& log) {
  const int64_t now = vq3900::calendar_time();
  const vq3900::HeaderStamp stamp = vq3900::header_stamp(timestamp >= 1 ? timestamp : now);
  const std::size_t lut_size = image.lut_size();
  if (!luts.holds(lut_size)) return too_small(luts.buffer(), lut_size, kLutBuffer, log);
  const std::span<uint8_t> lut_room = luts.room(lut_size);
  const std::vector<uint8_t> main_image = image.finish_main(stamp);
  main.take(main_image);
  image.finish_luts(stamp, lut_room);
  factory.finish(vq3900::header_stamp(now));  // whatever the timestamp
  return VQ3900_OK;
}

int32_t build(const CalibFlashInput_S& input, const CallerBuffers& buffers, int64_t timestamp, const BuildLog& log) {
  vq3900::ImageBuild image{input, log};
  FactoryAlign factory{buffers.factory, input.config_file_num};
  const std::size_t image_size = image.main_size();
  if (!buffers.main.holds(image_size)) return too_small(buffers.main, image_size, VQ3900_ERROR_ARGUMENT, log);
  if (!factory.fits()) return too_small(buffers.factory, factory.size(), VQ3900_ERROR_ARGUMENT, log);
  LutBuffer luts{buffers.lut, log};
  buffers.main.clear();
  buffers.factory.clear();
  // A conversion may keep the reference plane of the one before it: the first of an image finds none, so that the same
  // input gives the same image.
  vq3900::clear_depth_constants(vq3900::engine().registers);

  for (std::size_t i = 0; i < input.config_file_num; ++i) {
    image.prepare_next();
    ConvertedCalibration converted;
    const bool last = i + 1 == input.config_file_num;
    const int32_t code =
        vq3900::run_steps([&] { return vq3900::convert_calibration(input, i, kWording, log, converted); },
                          [&] { return image.add(converted, [&] { return luts.use(last); }); });
    if (code != VQ3900_OK) return code;
    factory.add(*input.calib_records[i]);
  }
  return hand_over(image, luts, factory, buffers.main, timestamp, log);
}

}  // namespace

// NOLINTNEXTLINE(readability-non-const-parameter): the file buffer is written as bytes
int32_t gen_calib_flash_param_de(const CalibFlashInput_S* input, uint32_t* file_buffer, DeLogCallback* callback,
                                 int64_t file_buffer_size, void* lut_buffer, int lut_buffer_size, int64_t timestamp,
                                 void* factory_align_buffer, int factory_align_buffer_size) {
  const vq3900::OptimizedD2dRelease release;
  if (input == nullptr) return VQ3900_ERROR_ARGUMENT;
  vq3900::CallerCallback caller{callback};
  try {
    const BuildLog log{caller};
    if (const int32_t code = vq3900::check_calibrations(*input, log); code != VQ3900_OK) return code;
    if (file_buffer == nullptr) return VQ3900_ERROR_ARGUMENT;
    const CallerBuffers buffers{
        {"file buffer", reinterpret_cast<uint8_t*>(file_buffer), file_buffer_size},
        {"lut_section_buffer", static_cast<uint8_t*>(lut_buffer), lut_buffer_size},
        {"factory align buffer", static_cast<uint8_t*>(factory_align_buffer), factory_align_buffer_size},
    };
    return build(*input, buffers, timestamp, log);
  } catch (const std::bad_alloc&) {
    if (caller.threw()) throw;
    return VQ3900_ERROR_ARGUMENT;
  }
}
