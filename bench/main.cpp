// Runs the benchmarks. Their table goes to standard error: standard output belongs to what is measured.
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <iostream>

int main(int argc, char** argv) {
  // Memory that was taken once is kept: otherwise page faults would come and go with what ran before.
  constexpr int kMostKept = 32 << 20;
  mallopt(M_MMAP_THRESHOLD, kMostKept);
  mallopt(M_TRIM_THRESHOLD, kMostKept);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::ConsoleReporter console{benchmark::ConsoleReporter::OO_Tabular};
  console.SetOutputStream(&std::cerr);
  console.SetErrorStream(&std::cerr);
  benchmark::RunSpecifiedBenchmarks(&console);
  benchmark::Shutdown();
  return 0;
}
