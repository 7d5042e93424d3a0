#include "halden/internal/posix/ownDescriptor.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>

namespace halden {

namespace {

// All inotify instances are one inode to fstat. What tells ours, and one of ours from the next
// under its number, is the signal that an open file would send if it were asked to, which is never
// asked for here.
int nextMark() {
  static std::atomic<unsigned> count{0};
  const auto marks = static_cast<unsigned>(SIGRTMAX - SIGRTMIN + 1);
  return SIGRTMAX - static_cast<int>(count++ % marks);
}

}  // namespace

bool tOwnDescriptor::adopt(int number) {
  if (number < 0) return false;
  struct stat file {};
  mark_ = nextMark();
  if (fstat(number, &file) != 0 || fcntl(number, F_SETSIG, mark_) != 0) {
    const int reason = errno;
    close(number);
    errno = reason;
    return false;
  }
  number_ = number;
  device_ = file.st_dev;
  inode_ = file.st_ino;
  return true;
}

bool tOwnDescriptor::isOurs() const {
  struct stat file {};
  return number_ >= 0 && fstat(number_, &file) == 0 && file.st_dev == device_ &&
         file.st_ino == inode_ && fcntl(number_, F_GETSIG) == mark_;
}

void tOwnDescriptor::release() {
  if (isOurs()) close(number_);
  number_ = -1;
}

}  // namespace halden
