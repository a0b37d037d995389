// Temperatures, the optimized D2D table, and the version of the distortion-LUT library.
#include "vq3900_distortion_lut.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <span>
#include <string>

#include "state/engine.h"
#include "state/record_copy.h"

using vq3900::engine;

namespace {

constexpr int32_t kNoBuffer = -1;
constexpr std::size_t kVersionField = 8;  // bytes cleared before a version is copied

}  // namespace

void set_calib_temp_info(float left, float right, float ldm) {
  vq3900::CalibState& calib = engine().calib;
  calib.left_temperature = left;
  calib.right_temperature = right;
  calib.ldm_temperature = ldm;
}

int32_t set_optimized_d2d_params(DeDepthConfig_S* items, int32_t count) {
  vq3900::CalibState& calib = engine().calib;
  const bool refused = count < 0 || (items == nullptr && count > 0);
  calib.optimized_d2d_count = refused ? 0 : count;
  // The count goes with the old table: with one in place, it ends at 0 although the new entries are held.
  if (calib.optimized_d2d.held()) release_optimized_d2d_params();
  if (refused) return VQ3900_ERROR_ARGUMENT;
  if (count == 0) return VQ3900_OK;
  if (!calib.optimized_d2d.assign({items, static_cast<std::size_t>(count)})) {
    calib.optimized_d2d_count = 0;
    return VQ3900_ERROR_ARGUMENT;
  }
  return VQ3900_OK;
}

int32_t release_optimized_d2d_params(void) {
  engine().calib.optimized_d2d.release();
  engine().calib.optimized_d2d_count = 0;
  return VQ3900_OK;
}

int32_t get_lut_version(char* out) try {
  if (out == nullptr) return kNoBuffer;
  std::string version;
  CreateDistortionLUT::GetVersionInfo(version);
  std::memset(out, 0, kVersionField);
  std::memcpy(out, version.c_str(), version.size() + 1);
  return VQ3900_OK;
} catch (const std::exception&) {  // no memory for the text
  return VQ3900_ERROR_ARGUMENT;
}

int32_t get_disto_lut_version(char* buffer) {
  return get_lut_version(buffer);
}

void get_virtual_intrinsic_of_stereo_debug(DeCameraIntrinsic_S* out) {
  vq3900::copy_out(engine().calib.virtual_intrinsic, out);
}
