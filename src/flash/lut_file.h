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
#include "state/rectify_lut_state.h"

namespace vq3900 {

// The memory of the largest file.
inline constexpr std::size_t kLargestLutFile = std::size_t{kLutDirectoryRoom} + kLutDataRoom;

class LutFile {
 public:
  // The file's memory. A file that it does not hold is counted but not written.
  explicit LutFile(std::span<std::uint8_t> memory)
      : memory_(memory),
        directory_bytes_(kLutDirectoryRoom, 0xFF),
        directory_(directory_bytes_, kLutDirectorySection) {}
  LutFile(const LutFile&) = delete;
  LutFile& operator=(const LutFile&) = delete;

  SectionWriter& directory() { return directory_; }
  const SectionWriter& directory() const { return directory_; }

  // Whether a grid with that digest is stored. All six places count, an unused one with a digest of zeros.
  bool has_data(const Md5Digest& digest) const;

  // Stores the words of the sections behind the header; words that are not there are 0. False: no place or no room.
  bool add_data(const LutDataHeader& header, std::span<const HeldSection> sections);

  // Bytes of the file: those of the directory alone while it has no record.
  std::size_t size() const { return directory_.empty() ? kLutDirectoryRoom : kLutDirectoryRoom + data_size_; }

  // Closes both sections. The memory must hold size() bytes.
  void finish(const HeaderStamp& stamp);

 private:
  std::span<std::uint8_t> memory_;
  std::vector<std::uint8_t> directory_bytes_;
  SectionWriter directory_;
  std::size_t data_size_ = kShortHeaderSize;
  std::array<Md5Digest, kMostLutData> stored_{};
  std::size_t stored_count_ = 0;
};

}  // namespace vq3900

#endif
