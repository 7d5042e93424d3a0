#include "corpxiTools/fileSystem/inputFile.h"

#include <fcntl.h>
#include <io.h>

#include <algorithm>

namespace varmex::inline nCORPXITOOLS000 {

tInputFile::tInputFile(const char* path, tLooked)
    : descriptor_(_open(path, _O_RDONLY | _O_BINARY | _O_NOINHERIT)) {
  if (isOpen()) sizeAtOpen_ = size();
}

tInputFile::~tInputFile() {
  if (isOpen()) _close(descriptor_);
}

std::uint64_t tInputFile::size() const {
  const std::int64_t size = _filelengthi64(descriptor_);
  return size > 0 ? static_cast<std::uint64_t>(size) : 0;
}

std::int64_t tInputFile::read(char* buffer, std::size_t size) {
  constexpr std::size_t kMost = std::size_t{1} << 30;  // of one call
  std::size_t total = 0;
  while (total < size) {
    const auto share = static_cast<unsigned>(std::min(size - total, kMost));
    const int count = _read(descriptor_, buffer + total, share);
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
