// Loading the sample configuration from a warm file, and applying it.
#include "vq3900_depth_engine.h"

#include <benchmark/benchmark.h>

namespace {

constexpr const char* kSample = VQ3900_EXAMPLES "/stereo_1280x800.ini";

void load(benchmark::State& state) {
  for (auto _ : state) {
    if (load_de_input_configs(kSample) != 0) state.SkipWithError("the sample does not load");
  }
}

void apply(benchmark::State& state) {
  load_de_input_configs(kSample);
  for (auto _ : state) {
    if (set_depth_engine_config() != 0) state.SkipWithError("the sample cannot be applied");
  }
}

}  // namespace

BENCHMARK(load)->Name("load_de_input_configs");
BENCHMARK(apply)->Name("set_depth_engine_config");
