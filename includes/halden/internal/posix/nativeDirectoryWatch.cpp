#include "halden/internal/nativeDirectoryWatch.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>
#include <string>

namespace halden {

namespace {

constexpr std::uint32_t kEvents = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_ATTRIB |
                                  IN_MODIFY | IN_CLOSE_WRITE | IN_DELETE_SELF | IN_MOVE_SELF;

// Events after which the watch no longer stands for the path.
constexpr std::uint32_t kLost = IN_DELETE_SELF | IN_MOVE_SELF | IN_UNMOUNT | IN_IGNORED;

class tDescriptor {
 public:
  tDescriptor() = default;
  tDescriptor(const tDescriptor&) = delete;
  tDescriptor& operator=(const tDescriptor&) = delete;
  ~tDescriptor() {
    if (value_ >= 0) close(value_);
  }
  bool set(int value) {
    value_ = value;
    return value >= 0;
  }
  int get() const { return value_; }

 private:
  int value_ = -1;
};

// What is left of a time-out, in the form of poll: negative for ever, and never longer than an int
// holds, which only means one more round.
class tDeadline {
 public:
  explicit tDeadline(std::uint32_t timeoutMs)
      : isForever_(timeoutMs == kForever),
        end_(std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs)) {}

  int remaining() const {
    if (isForever_) return -1;
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(end_ - std::chrono::steady_clock::now());
    return static_cast<int>(std::clamp<std::int64_t>(left.count(), 0, INT_MAX));
  }

 private:
  bool isForever_;
  std::chrono::steady_clock::time_point end_;
};

}  // namespace

struct tNativeDirectoryWatch::tState {
  bool addWatch() {
    watch = inotify_add_watch(inotify.get(), path.c_str(), kEvents | IN_ONLYDIR);
    return watch >= 0;
  }

  // Takes all events that are there. A queue that ran over may have lost the news of the watch's
  // end, so it counts as that.
  void takeEvents() {
    alignas(inotify_event) char buffer[4096];
    while (true) {
      const ssize_t size = read(inotify.get(), buffer, sizeof buffer);
      if (size <= 0) return;
      for (ssize_t offset = 0; offset < size;) {
        const auto* const event = reinterpret_cast<const inotify_event*>(buffer + offset);
        if (event->mask & IN_Q_OVERFLOW) isLost = true;
        if (event->wd == watch && (event->mask & kLost)) isLost = true;
        offset += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
      }
    }
  }

  tDescriptor inotify;
  tDescriptor cancelEvent;
  std::string path;
  int watch = -1;
  bool isLost = false;
};

tNativeDirectoryWatch::tNativeDirectoryWatch() : state_(std::make_unique<tState>()) {}
tNativeDirectoryWatch::~tNativeDirectoryWatch() = default;

bool tNativeDirectoryWatch::create() {
  return state_->cancelEvent.set(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
}

bool tNativeDirectoryWatch::watch(const char* path, tStatusRecord&) {
  state_->path = path;
  return state_->inotify.set(inotify_init1(IN_CLOEXEC | IN_NONBLOCK)) && state_->addWatch();
}

tWake tNativeDirectoryWatch::wait(std::uint32_t timeoutMs) {
  if (state_->isLost) {
    // The folder was removed or replaced. Whatever happened meanwhile went unseen, so a folder that
    // is there again counts as changed.
    inotify_rm_watch(state_->inotify.get(), state_->watch);
    if (!state_->addWatch()) return tWake::failed;
    state_->isLost = false;
    return tWake::changed;
  }
  const tDeadline deadline(timeoutMs);
  pollfd files[] = {{state_->cancelEvent.get(), POLLIN, 0}, {state_->inotify.get(), POLLIN, 0}};
  while (true) {
    const int timeout = deadline.remaining();
    const int ready = poll(files, 2, timeout);
    if (ready < 0 && errno != EINTR) return tWake::failed;
    if (ready > 0 && files[0].revents) return tWake::cancelled;
    if (ready > 0) {
      state_->takeEvents();
      return tWake::changed;
    }
    if (timeout >= 0 && deadline.remaining() == 0) return tWake::timedOut;
  }
}

void tNativeDirectoryWatch::cancel() {
  const std::uint64_t one = 1;
  // The counter is never read, so that it stays up for all waiters; a full one is up as well.
  [[maybe_unused]] const ssize_t written = write(state_->cancelEvent.get(), &one, sizeof one);
}

}  // namespace halden
