// What needs a process of its own: loading the library, and the peak memory of an image build.
#include <benchmark/benchmark.h>

#include <chrono>
#include <sstream>
#include <string>

#include "support/child.h"

namespace {

constexpr const char* kHost = VQ3900_LOAD_HOST;
constexpr const char* kOurs = VQ3900_LIBRARY;
constexpr const char* kLibdeflate = VQ3900_LIBDEFLATE;

// From the start of the host to its end.
void run_host(benchmark::State& state, const char* library) {
  using Clock = std::chrono::steady_clock;
  for (auto _ : state) {
    const Clock::time_point start = Clock::now();
    const std::string output = vq3900::bench::output_of({kHost, library});
    state.SetIterationTime(std::chrono::duration<double>(Clock::now() - start).count());
    if (output.empty()) state.SkipWithError("the host fails");
  }
}

// The load alone, as the host measured it.
void load(benchmark::State& state, const char* library) {
  for (auto _ : state) {
    const std::string output = vq3900::bench::output_of({kHost, library});
    if (output.empty()) {
      state.SkipWithError("the host fails");
      break;
    }
    state.SetIterationTime(std::stod(output) * 1e-9);
  }
}

void peak_memory(benchmark::State& state) {
  const std::string sample_bits = std::to_string(state.range(0));
  double bytes = 0;
  double needed = 0;
  for (auto _ : state) {
    std::istringstream output{vq3900::bench::output_of({VQ3900_PEAK_MEMORY, sample_bits.c_str()})};
    if (!(output >> bytes >> needed)) state.SkipWithError("the build fails");
  }
  state.counters["bytes"] = bytes;
  state.counters["needed"] = needed;
}

// A start takes milliseconds: as many as give a median.
constexpr int kStarts = 25;

BENCHMARK_CAPTURE(run_host, ours, kOurs)->Name("host/ours")->UseManualTime()->Iterations(kStarts);
BENCHMARK_CAPTURE(run_host, libdeflate, kLibdeflate)->Name("host/libdeflate")->UseManualTime()->Iterations(kStarts);
BENCHMARK_CAPTURE(run_host, nothing, nullptr)->Name("host/nothing")->UseManualTime()->Iterations(kStarts);
BENCHMARK_CAPTURE(load, ours, kOurs)->Name("dlopen/ours")->UseManualTime()->Iterations(kStarts);
BENCHMARK_CAPTURE(load, libdeflate, kLibdeflate)->Name("dlopen/libdeflate")->UseManualTime()->Iterations(kStarts);
BENCHMARK(peak_memory)->Name("peak_memory")->Arg(3)->Arg(4)->Iterations(1);

}  // namespace
