// What needs a process of its own: loading the library, and the peak memory of an image build.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <sstream>
#include <string>

#include "support/child.h"

namespace {

constexpr const char* kHost = VQ3900_LOAD_HOST;
constexpr const char* kOurs = VQ3900_LIBRARY;
constexpr const char* kLibdeflate = VQ3900_LIBDEFLATE;

// A busy machine delays a few of many starts: the median counts.
constexpr std::size_t kStarts = 25;

template <typename Seconds>
void run_median(benchmark::State& state, Seconds seconds) {
  for (auto _ : state) {
    std::array<double, kStarts> times{};
    std::generate(times.begin(), times.end(), seconds);
    std::nth_element(times.begin(), times.begin() + kStarts / 2, times.end());
    state.SetIterationTime(times[kStarts / 2]);
    if (times[kStarts / 2] <= 0) state.SkipWithError("the host fails");
  }
}

// From the start of the host to its end.
void run_host(benchmark::State& state, const char* library) {
  run_median(state, [library] {
    const vq3900::bench::Run run = vq3900::bench::run_program({kHost, library});
    return run.output.empty() ? 0 : run.seconds;
  });
}

// The load alone, as the host measured it.
void load(benchmark::State& state, const char* library) {
  run_median(state, [library] {
    const vq3900::bench::Run run = vq3900::bench::run_program({kHost, library});
    return run.output.empty() ? 0 : std::stod(run.output) * 1e-9;
  });
}

void peak_memory(benchmark::State& state) {
  const std::string sample_bits = std::to_string(state.range(0));
  double bytes = 0;
  double needed = 0;
  for (auto _ : state) {
    std::istringstream output{vq3900::bench::run_program({VQ3900_PEAK_MEMORY, sample_bits.c_str()}).output};
    if (!(output >> bytes >> needed)) state.SkipWithError("the build fails");
  }
  state.counters["bytes"] = bytes;
  state.counters["needed"] = needed;
}

BENCHMARK_CAPTURE(run_host, ours, kOurs)->Name("host/ours")->UseManualTime()->Iterations(1);
BENCHMARK_CAPTURE(run_host, libdeflate, kLibdeflate)->Name("host/libdeflate")->UseManualTime()->Iterations(1);
BENCHMARK_CAPTURE(run_host, nothing, nullptr)->Name("host/nothing")->UseManualTime()->Iterations(1);
BENCHMARK_CAPTURE(load, ours, kOurs)->Name("dlopen/ours")->UseManualTime()->Iterations(1);
BENCHMARK_CAPTURE(load, libdeflate, kLibdeflate)->Name("dlopen/libdeflate")->UseManualTime()->Iterations(1);
BENCHMARK(peak_memory)->Name("peak_memory")->Arg(3)->Arg(4)->Iterations(1);

}  // namespace
