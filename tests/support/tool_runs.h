// Running the tool in the test's own process, and finding registers and fields in its JSON.
#ifndef VQ3900_TESTS_SUPPORT_TOOL_RUNS_H
#define VQ3900_TESTS_SUPPORT_TOOL_RUNS_H

#include <gtest/gtest.h>

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "support/capture.h"
#include "support/engine_fixture.h"
#include "tool.h"

namespace vq3900::test {

class ToolTest : public EngineTest {
 protected:
  static Outcome run(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "vq3900-tool");
    std::vector<const char*> argv;
    for (const std::string& argument : arguments)
      argv.push_back(argument.c_str());
    return outcome_of([&] { return tool::run_tool(static_cast<int>(argv.size()), argv.data()); });
  }
};

inline std::uint32_t value_at(const nlohmann::json& report, const std::string& block_name, std::uint32_t address) {
  for (const nlohmann::json& block : report.at("blocks")) {
    if (block.at("name") != block_name) continue;
    for (const nlohmann::json& element : block.at("registers")) {
      if (element.at("address") == address) return element.at("value");
    }
  }
  ADD_FAILURE() << block_name << " has no register " << address;
  return 0;
}

inline const nlohmann::json& field_at(const nlohmann::json& report, const std::string& field_name) {
  static const nlohmann::json kNone;
  for (const nlohmann::json& block : report.at("blocks")) {
    for (const nlohmann::json& element : block.at("registers")) {
      if (!element.contains("fields")) continue;
      for (const nlohmann::json& field : element.at("fields")) {
        if (field.at("name") == field_name) return field;
      }
    }
  }
  ADD_FAILURE() << "no field " << field_name;
  return kNone;
}

}  // namespace vq3900::test

#endif
