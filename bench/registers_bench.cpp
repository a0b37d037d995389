// One set and one get entry point a block, through callbacks that copy. The yardstick is the same copying alone.
#include "vq3900_depth_engine.h"

#include <benchmark/benchmark.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include "state/engine.h"
#include "support/allocations.h"

namespace {

// Registers as the last write left them; reads hand them back.
struct Bank {
  std::array<DeRegElement_S, VQ3900_GP_STATUS_REGISTERS> elements{};
  std::vector<std::uint32_t> counts;  // of every transfer while they are noted
  bool noting = false;
};

std::int32_t bank_write(DeRegElement_S* elements, std::uint32_t count, void* user) {
  Bank& bank = *static_cast<Bank*>(user);
  if (bank.noting) bank.counts.push_back(count);
  std::memcpy(bank.elements.data(), elements, count * sizeof *elements);
  benchmark::ClobberMemory();
  return 0;
}

// Leaves the values as they are: what is merged is what was there.
std::int32_t bank_read(DeRegElement_S* elements, std::uint32_t count, void* user) {
  return bank_write(elements, count, user);
}

Bank& attached_bank() {
  static Bank bank;
  de_register_read_write_functon(bank_read, bank_write, &bank);
  return bank;
}

// A fresh state, with settings that every block converts without an overflow.
void configure() {
  vq3900::release_held_memory(vq3900::engine());
  std::destroy_at(&vq3900::engine());
  std::construct_at(&vq3900::engine());
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

// --- an entry point and its arguments, ready to be called again and again

using Call = std::function<std::int32_t()>;
using Prepare = Call (*)();

template <auto Entry, auto Fill, typename Record>
Call set_call() {
  Record record{};
  Fill(&record);
  return [record] { return Entry(&record); };
}

template <auto Entry, typename... Records>
Call get_call() {
  return [records = std::tuple<Records...>{}]() mutable {
    return std::apply([](Records&... record) { return Entry(&record...); }, records);
  };
}

Call set_d2c() {
  return [] {
    constexpr DeCameraIntrinsic_S kDepth{600, 600, 640, 400, 1280, 800};
    constexpr DeCameraIntrinsic_S kColor{900, 900, 960, 540, 1920, 1080};
    constexpr DeExtrinsic_S kPose{{1, 0, 0, 0, 1, 0, 0, 0, 1}, {25, 0, 0}};
    constexpr D2cConfig kConfig{};
    return de_set_d2c_params_to_registers(&kDepth, &kColor, &kPose, &kConfig);
  };
}

Call set_rectify() {
  DeRectifyParams_S params{};
  DeRectifyCtrlParams_S ctrl{};
  de_copy_rectify_params(&params, &ctrl);
  return [params, ctrl] { return de_set_rectify_params_to_registers(&params, &ctrl); };
}

Call get_rectify() {
  return [params = DeRectifyParams_S{}, ctrl = DeRectifyCtrlParams_S{}]() mutable {
    return de_get_rectify_params_from_registers(&params, &ctrl, 0, 1);
  };
}

struct Entry {
  const char* name;
  Prepare prepare;
};

constexpr std::array kSetEntries{
    Entry{"basic", set_call<de_set_baisc_params_to_registers, de_copy_basic_params, DeBasicParams_S>},
    Entry{"prefilter", set_call<de_set_prefilter_params_to_registers, de_copy_prefilter_params, DePrefilterParams_S>},
    Entry{"extend_chop",
          set_call<de_set_extend_chop_params_to_registers, de_copy_extend_chop_params, DeExtendChopParams_S>},
    Entry{"disp_calc", set_call<de_set_disp_calc_params_to_registers, de_copy_disp_calc_params, DeDispCalcParams_S>},
    Entry{"gpm", set_call<de_set_gpm_params_to_registers, de_copy_gpm_params, DeGpmParams_S>},
    Entry{"d2d", set_call<de_set_d2d_params_to_registers, get_d2d_config, D2dConfig>},
    Entry{"d2c", set_d2c},
    Entry{"rectify", set_rectify},
};

constexpr std::array kGetEntries{
    Entry{"basic", get_call<de_get_baisc_params_from_registers, DeBasicParams_S>},
    Entry{"prefilter", get_call<de_get_prefilter_params_from_registers, DePrefilterParams_S>},
    Entry{"extend_chop", get_call<de_get_extend_chop_params_from_registers, DeExtendChopParams_S>},
    Entry{"disp_calc", get_call<de_get_disp_calc_params_from_registers, DeDispCalcParams_S>},
    Entry{"gpm", get_call<de_get_gpm_params_from_registers, DeGpmParams_S, DeGpStatusParams_S>},
    Entry{"d2d", get_call<de_get_d2d_params_from_registers, D2dConfig>},
    Entry{"d2c", get_call<de_get_d2c_params_from_registers, D2cConfig>},
    Entry{"rectify", get_rectify},
};

// --- measuring it

void run(benchmark::State& state, Prepare prepare) {
  configure();
  const Call call = prepare();
  if (call() != 0) state.SkipWithError("the entry point fails");
  const std::size_t before = vq3900::bench::allocations();
  for (auto _ : state)
    benchmark::DoNotOptimize(call());
  state.counters["allocations"] = static_cast<double>(vq3900::bench::allocations() - before);
}

// The number of elements of each transfer that the call makes.
void note_transfers(Prepare prepare, Bank& bank) {
  bank.noting = true;
  prepare()();
  bank.noting = false;
}

void run_copies(benchmark::State& state, Bank& bank) {
  std::array<DeRegElement_S, VQ3900_GP_STATUS_REGISTERS> elements{};
  for (auto _ : state) {
    for (const std::uint32_t count : bank.counts)
      benchmark::DoNotOptimize(bank_write(elements.data(), count, &bank));
  }
  bank.counts.clear();
}

void run_copies_of(benchmark::State& state, Prepare prepare) {
  configure();
  note_transfers(prepare, attached_bank());
  run_copies(state, attached_bank());
}

void run_all_copies(benchmark::State& state) {
  configure();
  for (const Entry& entry : kSetEntries)
    note_transfers(entry.prepare, attached_bank());
  run_copies(state, attached_bank());
}

void add(const std::string& group, const Entry& entry) {
  benchmark::RegisterBenchmark((group + entry.name + "/ours").c_str(), run, entry.prepare);
  benchmark::RegisterBenchmark((group + entry.name + "/copies").c_str(), run_copies_of, entry.prepare);
}

[[maybe_unused]] const bool registered = [] {
  for (const Entry& entry : kSetEntries)
    add("set/", entry);
  for (const Entry& entry : kGetEntries)
    add("get/", entry);
  benchmark::RegisterBenchmark("apply/copies", run_all_copies);
  return true;
}();

}  // namespace
