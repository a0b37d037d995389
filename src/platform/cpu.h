// Faster paths of inner loops, for processors that have more than every processor of their kind.
//
// Such a path is a function of its own with the target attribute of the instructions that it takes; the library around
// it runs everywhere. It is chosen at run time, computes the same bits as the portable path, and stands in a list with
// it, by name, so that tests and benchmarks reach every one.
#ifndef VQ3900_PLATFORM_CPU_H
#define VQ3900_PLATFORM_CPU_H

#if defined(__x86_64__)
#define VQ3900_X86_64
// g++ for Windows does not align the stack for vectors of more than 16 bytes.
#if !defined(_WIN32)
#define VQ3900_X86_64_WIDE
#endif
#endif

namespace vq3900 {

template <typename Function>
struct CodePath {
  const char* name;
  bool (*supported)();  // by the processor and the system
  Function* run;
};

inline bool always_supported() {
  return true;
}

#if defined(VQ3900_X86_64)
// Carry-less multiplication of 128-bit registers.
inline bool cpu_has_clmul() {
  return __builtin_cpu_supports("pclmul") && __builtin_cpu_supports("avx");
}
#endif

#if defined(VQ3900_X86_64_WIDE)
// The same of 512-bit registers.
inline bool cpu_has_clmul512() {
  return cpu_has_clmul() && __builtin_cpu_supports("vpclmulqdq") && __builtin_cpu_supports("avx512f") &&
         __builtin_cpu_supports("avx512bw");
}

inline bool cpu_has_avx2() {
  return __builtin_cpu_supports("avx2");
}
#endif

}  // namespace vq3900

#endif
