// What only a POSIX system lets a test bring about: links, mounts, limits.

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <fstream>

#include "tests/support/posix/host.h"
#include "tests/support/wait.h"

namespace test {

namespace {

namespace fs = std::filesystem;

// A busy machine may be late, but not always.
constexpr std::chrono::milliseconds kAtOnce{100};
constexpr int kMostAttempts = 20;

// A description file whose time tells it from others with another `hour`.
void writeOf(int hour, const fs::path& path) {
  tTestMachine::write(path, kOneChassis);
  fs::last_write_time(path, fs::file_time_type(std::chrono::hours(hour)));
}

void relink(const fs::path& link, const fs::path& target) {
  const fs::path fresh = link.string() + ".new";
  fs::create_symlink(target, fresh);
  fs::rename(fresh, link);
}

void exchange(const fs::path& a, const fs::path& b) {
  ASSERT_EQ(renameat2(AT_FDCWD, a.c_str(), AT_FDCWD, b.c_str(), RENAME_EXCHANGE), 0);
}

constexpr const char* kFile = "etc/pxi/pxisys.ini";

void rootIsLink(const fs::path& place) { relink(place / "root", "one"); }
void folderIsLink(const fs::path& place) {
  fs::create_directories(place / "root/etc");
  relink(place / "root/etc/pxi", "../../one/../one/etc/pxi");
}
void fileIsLink(const fs::path& place) {
  fs::create_directories(place / "root/etc/pxi");
  relink(place / "root" / kFile, place / "one" / kFile);
}
void rootIsFolder(const fs::path& place) { fs::rename(place / "one", place / "root"); }
void mountOver(const fs::path& place) {
  EXPECT_EQ(mount("none", (place / "root/etc/pxi").c_str(), "tmpfs", 0, nullptr), 0);
}

// Makes mounts those of this process alone, where it may.
bool mayMount() {
  return unshare(CLONE_NEWNS) == 0 && mount("", "/", "", MS_REC | MS_PRIVATE, nullptr) == 0;
}

// The root of the library is `root` below a folder of each case's own; "one" and "two" are roots
// with files of different times, "twin" one with the time of "one".
struct tWay {
  const char* name;
  void (*prepare)(const fs::path& place);
  void (*change)(const fs::path& place);
};

class tPosixWait : public tWaiting {
 protected:
  fs::path base() const { return machine_.folder().parent_path().parent_path(); }

  // Rests on the system's error `code`.
  void expectFault(varmex_WaitResult result, int code) {
    EXPECT_EQ(result, varmex_waitFailed);
    EXPECT_EQ(status_.code(), ostrelerr_osFault) << status_.text();
    const std::string reason = R"({"api":"posix","code":)" + std::to_string(code) + ',';
    EXPECT_NE(status_.text().find(reason), std::string::npos) << status_.text();
    varmex_releaseStatus(status_);
  }

  void openIn(const fs::path& root) {
    setenv("VARMEX_FSROOT", root.c_str(), 1);
    session_.reset(varmex_openPXISession(0, status_));
  }

  void expectSeen(const tWay& way) {
    SCOPED_TRACE(way.name);
    static int number = 0;
    std::chrono::nanoseconds best = std::chrono::hours(1);
    for (int attempt = 0; attempt < kMostAttempts && best > kAtOnce; ++attempt) {
      const fs::path place = base() / ("way" + std::to_string(number++));
      writeOf(1, place / "one" / kFile);
      writeOf(1, place / "twin" / kFile);
      writeOf(2, place / "two" / kFile);
      way.prepare(place);
      openIn(place / "root");
      ASSERT_TRUE(session_) << status_.text();
      // What a session waits for does not depend on where another would look.
      setenv("VARMEX_FSROOT", "/nonexistent", 1);
      EXPECT_EQ(wait(0), varmex_waitTimedOut);
      varmex_WaitResult result = waitDuring([&] { way.change(place); });
      best = std::min(best, latency_);
      // The folder that is not there for a moment may be missed: the next wait looks again.
      if (result == varmex_waitFailed) {
        expectFault(result, ENOENT);
        result = wait(kLongWait);
      }
      EXPECT_EQ(result, varmex_waitChanged) << status_.text();
    }
    EXPECT_LT(best, kAtOnce);
  }

