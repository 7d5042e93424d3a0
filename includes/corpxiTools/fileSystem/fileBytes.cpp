#include "corpxiTools/fileSystem/fileBytes.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string_view>

namespace varmex::inline nCORPXITOOLS000 {

namespace {

constexpr std::uint64_t kFirstGuess = 4096;
constexpr std::uint64_t kMostUntold = std::uint64_t{16} << 20;
constexpr std::size_t kShare = 64 * tContentDigester::kBlock;  // stays in the processor's cache

void enlarge(tFileBytes& content, std::size_t capacity) {
  auto larger = std::make_unique_for_overwrite<char[]>(capacity);
  if (content.size > 0) std::memcpy(larger.get(), content.bytes.get(), content.size);
  content.bytes = std::move(larger);
}

std::string_view textOf(const tFileBytes& content) { return {content.bytes.get(), content.size}; }

// As the file's own read does.
std::int64_t readShares(tInputFile& file, char* buffer, std::size_t size,
                        tContentDigester& digester) {
  std::size_t total = 0;
  std::int64_t count = 0;
  do {
    const std::size_t share = std::min(kShare, size - total);
    count = file.read(buffer + total, share);
    if (count < 0) return count;
    digester.add({buffer + total, static_cast<std::size_t>(count)});
    total += static_cast<std::size_t>(count);
  } while (count == static_cast<std::int64_t>(kShare) && total < size);
  return static_cast<std::int64_t>(total);
}

}  // namespace

bool readWholeFile(tInputFile& file, std::size_t padding, tFileBytes& content,
                   tContentDigester* digester) {
  content.size = 0;
  // One byte more than there is, so that the end is seen without another allocation.
  const std::uint64_t told = file.sizeAtOpen();
  std::uint64_t capacity = (told > 0 ? told : kFirstGuess) + 1;
  std::size_t digested = 0;
  while (true) {
    enlarge(content, capacity + padding);
    char* const behind = content.bytes.get() + content.size;
    const std::size_t room = capacity - content.size;
    const bool isFirst = content.size == 0;
    const std::int64_t count =
        digester && isFirst ? readShares(file, behind, room, *digester) : file.read(behind, room);
    if (count < 0) return false;
    content.size += static_cast<std::size_t>(count);
    if (isFirst) digested = content.size;
    if (content.size < capacity) break;
    const std::uint64_t most = std::max(file.size(), kMostUntold) + 1;
    if (capacity >= most) {
      errno = EFBIG;
      return false;
    }
    capacity = std::min(2 * capacity, most);
  }
  // What came behind the last share can't be added to the digest.
  if (digester && digested != content.size) (*digester = {}).add(textOf(content));
  std::memset(content.bytes.get() + content.size, 0, padding);
  return true;
}

}  // namespace varmex::inline nCORPXITOOLS000
