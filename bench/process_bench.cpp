// What needs a process of its own: loading the library, and the peak memory of an image build.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <sstream>
#include <string>

#include "support/child.h"

namespace {

struct Library {
  const char* name;
  const char* path;
};
constexpr std::array kLibraries{
    Library{"ours", VQ3900_LIBRARY}, Library{"libdeflate", VQ3900_LIBDEFLATE}, Library{"nothing", nullptr}};

// A busy machine delays a few of many starts: the median counts.
constexpr std::size_t kStarts = 41;
using Seconds = std::array<double, kStarts>;

double median(Seconds seconds) {
  std::nth_element(seconds.begin(), seconds.begin() + kStarts / 2, seconds.end());
  return seconds[kStarts / 2];
}

// Starts a host with each of the libraries in turn. Counts seconds of processor time: of the whole program, and of the
// load alone as the program measured it.
void start_hosts(benchmark::State& state) {
  std::array<Seconds, kLibraries.size()> whole{};
  std::array<Seconds, kLibraries.size()> load{};
  for (auto _ : state) {
    for (std::size_t start = 0; start < kStarts; ++start) {
      for (std::size_t i = 0; i < kLibraries.size(); ++i) {
        const vq3900::bench::Run run = vq3900::bench::run_program({VQ3900_LOAD_HOST, kLibraries[i].path});
        if (run.output.empty()) return state.SkipWithError("the host fails");
        whole[i][start] = run.seconds;
        load[i][start] = std::stod(run.output) * 1e-9;
      }
    }
  }
  for (std::size_t i = 0; i < kLibraries.size(); ++i) {
    state.counters[std::string{"host/"} + kLibraries[i].name] = median(whole[i]);
    state.counters[std::string{"dlopen/"} + kLibraries[i].name] = median(load[i]);
  }
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

BENCHMARK(start_hosts)->Name("hosts")->Iterations(1);
BENCHMARK(peak_memory)->Name("peak_memory")->Arg(3)->Arg(4)->Iterations(1);

}  // namespace
