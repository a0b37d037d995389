#include <optional>
#include <span>
#include <utility>

#include "modules/fixed_point_api.h"
#include "modules/rectify.h"
#include "modules/rectify_map_api.h"
#include "platform/diagnostics.h"
#include "state/engine.h"
#include "state/record_copy.h"

using vq3900::engine;
using vq3900::RectifyState;

namespace {

bool is_switch(int32_t value) {
  return value == 0 || value == 1;
}

void set_enables(std::size_t camera, uint8_t on) {
  engine().rectify.en0[camera] = on;
  engine().rectify.en1[camera] = on;
}

// The LUT step's own message, and its status.
int32_t report_lut(const vq3900::RectifyConversion& result) {
  switch (result.lut_fault) {
    case vq3900::LutFault::kNone:
      return VQ3900_OK;
    case vq3900::LutFault::kSize:
      vq3900::print_err("lut width and height must be multiples of 4! \n");
      return VQ3900_ERROR_ARGUMENT;
    case vq3900::LutFault::kGridMissing:
      vq3900::print_err("cam_id= %d, dx,dy id null!\n", result.camera);
      return VQ3900_ERROR_ARGUMENT;
    case vq3900::LutFault::kNoMemory:
      return VQ3900_ERROR_ARGUMENT;
    case vq3900::LutFault::kOverflow:
      break;
  }
  return VQ3900_FIXED_POINT_OVERFLOW;
}

int32_t report(const vq3900::RectifyConversion& result) {
  switch (result.failed_step) {
    case vq3900::RectifyStep::kDone:
      return VQ3900_OK;
    case vq3900::RectifyStep::kParametersMissing:
      vq3900::print_err("need to set rectify params! \n");
      return VQ3900_ERROR_ARGUMENT;
    case vq3900::RectifyStep::kCommon:
      vq3900::print_out("convert_rectify_commom_float_to_register error!,camera id = %d \n", result.camera);
      break;
    case vq3900::RectifyStep::kKk:
      vq3900::print_out("convert_rectify_kk_float_to_register error!,camera id = %d \n", result.camera);
      break;
    case vq3900::RectifyStep::kLut: {
      const int32_t code = report_lut(result);
      vq3900::print_out("convert_rectify_lut_float_to_register error!,camera id = %d \n", result.camera);
      return code;
    }
  }
  return VQ3900_FIXED_POINT_OVERFLOW;
}

void print_progress(vq3900::LutProgress progress) {
  switch (progress) {
    case vq3900::LutProgress::kDx:
      return vq3900::put_out("convert lut_dx from float to register \n");
    case vq3900::LutProgress::kDy:
      return vq3900::put_out("convert lut_dy from float to register \n");
    case vq3900::LutProgress::kEnd:
      return vq3900::put_out("convert lut_dx and lut_dy end \n");
  }
}

// Stores the intrinsics and the matrix that both parameter setters have, for the camera that they mean. Nothing when
// there is no such camera, else its number.
std::optional<uint32_t> store_common(uint32_t cam_id, const RectifyIntrinsic& new_intrinsic, const float* rotation,
                                     const float* intrinsic) {
  RectifyState& rectify = engine().rectify;
  const uint32_t index = vq3900::rectify_camera(engine().basic.cam_mode, cam_id);
  if (index >= rectify.camera.size()) return std::nullopt;
  rectify.camera[index].intrinsic = new_intrinsic;
  rectify.camera[index].matrix =
      vq3900::back_projection(std::span<const float, 9>{rotation, 9}, std::span<const float, 4>{intrinsic, 4});
  return index;
}

// Stores what a map setter is given. `hold` puts the grid into the camera's state; false: no memory for it.
template <typename Hold>
int32_t set_map(uint32_t cam_id, const RectifyIntrinsic& new_intrinsic, const RectifyLutInfo& lut,
                const float* rotation, const float* intrinsic, Hold hold) {
  const auto index = store_common(cam_id, new_intrinsic, rotation, intrinsic);
  if (!index) return VQ3900_ERROR_ARGUMENT;
  if (lut.sample_rate_bit < vq3900::kMinSampleRateBit) {
    vq3900::print_err("sample_rate_bit >=3 ! \n");  // what is required, not what was found
    return VQ3900_ERROR_ARGUMENT;                   // intrinsics and matrix stay stored
  }
  vq3900::RectifyLutState& luts = engine().rectify_lut;
  if (!hold(luts.camera[*index])) return VQ3900_ERROR_ARGUMENT;
  luts.camera[*index].map_set = true;
  luts.length = lut.lut_width * lut.lut_height;
  return VQ3900_OK;
}

}  // namespace

