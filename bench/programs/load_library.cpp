// A C++ host that loads a library and ends: load_library [LIBRARY]. Prints how long the load took, in nanoseconds.
#include <dlfcn.h>

#include <chrono>
#include <iostream>

int main(int argc, char** argv) {
  using Clock = std::chrono::steady_clock;
  const Clock::time_point start = Clock::now();
  if (argc > 1 && dlopen(argv[1], RTLD_NOW | RTLD_LOCAL) == nullptr) return 1;
  std::cout << std::chrono::nanoseconds{Clock::now() - start}.count() << '\n';
  return 0;
}
