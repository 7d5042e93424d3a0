// Loading a description file into a store that answers look-ups, from a file in the page cache.

#include <benchmark/benchmark.h>

#include <cstring>

#include "bench/benchmarks.h"
#include "bench/machine.h"
#include "bench/peers.h"
#include "bench/timing.h"

namespace bench {

namespace {

void reportBytes(benchmark::State& state, std::size_t size) {
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(size));
}

// The time of the load alone: what the store costs to take down is not the load's.
void timeLoad(benchmark::State& state, const tReader& reader, const std::string& path) {
  tTimedPart part(state);
  for (auto _ : state) {
    std::unique_ptr<iStore> store;
    part.run([&] { store = reader.load(path.c_str()); });
    benchmark::DoNotOptimize(store.get());
  }
  reportBytes(state, readText(path).size());
}

// The least that any reader does: one pass over the text in memory that finds the line ends.
void timeLineEnds(benchmark::State& state, const std::string& path) {
  const std::string text = readText(path);
  const char* const end = text.data() + text.size();
  tTimedPart part(state);
  for (auto _ : state) {
    std::size_t lines = 0;
    part.run([&] {
      for (const char* position = text.data(); position != end; ++position, ++lines) {
        position = static_cast<const char*>(
            std::memchr(position, '\n', static_cast<std::size_t>(end - position)));
      }
    });
    benchmark::DoNotOptimize(lines);
  }
  reportBytes(state, text.size());
}

void registerFile(const std::string& file, const std::string& path, std::uint32_t chassis) {
  const std::string prefix = "load/" + file + "/" + std::to_string(chassis) + "/";
  for (const tReader& reader : readers()) {
    benchmark::RegisterBenchmark((prefix + reader.name).c_str(), timeLoad, reader, path)
        ->UseManualTime();
  }
  benchmark::RegisterBenchmark((prefix + "lineEnds").c_str(), timeLineEnds, path)->UseManualTime();
}

}  // namespace

void registerLoads() {
  for (const std::uint32_t chassis : kSizes) {
    registerFile("pxiesys", machineOf(chassis).pxieSysPath(), chassis);
    registerFile("pxisys", machineOf(chassis).pxiSysPath(), chassis);
  }
}

}  // namespace bench
