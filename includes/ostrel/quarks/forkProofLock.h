#ifndef OSTREL_QUARKS_FORKPROOFLOCK_H
#define OSTREL_QUARKS_FORKPROOFLOCK_H

#include <cstdint>

namespace varmex::inline nOSTRELS100 {

// A lock that the child of a fork can take, even if a thread of the parent held it at the fork. It
// is not recursive, takes no memory and needs no destruction.
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
  bool take();
  void give();

  std::intptr_t state_ = 0;  // the platform's; 0 while it is free
};

}  // namespace varmex::inline nOSTRELS100

#endif
