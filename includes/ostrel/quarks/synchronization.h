#ifndef OSTREL_QUARKS_SYNCHRONIZATION_H
#define OSTREL_QUARKS_SYNCHRONIZATION_H

#include <atomic>
#include <mutex>
#include <new>
#include <optional>
#include <system_error>
#include <thread>

#include "ostrel/quarks/fixedStatus.h"

namespace varmex::inline nOSTRELS100 {

// Some systems allocate a lock at its first use, and fail there when memory is short. A lock that
// was prepared where it is made can be taken ever after. Throws std::bad_alloc.
template <class Lock>
void prepareLock(Lock& lock) {
  try {
    lock.lock();
    lock.unlock();
  } catch (const std::system_error&) {
    throw std::bad_alloc();
  }
}

// A lock that its holder may take again. The standard one of some systems takes memory at its first
// use that it never gives back.
class tRecursiveLock {
 public:
  void lock() {
    const auto self = std::this_thread::get_id();
    // Only this thread itself can have put its own name there.
    if (owner_.load(std::memory_order_relaxed) != self) {
      lock_.lock();
      owner_.store(self, std::memory_order_relaxed);
    }
    ++depth_;
  }

  void unlock() {
    if (--depth_ > 0) return;
    owner_.store({}, std::memory_order_relaxed);
    lock_.unlock();
  }

 private:
  std::mutex lock_;
  std::atomic<std::thread::id> owner_{};
  std::uint32_t depth_ = 0;
};

// A recursive lock that reports its own construction: with an error already in `status` it stays
// uninitialised, and a failure to set the lock up puts one there. Only an initialised one may be
// locked.
class tCriticalSection {
 public:
  explicit tCriticalSection(tFixedStatus& status);

  void lock() { lock_->lock(); }
  void unlock() { lock_->unlock(); }
  bool isInitialized() const { return lock_.has_value(); }

 private:
  std::optional<tRecursiveLock> lock_;
};

}  // namespace varmex::inline nOSTRELS100

#endif
