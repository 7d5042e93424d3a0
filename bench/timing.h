#ifndef BENCH_TIMING_H
#define BENCH_TIMING_H

#include <benchmark/benchmark.h>
#include <time.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>

namespace bench {

// What the thread has used of the processor, in seconds.
inline double processorTime() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

// The counter that tells what a case took at best, in seconds. The report goes by it: what is best
// is what other work on the machine disturbed least.
inline constexpr const char* kBest = "best";

// Times a part of each iteration. Short parts are over before anything else runs; of long ones the
// processor's time leaves that out, and is asked for once a part is known to be long, as the
// question is a system call. Parts that take no more than a few steps of the clock do their work
// several times.
class tTimedPart {
 public:
  explicit tTimedPart(benchmark::State& state, int times = 1) : state_(state), times_(times) {}
  tTimedPart(const tTimedPart&) = delete;
  tTimedPart& operator=(const tTimedPart&) = delete;
  ~tTimedPart() { state_.counters[kBest] = best_ / times_ / static_cast<double>(items_); }

  // What is told is the time of one of as many items that the work is for.
  void countItems(std::uint64_t items) { items_ = items; }

  template <class Work>
  void run(Work work) {
    const double used = isLong_ ? processorTime() : 0;
    const tClock::time_point start = tClock::now();
    for (int time = 0; time < times_; ++time) work();
    const double passed = std::chrono::duration<double>(tClock::now() - start).count();
    best_ = std::min(best_, isLong_ ? std::min(passed, processorTime() - used) : passed);
    isLong_ = passed >= kShort;
    state_.SetIterationTime(passed);
  }

 private:
  using tClock = std::chrono::steady_clock;
  static constexpr double kShort = 100e-6;

  benchmark::State& state_;
  int times_;
  std::uint64_t items_ = 1;
  bool isLong_ = false;
  double best_ = 1e9;
};

// Times work that threads do at once, in spans of an iteration each. A span counts if another
// thread did as much meanwhile, nearly: on a machine with other work to do threads often run one
// after the other.
class tTogether {
 public:
  template <class Work>
  void run(benchmark::State& state, int items, Work work) {
    const auto thread = static_cast<std::size_t>(state.thread_index());
    tProgress& own = progress_[thread];
    const tProgress& other = progress_[1 - thread];
    double best = 1e9;
    for (auto _ : state) {
      const std::uint64_t before = other.items.load(std::memory_order_relaxed);
      const auto start = std::chrono::steady_clock::now();
      for (int item = 0; item < items; ++item) {
        work();
        own.items.store(own.items.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
      }
      const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - start;
      const std::uint64_t done = other.items.load(std::memory_order_relaxed) - before;
      const bool counts = state.threads() == 1 || 10 * done >= 9 * static_cast<unsigned>(items);
      if (counts) best = std::min(best, passed.count());
    }
    state.counters[kBest] = benchmark::Counter(best, benchmark::Counter::kAvgThreads);
  }

 private:
  struct alignas(128) tProgress {
    std::atomic<std::uint64_t> items{0};
  };

  tProgress progress_[2];
};

}  // namespace bench

#endif
