#include "modules/rectify.h"

#include <cstddef>

namespace vq3900 {

namespace {

using Camera = RectifyCameraParams;
using State = RectifyState;
using Table = RegisterTable<VQ3900_RECTIFY_REGISTERS>;

// Both cameras' tables have the same form: registers are named by their offset in the camera's block.
consteval std::uint8_t at(std::uint32_t offset) {
  return element_at(startup::rectify(kCamera1Block), kCamera1Block + offset);
}

template <std::size_t Index>
constexpr Field<Camera> matrix(std::uint8_t element, std::int32_t frac_bits, const char* name,
                               Coding coding = Coding::kFixed) {
  return fixed<&Camera::matrix, Index>(name, element, 0xFFFFFFFF, {32, frac_bits, name}, coding);
}

template <auto Member>
constexpr Field<Camera> intrinsic(std::uint8_t element, const char* name) {
  return fixed<&Camera::intrinsic, Member>(name, element, 0xFFFFFFFF, {32, 20, name}, Coding::kFixedUnsigned);
}

template <std::size_t Index>
constexpr Field<Camera> kk(std::uint8_t element, const char* name) {
  return fixed<&Camera::kk, Index>(name, element, 0xFFFFFFFF, {26, 24, name});
}

constexpr auto kCommonFields = std::to_array<Field<Camera>>({
    // The device takes the diagonal back as unsigned numbers, the other entries as two's complement.
    matrix<0>(at(0x30), 39, "rectify_r0", Coding::kFixedUnsigned),
    matrix<1>(at(0x34), 40, "rectify_r1"),
    matrix<2>(at(0x38), 30, "rectify_r2"),
    matrix<3>(at(0x3C), 40, "rectify_r3"),
    matrix<4>(at(0x40), 39, "rectify_r4", Coding::kFixedUnsigned),
    matrix<5>(at(0x44), 30, "rectify_r5"),
    matrix<6>(at(0x48), 41, "rectify_r6"),
    matrix<7>(at(0x4C), 43, "rectify_r7"),
    matrix<8>(at(0x50), 31, "rectify_r8", Coding::kFixedUnsigned),
    intrinsic<&RectifyIntrinsic::fx>(at(0x60), "rectify_fx"),
    intrinsic<&RectifyIntrinsic::fy>(at(0x64), "rectify_fy"),
    intrinsic<&RectifyIntrinsic::cx>(at(0x68), "rectify_cx"),
    intrinsic<&RectifyIntrinsic::cy>(at(0x6C), "rectify_cy"),
    integer<&Camera::intrinsic, &RectifyIntrinsic::width>("width", at(0x78), 0x00000FFF),
    integer<&Camera::intrinsic, &RectifyIntrinsic::height>("height", at(0x78), 0x0FFF0000),
});
static_assert(well_formed(kCommonFields, startup::rectify(kCamera1Block)));

constexpr auto kKkFields = std::to_array<Field<Camera>>({
    kk<0>(at(0x00), "rectify_k0"),
    kk<1>(at(0x04), "rectify_k1"),
    kk<2>(at(0x08), "rectify_k2"),
    kk<3>(at(0x0C), "rectify_k3"),
    kk<4>(at(0x10), "rectify_k4"),
    kk<5>(at(0x14), "rectify_k5"),
    kk<6>(at(0x18), "rectify_k6"),
    kk<7>(at(0x1C), "rectify_k7"),
    kk<8>(at(0x20), "rectify_k8"),
});
static_assert(well_formed(kKkFields, startup::rectify(kCamera1Block)));

constexpr std::uint8_t kCtrl0 = element_at(startup::kRectifyCtrl, kCamera0Block + 0x70);
constexpr std::uint8_t kCtrl1 = element_at(startup::kRectifyCtrl, kCamera1Block + 0x70);
constexpr std::uint8_t kSbg2r = element_at(startup::kRectifyCtrl, kCamera1Block + 0xA0);

constexpr auto kCtrl0Fields = std::to_array<Field<State>>({
    integer<&State::en0, 0>("en0[0]", kCtrl0, 0x00000001),
    integer<&State::en1, 0>("en1[0]", kCtrl0, 0x00000002),
    integer<&State::lut_en0>("lut_en0", kCtrl0, 0x00000004),
    integer<&State::kk_en>("kk_en", kCtrl0, 0x00000008),
    integer<&State::lut_en1>("lut_en1", kCtrl0, 0x00000010),
    write_only(integer<&State::rectify_common>("rectify_common", kCtrl0, 0x00000400)),
    integer<&State::start_rows>("start_rows", kCtrl0, 0x0FFF0000),
});
static_assert(well_formed(kCtrl0Fields, startup::kRectifyCtrl));

constexpr auto kCtrl1Fields = std::to_array<Field<State>>({
    integer<&State::en0, 1>("en0[1]", kCtrl1, 0x00000001),
    integer<&State::en1, 1>("en1[1]", kCtrl1, 0x00000002),
    integer<&State::lut_en0>("lut_en0", kCtrl1, 0x00000004),
    integer<&State::kk_en>("kk_en", kCtrl1, 0x00000008),
    integer<&State::lut_en1>("lut_en1", kCtrl1, 0x00000010),
    integer<&State::start_rows>("start_rows", kCtrl1, 0x0FFF0000),
});
static_assert(well_formed(kCtrl1Fields, startup::kRectifyCtrl));

constexpr auto kSbg2rFields = std::to_array<Field<State>>({
    integer<&State::sbg_en>("sbg_en", kSbg2r, 0x00000002),
    integer<&State::rotate_90_en>("rotate_90_en", kSbg2r, 0x00000004),
    integer<&State::rotate_clockwise>("rotate_clockwise", kSbg2r, 0x00000008),
    integer<&State::sub_mode_sel>("sub_mode_sel", kSbg2r, 0x00000010),
});
static_assert(well_formed(kSbg2rFields, startup::kRectifyCtrl));

// One camera's parameters into one table: the step that overflowed, or kDone.
RectifyStep encode_common(const Camera& camera, Table& table, OverflowHandler on_overflow) {
  const bool fits = encode_fields_until_overflow(kCommonFields, camera, table, on_overflow);
  return fits ? RectifyStep::kDone : RectifyStep::kCommon;
}

RectifyStep encode_kk(const Camera& camera, Table& table, OverflowHandler on_overflow) {
  if (!camera.kk_set) return RectifyStep::kDone;
  const bool fits = encode_fields_until_overflow(kKkFields, camera, table, on_overflow);
  return fits ? RectifyStep::kDone : RectifyStep::kKk;
}

// A camera's grid into a LUT information table and two sections; without a grid nothing happens. The grid is released.
LutFault encode_map(RectifyLutState& luts, std::size_t camera, const LutTarget& target, const LutEvents& events) {
  RectifyLut& lut = luts.camera[camera];
  if (!lut.map_set) return LutFault::kNone;
  const LutFault fault = encode_lut(lut, luts.camera[1].info.sample_rate_bit, target, events);
  if (fault == LutFault::kNone) lut.grid.release();
  return fault;
}

RectifyConversion encode_single_camera(const State& rectify, RectifyLutState& luts, RegisterTables& tables,
                                       const LutEvents& events) {
  const Camera& camera = rectify.camera[1];
  const bool map_set = luts.camera[1].map_set;
  if (!camera.kk_set && !map_set) return {RectifyStep::kParametersMissing};
  for (const auto encode : {encode_common, encode_kk}) {
    for (Table& table : tables.rectify) {
      const RectifyStep step = encode(camera, table, events.on_overflow);
      if (step != RectifyStep::kDone) return {step, 1};
    }
  }
  if (!map_set) return {};
  if (!prepare_sections(luts)) return {RectifyStep::kLut, 1, LutFault::kNoMemory};
  auto& [info_0, info_1] = tables.rectify_lut_info;
  const LutTarget target{info_0, luts.sections[0], luts.sections[1], kCamera0Block};
  const LutFault fault = encode_map(luts, 1, target, events);
  if (fault != LutFault::kNone) return {RectifyStep::kLut, 1, fault};
  for (std::size_t i = 0; i < info_1.size(); ++i)
    info_1[i].value = info_0[i].value;
  return {};
}

RectifyConversion encode_both_cameras(const State& rectify, RectifyLutState& luts, RegisterTables& tables,
                                      const LutEvents& events) {
  const bool any_kk = rectify.camera[0].kk_set || rectify.camera[1].kk_set;
  const bool any_map = luts.camera[0].map_set || luts.camera[1].map_set;
  if (!any_kk && !any_map) return {RectifyStep::kParametersMissing};
  if (any_map && !prepare_sections(luts)) return {RectifyStep::kLut, 1, LutFault::kNoMemory};
  for (const int id : {1, 0}) {
    const auto index = static_cast<std::size_t>(id);
    for (const auto encode : {encode_common, encode_kk}) {
      const RectifyStep step = encode(rectify.camera[index], tables.rectify[index], events.on_overflow);
      if (step != RectifyStep::kDone) return {step, id};
    }
    const std::size_t first = id == 1 ? 0 : 2;
    const LutTarget target{tables.rectify_lut_info[index],
                           luts.sections[first],
                           luts.sections[first + 1],
                           id == 1 ? kCamera1Block : kCamera0Block};
    const LutFault fault = encode_map(luts, index, target, events);
    if (fault != LutFault::kNone) return {RectifyStep::kLut, id, fault};
  }
  return {};
}

// One camera's block into one parameter record, with its control register.
void decode_block(std::size_t block, const RegisterTables& tables, Camera& camera, State& rectify) {
  decode_fields(kCommonFields, tables.rectify[block], camera);
  decode_fields(kKkFields, tables.rectify[block], camera);
  if (block == 1) {
    decode_fields(kCtrl1Fields, tables.rectify_ctrl, rectify);
    decode_fields(kSbg2rFields, tables.rectify_ctrl, rectify);
  } else {
    decode_fields(kCtrl0Fields, tables.rectify_ctrl, rectify);
  }
}

}  // namespace

std::span<const Field<RectifyCameraParams>> rectify_common_fields() {
  return kCommonFields;
}

std::span<const Field<RectifyCameraParams>> rectify_kk_fields() {
  return kKkFields;
}

std::span<const Field<RectifyState>> rectify_ctrl_fields(std::uint32_t camera) {
  if (camera == 1) return kCtrl1Fields;
  return kCtrl0Fields;
}

std::span<const Field<RectifyState>> sbg2r_fields() {
  return kSbg2rFields;
}

// Column j of the result's row i is R[j][i] over the focal length of axis j; the third column takes the principal point
// off. Quotients are rounded to float, the subtractions are formed in double.
std::array<double, 9> back_projection(std::span<const float, 9> rotation, std::span<const float, 4> intrinsic) {
  const float fx = intrinsic[0], fy = intrinsic[1], cx = intrinsic[2], cy = intrinsic[3];
  std::array<double, 9> matrix{};
  for (std::size_t i = 0; i < 3; ++i) {
    const float x = rotation[i] / fx;
    const float y = rotation[3 + i] / fy;
    double* const row = &matrix[3 * i];
    row[0] = widen(x);
    row[1] = widen(y);
    row[2] = widen(rotation[6 + i]) - row[0] * widen(cx) - row[1] * widen(cy);
  }
  return matrix;
}

void clear_kk(RegisterTables& tables) {
  for (Table& table : tables.rectify) {
    for (const Field<Camera>& field : rectify_kk_fields())
      table[field.element].value = 0;
  }
}

std::array<double, 9> kk_coefficients(std::span<const float, 8> distortion) {
  const float k1 = distortion[0], k2 = distortion[1], k3 = distortion[2], p1 = distortion[6], p2 = distortion[7];
  const float twice_p1 = 2.0F * p1;
  const float twice_p2 = 2.0F * p2;
  const float thrice_p1 = 3.0F * p1;
  const float thrice_p2 = 3.0F * p2;
  return {widen(k1),
          widen(k2),
          widen(k3),
          widen(twice_p1),
          widen(thrice_p2),
          widen(p2),
          widen(twice_p2),
          widen(p1),
          widen(thrice_p1)};
}

void encode_rectify_ctrl(const RectifyState& rectify, RegisterTables& tables) {
  encode_fields(kCtrl0Fields, rectify, tables.rectify_ctrl, nullptr);
  encode_fields(kCtrl1Fields, rectify, tables.rectify_ctrl, nullptr);
  encode_fields(kSbg2rFields, rectify, tables.rectify_ctrl, nullptr);
}

RectifyConversion encode_rectify(std::uint32_t cam_mode, const RectifyState& rectify, RectifyLutState& luts,
                                 RegisterTables& tables, const LutEvents& events) {
  return cam_mode == 0 ? encode_single_camera(rectify, luts, tables, events)
                       : encode_both_cameras(rectify, luts, tables, events);
}

void decode_rectify(std::uint32_t cam_mode, bool camera_1_block, const RegisterTables& tables, RectifyState& rectify) {
  if (cam_mode == 0) {
    decode_block(camera_1_block ? 1 : 0, tables, rectify.camera[1], rectify);
    return;
  }
  decode_block(1, tables, rectify.camera[1], rectify);
  decode_block(0, tables, rectify.camera[0], rectify);
}

}  // namespace vq3900
