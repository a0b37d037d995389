#include "modules/d2c.h"

namespace vq3900 {

namespace {

constexpr std::uint8_t kCtrl = element_at(startup::kBasicCtrl, 0x50001200);
constexpr std::uint8_t kExpand = element_at(startup::kBasicCtrl, 0x5000120C);
constexpr std::uint32_t kCameraModeMask = 0x000000FF;

constexpr auto kCtrlFields = std::to_array<Field<D2cConfig>>({
    integer<&D2cConfig::d2c_buffer_position>("d2c_buffer_position", kCtrl, 0x00000FFF),
    integer<&D2cConfig::d2c_total_buffer_rows>("d2c_total_buffer_rows", kCtrl, 0x00FFF000),
    constant<D2cConfig, 1>("constant", kCtrl, 0x04000000),
    // The device crosses the two recovery bits between writing and reading.
    write_only(integer<&D2cConfig::recovery_mode_2>("recovery_mode_2", kCtrl, 0x08000000)),
    write_only(integer<&D2cConfig::recovery_mode_1>("recovery_mode_1", kCtrl, 0x10000000)),
    read_only(integer<&D2cConfig::recovery_mode_1>("recovery_mode_1", kCtrl, 0x08000000)),
    read_only(integer<&D2cConfig::recovery_mode_2>("recovery_mode_2", kCtrl, 0x10000000)),
    integer<&D2cConfig::depth_sign>("depth_sign", kCtrl, 0x40000000),
    fixed<&D2cConfig::d2c_recovery_expand_width>("d2c_recovery_expand_width", kExpand, 0x000000FF, {8, 8},
                                                 Coding::kFixedCut),
});
static_assert(well_formed(kCtrlFields, startup::kBasicCtrl));

// The depth mode of the basic record goes into the D2C control register; what is read back there is the camera mode.
constexpr auto kDepthModeFields = std::to_array<Field<DeBasicParams_S>>({
    write_only(integer<&DeBasicParams_S::depth_mode>("depth_mode", kCtrl, 0x80000000)),
});
static_assert(well_formed(kDepthModeFields, startup::kBasicCtrl));
static_assert(disjoint(kCtrlFields, kDepthModeFields));

template <std::size_t Index>
constexpr Field<D2cState> entry(const char* name, std::int32_t frac_bits) {
  return fixed<&D2cState::w, Index>(name, Index, 0xFFFFFFFF, {32, frac_bits, name});
}

constexpr auto kProjectionFields = std::to_array<Field<D2cState>>({
    entry<0>("W0", 29),
    entry<1>("W1", 29),
    entry<2>("W2", 17),
    entry<3>("W3", 12),
    entry<4>("W4", 29),
    entry<5>("W5", 29),
    entry<6>("W6", 18),
    entry<7>("W7", 12),
    entry<8>("W8", 40),
    entry<9>("W9", 40),
    entry<10>("W10", 30),
    entry<11>("W11", 27),
});
static_assert(well_formed(kProjectionFields, startup::kD2c));

}  // namespace

std::span<const Field<D2cState>> d2c_projection_fields() {
  return kProjectionFields;
}

std::span<const Field<D2cConfig>> d2c_ctrl_fields() {
  return kCtrlFields;
}

std::span<const Field<DeBasicParams_S>> d2c_depth_mode_fields() {
  return kDepthModeFields;
}

// With depth intrinsics d, colour intrinsics c and the pose R, T, a depth pixel (u, v) at depth z is the point
// z ((u - d.cx) / d.fx, (v - d.cy) / d.fy, 1), which K_c (R X + T) projects into the colour image. W collects that for
// the vector (u z, v z, z, 1). Every product, sum and quotient of the inputs is one float operation; only the
// principal-point terms of the third column are formed in double.
Projection d2c_projection(std::span<const float, 4> depth, std::span<const float, 4> color,
                          std::span<const float, 12> pose) {
  const float dfx = depth[0], dfy = depth[1], dcx = depth[2], dcy = depth[3];
  const float cfx = color[0], cfy = color[1], ccx = color[2], ccy = color[3];

  const auto row = [&](float focal, float center, std::size_t first, double* w) {
    // focal * a + center * b, each operation rounded to float
    const auto mix = [&](float a, float b) {
      const float scaled = focal * a;
      const float shifted = center * b;
      return scaled + shifted;
    };
    const float x = mix(pose[first], pose[6]);
    const float y = mix(pose[first + 1], pose[7]);
    const float z = mix(pose[first + 2], pose[8]);
    const float t = mix(pose[9 + first / 3], pose[11]);
    const float w0 = x / dfx;
    const float w1 = y / dfy;
    w[0] = widen(w0);
    w[1] = widen(w1);
    w[2] = widen(z) - w[0] * widen(dcx) - w[1] * widen(dcy);
    w[3] = widen(t);
  };

  Projection w{};
  row(cfx, ccx, 0, w.data());
  row(cfy, ccy, 3, w.data() + 4);
  const float w8 = pose[6] / dfx;
  const float w9 = pose[7] / dfy;
  w[8] = widen(w8);
  w[9] = widen(w9);
  w[10] = widen(pose[8]) - w[8] * widen(dcx) - w[9] * widen(dcy);
  w[11] = widen(pose[11]);
  return w;
}

void set_recovery_mode(std::int32_t mode, float expand_width, D2cConfig& config) {
  if (mode < 0 || mode > 2) return;
  config.recovery_mode_2 = mode == 2 ? 1 : 0;
  config.recovery_mode_1 = mode == 1 ? 1 : 0;
  if (mode == 2) config.d2c_recovery_expand_width = expand_width;
}

bool encode_projection(const D2cState& d2c, RegisterTables& tables, OverflowHandler on_overflow) {
  bool fits = true;
  for (const Field<D2cState>& field : kProjectionFields) {
    const std::uint32_t bits = encode_bits(field, d2c, on_overflow);
    tables.d2c[field.element].value = bits;
    fits = fits && bits != kOverflowed;
  }
  return fits;
}

void decode_projection(const RegisterTables& tables, D2cState& d2c) {
  decode_fields(kProjectionFields, tables.d2c, d2c);
}

void encode_d2c_ctrl(const D2cConfig& config, const DeBasicParams_S& basic, RegisterTables& tables) {
  encode_fields(kDepthModeFields, basic, tables.basic_ctrl, nullptr);
  encode_fields(kCtrlFields, config, tables.basic_ctrl, nullptr);
}

void decode_d2c_ctrl(const RegisterTables& tables, D2cConfig& config) {
  decode_fields(kCtrlFields, tables.basic_ctrl, config);
}

std::uint32_t decode_d2c_camera_mode(const RegisterTables& tables) {
  return get_reg_field(tables.basic_ctrl[kCtrl].value, kCameraModeMask);
}

}  // namespace vq3900
