// A depth-engine configuration from outside: loaded, applied, checked, and converted for the device.
#include "vq3900_depth_engine.h"

#include "fuzz_config.h"
#include "fuzz_support.h"
#include "support/engine_reset.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace vq3900;
  test::reset_engine();
  const std::string path = fuzz::own_path(".ini");
  fuzz::write_file(path, {data, size});
  const std::int32_t loaded = load_de_input_configs(path.c_str());
  fuzz::require(loaded == 0 || loaded == -5 || (loaded <= -6 && loaded >= -12));
  const std::int32_t applied = set_depth_engine_config();  // also of what a failed load left
  fuzz::require(applied == 0 || applied == -1 || applied == -2 || applied == -3 || applied == -5);
  fuzz::require_explained(std::string(data, data + size), tool::ConfigKind::kEngine, loaded == 0, applied == 0);

  dpu_mode mode{};
  unsigned int version = 0;
  dpu_scheme_config scheme{};
  de_copy_dpu_mode_config(&mode, &version);
  get_dpu_scheme_config(&scheme);
  gen_depth_engine_config_flash_file(fuzz::own_path(".bin").c_str());
  return 0;
}
