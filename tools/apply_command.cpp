#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <string>

#include "commands.h"
#include "json_output.h"
#include "register_blocks.h"
#include "register_report.h"
#include "tool.h"

namespace vq3900::tool {

namespace {

// A description or a version's characters: as many as there are, up to the first zero.
std::string description(const dpu_mode& mode) {
  return {mode.dpu_desc, std::find(std::begin(mode.dpu_desc), std::end(mode.dpu_desc), '\0')};
}

std::string counts_text(const char* verb, const std::vector<std::size_t>& counts) {
  return counts.empty() ? "" : fmt::format("{} {}", verb, fmt::join(counts, " + "));
}

std::string step_line(const RunStep& step) {
  const std::string transfers = counts_text("wrote", step.written) + counts_text("read", step.read);
  if (step.code != 0) return fmt::format("  {:<22} failed with code {}\n", step.name, step.code);
  return fmt::format("  {:<22} ok{}{}\n", step.name, transfers.empty() ? "" : "   ", transfers);
}

std::string head_text(const DeviceRun& run) {
  const auto size = [](const std::uint16_t(&resolution)[2]) {
    return fmt::format("{}x{}", resolution[0], resolution[1]);
  };
  return fmt::format("{}: version 0x{:08X}, input {}, rectified {}, output {}, scheme flags 0x{:02X}\n",
                     description(run.mode),
                     run.version,
                     size(run.mode.in_ir_res),
                     size(run.mode.rectify_out_valid_res),
                     size(run.mode.chop_out_res),
                     run.scheme.scheme_flags);
}

void print_text(const DeviceRun& run) {
  if (run.failure() == nullptr) {
    fmt::print("{}\n", head_text(run));
    for (const RegisterBlock& block : register_blocks())
      fmt::print("{}\n", register_table(block, block.registers()));
  }
  fmt::print("Steps on the simulated device (elements of each transfer)\n");
  for (const RunStep& step : run.steps)
    fmt::print("{}", step_line(step));
  if (run.failure() == nullptr) {
    fmt::print("\n{} of {} registers of the device hold what was converted\n", run.registers_right, run.registers);
    fmt::print(
        "{} of {} configuration values stand in their register fields\n", run.values - run.missing.size(), run.values);
    for (const std::string& key : run.missing)
      fmt::print("  not there: {}\n", key);
  }
}

void print_report(const DeviceRun& run) {
  nlohmann::ordered_json steps = nlohmann::ordered_json::array();
  for (const RunStep& step : run.steps) {
    steps.push_back({{"name", step.name}, {"code", step.code}, {"written", step.written}, {"read", step.read}});
  }
  nlohmann::ordered_json blocks = nlohmann::ordered_json::array();
  for (const RegisterBlock& block : register_blocks())
    blocks.push_back(register_json(block, block.registers()));
  const nlohmann::ordered_json report{{"description", description(run.mode)},
                                      {"version", run.version},
                                      {"steps", std::move(steps)},
                                      {"registers", run.registers},
                                      {"registers_right", run.registers_right},
                                      {"values", run.values},
                                      {"values_missing", run.missing},
                                      {"blocks", std::move(blocks)}};
  print_json(report);
}

// What failed, and what can be done about it.
std::string failure_text(const std::string& config_path, const RunStep& failed) {
  std::string text = fmt::format("{}: {} failed with code {}", config_path, failed.name, failed.code);
  const bool geometry = failed.name == "set rig geometry" || failed.code == VQ3900_FIXED_POINT_OVERFLOW;
  if (geometry) return text + "; --baseline, --focal and --ref-dist (or ref_dist) give the geometry of the rig";
  if (failed.name == "load configuration" && failed.code == -1) return text;  // the library said why
  return text + fmt::format("; try 'vq3900-tool check {}'", config_path);
}

}  // namespace

int apply_command(const std::string& config_path, const RigGeometry& geometry, bool json) {
  sim::SimDevice device;
  const DeviceRun run = run_on_device(config_path, geometry, device);
  fmt::print(stderr, "{}", run.library_output);
  if (json) {
    print_report(run);
  } else {
    print_text(run);
  }
  if (run.failure() != nullptr) {
    fmt::print(stderr, "vq3900-tool: {}\n", failure_text(config_path, *run.failure()));
    return kFailed;
  }
  return run.good() ? kDone : kFailed;
}

}  // namespace vq3900::tool
