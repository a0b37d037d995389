// The calibration input configuration: what its INI text may hold, and reading it into the record.
#ifndef VQ3900_CONFIG_CALIB_INPUT_H
#define VQ3900_CONFIG_CALIB_INPUT_H

#include <optional>
#include <string>
#include <vector>

#include "config/ini_document.h"
#include "config/key_table.h"
#include "state/calib_input_state.h"

namespace vq3900 {

// Reads all sections into the record, which keeps what was read before a fault. The text of the fault, or nothing; a
// bad value throws FieldError.
std::optional<std::string> read_calib_input(const IniDocument& document, CalibInputConfig& config);

// All keys in the order of reading.
std::vector<KeyDescription> calib_input_keys();

}  // namespace vq3900

#endif
