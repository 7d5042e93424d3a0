#include "halden/internal/nativeFileLock.h"

#include <io.h>
#include <windows.h>

namespace halden {

namespace {

constexpr DWORD kWholeFile = 0xFFFFFFFF;  // both halves of the length

}  // namespace

struct tNativeFileLock::tState {
  HANDLE file = INVALID_HANDLE_VALUE;
  OVERLAPPED range{};  // from offset 0; its event is owned
};

tNativeFileLock::tNativeFileLock() : state_(std::make_unique<tState>()) {}

tNativeFileLock::~tNativeFileLock() {
  if (state_->range.hEvent) CloseHandle(state_->range.hEvent);
}

bool tNativeFileLock::attach(int descriptor) {
  state_->file = reinterpret_cast<HANDLE>(_get_osfhandle(descriptor));
  state_->range.hEvent = CreateEventA(nullptr, FALSE, FALSE, nullptr);
  return state_->range.hEvent != nullptr;
}

tLockAnswer tNativeFileLock::tryLockShared() {
  if (LockFileEx(state_->file, LOCKFILE_FAIL_IMMEDIATELY, 0, kWholeFile, kWholeFile,
                 &state_->range)) {
    return tLockAnswer::obtained;
  }
  return GetLastError() == ERROR_LOCK_VIOLATION ? tLockAnswer::heldElsewhere : tLockAnswer::failed;
}

bool tNativeFileLock::unlock() {
  if (UnlockFileEx(state_->file, 0, kWholeFile, kWholeFile, &state_->range)) return true;
  DWORD transferred = 0;
  return GetLastError() == ERROR_IO_PENDING &&
         GetOverlappedResult(state_->file, &state_->range, &transferred, TRUE);
}

}  // namespace halden
