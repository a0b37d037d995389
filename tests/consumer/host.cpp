// A host program in C++17: a log callback of its own, a callback that throws, versions.
#include <vq3900_depth_engine.h>

#include <cstdio>
#include <stdexcept>
#include <string>

namespace {

std::int32_t refuse(DeRegElement_S*, std::uint32_t, void*) {
  throw std::runtime_error("the bus is gone");
}

// What a register callback throws counts as a failed transfer.
bool throwing_callback_fails_the_transfer() {
  DeDispCalcParams_S matcher{};
  return de_register_read_write_functon(refuse, refuse, nullptr) == VQ3900_OK &&
         de_copy_disp_calc_params(&matcher) == VQ3900_OK &&
         de_set_disp_calc_params_to_registers(&matcher) == VQ3900_ERROR_TRANSFER;
}

// The callback crosses the interface as it is, and what it throws passes through.
bool log_callback_is_called_and_may_throw() {
  CalibrateParamsMulti calibration{};
  DeStereoRectifyParams_S rectification{};
  DepthCalcParams_S depth{};
  std::string texts;
  DeLogCallback keep = [&texts](const char* text) { texts += text; };
  DeLogCallback stop = [](const char* text) { throw std::runtime_error(text); };
  set_calib_temp_info(25.0F, 25.0F, 25.0F);
  if (align_ir_ir_rgb_params_to_register_converter(calibration, &rectification, nullptr, &depth, &keep) == 0) {
    return false;
  }
  try {
    align_ir_ir_rgb_params_to_register_converter(calibration, &rectification, nullptr, &depth, &stop);
  } catch (const std::runtime_error& stopped) {
    return texts.find(stopped.what()) == 0;
  }
  return false;
}

}  // namespace

int main() {
  if (std::string(de_get_version()) != VQ3900_VERSION) return 1;
  if (!throwing_callback_fails_the_transfer()) return 2;
  if (!log_callback_is_called_and_may_throw()) return 3;
  std::puts("host in C++: done");
  return 0;
}
