#include "config_kinds.h"

#include "calib/calib_keys.h"
#include "config/calib_input.h"
#include "config/de_input.h"
#include "config/groups.h"

namespace vq3900::tool {

namespace {

constexpr double kMostD2cGroups = 100;
constexpr double kMostIrPreGroups = 10;

std::vector<KeyDescription> group_keys(const std::vector<KeyDescription>& keys) {
  std::vector<KeyDescription> all{{"basic", "num", KeyType::kInt}, {"basic", "version", KeyType::kVersion}};
  all.insert(all.end(), keys.begin(), keys.end());
  return all;
}

Accepted with_text(const AcceptedValues& values) {
  return {values, values.text()};
}

Accepted group_values(const KeyDescription& key, double most_groups) {
  const std::string_view name = key.name;
  if (name == "num") return with_text({0, most_groups});
  if (name == "d2d_params_unit_in_R_en") return with_text({0, 1});
  const bool size = key.type == KeyType::kInt32List && (name.starts_with("res_") || name == "extend");
  return with_text(size ? AcceptedValues{0, 65535} : accepted_values(key));
}

}  // namespace

ConfigKind config_kind(std::string_view name) {
  if (name == "d2c") return ConfigKind::kD2c;
  if (name == "ir-pre") return ConfigKind::kIrPre;
  return name == "calib" ? ConfigKind::kCalib : ConfigKind::kEngine;
}

std::vector<KeyDescription> keys_of(ConfigKind kind) {
  switch (kind) {
    case ConfigKind::kEngine:
      return de_input_keys();
    case ConfigKind::kD2c:
      return group_keys(d2c_group_keys());
    case ConfigKind::kIrPre:
      return group_keys(ir_pre_group_keys());
    case ConfigKind::kCalib:
      return calib_input_keys();
  }
  return {};
}

AcceptedOf accepted_of(ConfigKind kind) {
  switch (kind) {
    case ConfigKind::kEngine:
      break;
    case ConfigKind::kD2c:
      return [](const KeyDescription& key, std::size_t) { return group_values(key, kMostD2cGroups); };
    case ConfigKind::kIrPre:
      return [](const KeyDescription& key, std::size_t) { return group_values(key, kMostIrPreGroups); };
    case ConfigKind::kCalib:
      return [](const KeyDescription& key, std::size_t) {
        const CalibKeyNote* const note = find_calib_key_note(key);
        return note == nullptr ? with_text(accepted_values(key))
                               : Accepted{accepted_calib_values(key), std::string(note->accepted)};
      };
  }
  return [](const KeyDescription& key, std::size_t index) { return with_text(accepted_values(key, index)); };
}

}  // namespace vq3900::tool
