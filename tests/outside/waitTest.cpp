#include <algorithm>
#include <atomic>

#include "tests/support/threads.h"
#include "tests/support/wait.h"

namespace test {

namespace {

using namespace std::chrono_literals;
using tClock = std::chrono::steady_clock;

using tWait = tWaiting;

TEST_F(tWait, runsOutOfTime) {
  describe(kOneChassis, "");
  EXPECT_EQ(number(session_, varmex_u32_SessionIsCurrent), 1U);
  EXPECT_EQ(wait(0), varmex_waitTimedOut);
  // A busy machine may be late, but not always.
  auto best = tClock::duration::max();
  for (int attempt = 0; attempt < 5 && best > 700ms; ++attempt) {
    const auto start = tClock::now();
    EXPECT_EQ(waitDuring([this] { machine_.write(machine_.folder() / "other", "x"); }, 200),
              varmex_waitTimedOut)
        << "a change that leaves the two files alone";
    best = std::min(best, tClock::now() - start);
  }
  EXPECT_GE(best, 190ms);
  EXPECT_LE(best, 700ms);
  EXPECT_EQ(status_.code(), 0) << status_.text();
  std::filesystem::remove(machine_.folder() / "other");
}

// Whoever is woken over and over by what changes nothing does not outlast its time.
TEST_F(tWait, runsOutOfTimeAmidNoise) {
  machine_.writePxiSys(kOneChassis);
  // Some systems keep no more than the seconds of a time that is set, which would be a change.
  const auto time =
      std::chrono::floor<std::chrono::seconds>(std::filesystem::last_write_time(machine_.pxiSys()));
  std::filesystem::last_write_time(machine_.pxiSys(), time);
  session_.reset(varmex_openPXISession(0, status_));
  const std::jthread noise([&](const std::stop_token& over) {
    const auto end = tClock::now() + 5s;
    while (!over.stop_requested() && tClock::now() < end)
      std::filesystem::last_write_time(machine_.pxiSys(), time);
    if (!over.stop_requested()) std::filesystem::remove(machine_.pxiSys());
  });
  EXPECT_EQ(wait(200), varmex_waitTimedOut) << status_.text();
}

TEST_F(tWait, seesEveryWayOfReplacingAFile) {
  const std::function<void()> ways[] = {
      [this] { machine_.writePxiSys(std::string(kOneChassis) + "; more\n"); },
      [this] {
        machine_.write(machine_.folder() / "new", kOneChassis);
        std::filesystem::rename(machine_.folder() / "new", machine_.pxiSys());
      },
      [this] { std::filesystem::remove(machine_.pxiSys()); },
      [this] { machine_.writePxieSys(kOneChassis); },
      [this] {
        std::filesystem::last_write_time(machine_.pxiSys(),
                                         std::filesystem::file_time_type::clock::now() - 1h);
      }};
  for (std::size_t way = 0; way < std::size(ways); ++way) {
    describe(kOneChassis, "");
    ASSERT_TRUE(session_) << status_.text();
    EXPECT_EQ(waitDuring(ways[way]), varmex_waitChanged) << way << ' ' << status_.text();
    EXPECT_EQ(wait(0xFFFFFFFF), varmex_waitChanged) << way << ": it stays so";
    EXPECT_EQ(number(session_, varmex_u32_SessionIsCurrent), 0U) << way;
  }
}

TEST_F(tWait, endsWithTheCancelForGood) {
  describe(kOneChassis, "");
  EXPECT_EQ(waitDuring([this] { varmex_cancelWaitForInvalidation(session_.get()); }, 0xFFFFFFFF),
            varmex_waitCancelled);
  EXPECT_LE(latency_, 5s) << "what else happens in the folders above would wake it at last";
  std::filesystem::remove(machine_.pxiSys());
  EXPECT_EQ(wait(0xFFFFFFFF), varmex_waitCancelled);
  EXPECT_EQ(number(session_, varmex_u32_SessionIsCurrent), 0U);
  varmex_cancelWaitForInvalidation(nullptr);
  EXPECT_EQ(varmex_waitForSessionInvalidation(nullptr, 0, status_), varmex_waitFailed);
  EXPECT_EQ(takeFailure(), refusal("InvalidHandle"));
}

TEST_F(tWait, runsWhateverTheRecordHolds) {
  describe(kOneChassis, "");
  status_.record().code = -5;
  EXPECT_EQ(wait(0), varmex_waitTimedOut);
  EXPECT_EQ(status_.code(), -5);
  EXPECT_EQ(varmex_waitForSessionInvalidation(nullptr, 0, status_), varmex_waitFailed);
  EXPECT_EQ(status_.code(), -5);
  EXPECT_EQ(varmex_waitForSessionInvalidation(session_.get(), 0, nullptr), varmex_waitTimedOut);
}

class tConcurrencyOfWaits : public tWait {};

TEST_F(tConcurrencyOfWaits, threadsSeeOneChangeAndOneCancel) {
  const std::function<void()> acts[] = {
      [this] { machine_.writePxieSys("[A]\nB=1\n"); },
      [this] { varmex_cancelWaitForInvalidation(session_.get()); }};
  for (int round = 0; round < 12; ++round) {
    describe(kOneChassis, "");
    runInThreads(5, [&](int thread) {
      tStatus status;
      if (thread == 0) {
        std::this_thread::sleep_for(round % 4 < 2 ? 20ms : 0ms);
        acts[round % 2]();
      } else {
        EXPECT_EQ(varmex_waitForSessionInvalidation(session_.get(), kLongWait, status),
                  round % 2 ? varmex_waitCancelled : varmex_waitChanged);
      }
    });
  }
}

// Sessions come and go, wait and are cancelled, while one thread rewrites both files under the
// exclusive lock. They carry one number: a reader that finds two has read between the writes, and
// no session opens. Nor may a waiter sleep on after the files changed.
TEST_F(tConcurrencyOfWaits, noChangeIsMissedNorSeenHalfway) {
  machine_.writeConfiguration();
  const auto end = tClock::now() + 1500ms;
  const auto rewrite = [this](int round) {
    const std::string text =
        "[System]\nChassisList=1\n[Chassis1]\nModel=M\nSlotList=\"\"\nVendor=V" +
        std::to_string(round) + std::string(static_cast<std::size_t>(round % 7 * 1000), 'p') + '\n';
    const tExclusiveLock lock(machine_.configuration());
    machine_.write(machine_.folder() / "new", text);
    // A reader that asks about the file holds it for a moment on some systems.
    std::error_code busy;
    do {
      std::filesystem::rename(machine_.folder() / "new", machine_.pxiSys(), busy);
    } while (busy);
    machine_.writePxieSys(text + "SerialNumber=S\n");
  };
  rewrite(0);
  std::atomic<int> seen{0};
  runInThreads(4, [&](int thread) {
    // The last sessions wait for one more change.
    for (int round = 1; thread == 0 && tClock::now() < end + 50ms; ++round) {
      std::this_thread::sleep_for(std::chrono::milliseconds(round * 7 % 20));
      rewrite(round);
    }
    while (thread > 0 && tClock::now() < end) {
      tStatus status;
      const tItem session(varmex_openPXISession(0, status));
      // On a busy machine the writer may keep a reader out for the whole of its patience.
      if (status.code() == varmex_errorLockTimeout) continue;
      ASSERT_TRUE(session) << status.text();
      ASSERT_TRUE(tItem(varmex_openChassisByNumber(session.get(), 1, status))) << status.text();
      std::jthread canceller;
      if (thread == 1) {
        canceller = std::jthread([&] { varmex_cancelWaitForInvalidation(session.get()); });
      }
      const auto result = varmex_waitForSessionInvalidation(session.get(), 10000, status);
      EXPECT_TRUE(result == varmex_waitChanged || tClock::now() > end ||
                  (thread == 1 && result == varmex_waitCancelled))
          << result << ' ' << status.text();
      if (result == varmex_waitChanged) ++seen;
    }
  });
  EXPECT_GT(seen, 5);
}

}  // namespace

}  // namespace test
