#include "tools/varmex/text/files.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <stdexcept>

namespace tool {

std::filesystem::path filePath(const std::string& path) { return path; }

bool isThere(const std::string& path) {
  std::error_code ignored;
  return std::filesystem::exists(path, ignored);
}

void makeFolder(const std::string& path) {
  std::error_code error;
  std::filesystem::create_directories(path, error);
  if (error) throw std::runtime_error("can't make the folder " + path + ": " + error.message());
}

bool renameOver(const std::filesystem::path& from, const std::filesystem::path& to) {
  return std::rename(from.c_str(), to.c_str()) == 0;
}

// Whoever finds it unlocked just now takes it away.
tNewFile::tNewFile(const std::filesystem::path& path)
    : handle_(open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666)) {
  if (!isMade()) return;
  const int file = static_cast<int>(handle_);
  struct stat status {};
  const bool isTaken = flock(file, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
  if (!isTaken && fstat(file, &status) == 0 && status.st_nlink > 0) return;
  close(file);
  handle_ = -1;
  errno = EEXIST;
}

tNewFile::~tNewFile() {
  if (isMade()) close(static_cast<int>(handle_));
}

void removeUnlessInUse(const std::filesystem::path& path) {
  const int file = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC);
  if (file < 0) return;
  struct stat status {};
  const bool isOwn =
      fstat(file, &status) == 0 && S_ISREG(status.st_mode) && status.st_uid == geteuid();
  if (isOwn && flock(file, LOCK_EX | LOCK_NB) == 0) unlink(path.c_str());
  close(file);
}

}  // namespace tool
