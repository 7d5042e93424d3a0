#include "corpxiTools/fileSystem/fileBytes.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace varmex::inline nCORPXITOOLS000 {

namespace {

constexpr std::uint64_t kFirstGuess = 4096;
constexpr std::uint64_t kMostUntold = std::uint64_t{16} << 20;

void enlarge(tFileBytes& content, std::size_t capacity) {
  auto larger = std::make_unique_for_overwrite<char[]>(capacity);
  if (content.size > 0) std::memcpy(larger.get(), content.bytes.get(), content.size);
  content.bytes = std::move(larger);
}

}  // namespace

bool readWholeFile(tInputFile& file, std::size_t padding, tFileBytes& content) {
  content.size = 0;
  // One byte more than there is, so that the end is seen without another allocation.
  const std::uint64_t told = file.sizeAtOpen();
  std::uint64_t capacity = (told > 0 ? told : kFirstGuess) + 1;
  while (true) {
    enlarge(content, capacity + padding);
    const std::int64_t count =
        file.read(content.bytes.get() + content.size, capacity - content.size);
    if (count < 0) return false;
    content.size += static_cast<std::size_t>(count);
    if (content.size < capacity) break;
    const std::uint64_t most = std::max(file.size(), kMostUntold) + 1;
    if (capacity >= most) {
      errno = EFBIG;
      return false;
    }
    capacity = std::min(2 * capacity, most);
  }
  std::memset(content.bytes.get() + content.size, 0, padding);
  return true;
}

}  // namespace varmex::inline nCORPXITOOLS000
