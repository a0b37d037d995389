// What accompanies the images made from now on: serial number, temperatures, alignment records.
#include <span>

#include "state/engine.h"

using vq3900::engine;

void set_sn(const uint64_t* word0, const uint64_t* word1, const uint64_t* word2) {
  if (word0 == nullptr || word1 == nullptr || word2 == nullptr) return;
  engine().flash.serial_number = {*word0, *word1, *word2};
}

void set_calib_temp(float left, float right, float ldm) {
  set_calib_temp_info(left, right, ldm);
}

int32_t de_set_alignment_records(const DeAlignRecord_S* records, int32_t count) {
  if (count < 0 || count > VQ3900_ALIGNMENT_RECORDS || (records == nullptr && count > 0)) return VQ3900_ERROR_ARGUMENT;
  if (count == 0) return de_release_alignment_records();
  vq3900::HeldArray<DeAlignRecord_S> copy;
  if (!copy.assign({records, static_cast<std::size_t>(count)})) return VQ3900_ERROR_ARGUMENT;
  engine().flash.alignment_records.take(copy);
  return VQ3900_OK;
}

int32_t de_release_alignment_records(void) {
  engine().flash.alignment_records.release();
  return VQ3900_OK;
}
