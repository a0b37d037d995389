#include "config_check.h"

#include <fmt/format.h>

#include <algorithm>
#include <bit>
#include <string_view>
#include <utility>

#include "key_checker.h"
#include "key_values.h"

namespace vq3900::tool {

namespace {

std::vector<CheckedKey> checked_keys(ConfigKind kind) {
  std::vector<CheckedKey> keys;
  for (const KeyDescription& key : keys_of(kind))
    keys.push_back({key.section, key});
  return keys;
}

// --- depth-engine configurations

// What the setters refuse, or what cannot be meant, once every key by itself is right.
class EngineRules {
 public:
  explicit EngineRules(KeyChecker& keys) : keys_(keys) {}

  void check() {
    check_camera_rules();
    check_image_rules();
    check_point_rules();
  }

 private:
  void check_camera_rules() {
    const bool stereo = keys_.value("basic.cam_mode") == 1;
    const double mode = keys_.value("basic.rectify_mode");
    if (stereo && mode < 2) {
      keys_.error(keys_.line("basic.rectify_mode"),
                  "basic.rectify_mode",
                  "a stereo rig (cam_mode 1) rectifies both cameras or none; accepted: 2 or 3");
    }
    if (!stereo && mode == 2) {
      keys_.error(keys_.line("basic.rectify_mode"),
                  "basic.rectify_mode",
                  "a single camera (cam_mode 0) is rectified alone; accepted: 0, 1 or 3");
    }
    if (stereo && keys_.value("basic.rotate_90_en") == 1) {
      keys_.error(keys_.line("basic.rotate_90_en"),
                  "basic.rotate_90_en",
                  "a stereo rig (cam_mode 1) is not rotated; accepted: 0");
    }
    if (keys_.value("basic.sbg_en") == 1 && (mode == 0 || mode == 3)) {
      keys_.warn(keys_.line("basic.sbg_en"),
                 "basic.sbg_en",
                 "has no effect while camera 1 is not rectified (rectify_mode 1 or 2)");
    }
    const double depth_mode = keys_.has("basic.depth_mode") ? keys_.value("basic.depth_mode") : (stereo ? 1 : 0);
    if (depth_mode == 0 && !stereo && keys_.value("scheme.ref_dist") <= 128) {
      keys_.warn(keys_.line("scheme.ref_dist"),
                 "scheme.ref_dist",
                 "depth relative to a reference plane (depth_mode 0) needs its distance; accepted: above 128");
    }
  }

  void check_image_rules() {
    const double factor = keys_.value("basic.upsample_enable") == 1 ? 2 : 1;
    const bool turned = factor == 1 && keys_.value("basic.cam_mode") == 0 && keys_.value("basic.rotate_90_en") == 1;
    for (const std::size_t axis : {0U, 1U}) {
      const double image = factor * keys_.value("mode.in_ir_res", turned ? 1 - axis : axis);
      const std::string of = axis == 0 ? "width" : "height";
      const double extended =
          image + keys_.value("extend_chop.extend_tar", 2 * axis) + keys_.value("extend_chop.extend_tar", 2 * axis + 1);
      const double chopped = keys_.value("extend_chop.chop", 2 * axis) + keys_.value("extend_chop.chop", 2 * axis + 1);
      if (extended > 4095) {
        keys_.error(keys_.line("extend_chop.extend_tar"),
                    "extend_chop.extend_tar",
                    fmt::format("the extended {} is {:.0f}; accepted: up to 4095", of, extended));
      } else if (chopped >= extended) {
        keys_.error(keys_.line("extend_chop.chop"),
                    "extend_chop.chop",
                    fmt::format("chops {:.0f} off an extended {} of {:.0f}", chopped, of, extended));
      } else if (keys_.has("mode.chop_out_res") && extended - chopped != keys_.value("mode.chop_out_res", axis)) {
        keys_.warn(keys_.line("mode.chop_out_res"),
                   "mode.chop_out_res",
                   fmt::format("the output {} after chopping is {:.0f}, not {:.0f}",
                               of,
                               extended - chopped,
                               keys_.value("mode.chop_out_res", axis)));
      }
    }
  }

  void check_point_rules() {
    unsigned any_row = 0;
    for (std::size_t row = 0; row < 16; ++row) {
      any_row |= static_cast<unsigned>(keys_.value("gpm.enable_bits_per_row", row));
    }
    const int columns = std::popcount(any_row);
    if (columns != static_cast<int>(keys_.value("gpm.gp_enabled_cols"))) {
      keys_.warn(
          keys_.line("gpm.gp_enabled_cols"),
          "gpm.gp_enabled_cols",
          fmt::format(
              "enable_bits_per_row enables {} columns, not {:.0f}", columns, keys_.value("gpm.gp_enabled_cols")));
    }
  }

