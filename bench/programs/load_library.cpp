// A C++ host that loads a library and ends: load_library [LIBRARY]. Prints how much processor time the load took, in
// nanoseconds.
#include <dlfcn.h>
#include <time.h>

#include <cstdint>
#include <iostream>

namespace {

std::int64_t processor_time() {
  timespec now{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return now.tv_sec * std::int64_t{1000000000} + now.tv_nsec;
}

}  // namespace

int main(int argc, char** argv) {
  const std::int64_t start = processor_time();
  if (argc > 1 && dlopen(argv[1], RTLD_NOW | RTLD_LOCAL) == nullptr) return 1;
  std::cout << processor_time() - start << '\n';
  return 0;
}
