// What the sizes of installations cost, for the plot.

#include <benchmark/benchmark.h>

#include "bench/benchmarks.h"
#include "bench/machine.h"
#include "bench/walk.h"

namespace bench {

namespace {

constexpr std::uint32_t kGrowing[] = {1, 2, 4, 8, 16, 32, 64, 128, 255};

// An open session of a machine.
class tSession {
 public:
  explicit tSession(const tMachine& machine) {
    machine.use();
    item_ = varmex_openPXISession(0, nullptr);
  }
  tSession(const tSession&) = delete;
  tSession& operator=(const tSession&) = delete;
  ~tSession() { varmex_close(item_); }

  varmex_Item* get() const { return item_; }

 private:
  varmex_Item* item_;
};

void timeFirst(benchmark::State& state, std::uint32_t chassis) {
  const tMachine& machine = aloneMachineOf(chassis);
  for (auto _ : state) const tSession session(machine);
}

void timeLater(benchmark::State& state, std::uint32_t chassis) {
  const tMachine& machine = machineOf(chassis);
  const tSession first(machine);
  for (auto _ : state) const tSession later(machine);
}

void timeWalk(benchmark::State& state, std::uint32_t chassis) {
  const tSession session(machineOf(chassis));
  for (auto _ : state) walk(libraryNow(), session.get());
}

void timeSlots(benchmark::State& state, std::uint32_t chassis) {
  const tSession session(machineOf(chassis));
  for (auto _ : state) {
    varmex_destroyItemContainer(
        varmex_getItemContainer(session.get(), varmex_container_Slots, nullptr));
  }
}

// Of the last chassis.
void timeChassis(benchmark::State& state, std::uint32_t chassis) {
  const tSession session(machineOf(chassis));
  for (auto _ : state) {
    varmex_close(varmex_openChassisByNumber(session.get(), chassis, nullptr));
  }
}

}  // namespace

void registerGrowth() {
  const auto add = [](const char* what, auto time) {
    for (const std::uint32_t chassis : kGrowing) {
      benchmark::RegisterBenchmark(
          (std::string("growth/") + what + '/' + std::to_string(chassis) + "/varmex").c_str(),
          [=](benchmark::State& state) { time(state, chassis); });
    }
  };
  add("first", timeFirst);
  add("later", timeLater);
  add("walk", timeWalk);
  add("slots", timeSlots);
  add("chassis", timeChassis);
}

}  // namespace bench