int32_t set_rectify_status(int32_t cam0_en, int32_t cam1_en, uint32_t start_rows) {
  RectifyState& rectify = engine().rectify;
  const uint32_t cam_mode = engine().basic.cam_mode;
  if (cam_mode == 0) {
    if ((static_cast<uint32_t>(cam0_en) & static_cast<uint32_t>(cam1_en)) != 0) return VQ3900_ERROR_ARGUMENT;
    rectify.rectify_common = 0;
  } else if (cam_mode == 1) {
    rectify.rectify_common = 1;  // stays set when the switches are refused
    if (cam0_en != cam1_en) return VQ3900_ERROR_ARGUMENT;
  }
  if (is_switch(cam0_en)) set_enables(0, static_cast<uint8_t>(cam0_en));
  if (is_switch(cam1_en)) set_enables(1, static_cast<uint8_t>(cam1_en));
  rectify.start_rows = start_rows;
  return VQ3900_OK;
}

int32_t set_rectify_common(uint8_t value) {
  const uint32_t cam_mode = engine().basic.cam_mode;
  if (cam_mode == 0) engine().rectify.rectify_common = 0;
  if (cam_mode == 1) engine().rectify.rectify_common = value;
  return VQ3900_OK;
}

int32_t set_rectify_kk_lut(int32_t distort_type) {
  RectifyState& rectify = engine().rectify;
  if (rectify.en0[0] == 0 && rectify.en0[1] == 0) return VQ3900_OK;
  if (distort_type < 0 || distort_type > 2) return VQ3900_ERROR_ARGUMENT;
  const bool polynomial = distort_type != 1;
  const bool lut = distort_type != 0;
  // The flags are only ever set.
  if (polynomial) rectify.kk_en = 1;
  if (lut) rectify.lut_en0 = rectify.lut_en1 = 1;
  return VQ3900_OK;
}

int32_t set_rectify_sbg2r_config(int8_t rotate_90_en, uint8_t rotate_clockwise, uint8_t sbg_en, uint8_t sub_mode_sel) {
  RectifyState& rectify = engine().rectify;
  rectify.rotate_clockwise = rotate_clockwise;
  rectify.rotate_90_en = static_cast<uint8_t>(rotate_90_en);
  if ((rectify.rotate_90_en & 1) != 0 && engine().basic.cam_mode == 1) {
    vq3900::print_err("stereo mode:  nonsupport rotation !\n");
    return VQ3900_ERROR_ARGUMENT;  // the two rotation values stay stored
  }
  const bool camera_1_on = rectify.en0[1] != 0;
  rectify.sbg_en = camera_1_on ? sbg_en : uint8_t{0};
  rectify.sub_mode_sel = camera_1_on ? sub_mode_sel : uint8_t{0};
  uint32_t& rotate = engine().basic.sbg2r_rotate;
  rotate = (rotate & 0xFFFFFF00U) | (rotate_90_en != 0 ? 1U : 0U);  // only the low byte is ever written
  return VQ3900_OK;
}

int32_t set_rectify_params_brown(uint32_t cam_id, const RectifyIntrinsic* new_intrinsic, const float* distortion,
                                 const float* rotation, const float* intrinsic) {
  if (new_intrinsic == nullptr || distortion == nullptr || rotation == nullptr || intrinsic == nullptr) {
    return VQ3900_ERROR_ARGUMENT;
  }
  const auto index = store_common(cam_id, *new_intrinsic, rotation, intrinsic);
  if (!index) return VQ3900_ERROR_ARGUMENT;
  vq3900::RectifyCameraParams& camera = engine().rectify.camera[*index];
  camera.kk = vq3900::kk_coefficients(std::span<const float, 8>{distortion, 8});
  camera.kk_set = true;
  return VQ3900_OK;
}

int32_t set_rectify_params_map(uint32_t cam_id, const RectifyIntrinsic* new_intrinsic, const RectifyLutInfo* lut,
                               const float* rotation, const float* intrinsic) {
  if (new_intrinsic == nullptr || lut == nullptr || rotation == nullptr || intrinsic == nullptr) {
    return VQ3900_ERROR_ARGUMENT;
  }
  return set_map(cam_id, *new_intrinsic, *lut, rotation, intrinsic, [lut](vq3900::RectifyLut& held) {
    return vq3900::copy_grid(*lut, held);
  });
}

