// Counts what is allocated with operator new, by whomever.
#ifndef VQ3900_BENCH_SUPPORT_ALLOCATIONS_H
#define VQ3900_BENCH_SUPPORT_ALLOCATIONS_H

#include <cstddef>

namespace vq3900::bench {

std::size_t allocations();  // since the start

}  // namespace vq3900::bench

#endif
