// Images of every kind, read, described and compared by the tool. The sum of the bytes says which of it.
#include <numeric>
#include <vector>

#include "fuzz_support.h"
#include "image_compare.h"
#include "image_reader.h"
#include "image_report.h"

namespace {

using namespace vq3900;

void compare(const tool::Image& image, std::size_t sum) {
  fuzz::require(tool::compare_images(image, image).empty());
  std::vector<std::uint8_t> other = image.bytes;
  other[sum % other.size()] ^= 1;
  const auto changed = tool::read_image(other);
  if (changed) fuzz::require(!tool::compare_images(image, *changed).empty());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto image = tool::read_image({data, size});
  if (!image) return 0;
  static_cast<void>(image->good());
  const auto sum = std::accumulate(data, data + size, std::size_t{0});
  if (sum % 4 == 0) static_cast<void>(tool::image_text("image", *image));
  if (sum % 4 == 1) static_cast<void>(tool::image_json("image", *image).dump());  // strict: every text is UTF-8
  if (sum % 4 == 2) compare(*image, sum / 4);
  return 0;
}
