#include <cstddef>

#include "config/groups.h"
#include "config/load_file_api.h"
#include "state/engine.h"

using vq3900::engine;

namespace {

template <typename Item, std::size_t Most>
void hand_out(vq3900::Groups<Item, Most>& groups, Item** items, int* count, unsigned int* version) {
  if (items == nullptr || count == nullptr || version == nullptr) return;
  *items = groups.items.data();
  *count = groups.count;
  if (groups.version != 0) *version = groups.version;
}

}  // namespace

int32_t load_d2c_configs(const char* path) {
  return vq3900::load_file(
      path, [](const vq3900::IniDocument& document) { return vq3900::read_d2c_groups(document, engine().d2c_groups); });
}

void de_get_d2c_config(d2c_cfg_item** items, int* count, unsigned int* version) {
  hand_out(engine().d2c_groups, items, count, version);
}

int32_t load_ir_pre_configs(const char* path) {
  return vq3900::load_file(path, [](const vq3900::IniDocument& document) {
    return vq3900::read_ir_pre_groups(document, engine().ir_pre_groups);
  });
}

void de_get_ir_pre_config(ir_pre_cfg_item** items, int* count, unsigned int* version) {
  hand_out(engine().ir_pre_groups, items, count, version);
}
