// Looking into the sections of a calibration image that is there, and changing them. Nothing in the image is trusted.
#ifndef VQ3900_FLASH_IMAGE_UPDATE_H
#define VQ3900_FLASH_IMAGE_UPDATE_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "flash/calib_image.h"

namespace vq3900 {

// The records of a section whose header fits the section.
class SectionRecords {
 public:
  // Nothing when the header's numbers reach beyond the section, or its records are smaller than what is looked at.
  static std::optional<SectionRecords> find(std::span<std::uint8_t> section, std::uint32_t least_record_size);

  std::size_t count() const { return count_; }
  std::span<std::uint8_t> operator[](std::size_t index) const {
    return section_.subspan(kSectionHeaderSize + index * record_size_, record_size_);
  }

  // Stamps the header with the time and a fresh CRC-32.
  void restamp(std::uint32_t time) const;

  // Fills what lies behind the records with 0xFF.
  void clear_rest() const;

 private:
  std::span<std::uint8_t> section_;
  std::size_t count_ = 0;
  std::size_t record_size_ = 0;
  std::size_t length_ = 0;  // what the CRC-32 covers
};

D2dRecord read_d2d_record(std::span<const std::uint8_t> bytes);
void write_d2d_record(const D2dRecord& record, std::span<std::uint8_t> bytes);

// The focal length of a D2C record: the first number of its depth intrinsics, and the second when it is set.
float d2c_focal_length(std::span<const std::uint8_t> record);
void set_d2c_focal_length(float f, std::span<std::uint8_t> record);

// How much of a record the updates look at and change.
inline constexpr std::uint32_t kLeastD2dRecord = 84;
inline constexpr std::uint32_t kLeastD2cRecord = 184;

// A focal length in pixels with the baseline that goes with it.
struct FocalBaseline {
  float f = 0;
  float baseline = 0;
};

constexpr double kPairTolerance = 1.0;    // of the pair looked up for a record
constexpr double kRecordTolerance = 6.0;  // of the record looked up for a pair

// Whether two focal lengths lie less than the tolerance apart.
bool matches(float f, float other, double tolerance);

// The first pair that matches a record's focal length, or null.
const FocalBaseline* find_pair(std::span<const FocalBaseline> pairs, float f);

}  // namespace vq3900

#endif
