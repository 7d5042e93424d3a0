#ifndef TESTS_SUPPORT_POSIX_WAITER_H
#define TESTS_SUPPORT_POSIX_WAITER_H

#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <thread>

#include "tests/support/status.h"
#include "varmex/varmex.h"

namespace test {

// A thread that waits for a session, for ever if not told otherwise.
class tWaiter {
 public:
  static constexpr varmex_WaitResult kNone = 9;

  explicit tWaiter(varmex_Item* session, std::uint32_t timeout = 0xFFFFFFFF,
                   int cancelState = PTHREAD_CANCEL_ENABLE)
      : thread_([=, this] {
          pthread_setcancelstate(cancelState, nullptr);
          tStatus status;
          result_ = varmex_waitForSessionInvalidation(session, timeout, status);
          EXPECT_TRUE(result_ != varmex_waitFailed || status.code() == ostrelerr_osFault);
        }) {}

  bool sleeps() const { return result_ == kNone; }
  void cancelThread() { pthread_cancel(thread_.native_handle()); }
  // Its result, none if the thread was cancelled.
  varmex_WaitResult end() { return thread_.join(), result_.load(); }

 private:
  std::atomic<varmex_WaitResult> result_{kNone};
  std::thread thread_;
};

}  // namespace test

#endif
