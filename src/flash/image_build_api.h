// Building a calibration image, wherever its calibrations come from and its bytes go: the records of one configuration
// after the other, then the headers.
#ifndef VQ3900_FLASH_IMAGE_BUILD_API_H
#define VQ3900_FLASH_IMAGE_BUILD_API_H

#include "vq3900_depth_engine.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "flash/build_log_api.h"
#include "flash/calib_records.h"
#include "flash/lut_file.h"
#include "flash/section_writer.h"

namespace vq3900 {

inline constexpr std::int32_t kTooManyRecords = -5;

// Releases the optimized D2D entries on every exit of a build.
class OptimizedD2dRelease {
 public:
  OptimizedD2dRelease() = default;
  OptimizedD2dRelease(const OptimizedD2dRelease&) = delete;
  OptimizedD2dRelease& operator=(const OptimizedD2dRelease&) = delete;
  ~OptimizedD2dRelease() { release_optimized_d2d_params(); }
};

// Whether the image has the alignment section.
bool has_alignment_section(const CalibFlashInput_S& input);
std::size_t calib_image_size(const CalibFlashInput_S& input);

// The header stamp of images made now.
HeaderStamp header_stamp(std::int64_t time);

// Says that a section is full, and answers the code for it.
std::int32_t too_many_records(const BuildLog& log, const char* section);

// A rectification record with its digest, and its bytes.
struct DigestedRectify {
  RectifyRecord record;
  std::array<std::uint8_t, kRectifySection.record_size> bytes{};
};
DigestedRectify digested_rectify(const ConvertedCalibration& converted);

// Adds the LUT of a configuration that wants one, unless its rectification has one.
std::int32_t add_lut(const RectifyRecord& rectify, LutFile& luts, const BuildLog& log);

class ImageBuild {
 public:
  ImageBuild(const CalibFlashInput_S& input, const BuildLog& log);

  // Adds the records of the configuration that was loaded and converted last. Before the first LUT the step is asked,
  // and ends the build with what it answers unless that is 0.
  std::int32_t add(const ConvertedCalibration& converted, const std::function<std::int32_t()>& before_lut);

  // Must come before the next conversion, which puts its LUT where the one that was added lies.
  void prepare_next() { luts_.keep_words(); }

  std::size_t main_size() const { return main_.size(); }
  // The finished main image; the object has none any more.
  std::vector<std::uint8_t> finish_main(const HeaderStamp& stamp);

  // Bytes of the LUT file: 0 when no configuration wants one.
  std::size_t lut_size() const { return luts_.directory().empty() ? 0 : luts_.size(); }
  // Writes the finished LUT file, which has that size.
  void finish_luts(const HeaderStamp& stamp, std::span<std::uint8_t> to);

 private:
  std::vector<std::uint8_t> main_;
  SectionWriter rectify_;
  SectionWriter d2c_;
  SectionWriter d2d_;
  LutFile luts_;
  BuildLog log_;
  bool alignment_;
};

}  // namespace vq3900

#endif
