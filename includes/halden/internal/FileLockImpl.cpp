#include "halden/internal/FileLockImpl.h"

#include "ostrel/quarks/failure.h"

namespace halden {

namespace {

using namespace varmex;

[[noreturn]] void raiseSystemFault(const tSourcePosition& position) {
  const tSystemError error = lastSystemError();
  tFailure(kOstrelOsFault, position).systemError(error).raise();
}

}  // namespace

FileLockImpl::FileLockImpl(std::FILE* file) : FileLockImpl(fileno(file)) {}

FileLockImpl::FileLockImpl(int descriptor) {
  if (!lock_.attach(descriptor)) raiseSystemFault(OSTREL_HERE);
}

bool FileLockImpl::tryLockShared() {
  const tLockAnswer answer = lock_.tryLockShared();
  if (answer == tLockAnswer::failed) raiseSystemFault(OSTREL_HERE);
  return answer == tLockAnswer::obtained;
}

void FileLockImpl::unlock() { lock_.unlock(); }

}  // namespace halden
