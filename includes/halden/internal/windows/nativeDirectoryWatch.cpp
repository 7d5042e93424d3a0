#include "halden/internal/nativeDirectoryWatch.h"

#include <windows.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>

#include "halden/tools/widePath.h"
#include "ostrel/quarks/synchronization.h"

namespace halden {

namespace {

using tClock = std::chrono::steady_clock;
using tHeld = std::unique_lock<std::mutex>;

constexpr DWORD kFilter = FILE_NOTIFY_CHANGE_FILE_NAME | FILE_NOTIFY_CHANGE_DIR_NAME |
                          FILE_NOTIFY_CHANGE_ATTRIBUTES | FILE_NOTIFY_CHANGE_SIZE |
                          FILE_NOTIFY_CHANGE_LAST_WRITE | FILE_NOTIFY_CHANGE_SECURITY;

// The notification of one folder, not of what lies below it.
struct tFolder {
  explicit tFolder(std::u16string folderPath) : path(std::move(folderPath)) {}
  tFolder(const tFolder&) = delete;
  tFolder& operator=(const tFolder&) = delete;
  ~tFolder() { close(); }

  bool open() {
    change = FindFirstChangeNotificationW(reinterpret_cast<const wchar_t*>(path.c_str()), FALSE,
                                          kFilter);
    return change != INVALID_HANDLE_VALUE;
  }
  void close() {
    if (change != INVALID_HANDLE_VALUE) FindCloseChangeNotification(change);
    change = INVALID_HANDLE_VALUE;
  }
  // A folder that may no longer be watched has changed all the same. Its handle stays signalled: it
  // is opened anew before the next sleep.
  bool rearm() {
    if (FindNextChangeNotification(change)) return true;
    isLost = GetLastError() == ERROR_ACCESS_DENIED;
    return isLost;
  }

  std::u16string path;
  HANDLE change = INVALID_HANDLE_VALUE;
  bool isLost = false;
};

}  // namespace

// One thread at a time waits for the system, the others for that one.
struct tNativeDirectoryWatch::tState {
  tState() = default;
  tState(const tState&) = delete;
  tState& operator=(const tState&) = delete;
  ~tState() {
    if (cancelEvent != INVALID_HANDLE_VALUE) CloseHandle(cancelEvent);
  }

  // With the lock held. Whatever happened to a folder that was lost went unseen, so one that is
  // there again counts as changed.
  bool reopenLost() {
    for (const auto& folder : folders) {
      if (!folder->isLost) continue;
      folder->close();
      if (!folder->open()) return false;
      folder->isLost = false;
      ++changes;
      turned.notify_all();
    }
    return true;
  }

  // False when the time ran out.
  bool waitForLeader(tHeld& held, bool isForever, tClock::time_point end) {
    if (!isForever) return turned.wait_until(held, end) == std::cv_status::no_timeout;
    turned.wait(held);
    return true;
  }

  tWake lead(tHeld& held, DWORD timeoutMs) {
    const std::uint64_t before = changes;
    if (!reopenLost()) return tWake::failed;
    if (changes != before) return tWake::changed;
    std::vector<HANDLE> handles{cancelEvent};
    for (const auto& folder : folders) handles.push_back(folder->change);
    hasLeader = true;
    held.unlock();
    const tWake wake = sleep(handles, timeoutMs);
    const DWORD error = GetLastError();
    held.lock();
    hasLeader = false;
    if (wake == tWake::changed) ++changes;
    turned.notify_all();
    SetLastError(error);
    return wake;
  }

  tWake sleep(const std::vector<HANDLE>& handles, DWORD timeoutMs) {
    const DWORD result = WaitForMultipleObjects(static_cast<DWORD>(handles.size()), handles.data(),
                                                FALSE, timeoutMs);
    switch (result) {
      case WAIT_OBJECT_0: return tWake::cancelled;
      case WAIT_TIMEOUT: return tWake::timedOut;
      case WAIT_FAILED: return tWake::failed;
      default: break;
    }
    tFolder& changed = *folders.at(result - WAIT_OBJECT_0 - 1);
    return changed.rearm() ? tWake::changed : tWake::failed;
  }

  std::vector<std::unique_ptr<tFolder>> folders;
  HANDLE cancelEvent = INVALID_HANDLE_VALUE;
  std::mutex lock;
  std::condition_variable turned;  // a change, a cancel, or nobody waits for the system any more
  std::uint64_t changes = 0;
  bool hasLeader = false;
  bool isCancelled = false;
};

tNativeDirectoryWatch::tNativeDirectoryWatch() : state_(std::make_unique<tState>()) {}
tNativeDirectoryWatch::~tNativeDirectoryWatch() = default;

// The system reports a failure by null and not by the invalid handle. The test stays as it always
// was; a monitor without an event shows at its first wait.
bool tNativeDirectoryWatch::create() {
  varmex::prepareLock(state_->lock);
  state_->cancelEvent = CreateEventA(nullptr, TRUE, FALSE, nullptr);
  return state_->cancelEvent != INVALID_HANDLE_VALUE;
}

bool tNativeDirectoryWatch::watch(const std::vector<std::string>& files, tStatusRecord& status) {
  for (const std::string& file : files) {
    std::u16string wide;
    const std::string folder = file.substr(0, file.find_last_of("\\/") + 1);
    if (!widenPath(folder.c_str(), wide, status)) return false;
    const auto isSame = [&wide](const auto& known) { return known->path == wide; };
    if (std::any_of(state_->folders.begin(), state_->folders.end(), isSame)) continue;
    state_->folders.push_back(std::make_unique<tFolder>(std::move(wide)));
    if (!state_->folders.back()->open()) return false;
  }
  return true;
}

bool tNativeDirectoryWatch::arm(std::uint64_t& changes) {
  const std::lock_guard<std::mutex> held(state_->lock);
  changes = state_->changes;
  return true;
}

tWake tNativeDirectoryWatch::wait(std::uint64_t seen, std::uint32_t timeoutMs) {
  const bool isForever = timeoutMs == kForever;
  const auto end = tClock::now() + std::chrono::milliseconds(timeoutMs);
  tHeld held(state_->lock);
  tWake wake = tWake::changed;
  while (wake != tWake::timedOut) {
    if (state_->isCancelled) return tWake::cancelled;
    if (state_->changes != seen) return tWake::changed;
    if (state_->hasLeader) {
      if (!state_->waitForLeader(held, isForever, end)) wake = tWake::timedOut;
    } else {
      const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - tClock::now()).count();
      const auto bounded = std::clamp<std::int64_t>(left, 0, kForever - 1);
      wake = state_->lead(held, isForever ? kForever : static_cast<DWORD>(bounded));
      if (wake == tWake::failed && !state_->isCancelled) return wake;
    }
  }
  // What came at the last moment counts.
  if (state_->isCancelled) return tWake::cancelled;
  return state_->changes != seen ? tWake::changed : tWake::timedOut;
}

void tNativeDirectoryWatch::cancel() {
  const std::lock_guard<std::mutex> held(state_->lock);
  state_->isCancelled = true;
  SetEvent(state_->cancelEvent);
  state_->turned.notify_all();
}

}  // namespace halden
