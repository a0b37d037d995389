// The global-point-matching block: reference points, row patterns, thresholds, and the read-only status.
#ifndef VQ3900_MODULES_GPM_H
#define VQ3900_MODULES_GPM_H

#include "vq3900_depth_engine.h"

#include <cstdint>
#include <span>

#include "modules/register_field.h"
#include "state/register_tables.h"

namespace vq3900 {

std::span<const Field<DeGpmParams_S>> gpm_fields();
// The status words before those of the single points.
std::span<const Field<DeGpStatusParams_S>> gp_status_fields();

// Stores the row patterns and flags every column that any row enables.
void enable_columns(std::span<const std::uint16_t, 16> bits_per_row, DeGpmParams_S& params);

void encode_gpm(const DeGpmParams_S& params, RegisterTables& tables);
void decode_gpm(const RegisterTables& tables, DeGpmParams_S& params);
void decode_gp_status(const RegisterTables& tables, DeGpStatusParams_S& status);

}  // namespace vq3900

#endif
