// The depth-engine configuration: what its INI text may hold, and reading it into the configuration records.
#ifndef VQ3900_CONFIG_DE_INPUT_H
#define VQ3900_CONFIG_DE_INPUT_H

#include <vector>

#include "config/ini_document.h"
#include "config/key_table.h"
#include "config/load_result.h"
#include "state/de_input_state.h"

namespace vq3900 {

// Reads all sections. A document without section mode loads nothing and is no fault. Records keep what was read before
// a fault. A bad value throws FieldError.
LoadResult read_de_input(const IniDocument& document, DeInputConfig& config);

// All keys in the order of reading.
std::vector<KeyDescription> de_input_keys();

}  // namespace vq3900

#endif
