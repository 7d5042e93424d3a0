// Rounds of random disturbance over one installation: links that are switched, folders that are
// exchanged, forks, cancelled sessions, cancelled threads, sessions that come and go. Through all
// of it threads wait; then the description changes once, and each of them must see it.
//   varmex_campaign SECONDS [SEED]
// Ends with status 1 at the first finding, and tells it with the seed.

#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <mutex>
#include <new>
#include <random>
#include <shared_mutex>
#include <thread>
#include <vector>

#include "tests/support/posix/child.h"
#include "tests/support/posix/threadState.h"
#include "tests/support/testMachine.h"
#include "varmex/telmar_ra_varmex.h"
#include "varmex/varmex.h"

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

constexpr const char* kDescription =
    "[System]\nChassisList=1\n[Chassis1]\nVendor=V\nModel=M\nSerialNumber=S\nSlotList=1,2\n"
    "TriggerBusList=1\n[Chassis1TriggerBus1]\nSlotList=1,2\n"
    "[Chassis1Slot1]\nSlotType=PXIeSystemSlot4Link\n"
    "[Chassis1Slot2]\nSlotType=PXIeHybridSlot\nAddressInfo=PXI0::5-0.0::INSTR\n";

constexpr varmex_WaitResult kUnfinished = 99;
constexpr std::chrono::seconds kHang = 120s;

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

// What a process is doing, told to the one that waits for its end. Its first thread tells.
struct tDeeds {
  std::atomic<const char*> current{"beginning"};
  std::atomic<unsigned> begun{0};
};
thread_local tDeeds* deeds = nullptr;

void begin(const char* deed) {
  if (!deeds) return;
  deeds->current = deed;
  ++deeds->begun;
}

// For one that waits for a thread, and looks at it once a second. On a loaded machine a thread may
// get no processor for minutes: only what it slept or worked counts.
class tPatience {
 public:
  tPatience(pid_t process, pid_t thread)
      : task_("/proc/" + std::to_string(process) + "/task/" + std::to_string(thread)) {}

  // Whether it has been at the same deed for too long.
  bool isOver(unsigned deed) {
    const test::tThreadState state(task_);
    if (deed != deed_) {
      deed_ = deed;
      slept_ = 0s;
      worked_ = state.worked;
    }
    slept_ += state.isAsleep ? 1s : 0s;
    return slept_ > kHang || state.worked - worked_ > kHang;
  }
  std::string told() const {
    const std::chrono::duration<double> worked = test::tThreadState(task_).worked - worked_;
    return std::to_string(slept_.count()) + " s asleep and " + std::to_string(worked.count()) +
           " s at work";
  }

 private:
  fs::path task_;
  unsigned deed_ = 0;
  std::chrono::seconds slept_{0};
  std::chrono::nanoseconds worked_{0};
};

// A child that does something and ends. It doesn't outlive this process.
class tChild {
 public:
  template <class Split, class Live>
  tChild(Split split, Live live) {
    void* const page =
        mmap(nullptr, sizeof(tDeeds), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (page == MAP_FAILED) ::find("no memory");
    deeds_ = new (page) tDeeds;
    number_ = split();
    if (number_ != 0) return;
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    deeds = deeds_;
    live();
    _exit(0);
  }
  tChild(const tChild&) = delete;
  tChild& operator=(const tChild&) = delete;
  ~tChild() { munmap(deeds_, sizeof(tDeeds)); }

  void expectEnd() const {
    if (number_ < 0) return;
    pollfd end{static_cast<int>(syscall(SYS_pidfd_open, number_, 0)), POLLIN, 0};
    tPatience patience(number_, number_);
    int status = 0;
    while (waitpid(number_, &status, WNOHANG) == 0) {
      if (poll(&end, 1, 1000) != 0) continue;
      begin("waiting for a child");
      if (patience.isOver(deeds_->begun)) find("hangs, " + patience.told());
    }
    close(end.fd);
    if (status != 0) find("ended with " + std::to_string(status));
  }

 private:
  [[noreturn]] void find(const std::string& what) const {
    ::find("child " + std::to_string(number_) + ' ' + what + ", " + deeds_->current.load() + " (" +
           std::to_string(deeds_->begun) + " deeds)");
  }

  tDeeds* deeds_;
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
    const timespec times[] = {{time_, 0}, {time_, 0}};
    utimensat(AT_FDCWD, fresh.c_str(), times, 0);
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
  std::time_t time_ = 1'000'000;
};

class tSession {
 public:
  tSession() {
    begin("opening");
    tStatusRecord status = varmex_makeStatus();
    handle_ = varmex_openPXISession(0, &status);
    if (!handle_) find(std::string("open: ") + varmex_statusText(&status));
    varmex_releaseStatus(&status);
  }
  tSession(const tSession&) = delete;
  tSession& operator=(const tSession&) = delete;
  ~tSession() {
    begin("closing");
    varmex_close(handle_);
  }

