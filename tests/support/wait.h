#ifndef TESTS_SUPPORT_WAIT_H
#define TESTS_SUPPORT_WAIT_H

#include <chrono>
#include <thread>

#include "tests/support/model.h"

namespace test {

constexpr const char* kOneChassis = "[System]\nChassisList=1\n[Chassis1]\nSlotList=\"\"\n";

// Longer than any test goes on: a wait that gets there has missed something.
constexpr std::uint32_t kLongWait = 20000;

class tWaiting : public tModel {
 protected:
  // Lets threads that have been started begin, and fall asleep.
  static void settle() {
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    awaitSleep();
  }

  varmex_WaitResult wait(std::uint32_t timeout) {
    return varmex_waitForSessionInvalidation(session_.get(), timeout, status_);
  }

  // The result of a wait that another thread makes while `act` runs. How long behind the act it
  // ended is in `latency_`.
  template <class Act>
  varmex_WaitResult waitDuring(Act act, std::uint32_t timeout = kLongWait) {
    using tClock = std::chrono::steady_clock;
    varmex_WaitResult result = 0;
    tClock::time_point end;
    std::thread waiter([&] {
      result = wait(timeout);
      end = tClock::now();
    });
    settle();
    act();
    const tClock::time_point begin = tClock::now();
    waiter.join();
    latency_ = end - begin;
    return result;
  }

  std::chrono::nanoseconds latency_{};
};

}  // namespace test

#endif
