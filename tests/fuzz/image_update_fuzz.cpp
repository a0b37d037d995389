// Calibration images from outside, given to the three updates: a failure leaves no destination, and the source stays.
#include "vq3900_depth_engine.h"

#include <algorithm>
#include <array>
#include <vector>

#include "fuzz_support.h"

namespace {

constexpr std::array<std::size_t, 3> kSizes{20480, 24576, 4096};

// An input of any length as a file of a size that is accepted.
std::vector<std::uint8_t> image_of(vq3900::fuzz::Bytes bytes, std::uint8_t choice) {
  if (choice % 4 == 3) return {bytes.begin(), bytes.end()};
  std::vector<std::uint8_t> image(kSizes[choice % 4], 0xFF);
  // The front goes where the sections are: D2C at 8192, D2D at 16384, or all of it for a section alone.
  const std::size_t d2d = image.size() == 4096 ? 0 : 16384;
  const std::size_t half = bytes.size() / 2;
  std::copy_n(bytes.begin(), std::min(half, image.size() - d2d), image.begin() + static_cast<std::ptrdiff_t>(d2d));
  if (d2d != 0) {
    const auto rest = bytes.subspan(half);
    std::copy_n(rest.begin(), std::min<std::size_t>(rest.size(), 8192), image.begin() + 8192);
  }
  return image;
}

std::int32_t update(vq3900::fuzz::Input& input, const std::string& from, const std::string& to) {
  const auto which = input.take<std::uint8_t>();
  const auto count = input.take<std::uint8_t>() % 4;
  std::array<float, 8> pairs{};
  for (float& value : pairs)
    value = input.take<float>();
  if (which % 3 == 0) return update_baseline_de(from.c_str(), pairs[0], to.c_str(), count - 1);
  if (which % 3 == 1) return update_multi_baseline_de(from.c_str(), pairs.data(), count, to.c_str());
  return update_multi_fb_d2c_de(from.c_str(), pairs.data(), count, to.c_str());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace vq3900;
  fuzz::Input input{data, size};
  const auto choice = input.take<std::uint8_t>();
  fuzz::Input numbers{input.rest().data(), std::min<std::size_t>(input.rest().size(), 34)};
  const auto image = image_of(input.rest().subspan(std::min<std::size_t>(input.rest().size(), 34)), choice);
  const std::string from = fuzz::own_path(".from");
  const std::string to = fuzz::own_path(".to");
  fuzz::write_file(from, image);
  std::filesystem::remove(to);
  const std::int32_t code = update(numbers, from, to);
  fuzz::require(code == 0 || code == -2 || code == 4096);
  fuzz::require(std::filesystem::exists(to) == (code == 0));
  fuzz::require(fuzz::read_file(from) == std::string(image.begin(), image.end()));
  return 0;
}
