#include "config_check.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <bit>
#include <map>
#include <optional>
#include <set>
#include <string_view>

#include "accepted_values.h"
#include "config/c_locale.h"
#include "config/de_input.h"
#include "config/field_readers.h"

namespace vq3900::tool {

namespace {

// What a key's text holds: numbers to hold against the accepted values, or the complaint.
struct Reading {
  std::vector<double> numbers;
  std::optional<std::string> complaint;
};

// An element of a list, strictly: the library itself reads its start and cuts it to the field.
template <typename Number>
bool read_element(std::string_view text, Converted<Number> (*convert)(std::string_view), std::vector<double>& numbers) {
  text = trim(text);
  const Converted<Number> converted = convert(text);
  numbers.push_back(static_cast<double>(converted.value));
  return converted.length == text.size() && converted.length > 0 && !converted.out_of_range;
}

// A list of numbers in braces. The elements are split as the library splits them: empty ones do not count.
template <typename Number>
Reading read_list(std::string_view text, std::size_t expected, Converted<Number> (*convert)(std::string_view)) {
  Reading reading;
  const bool braces = text.size() >= 2 && text.front() == '{' && text.back() == '}';
  std::string_view rest = braces ? text.substr(1, text.size() - 2) : std::string_view{};
  while (!rest.empty()) {
    const std::size_t length = std::min(rest.find(','), rest.size());
    const std::string_view element = rest.substr(0, length);
    rest.remove_prefix(std::min(length + 1, rest.size()));
    if (element.empty()) continue;
    if (!read_element(element, convert, reading.numbers)) {
      return {{}, fmt::format("'{}' is not a number", trim(element))};
    }
  }
  if (!braces || reading.numbers.size() != expected) {
    return {{},
            fmt::format("'{}' is not a list of {} numbers in braces, such as {{{}}}",
                        text,
                        expected,
                        fmt::join(std::vector<int>(expected, 0), ","))};
  }
  return reading;
}

Reading read_text(std::string_view text, std::size_t most) {
  if (text.empty()) return {{}, "the text is empty"};
  if (text.size() <= most) return {};
  return {{}, fmt::format("'{}' is longer than {} characters", text, most)};
}

Reading read_key(const KeyDescription& key, std::string_view text) {
  switch (key.type) {
    case KeyType::kBool:
      return {{read_bool(text) ? 1.0 : 0.0}, {}};
    case KeyType::kUint8:
      return {{static_cast<double>(read_uint8(text))}, {}};
    case KeyType::kInt8:
      return {{static_cast<double>(read_int8(text))}, {}};
    case KeyType::kInt:
      return {{static_cast<double>(read_int(text))}, {}};
    case KeyType::kInt32:
      return {{static_cast<double>(read_int32(text))}, {}};
    case KeyType::kUint32:
      return {{static_cast<double>(read_uint32(text))}, {}};
    case KeyType::kFloat:
      return {{static_cast<double>(read_float(text))}, {}};
    case KeyType::kText:
      return read_text(text, key.count);
    case KeyType::kVersion:
      return read_version(text) != 0 ? Reading{} : Reading{{}, "the version has no parts"};
    case KeyType::kUint16List:
      return read_list(text, key.count, to_int64);
    case KeyType::kInt32List:
      return read_list(text, key.count, to_int64);
    case KeyType::kDoubleList:
      return read_list(text, key.count, to_double);
  }
  return {};
}

// The texts of one key at a time, and the values that the rules between keys look at.
class Checker {
 public:
  explicit Checker(const IniDocument& document) : document_(document) {}

  std::vector<Finding> run() {
    check_sections();
    for (const KeyDescription& key : keys_)
      check_key(key);
    check_unknown();
    check_repeated();
    if (!has_errors(findings_)) check_rules();
    std::stable_sort(
        findings_.begin(), findings_.end(), [](const Finding& a, const Finding& b) { return a.line < b.line; });
    return std::move(findings_);
  }

 private:
  void error(std::uint32_t line, std::string place, std::string message) {
    findings_.push_back({Severity::kError, line, std::move(place), std::move(message)});
  }
  void warn(std::uint32_t line, std::string place, std::string message) {
    findings_.push_back({Severity::kWarning, line, std::move(place), std::move(message)});
  }

