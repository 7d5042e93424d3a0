// Sessions, walks, waits and routing with every one of their system calls failing in turn.

#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <optional>

#include "tests/injection/scenarios.h"
#include "tests/support/posix/host.h"
#include "tests/support/posix/systemCalls.h"
#include "tests/support/serviceLibrary.h"

namespace test {

namespace {

namespace fs = std::filesystem;

// Whether each line is that of the other answer, or a failure at this place.
bool agrees(const std::string& answer, const std::string& other) {
  const std::vector<std::string> lines = split(answer, "\n"), others = split(other, "\n");
  const auto agree = [](const std::string& line, const std::string& own) {
    return line == own || line.starts_with(own.substr(0, own.find_first_of("=!")) + "!-");
  };
  return std::ranges::equal(lines, others, agree);
}

// Whether a failure names the system's code.
bool tellsOf(int error, const tStatus& status) {
  return status.text().find("\"code\":" + std::to_string(error)) != std::string::npos;
}

class tSystemCallInjection : public tScenarios, public testing::WithParamInterface<tSystemCall> {
 protected:
  void SetUp() override {
    tScenarios::SetUp();
    session_.reset();
    alarm(600);  // ends the program if anything hangs
  }
  void TearDown() override { alarm(0); }

  // The scenario must come to what it answers undisturbed, or to a failure that is told, and leave
  // nothing open. What only interrupts a call is never seen. What can't be loaded counts as absent:
  // `unloaded` is the answer then, if there is one.
  void inject(const tScenario& scenario, const std::string& unloaded = "") {
    const tSystemCall& call = GetParam();
    tStatus status;
    scenario(status);
    const int descriptors = openDescriptors();
    for (const int error : call.errors) {
      SCOPED_TRACE(std::strerror(error));
      const bool isTold = std::ranges::count(call.told, error) > 0;
      tSystemCalls calls;
      tScenarios::inject(
          scenario,
          [&](long n) {
            calls.failures = {{call.name, {error, n}}};
          },
          [&] { return std::exchange(calls.failures, {}).empty(); },
          [&](const std::string& answer, const std::string& undisturbed, const tStatus& result) {
            EXPECT_EQ(openDescriptors(), descriptors);
            if (error == EINTR || error == EWOULDBLOCK) return answer == undisturbed;
            if (result.code() != 0) return !isTold || tellsOf(error, result);
            if (isTold) return answer != undisturbed;
            return agrees(answer, undisturbed) ||
                   (call.name.starts_with("dl") && answer == unloaded);
          });
    }
  }
};

// A description unlike all that stood there before.
std::string nextDescription() {
  static std::size_t round = 0;
  return "[System]\nChassisList=\"\"\n" + std::string(++round % 9, '\n');
}

TEST_P(tSystemCallInjection, opening) {
  const tInstalledServiceLibrary service("full");
  for (const std::uint32_t flags : {0U, 1U}) {
    inject([=](tStatus& status) { return openAll(flags, status); });
  }
}

TEST_P(tSystemCallInjection, walking) { inject(walkAll); }

// Without the service library, or where it can't tell, the manager is native unless the list names
// it.
TEST_P(tSystemCallInjection, triggerManagers) {
  tStatus status;
  const std::string native = askTriggerManager(status);
  for (const char* variant : {"full", "withoutmode"}) {
    const tInstalledServiceLibrary service(variant, "mode 2");
    inject(askTriggerManager, native);
  }
}

TEST_P(tSystemCallInjection, waiting) {
  inject([&](tStatus& status) {
    const tItem session(varmex_openPXISession(0, status));
    const auto wait = [&](std::uint32_t timeout) {
      return std::to_string(varmex_waitForSessionInvalidation(session.get(), timeout, status));
    };
    std::string answer = wait(1);
    machine_.writePxiSys(nextDescription());
    answer += wait(20000);
    const tItem other(varmex_openPXISession(0, status));
    varmex_cancelWaitForInvalidation(other.get());
    const auto result = varmex_waitForSessionInvalidation(other.get(), 0, status);
    return answer + (result == varmex_waitCancelled ? "\ncancelled=" : "\ncancelled!-");
  });
}

TEST_P(tSystemCallInjection, routing) { inject(routeAll); }

class tAmidCalls : public tModel {
 protected:
  varmex_WaitResult wait(std::uint32_t timeout) {
    return call(varmex_waitForSessionInvalidation, session_.get(), timeout, status_);
  }

