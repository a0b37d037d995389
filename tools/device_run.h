// The way of a configuration to the simulated device and back: load, apply, write every block, read every block.
#ifndef VQ3900_TOOLS_DEVICE_RUN_H
#define VQ3900_TOOLS_DEVICE_RUN_H

#include "vq3900_depth_engine.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "sim_device.h"

namespace vq3900::tool {

// What a depth-engine configuration does not say: the geometry of the rig.
struct RigGeometry {
  float baseline = 50.0F;             // depth units
  float focal_length = 600.0F;        // pixels
  std::optional<float> ref_distance;  // depth units; the configuration's ref_dist when absent
};

// One call of the library and the transfers that it made.
struct RunStep {
  std::string name;
  std::int32_t code;
  std::vector<std::size_t> written;  // elements of each write
  std::vector<std::size_t> read;     // elements of each read
};

struct DeviceRun {
  std::vector<RunStep> steps;
  std::string library_output;        // what the library printed to standard output
  std::size_t registers = 0;         // registers of all blocks that the device was programmed with
  std::size_t registers_right = 0;   // of these, those that hold what the library converted
  std::size_t values = 0;            // values of the configuration that have a register field of their own
  std::vector<std::string> missing;  // of these, those that the field does not hold: "section.key"
  dpu_mode mode{};
  unsigned int version = 0;
  dpu_scheme_config scheme{};

  // The step that failed, if one did: it is the last.
  const RunStep* failure() const { return steps.empty() || steps.back().code == 0 ? nullptr : &steps.back(); }

  // What the configuration asks for and another setting forbids is missing without harm.
  bool good() const { return failure() == nullptr && registers_right == registers; }
};

// Runs the steps in order, up to the first that fails.
DeviceRun run_on_device(const std::string& config_path, const RigGeometry& geometry, sim::SimDevice& device);

}  // namespace vq3900::tool

#endif
