// Rounds of random disturbance over one installation: links that are switched, folders that are
// exchanged, forks, cancelled sessions, cancelled threads, sessions that come and go. Through all
// of it threads wait; then the description changes once, and each of them must see it.
//   varmex_campaign SECONDS [SEED]
// Ends with status 1 at the first finding, and tells it with the seed.

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <mutex>
#include <random>
#include <shared_mutex>
#include <thread>
#include <vector>

#include "tests/support/posix/host.h"
#include "tests/support/testMachine.h"
#include "varmex/varmex.hpp"

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

constexpr const char* kDescription =
    "[System]\nChassisList=1\n[Chassis1]\nVendor=V\nModel=M\nSerialNumber=S\nSlotList=1,2\n"
    "TriggerBusList=1\n[Chassis1TriggerBus1]\nSlotList=1,2\n"
    "[Chassis1Slot1]\nSlotType=PXIeSystemSlot4Link\n"
    "[Chassis1Slot2]\nSlotType=PXIeHybridSlot\nAddressInfo=PXI0::5-0.0::INSTR\n";

constexpr unsigned kHang = 600;  // seconds

// The allocator of AddressSanitizer does not survive the fork of a process whose other threads
// allocate; ThreadSanitizer does not let the child of a process with threads start one, and loses
// sight of the locks of a thread that is cancelled in a system call.
#ifdef __SANITIZE_ADDRESS__
constexpr bool kAllocatorSurvivesFork = false;
#else
constexpr bool kAllocatorSurvivesFork = true;
#endif
#ifdef __SANITIZE_THREAD__
constexpr bool kChildrenHaveThreads = false;
constexpr bool kCancelsThreads = false;
#else
constexpr bool kChildrenHaveThreads = true;
constexpr bool kCancelsThreads = true;
#endif

unsigned seed = 0;

[[noreturn]] void find(const std::string& what) {
  std::printf("campaign: %s (seed %u, process %d)\n", what.c_str(), seed, getpid());
  std::fflush(nullptr);
  _exit(1);
}

// What a process is doing now, as its first thread tells; the process bears that name. It ends if
// it does the same for too long.
void begin(const char* deed) {
  if (gettid() != getpid()) return;
  prctl(PR_SET_NAME, deed);
  alarm(kHang);
}

// A child that does something and ends. It doesn't outlive this process.
class tChild {
 public:
  template <class Split, class Live>
  tChild(Split split, Live live) : number_(split()) {
    if (number_ != 0) return;
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    live();
    _exit(0);
  }

  // However long the child lives, it is never for long at the same thing.
  void expectEnd() const {
    if (number_ < 0) return;
    alarm(0);
    siginfo_t end{};
    waitid(P_PID, static_cast<id_t>(number_), &end, WEXITED | WNOWAIT);
    const std::string number = std::to_string(number_);
    std::string deed;
    std::getline(std::ifstream("/proc/" + number + "/comm"), deed);
    waitpid(number_, nullptr, 0);
    if (end.si_status == 0) return;
    const char* const how = end.si_status == SIGALRM ? " hangs, " : " failed, ";
    find("child " + number + how + deed + ": " + std::to_string(end.si_status));
  }

 private:
  pid_t number_;
};

class tRandom {
 public:
  explicit tRandom(unsigned start) : engine_(start) {}
  unsigned below(unsigned bound) { return static_cast<unsigned>(engine_() % bound); }
  void pause(unsigned microseconds) {
    std::this_thread::sleep_for(std::chrono::microseconds(below(microseconds)));
  }

 private:
  std::mt19937 engine_;
};

// The installation: two roots behind a link, in each of them a folder behind another, and
// everywhere files with the same times, so that only a real change counts.
class tInstallation {
 public:
  explicit tInstallation(const fs::path& place) : place_(place) {
    for (const char* root : {"one", "two"}) {
      for (const char* folder : {"a", "b"}) fs::create_directories(place / root / "etc" / folder);
      fs::create_directory_symlink("a", place / root / "etc/pxi");
    }
    fs::create_directories(place / "one/var/lib/PXISA");
    fs::create_directory_symlink(place / "one/var", place / "two/var");
    test::tTestMachine::write(place / "one/var/lib/PXISA/configuration.ini", "; lock\n");
    fs::create_directory_symlink("one", place / "root");
    setenv("VARMEX_FSROOT", (place / "root").c_str(), 1);
    change();
  }

