// What all fuzz targets need: the input as a file, numbers taken off its front, and a check that ends the run.
#ifndef VQ3900_TESTS_FUZZ_FUZZ_SUPPORT_H
#define VQ3900_TESTS_FUZZ_FUZZ_SUPPORT_H

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <span>
#include <string>

namespace vq3900::fuzz {

using Bytes = std::span<const std::uint8_t>;

// Ends the run as a finding.
inline void require(bool holds) {
  if (!holds) std::abort();
}

// A path in the folder for temporary files that belongs to this process.
inline std::string own_path(const char* ending) {
  static const std::string prefix =
      (std::filesystem::temp_directory_path() / ("vq3900_fuzz_" + std::to_string(std::random_device{}()))).string();
  return prefix + ending;
}

inline void write_file(const std::string& path, Bytes bytes) {
  std::FILE* const file = std::fopen(path.c_str(), "wb");
  require(file != nullptr);
  require(std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size());
  require(std::fclose(file) == 0);
}

inline std::string read_file(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// Takes numbers off the front of the input; zero when it is used up.
class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size) : rest_(data, size) {}

  template <typename Number>
  Number take() {
    Number number{};
    const std::size_t size = std::min(sizeof number, rest_.size());
    if (size > 0) std::memcpy(&number, rest_.data(), size);
    rest_ = rest_.subspan(size);
    return number;
  }

  Bytes rest() const { return rest_; }
  bool empty() const { return rest_.empty(); }
  std::string text() const { return {rest_.begin(), rest_.end()}; }

 private:
  Bytes rest_;
};

}  // namespace vq3900::fuzz

#endif
