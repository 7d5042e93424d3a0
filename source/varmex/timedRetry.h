#ifndef SOURCE_VARMEX_TIMEDRETRY_H
#define SOURCE_VARMEX_TIMEDRETRY_H

#include <algorithm>
#include <chrono>
#include <thread>

#include "ostrel/quarks/stopwatch.h"

namespace varmex {

inline constexpr std::chrono::milliseconds kRetryPause{50};

// Runs `action` until it answers true, every 50 ms for ten seconds and at least once; false when it
// never did. What the action throws ends the loop.
template <class Action>
bool retryFor10s(Action action) {
  constexpr std::chrono::milliseconds kLimit{10'000};
  const tStopwatch stopwatch;
  while (!action()) {
    const auto remaining = stopwatch.remaining(kLimit);
    if (remaining.count() == 0) return false;
    std::this_thread::sleep_for(std::min(remaining, kRetryPause));
  }
  return true;
}

}  // namespace varmex

#endif
