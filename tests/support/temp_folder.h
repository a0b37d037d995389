// A folder for temporary files that this process alone has: test cases run side by side, each in a process of its own.
#ifndef VQ3900_TESTS_SUPPORT_TEMP_FOLDER_H
#define VQ3900_TESTS_SUPPORT_TEMP_FOLDER_H

#include <filesystem>
#include <random>
#include <string>

namespace vq3900::test {

class TempFolder {
 public:
  TempFolder() : path_(std::filesystem::temp_directory_path() / ("vq3900_" + std::to_string(std::random_device{}()))) {
    std::filesystem::create_directories(path_);
  }
  ~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  std::string file(const std::string& name) const { return (path_ / name).string(); }

 private:
  std::filesystem::path path_;
};

// A file of that name in the process's folder, which goes when the process ends.
inline std::string own_file(const std::string& name) {
  static const TempFolder folder;
  return folder.file(name);
}

}  // namespace vq3900::test

#endif
