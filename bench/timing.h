#ifndef BENCH_TIMING_H
#define BENCH_TIMING_H

#include <benchmark/benchmark.h>
#include <time.h>

#include <algorithm>
#include <atomic>
#include <chrono>

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

// Times a part of each iteration, which does its work once or more. Short parts are over before
// anything else runs; of long ones the processor's time leaves that out. Parts that are no longer
// than a few steps of the clock tell nothing: what takes so little is done more often.
class tTimedPart {
 public:
  explicit tTimedPart(benchmark::State& state, int times = 1) : state_(state), times_(times) {}
  tTimedPart(const tTimedPart&) = delete;
  tTimedPart& operator=(const tTimedPart&) = delete;
  ~tTimedPart() { state_.counters[kBest] = best_ / times_; }

  template <class Work>
  void run(Work work) {
    const double used = processorTime();
    const tClock::time_point start = tClock::now();
    for (int time = 0; time < times_; ++time) work();
    const double passed = std::chrono::duration<double>(tClock::now() - start).count();
    const double own = passed < kShort ? passed : std::min(passed, processorTime() - used);
    best_ = std::min(best_, own);
    state_.SetIterationTime(passed);
  }

 private:
  using tClock = std::chrono::steady_clock;
  static constexpr double kShort = 100e-6;

  benchmark::State& state_;
  int times_;
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
