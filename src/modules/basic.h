// The basic block: operating mode, upsampling, and the stereo geometry of the depth stage.
#ifndef VQ3900_MODULES_BASIC_H
#define VQ3900_MODULES_BASIC_H

#include "vq3900_depth_engine.h"

#include <span>

#include "modules/register_field.h"
#include "state/register_tables.h"

namespace vq3900 {

std::span<const Field<DeBasicParams_S>> basic_fields();
// Written in camera mode 1 only.
std::span<const Field<DeBasicParams_S>> basic_stereo_fields();

void encode_basic(const DeBasicParams_S& params, RegisterTables& tables);
void decode_basic(const RegisterTables& tables, DeBasicParams_S& params);

// 1 / (baseline * focal length): the product rounded to float, the quotient formed in double and rounded to float.
float pixel_baseline_factor(float baseline, float focal_length_pix);

}  // namespace vq3900

#endif
