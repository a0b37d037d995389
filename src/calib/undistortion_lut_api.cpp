#include "calib/undistortion_lut_api.h"

#include <utility>

#include "calib/distortion_model.h"
#include "platform/diagnostics.h"

namespace vq3900 {

namespace {

constexpr std::int32_t kUnsupportedModel = -9;

std::unique_ptr<CreateDistortionLUT> make_generator(std::int32_t model) {
  switch (model) {
    case kBrownNumber:
    case kOtherBrownNumber:
      return std::make_unique<BrownModelLUT>();
    case kEquidistantNumber:
      return std::make_unique<EquiModelLUT>();
    case kPolynomialNumber:
      return std::make_unique<PolynomialModelLUT>();
    default:
      return nullptr;
  }
}

std::int32_t report(CreateDistortionLUT& generator, int status) {
  print_err("%s\n", generator.GetErrString().c_str());
  return status;
}

RectifyLutInfo info_of(const SampledDistoLUT_s& sampled) {
  return {static_cast<std::uint32_t>(std::int32_t{sampled.x_start}),
          static_cast<std::uint32_t>(std::int32_t{sampled.y_start}),
          static_cast<float>(sampled.fx),
          static_cast<float>(sampled.fy),
          static_cast<float>(sampled.cx),
          static_cast<float>(sampled.cy),
          sampled.grid_width,
          sampled.grid_height,
          sampled.sample_rate_bit,
          sampled.dx,
          sampled.dy};
}

}  // namespace

std::int32_t gen_undistortion_lut(std::int32_t model, const DeCameraIntrinsic_S& camera,
                                  std::span<const float, 8> distortion, double polynomial_param,
                                  const CalibInputConfig& config, UndistortionLut& out) {
  std::unique_ptr<CreateDistortionLUT> generator = make_generator(model);
  if (!generator) {
    print_err("unsupported distortion model: %d\n", model);
    return kUnsupportedModel;
  }
  if (const int status = generator->SetLutConfigParams(config.lut_sample_bit, 0, config.lut_extend_ratio, true);
      status != 0) {
    return report(*generator, status);
  }
  generator->SetImageSize(camera.width, camera.height);
  const float fx = camera.fx * config.dst_focal_scale;
  const float fy = camera.fy * config.dst_focal_scale;
  generator->SetCameraIntrinsics(fx, fy, camera.cx, camera.cy);
  generator->SetDistortionCoeffs(distortion.data(), model == kEquidistantNumber ? 4 : 8);
  if (model == kPolynomialNumber) generator->SetPolynomialParam(polynomial_param);
  // A setting that was refused makes the generation fail.
  if (const int status = generator->Generate(); status != 0) return report(*generator, status);

  SampledDistoLUT_s sampled{};
  const int status = generator->GetDistortionLut(&sampled);
  if (status == 0) out = {info_of(sampled), std::move(generator)};
  return status;
}

}  // namespace vq3900
