// A thousand clock cycles: a chain of rotations, each of which waits for the one before. Limits are given in cycles.
#include <benchmark/benchmark.h>

#include <cstdint>

namespace {

#if defined(__x86_64__)
#define VQ3900_BENCH_ROTATION "rorq $1, %0\n"
#elif defined(__aarch64__)
#define VQ3900_BENCH_ROTATION "ror %0, %0, #1\n"
#endif

#ifdef VQ3900_BENCH_ROTATION
void cycles(benchmark::State& state) {
  std::uint64_t chain = 1;
  for (auto _ : state) {
    __asm__ volatile(".rept 1000\n" VQ3900_BENCH_ROTATION ".endr" : "+r"(chain));
  }
}
BENCHMARK(cycles)->Name("cycles/1000");
#endif

}  // namespace
