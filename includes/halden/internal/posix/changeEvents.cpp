#include "halden/internal/posix/changeEvents.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/inotify.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>

namespace halden {

namespace {

// One mask for all, since watches of the same thing share one.
constexpr std::uint32_t kEvents = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_ATTRIB |
                                  IN_MODIFY | IN_CLOSE_WRITE | IN_DELETE_SELF | IN_MOVE_SELF;

constexpr int kReadsAtOnce = 64;  // so that a storm of events keeps no waiter beyond its time

bool isShortage(int error) { return error == EMFILE || error == ENFILE || error == ENOMEM; }

}  // namespace

bool tChangeEvents::open() {
  if (!inotify_.adopt(inotify_init1(IN_CLOEXEC | IN_NONBLOCK))) return false;
  int pair[2];
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, pair) != 0) return false;
  rope_.expect(pair[1]);
  const bool hasBell = bell_.adopt(pair[0]);
  const bool hasRope = rope_.adopt(pair[1]);
  if (!hasBell || !hasRope) return false;
  return mounts_.adopt(::open("/proc/self/mountinfo", O_RDONLY | O_CLOEXEC)) || !isShortage(errno);
}

bool tChangeEvents::isWhole() const {
  const bool hasMounts = mounts_.number() < 0 || mounts_.isOurs();
  return !isBroken_ && inotify_.isOurs() && bell_.isOurs() && rope_.isOurs() && hasMounts;
}

int tChangeEvents::watch(const char* path, tKind kind) {
  if (!inotify_.isOurs()) {
    errno = EBADF;
    return -1;
  }
  std::uint32_t events = kEvents;
  if (kind == tKind::itself) events |= IN_DONT_FOLLOW;
  if (kind == tKind::folder) events |= IN_ONLYDIR;
  return inotify_add_watch(inotify_.number(), path, events);
}

void tChangeEvents::unwatch(int watch) {
  if (inotify_.isOurs()) inotify_rm_watch(inotify_.number(), watch);
}

// Without the rope the sleep has ended by itself.
void tChangeEvents::ring() {
  if (rope_.isOurs()) send(rope_.number(), "", 1, MSG_NOSIGNAL);
}

bool tChangeEvents::sleep(int timeoutMs) {
  pollfd files[] = {
      {inotify_.number(), POLLIN, 0}, {bell_.number(), POLLIN, 0}, {mounts_.number(), POLLPRI, 0}};
  const bool isDone = poll(files, 3, timeoutMs) >= 0 || errno == EINTR;
  mountsChanged_ = files[2].revents != 0;
  return isDone;
}

bool tChangeEvents::take(const tChanged& changed) {
  if (!isWhole()) return false;
  char rung[64];
  ssize_t size = 0;
  do {
    size = recv(bell_.number(), rung, sizeof rung, 0);
  } while (size > 0);
  return isDrained(size) && readEvents(changed) && !mountsChanged_;
}

// What can't be read any more would end every sleep at once: it is given up.
bool tChangeEvents::isDrained(ssize_t size) {
  if (size < 0 && (errno == EAGAIN || errno == EINTR)) return true;
  isBroken_ = true;
  return false;
}

bool tChangeEvents::readEvents(const tChanged& changed) {
  alignas(inotify_event) char buffer[4096];
  for (int round = 0; round < kReadsAtOnce; ++round) {
    const ssize_t size = read(inotify_.number(), buffer, sizeof buffer);
    if (size <= 0) return isDrained(size);
    for (ssize_t offset = 0; offset < size;) {
      const auto* const event = reinterpret_cast<const inotify_event*>(buffer + offset);
      if (event->mask & IN_Q_OVERFLOW) return false;
      changed(event->wd, event->len > 0 ? event->name : "", event->mask & IN_IGNORED);
      offset += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
    }
  }
  return true;
}

void tChangeEvents::release() {
  for (tOwnDescriptor* descriptor : {&inotify_, &bell_, &rope_, &mounts_}) descriptor->release();
}

}  // namespace halden
