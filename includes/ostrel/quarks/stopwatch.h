#ifndef OSTREL_QUARKS_STOPWATCH_H
#define OSTREL_QUARKS_STOPWATCH_H

#include <chrono>

namespace varmex::inline nOSTRELS100 {

// The system's monotonic clock at the resolution of its increments.
std::chrono::nanoseconds monotonicTime();

class tStopwatch {
 public:
  tStopwatch() : start_(monotonicTime()) {}

  // Whole milliseconds since construction.
  std::chrono::milliseconds elapsed() const {
    return std::chrono::duration_cast<std::chrono::milliseconds>(monotonicTime() - start_);
  }

  // What is left of `limit`, never below zero.
  std::chrono::milliseconds remaining(std::chrono::milliseconds limit) const {
    const auto passed = elapsed();
    return passed < limit ? limit - passed : std::chrono::milliseconds(0);
  }

 private:
  std::chrono::nanoseconds start_;
};

}  // namespace varmex::inline nOSTRELS100

#endif
