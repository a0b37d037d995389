// The keys of a calibration input configuration with what they accept and mean.
#ifndef VQ3900_TOOLS_CALIB_CALIB_KEYS_H
#define VQ3900_TOOLS_CALIB_CALIB_KEYS_H

#include <string_view>

#include "accepted_values.h"
#include "config/key_table.h"

namespace vq3900::tool {

struct CalibKeyNote {
  std::string_view section;
  std::string_view key;
  std::string_view absent;  // what counts when the key is absent; empty for a required one
  std::string_view accepted;
  std::string_view meaning;
};

// The note of a key; null for none.
const CalibKeyNote* find_calib_key_note(const KeyDescription& key);

// What the conversion can use of a key's numbers.
AcceptedValues accepted_calib_values(const KeyDescription& key);

}  // namespace vq3900::tool

#endif
