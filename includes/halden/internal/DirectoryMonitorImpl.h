#ifndef HALDEN_INTERNAL_DIRECTORYMONITORIMPL_H
#define HALDEN_INTERNAL_DIRECTORYMONITORIMPL_H

#include <chrono>
#include <condition_variable>
#include <mutex>

#include "halden/internal/nativeDirectoryWatch.h"
#include "ostrel/quarks/systemError.h"

namespace halden {

// Sleeps until something happens in a directory. Any number of threads may wait at once: one of
// them waits for the system, the others for that one, and all see each change.
class DirectoryMonitorImpl {
 public:
  // Watches from now on. `directory` is UTF-8. A failure is reported to `status`.
  DirectoryMonitorImpl(const char* directory, tStatusRecord& status);
  DirectoryMonitorImpl(const DirectoryMonitorImpl&) = delete;
  DirectoryMonitorImpl& operator=(const DirectoryMonitorImpl&) = delete;

  // How many changes were seen so far.
  std::uint64_t changes() const;

  // True when there was a change since `changes()` answered `seen`, or one comes within the time;
  // false after a cancel, and on failure, which is reported to `status`: -52007 when the time ran
  // out.
  bool wait(std::uint64_t seen, std::uint32_t timeoutMs, tStatusRecord& status);

  // Wakes all waiters, also those that come later.
  void cancel();

 private:
  using tClock = std::chrono::steady_clock;

  bool waitForLeader(std::unique_lock<std::mutex>& held, bool isForever, tClock::time_point end);
  tWake lead(std::unique_lock<std::mutex>& held, bool isForever, tClock::time_point end,
             varmex::tSystemError& error);

  tNativeDirectoryWatch watch_;
  mutable std::mutex lock_;
  std::condition_variable turned_;  // a change, a cancel, or nobody waits for the system any more
  std::uint64_t changes_ = 0;
  bool hasLeader_ = false;
  bool isCancelled_ = false;
};

}  // namespace halden

#endif
