#ifndef BENCH_TIMING_H
#define BENCH_TIMING_H

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>

namespace bench {

// Times a part of each iteration. The best iteration so far stands for each one: it is what other
// work on the machine disturbed least.
class tTimedPart {
 public:
  explicit tTimedPart(benchmark::State& state) : state_(state) {}

  template <class Work>
  void run(Work work) {
    const tClock::time_point start = tClock::now();
    work();
    best_ = std::min(best_, std::chrono::duration<double>(tClock::now() - start).count());
    state_.SetIterationTime(best_);
  }

 private:
  using tClock = std::chrono::steady_clock;

  benchmark::State& state_;
  double best_ = 1e9;
};

}  // namespace bench

#endif
