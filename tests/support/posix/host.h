#ifndef TESTS_SUPPORT_POSIX_HOST_H
#define TESTS_SUPPORT_POSIX_HOST_H

// What hosts do: their children, descriptors and threads.

#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <iterator>
#include <thread>

#include "tests/support/status.h"
#include "varmex/varmex.h"

namespace test {

// Runs `work` in a forked child that hangs for no longer than two minutes. Its failures are those
// of the calling test.
inline void inChild(const std::function<void()>& work) {
  std::fflush(nullptr);
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    alarm(120);
    work();
    std::fflush(nullptr);
    _exit(testing::Test::HasFailure() ? 1 : 0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0)
      << "the child ended with wait status " << status;
}

// How many descriptors are open, and one more.
inline int openDescriptors() {
  const std::filesystem::directory_iterator all("/proc/self/fd");
  return static_cast<int>(std::distance(begin(all), end(all)));
}

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
