// Hosts that fork, close descriptors, cancel threads, load and unload the library.

#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/inotify.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <ctime>
#include <deque>

#include "tests/support/posix/host.h"
#include "tests/support/routing.h"
#include "tests/support/sharing.h"
#include "tests/support/testPlace.h"
#include "tests/support/threads.h"
#include "tests/support/wait.h"

namespace test {

namespace {

namespace fs = std::filesystem;

using tHost = tWaiting;

TEST_F(tHost, manySessionsWaitAtOnce) {
  inChild([this] {
    constexpr std::size_t kSessions = 1000;
    const rlimit usual{1024, 1024};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &usual), 0);
    describe(kOneChassis, "");
    std::vector<tItem> sessions;
    for (std::size_t n = 0; n < kSessions; ++n) {
      sessions.emplace_back(varmex_openPXISession(0, status_));
    }
    ASSERT_EQ(status_.code(), 0) << status_.text();
    std::deque<tWaiter> waiters;
    for (const tItem& session : sessions) waiters.emplace_back(session.get());
    settle();
    varmex_cancelWaitForInvalidation(sessions[0].get());
    EXPECT_EQ(waiters[0].end(), varmex_waitCancelled);
    waiters.pop_front();
    machine_.writePxieSys("x");
    for (tWaiter& waiter : waiters) EXPECT_EQ(waiter.end(), varmex_waitChanged);
  });
}

TEST_F(tHost, sessionsSeeWhatIsTheirs) {
  describe(kOneChassis, "");
  tWaiter leader(session_.get());
  settle();
  const fs::path root = machine_.folder().parent_path().parent_path() / "other";
  tTestMachine::write(root / "etc/pxi/pxisys.ini", kOneChassis);
  setenv("VARMEX_FSROOT", root.c_str(), 1);
  // They sleep for the thread of the first session, which has nothing to see.
  const tItem others[] = {tItem(varmex_openPXISession(0, status_)),
                          tItem(varmex_openPXISession(0, status_))};
  tWaiter followers[] = {tWaiter(others[0].get(), kLongWait), tWaiter(others[1].get(), kLongWait)};
  settle();
  const auto begin = std::chrono::steady_clock::now();
  varmex_cancelWaitForInvalidation(others[0].get());
  EXPECT_EQ(followers[0].end(), varmex_waitCancelled);
  tTestMachine::write(root / "etc/pxi/pxiesys.ini", "x");
  EXPECT_EQ(followers[1].end(), varmex_waitChanged);
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(kLongWait / 2));
  EXPECT_TRUE(leader.sleeps());
  varmex_cancelWaitForInvalidation(session_.get());
  EXPECT_EQ(leader.end(), varmex_waitCancelled);
}

TEST_F(tHost, aForkedChildIsOnItsOwn) {
  describe(kOneChassis, "");
  tWaiter waiters[] = {tWaiter(session_.get()), tWaiter(session_.get())};
  settle();
  const int before = openDescriptors();
  inChild([&] {
    EXPECT_EQ(openDescriptors(), before - 4) << "the child closes what was the parent's";
    EXPECT_EQ(wait(50), varmex_waitTimedOut) << status_.text();
    // A description of the child's own.
    const fs::path root = machine_.folder().parent_path().parent_path() / "child";
    tTestMachine::write(root / "etc/pxi/pxisys.ini", kOneChassis);
    setenv("VARMEX_FSROOT", root.c_str(), 1);
    const tItem parents = std::move(session_);
    session_.reset(varmex_openPXISession(0, status_));
    const auto writes = [&] { tTestMachine::write(root / "etc/pxi/pxiesys.ini", "x"); };
    EXPECT_EQ(waitDuring(writes), varmex_waitChanged) << status_.text();
    varmex_cancelWaitForInvalidation(parents.get());
    EXPECT_EQ(varmex_waitForSessionInvalidation(parents.get(), kLongWait, status_),
              varmex_waitCancelled);
  });
  // A child of a child, with the description changing under all three. The wait of the first child
  // goes on over the fork.
  inChild([&] {
    tWaiter own(session_.get(), kLongWait);
    settle();
    inChild([&] { EXPECT_EQ(wait(50), varmex_waitTimedOut) << status_.text(); });
    EXPECT_TRUE(own.sleeps());
    varmex_cancelWaitForInvalidation(session_.get());
    EXPECT_EQ(own.end(), varmex_waitCancelled);
  });
  EXPECT_TRUE(waiters[0].sleeps()) << "the parent sleeps on";
  machine_.writePxieSys("x");
  for (tWaiter& waiter : waiters) EXPECT_EQ(waiter.end(), varmex_waitChanged);
}

