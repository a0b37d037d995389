// Every register table of the library with the fields in it, for printing.
#ifndef VQ3900_TOOLS_REGISTER_BLOCKS_H
#define VQ3900_TOOLS_REGISTER_BLOCKS_H

#include "vq3900_depth_engine.h"

#include <cstdint>
#include <string_view>
#include <vector>

#include "modules/register_field.h"

namespace vq3900::tool {

struct RegisterBlock {
  std::string_view name;  // as the table functions call it
  std::string_view title;
  std::vector<DeRegElement_S> (*registers)();  // the library's current values
  std::vector<FieldBits> fields;
};

// All tables in the order in which a device is brought up.
const std::vector<RegisterBlock>& register_blocks();

const RegisterBlock* find_block(std::string_view name);

// The fields of a block that lie in one of its elements, highest bits first.
std::vector<FieldBits> fields_of(const RegisterBlock& block, std::size_t element);

}  // namespace vq3900::tool

#endif
