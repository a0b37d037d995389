// Configuration groups: an INI text with a number of sections group1, group2, ... of one kind.
#ifndef VQ3900_CONFIG_GROUPS_H
#define VQ3900_CONFIG_GROUPS_H

#include <vector>

#include "config/ini_document.h"
#include "config/key_table.h"
#include "config/load_result.h"
#include "state/group_state.h"

namespace vq3900 {

// Read all groups. Count and version are stored as they are read, an item once it is complete: what was read before a
// fault stays. A bad value throws FieldError.
LoadResult read_d2c_groups(const IniDocument& document, D2cGroups& groups);
LoadResult read_ir_pre_groups(const IniDocument& document, IrPreGroups& groups);

// The keys of a group section in the order of reading.
std::vector<KeyDescription> d2c_group_keys();
std::vector<KeyDescription> ir_pre_group_keys();

}  // namespace vq3900

#endif