int32_t vq3900::keep_rectify_params_map(uint32_t cam_id, const RectifyIntrinsic& new_intrinsic,
                                        const RectifyLutInfo& lut, const float* rotation, const float* intrinsic,
                                        GridOwner owner) {
  return set_map(cam_id, new_intrinsic, lut, rotation, intrinsic, [&](RectifyLut& held) {
    keep_grid(lut, std::move(owner), held);
    return true;
  });
}

int32_t de_get_lut_len(uint32_t* out) {
  return vq3900::copy_out(engine().rectify_lut.length, out);
}

int32_t de_get_rectify_lut_params_float(int32_t cam_id, RectifyLutInfo* out) {
  return vq3900::copy_out(engine().rectify_lut.camera[cam_id == 1 ? 1 : 0].info, out);
}

int32_t de_copy_rectify_lut_register_section(LutSection* out, uint8_t section_num) {
  if (section_num != 2 && section_num != 4) {
    vq3900::print_err("start_rows_reg_section_num != 2 ! \n");  // 4 is as good
    return VQ3900_ERROR_ARGUMENT;
  }
  if (out == nullptr) return VQ3900_ERROR_ARGUMENT;
  vq3900::RectifyLutState& luts = engine().rectify_lut;
  const auto held = std::span{luts.sections}.first(section_num);
  const std::span<LutSection> sections{out, section_num};
  for (std::size_t i = 0; i < held.size(); ++i) {
    const bool writes = held[i].room.held() && luts.length > 0;
    if (writes && sections[i].data == nullptr) return VQ3900_ERROR_ARGUMENT;
  }
  for (std::size_t i = 0; i < held.size(); ++i)
    vq3900::hand_out(held[i], luts.length, sections[i]);
  return VQ3900_OK;
}

int32_t convert_rectify_control_float_to_register(void) {
  vq3900::encode_rectify_ctrl(engine().rectify, engine().registers);
  return VQ3900_OK;
}

int32_t convert_rectify_params_to_register_elements(void) {
  return report(vq3900::encode_rectify(engine().basic.cam_mode,
                                       engine().rectify,
                                       engine().rectify_lut,
                                       engine().registers,
                                       {vq3900::print_overflow, print_progress}));
}

int32_t convert_rectify_registers_to_float(bool cam_select) {
  vq3900::decode_rectify(engine().basic.cam_mode, cam_select, engine().registers, engine().rectify);
  return VQ3900_OK;
}

int32_t de_copy_rectify_params(DeRectifyParams_S* params, DeRectifyCtrlParams_S* ctrl) {
  if (params == nullptr || ctrl == nullptr) return VQ3900_ERROR_ARGUMENT;
  const RectifyState& rectify = engine().rectify;
  *params = {};
  params->cam1_en = rectify.en0[1];
  params->cam0_en = rectify.en0[0];
  params->cam0 = rectify.camera[0].intrinsic;
  params->cam1 = rectify.camera[1].intrinsic;
  *ctrl = {};
  ctrl->sbg_en = rectify.sbg_en;
  ctrl->rotate_90_en = rectify.rotate_90_en;
  ctrl->rotate_clockwise = rectify.rotate_clockwise;
  ctrl->sub_mode_sel = rectify.sub_mode_sel;
  ctrl->start_rows = rectify.start_rows;
  return VQ3900_OK;
}

int32_t de_update_rectify_params(const DeRectifyParams_S* params, const DeRectifyCtrlParams_S* ctrl) {
  if (params == nullptr || ctrl == nullptr) return VQ3900_ERROR_ARGUMENT;
  RectifyState& rectify = engine().rectify;
  set_enables(1, params->cam1_en);
  set_enables(0, params->cam0_en);
  rectify.camera[0].intrinsic = params->cam0;
  rectify.camera[1].intrinsic = params->cam1;
  rectify.sbg_en = ctrl->sbg_en;
  rectify.rotate_90_en = ctrl->rotate_90_en;
  rectify.rotate_clockwise = ctrl->rotate_clockwise;
  rectify.sub_mode_sel = ctrl->sub_mode_sel;
  rectify.start_rows = ctrl->start_rows;
  return VQ3900_OK;
}
