// Runs a program, takes what it writes to its standard output, and its time.
#ifndef VQ3900_BENCH_SUPPORT_CHILD_H
#define VQ3900_BENCH_SUPPORT_CHILD_H

#include <initializer_list>
#include <string>

namespace vq3900::bench {

struct Run {
  std::string output;
  double seconds = 0;  // of processor time, from the start of the program to its end
};

// The first argument is the program's path. The output is empty when it cannot be run or fails.
Run run_program(std::initializer_list<const char*> arguments);

}  // namespace vq3900::bench

#endif
