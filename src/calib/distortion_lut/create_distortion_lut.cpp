// The built-in distortion-LUT library.
#include "vq3900_distortion_lut.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <optional>
#include <span>
#include <utility>

#include "calib/distortion_lut/displacement_grid.h"
#include "calib/distortion_lut/lut_grid.h"
#include "calib/distortion_model.h"

static_assert(sizeof(SampledDistoLUT_s) == 64 && offsetof(SampledDistoLUT_s, sample_rate_bit) == 4 &&
              offsetof(SampledDistoLUT_s, fx) == 8 && offsetof(SampledDistoLUT_s, dx) == 40 &&
              offsetof(SampledDistoLUT_s, grid_width) == 48 && offsetof(SampledDistoLUT_s, grid_height) == 50 &&
              offsetof(SampledDistoLUT_s, dy) == 56);

namespace {

constexpr const char* kVersion = "1.0.0";
constexpr float kLargestExtendRatio = 4.0F;
constexpr int kLargestImage = 65535;
constexpr std::size_t kMostCoefficients = 8;

struct Failure {
  int status;
  const char* text;
};

constexpr Failure kBadSampleBit{-1, "lut sample bit out of range"};
constexpr Failure kBadExtendRatio{-2, "lut extend ratio out of range"};
constexpr Failure kBadImageSize{-3, "image size invalid"};
constexpr Failure kBadIntrinsics{-4, "camera intrinsics invalid"};
constexpr Failure kBadCoefficients{-5, "distortion coefficients invalid"};
constexpr Failure kGridTooLarge{-6, "lut grid too large"};
constexpr Failure kBadDisplacement{-7, "lut displacement out of range"};
constexpr Failure kNotGenerated{-8, "lut not generated"};

}  // namespace

// What an object knows: the settings as they come in, and the grid.
struct CreateDistortionLUT::State {
  State(std::int32_t number, std::size_t count) : model_number(number), coefficient_count(count) {}

  std::int32_t model_number;
  std::size_t coefficient_count;

  int sample_bit = 3;
  int mode = 0;
  float extend_ratio = 0;
  bool flag = false;
  std::optional<vq3900::ImageSide> image;
  std::optional<vq3900::Pinhole> pinhole;
  std::optional<std::array<float, kMostCoefficients>> coefficients;
  double rho = 0;

  // The last grid, as it was sampled: settings that come in later belong to the next one.
  bool generated = false;
  int grid_sample_bit = 0;
  vq3900::Pinhole grid_pinhole{};
  vq3900::GridAxis across{};
  vq3900::GridAxis down{};
  vq3900::DisplacementGrid grid;
  std::string error;

  int fail(const Failure& failure) {
    error = failure.text;
    return failure.status;
  }
};

CreateDistortionLUT::CreateDistortionLUT(std::unique_ptr<State> state) : state_(std::move(state)) {}

CreateDistortionLUT::~CreateDistortionLUT() = default;

int CreateDistortionLUT::SetImageSize(int width, int height) {
  if (width < 1 || width > kLargestImage || height < 1 || height > kLargestImage) return state_->fail(kBadImageSize);
  state_->image = {width, height};
  return 0;
}

int CreateDistortionLUT::SetCameraIntrinsics(float fx, float fy, float cx, float cy) {
  const bool finite = std::isfinite(fx) && std::isfinite(fy) && std::isfinite(cx) && std::isfinite(cy);
  if (!finite || fx <= 0 || fy <= 0) return state_->fail(kBadIntrinsics);
  state_->pinhole = {
      static_cast<double>(fx), static_cast<double>(fy), static_cast<double>(cx), static_cast<double>(cy)};
  return 0;
}

int CreateDistortionLUT::SetDistortionCoeffs(const float* coeffs, int count) {
  if (coeffs == nullptr || count != static_cast<int>(state_->coefficient_count)) {
    return state_->fail(kBadCoefficients);
  }
  std::array<float, kMostCoefficients> taken{};
  for (std::size_t i = 0; i < state_->coefficient_count; ++i) {
    if (!std::isfinite(coeffs[i])) return state_->fail(kBadCoefficients);
    taken[i] = coeffs[i];
  }
  state_->coefficients = taken;
  return 0;
}

int CreateDistortionLUT::SetPolynomialParam(double param) {
  state_->rho = param;
  return 0;
}

int CreateDistortionLUT::Generate() {
  State& state = *state_;
  state.generated = false;
  if (!state.image) return state.fail(kBadImageSize);
  if (!state.pinhole) return state.fail(kBadIntrinsics);
  if (!state.coefficients) return state.fail(kBadCoefficients);

  const double factor = vq3900::extension_factor(static_cast<double>(state.extend_ratio));
  const auto across = vq3900::grid_axis(state.image->width, state.sample_bit, factor);
  const auto down = vq3900::grid_axis(state.image->height, state.sample_bit, factor);
  if (!across || !down) return state.fail(kGridTooLarge);
  const auto model = vq3900::make_distortion_model(state.model_number, *state.coefficients, state.rho);
  if (!vq3900::sample_displacements(model, *state.pinhole, *state.image, *across, *down, state.grid)) {
    return state.fail(kBadDisplacement);
  }
  state.grid_sample_bit = state.sample_bit;
  state.grid_pinhole = *state.pinhole;
  state.across = *across;
  state.down = *down;
  state.generated = true;
  return 0;
}

int CreateDistortionLUT::SetLutConfigParams(int sample_bit, int mode, float extend_ratio, bool flag) {
  if (sample_bit < 0 || sample_bit > vq3900::kMostSampleBits) return state_->fail(kBadSampleBit);
  if (!(extend_ratio >= 0 && extend_ratio <= kLargestExtendRatio)) return state_->fail(kBadExtendRatio);
  state_->sample_bit = sample_bit;
  state_->mode = mode;
  state_->extend_ratio = extend_ratio;
  state_->flag = flag;
  return 0;
}

int CreateDistortionLUT::GetDistortionLut(SampledDistoLUT_s* out) {
  State& state = *state_;
  if (out == nullptr || !state.generated) return state.fail(kNotGenerated);
  out->x_start = static_cast<std::int16_t>(state.across.start);
  out->y_start = static_cast<std::int16_t>(state.down.start);
  out->sample_rate_bit = static_cast<std::uint8_t>(state.grid_sample_bit);
  out->fx = state.grid_pinhole.fx;
  out->fy = state.grid_pinhole.fy;
  out->cx = state.grid_pinhole.cx;
  out->cy = state.grid_pinhole.cy;
  out->dx = state.grid.dx.data();
  out->grid_width = static_cast<std::uint16_t>(state.across.samples);
  out->grid_height = static_cast<std::uint16_t>(state.down.samples);
  out->dy = state.grid.dy.data();
  return 0;
}

std::string CreateDistortionLUT::GetErrString() {
  return state_->error;
}

void CreateDistortionLUT::GetVersionInfo(std::string& text) {
  text = kVersion;
}

BrownModelLUT::BrownModelLUT() : CreateDistortionLUT(std::make_unique<State>(vq3900::kBrownNumber, 8)) {}

EquiModelLUT::EquiModelLUT() : CreateDistortionLUT(std::make_unique<State>(vq3900::kEquidistantNumber, 4)) {}

PolynomialModelLUT::PolynomialModelLUT() : CreateDistortionLUT(std::make_unique<State>(vq3900::kPolynomialNumber, 8)) {}
