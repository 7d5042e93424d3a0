// How long after a file's change a waiter returns, beside a bare program on the same notification.

#include <poll.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

#include "bench/machine.h"
#include "varmex/varmex.h"

namespace {

using tClock = std::chrono::steady_clock;
constexpr int kChanges = 100;

void change(const std::string& path, int round) {
  std::ofstream(path, std::ios::app) << "; " << round << '\n';
}

// Somebody who waits for changes, and the microseconds from each change to the return of `wait`.
struct tWaiter {
  const char* name;
  std::function<void()> prepare;
  std::function<void()> wait;
  std::vector<double> times;
};

void measureOnce(const std::string& path, int round, tWaiter& waiter) {
  waiter.prepare();
  std::atomic<bool> waits{false};
  tClock::time_point returned;
  std::thread thread([&] {
    waits = true;
    waiter.wait();
    returned = tClock::now();
  });
  while (!waits) std::this_thread::yield();
  // Long enough to be asleep, and for the clock of the file system to go on.
  std::this_thread::sleep_for(std::chrono::milliseconds(5));
  const auto start = tClock::now();
  change(path, round);
  thread.join();
  waiter.times.push_back(std::chrono::duration<double, std::micro>(returned - start).count());
}

void print(tWaiter& waiter) {
  std::sort(waiter.times.begin(), waiter.times.end());
  std::printf("latency/tenth/1/%s %.1f\n", waiter.name, waiter.times[kChanges / 10]);
  std::printf("latency/median/1/%s %.1f\n", waiter.name, waiter.times[kChanges / 2]);
}

tWaiter sessionThatWaits() {
  const auto session = std::make_shared<varmex_Item*>(nullptr);
  return {"varmex",
          [=] {
            varmex_close(*session);
            *session = varmex_openPXISession(0, nullptr);
          },
          [=] { varmex_waitForSessionInvalidation(*session, 10000, nullptr); },
          {}};
}

// A program that asks the system for nothing but the notification.
tWaiter bareProgram(const std::string& folder) {
  const int file = inotify_init1(IN_CLOEXEC | IN_NONBLOCK);
  inotify_add_watch(file, folder.c_str(), IN_MODIFY);
  const auto drain = [=] {
    char events[4096];
    while (read(file, events, sizeof events) > 0) {
    }
  };
  return {"bare",
          drain,
          [=] {
            pollfd ready{file, POLLIN, 0};
            poll(&ready, 1, 10000);
            drain();
          },
          {}};
}

}  // namespace

// The two in turn: what else the machine does disturbs both.
int main() {
  const bench::tMachine& machine = bench::machineOf(1);
  machine.use();
  tWaiter waiters[] = {sessionThatWaits(), bareProgram(machine.root() + "/etc/pxi")};
  for (int round = 0; round < kChanges; ++round) {
    for (tWaiter& waiter : waiters) measureOnce(machine.pxieSysPath(), round, waiter);
  }
  for (tWaiter& waiter : waiters) print(waiter);
}