  void check_sections() {
    for (const char* const name : {"mode", "basic", "disparity", "extend_chop", "gpm"}) {
      if (document_.section(name).empty()) error(0, fmt::format("[{}]", name), "the section is missing or empty");
    }
    if (document_.section("scheme").empty()) {
      warn(0, "[scheme]", "the section is missing or empty: the output scheme will be all zero");
    }
  }

  void check_key(const KeyDescription& key) {
    const IniSection section = document_.section(key.section);
    if (section.empty()) return;
    const std::string place = fmt::format("{}.{}", key.section, key.name);
    const IniField* const field = section.find(key.name);
    if (field == nullptr) {
      const bool beside = key.beside != nullptr && section.find(key.beside) != nullptr;
      if (key.required || beside) {
        error(0,
              place,
              fmt::format("the key is missing{}; accepted: {}",
                          beside ? fmt::format(" beside {}", key.beside) : "",
                          expected(key)));
      }
      return;
    }
    check_value(key, *field, place);
  }

  void check_value(const KeyDescription& key, const IniField& field, const std::string& place) {
    Reading reading;
    try {
      reading = read_key(key, field.value);
    } catch (const FieldError& fault) {
      reading.complaint = fault.what();
    }
    if (reading.complaint) {
      const bool comment = field.value.find_first_of("#;%") != std::string_view::npos;
      const char* const hint = comment ? "; a value takes no comment behind it" : "";
      error(field.line, place, fmt::format("{}; accepted: {}{}", *reading.complaint, expected(key), hint));
      return;
    }
    for (std::size_t i = 0; i < reading.numbers.size(); ++i) {
      const AcceptedValues accepted = accepted_values(key, i);
      if (accepted.contains(reading.numbers[i])) continue;
      error(
          field.line, place, fmt::format("{:.10g} is out of range; accepted: {}", reading.numbers[i], accepted.text()));
      return;
    }
    values_[place] = {field.line, std::move(reading.numbers)};
  }

  static std::string expected(const KeyDescription& key) {
    std::string values = accepted_values(key).text();
    switch (key.type) {
      case KeyType::kBool:
        return "true, false, 1 or 0";
      case KeyType::kText:
        return fmt::format("at most {} characters", key.count);
      case KeyType::kVersion:
        return "parts between dots, such as 1.0.2.5";
      case KeyType::kFloat:
        return values == "any" ? "a number" : values;
      case KeyType::kUint16List:
      case KeyType::kInt32List:
      case KeyType::kDoubleList:
        return fmt::format("{} numbers in braces, each {}", key.count, values);
      default:
        return values;
    }
  }

  void check_unknown() {
    std::set<std::pair<std::string_view, std::string_view>> known;
    std::set<std::string_view> sections;
    for (const KeyDescription& key : keys_) {
      known.insert({key.section, key.name});
      sections.insert(key.section);
    }
    for (const std::string_view name : document_.section_names()) {
      const auto fields = document_.section(name).fields();
      if (fields.empty()) continue;
      if (!sections.contains(name)) {
        warn(fields.front().line, fmt::format("[{}]", name), "no such section; it is ignored");
        continue;
      }
      for (const IniField& field : fields) {
        if (known.contains({name, field.key})) continue;
        const bool old_name = name == "disparity" && field.key == "tile_overlap_y";
        warn(field.line,
             fmt::format("{}.{}", name, field.key),
             old_name ? "never read; the key is tile_overlap_y_traverse" : "no such key; it is ignored");
      }
    }
  }

  void check_repeated() {
    for (const IniField& field : document_.replaced_fields()) {
      warn(field.line, std::string(field.key), "given again further down in its section; the last value counts");
    }
  }

  // A value that the single checks have let through; list elements by index.
  double value(const std::string& place, std::size_t index = 0) const {
    const auto at = values_.find(place);
    return at == values_.end() || index >= at->second.numbers.size() ? 0 : at->second.numbers[index];
  }
  std::uint32_t line(const std::string& place) const {
    const auto at = values_.find(place);
    return at == values_.end() ? 0 : at->second.line;
  }

  // What the setters refuse, or what cannot be meant, once every key by itself is right.
  void check_rules() {
    check_camera_rules();
    check_image_rules();
    check_point_rules();
  }

