// Runs a program and takes what it writes to its standard output.
#ifndef VQ3900_BENCH_SUPPORT_CHILD_H
#define VQ3900_BENCH_SUPPORT_CHILD_H

#include <initializer_list>
#include <string>

namespace vq3900::bench {

// The output; empty when the program cannot be run or fails. The first argument is its path.
std::string output_of(std::initializer_list<const char*> arguments);

}  // namespace vq3900::bench

#endif