// Files of the host's own, of the very kinds that the library has, under the numbers that it had.
class tOwnFiles {
 public:
  tOwnFiles() {
    for (int n = 0; n < 2; ++n) {
      const int watch = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
      inotify_add_watch(watch, "/tmp", IN_CREATE);
      numbers_.push_back(watch);
      int pair[2];
      EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0, pair), 0);
      EXPECT_EQ(send(pair[0], "x", 1, 0), 1);
      EXPECT_EQ(send(pair[1], "x", 1, 0), 1);
      numbers_.insert(numbers_.end(), pair, pair + 2);
    }
    fs::create_directories("/tmp/varmex-own-files");
    fs::remove("/tmp/varmex-own-files");
  }

  void expectUntouched() const {
    char buffer[4096];
    for (const int number : numbers_) EXPECT_GT(read(number, buffer, sizeof buffer), 0) << number;
  }

 private:
  std::vector<int> numbers_;
};

double processorSeconds() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

// The host's next files get none of the library's numbers, nor do the library's own, unless there
// are few: a poll that is woken looks its numbers up again.
TEST_F(tHost, closesDescriptorsBehindTheWait) {
  enum { kFewAndAll = -2, kAll, kFirst };  // or one of the library's four, while waits sleep
  for (int closed = kFewAndAll; closed < kFirst + 4; ++closed) {
    SCOPED_TRACE(closed);
    inChild([&, this] {
      const bool isAsleep = closed != kFewAndAll;
      closefrom(3);  // whatever was inherited
      const rlimit few{50, 1024};
      if (!isAsleep) setrlimit(RLIMIT_NOFILE, &few);
      const int next = dup(0);
      close(next);
      describe(kOneChassis, "");
      EXPECT_EQ(wait(0), varmex_waitTimedOut);
      EXPECT_EQ(dup(0) == next, isAsleep);
      std::vector<int> former;
      for (int number = 60; number < 1024; ++number) {
        if (fcntl(number, F_GETFD) >= 0) former.push_back(number);
      }
      ASSERT_EQ(former.size(), isAsleep ? 4U : 0U);
      std::deque<tWaiter> waiters;
      for (int n = 0; isAsleep && n < 2; ++n) waiters.emplace_back(session_.get());
      if (isAsleep) settle();
      closed < kFirst ? closefrom(3) : void(close(former[static_cast<std::size_t>(closed)]));
      const tOwnFiles own;
      settle();
      // Neither spins, and the time-out is kept.
      const double before = processorSeconds();
      EXPECT_EQ(wait(400), varmex_waitTimedOut) << status_.text();
      EXPECT_LT(processorSeconds() - before, 0.3);
      for (const tWaiter& waiter : waiters) EXPECT_TRUE(waiter.sleeps());
      for (const int number : former) EXPECT_LT(fcntl(number, F_GETFD), 0) << number;
      EXPECT_EQ(waitDuring([this] { machine_.writePxieSys("x"); }), varmex_waitChanged);
      for (tWaiter& waiter : waiters) EXPECT_EQ(waiter.end(), varmex_waitChanged);
      session_.reset();
      own.expectUntouched();
    });
  }
}

// One wait is cancelled, or none can go on.
TEST_F(tHost, endsTheWaitsThatLostTheirDescriptors) {
  for (const bool cancels : {true, false}) {
    inChild([&, this] {
      describe(kOneChassis, "");
      std::deque<tWaiter> waiters;
      for (int n = 0; n < (cancels ? 1 : 3); ++n) waiters.emplace_back(session_.get());
      settle();
      const rlimit none{3, 1024};
      if (!cancels) setrlimit(RLIMIT_NOFILE, &none);
      closefrom(3);
      if (cancels) varmex_cancelWaitForInvalidation(session_.get());
      for (tWaiter& waiter : waiters) {
        EXPECT_EQ(waiter.end(), cancels ? varmex_waitCancelled : varmex_waitFailed);
      }
    });
  }
}

