// One set and one get entry point a block, through callbacks that copy. The yardstick is the copying alone.
#include "vq3900_depth_engine.h"

#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <tuple>

namespace {

// Registers as the last write left them; reads hand them back.
struct Bank {
  std::array<DeRegElement_S, VQ3900_GP_STATUS_REGISTERS> elements{};
};

std::int32_t bank_write(DeRegElement_S* elements, std::uint32_t count, void* user) {
  std::memcpy(static_cast<Bank*>(user)->elements.data(), elements, count * sizeof *elements);
  benchmark::ClobberMemory();
  return 0;
}

// Leaves the values as they are: what is merged is what was there.
std::int32_t bank_read(DeRegElement_S* elements, std::uint32_t count, void* user) {
  bank_write(elements, count, user);
  return 0;
}

Bank& attached_bank() {
  static Bank bank;
  de_register_read_write_functon(bank_read, bank_write, &bank);
  return bank;
}

// Settings that every block converts without an overflow.
void configure() {
  attached_bank();
  set_camera_mode(1, 1);
  set_pbf_params(50.0F, 600.0F);
  set_input_ir_resolution(1280U | 800U << 16);
  set_prefilter_size_speckleTh(9, 0);
  const RectifyIntrinsic camera{600, 600, 640, 400, 1280, 800};
  const std::array<float, 8> distortion{-0.28F, 0.07F};
  const std::array<float, 9> rotation{1, 0, 0, 0, 1, 0, 0, 0, 1};
  const std::array<float, 4> intrinsic{600, 600, 640, 400};
  for (const std::uint32_t id : {0U, 1U}) {
    set_rectify_params_brown(id, &camera, distortion.data(), rotation.data(), intrinsic.data());
  }
}

template <auto Entry, auto Fill, typename Record>
void set_entry(benchmark::State& state) {
  configure();
  Record record{};
  Fill(&record);
  for (auto _ : state)
    benchmark::DoNotOptimize(Entry(&record));
}

template <auto Entry, typename... Records>
void get_entry(benchmark::State& state) {
  configure();
  std::tuple<Records...> records{};
  for (auto _ : state) {
    benchmark::DoNotOptimize(std::apply([](Records&... record) { return Entry(&record...); }, records));
  }
}

void set_d2c(benchmark::State& state) {
  configure();
  const DeCameraIntrinsic_S depth{600, 600, 640, 400, 1280, 800};
  const DeCameraIntrinsic_S color{900, 900, 960, 540, 1920, 1080};
  const DeExtrinsic_S pose{{1, 0, 0, 0, 1, 0, 0, 0, 1}, {25, 0, 0}};
  D2cConfig config{};
  for (auto _ : state)
    benchmark::DoNotOptimize(de_set_d2c_params_to_registers(&depth, &color, &pose, &config));
}

void set_rectify(benchmark::State& state) {
  configure();
  DeRectifyParams_S params{};
  DeRectifyCtrlParams_S ctrl{};
  de_copy_rectify_params(&params, &ctrl);
  for (auto _ : state)
    benchmark::DoNotOptimize(de_set_rectify_params_to_registers(&params, &ctrl));
}

void get_rectify(benchmark::State& state) {
  configure();
  DeRectifyParams_S params{};
  DeRectifyCtrlParams_S ctrl{};
  for (auto _ : state)
    benchmark::DoNotOptimize(de_get_rectify_params_from_registers(&params, &ctrl, 0, 1));
}

void copy_alone(benchmark::State& state) {
  Bank& bank = attached_bank();
  std::array<DeRegElement_S, VQ3900_GP_STATUS_REGISTERS> elements{};
  const auto count = static_cast<std::uint32_t>(state.range(0));
  for (auto _ : state)
    benchmark::DoNotOptimize(bank_write(elements.data(), count, &bank));
}

}  // namespace

BENCHMARK(copy_alone)->Arg(12)->Arg(30)->Arg(261);

BENCHMARK(set_entry<de_set_baisc_params_to_registers, de_copy_basic_params, DeBasicParams_S>)->Name("set/basic");
BENCHMARK(set_entry<de_set_prefilter_params_to_registers, de_copy_prefilter_params, DePrefilterParams_S>)
    ->Name("set/prefilter");
BENCHMARK(set_entry<de_set_extend_chop_params_to_registers, de_copy_extend_chop_params, DeExtendChopParams_S>)
    ->Name("set/extend_chop");
BENCHMARK(set_entry<de_set_disp_calc_params_to_registers, de_copy_disp_calc_params, DeDispCalcParams_S>)
    ->Name("set/disp_calc");
BENCHMARK(set_entry<de_set_gpm_params_to_registers, de_copy_gpm_params, DeGpmParams_S>)->Name("set/gpm");
BENCHMARK(set_entry<de_set_d2d_params_to_registers, get_d2d_config, D2dConfig>)->Name("set/d2d");
BENCHMARK(set_d2c)->Name("set/d2c");
BENCHMARK(set_rectify)->Name("set/rectify");

BENCHMARK(get_entry<de_get_baisc_params_from_registers, DeBasicParams_S>)->Name("get/basic");
BENCHMARK(get_entry<de_get_prefilter_params_from_registers, DePrefilterParams_S>)->Name("get/prefilter");
BENCHMARK(get_entry<de_get_extend_chop_params_from_registers, DeExtendChopParams_S>)->Name("get/extend_chop");
BENCHMARK(get_entry<de_get_disp_calc_params_from_registers, DeDispCalcParams_S>)->Name("get/disp_calc");
BENCHMARK(get_entry<de_get_gpm_params_from_registers, DeGpmParams_S, DeGpStatusParams_S>)->Name("get/gpm");
BENCHMARK(get_entry<de_get_d2d_params_from_registers, D2dConfig>)->Name("get/d2d");
BENCHMARK(get_entry<de_get_d2c_params_from_registers, D2cConfig>)->Name("get/d2c");
BENCHMARK(get_rectify)->Name("get/rectify");
