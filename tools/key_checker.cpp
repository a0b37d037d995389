#include "key_checker.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>
#include <string_view>
#include <utility>

#include "key_values.h"

namespace vq3900::tool {

void KeyChecker::require_section(const std::string& name) {
  if (document_.section(name).empty()) error(0, fmt::format("[{}]", name), "the section is missing or empty");
}

void KeyChecker::check_keys() {
  for (const CheckedKey& checked : keys_)
    check_key(checked);
  check_unknown();
  check_repeated();
}

void KeyChecker::error(std::uint32_t line, std::string place, std::string message) {
  findings_.push_back({Severity::kError, line, std::move(place), std::move(message)});
}

void KeyChecker::warn(std::uint32_t line, std::string place, std::string message) {
  findings_.push_back({Severity::kWarning, line, std::move(place), std::move(message)});
}

double KeyChecker::value(const std::string& place, std::size_t index) const {
  const auto at = values_.find(place);
  return at == values_.end() || index >= at->second.numbers.size() ? 0 : at->second.numbers[index];
}

std::uint32_t KeyChecker::line(const std::string& place) const {
  const auto at = values_.find(place);
  return at == values_.end() ? 0 : at->second.line;
}

std::vector<Finding> KeyChecker::finish() {
  std::stable_sort(
      findings_.begin(), findings_.end(), [](const Finding& a, const Finding& b) { return a.line < b.line; });
  return std::move(findings_);
}

void KeyChecker::check_key(const CheckedKey& checked) {
  const KeyDescription& key = checked.key;
  const IniSection section = document_.section(checked.section);
  if (section.empty()) return;
  const std::string place = fmt::format("{}.{}", checked.section, key.name);
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

void KeyChecker::check_value(const KeyDescription& key, const IniField& field, const std::string& place) {
  Reading reading = read_key(key, field.value);
  if (reading.complaint) {
    const bool comment = field.value.find_first_of("#;%") != std::string_view::npos;
    const char* const hint = comment ? "; a value takes no comment behind it" : "";
    error(field.line, place, fmt::format("{}; accepted: {}{}", *reading.complaint, expected(key), hint));
    return;
  }
  for (std::size_t i = 0; i < reading.numbers.size(); ++i) {
    const Accepted accepted = accepted_(key, i);
    if (accepted.values.contains(reading.numbers[i])) continue;
    error(field.line, place, fmt::format("{:.10g} is out of range; accepted: {}", reading.numbers[i], accepted.text));
    return;
  }
  values_[place] = {field.line, std::move(reading.numbers)};
}

std::string KeyChecker::expected(const KeyDescription& key) const {
  std::string values = accepted_(key, 0).text;
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

void KeyChecker::check_unknown() {
  std::set<std::pair<std::string_view, std::string_view>> known;
  std::set<std::string_view> sections;
  for (const CheckedKey& checked : keys_) {
    known.insert({checked.section, checked.key.name});
    sections.insert(checked.section);
  }
  for (const std::string_view name : document_.section_names()) {
    const auto fields = document_.section(name).fields();
    if (fields.empty()) continue;
    if (!sections.contains(name)) {
      const auto first = std::ranges::min_element(fields, {}, &IniField::line);
      warn(first->line, fmt::format("[{}]", name), "no such section; it is ignored");
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

void KeyChecker::check_repeated() {
  for (const IniField& field : document_.replaced_fields()) {
    warn(field.line, std::string(field.key), "given again further down in its section; the last value counts");
  }
}

}  // namespace vq3900::tool
