// The images and sampling steps over which the growth of a cost is shown.
#ifndef VQ3900_BENCH_SUPPORT_GROWTH_H
#define VQ3900_BENCH_SUPPORT_GROWTH_H

#include <benchmark/benchmark.h>

namespace vq3900::bench {

// Arguments: width, height, sample bits.
inline void growing_images(benchmark::internal::Benchmark* benchmark) {
  benchmark->MinTime(0.01);
  for (const long bits : {3, 4, 5, 6}) {
    benchmark->Args({640, 480, bits})->Args({752, 480, bits})->Args({1392, 512, bits});
  }
}

}  // namespace vq3900::bench

#endif
