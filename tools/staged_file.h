// Files that stand complete or not at all: they are written under another name beside their target and take its place
// at the end.
#ifndef VQ3900_TOOLS_STAGED_FILE_H
#define VQ3900_TOOLS_STAGED_FILE_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace vq3900::tool {

class StagedFile {
 public:
  // A target that is there and no regular file, such as a device, is written itself.
  explicit StagedFile(std::string target);
  ~StagedFile();  // what has not taken the target's place is gone
  StagedFile(const StagedFile&) = delete;
  StagedFile& operator=(const StagedFile&) = delete;

  const std::string& target() const { return target_; }
  const std::string& path() const { return path_; }  // to write to

  // Writes the whole file. False, which is said: it cannot be created, or not all bytes are on the disk.
  bool write(std::span<const std::uint8_t> bytes) const;

  // Whether so many bytes are on the disk; if not, it is said.
  bool has_size(std::size_t expected) const;

  // Takes the target's place. False, which is said: it cannot.
  bool commit();

 private:
  std::string target_;
  std::string path_;
  bool placed_ = false;
};

// Whether the output is one of the inputs, by whatever name, which is said.
bool is_input(const std::string& output, std::span<const std::string> inputs);

}  // namespace vq3900::tool

#endif