  // Writes the description anew, everywhere under one time that is later than all before.
  void change() {
    const test::tExclusiveLock lock(place_ / "one/var/lib/PXISA/configuration.ini");
    ++time_;
    for (const char* root : {"one", "two"}) {
      for (const char* folder : {"a", "b"}) write(place_ / root / "etc" / folder / "pxiesys.ini");
    }
  }

  // What leaves the paths and the times of their files as they are, in the sum.
  void disturb(tRandom& random) {
    const char* const root = random.below(2) ? "one" : "two";
    const char* const folder = random.below(2) ? "a" : "b";
    switch (random.below(6)) {
      case 0: relink(place_ / "root", root); break;
      case 1: relink(place_ / root / "etc/pxi", folder); break;
      case 2: relink(place_ / root / "etc/pxi", place_ / "root/../one/etc" / folder); break;
      case 3: exchange(place_ / "one/etc", place_ / "two/etc"); break;
      case 4: chmod((place_ / root / "etc" / folder).c_str(), random.below(2) ? 0755 : 0775); break;
      default: {
        const fs::path noise = place_ / root / "etc" / folder / "noise";
        test::tTestMachine::write(noise, "x");
        fs::remove(noise);
      }
    }
  }

 private:
  // In place or by renaming, but never with another time in between.
  void write(const fs::path& path) const {
    const fs::path fresh = path.string() + ".new";
    test::tTestMachine::write(fresh, kDescription);
    fs::last_write_time(fresh, fs::file_time_type(std::chrono::hours(time_)));
    fs::rename(fresh, path);
  }
  static void relink(const fs::path& link, const fs::path& target) {
    const fs::path fresh = link.string() + ".new";
    fs::create_directory_symlink(target, fresh);
    fs::rename(fresh, link);
  }
  static void exchange(const fs::path& a, const fs::path& b) {
    renameat2(AT_FDCWD, a.c_str(), AT_FDCWD, b.c_str(), RENAME_EXCHANGE);
  }

  fs::path place_;
  int time_ = 0;
};

class tSession : public varmex::Session {
 public:
  tSession() : Session((begin("opening"), Session())) {}

  varmex::WaitResult wait(unsigned milliseconds) const {
    begin("waiting");
    return Session::wait(std::chrono::milliseconds(milliseconds));
  }
  void cancel() {
    begin("cancelling");
    cancelWaits();
    isCancelled = true;
  }

  bool isCancelled = false;
};

// A thread that waits for ever.
class tLongWait {
 public:
  explicit tLongWait(const tSession& session) : session_(session), waiter_(session.handle()) {}

  void cancelThread() {
    if (!kCancelsThreads || isVictim_) return;
    waiter_.cancelThread();
    isVictim_ = true;
  }

  void expectEnd() {
    begin("joining");
    const varmex_WaitResult result = waiter_.end();
    if (isVictim_ && result == test::tWaiter::kNone) return;
    // A cancel may come while the waiter looks at the files, and the change with it.
    if (result == varmex_waitChanged) return;
    if (result != varmex_waitCancelled || !session_.isCancelled)
      find("a wait that answers " + std::to_string(result));
  }

 private:
  const tSession& session_;
  test::tWaiter waiter_;
  bool isVictim_ = false;
};

void walk(const tSession& session) {
  begin("walking");
  for (const varmex::Slot& slot : session.slots()) slot.triggerBusStableName();
  varmex::RoutingSession("5.0.0:0");
}

// What a forked child does with what it inherited and with what is its own.
void liveAsChild(std::vector<std::unique_ptr<tSession>>& sessions, tRandom& random, int depth) {
  if (random.below(3) == 0) closefrom(3);
  tSession& inherited = *sessions[random.below(static_cast<unsigned>(sessions.size()))];
  inherited.wait(random.below(20));
  if (depth < 2 && random.below(3) == 0) {
    tChild(fork, [&] { liveAsChild(sessions, random, depth + 1); }).expectEnd();
  }
  inherited.cancel();
  if (inherited.wait(~0U) != varmex::WaitResult::cancelled) find("a cancel without effect");
  if (random.below(2)) sessions.clear();
  tSession own;
  own.wait(random.below(10));
  if (!kChildrenHaveThreads) return;
  tLongWait first(own);
  tLongWait second(own);
  random.pause(3000);
  own.cancel();
  first.expectEnd();
  second.expectEnd();
}

