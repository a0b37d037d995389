// The factory-align file of a build from files: the calibration-parameter files themselves.
#ifndef VQ3900_FLASH_FACTORY_FILE_H
#define VQ3900_FLASH_FACTORY_FILE_H

#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "flash/calib_image.h"
#include "flash/section_writer.h"

namespace vq3900 {

class FactoryFile {
 public:
  enum class Added : std::uint8_t { kYes, kOtherSize, kNoRoom };

  // Whether a file of that name is stored.
  bool has(std::string_view path) const { return paths_.find(path) != paths_.end(); }

  // Stores a file's bytes in a place of even size.
  Added add(std::string_view path, std::string_view bytes);

  std::vector<std::uint8_t> finish(const HeaderStamp& stamp);

 private:
  std::vector<std::uint8_t> bytes_ = std::vector<std::uint8_t>(kFactoryFileSize, 0xFF);
  std::set<std::string, std::less<>> paths_;
  std::size_t file_size_ = 0;  // of the first, and so of all
};

}  // namespace vq3900

#endif
