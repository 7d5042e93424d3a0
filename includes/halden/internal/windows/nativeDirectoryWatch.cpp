#include "halden/internal/nativeDirectoryWatch.h"

#include <windows.h>

#include "halden/tools/widePath.h"

namespace halden {

namespace {

constexpr DWORD kFilter = FILE_NOTIFY_CHANGE_FILE_NAME | FILE_NOTIFY_CHANGE_DIR_NAME |
                          FILE_NOTIFY_CHANGE_ATTRIBUTES | FILE_NOTIFY_CHANGE_SIZE |
                          FILE_NOTIFY_CHANGE_LAST_WRITE | FILE_NOTIFY_CHANGE_SECURITY;

}  // namespace

struct tNativeDirectoryWatch::tState {
  tState() = default;
  tState(const tState&) = delete;
  tState& operator=(const tState&) = delete;
  ~tState() {
    if (change != INVALID_HANDLE_VALUE) FindCloseChangeNotification(change);
    if (cancelEvent != INVALID_HANDLE_VALUE) CloseHandle(cancelEvent);
  }
  HANDLE change = INVALID_HANDLE_VALUE;
  HANDLE cancelEvent = INVALID_HANDLE_VALUE;
};

tNativeDirectoryWatch::tNativeDirectoryWatch() : state_(std::make_unique<tState>()) {}
tNativeDirectoryWatch::~tNativeDirectoryWatch() = default;

// The system reports a failure by null and not by the invalid handle. The test stays as it always
// was; a monitor without an event shows at its first wait.
bool tNativeDirectoryWatch::create() {
  state_->cancelEvent = CreateEventA(nullptr, TRUE, FALSE, nullptr);
  return state_->cancelEvent != INVALID_HANDLE_VALUE;
}

bool tNativeDirectoryWatch::watch(const char* path, tStatusRecord& status) {
  std::u16string wide;
  if (!widenPath(path, wide, status)) return false;
  state_->change =
      FindFirstChangeNotificationW(reinterpret_cast<const wchar_t*>(wide.c_str()), FALSE, kFilter);
  return state_->change != INVALID_HANDLE_VALUE;
}

tWake tNativeDirectoryWatch::wait(std::uint32_t timeoutMs) {
  const HANDLE handles[] = {state_->cancelEvent, state_->change};
  switch (WaitForMultipleObjects(2, handles, FALSE, timeoutMs)) {
    case WAIT_OBJECT_0: return tWake::cancelled;
    case WAIT_TIMEOUT: return tWake::timedOut;
    case WAIT_FAILED: return tWake::failed;
    default: break;
  }
  // A folder that may no longer be watched has changed all the same.
  const bool isArmed =
      FindNextChangeNotification(state_->change) || GetLastError() == ERROR_ACCESS_DENIED;
  return isArmed ? tWake::changed : tWake::failed;
}

void tNativeDirectoryWatch::cancel() { SetEvent(state_->cancelEvent); }

}  // namespace halden