// Sessions that come and go beside the rounds.
class tGuests {
 public:
  ~tGuests() {
    isOver_ = true;
    begin("joining guests");
  }

  // Negative where there was no moment for it.
  pid_t forkBeside() {
    if (kAllocatorSurvivesFork) return fork();
    const std::lock_guard<std::mutex> closed(door_);
    const std::lock_guard<std::shared_mutex> alone(gate_);
    // What a waiter was woken for, or a thread that begins, allocates, too.
    for (int tries = 0; tries < 30; ++tries) {
      begin("before a fork");
      if (test::awaitSleep()) return fork();
    }
    return -1;
  }

 private:
  void visit(unsigned number) {
    tRandom random(seed + number);
    while (!isOver_) {
      { const std::lock_guard<std::mutex> open(door_); }
      const std::shared_lock<std::shared_mutex> beside(gate_);
      const tSession session;
      if (random.below(4) == 0) walk(session);
      session.wait(random.below(10));
      random.pause(2000);
    }
  }

  std::mutex door_;  // keeps the guests from passing the gate ahead of a fork for ever
  std::shared_mutex gate_;
  std::atomic<bool> isOver_{false};
  std::jthread first_{[this] { visit(1); }};
  std::jthread second_{[this] { visit(2); }};
};

class tRound {
 public:
  tRound(tInstallation& installation, tGuests& guests, tRandom& random)
      : installation_(installation), guests_(guests), random_(random) {}

  void run() {
    for (unsigned n = 1 + random_.below(4); n > 0; --n) {
      sessions_.push_back(std::make_unique<tSession>());
    }
    for (unsigned n = 1 + random_.below(10); n > 0; --n) {
      waiters_.push_back(std::make_unique<tLongWait>(anySession()));
    }
    for (unsigned n = random_.below(40); n > 0; --n) {
      step();
      random_.pause(2000);
    }
    installation_.change();
    for (const auto& waiter : waiters_) waiter->expectEnd();
    for (const tChild& child : children_) child.expectEnd();
  }

 private:
  tSession& anySession() {
    return *sessions_[random_.below(static_cast<unsigned>(sessions_.size()))];
  }

  void step() {
    switch (random_.below(12)) {
      case 0: anySession().cancel(); break;
      case 1:
      case 2:
        waiters_[random_.below(static_cast<unsigned>(waiters_.size()))]->cancelThread();
        break;
      case 3:
        children_.emplace_back([this] { return guests_.forkBeside(); },
                               [this] { liveAsChild(sessions_, random_, 0); });
        break;
      case 4: {
        const tSession& session = anySession();
        const varmex::WaitResult result = session.wait(random_.below(5));
        using enum varmex::WaitResult;
        if (result != (session.isCancelled ? cancelled : timedOut)) find("a short wait that errs");
        break;
      }
      default: installation_.disturb(random_);
    }
  }

  tInstallation& installation_;
  tGuests& guests_;
  tRandom& random_;
  std::vector<std::unique_ptr<tSession>> sessions_;
  std::vector<std::unique_ptr<tLongWait>> waiters_;
  std::vector<tChild> children_;
};

void run(std::chrono::seconds duration) {
  const auto end = std::chrono::steady_clock::now() + duration;
  tRandom random(seed);
  const test::tTestMachine machine;
  tInstallation installation(machine.folder().parent_path().parent_path() / "campaign");
  const int before = test::openDescriptors();
  unsigned rounds = 0;
  {
    tGuests guests;
    for (; std::chrono::steady_clock::now() < end; ++rounds) {
      tRound(installation, guests, random).run();
    }
  }
  if (test::openDescriptors() != before) find("descriptors that are left");
  std::printf("%u rounds, seed %u\n", rounds, seed);
}

}  // namespace

int main(int count, char** arguments) {
  if (count < 2) return 2;
  seed = count > 2 ? static_cast<unsigned>(std::atoi(arguments[2])) : std::random_device()();
  const std::chrono::seconds duration(std::atoi(arguments[1]));
  tChild(fork, [=] {
    run(duration);
    begin("leaving");
    std::exit(0);  // by which a sanitizer looks for leaks
  }).expectEnd();
  return 0;
}
