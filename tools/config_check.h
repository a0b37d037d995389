// Says what is wrong with a configuration: with the key, its place and what is accepted.
#ifndef VQ3900_TOOLS_CONFIG_CHECK_H
#define VQ3900_TOOLS_CONFIG_CHECK_H

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "config_kinds.h"

namespace vq3900::tool {

enum class Severity : std::uint8_t { kError, kWarning };

struct Finding {
  Severity severity;
  std::uint32_t line;   // 0: the file as a whole
  std::string place;    // "section.key", "[section]", or empty
  std::string message;  // with the accepted values where there are any
};

// Everything that keeps the configuration from being loaded and applied as it reads (errors), and what is probably not
// meant (warnings), in the order of the lines.
std::vector<Finding> check_config(const std::string& text, ConfigKind kind = ConfigKind::kEngine);

bool has_errors(const std::vector<Finding>& findings);

// "path:line: error: place: message"
std::string finding_line(const std::string& path, const Finding& finding);
nlohmann::ordered_json finding_json(const Finding& finding);

}  // namespace vq3900::tool

#endif
