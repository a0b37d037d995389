// The LUT file beside a calibration image: a directory of the configurations' LUTs, and the grids that they share.
#ifndef VQ3900_FLASH_LUT_FILE_H
#define VQ3900_FLASH_LUT_FILE_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "bytes/md5.h"
#include "flash/calib_image.h"
#include "flash/section_writer.h"
#include "platform/raw_vector.h"
#include "state/rectify_lut_state.h"

namespace vq3900 {

class LutFile {
 public:
  LutFile() : directory_bytes_(kLutDirectoryRoom, 0xFF), directory_(directory_bytes_, kLutDirectorySection) {}
  LutFile(const LutFile&) = delete;
  LutFile& operator=(const LutFile&) = delete;

  SectionWriter& directory() { return directory_; }
  const SectionWriter& directory() const { return directory_; }

  // Whether a grid with that digest is stored. All six places count, an unused one with a digest of zeros.
  bool has_data(const Md5Digest& digest) const;

  // Stores the words of the sections behind the header; words that are not there are 0. False: no place or no room.
  bool add_data(const LutDataHeader& header, std::span<const HeldSection> sections);

  // Bytes of the finished file: those of the directory alone while it has no record.
  std::size_t size() const;

  // Closes both sections and writes them, of size() bytes.
  void finish(const HeaderStamp& stamp, std::span<std::uint8_t> to);

 private:
  std::vector<std::uint8_t> directory_bytes_;
  SectionWriter directory_;
  RawVector<std::uint8_t> data_ = RawVector<std::uint8_t>(kShortHeaderSize, 0xFF);
  std::array<Md5Digest, kMostLutData> stored_{};
  std::size_t stored_count_ = 0;
};

}  // namespace vq3900

#endif
