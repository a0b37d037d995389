// Exported functions in any order with any arguments, on the simulated device: no crash, no undefined behaviour, and
// codes that the manual knows.
#include <filesystem>
#include <vector>

#include "image_reader.h"
#include "stateful_steps.h"
#include "support/engine_reset.h"

namespace {

using vq3900::fuzz::Step;

const std::vector<Step>& all_steps() {
  static const std::vector<Step> kSteps = [] {
    std::vector<Step> steps;
    for (const auto part : {vq3900::fuzz::register_steps(),
                            vq3900::fuzz::block_steps(),
                            vq3900::fuzz::rectify_steps(),
                            vq3900::fuzz::file_steps(),
                            vq3900::fuzz::calib_steps()})
      steps.insert(steps.end(), part.begin(), part.end());
    return steps;
  }();
  return kSteps;
}

}  // namespace

void vq3900::fuzz::expect_sound_image(std::span<const std::uint8_t> bytes) {
  const auto image = tool::read_image(bytes);
  require(image.has_value() && image->good());
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr int kMostSteps = 64;
  vq3900::test::reset_engine();
  std::filesystem::remove(vq3900::fuzz::own_path(vq3900::fuzz::kBuiltImage));
  vq3900::sim::SimDevice device;
  device.attach();
  vq3900::fuzz::Input in{data, size};
  vq3900::fuzz::World world{in, device};
  for (int i = 0; i < kMostSteps && !in.empty(); ++i)
    all_steps()[in.take<std::uint8_t>() % all_steps().size()](world);
  return 0;
}
