// The texts of single keys as numbers.
#ifndef VQ3900_TOOLS_KEY_VALUES_H
#define VQ3900_TOOLS_KEY_VALUES_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "config/key_table.h"

namespace vq3900::tool {

// What a key's text holds: numbers to hold against the accepted values, or the complaint.
struct Reading {
  std::vector<double> numbers;
  std::optional<std::string> complaint;
};

Reading read_key(const KeyDescription& key, std::string_view text);

// The numbers alone; none for a text that is not of the key's type.
std::vector<double> numbers_of(const KeyDescription& key, std::string_view text);

}  // namespace vq3900::tool

#endif
