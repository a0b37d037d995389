// The extend-chop block: how far the images are extended before matching, and how much is chopped off the result.
#ifndef VQ3900_MODULES_EXTEND_CHOP_H
#define VQ3900_MODULES_EXTEND_CHOP_H

#include "vq3900_depth_engine.h"

#include <span>

#include "modules/register_field.h"
#include "state/block_state.h"
#include "state/register_tables.h"

namespace vq3900 {

std::span<const Field<ExtendChopState>> extend_chop_fields();

// Sets the extended size from the prefilter's image, in 16-bit arithmetic.
void extend_image(const PrefilterState& prefilter, ExtendChopState& extend_chop);

void encode_extend_chop(const ExtendChopState& extend_chop, RegisterTables& tables);
void decode_extend_chop(const RegisterTables& tables, ExtendChopState& extend_chop);

}  // namespace vq3900

#endif
