// How long after a file's change a waiter returns, beside a bare program on the same notification.

#include <poll.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <thread>
#include <vector>

#include "bench/machine.h"
#include "varmex/varmex.h"

namespace {

using tClock = std::chrono::steady_clock;
constexpr int kChanges = 1000;

void change(const std::string& path, int round) {
  std::ofstream(path, std::ios::app) << "; " << round << '\n';
}

// Microseconds from each change to the return of `wait`, for which `prepare` gets ready.
std::vector<double> measure(const std::string& path, const std::function<void()>& prepare,
                            const std::function<void()>& wait) {
  std::vector<double> times;
  for (int round = 0; round < kChanges; ++round) {
    prepare();
    std::atomic<bool> waits{false};
    tClock::time_point returned;
    std::thread waiter([&] {
      waits = true;
      wait();
      returned = tClock::now();
    });
    while (!waits) std::this_thread::yield();
    // Long enough to be asleep, and for the clock of the file system to go on.
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    const auto start = tClock::now();
    change(path, round);
    waiter.join();
    times.push_back(std::chrono::duration<double, std::micro>(returned - start).count());
  }
  std::sort(times.begin(), times.end());
  return times;
}

void print(const char* who, const std::vector<double>& times) {
  std::printf("latency/median/1/%s %.1f\n", who, times[kChanges / 2]);
  std::printf("latency/99th/1/%s %.1f\n", who, times[kChanges * 99 / 100]);
}

}  // namespace

int main() {
  const bench::tMachine& machine = bench::machineOf(1);
  const std::string path = machine.pxieSysPath();
  machine.use();

  varmex_Item* session = nullptr;
  const auto ours = measure(
      path,
      [&] {
        varmex_close(session);
        session = varmex_openPXISession(0, nullptr);
      },
      [&] { varmex_waitForSessionInvalidation(session, 10000, nullptr); });
  varmex_close(session);

  const int file = inotify_init1(IN_CLOEXEC);
  inotify_add_watch(file, (machine.root() + "/etc/pxi").c_str(), IN_MODIFY);
  const auto bare = measure(
      path, [] {},
      [&] {
        pollfd ready{file, POLLIN, 0};
        poll(&ready, 1, 10000);
        char events[4096];
        if (read(file, events, sizeof events) <= 0) std::abort();
      });
  close(file);

  print("varmex", ours);
  print("bare", bare);
}
