// Register tables as text for people and as JSON for programs.
#ifndef VQ3900_TOOLS_REGISTER_REPORT_H
#define VQ3900_TOOLS_REGISTER_REPORT_H

#include "vq3900_depth_engine.h"

#include <nlohmann/json.hpp>
#include <span>
#include <string>

#include "register_blocks.h"

namespace vq3900::tool {

// One line a register: address, mask, value, and the fields with what they stand for. Runs of equal registers without
// fields become one line.
std::string register_table(const RegisterBlock& block, std::span<const DeRegElement_S> registers);

nlohmann::ordered_json register_json(const RegisterBlock& block, std::span<const DeRegElement_S> registers);

}  // namespace vq3900::tool

#endif