  varmex_WaitResult wait(std::uint32_t timeoutMs) const {
    begin("waiting");
    tStatusRecord status = varmex_makeStatus();
    const auto starved = [] { return test::tThreadState("/proc/thread-self").starved; };
    const auto start = std::chrono::steady_clock::now() - starved();
    const varmex_WaitResult result = varmex_waitForSessionInvalidation(handle_, timeoutMs, &status);
    if (result == varmex_waitFailed) find(std::string("wait: ") + varmex_statusText(&status));
    varmex_releaseStatus(&status);
    const auto took = std::chrono::steady_clock::now() - starved() - start;
    const bool isLate = took > std::chrono::milliseconds(timeoutMs) + kHang;
    if (timeoutMs != 0xFFFFFFFF && isLate) find("a late wait");
    return result;
  }
  void cancel() {
    begin("cancelling");
    varmex_cancelWaitForInvalidation(handle_);
    isCancelled = true;
  }
  varmex_Item* handle() const { return handle_; }

  bool isCancelled = false;

 private:
  varmex_Item* handle_;
};

// A thread that waits for ever.
class tWaiter {
 public:
  explicit tWaiter(const tSession& session) : session_(session) {
    const auto run = [](void* argument) -> void* {
      tWaiter& own = *static_cast<tWaiter*>(argument);
      own.number_ = gettid();
      own.number_.notify_one();
      own.result_ = varmex_waitForSessionInvalidation(own.session_.handle(), 0xFFFFFFFF, nullptr);
      return nullptr;
    };
    if (pthread_create(&thread_, nullptr, run, this) != 0) find("no thread");
    number_.wait(0);
  }
  tWaiter(const tWaiter&) = delete;
  tWaiter& operator=(const tWaiter&) = delete;

  void cancelThread() {
    if (!kCancelsThreads || isVictim_) return;
    pthread_cancel(thread_);
    isVictim_ = true;
  }

  void expectEnd() {
    void* how = nullptr;
    tPatience patience(getpid(), number_);
    const auto isOver = [&] {
      timespec end{};
      clock_gettime(CLOCK_REALTIME, &end);
      ++end.tv_sec;
      return pthread_timedjoin_np(thread_, &how, &end) == 0;
    };
    while (!isOver()) {
      begin("waiting for a thread");
      if (patience.isOver(0)) find("a wait that missed its end: " + patience.told());
    }
    if (isVictim_ && how == PTHREAD_CANCELED) return;
    // A cancel may come while the waiter looks at the files, and the change with it.
    if (result_ == varmex_waitChanged) return;
    if (result_ != varmex_waitCancelled || !session_.isCancelled)
      find("a wait that answers " + std::to_string(result_));
  }

