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

  // Stores a grid: header and sections, whose words stay where they are. False: no place or no room.
  bool add_data(const LutDataHeader& header, std::span<const HeldSection> sections);

  // Copies the words of the grid stored last, whose sections are about to change.
  void keep_words();

  // Bytes of the finished file: those of the directory alone while it has no record.
  std::size_t size() const { return directory_.empty() ? kLutDirectoryRoom : kLutDirectoryRoom + data_size_; }

  // Closes both sections and writes them, of size() bytes.
  void finish(const HeaderStamp& stamp, std::span<std::uint8_t> to);

 private:
  struct Grid {
    LutDataHeader header;
    std::array<std::span<const std::uint32_t>, 4> sections;  // behind their words they are 0
    std::size_t section_count;
    RawVector<std::uint32_t> kept;  // the words, once they were copied

    std::size_t size() const { return kLutDataHeaderSize + section_count * header.section_words * 4; }
    void keep_words();
    void write(std::span<std::uint8_t> to) const;
  };

  std::vector<std::uint8_t> directory_bytes_;
  SectionWriter directory_;
  std::vector<Grid> grids_;
  std::size_t data_size_ = kShortHeaderSize;
};

}  // namespace vq3900

#endif
