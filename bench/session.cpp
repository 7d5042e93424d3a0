// Opening and closing a session, against the bare system calls that it takes.

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <stdexcept>
#include <vector>

#include "bench/benchmarks.h"
#include "bench/machine.h"
#include "varmex/varmex.h"

namespace bench {

namespace {

using tClock = std::chrono::steady_clock;

varmex_Item* openSession() {
  tStatusRecord status = varmex_makeStatus();
  varmex_Item* const session = varmex_openPXISession(0, &status);
  if (!session) throw std::runtime_error(varmex_statusText(&status));
  return session;
}

void timeSession(benchmark::State& state, const tMachine& machine) {
  setenv("VARMEX_FSROOT", machine.root().c_str(), 1);
  for (auto _ : state) varmex_close(openSession());
}

// Without the close, to be held against loads, which are timed without taking the store down.
void timeOpen(benchmark::State& state, const tMachine& machine) {
  setenv("VARMEX_FSROOT", machine.root().c_str(), 1);
  for (auto _ : state) {
    const tClock::time_point start = tClock::now();
    varmex_Item* const session = openSession();
    state.SetIterationTime(std::chrono::duration<double>(tClock::now() - start).count());
    varmex_close(session);
  }
}

void touch(const std::string& path) {
  struct stat answer {};
  if (stat(path.c_str(), &answer) != 0) throw std::runtime_error("can't find " + path);
}

int openFile(const std::string& path) {
  const int file = open(path.c_str(), O_RDONLY);
  struct stat answer {};
  if (file < 0 || fstat(file, &answer) != 0) throw std::runtime_error("can't open " + path);
  return file;
}

void readWhole(const std::string& path, std::vector<char>& buffer) {
  touch(path);
  const int file = openFile(path);
  while (read(file, buffer.data(), buffer.size()) > 0) {
  }
  close(file);
}

// What a session can't do without: it asks for the stamps, locks, reads both files to their ends.
void timeFloor(benchmark::State& state, const tMachine& machine) {
  const std::string pxiSys = machine.pxiSysPath();
  const std::string pxieSys = machine.pxieSysPath();
  const std::string configuration = machine.configurationPath();
  std::vector<char> buffer(readText(pxiSys).size() + readText(pxieSys).size());
  for (auto _ : state) {
    touch(pxiSys);
    touch(pxieSys);
    touch(configuration);
    const int lock = open(configuration.c_str(), O_RDONLY);
    flock(lock, LOCK_SH | LOCK_NB);
    readWhole(pxiSys, buffer);
    readWhole(pxieSys, buffer);
    flock(lock, LOCK_UN);
    close(lock);
    benchmark::DoNotOptimize(buffer.data());
  }
}

}  // namespace

void registerSessions() {
  for (const std::uint32_t chassis : kSizes) {
    const std::string prefix = "session/both/" + std::to_string(chassis) + "/";
    const tMachine& machine = machineOf(chassis);
    const auto session = [&machine](benchmark::State& state) { timeSession(state, machine); };
    const auto open = [&machine](benchmark::State& state) { timeOpen(state, machine); };
    const auto floor = [&machine](benchmark::State& state) { timeFloor(state, machine); };
    benchmark::RegisterBenchmark((prefix + "varmex").c_str(), session);
    benchmark::RegisterBenchmark((prefix + "open").c_str(), open)->UseManualTime();
    benchmark::RegisterBenchmark((prefix + "floor").c_str(), floor);
  }
}

}  // namespace bench
