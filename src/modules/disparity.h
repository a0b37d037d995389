// The disparity-calculation block: the stereo matcher's record and its registers.
#ifndef VQ3900_MODULES_DISPARITY_H
#define VQ3900_MODULES_DISPARITY_H

#include "vq3900_depth_engine.h"

#include <span>

#include "modules/fixed_point.h"
#include "modules/register_field.h"
#include "state/register_tables.h"

namespace vq3900 {

// The fields of the disparity-calculation table, and the one that lives in the control table.
std::span<const Field<DeDispCalcParams_S>> disparity_fields();
std::span<const Field<DeDispCalcParams_S>> disparity_ctrl_fields();

void encode_disparity(const DeDispCalcParams_S& params, RegisterTables& tables, OverflowHandler on_overflow);
void decode_disparity(const RegisterTables& tables, DeDispCalcParams_S& params);

}  // namespace vq3900

#endif
