// Opening and closing a session, against the bare system calls and the loads that it takes.

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/benchmarks.h"
#include "bench/machine.h"
#include "bench/peers.h"
#include "bench/timing.h"
#include "varmex/varmex.h"

namespace bench {

namespace {

varmex_Item* openSession() {
  tStatusRecord status = varmex_makeStatus();
  varmex_Item* const session = varmex_openPXISession(0, &status);
  if (!session) throw std::runtime_error(varmex_statusText(&status));
  return session;
}

void timeSession(benchmark::State& state, const tMachine& machine) {
  machine.use();
  for (auto _ : state) varmex_close(openSession());
}

void timeLaterSession(benchmark::State& state, const tMachine& machine) {
  machine.use();
  varmex_Item* const first = openSession();
  for (auto _ : state) varmex_close(openSession());
  varmex_close(first);
}

// Without the close, to be held against loads, which are timed without taking the stores down.
void timeOpen(benchmark::State& state, const tMachine& machine) {
  machine.use();
  tTimedPart part(state);
  for (auto _ : state) {
    varmex_Item* session = nullptr;
    part.run([&] { session = openSession(); });
    varmex_close(session);
  }
}

// The loads that an open can't do without: one behind the other, and what they make stays, so that
// they find no more in the processor's cache than an open does.
void timeLoads(benchmark::State& state, const tMachine& machine) {
  const tReader& reader = readers().front();
  const std::string pxiSys = machine.pxiSysPath();
  const std::string pxieSys = machine.pxieSysPath();
  tTimedPart part(state);
  for (auto _ : state) {
    std::unique_ptr<iStore> stores[2];
    part.run([&] {
      stores[0] = reader.load(pxiSys.c_str());
      stores[1] = reader.load(pxieSys.c_str());
    });
    benchmark::DoNotOptimize(stores);
  }
}

void touch(const std::string& path) {
  struct stat answer {};
  if (stat(path.c_str(), &answer) != 0) throw std::runtime_error("can't find " + path);
}

// What is opened is the regular file that was looked at.
int openFile(const std::string& path) {
  const int file = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
  struct stat answer {};
  if (file < 0 || fstat(file, &answer) != 0) throw std::runtime_error("can't open " + path);
  return file;
}

// The buffer has room for more than there is, so that a read shows where the end is.
void readWhole(const std::string& path, std::vector<char>& buffer) {
  touch(path);
  const int file = openFile(path);
  if (read(file, buffer.data(), buffer.size()) <= 0) throw std::runtime_error("can't read " + path);
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
    const int lock = openFile(configuration);
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
  constexpr double kUndisturbed = 0.02;  // what takes milliseconds seldom comes through so
  for (const std::uint32_t chassis : kSizes) {
    const std::string prefix = "session/both/" + std::to_string(chassis) + "/";
    const tMachine& machine = aloneMachineOf(chassis);
    const auto add = [&](const char* who, auto time) {
      return benchmark::RegisterBenchmark(
          (prefix + who).c_str(),
          [time, &machine](benchmark::State& state) { time(state, machine); });
    };
    add("first", timeSession);
    add("later", timeLaterSession);
    add("open", timeOpen)->UseManualTime()->MinTime(kUndisturbed);
    add("loads", timeLoads)->UseManualTime()->MinTime(kUndisturbed);
    add("floor", timeFloor);
  }
}

}  // namespace bench
