// Configuration groups from outside; the first byte says of which kind.
#include "vq3900_depth_engine.h"

#include "fuzz_config.h"
#include "fuzz_support.h"
#include "support/engine_reset.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace vq3900;
  test::reset_engine();
  fuzz::Input input{data, size};
  const bool d2c = (input.take<std::uint8_t>() & 1) != 0;
  const std::string path = fuzz::own_path(".ini");
  fuzz::write_file(path, input.rest());
  const std::int32_t loaded = d2c ? load_d2c_configs(path.c_str()) : load_ir_pre_configs(path.c_str());
  fuzz::require(loaded == 0 || loaded == -1 || loaded == -5);
  fuzz::require_explained(
      input.text(), d2c ? tool::ConfigKind::kD2c : tool::ConfigKind::kIrPre, loaded == 0, loaded == 0);

  d2c_cfg_item* d2c_items = nullptr;
  ir_pre_cfg_item* ir_pre_items = nullptr;
  int count = 0;
  unsigned int version = 0;
  de_get_d2c_config(d2c_items, count, version);
  fuzz::require(count >= 0 && count <= 100);
  de_get_ir_pre_config(ir_pre_items, count, version);
  fuzz::require(count >= 0 && count <= 10);
  return 0;
}
