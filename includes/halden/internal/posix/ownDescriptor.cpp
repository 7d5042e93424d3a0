#include "halden/internal/posix/ownDescriptor.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

namespace halden {

namespace {

// All inotify instances are one inode to fstat. What tells ours is the signal that an open file
// would send if it were asked to, which is never asked for here.
int mark() { return SIGRTMAX; }

}  // namespace

bool tOwnDescriptor::adopt(int number) {
  if (number < 0) return false;
  struct stat file {};
  if (fstat(number, &file) != 0 || fcntl(number, F_SETSIG, mark()) != 0) {
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
         file.st_ino == inode_ && fcntl(number_, F_GETSIG) == mark();
}

void tOwnDescriptor::release() {
  if (isOurs()) close(number_);
  number_ = -1;
}

}  // namespace halden
