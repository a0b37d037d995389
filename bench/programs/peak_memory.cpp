// Builds a calibration image in a process of its own: peak_memory SAMPLE_BITS. Prints by how many bytes the resident
// memory grew at its peak, the caller's own memory aside, and how many bytes the build must hold at that time.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "calib/distortion_lut/lut_grid.h"
#include "flash/calib_image.h"
#include "support/rig.h"
#include "support/streams.h"

namespace {

using vq3900::bench::CalibImage;

constexpr vq3900::bench::ImageSize kSize{1280, 800};
constexpr std::size_t kLutHeaders =
    std::size_t{vq3900::kLutDirectoryRoom} + vq3900::kShortHeaderSize + vq3900::kLutDataHeaderSize;
constexpr int kWarmUpBits = 6;

std::size_t samples(int sample_bits) {
  const auto across = vq3900::grid_axis(kSize.width, sample_bits, 1.0);
  const auto down = vq3900::grid_axis(kSize.height, sample_bits, 1.0);
  return static_cast<std::size_t>(across->samples) * static_cast<std::size_t>(down->samples);
}

// The most resident memory since the last reset, in bytes.
std::size_t peak() {
  std::ifstream status{"/proc/self/status"};
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("VmHWM:")) return std::stoul(line.substr(6)) * 1024;
  }
  return 0;
}

void reset_peak() {
  std::ofstream{"/proc/self/clear_refs"} << 5;
}

// An image of one configuration and the caller's memory for it.
class Build {
 public:
  explicit Build(int sample_bits)
      : image_(kSize, sample_bits, 1),
        main_(image_.image_bytes() / sizeof(std::uint32_t)),
        lut_(kLutHeaders + 16 * samples(sample_bits)) {}

  bool run() { return image_.build(main_, lut_) == 0; }

 private:
  CalibImage image_;
  std::vector<std::uint32_t> main_;
  std::vector<std::uint8_t> lut_;
};

// Two cameras' displacements, two doubles a sample, and the words that they become; the image, which is made whole
// before the caller's memory is touched.
std::size_t needed(int sample_bits) {
  return samples(sample_bits) * (32 + 16) + vq3900::kCalibImageSize;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  const int sample_bits = std::atoi(argv[1]);
  std::size_t before = 0;
  std::size_t after = 0;
  {
    const vq3900::bench::Silenced silenced;
    if (!Build{kWarmUpBits}.run()) return 1;  // brings the code into memory
    Build build{sample_bits};
    reset_peak();
    before = peak();
    if (!build.run()) return 1;
    after = peak();
  }
  std::cout << after - before << ' ' << needed(sample_bits) << '\n';
  return 0;
}
