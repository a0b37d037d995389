// The kinds of configurations: their keys, and what each key accepts.
#ifndef VQ3900_TOOLS_CONFIG_KINDS_H
#define VQ3900_TOOLS_CONFIG_KINDS_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "accepted_values.h"
#include "config/config_image.h"
#include "config/key_table.h"

namespace vq3900::tool {

enum class ConfigKind : std::uint8_t {
  kEngine,
  kD2c,    // depth-to-colour groups
  kIrPre,  // infrared pre-processing groups
  kCalib,  // calibration input
};

// By its name on the command line: engine, d2c, ir-pre, calib.
ConfigKind config_kind(std::string_view name);

// All keys in the order of reading. Those of a group stand once, in section "group", behind the number of groups and
// the version.
std::vector<KeyDescription> keys_of(ConfigKind kind);

struct Accepted {
  AcceptedValues values;
  std::string text;
};
// What a key accepts, of a list one element.
using AcceptedOf = std::function<Accepted(const KeyDescription& key, std::size_t index)>;
AcceptedOf accepted_of(ConfigKind kind);

inline constexpr std::uint32_t kMostD2cInImage = kD2cSection.most_items();

}  // namespace vq3900::tool

#endif
