#include "config/groups.h"

#include <array>
#include <string>

#include "config/units.h"

namespace vq3900 {

namespace {

// A D2C group while it is read: the item, and the unit until its switch is known.
struct D2cGroup {
  d2c_cfg_item item{};
  float d2d_params_unit = 0;
};

bool read_unit_in_r(D2cGroup& group, std::string_view value) {
  const bool in_r = read_uint8(value) != 0;
  group.item.d2d_params_unit = in_r ? hundredfold(group.d2d_params_unit) : 0;
  return true;
}

bool read_mipi_status(D2cGroup& group, std::string_view value) {
  group.item.mipi_channel_status = read_uint8(value) & 1U;
  return true;
}

using Item = d2c_cfg_item;

constexpr auto kD2cKeys = std::to_array<Key<D2cGroup>>({
    text<&D2cGroup::item, &Item::desc>("desc", "desc is longer than 16 bytes"),
    signed_list<&D2cGroup::item, &Item::res_chop_out>("res_chop_out", "string to arrary res_chop_out error"),
    signed_list<&D2cGroup::item, &Item::res_d2c_in>("res_d2c_in", "string to arrary res_d2c_in error"),
    signed_list<&D2cGroup::item, &Item::res_d2c_valid>("res_d2c_valid", "string to arrary res_d2c_valid error"),
    signed_list<&D2cGroup::item, &Item::res_depth>("res_depth", "string to arrary res_depth error"),
    signed_list<&D2cGroup::item, &Item::res_rgb>("res_rgb", "string to arrary res_rgb error"),
    checked_with_next(key<KeyType::kFloat, &D2cGroup::item, &Item::scale>("scale"), 2),
    signed_list<&D2cGroup::item, &Item::extend>("extend", "string to arrary extend error"),
    optional(key<KeyType::kFloat, &D2cGroup::d2d_params_unit>("d2d_params_unit"),
             [](D2cGroup& group) { group.item.d2d_params_unit = 0; }),
    Key<D2cGroup>{"d2d_params_unit_in_R_en", KeyType::kUint8, 1, read_unit_in_r, nullptr, nullptr, "d2d_params_unit"},
    Key<D2cGroup>{"mipi_channel_status",
                  KeyType::kUint8,
                  1,
                  read_mipi_status,
                  nullptr,
                  [](D2cGroup& group) { group.item.mipi_channel_status = 0; }},
});

using IrPre = ir_pre_cfg_item;

// A switch of the group: the lowest bit of its key's value.
template <unsigned Bit>
bool read_enable(IrPre& item, std::string_view value) {
  item.enable_bits = set_reg_field(read_uint32(value), item.enable_bits, 1U << Bit);
  return true;
}

constexpr auto kIrPreKeys = std::to_array<Key<IrPre>>({
    text<&IrPre::dpu_desc>("dpu_desc", "dpu_desc is longer than 16 bytes"),
    list<&IrPre::exp_time_range>("exp_time_range", "string to arrary exp_time_range error"),
    list<&IrPre::gain_range>("gain_range", "string to arrary gain_range error"),
    list<&IrPre::laser_current_range>("laser_current_range", "string to arrary laser_current_range error"),
    checked_with_next(key<KeyType::kUint32, &IrPre::target_brightness>("target_brightness"), 3),
    key<KeyType::kUint32, &IrPre::target_th>("target_th"),
    key<KeyType::kUint32, &IrPre::center_weight>("center_weight"),
    checked_with_next(key<KeyType::kUint32, &IrPre::skip_frame>("skip_frame"), 3),
    key<KeyType::kUint32, &IrPre::smooth_steps>("smooth_steps"),
    key<KeyType::kUint32, &IrPre::delay_ms>("delay_ms"),
    checked_with_next(key<KeyType::kUint32, &IrPre::meter_method>("meter_method"), 4),
    Key<IrPre>{"exp_en", KeyType::kUint32, 1, read_enable<0>},
    Key<IrPre>{"gain_en", KeyType::kUint32, 1, read_enable<1>},
    Key<IrPre>{"ldm_power_en", KeyType::kUint32, 1, read_enable<2>},
    list<&IrPre::roi_size>("roi_size", "string to arrary roi_size error"),
    list<&IrPre::box_cnt>("box_cnt", "string to arrary box_cnt error"),
    list<&IrPre::box_weight_16>("box_weight_16", "string to arrary box_weight_16 error"),
});

std::optional<std::string> read_group(const IniSection& ini, std::string_view name, d2c_cfg_item& item) {
  D2cGroup group;
  auto fault = read_section(kD2cKeys, ini, name, group, MissingKey::kFault);
  if (!fault) item = group.item;
  return fault;
}

std::optional<std::string> read_group(const IniSection& ini, std::string_view name, ir_pre_cfg_item& item) {
  ir_pre_cfg_item read{};
  auto fault = read_section(kIrPreKeys, ini, name, read, MissingKey::kFault);
  if (!fault) item = read;
  return fault;
}

constexpr std::int32_t kFault = -1;

// The frame of all kinds of groups: number and version in section basic, then the groups themselves.
template <typename Item, std::size_t Most>
LoadResult read_groups(const IniDocument& document, Groups<Item, Most>& groups) {
  const IniSection basic = document.section("basic");
  const IniField* const number = basic.find("num");
  if (number == nullptr) return {kFault, missing_key_text("num", "basic")};
  const auto count = static_cast<std::uint32_t>(read_int(number->value));         // a negative number is a large one
  if (count > Most) return {kFault, "Number of d2c cofiguration not supported"};  // whatever kind of groups it is
  groups.count = static_cast<std::uint16_t>(count);

  const IniField* const version = basic.find("version");
  if (version == nullptr) return {kFault, missing_key_text("version", "basic")};
  groups.version = read_version(version->value);

  for (std::size_t i = 0; i < count; ++i) {
    const std::string name = "group" + std::to_string(i + 1);
    const IniSection ini = document.section(name);
    if (ini.empty()) return {kFault, std::string("check section ").append(name).append(" error")};
    if (auto fault = read_group(ini, name, groups.items[i])) return {kFault, *fault};
  }
  return {};
}

}  // namespace

LoadResult read_d2c_groups(const IniDocument& document, D2cGroups& groups) {
  return read_groups(document, groups);
}

LoadResult read_ir_pre_groups(const IniDocument& document, IrPreGroups& groups) {
  return read_groups(document, groups);
}

std::vector<KeyDescription> d2c_group_keys() {
  std::vector<KeyDescription> keys;
  describe_keys("group", kD2cKeys, keys);
  return keys;
}

std::vector<KeyDescription> ir_pre_group_keys() {
  std::vector<KeyDescription> keys;
  describe_keys("group", kIrPreKeys, keys);
  return keys;
}

}  // namespace vq3900