  // A session that has waited, and finds its files by another way since then.
  void openAndTurn() {
    const fs::path link = machine_.folder();
    for (const char* name : {"two", "one"}) {
      fs::remove_all(link);
      fs::create_directory_symlink(name, link);
      fs::create_directories(link.parent_path() / name);
      machine_.writePxiSys(nextDescription());
      fs::last_write_time(machine_.pxiSys(), fs::file_time_type());
    }
    session_.reset(varmex_openPXISession(0, status_));
    EXPECT_EQ(wait(0), varmex_waitTimedOut) << status_.text();
    fs::remove(link);
    fs::create_directory_symlink("two", link);
  }

  void change() { machine_.writePxiSys(nextDescription()); }
};

// Between which calls of the wait's the change comes does not matter.
TEST_F(tAmidCalls, aChangeIsSeen) {
  for (const char* name : {"stat", "lstat", "inotify_add_watch", "poll"}) {
    bool changed = true;
    for (int n = 1; changed; ++n) {
      openAndTurn();
      changed = false;
      int calls = 0;
      tSystemCalls hooks;
      hooks.before[name] = [&](const char*) {
        if (++calls < n || std::exchange(changed, true)) return;
        change();
      };
      const varmex_WaitResult result = wait(300);
      EXPECT_EQ(result, changed ? varmex_waitChanged : varmex_waitTimedOut)
          << name << ' ' << n << ' ' << status_.text();
    }
  }
}

// What a wait that failed did not come to watch, the next one does.
TEST_F(tAmidCalls, aChangeBehindAFailureIsSeen) {
  const std::function<bool(long)> failures[] = {
      [this](long n) { return failAllocation(n), wait(1), allocationFailed(); },
      [this](long n) {
        tSystemCalls hooks;
        hooks.failures = {{"inotify_add_watch", {ENOSPC, n}}};
        return wait(1), hooks.failures.empty();
      }};
  for (const auto& fail : failures) {
    bool hasFailed = true;
    for (long n = 1; hasFailed; ++n) {
      openAndTurn();
      hasFailed = fail(n);
      varmex_releaseStatus(status_);
      tSystemCalls hooks;
      hooks.before["poll"] = [this](const char*) { change(); };
      EXPECT_EQ(wait(5000), varmex_waitChanged) << n << ' ' << status_.text();
    }
  }
}

// The host closes all descriptors between two calls of a wait.
TEST_F(tAmidCalls, allDescriptorsMayBeClosed) {
  for (const char* name : {"stat", "lstat", "inotify_add_watch", "poll", "recv"}) {
    inChild([&] {
      session_.reset(varmex_openPXISession(0, status_));
      tSystemCalls hooks;
      bool closed = false;
      hooks.before[name] = [&](const char*) {
        if (!std::exchange(closed, true)) closefrom(3);
      };
      EXPECT_TRUE(wait(100) == varmex_waitTimedOut || tellsOf(EBADF, status_)) << status_.text();
      EXPECT_TRUE(closed) << name;
      varmex_releaseStatus(status_);
      EXPECT_EQ(wait(100), varmex_waitTimedOut) << name << ' ' << status_.text();
    });
  }
}

// Nor does it matter to the child of a fork, which closes what it finds of them.
TEST_F(tAmidCalls, aForkLeavesTheChildNoDescriptors) {
  for (const char* name : {"inotify_init1", "fcntl", "socketpair", "open", "poll", "close"}) {
    session_.reset(varmex_openPXISession(0, status_));
    const int before = openDescriptors();
    int forks = 0;
    tSystemCalls hooks;
    hooks.before[name] = [&](const char*) {
      ++forks;
      inChild([&] { EXPECT_EQ(openDescriptors(), before) << name << ' ' << forks; });
    };
    EXPECT_EQ(wait(50), varmex_waitTimedOut) << status_.text();
    session_.reset();
    EXPECT_GT(forks, 0) << name;
  }
}

TEST_F(tAmidCalls, whatIsWatchedIsNotWatchedAgain) {
  session_.reset(varmex_openPXISession(0, status_));
  EXPECT_EQ(wait(0), varmex_waitTimedOut) << status_.text();
  machine_.write(machine_.folder() / "other", "x");
  tSystemCalls calls;
  EXPECT_EQ(wait(50), varmex_waitTimedOut) << status_.text();
  EXPECT_EQ(calls.counts["inotify_add_watch"], 0);
}

INSTANTIATE_TEST_SUITE_P(With, tSystemCallInjection, testing::ValuesIn(systemCalls()),
                         [](const auto& call) { return call.param.name; });

}  // namespace

}  // namespace test
