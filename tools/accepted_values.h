// What the device accepts for each key of a depth-engine configuration.
#ifndef VQ3900_TOOLS_ACCEPTED_VALUES_H
#define VQ3900_TOOLS_ACCEPTED_VALUES_H

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "config/key_table.h"
#include "modules/register_field.h"

namespace vq3900::tool {

inline constexpr double kUnlimited = std::numeric_limits<double>::infinity();

struct AcceptedValues {
  double low = 0;
  double high = 0;
  std::vector<double> only = {};  // when not empty: these values alone

  bool contains(double value) const;
  std::string text() const;  // "0 to 4095", "5, 7 or 9"
};

// The values for a key, of a list for one element: where no rule of its own holds, those that fit its register field,
// and where it has none, those of its type.
AcceptedValues accepted_values(const KeyDescription& key, std::size_t index = 0);

// The register field that takes a key's value as it is, of a list one element's.
struct KeyField {
  FieldBits bits;
  std::uint32_t address = 0;
  double resolution = 0;  // half a step of the field, or 0 for integers
};
std::optional<KeyField> register_field_of(const KeyDescription& key, std::size_t index = 0);

}  // namespace vq3900::tool

#endif
