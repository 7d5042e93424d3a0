#ifndef TESTS_SUPPORT_POSIX_CHILD_H
#define TESTS_SUPPORT_POSIX_CHILD_H

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <functional>
#include <iterator>

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

}  // namespace test

#endif
