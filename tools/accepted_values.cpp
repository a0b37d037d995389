#include "accepted_values.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <limits>
#include <optional>
#include <span>

#include "register_blocks.h"

namespace vq3900::tool {

namespace {

// Keys whose accepted values are not those of a register field.
struct Rule {
  std::string_view section;
  std::string_view key;
  AcceptedValues values;
};

const std::vector<Rule>& rules() {
  static const std::vector<Rule> kRules{
      {"mode", "in_ir_res", {1, 4095}},
      {"mode", "rectify_out_valid_res", {1, 65535}},
      {"mode", "chop_out_res", {1, 65535}},
      {"basic", "cam_mode", {0, 1}},
      {"basic", "depth_mode", {0, 1}},
      {"basic", "rectify_mode", {0, 3}},
      {"basic", "distort_type", {0, 2}},
      {"basic", "d2c_recovery_mode", {0, 2}},
      {"basic", "depth_sign", {0, 1}},
      {"basic", "depth_unit", {0.1, 1.6, {0.1, 0.2, 0.4, 0.8, 1.6}}},
      {"extend_chop", "extend_tar", {0, 4095}},  // two of the four act through the extended size alone
      {"disparity", "pre_win_size", {5, 9, {5, 7, 9}}},
      {"gpm", "gp_enabled_cols", {0, 16}},
      {"gpm", "gp_ref_dy_t", {0, 2047}},
      {"gpm", "enable_bits_per_row", {0, 65535}},
      {"scheme", "disp_offset", {0, 4294967290.0}},
      {"scheme", "ref_dist", {0, 4294967200.0}},
      {"scheme", "d2d_params_unit_in_R_en", {0, 1}},
      {"scheme", "mono_lut_sbg2r", {0, 1}},
      {"scheme", "mono_lut_rectify", {0, 1}},
      {"scheme", "hw_d2d_en", {0, 1}},
      {"scheme", "mipi_channel_status", {0, 1}},
  };
  return kRules;
}

// The name of the register field that takes a key's value: that of the key, but for two of them.
std::string field_name(const KeyDescription& key, std::size_t index) {
  const std::string_view name = key.name;
  const bool coordinate = key.section == std::string_view("gpm") && (name == "x" || name == "y");
  const std::string member = std::string(name) + (coordinate ? "_coordinate" : "");
  return key.count > 1 ? fmt::format("{}[{}]", member, index) : member;
}

AcceptedValues values_of_type(KeyType type) {
  switch (type) {
    case KeyType::kUint8:
      return {0, 255};
    case KeyType::kInt8:
      return {-128, 127};
    case KeyType::kUint32:
      return {0, 4294967295.0};
    case KeyType::kUint16List:
      return {0, 65535};
    case KeyType::kInt:
    case KeyType::kInt32:
    case KeyType::kInt32List:
      return {-2147483648.0, 2147483647.0};
    default:
      return {-kUnlimited, kUnlimited};
  }
}

AcceptedValues values_of(const FieldBits& field) {
  if (field.coding == Coding::kFixedCut) return {0, 1 - std::ldexp(1.0, -field.format.frac_bits)};
  if (field.coding == Coding::kInteger) return {0, std::ldexp(1.0, std::popcount(field.mask)) - 1};
  const double scale = std::ldexp(1.0, -field.format.frac_bits);
  const double half = std::ldexp(scale, static_cast<int>(field.format.width) - 1);
  return {-half, half - scale};
}

// The blocks that take the keys of a section.
std::span<const std::string_view> blocks_of(std::string_view section) {
  static constexpr std::array<std::string_view, 3> kBasic{"basic_d2c_d2d_ctrl", "rectify_ctrl"};
  static constexpr std::array<std::string_view, 1> kDisparity{"disp_calc"};
  static constexpr std::array<std::string_view, 1> kExtendChop{"extend_chop"};
  static constexpr std::array<std::string_view, 1> kGpm{"gpm"};
  if (section == "basic") return kBasic;
  if (section == "disparity") return kDisparity;
  if (section == "extend_chop") return kExtendChop;
  if (section == "gpm") return kGpm;
  return {};
}

std::string number_text(double value) {
  return fmt::format("{:.10g}", value);
}

}  // namespace

bool AcceptedValues::contains(double value) const {
  if (only.empty()) return value >= low && value <= high;
  constexpr double kTolerance = 0.0001;  // a decimal text is not exactly its number
  return std::any_of(only.begin(), only.end(), [value](double o) { return std::fabs(value - o) < kTolerance; });
}

std::string AcceptedValues::text() const {
  if (only.empty()) {
    if (high == kUnlimited) return "any";
    return fmt::format("{} to {}", number_text(low), number_text(high));
  }
  std::string text = number_text(only.front());
  for (std::size_t i = 1; i < only.size(); ++i) {
    text += (i + 1 == only.size() ? " or " : ", ") + number_text(only[i]);
  }
  return text;
}

AcceptedValues accepted_values(const KeyDescription& key, std::size_t index) {
  for (const Rule& rule : rules()) {
    if (rule.section == key.section && rule.key == key.name) return rule.values;
  }
  const auto field = register_field_of(key, index);
  return field ? values_of(field->bits) : values_of_type(key.type);
}

std::optional<KeyField> register_field_of(const KeyDescription& key, std::size_t index) {
  const std::string name = field_name(key, index);
  for (const std::string_view block_name : blocks_of(key.section)) {
    const RegisterBlock* const block = find_block(block_name);
    if (block == nullptr) continue;
    for (const FieldBits& field : block->fields) {
      if (!field.written() || name != field.name) continue;
      const bool integer = field.coding == Coding::kInteger;
      const double resolution = integer ? 0 : std::ldexp(0.5, -field.format.frac_bits);
      return KeyField{field, block->registers()[field.element].address, resolution};
    }
  }
  return std::nullopt;
}

}  // namespace vq3900::tool
