#include "ostrel/quarks/forkProofLock.h"

#include <windows.h>

namespace varmex::inline nOSTRELS100 {

namespace {

// The state is the system's lock, which begins as 0.
SRWLOCK* asNative(std::intptr_t* state) {
  static_assert(sizeof(SRWLOCK) == sizeof *state);
  return reinterpret_cast<SRWLOCK*>(state);
}

}  // namespace

// There is no fork.
bool tForkProofLock::lock() {
  AcquireSRWLockExclusive(asNative(&state_));
  return false;
}

void tForkProofLock::unlock() { ReleaseSRWLockExclusive(asNative(&state_)); }

bool tForkProofLock::isHeldByNamesake() const { return false; }

}  // namespace varmex::inline nOSTRELS100
