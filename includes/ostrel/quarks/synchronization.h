#ifndef OSTREL_QUARKS_SYNCHRONIZATION_H
#define OSTREL_QUARKS_SYNCHRONIZATION_H

#include <mutex>
#include <new>
#include <optional>
#include <system_error>

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
  std::optional<std::recursive_mutex> lock_;
};

}  // namespace varmex::inline nOSTRELS100

#endif
