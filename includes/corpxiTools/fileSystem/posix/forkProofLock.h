#ifndef CORPXITOOLS_FILESYSTEM_POSIX_FORKPROOFLOCK_H
#define CORPXITOOLS_FILESYSTEM_POSIX_FORKPROOFLOCK_H

#include <sys/types.h>
#include <unistd.h>

#include <atomic>

namespace varmex::inline nCORPXITOOLS000 {

// A lock that the child of a fork can take, even if a thread of the parent held it at the fork. It
// is not recursive, and needs no destruction.
class tForkProofLock {
 public:
  // Holds the lock until the end of its life.
  class tHeld {
   public:
    explicit tHeld(tForkProofLock& lock) : lock_(lock), wasAbandoned_(lock.take()) {}
    tHeld(const tHeld&) = delete;
    tHeld& operator=(const tHeld&) = delete;
    ~tHeld() { lock_.give(); }

    // Whether a thread that this process never had held it before: what it guards is in any state.
    bool wasAbandoned() const { return wasAbandoned_; }

   private:
    tForkProofLock& lock_;
    bool wasAbandoned_;
  };

 private:
  static constexpr pid_t kFree = 0;

  bool take() {
    const pid_t own = getpid();
    while (true) {
      pid_t holder = kFree;
      if (holder_.compare_exchange_strong(holder, own)) return false;
      if (holder == own) {
        holder_.wait(holder);
      } else if (holder_.compare_exchange_strong(holder, own)) {
        return true;
      }
    }
  }

  void give() {
    holder_ = kFree;
    holder_.notify_one();
  }

  std::atomic<pid_t> holder_{kFree};  // a process
};

}  // namespace varmex::inline nCORPXITOOLS000

#endif
