#ifndef OSTREL_QUARKS_SYNCHRONIZATION_H
#define OSTREL_QUARKS_SYNCHRONIZATION_H

#include <atomic>
#include <mutex>
#include <new>
#include <system_error>
#include <thread>

#include "ostrel/quarks/fixedStatus.h"
#include "ostrel/quarks/forkProofLock.h"

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

// A recursive lock that the child of a fork can take. Its construction heeds a status: with an
// error in it the lock stays uninitialised. Only an initialised one may be locked.
class tCriticalSection {
 public:
  using tHeld = tForkProofHold<tCriticalSection>;

  explicit tCriticalSection(const tFixedStatus& status) : isInitialized_(status.code >= 0) {}

  // Answers like that of tForkProofLock.
  bool lock();
  void unlock();
  bool isInitialized() const { return isInitialized_; }

 private:
  bool isInitialized_;
  tForkProofLock lock_;
  std::atomic<std::thread::id> owner_{};
  std::uint32_t depth_ = 0;
};

}  // namespace varmex::inline nOSTRELS100

#endif
