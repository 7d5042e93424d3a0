#include <benchmark/benchmark.h>
#include <malloc.h>

#include <cstdio>
#include <exception>

#include "bench/benchmarks.h"

namespace {

// The allocator gives nothing back to the system in between. What a case costs would depend on
// whether those ahead of it left memory behind: whoever finds none waits for the system to clear
// page after page, which takes longer than to load a file.
void keepMemory() {
  mallopt(M_MMAP_THRESHOLD, 32 << 20);
  mallopt(M_TRIM_THRESHOLD, 1 << 30);
}

}  // namespace

int main(int count, char** arguments) {
  try {
    keepMemory();
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
