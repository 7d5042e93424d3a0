#include "halden/internal/posix/ownDescriptor.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>

namespace halden {

namespace {

// Counts the descriptors, over and over: how many there are at once is far less.
int nextTurn() {
  static std::atomic<unsigned> count{0};
  return static_cast<int>(count++ % static_cast<unsigned>(SIGRTMAX - SIGRTMIN + 1));
}

}  // namespace

bool tOwnDescriptor::adopt(int number) {
  expect(number);
  if (number < 0) return false;
  const int turn = nextTurn();
  // All inotify instances are one inode to fstat. What tells ours, and one of ours from the next
  // under its number, is the signal that an open file would send if it were asked to, which is
  // never asked for here.
  const int mark = SIGRTMAX - turn;
  struct stat file {};
  if (fstat(number, &file) != 0 || fcntl(number, F_SETSIG, mark) != 0) {
    const int reason = errno;
    release();
    errno = reason;
    return false;
  }
  device_ = file.st_dev;
  inode_ = file.st_ino;
  mark_ = mark;
  moveUp(turn);
  return true;
}

// Away from the numbers that the host's next files get, and our own. A poll looks its numbers up
// anew when it is woken: if it is so because the host closed everything, and finds other files
// there by then, it sleeps on, and nothing wakes it any more.
void tOwnDescriptor::moveUp(int turn) {
  for (const int least : {960, 240, 60}) {
    const int moved = fcntl(number_, F_DUPFD_CLOEXEC, least + turn);
    if (moved < 0) continue;
    former_ = number_;
    number_ = moved;
    close(former_);
    former_ = -1;
    return;
  }
}

bool tOwnDescriptor::isOurs() const { return number_ >= 0 && isOurs(number_); }

bool tOwnDescriptor::isOurs(int number) const {
  struct stat file {};
  return fstat(number, &file) == 0 && file.st_dev == device_ && file.st_ino == inode_ &&
         fcntl(number, F_GETSIG) == mark_;
}

// A number without a mark can't be known again: it is what the system has just answered, so that it
// is closed without a look at it.
void tOwnDescriptor::release() {
  for (int* const number : {&former_, &number_}) {
    if (*number >= 0 && (mark_ == 0 || isOurs(*number))) close(*number);
    *number = -1;
  }
}

}  // namespace halden
