#ifndef TESTS_SUPPORT_POSIX_CHILD_H
#define TESTS_SUPPORT_POSIX_CHILD_H

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <functional>

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

// How many descriptors are open, as far as anybody counts.
inline int openDescriptors() {
  int count = 0;
  for (int number = 0; number < 4096; ++number) count += fcntl(number, F_GETFD) >= 0;
  return count;
}

}  // namespace test

#endif
