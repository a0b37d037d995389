// Filling a section of a calibration image with records, and closing it with its header.
#ifndef VQ3900_FLASH_SECTION_WRITER_H
#define VQ3900_FLASH_SECTION_WRITER_H

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "bytes/md5.h"
#include "flash/calib_image.h"

namespace vq3900 {

// What all section headers of an image share.
struct HeaderStamp {
  std::uint32_t time = 0;
  std::array<std::uint64_t, 3> serial_number{};
};

// How far a section reaches; the CRC-32 covers its length.
struct SectionExtent {
  std::uint32_t count = 0;
  std::uint32_t record_size = 0;
  std::uint32_t length = 0;
};

// Writes the header of a section whose records are complete.
void close_section(std::span<std::uint8_t> section, const CalibSection& kind, const SectionExtent& extent,
                   const HeaderStamp& stamp);

// Places records that are known by their digests. Works on an image that outlives it.
class SectionWriter {
 public:
  SectionWriter(std::span<std::uint8_t> image, const CalibSection& kind)
      : bytes_(image.subspan(kind.offset, kind.room)), kind_(kind) {}

  const char* name() const { return kind_.name; }
  bool empty() const { return placed_.empty(); }

  // Whether a record with that digest is placed.
  bool has(const Md5Digest& digest) const;

  // Room for the next record, which becomes known by the digest; empty when the section is full.
  std::span<std::uint8_t> next(const Md5Digest& digest);

  void close(const HeaderStamp& stamp);

 private:
  std::span<std::uint8_t> bytes_;
  CalibSection kind_;
  std::vector<Md5Digest> placed_;
};

}  // namespace vq3900

#endif
