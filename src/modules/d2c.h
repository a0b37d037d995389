// The depth-to-colour block: the projection W and its control fields.
#ifndef VQ3900_MODULES_D2C_H
#define VQ3900_MODULES_D2C_H

#include "vq3900_depth_engine.h"

#include <array>
#include <cstdint>
#include <span>

#include "modules/fixed_point.h"
#include "modules/register_field.h"
#include "state/block_state.h"
#include "state/register_tables.h"

namespace vq3900 {

using Projection = std::array<double, 12>;  // W0 to W11, 3x4 row-major

std::span<const Field<D2cState>> d2c_projection_fields();
std::span<const Field<D2cConfig>> d2c_ctrl_fields();
std::span<const Field<DeBasicParams_S>> d2c_depth_mode_fields();

// W from depth and colour intrinsics (fx, fy, cx, cy) and the pose from depth to colour (R row-major, T).
Projection d2c_projection(std::span<const float, 4> depth, std::span<const float, 4> color,
                          std::span<const float, 12> pose);

// Sets the three recovery fields; a mode that is none of 0, 1, 2 leaves them.
void set_recovery_mode(std::int32_t mode, float expand_width, D2cConfig& config);

// Encodes W; every entry is written. False: at least one overflowed and is all ones.
bool encode_projection(const D2cState& d2c, RegisterTables& tables, OverflowHandler on_overflow);
void decode_projection(const RegisterTables& tables, D2cState& d2c);

void encode_d2c_ctrl(const D2cConfig& config, const DeBasicParams_S& basic, RegisterTables& tables);
void decode_d2c_ctrl(const RegisterTables& tables, D2cConfig& config);

// The camera mode as the D2C read-back takes it, from the low byte of the register that holds the buffer position.
std::uint32_t decode_d2c_camera_mode(const RegisterTables& tables);

}  // namespace vq3900

#endif
