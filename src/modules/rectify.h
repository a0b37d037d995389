// The rectification block: back-projection, virtual intrinsics and polynomial correction of two cameras, and the
// control flags. Camera 1 is the reference camera; a single camera is camera 1.
#ifndef VQ3900_MODULES_RECTIFY_H
#define VQ3900_MODULES_RECTIFY_H

#include "vq3900_depth_engine.h"

#include <array>
#include <cstdint>
#include <span>

#include "modules/fixed_point.h"
#include "modules/rectify_lut.h"
#include "modules/register_field.h"
#include "state/rectify_state.h"
#include "state/register_tables.h"

namespace vq3900 {

std::span<const Field<RectifyCameraParams>> rectify_common_fields();
std::span<const Field<RectifyCameraParams>> rectify_kk_fields();
std::span<const Field<RectifyState>> rectify_ctrl_fields(std::uint32_t camera);
std::span<const Field<RectifyState>> sbg2r_fields();

// The camera that a setter means: in single-camera mode always camera 1.
constexpr std::uint32_t rectify_camera(std::uint32_t cam_mode, std::uint32_t cam_id) {
  return cam_mode == 0 ? 1 : cam_id;
}

// R^T K^-1 from the rotation into the rectified camera (row-major) and the unrectified camera's fx, fy, cx, cy.
std::array<double, 9> back_projection(std::span<const float, 9> rotation, std::span<const float, 4> intrinsic);

// The polynomial correction from k1, k2, k3, k4, k5, k6, p1, p2.
std::array<double, 9> kk_coefficients(std::span<const float, 8> distortion);

// Puts the polynomial correction of both cameras' tables back to what it is at start-up: none.
void clear_kk(RegisterTables& tables);

void encode_rectify_ctrl(const RectifyState& rectify, RegisterTables& tables);

// How a conversion of the parameters ended: the step that failed, the camera whose parameters were converted, and for
// the LUT step what was wrong.
enum class RectifyStep : std::uint8_t { kDone, kParametersMissing, kCommon, kKk, kLut };
struct RectifyConversion {
  RectifyStep failed_step = RectifyStep::kDone;
  int camera = 1;
  LutFault lut_fault = LutFault::kNone;
};

// Single camera: camera 1's parameters into both tables. Else each camera's into its own. Ends at the first fault.
// Grids that were converted are released.
RectifyConversion encode_rectify(std::uint32_t cam_mode, const RectifyState& rectify, RectifyLutState& luts,
                                 RegisterTables& tables, const LutEvents& events);

// Single camera: the named block into camera 1's parameters. Else both blocks, camera 1's first.
void decode_rectify(std::uint32_t cam_mode, bool camera_1_block, const RegisterTables& tables, RectifyState& rectify);

}  // namespace vq3900

#endif
