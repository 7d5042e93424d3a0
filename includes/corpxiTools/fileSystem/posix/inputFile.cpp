#include "corpxiTools/fileSystem/inputFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace varmex::inline nCORPXITOOLS000 {

tInputFile::tInputFile(const char* path) : descriptor_(open(path, O_RDONLY | O_CLOEXEC)) {}

tInputFile::~tInputFile() {
  if (isOpen()) close(descriptor_);
}

std::uint64_t tInputFile::size() const {
  struct stat status {};
  const bool known = fstat(descriptor_, &status) == 0 && status.st_size > 0;
  return known ? static_cast<std::uint64_t>(status.st_size) : 0;
}

std::int64_t tInputFile::read(char* buffer, std::size_t size) {
  std::size_t total = 0;
  while (total < size) {
    const ssize_t count = ::read(descriptor_, buffer + total, size - total);
    if (count < 0) return -1;
    if (count == 0) break;
    total += static_cast<std::size_t>(count);
  }
  return static_cast<std::int64_t>(total);
}

}  // namespace varmex::inline nCORPXITOOLS000
