// Calibration images from outside, given to the three updates: a failure leaves no destination, the source stays, and
// what is written keeps its size and its checks.
#include "vq3900_depth_engine.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

#include "bytes/crc32.h"
#include "bytes/little_endian.h"
#include "flash/image_update.h"
#include "fuzz_support.h"
#include "image_reader.h"

namespace {

using namespace vq3900;
using Image = std::vector<std::uint8_t>;

constexpr std::size_t kPrefix = 21;  // choice, numbers; see update()
constexpr std::size_t kD2cAt = 8192;
constexpr std::size_t kD2dAt = 16384;
constexpr std::size_t kSectionSize = 4096;

// The sections' fronts, one behind the other, as a file of a size that is accepted; or the input as it is.
Image image_of(fuzz::Bytes bytes, std::uint8_t choice) {
  constexpr std::array<std::size_t, 3> kSizes{20480, 24576, kSectionSize};
  if (choice % 4 == 3) return {bytes.begin(), bytes.end()};
  Image image(kSizes[choice % 4], 0xFF);
  const auto put = [&](fuzz::Bytes section, std::size_t at) {
    std::copy_n(section.begin(), std::min(section.size(), image.size() - at), image.begin() + static_cast<long>(at));
  };
  if (image.size() == kSectionSize) {
    put(bytes, 0);
    return image;
  }
  put(bytes.first(bytes.size() / 2), kD2dAt);
  put(bytes.subspan(bytes.size() / 2).first(std::min<std::size_t>(bytes.size() / 2, kD2dAt - kD2cAt)), kD2cAt);
  return image;
}

// A focal length of the first records, or what the input has.
float focal_length(fuzz::Input& input, const Image& image) {
  const auto which = input.take<std::uint8_t>();
  const auto raw = input.take<float>();
  const std::size_t d2d = image.size() == kSectionSize ? 0 : kD2dAt;
  const bool of_d2c = which % 8 < 2 && image.size() > kSectionSize;
  const std::size_t at =
      of_d2c ? kD2cAt + kSectionHeaderSize + which % 2 * kCalibD2cSection.record_size + kD2cIntrinsicOffset
             : d2d + kSectionHeaderSize + which % 2 * kCalibD2dSection.record_size;
  if (which % 8 >= 4 || at + kCalibD2dSection.record_size > image.size()) return raw;
  if (of_d2c) return load_little<float>(&image[at]);
  return read_d2d_record(fuzz::Bytes(image).subspan(at, kCalibD2dSection.record_size)).depth.focal_length;
}

std::int32_t update(fuzz::Input& input, const Image& image, const std::string& from, const std::string& to) {
  const auto which = input.take<std::uint8_t>();
  const auto count = input.take<std::uint8_t>() % 3;
  std::array<float, 4> pairs{};
  for (std::size_t i = 0; i < pairs.size(); i += 2) {
    pairs[i] = focal_length(input, image);
    pairs[i + 1] = input.take<float>();
  }
  if (which % 3 == 0) return update_baseline_de(from.c_str(), pairs[1], to.c_str(), count - 1);
  if (which % 3 == 1) return update_multi_baseline_de(from.c_str(), pairs.data(), count, to.c_str());
  return update_multi_fb_d2c_de(from.c_str(), pairs.data(), count, to.c_str());
}

bool is_good(const Image& bytes) {
  const auto image = tool::read_image(bytes);
  return image && image->good();
}

// The section D2D has a CRC-32 that holds, whatever it was before.
bool has_checksum(const Image& updated) {
  const fuzz::Bytes bytes = updated;
  const fuzz::Bytes front = bytes.subspan(updated.size() == kSectionSize ? 0 : kD2dAt, kSectionSize);
  Image section(front.begin(), front.end());
  SectionHeader header = read_section_header(section);
  const std::uint32_t crc = std::exchange(header.crc, 0);
  write_section_header(header, HeaderForm::kFull, section);
  return crc == crc32(0, section.data(), header.length);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const fuzz::Bytes all{data, size};
  const std::size_t prefix = std::min(size, kPrefix);
  const Image image = image_of(all.subspan(prefix), size == 0 ? 0 : all.front());
  fuzz::Input numbers{data, prefix};
  numbers.take<std::uint8_t>();
  const std::string from = fuzz::own_path(".from");
  const std::string to = fuzz::own_path(".to");
  fuzz::write_file(from, image);
  std::filesystem::remove(to);
  const std::int32_t code = update(numbers, image, from, to);
  fuzz::require(code == 0 || code == -2 || code == 4096);
  fuzz::require(std::filesystem::exists(to) == (code == 0));
  fuzz::require(fuzz::read_file(from) == std::string(image.begin(), image.end()));
  if (code != 0) return 0;
  const std::string written = fuzz::read_file(to);
  const Image updated(written.begin(), written.end());
  fuzz::require(updated.size() == kSectionSize || updated.size() == image.size());
  fuzz::require(has_checksum(updated));
  // Reading takes far longer than updating: a part of the inputs asks for it.
  const bool read = all.front() / 4 % 8 == 1;
  fuzz::require(!read || is_good(updated) || !is_good(image));
  return 0;
}
