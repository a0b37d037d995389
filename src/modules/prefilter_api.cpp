#include "modules/prefilter.h"
#include "platform/diagnostics.h"
#include "state/engine.h"
#include "state/record_copy.h"

using vq3900::engine;

int32_t set_prefilter_size_speckleTh(int32_t size, uint8_t speckle_th) {
  if (!vq3900::prefilter_size_supported(size)) {
    vq3900::print_err("unsupported size! size: 5, 7,9 \n");
    return VQ3900_ERROR_ARGUMENT;
  }
  vq3900::PrefilterState& prefilter = engine().prefilter;
  prefilter.params.pre_win_size = static_cast<uint8_t>(size);
  prefilter.params.speckleTh = speckle_th;
  const auto [width, height] = vq3900::prefilter_image_size(engine().basic);
  prefilter.image_width = width;
  prefilter.image_height = height;
  return VQ3900_OK;
}

int32_t get_prefilter_size_speckleTh(uint32_t* size, uint8_t* speckle_th) {
  if (size == nullptr || speckle_th == nullptr) return VQ3900_ERROR_ARGUMENT;
  *size = engine().prefilter.params.pre_win_size;
  *speckle_th = engine().prefilter.params.speckleTh;
  return VQ3900_OK;
}

int32_t get_prefilter_img_size(uint32_t* out) {
  if (out == nullptr) return VQ3900_ERROR_ARGUMENT;
  *out = uint32_t{engine().prefilter.image_height} << 16 | engine().prefilter.image_width;
  return VQ3900_OK;
}

int32_t de_update_prefilter_params(const DePrefilterParams_S* params) {
  return vq3900::copy_in(params, engine().prefilter.params);
}

int32_t de_copy_prefilter_params(DePrefilterParams_S* params) {
  return vq3900::copy_out(engine().prefilter.params, params);
}

int32_t convert_prefilter_float_to_registers(void) {
  vq3900::encode_prefilter(engine().prefilter, engine().registers);
  return VQ3900_OK;
}

int32_t convert_prefilter_registers_to_float(void) {
  vq3900::decode_prefilter(engine().registers, engine().prefilter);
  return VQ3900_OK;
}
