#include <benchmark/benchmark.h>

#include <cstdio>
#include <exception>

#include "bench/benchmarks.h"

int main(int count, char** arguments) {
  try {
    bench::registerLoads();
    bench::registerLookUps();
    bench::registerSessions();
    bench::registerRefusals();
    bench::registerModel();
    bench::registerWalks();
    bench::registerCommands();
    bench::registerRouting();
    bench::registerGrowth();
    benchmark::Initialize(&count, arguments);
    if (benchmark::ReportUnrecognizedArguments(count, arguments)) return 2;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
  } catch (const std::exception& exception) {
    std::fprintf(stderr, "varmex_bench: %s\n", exception.what());
    return 1;
  }
}