  // A session on a root that is a link to "one", beside a "twin" of the same time.
  fs::path openSwitched() {
    const fs::path place = base() / "switched";
    writeOf(1, place / "one" / kFile);
    writeOf(1, place / "twin" / kFile);
    relink(place / "root", "one");
    openIn(place / "root");
    return place;
  }
};

int nameless = -1;  // a file that is open until the end of the program

const tWay kWays[] = {
    {"the root is a link and switched", rootIsLink,
     [](const fs::path& p) { relink(p / "root", p / "two"); }},
    {"the root is left dangling and restored", rootIsLink,
     [](const fs::path& p) {
       relink(p / "root", "none");
       relink(p / "root", "two");
     }},
    {"the folder is a link and switched", folderIsLink,
     [](const fs::path& p) { relink(p / "root/etc/pxi", "../../two/etc/pxi"); }},
    {"the folder is left dangling and restored", folderIsLink,
     [](const fs::path& p) {
       fs::rename(p / "one", p / "away");
       fs::rename(p / "two", p / "one");
     }},
    {"a link behind the link is switched",
     [](const fs::path& p) {
       relink(p / "middle", p / "one");
       relink(p / "root", "middle");
     },
     [](const fs::path& p) { relink(p / "middle", "two"); }},
    {"the folder behind as many links as the system follows is replaced",
     [](const fs::path& p) {
       fs::rename(p / "one", p / "0");
       for (int n = 1; n < 40; ++n) relink(p / std::to_string(n), std::to_string(n - 1));
       relink(p / "root", "39");
     },
     [](const fs::path& p) { exchange(p / "0", p / "two"); }},
    {"the file is a link and its target is written", fileIsLink,
     [](const fs::path& p) { std::ofstream(p / "one" / kFile, std::ios::app) << "; more\n"; }},
    {"the file is a link and its target is renamed over", fileIsLink,
     [](const fs::path& p) { fs::rename(p / "two" / kFile, p / "one" / kFile); }},
    {"the file is a dangling link and its target appears",
     [](const fs::path& p) {
       fs::create_directories(p / "root/etc/pxi");
       relink(p / "root" / kFile, p / "later/file");
     },
     [](const fs::path& p) { writeOf(1, p / "later/file"); }},
    {"the file is a link to one without a name",
     [](const fs::path& p) {
       nameless = open((p / "one" / kFile).c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
       fs::remove(p / "one" / kFile);
       fs::create_directories(p / "root/etc/pxi");
       relink(p / "root" / kFile, "/proc/self/fd/" + std::to_string(nameless));
     },
     [](const fs::path&) { EXPECT_EQ(write(nameless, ";", 1), 1); }},
    {"the file has another name by which it is written",
     [](const fs::path& p) {
       rootIsFolder(p);
       fs::create_hard_link(p / "root" / kFile, p / "name");
     },
     [](const fs::path& p) { std::ofstream(p / "name", std::ios::app) << "; more\n"; }},
    {"the file's times are set", rootIsFolder,
     [](const fs::path& p) {
       const timespec both[] = {{1, 0}, {1, 0}};
       utimensat(AT_FDCWD, (p / "root" / kFile).c_str(), both, 0);
     }},
    {"the other file comes from elsewhere", rootIsFolder,
     [](const fs::path& p) { fs::rename(p / "two" / kFile, p / "root/etc/pxi/pxiesys.ini"); }},
    {"a parent folder is replaced", rootIsFolder,
     [](const fs::path& p) { exchange(p / "root/etc", p / "two/etc"); }},
    {"the folder is removed and made again while something stands in it",
     [](const fs::path& p) {
       rootIsFolder(p);
       // Until the end of the program.
       EXPECT_GE(open((p / "root/etc/pxi").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC), 0);
     },
     [](const fs::path& p) {
       fs::remove_all(p / "root/etc/pxi");
       writeOf(2, p / "root" / kFile);
     }},
    {"a switch that changes nothing, and a change behind it", rootIsLink,
     [](const fs::path& p) {
       relink(p / "root", "twin");
       std::this_thread::sleep_for(std::chrono::milliseconds(100));
       writeOf(3, p / "twin" / kFile);
     }},
    {"a mount comes over the folder", rootIsFolder, mountOver},
    {"a mount goes from over the folder",
     [](const fs::path& p) {
       rootIsFolder(p);
       mountOver(p);
       writeOf(2, p / "root" / kFile);
     },
     [](const fs::path& p) { EXPECT_EQ(umount2((p / "root/etc/pxi").c_str(), MNT_DETACH), 0); }},
};

TEST_F(tPosixWait, seesAllThatDecidesWhatThePathsStandForAtOnce) {
  inChild([this] {
    const bool canMount = mayMount();
    if (!canMount) std::puts("no right to mount: not tested");
    for (const auto& way : kWays) {
      if (canMount || !std::string(way.name).starts_with("a mount")) expectSeen(way);
    }
  });
}

// The link in a folder that may be passed tells of itself, and the file is not read to be watched;
// but the folder of the files is.
TEST_F(tPosixWait, passesWhatMayNotBeRead) {
  if (getuid() != 0) GTEST_SKIP() << "takes the rights of root to give up";
  const fs::path place = base() / "passed";
  for (const int hour : {1, 2, 3}) writeOf(hour, place / std::to_string(hour) / kFile);
  relink(place / "root", "1");
  for (const fs::path& passed : {place, (place / "3" / kFile).parent_path()}) {
    chmod(passed.c_str(), 0711);
  }
  chmod(base().c_str(), 0755);
  const std::jthread other([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    chmod((place / "1" / kFile).c_str(), 0);
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    relink(place / "root", "2");
  });
  inChild([&, this] {
    ASSERT_EQ(setuid(65534), 0);
    openIn(place / "root");
    EXPECT_EQ(wait(kLongWait), varmex_waitChanged) << status_.text();
    openIn(place / "3");
    expectFault(wait(0), EACCES);
  });
}

TEST_F(tPosixWait, aFolderThatGoesEndsTheWait) {
  describe(kOneChassis, "");
  const fs::path away = base() / "away";
  const auto goes = [&] { fs::rename(machine_.folder(), away); };
  expectFault(waitDuring(goes), ENOENT);
  // A first wait or cancel can't even begin: the session stays uncancelled.
  setenv("VARMEX_FSROOT", base().c_str(), 1);
  fs::create_directories(machine_.folder());
  const tItem other(varmex_openPXISession(0, status_));
  fs::remove(machine_.folder());
  varmex_cancelWaitForInvalidation(other.get());
  expectFault(varmex_waitForSessionInvalidation(other.get(), kLongWait, status_), ENOENT);
  // The folder comes back as a link, and with it the same files.
  relink(machine_.folder(), away);
  EXPECT_EQ(wait(50), varmex_waitTimedOut);
  const auto writes = [&] { tTestMachine::write(away / "pxiesys.ini", "x"); };
  EXPECT_EQ(waitDuring(writes), varmex_waitChanged) << status_.text();
  EXPECT_EQ(varmex_waitForSessionInvalidation(other.get(), 0, status_), varmex_waitChanged);
  varmex_cancelWaitForInvalidation(other.get());
  EXPECT_EQ(varmex_waitForSessionInvalidation(other.get(), kLongWait, status_),
            varmex_waitCancelled);
}

// Of all inotify instances of the process.
std::size_t watchesInUse() {
  std::size_t count = 0;
  for (int number = 0; number < 1024; ++number) {
    std::ifstream info("/proc/self/fdinfo/" + std::to_string(number));
    for (std::string line; std::getline(info, line);) count += line.starts_with("inotify");
  }
  return count;
}

TEST_F(tPosixWait, watchesNothingButTheWay) {
  const fs::path place = openSwitched();
  const tItem other(varmex_openPXISession(0, status_));
  ASSERT_EQ(wait(0), varmex_waitTimedOut) << status_.text();
  const std::size_t before = watchesInUse();
  for (const char* target : {"twin", "one"}) {
    relink(place / "root", target);
    EXPECT_EQ(wait(20), varmex_waitTimedOut);
    EXPECT_EQ(varmex_waitForSessionInvalidation(other.get(), 0, status_), varmex_waitTimedOut);
    EXPECT_EQ(watchesInUse(), before);
  }
}

// Events get lost while nobody waits; among them the one that a link was switched.
TEST_F(tPosixWait, aQueueThatRunsOverIsALookAtEverything) {
  const fs::path place = openSwitched();
  ASSERT_EQ(wait(0), varmex_waitTimedOut) << status_.text();
  std::size_t longest = 0;
  std::ifstream("/proc/sys/fs/inotify/max_queued_events") >> longest;
  const fs::path noise[] = {place / "one/etc/pxi/a", place / "one/etc/pxi/b"};
  for (const fs::path& file : noise) tTestMachine::write(file, "x");
  for (std::size_t n = 0; n <= longest; ++n) chmod(noise[n % 2].c_str(), 0600);
  relink(place / "root", "twin");
  EXPECT_EQ(waitDuring([&] { writeOf(2, place / "twin" / kFile); }), varmex_waitChanged);
}

}  // namespace

}  // namespace test
