#include "corpxiTools/fileSystem/inputFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace varmex::inline nCORPXITOOLS000 {

namespace {

// What opening a socket gives.
constexpr int kNotRegular = ENXIO;

int openUninterrupted(const char* path) {
  int descriptor = -1;
  do {
    descriptor = open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
  } while (descriptor < 0 && errno == EINTR);
  return descriptor;
}

void closeKeepingError(int descriptor) {
  const int error = errno;
  close(descriptor);
  errno = error;
}

bool isRegular(const struct stat& status) {
  if (S_ISREG(status.st_mode)) return true;
  errno = kNotRegular;
  return false;
}

// The look ahead of the open is for devices that do something as soon as they are opened, and for
// the writer that waits at a pipe; the look behind it, whose answer the caller gets, for what took
// the file's place in between.
int openRegularFile(const char* path, tLooked looked, struct stat& status) {
  if (looked == tLooked::no && (stat(path, &status) != 0 || !isRegular(status))) return -1;
  const int descriptor = openUninterrupted(path);
  if (descriptor < 0) return -1;
  if (fstat(descriptor, &status) == 0 && isRegular(status)) return descriptor;
  closeKeepingError(descriptor);
  return -1;
}

std::uint64_t sizeOf(const struct stat& status) {
  return status.st_size > 0 ? static_cast<std::uint64_t>(status.st_size) : 0;
}

}  // namespace

tInputFile::tInputFile(const char* path, tLooked looked) {
  struct stat status {};
  descriptor_ = openRegularFile(path, looked, status);
  if (isOpen()) sizeAtOpen_ = sizeOf(status);
}

tInputFile::~tInputFile() {
  if (isOpen()) closeKeepingError(descriptor_);
}

std::uint64_t tInputFile::size() const {
  struct stat status {};
  return fstat(descriptor_, &status) == 0 ? sizeOf(status) : 0;
}

std::int64_t tInputFile::read(char* buffer, std::size_t size) {
  std::size_t total = 0;
  while (total < size) {
    const ssize_t count = ::read(descriptor_, buffer + total, size - total);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return -1;
    if (count == 0) break;
    total += static_cast<std::size_t>(count);
    position_ += static_cast<std::uint64_t>(count);
    // No more than the file was said to have, though more was asked for: its end.
    if (position_ == sizeAtOpen_) break;
  }
  return static_cast<std::int64_t>(total);
}

}  // namespace varmex::inline nCORPXITOOLS000
