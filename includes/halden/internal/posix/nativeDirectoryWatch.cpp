#include "halden/internal/nativeDirectoryWatch.h"

#include <pthread.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>
#include <list>
#include <mutex>

#include "halden/internal/posix/watchedPaths.h"
#include "ostrel/quarks/cancellation.h"

namespace halden {

namespace {

using varmex::tCancellationOff;
using tLock = std::lock_guard<std::mutex>;
using tHeld = std::unique_lock<std::mutex>;

// The end of a sleep in the forms that the system wants.
class tDeadline {
 public:
  explicit tDeadline(std::uint32_t timeoutMs)
      : isForever_(timeoutMs == kForever),
        end_(tClock::now() + std::chrono::milliseconds(timeoutMs)) {}

  bool isForever() const { return isForever_; }
  bool isOver() const { return !isForever_ && tClock::now() >= end_; }

  // As poll takes it. No longer than an int holds, which only means one more round.
  int remaining() const {
    if (isForever_) return -1;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end_ - tClock::now());
    return static_cast<int>(std::clamp<std::int64_t>(left.count(), 0, INT_MAX));
  }

  timespec onMonotonicClock() const {
    const auto time = end_.time_since_epoch();
    const auto seconds = std::chrono::floor<std::chrono::seconds>(time);
    return {static_cast<std::time_t>(seconds.count()),
            static_cast<long>(std::chrono::nanoseconds(time - seconds).count())};
  }

 private:
  using tClock = std::chrono::steady_clock;

  bool isForever_;
  tClock::time_point end_;
};

class tWaiter;

// What the sessions of one process share while any of them watches.
struct tShared {
  explicit tShared(std::mutex& lock) : paths(lock) {}

  // Wakes those that have something to look at.
  void wakeChanged() const;

  tWatchedPaths paths;
  std::list<tWaiter*> waiters;
  const tWaiter* leader = nullptr;  // sleeps for the system's events, the others for the leader
  tShared* parents = nullptr;
};

// Nothing of this is ever destroyed: threads may wait while the process ends. `arming` is held
// while the file system is asked, and taken first; `lock` for moments. `shared` changes under both.
struct tProcess {
  std::mutex arming;
  std::mutex lock;
  std::atomic<tShared*> shared{nullptr};  // null while no session watches
  tShared* parents = nullptr;             // what was the parent's, kept as it was and never touched
};
constinit tProcess process;

// The child of a fork starts anew: the parent's threads are not there to finish what they began, or
// to give back a lock, and the events would be taken from the parent. Its descriptors are closed,
// which the parent does not notice.
void leaveParent() {
  tShared* const parents = process.shared;
  if (parents) {
    parents->paths.abandon();
    parents->parents = process.parents;
  }
  tShared* const all = parents ? parents : process.parents;
  std::construct_at(&process);
  process.parents = all;
}

// Withdrawn by the system when the library is unloaded.
[[maybe_unused]] const int kForkHandler = pthread_atfork(nullptr, nullptr, leaveParent);

// A session's part in what is shared. Made and destroyed with `arming` held, and never changed in
// between, so that the child of a fork finds it whole.
class tMembership {
 public:
  tMembership(tShared& shared, const std::vector<std::string>& files) : tMembership(shared) {
    paths_.reserve(files.size());
    for (const std::string& file : files) paths_.push_back(&shared.paths.use(file));
  }
  tMembership(const tMembership&) = delete;
  tMembership& operator=(const tMembership&) = delete;
  ~tMembership() {
    if (!isOfThisProcess()) return;
    for (tWatchedPath* const path : paths_) shared_.paths.leave(*path);
  }

  bool isOfThisProcess() const { return &shared_ == process.shared; }

  std::uint64_t changes() const {
    std::uint64_t sum = 0;
    for (const tWatchedPath* const path : paths_) sum += path->changes;
    return sum;
  }

  bool arm() const {
    const auto armOne = [this](tWatchedPath* path) { return shared_.paths.arm(*path); };
    return std::all_of(paths_.begin(), paths_.end(), armOne);
  }

 private:
  explicit tMembership(tShared& shared) : shared_(shared) {}

  tShared& shared_;
  std::vector<tWatchedPath*> paths_;
};

// One call of wait. Made and destroyed with the lock held.
class tWaiter {
 public:
  tWaiter(tShared& shared, const void* session, const tMembership& membership, std::uint64_t seen)
      : shared_(shared), session_(session), membership_(membership), seen_(seen) {
    place_ = shared.waiters.insert(shared.waiters.end(), this);
  }
  tWaiter(const tWaiter&) = delete;
  tWaiter& operator=(const tWaiter&) = delete;
  // Whoever goes without leaving a leader behind wakes one.
  ~tWaiter() {
    shared_.waiters.erase(place_);
    if (!shared_.leader && !shared_.waiters.empty()) shared_.waiters.front()->wake();
    pthread_cond_destroy(&turn_);
  }

  bool isOf(const void* session) const { return session_ == session; }
  bool hasNews() const { return membership_.changes() != seen_; }
  void wake() { pthread_cond_signal(&turn_); }

  // Until it is woken, or the time is over; the caller tells why.
  void sleep(tHeld& held, const tDeadline& deadline, const tCancellationOff& uncancelled) {
    const tCancellationOff::tLifted lifted(uncancelled);
    pthread_mutex_t* const mutex = held.mutex()->native_handle();
    if (deadline.isForever()) {
      pthread_cond_wait(&turn_, mutex);
    } else {
      const timespec end = deadline.onMonotonicClock();
      pthread_cond_clockwait(&turn_, mutex, CLOCK_MONOTONIC, &end);
    }
  }

