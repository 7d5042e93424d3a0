// Sharing in hosts that fork, and that unload the library.

#include <dlfcn.h>

#include <atomic>
#include <filesystem>
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

// A copy of the library, which this program does not hold on to.
TEST_F(tSharingHost, theLibraryIsUnloadedAndLoadedAgain) {
  Dl_info loaded{};
  ASSERT_NE(dladdr(reinterpret_cast<void*>(&varmex_openPXISession), &loaded), 0);
  const std::filesystem::path copy = machine_.folder() / "copy.so";
  std::filesystem::copy_file(loaded.dli_fname, copy);
  write("one");
  for (int round = 0; round < 3; ++round) {
    void* const library = dlopen(copy.c_str(), RTLD_NOW | RTLD_LOCAL);
    ASSERT_TRUE(library) << dlerror();
    const auto openThere =
        reinterpret_cast<decltype(&varmex_openPXISession)>(dlsym(library, "varmex_openPXISession"));
    const auto closeThere =
        reinterpret_cast<decltype(&varmex_close)>(dlsym(library, "varmex_close"));
    varmex_Item* const first = openThere(0, nullptr);
    varmex_Item* const second = openThere(0, nullptr);
    EXPECT_TRUE(first && second);
    closeThere(first);
    closeThere(second);
    dlclose(library);
    EXPECT_FALSE(dlopen(copy.c_str(), RTLD_NOW | RTLD_NOLOAD)) << "still loaded";
  }
}

}  // namespace

}  // namespace test
