// How a session tells whether the files are still as it read them, and waits until they are not.

#include <algorithm>

#include "ostrel/quarks/cancellation.h"
#include "ostrel/quarks/stopwatch.h"
#include "source/varmex/FileObserver.h"
#include "source/varmex/Session.h"
#include "source/varmex/fileStamp.h"

namespace varmex {

bool Session::isCurrent() const {
  return stampWithRetry(pxiSysPath_) == *pxiSysTime_ &&
         stampWithRetry(pxieSysPath_) == *pxieSysTime_;
}

// No lock is held while an observer is made: the child of a fork in that moment would find it held
// for good. Of two threads that make one, the second gives its own up.
SystemChangeObserver& Session::observer() const {
  if (SystemChangeObserver* const ready = observer_) return *ready;
  const tCancellationOff uncancelled;
  auto fresh = std::make_unique<FileObserver>(pxiSysPath_, pxieSysPath_);
  SystemChangeObserver* first = nullptr;
  return observer_.compare_exchange_strong(first, fresh.get()) ? *fresh.release() : *first;
}

// The files are looked at behind the watch: that starts late, and a notification says nothing about
// what changed. Ahead of it they are looked at to tell of a change without delay.
std::optional<std::uint64_t> Session::changesWhileCurrent(SystemChangeObserver& changes) const {
  const tCancellationOff uncancelled;
  if (!isCurrent()) return std::nullopt;
  const std::uint64_t seen = changes.arm();
  return isCurrent() ? std::optional(seen) : std::nullopt;
}

varmex_WaitResult Session::waitForInvalidation(std::uint32_t timeoutMs) const {
  constexpr std::int64_t kLongest = halden::kForever - 1;  // of the waits that end
  SystemChangeObserver& changes = observer();
  const tStopwatch stopwatch;
  while (!cancelled_) {
    const std::optional<std::uint64_t> seen = changesWhileCurrent(changes);
    if (!seen) return varmex_waitChanged;
    if (timeoutMs == halden::kForever) {
      changes.waitBeyond(*seen, timeoutMs);
      continue;
    }
    const auto elapsed = stopwatch.elapsed().count();
    if (elapsed > timeoutMs) return varmex_waitTimedOut;
    // One more, so that the time is over at the next look.
    const auto remaining =
        static_cast<std::uint32_t>(std::min<std::int64_t>(timeoutMs - elapsed + 1, kLongest));
    if (!changes.waitBeyond(*seen, remaining)) return varmex_waitTimedOut;
  }
  return varmex_waitCancelled;
}

// What can't be watched can't be cancelled either: the session stays as it is then.
void Session::cancelWait() const {
  SystemChangeObserver& waiters = observer();
  cancelled_ = true;
  waiters.cancel();
}

}  // namespace varmex
