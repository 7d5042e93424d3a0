#include "halden/internal/nativeFileLock.h"

#include <sys/file.h>

#include <cerrno>

namespace halden {

struct tNativeFileLock::tState {
  int file = -1;
};

tNativeFileLock::tNativeFileLock() : state_(std::make_unique<tState>()) {}
tNativeFileLock::~tNativeFileLock() = default;

bool tNativeFileLock::attach(int descriptor) {
  state_->file = descriptor;
  return descriptor >= 0;
}

tLockAnswer tNativeFileLock::tryLockShared() {
  int result = 0;
  do {
    result = flock(state_->file, LOCK_SH | LOCK_NB);
  } while (result != 0 && errno == EINTR);
  if (result == 0) return tLockAnswer::obtained;
  return errno == EWOULDBLOCK ? tLockAnswer::heldElsewhere : tLockAnswer::failed;
}

bool tNativeFileLock::unlock() { return flock(state_->file, LOCK_UN) == 0; }

}  // namespace halden