  // Sleeps for the system's events and hands out what came. False on failure.
  bool lead(tHeld& held, const tDeadline& deadline, const tCancellationOff& uncancelled);

 private:
  tShared& shared_;
  const void* session_;
  const tMembership& membership_;
  std::uint64_t seen_;
  std::list<tWaiter*>::iterator place_;
  pthread_cond_t turn_ = PTHREAD_COND_INITIALIZER;
};

void tShared::wakeChanged() const {
  for (tWaiter* const waiter : waiters) {
    if (waiter->hasNews()) waiter->wake();
  }
}

// The lead for one sleep, without the lock. What a leader that is cancelled has taken already is
// lost, so that everybody looks.
class tLeading {
 public:
  tLeading(tShared& shared, const tWaiter& waiter, tHeld& held) : shared_(shared), held_(held) {
    shared.leader = &waiter;
    held.unlock();
  }
  tLeading(const tLeading&) = delete;
  tLeading& operator=(const tLeading&) = delete;
  ~tLeading() {
    held_.lock();
    shared_.leader = nullptr;
    if (isDone_) return;
    shared_.paths.countChangeEverywhere();
    shared_.wakeChanged();
  }

  void done() { isDone_ = true; }

 private:
  tShared& shared_;
  tHeld& held_;
  bool isDone_ = false;
};

bool tWaiter::lead(tHeld& held, const tDeadline& deadline, const tCancellationOff& uncancelled) {
  const std::shared_ptr<tChangeEvents> events = shared_.paths.events();
  int error = 0;
  if (events->isWhole()) {
    tLeading leading(shared_, *this, held);
    const tCancellationOff::tLifted lifted(uncancelled);
    if (!events->sleep(deadline.remaining())) error = errno;
    leading.done();
  }
  shared_.paths.take(*events);
  shared_.wakeChanged();
  errno = error;
  return error == 0;
}

int folderError(const std::string& path) {
  const std::string folder = path.substr(0, path.rfind('/') + 1) + '.';
  struct stat file {};
  return stat(folder.c_str(), &file) == 0 ? 0 : errno;
}

}  // namespace

struct tNativeDirectoryWatch::tState {
  tState() = default;
  tState(const tState&) = delete;
  tState& operator=(const tState&) = delete;
  ~tState() {
    const tLock arming(process.arming);
    leave();
  }

  // The rest of it with `arming` held.

  bool isMember() const { return membership && membership->isOfThisProcess(); }

  bool join() {
    if (!process.shared) setShared(new tShared(process.lock));
    if (process.shared.load()->paths.prepareEvents()) {
      auto joined = std::make_unique<const tMembership>(*process.shared, files);
      const tLock held(process.lock);
      membership.swap(joined);
      return true;
    }
    const int reason = errno;
    leave();
    errno = reason;
    return false;
  }

  // The last one gives everything back.
  void leave() {
    membership.reset();
    tShared* const shared = process.shared;
    if (!shared || !shared->paths.isEmpty()) return;
    shared->paths.abandon();  // so that the child of a fork finds them closed, or to be closed
    setShared(nullptr);
    delete shared;
  }

  static void setShared(tShared* shared) {
    const tLock held(process.lock);
    process.shared = shared;
  }

  std::vector<std::string> files;
  std::unique_ptr<const tMembership> membership;  // of this process, or of its parent
  bool isCancelled = false;
};

tNativeDirectoryWatch::tNativeDirectoryWatch() : state_(std::make_unique<tState>()) {}
tNativeDirectoryWatch::~tNativeDirectoryWatch() = default;

bool tNativeDirectoryWatch::create() { return true; }

bool tNativeDirectoryWatch::watch(const std::vector<std::string>& files, tStatusRecord&) {
  state_->files = files;
  std::uint64_t changes = 0;
  if (!arm(changes)) return false;
  for (const std::string& file : files) {
    errno = folderError(file);
    if (errno != 0) return false;
  }
  return true;
}

bool tNativeDirectoryWatch::arm(std::uint64_t& changes) {
  const tLock arming(process.arming);
  if (!state_->isMember() && !state_->join()) return false;
  tShared& shared = *process.shared;
  const tChangeEvents* const before = shared.paths.events().get();
  if (!shared.paths.prepareEvents()) return false;
  {
    const tLock held(process.lock);
    changes = state_->membership->changes();
    if (shared.paths.events().get() != before) shared.wakeChanged();
  }
  return state_->membership->arm();
}

tWake tNativeDirectoryWatch::wait(std::uint64_t seen, std::uint32_t timeoutMs) {
  const tCancellationOff uncancelled;
  const tDeadline deadline(timeoutMs);
  tHeld held(process.lock);
  tShared& shared = *process.shared;
  tWaiter self(shared, state_.get(), *state_->membership, seen);
  while (true) {
    if (state_->isCancelled) return tWake::cancelled;
    if (self.hasNews()) return tWake::changed;
    if (deadline.isOver()) return tWake::timedOut;
    if (shared.leader) {
      self.sleep(held, deadline, uncancelled);
    } else if (!self.lead(held, deadline, uncancelled)) {
      return tWake::failed;
    }
  }
}

void tNativeDirectoryWatch::cancel() {
  const tLock held(process.lock);
  state_->isCancelled = true;
  tShared* const shared = process.shared;
  if (!shared) return;
  for (tWaiter* const waiter : shared->waiters) {
    if (waiter->isOf(state_.get())) waiter->wake();
  }
  if (shared->leader && shared->leader->isOf(state_.get())) shared->paths.events()->ring();
}

}  // namespace halden
