// The command as a whole process, beside that of the build that VARMEX_BENCH_BEFORE names.

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>
#include <vector>

#include "bench/benchmarks.h"
#include "bench/library.h"
#include "bench/machine.h"

namespace bench {

namespace {

double seconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

// Runs the command to its end; what it prints is dropped. Answers the processor time that it took,
// in seconds, which other work on the machine disturbs least.
double run(const char* command, std::vector<const char*> arguments) {
  arguments.insert(arguments.begin(), command);
  arguments.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  pid_t child = 0;
  const int error = posix_spawn(&child, command, &actions, nullptr,
                                const_cast<char* const*>(arguments.data()), environ);
  posix_spawn_file_actions_destroy(&actions);
  int status = 0;
  rusage usage{};
  if (error != 0 || wait4(child, &status, 0, &usage) != child || status != 0) {
    throw std::runtime_error(std::string("can't run ") + command);
  }
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

void timeCommand(benchmark::State& state, const char* command, const tMachine& machine,
                 const std::vector<const char*>& arguments) {
  machine.use();
  for (auto _ : state) state.SetIterationTime(run(command, arguments));
}

std::string listOf(int first, int last) {
  std::string list = std::to_string(first);
  for (int n = first + 1; n <= last; ++n) list += ',' + std::to_string(n);
  return list;
}

// As many trigger buses as slots, and none of the slots on any of their long lists, 2.7 MB of it.
const tMachine& hostileMachine() {
  constexpr int kCount = 760;
  const std::string all = listOf(1, kCount);
  const std::string others = listOf(kCount + 1, 2 * kCount);
  std::string text =
      "[System]\nChassisList=1\n[Chassis1]\nVendor=V\nModel=M\nSerialNumber=S\n"
      "SlotList=" +
      all + "\nTriggerBusList=" + all + '\n';
  for (int n = 1; n <= kCount; ++n) {
    const std::string number = std::to_string(n);
    text += "[Chassis1Slot" + number + "]\nSlotType=PXIePeripheralSlot\n";
    text += "[Chassis1TriggerBus" + number + "]\nSlotList=" + others + '\n';
  }
  static const tMachine machine({"", text});
  return machine;
}

void add(const std::string& name, const tMachine& (*machine)(),
         const std::vector<const char*>& arguments, int most) {
  const auto addOne = [&](const char* who, const char* command) {
    auto* const added = benchmark::RegisterBenchmark(
        (name + who).c_str(),
        [=](benchmark::State& state) { timeCommand(state, command, machine(), arguments); });
    added->UseManualTime()->Iterations(1)->Unit(benchmark::kMillisecond)->Repetitions(most);
  };
  addOne("varmex", commandNow());
  if (commandBefore()) addOne("before", commandBefore());
}

}  // namespace

void registerCommands() {
  add(
      "command/showJson/255/", []() -> const tMachine& { return machineOf(255); },
      {"show", "--json"}, 3);
  add("command/hostile/1/", hostileMachine, {"show"}, 1);
}

}  // namespace bench
