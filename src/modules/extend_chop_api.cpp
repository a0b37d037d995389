#include <algorithm>
#include <span>

#include "modules/extend_chop.h"
#include "platform/diagnostics.h"
#include "state/engine.h"
#include "state/record_copy.h"

using vq3900::engine;

namespace {

void copy_four(const int32_t* from, int32_t* to) {
  std::ranges::copy(std::span<const int32_t, 4>{from, 4}, to);
}

}  // namespace

int32_t set_extend_chop_params(const int32_t* extend_ref, const int32_t* extend_tar, const int32_t* chop) {
  if (extend_ref == nullptr || extend_tar == nullptr || chop == nullptr) return VQ3900_ERROR_ARGUMENT;
  DeExtendChopParams_S& params = engine().extend_chop.params;
  copy_four(extend_ref, params.extend_ref);
  copy_four(extend_tar, params.extend_tar);
  copy_four(chop, params.chop);

  const vq3900::PrefilterState& prefilter = engine().prefilter;
  if (prefilter.image_width == 0 && prefilter.image_height == 0) {
    vq3900::print_err("missing setting prefilter imgage size,namely ir resolution\n");
    return VQ3900_ERROR_IMAGE_SIZE;  // the values stay stored
  }
  vq3900::extend_image(prefilter, engine().extend_chop);
  return VQ3900_OK;
}

int32_t get_extend_chop_params(int32_t* tar, int32_t* chop) {
  if (tar == nullptr || chop == nullptr) return VQ3900_ERROR_ARGUMENT;
  copy_four(engine().extend_chop.params.extend_tar, tar);
  copy_four(engine().extend_chop.params.chop, chop);
  return VQ3900_OK;
}

int32_t de_update_extend_chop_params(const DeExtendChopParams_S* params) {
  return vq3900::copy_in(params, engine().extend_chop.params);
}

int32_t de_copy_extend_chop_params(DeExtendChopParams_S* params) {
  return vq3900::copy_out(engine().extend_chop.params, params);
}

int32_t convert_extend_chop_float_to_registers(void) {
  vq3900::encode_extend_chop(engine().extend_chop, engine().registers);
  return VQ3900_OK;
}

int32_t convert_extend_chop_registers_to_float(void) {
  vq3900::decode_extend_chop(engine().registers, engine().extend_chop);
  return VQ3900_OK;
}
