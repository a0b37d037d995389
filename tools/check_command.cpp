#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "commands.h"
#include "config_check.h"
#include "json_output.h"
#include "platform/file.h"
#include "tool.h"

namespace vq3900::tool {

int check_command(const std::string& config_path, const std::string& kind, bool json) {
  const std::optional<std::string> text = read_file(config_path.c_str());
  if (!text) {
    fmt::print(stderr, "vq3900-tool: {}: cannot be opened\n", config_path);
    return kFailed;
  }
  const std::vector<Finding> findings = check_config(*text, config_kind(kind));
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

}  // namespace vq3900::tool
