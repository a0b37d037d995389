#include "calib/stereo_derivation_api.h"

#include <cstring>
#include <optional>

#include "calib/stereo_derivation.h"
#include "platform/diagnostics.h"
#include "state/engine.h"

namespace vq3900 {

namespace {

constexpr std::int32_t kRefused = -2;
constexpr std::int32_t kNoLut = -3;

// Everything but what the caller has put into the record already: temperatures and coefficients.
void copy_geometry(const DeStereoRectifyParams_S& from, DeStereoRectifyParams_S& to) {
  std::memcpy(&to, &from, offsetof(DeStereoRectifyParams_S, reserved));
}

std::int32_t generate_luts(const CalibrateParamsMulti& calib, const DeStereoRectifyParams_S& rect,
                           const CalibInputConfig& config, CameraLuts& luts) {
  if (gen_undistortion_lut(calib.distortion_model,
                           rect.cam1,
                           calib.left_ir.distortion,
                           calib.left_ir.polynomial_param,
                           config,
                           luts[1]) != 0) {
    print_out("gen left camera undistortion lut error.\n");
    return kNoLut;
  }
  if (gen_undistortion_lut(calib.distortion_model,
                           rect.cam0,
                           calib.right_ir.distortion,
                           calib.right_ir.polynomial_param,
                           config,
                           luts[0]) != 0) {
    print_out("gen right camera undistortion lut error.\n");
    return kNoLut;
  }
  return VQ3900_OK;
}

}  // namespace

std::int32_t parse_rectify_d2c_params_from_stereo_with_rgb_calib_params(const CalibrateParamsMulti& calib,
                                                                        DeStereoRectifyParams_S* rect,
                                                                        DeCameraD2CParams_S* d2c, CameraLuts& luts) {
  CalibInputConfig& config = engine().calib_input;
  if (!is_derivable(calib, d2c != nullptr)) return kRefused;
  if (baseline_sign_differs(config.baseline, calib.ir_translation)) {
    print_out("Baseline sign check error.\n");
    return kRefused;
  }
  config.baseline = signed_baseline(calib.ir_translation);

  const std::optional<Rectification> rectification = derive_rectification(calib, config);
  if (!rectification) return kRefused;
  copy_geometry(rectification->record, *rect);
  engine().calib.virtual_intrinsic = rectification->record.cam1_rectified;

  if (get_lut_enable_status()) {
    if (const std::int32_t code = generate_luts(calib, *rect, config, luts); code != VQ3900_OK) return code;
  }
  if (d2c == nullptr) return VQ3900_OK;
  const std::optional<DeCameraD2CParams_S> record = derive_d2c(calib, config, *rectification);
  if (!record) return kRefused;
  *d2c = *record;
  return VQ3900_OK;
}

}  // namespace vq3900