  KeyChecker& keys_;
};

std::vector<Finding> check_engine(const IniDocument& document) {
  KeyChecker keys(document, checked_keys(ConfigKind::kEngine), accepted_of(ConfigKind::kEngine));
  for (const char* const name : {"mode", "basic", "disparity", "extend_chop", "gpm"})
    keys.require_section(name);
  if (document.section("scheme").empty()) {
    keys.warn(0, "[scheme]", "the section is missing or empty: the output scheme will be all zero");
  }
  keys.check_keys();
  if (keys.good()) EngineRules(keys).check();
  return keys.finish();
}

// --- groups

// How many groups a file announces; 0 when it does not say, or not rightly.
std::size_t group_count(const IniDocument& document, const KeyDescription& number, const AcceptedOf& accepted) {
  const IniField* const field = document.section("basic").find(number.name);
  if (field == nullptr) return 0;
  const std::vector<double> numbers = numbers_of(number, field->value);
  const bool good = numbers.size() == 1 && accepted(number, 0).values.contains(numbers.front());
  return good ? static_cast<std::size_t>(numbers.front()) : 0;
}

std::vector<Finding> check_groups(const IniDocument& document, ConfigKind kind) {
  const AcceptedOf accepted = accepted_of(kind);
  const std::vector<KeyDescription> descriptions = keys_of(kind);  // number and version first
  const std::size_t count = group_count(document, descriptions.front(), accepted);
  std::vector<CheckedKey> checked;
  for (std::size_t i = 0; i <= count; ++i) {
    const std::string section = i == 0 ? "basic" : fmt::format("group{}", i);
    for (const KeyDescription& key : descriptions) {
      if ((key.section == std::string_view("basic")) == (i == 0)) checked.push_back({section, key});
    }
  }
  KeyChecker keys(document, std::move(checked), accepted);
  keys.require_section("basic");
  for (std::size_t i = 1; i <= count; ++i)
    keys.require_section(fmt::format("group{}", i));
  keys.check_keys();
  if (kind == ConfigKind::kD2c && count > kMostD2cInImage) {
    keys.warn(keys.line("basic.num"), "basic.num", fmt::format("an image holds at most {} groups", kMostD2cInImage));
  }
  return keys.finish();
}

// --- calibration input configurations

std::vector<Finding> check_calib(const IniDocument& document) {
  // The LUT's own keys count where there is a LUT.
  const IniField* const type = document.section("rectify").find("distort_type");
  const bool no_lut = type != nullptr && type->value == "0";
  const AcceptedOf strict = accepted_of(ConfigKind::kCalib);
  KeyChecker keys(document, checked_keys(ConfigKind::kCalib), [&](const KeyDescription& key, std::size_t index) {
    const std::string_view name = key.name;
    Accepted accepted = strict(key, index);
    if (no_lut && name.starts_with("lut_")) accepted.values = accepted_values(key, index);
    return accepted;
  });
  for (const char* const name : {"basic", "rectify", "d2d", "d2c"})
    keys.require_section(name);
  keys.check_keys();
  return keys.finish();
}

}  // namespace

std::vector<Finding> check_config(const std::string& text, ConfigKind kind) {
  IniDocument document;
  try {
    document.parse(text);
  } catch (const IniError& fault) {
    const bool mark = text.starts_with("\xEF\xBB\xBF");
    const char* const hint = mark ? "; the file starts with a byte-order mark, which is not skipped" : "";
    return {{Severity::kError, fault.line(), "", std::string(fault.what()) + hint}};
  }
  switch (kind) {
    case ConfigKind::kEngine:
      return check_engine(document);
    case ConfigKind::kD2c:
    case ConfigKind::kIrPre:
      return check_groups(document, kind);
    case ConfigKind::kCalib:
      return check_calib(document);
  }
  return {};
}

bool has_errors(const std::vector<Finding>& findings) {
  return std::any_of(
      findings.begin(), findings.end(), [](const Finding& finding) { return finding.severity == Severity::kError; });
}

std::string finding_line(const std::string& path, const Finding& finding) {
  const std::string where = finding.line == 0 ? path : fmt::format("{}:{}", path, finding.line);
  const char* const what = finding.severity == Severity::kError ? "error" : "warning";
  const std::string place = finding.place.empty() ? "" : finding.place + ": ";
  return fmt::format("{}: {}: {}{}", where, what, place, finding.message);
}

nlohmann::ordered_json finding_json(const Finding& finding) {
  return {{"severity", finding.severity == Severity::kError ? "error" : "warning"},
          {"line", finding.line},
          {"place", finding.place},
          {"message", finding.message}};
}

}  // namespace vq3900::tool