 private:
  const tSession& session_;
  pthread_t thread_{};
  std::atomic<pid_t> number_{0};
  varmex_WaitResult result_ = kUnfinished;
  bool isVictim_ = false;
};

void walk(const tSession& session) {
  begin("walking");
  tStatusRecord status = varmex_makeStatus();
  varmex_ItemContainer* const slots =
      varmex_getItemContainer(session.handle(), varmex_container_Slots, &status);
  varmex_ItemIterator position = varmex_ItemIterator_begin(slots, &status);
  while (position < varmex_ItemIterator_end(slots, &status)) {
    varmex_Item* const slot = varmex_ItemIterator_nextItem(slots, &position, &status);
    varmex_getStringAttribute(slot, varmex_str_TriggerBusStableName, &status);
    varmex_close(slot);
  }
  varmex_destroyItemContainer(slots);
  telmar_ra_varmex_destroySession(telmar_ra_varmex_createSession("5.0.0:0", nullptr, &status));
  if (status.code != 0) find(std::string("walk: ") + varmex_statusText(&status));
  varmex_releaseStatus(&status);
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
  if (inherited.wait(0xFFFFFFFF) != varmex_waitCancelled) find("a cancel without effect");
  if (random.below(2)) sessions.clear();
  tSession own;
  own.wait(random.below(10));
  if (!kChildrenHaveThreads) return;
  tWaiter first(own);
  tWaiter second(own);
  random.pause(3000);
  own.cancel();
  first.expectEnd();
  second.expectEnd();
}

// Sessions that come and go beside the rounds.
class tGuests {
 public:
  tGuests() {
    for (unsigned n = 0; n < threads_.size(); ++n) {
      threads_[n] = std::thread([this, n] { visit(n); });
    }
  }
  tGuests(const tGuests&) = delete;
  tGuests& operator=(const tGuests&) = delete;
  ~tGuests() {
    isOver_ = true;
    for (std::thread& thread : threads_) thread.join();
  }

  // Negative where there was no moment for it.
  pid_t forkBeside() {
    if (kAllocatorSurvivesFork) return fork();
    const std::lock_guard<std::mutex> closed(door_);
    const std::lock_guard<std::shared_mutex> alone(gate_);
    // What a waiter was woken for, or a thread that begins, allocates, too.
    for (int tries = 0; tries < 30; ++tries) {
      begin("looking for a moment to fork");
      if (test::awaitSleep()) return fork();
    }
    return -1;
  }

 private:
  void visit(unsigned number) {
    tRandom random(seed + number + 1);
    while (!isOver_) {
      { const std::lock_guard<std::mutex> open(door_); }
      const std::shared_lock<std::shared_mutex> beside(gate_);
      const tSession session;
      if (random.below(4) == 0) walk(session);
      session.wait(random.below(10));
      random.pause(2000);
    }
  }

  std::array<std::thread, 2> threads_;
  std::mutex door_;  // keeps the guests from passing the gate ahead of a fork for ever
  std::shared_mutex gate_;
  std::atomic<bool> isOver_{false};
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
      waiters_.push_back(std::make_unique<tWaiter>(anySession()));
    }
    for (unsigned n = random_.below(40); n > 0; --n) {
      step();
      random_.pause(2000);
    }
    installation_.change();
    for (const auto& waiter : waiters_) waiter->expectEnd();
    for (const auto& child : children_) child->expectEnd();
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
      case 3: {
        children_.push_back(
            std::make_unique<tChild>([this] { return guests_.forkBeside(); },
                                     [this] { liveAsChild(sessions_, random_, 0); }));
        break;
      }
      case 4: {
        const tSession& session = anySession();
        const varmex_WaitResult result = session.wait(random_.below(5));
        if (result != (session.isCancelled ? varmex_waitCancelled : varmex_waitTimedOut)) {
          find("a short wait that answers " + std::to_string(result));
        }
        break;
      }
      default: installation_.disturb(random_);
    }
  }

  tInstallation& installation_;
  tGuests& guests_;
  tRandom& random_;
  std::vector<std::unique_ptr<tSession>> sessions_;
  std::vector<std::unique_ptr<tWaiter>> waiters_;
  std::vector<std::unique_ptr<tChild>> children_;
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
    std::exit(0);  // by which a sanitizer looks for leaks
  }).expectEnd();
  return 0;
}
