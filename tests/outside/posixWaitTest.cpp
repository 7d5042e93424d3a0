// What only a POSIX system lets a test bring about.

#include <sys/resource.h>
#include <unistd.h>

#include <chrono>
#include <thread>

#include "tests/support/model.h"

namespace test {

namespace {

using tPosixWait = tModel;

// Lets the process open no file more than it has.
class tFileLimit {
 public:
  explicit tFileLimit(rlim_t files) {
    getrlimit(RLIMIT_NOFILE, &before_);
    const rlimit limit{files, before_.rlim_max};
    setrlimit(RLIMIT_NOFILE, &limit);
  }
  ~tFileLimit() { lift(); }
  tFileLimit(const tFileLimit&) = delete;
  tFileLimit& operator=(const tFileLimit&) = delete;

  void lift() { setrlimit(RLIMIT_NOFILE, &before_); }

  static rlim_t usedNow() {
    const int next = dup(0);
    close(next);
    return static_cast<rlim_t>(next);
  }

 private:
  rlimit before_{};
};

TEST_F(tPosixWait, aFolderThatGoesEndsTheWait) {
  describe("[System]\nChassisList=\"\"\n", "");
  varmex_WaitResult result = 9;
  std::thread waiter(
      [&] { result = varmex_waitForSessionInvalidation(session_.get(), 20000, status_); });
  std::this_thread::sleep_for(std::chrono::milliseconds(60));
  const auto away = machine_.folder().parent_path() / "away";
  std::filesystem::rename(machine_.folder(), away);
  waiter.join();
  EXPECT_EQ(result, varmex_waitFailed);
  EXPECT_EQ(status_.code(), ostrelerr_osFault) << status_.text();
  const auto json = nlohmann::json::parse(status_.text());
  EXPECT_EQ(json["internal_error"]["api"], "posix");
  varmex_releaseStatus(status_);
  // The folder comes back, and with it the same files.
  std::filesystem::rename(away, machine_.folder());
  EXPECT_EQ(varmex_waitForSessionInvalidation(session_.get(), 50, status_), varmex_waitTimedOut);
  std::thread again(
      [&] { result = varmex_waitForSessionInvalidation(session_.get(), 20000, status_); });
  std::this_thread::sleep_for(std::chrono::milliseconds(60));
  machine_.writePxieSys("x");
  again.join();
  EXPECT_EQ(result, varmex_waitChanged) << status_.text();
}

TEST_F(tPosixWait, limitsOnHandlesAreFaults) {
  describe("", "");
  tFileLimit limit(tFileLimit::usedNow());
  EXPECT_EQ(varmex_waitForSessionInvalidation(session_.get(), 0, status_), varmex_waitFailed);
  EXPECT_EQ(status_.code(), ostrelerr_osFault) << status_.text();
  limit.lift();
  const rlim_t before = tFileLimit::usedNow();
  const auto away = machine_.folder().parent_path() / "away";
  std::filesystem::rename(machine_.folder(), away);
  for (int round = 0; round < 10; ++round) {
    EXPECT_EQ(varmex_waitForSessionInvalidation(session_.get(), 0, nullptr), varmex_waitFailed);
  }
  std::filesystem::rename(away, machine_.folder());
  EXPECT_EQ(tFileLimit::usedNow(), before) << "a watch that fails keeps nothing open";
  varmex_releaseStatus(status_);
  EXPECT_EQ(varmex_waitForSessionInvalidation(session_.get(), 0, status_), varmex_waitTimedOut);
}

}  // namespace

}  // namespace test
