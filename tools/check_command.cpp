#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "accepted_values.h"
#include "commands.h"
#include "config/de_input.h"
#include "config_check.h"
#include "json_output.h"
#include "platform/file.h"
#include "tool.h"

namespace vq3900::tool {

namespace {

const char* type_text(KeyType type) {
  switch (type) {
    case KeyType::kBool:
      return "switch";
    case KeyType::kUint8:
    case KeyType::kInt8:
    case KeyType::kInt:
    case KeyType::kInt32:
    case KeyType::kUint32:
      return "integer";
    case KeyType::kFloat:
      return "number";
    case KeyType::kText:
      return "text";
    case KeyType::kVersion:
      return "version";
    case KeyType::kUint16List:
    case KeyType::kInt32List:
      return "list of integers";
    case KeyType::kDoubleList:
      return "list of numbers";
  }
  return "";
}

std::string need_text(const KeyDescription& key) {
  if (key.beside != nullptr) return fmt::format("beside {}", key.beside);
  return key.required ? "required" : "optional";
}

std::string accepted_text(const KeyDescription& key) {
  switch (key.type) {
    case KeyType::kBool:
      return "true, false, 1, 0";
    case KeyType::kText:
      return fmt::format("up to {} characters", key.count);
    case KeyType::kVersion:
      return "parts between dots";
    default:
      break;
  }
  const std::string values = accepted_values(key).text();
  if (key.count == 1) return values;
  std::string text = fmt::format("{} elements, each {}", key.count, values);
  for (std::size_t i = 1; i < key.count; ++i) {
    const std::string own = accepted_values(key, i).text();
    if (own != values && key.type == KeyType::kDoubleList) text += fmt::format("; element {} {}", i, own);
  }
  return text;
}

}  // namespace

int check_command(const std::string& config_path, bool json) {
  const std::optional<std::string> text = read_file(config_path.c_str());
  if (!text) {
    fmt::print(stderr, "vq3900-tool: {}: cannot be opened\n", config_path);
    return kFailed;
  }
  const std::vector<Finding> findings = check_config(*text);
  const auto errors = std::count_if(
      findings.begin(), findings.end(), [](const Finding& finding) { return finding.severity == Severity::kError; });
  const auto warnings = static_cast<std::ptrdiff_t>(findings.size()) - errors;
  if (json) {
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (const Finding& finding : findings)
      list.push_back(finding_json(finding));
    print_json(nlohmann::ordered_json{{"file", config_path}, {"errors", errors}, {"findings", list}});
  } else {
    for (const Finding& finding : findings)
      fmt::print("{}\n", finding_line(config_path, finding));
    fmt::print("{}: {} error{}, {} warning{}\n",
               config_path,
               errors,
               errors == 1 ? "" : "s",
               warnings,
               warnings == 1 ? "" : "s");
  }
  return errors == 0 ? kDone : kFailed;
}

int keys_command(bool markdown) {
  if (markdown) fmt::print("| section | key | type | needed | accepted |\n|---|---|---|---|---|\n");
  for (const KeyDescription& key : de_input_keys()) {
    if (markdown) {
      fmt::print("| {} | `{}` | {} | {} | {} |\n",
                 key.section,
                 key.name,
                 type_text(key.type),
                 need_text(key),
                 accepted_text(key));
    } else {
      fmt::print("{:<12} {:<26} {:<17} {:<24} {}\n",
                 key.section,
                 key.name,
                 type_text(key.type),
                 need_text(key),
                 accepted_text(key));
    }
  }
  return kDone;
}

}  // namespace vq3900::tool
