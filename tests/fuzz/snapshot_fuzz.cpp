// A parameter snapshot from outside: what is taken comes back byte for byte, and every decoder and encoder bears it.
#include "vq3900_depth_engine.h"

#include <vector>

#include "fuzz_support.h"
#include "sim_device.h"
#include "support/engine_reset.h"

namespace {

constexpr std::size_t kSize = 462;

// Writes every block as restored, and reads it back.
void drive_device() {
  vq3900::sim::SimDevice device;
  device.attach();
  DeBasicParams_S basic{};
  DePrefilterParams_S prefilter{};
  DeExtendChopParams_S extend_chop{};
  DeDispCalcParams_S disparity{};
  DeGpmParams_S gpm{};
  DeGpStatusParams_S status{};
  de_copy_basic_params(&basic);
  de_copy_prefilter_params(&prefilter);
  de_copy_extend_chop_params(&extend_chop);
  de_copy_disp_calc_params(&disparity);
  de_copy_gpm_params(&gpm);
  de_set_baisc_params_to_registers(&basic);
  de_set_prefilter_params_to_registers(&prefilter);
  de_set_extend_chop_params_to_registers(&extend_chop);
  de_set_disp_calc_params_to_registers(&disparity);
  de_set_gpm_params_to_registers(&gpm);
  de_get_baisc_params_from_registers(&basic);
  de_get_prefilter_params_from_registers(&prefilter);
  de_get_extend_chop_params_from_registers(&extend_chop);
  de_get_disp_calc_params_from_registers(&disparity);
  de_get_gpm_params_from_registers(&gpm, &status);
}

// Every size but the one is refused.
bool import(const std::string& path, vq3900::fuzz::Bytes bytes) {
  vq3900::fuzz::write_file(path, bytes);
  const std::int32_t code = de_import_config_params_from_file(path.c_str());
  vq3900::fuzz::require(code == (bytes.size() == kSize ? 0 : -2));
  return code == 0;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace vq3900;
  test::reset_engine();
  const std::string path = fuzz::own_path(".bin");
  std::vector<std::uint8_t> snapshot(data, data + size);
  import(path, snapshot);
  snapshot.resize(kSize);
  fuzz::require(import(path, snapshot));

  const std::string again = fuzz::own_path(".again");
  fuzz::require(de_export_config_params_to_file(again.c_str()) == 0);
  fuzz::require(fuzz::read_file(again) == std::string(snapshot.begin(), snapshot.end()));
  drive_device();
  return 0;
}