  void check_camera_rules() {
    const bool stereo = value("basic.cam_mode") == 1;
    const double mode = value("basic.rectify_mode");
    if (stereo && mode < 2) {
      error(line("basic.rectify_mode"),
            "basic.rectify_mode",
            "a stereo rig (cam_mode 1) rectifies both cameras or none; accepted: 2 or 3");
    }
    if (!stereo && mode == 2) {
      error(line("basic.rectify_mode"),
            "basic.rectify_mode",
            "a single camera (cam_mode 0) is rectified alone; accepted: 0, 1 or 3");
    }
    if (stereo && value("basic.rotate_90_en") == 1) {
      error(line("basic.rotate_90_en"), "basic.rotate_90_en", "a stereo rig (cam_mode 1) is not rotated; accepted: 0");
    }
    if (value("basic.sbg_en") == 1 && (mode == 0 || mode == 3)) {
      warn(line("basic.sbg_en"), "basic.sbg_en", "has no effect while camera 1 is not rectified (rectify_mode 1 or 2)");
    }
    const double depth_mode = values_.contains("basic.depth_mode") ? value("basic.depth_mode") : (stereo ? 1 : 0);
    if (depth_mode == 0 && !stereo && value("scheme.ref_dist") <= 128) {
      warn(line("scheme.ref_dist"),
           "scheme.ref_dist",
           "depth relative to a reference plane (depth_mode 0) needs its distance; accepted: above 128");
    }
  }

  void check_image_rules() {
    const double factor = value("basic.upsample_enable") == 1 ? 2 : 1;
    const bool turned = factor == 1 && value("basic.cam_mode") == 0 && value("basic.rotate_90_en") == 1;
    for (const std::size_t axis : {0U, 1U}) {
      const double image = factor * value("mode.in_ir_res", turned ? 1 - axis : axis);
      const std::string of = axis == 0 ? "width" : "height";
      const double extended =
          image + value("extend_chop.extend_tar", 2 * axis) + value("extend_chop.extend_tar", 2 * axis + 1);
      const double chopped = value("extend_chop.chop", 2 * axis) + value("extend_chop.chop", 2 * axis + 1);
      if (extended > 4095) {
        error(line("extend_chop.extend_tar"),
              "extend_chop.extend_tar",
              fmt::format("the extended {} is {:.0f}; accepted: up to 4095", of, extended));
      } else if (chopped >= extended) {
        error(line("extend_chop.chop"),
              "extend_chop.chop",
              fmt::format("chops {:.0f} off an extended {} of {:.0f}", chopped, of, extended));
      } else if (values_.contains("mode.chop_out_res") && extended - chopped != value("mode.chop_out_res", axis)) {
        warn(line("mode.chop_out_res"),
             "mode.chop_out_res",
             fmt::format("the output {} after chopping is {:.0f}, not {:.0f}",
                         of,
                         extended - chopped,
                         value("mode.chop_out_res", axis)));
      }
    }
  }

  void check_point_rules() {
    unsigned any_row = 0;
    for (std::size_t row = 0; row < 16; ++row) {
      any_row |= static_cast<unsigned>(value("gpm.enable_bits_per_row", row));
    }
    const int columns = std::popcount(any_row);
    if (columns != static_cast<int>(value("gpm.gp_enabled_cols"))) {
      warn(line("gpm.gp_enabled_cols"),
           "gpm.gp_enabled_cols",
           fmt::format("enable_bits_per_row enables {} columns, not {:.0f}", columns, value("gpm.gp_enabled_cols")));
    }
  }

  struct Value {
    std::uint32_t line = 0;
    std::vector<double> numbers;
  };

  const IniDocument& document_;
  std::vector<KeyDescription> keys_ = de_input_keys();
  std::map<std::string, Value> values_;
  std::vector<Finding> findings_;
};

}  // namespace

std::vector<double> numbers_of(const KeyDescription& key, std::string_view text) {
  try {
    return read_key(key, text).numbers;
  } catch (const FieldError&) {
    return {};
  }
}

std::vector<Finding> check_config(const std::string& text) {
  IniDocument document;
  try {
    document.parse(text);
  } catch (const IniError& fault) {
    const bool mark = text.starts_with("\xEF\xBB\xBF");
    const char* const hint = mark ? "; the file starts with a byte-order mark, which is not skipped" : "";
    return {{Severity::kError, fault.line(), "", std::string(fault.what()) + hint}};
  }
  return Checker(document).run();
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
