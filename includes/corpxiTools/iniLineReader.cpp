#include "corpxiTools/iniLineReader.h"

#include <algorithm>
#include <cstring>

namespace varmex::inline nCORPXITOOLS000 {

bool tIniLineReader::nextLong(tIniLine& line) {
  char* begin = position_;
  char* read = begin + kFirstRead;
  for (std::ptrdiff_t share = kFirstRead + 1;; share *= 2) {
    char* const start = dropForeignLineEnd(read);
    if (start != read) {
      std::memmove(begin + 1, begin, static_cast<std::size_t>(read - begin));
      ++begin;
    }
    if (start == end_) return false;
    char* const limit = start + std::min(share, end_ - start);
    read = std::find_if(start, limit, isLineEnd);
    if (read - start < share) break;
  }
  finish(line, begin, read);
  const auto length = static_cast<std::size_t>(line.end - line.begin);
  line.equals = static_cast<char*>(std::memchr(line.begin, '=', length));
  return true;
}

}  // namespace varmex::inline nCORPXITOOLS000