// Whoever of them it was that slept for the system, and but for those that asked not to be
// cancelled. Not for ThreadSanitizer, which loses sight of the locks of a thread that is cancelled
// in a system call.
TEST_F(tHost, cancelledWaitersLeaveTheOthersWhole) {
  describe(kOneChassis, "");
  const tItem other(varmex_openPXISession(0, status_));
  std::deque<tWaiter> waiters;
  for (int n = 0; n < 6; ++n) {
    waiters.emplace_back(n % 2 ? other.get() : session_.get(), 0xFFFFFFFF,
                         n == 5 ? PTHREAD_CANCEL_DISABLE : PTHREAD_CANCEL_ENABLE);
    if (n < 2) settle();
  }
  settle();
  waiters[5].cancelThread();
  for (const std::size_t victim : {0U, 3U, 1U, 2U}) {
    waiters[victim].cancelThread();
    EXPECT_EQ(waiters[victim].end(), tWaiter::kNone) << "it was unwound";
  }
  machine_.writePxieSys("x");
  for (const std::size_t survivor : {4U, 5U}) {
    EXPECT_EQ(waiters[survivor].end(), varmex_waitChanged);
  }
}

using tSharingHost = tSharing;

// Beside a session that stays, and where the description comes and goes with the opens.
TEST_F(tSharingHost, aForkAmidOpensLeavesAChildThatShares) {
#if defined(__SANITIZE_ADDRESS__)
  GTEST_SKIP() << "the sanitizer's allocator stays locked in a child of a process of many threads";
#endif
  write("one");
  for (const bool stays : {true, false}) {
    const tItem first = stays ? open() : tItem();
    const auto openOne = [&] {
      const tItem session = open();
      EXPECT_STREQ(busName(session), "one");
      EXPECT_TRUE(!stays || busName(session) == busName(first));
    };
    std::atomic<bool> done{false};
    runInThreads(4, [&](int thread) {
      while (thread > 0 && !done) openOne();
      for (int n = 0; thread == 0 && n < (stays ? 30 : 300); ++n) {
        inChild([&] {
          for (int round = 0; round < 5; ++round) openOne();
        });
      }
      done = true;
    });
  }
}

// Threads that are cancelled inside an exported function.
using tCancellation = tModel;

constexpr const char* kCancelledDescription =
    "[System]\nChassisList=1\n[Chassis1]\nVendor=V\nModel=M\nSerialNumber=S\nSlotList=2\n"
    "TriggerManager=T\nTriggerBusList=\"\"\n"
    "[Chassis1Slot2]\nSlotType=PXIeHybridSlot\nAddressInfo=PXI0::5-0.0::INSTR\n";

// Runs `work` in a thread and answers whether that was cancelled.
bool endsCancelled(const std::function<void()>& work) {
  bool isBehind = false;
  std::thread([&] {
    work();
    isBehind = true;
  }).join();
  return !isBehind;
}

TEST_F(tCancellation, comesBehindTheFunction) {
  machine_.writeConfiguration();
  machine_.setRegistryText("SOFTWARE\\PXISA\\Services\\Trigger Managers\\T", "Library", "t.so");
  describe("", kCancelledDescription);
  const tItem rack = chassis(1);
  const tItem second = slot(1, 2);
  const auto expectWhole = [this](const char* name, const std::function<void()>& work) {
    bool isDone = false;
    EXPECT_TRUE(endsCancelled([&] {
      // Whatever minds it from here on ends the thread.
      pthread_cancel(pthread_self());
      work();
      isDone = true;
      pthread_testcancel();
    })) << name;
    EXPECT_TRUE(isDone) << name;
    EXPECT_EQ(takeFailure(), "") << name;
  };
  tItem opened;
  expectWhole("open", [&] { opened.reset(varmex_openPXISession(0, status_)); });
  expectWhole("number", [&] { EXPECT_EQ(number(opened, varmex_u32_SessionIsCurrent), 1U); });
  expectWhole("cancel", [&] { varmex_cancelWaitForInvalidation(opened.get()); });
  expectWhole("close", [&] { opened.reset(); });
  expectWhole("synchronize", [] {
    tStatus warned;
    EXPECT_TRUE(tItem(varmex_openPXISession(1, warned)));
    EXPECT_EQ(warned.code(), varmex_warningFailedSync) << warned.text();
  });
  expectWhole("registry",
              [&] { EXPECT_EQ(text(rack, varmex_str_ChassisTriggerManagerLibrary), "t.so"); });
  expectWhole("walk", [&] {
    text(second, varmex_str_TriggerBusStableName);
    varmex_releaseStatus(status_);
  });
  expectWhole("list", [&] { EXPECT_EQ(items(session_, varmex_container_Devices).size(), 1U); });
  tRoutingSession routing;
  expectWhole("routing session", [&] { routing = openRouting("5.0.0:0", status_); });
  ASSERT_TRUE(routing);
  expectWhole("terminals", [&] {
    const tIterator terminals(telmar_ra_varmex_getAllTerminals(routing.get(), status_));
    while (!telmar_ra_varmex_TerminalIterator_isEnd(terminals.get())) {
      telmar_ra_varmex_TerminalIterator_next(terminals.get(), status_);
    }
  });
  expectWhole("its end", [&] { routing.reset(); });
}

