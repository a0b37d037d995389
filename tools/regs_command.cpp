#include <fmt/format.h>

#include <nlohmann/json.hpp>
#include <string>

#include "commands.h"
#include "json_output.h"
#include "register_blocks.h"
#include "register_report.h"
#include "tool.h"

namespace vq3900::tool {

int regs_command(const std::string& block_name, bool json) {
  nlohmann::ordered_json blocks = nlohmann::ordered_json::array();
  for (const RegisterBlock& block : register_blocks()) {
    if (!block_name.empty() && block.name != block_name) continue;
    if (json) {
      blocks.push_back(register_json(block, block.registers()));
    } else {
      fmt::print("{}\n", register_table(block, block.registers()));
    }
  }
  if (json) print_json(nlohmann::ordered_json{{"blocks", std::move(blocks)}});
  return kDone;
}

}  // namespace vq3900::tool
