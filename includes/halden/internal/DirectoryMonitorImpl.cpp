#include "halden/internal/DirectoryMonitorImpl.h"

#include <algorithm>

#include "ostrel/quarks/failure.h"
#include "ostrel/quarks/synchronization.h"

namespace halden {

namespace {

using namespace varmex;

constexpr tErrorCode kTimedOut{-52007, "ostrelerr_operationTimedOut"};

void reportSystemFault(tStatusRecord& status, const tSystemError& error,
                       const tSourcePosition& position) {
  tFailure(kOstrelOsFault, position).systemError(error).reportTo(status);
}

}  // namespace

DirectoryMonitorImpl::DirectoryMonitorImpl(const char* directory, tStatusRecord& status) {
  if (isFailure(status)) return;
  prepareLock(lock_);
  if (!watch_.create() || !watch_.watch(directory, status)) {
    reportSystemFault(status, lastSystemError(), OSTREL_HERE);
  }
}

std::uint64_t DirectoryMonitorImpl::changes() const {
  const std::lock_guard<std::mutex> held(lock_);
  return changes_;
}

bool DirectoryMonitorImpl::wait(std::uint64_t seen, std::uint32_t timeoutMs,
                                tStatusRecord& status) {
  if (isFailure(status)) return false;
  const bool isForever = timeoutMs == kForever;
  const auto end = tClock::now() + std::chrono::milliseconds(timeoutMs);
  std::unique_lock<std::mutex> held(lock_);
  tWake wake = tWake::changed;
  tSystemError error{};
  while (wake != tWake::timedOut) {
    if (isCancelled_) return false;
    if (changes_ != seen) return true;
    if (hasLeader_) {
      if (!waitForLeader(held, isForever, end)) wake = tWake::timedOut;
    } else {
      wake = lead(held, isForever, end, error);
      if (wake == tWake::failed && !isCancelled_) {
        reportSystemFault(status, error, OSTREL_HERE);
        return false;
      }
    }
  }
  // What came at the last moment counts.
  if (isCancelled_) return false;
  if (changes_ != seen) return true;
  tFailure(kTimedOut, OSTREL_HERE)
      .open("halden_debug")
      .u32("requested_timeout_ms", timeoutMs)
      .reportTo(status);
  return false;
}

// False when the time ran out.
bool DirectoryMonitorImpl::waitForLeader(std::unique_lock<std::mutex>& held, bool isForever,
                                         tClock::time_point end) {
  if (!isForever) return turned_.wait_until(held, end) == std::cv_status::no_timeout;
  turned_.wait(held);
  return true;
}

tWake DirectoryMonitorImpl::lead(std::unique_lock<std::mutex>& held, bool isForever,
                                 tClock::time_point end, tSystemError& error) {
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - tClock::now()).count();
  const auto bounded = std::clamp<std::int64_t>(left, 0, kForever - 1);
  hasLeader_ = true;
  held.unlock();
  const tWake wake = watch_.wait(isForever ? kForever : static_cast<std::uint32_t>(bounded));
  // Ahead of all else that might change it.
  if (wake == tWake::failed) error = lastSystemError();
  held.lock();
  hasLeader_ = false;
  if (wake == tWake::changed) ++changes_;
  turned_.notify_all();
  return wake;
}

void DirectoryMonitorImpl::cancel() {
  const std::lock_guard<std::mutex> held(lock_);
  isCancelled_ = true;
  watch_.cancel();
  turned_.notify_all();
}

}  // namespace halden