// Of a thread that asked to be cancelled at any point.
TEST_F(tCancellation, endsAnAsynchronousThreadWithTheFunction) {
#if defined(__SANITIZE_ADDRESS__)
  GTEST_SKIP() << "the sanitizer takes the stack that was unwound for one in use";
#endif
  static std::string deeds;
  const auto unwind = [](void*) { deeds += ", unwound"; };
  const auto wait = varmex_waitForSessionInvalidation;
  for (const auto function : {varmex_getU32Attribute, wait}) {
    deeds.clear();
    EXPECT_TRUE(endsCancelled([&] {
      const std::unique_ptr<void, decltype(unwind)> unwinding(&deeds, unwind);
      pthread_setcanceltype(PTHREAD_CANCEL_ASYNCHRONOUS, nullptr);
      tStatusRecord record{0, 0, nullptr, nullptr};
      record.reallocate = [](tStatusRecord*, std::uint32_t) {
        pthread_cancel(pthread_self());
        deeds += "whole";
        return false;
      };
      function(nullptr, 0, &record);
    }));
    EXPECT_EQ(deeds, "whole, unwound");
  }
}

using tLoading = tWaiting;

// A copy of the library, which this program does not hold on to, loaded, used and unloaded: one of
// its own beside that of the program.
TEST_F(tLoading, loadingAndUnloadingKeepsNothing) {
  describe("; classic\n", kRoutingDescription);
  machine_.setRegistryNumber("SOFTWARE\\X", "n", 1);
  Dl_info library{};
  ASSERT_NE(dladdr(reinterpret_cast<const void*>(&varmex_close), &library), 0);
  const std::filesystem::path copy = machine_.folder() / "copy.so";
  std::filesystem::copy_file(library.dli_fname, copy);
  const auto cycle = [&] {
    void* const loaded = dlopen(copy.c_str(), RTLD_NOW | RTLD_LOCAL);
    ASSERT_TRUE(loaded) << dlerror();
    const auto find = [loaded](auto function, const char* name) {
      const auto found = reinterpret_cast<decltype(function)>(dlsym(loaded, name));
      EXPECT_NE(found, function);
      return found;
    };
#define FIND(function) find(&function, #function)
    varmex_Item* const session = FIND(varmex_openPXISession)(0, status_);
    varmex_Item* const other = FIND(varmex_openPXISession)(0, status_);
    EXPECT_EQ(FIND(varmex_waitForSessionInvalidation)(session, 0, status_), varmex_waitTimedOut);
    EXPECT_EQ(wait(0), varmex_waitTimedOut);
    FIND(varmex_close)(session);
    FIND(varmex_close)(other);
    telmar_ra_Session* const routing =
        FIND(telmar_ra_varmex_createSession)("5.0.0:7", std::realloc, status_);
    tText reply;
    FIND(telmar_ra_varmex_calculateRoute)
    (routing, seed("PXI_Trig5", "a").c_str(), "[\"PXI_Trig5\"]", nullptr, &reply.text, status_);
    FIND(telmar_ra_varmex_destroySession)(routing);
#undef FIND
    EXPECT_EQ(status_.code(), 0) << status_.text();
    dlclose(loaded);
    EXPECT_FALSE(dlopen(copy.c_str(), RTLD_NOW | RTLD_NOLOAD)) << "still loaded";
  };
  const int descriptors = openDescriptors();
  // The system enlarges lists of its own now and then.
  const auto growthBy = [this](const auto& work) {
    constexpr int kTimes = 10;
    std::ptrdiff_t growth = PTRDIFF_MAX;
    for (int stretch = 0; stretch < 4; ++stretch) {
      const std::ptrdiff_t before = memoryInUse();
      for (int n = 0; n < kTimes; ++n) work();
      growth = std::min(growth, memoryInUse() - before);
      inChild([this] { EXPECT_EQ(wait(0), varmex_waitTimedOut); });
    }
    return growth / kTimes;
  };
  // What counts the lines that run keeps something of every library that it is in.
  const auto another = tTestPlace::programs() / "service/full" / VARMEX_SERVICE_FILE;
  const auto loadAnother = [&] { dlclose(dlopen(another.c_str(), RTLD_NOW | RTLD_LOCAL)); };
  EXPECT_LT(growthBy(cycle) - growthBy(loadAnother), 8);
  EXPECT_EQ(openDescriptors(), descriptors + 4) << "those of this program's own watch";
}

}  // namespace

}  // namespace test
