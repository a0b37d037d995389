// Whole files in and out of memory, by C stdio.
#ifndef VQ3900_PLATFORM_FILE_H
#define VQ3900_PLATFORM_FILE_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <memory>
#include <optional>
#include <span>
#include <string>

namespace vq3900 {

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using FileHandle = std::unique_ptr<std::FILE, FileCloser>;

// Whether a file can be opened and read. A null path and a directory cannot.
bool is_readable(const char* path);

// The bytes of a file, or nothing when it cannot be opened and read. A null path and a directory cannot be opened. At
// most that many bytes are read: a longer file gives one byte more.
std::optional<std::string> read_file(const char* path, std::size_t most = std::numeric_limits<std::size_t>::max() - 1);

// A file that is created, or emptied, when it is opened and closed when the object goes.
class OutputFile {
 public:
  explicit OutputFile(const char* path);

  bool is_open() const { return file_ != nullptr; }

  // Whether all bytes went to the stream. What the system refuses later is seen by close() alone.
  bool write(std::span<const std::uint8_t> bytes);

  // Closes the file. Whether the system took everything.
  bool close();

 private:
  FileHandle file_;
};

}  // namespace vq3900

#endif
