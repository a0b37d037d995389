// Runs the benchmarks. Their table goes to standard error: standard output belongs to what is measured.
#include <benchmark/benchmark.h>

#include <iostream>

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::ConsoleReporter console{benchmark::ConsoleReporter::OO_Tabular};
  console.SetOutputStream(&std::cerr);
  console.SetErrorStream(&std::cerr);
  benchmark::RunSpecifiedBenchmarks(&console);
  benchmark::Shutdown();
  return 0;
}
