#ifndef OSTREL_QUARKS_FORKPROOFLOCK_H
#define OSTREL_QUARKS_FORKPROOFLOCK_H

#include <cstdint>

namespace varmex::inline nOSTRELS100 {

// Holds a lock that the child of a fork can take until the end of its life.
template <class Lock>
class tForkProofHold {
 public:
  explicit tForkProofHold(Lock& lock) : lock_(lock), wasAbandoned_(lock.lock()) {}
  tForkProofHold(const tForkProofHold&) = delete;
  tForkProofHold& operator=(const tForkProofHold&) = delete;
  ~tForkProofHold() { lock_.unlock(); }

  // Whether a thread that this process never had held it before: what it guards is in any state.
  bool wasAbandoned() const { return wasAbandoned_; }

 private:
  Lock& lock_;
  bool wasAbandoned_;
};

// A lock that the child of a fork can take, even if a thread of the parent held it at the fork. It
// is not recursive, takes no memory and needs no destruction.
class tForkProofLock {
 public:
  using tHeld = tForkProofHold<tForkProofLock>;

  // Answers whether it was abandoned, see above.
  bool lock();
  void unlock();

  // Whether a thread with the name of the caller holds it, and not the caller: the child of a fork
  // gives the names of threads that it does not have to others.
  bool isHeldByNamesake() const;

 private:
  std::intptr_t state_ = 0;  // the platform's; 0 while it is free
};

}  // namespace varmex::inline nOSTRELS100

#endif
