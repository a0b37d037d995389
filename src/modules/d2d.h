// The disparity-to-depth block: two depth constants in fixed point, and the depth unit.
#ifndef VQ3900_MODULES_D2D_H
#define VQ3900_MODULES_D2D_H

#include "vq3900_depth_engine.h"

#include <array>
#include <cstdint>
#include <span>

#include "modules/fixed_point.h"
#include "modules/register_field.h"
#include "state/register_tables.h"

namespace vq3900 {

inline constexpr std::uint8_t kMaxUnitShift = 4;

// The constants of the D2D table: iZ0 = 1 / reference-plane distance, and PBF = 1 / (baseline * focal length).
struct DepthConstants {
  double inverse_reference = 0;
  double pbf = 0;
};

std::span<const Field<DepthConstants>> depth_constant_fields();
std::span<const Field<D2dConfig>> d2d_fields();

// Encodes the constants; the reference plane only when depth is relative to it. False: an overflow, written as all
// ones.
bool encode_depth_constants(const DeBasicParams_S& basic, RegisterTables& tables, OverflowHandler on_overflow);

// Puts the constants back to what they are at start-up: none.
void clear_depth_constants(RegisterTables& tables);

DepthConstants decode_depth_constants(const RegisterTables& tables);

void encode_d2d(const D2dConfig& config, RegisterTables& tables);
void decode_d2d(const RegisterTables& tables, D2dConfig& config);

}  // namespace vq3900

#endif
