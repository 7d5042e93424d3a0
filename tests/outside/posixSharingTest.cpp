// Sharing in hosts that fork.

#include <atomic>
#include <thread>

#include "tests/support/posix/child.h"
#include "tests/support/sharing.h"

namespace test {

namespace {

using tSharingHost = tSharing;

TEST_F(tSharingHost, aChildSharesWhatItWasBornWith) {
  write("one");
  const tItem first = open();
  inChild([&] {
    const tItem second = open();
    EXPECT_EQ(busName(first), busName(second));
    write("two");
    const tItem third = open();
    EXPECT_STREQ(busName(third), "two");
    EXPECT_EQ(busName(third), busName(open()));
  });
  EXPECT_STREQ(busName(first), "one");
}

TEST_F(tSharingHost, aForkAmidOpensLeavesAChildThatOpens) {
#if defined(__SANITIZE_ADDRESS__)
  GTEST_SKIP() << "the sanitizer's allocator stays locked in a child of a process of many threads";
#endif
  write("one");
  std::atomic<bool> done{false};
  std::vector<std::thread> threads;
  for (int n = 0; n < 3; ++n) {
    threads.emplace_back([&] {
      while (!done) EXPECT_STREQ(busName(open()), "one");
    });
  }
  for (int n = 0; n < 30; ++n) {
    inChild([] {
      for (int round = 0; round < 5; ++round) EXPECT_STREQ(busName(open()), "one");
    });
  }
  done = true;
  for (std::thread& thread : threads) thread.join();
}

}  // namespace

}  // namespace test
