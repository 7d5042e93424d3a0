#include "corpxiTools/iniLineReader.h"

#include <emmintrin.h>

#include <algorithm>
#include <bit>
#include <cstring>

namespace varmex::inline nCORPXITOOLS000 {

namespace {

constexpr std::ptrdiff_t kFirstRead = 255;

bool isLineEnd(char byte) { return byte == '\n' || byte == '\r' || byte == '\0'; }

// Bytes equal to `byte`, each marked by all its bits.
__m128i equalBytes(__m128i bytes, char byte) { return _mm_cmpeq_epi8(bytes, _mm_set1_epi8(byte)); }

// The first byte from `position` on that ends the line or, where asked for, is '='; sixteen bytes
// at once, as every 64-bit x86 can. The padding behind the text ends the search.
template <bool FindEquals>
char* findNext(char* position) {
  while (true) {
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(position));
    __m128i marks = _mm_or_si128(equalBytes(bytes, '\n'), equalBytes(bytes, '\r'));
    marks = _mm_or_si128(marks, equalBytes(bytes, '\0'));
    if constexpr (FindEquals) marks = _mm_or_si128(marks, equalBytes(bytes, '='));
    const auto found = static_cast<unsigned>(_mm_movemask_epi8(marks));
    if (found != 0) return position + std::countr_zero(found);
    position += sizeof bytes;
  }
}

}  // namespace

char* tIniLineReader::dropForeignLineEnd(char* position) const {
  return position < end_ && isLineEnd(*position) && *position != remembered_ ? position + 1
                                                                             : position;
}

bool tIniLineReader::next(tIniLine& line) {
  position_ = dropForeignLineEnd(position_);
  if (position_ == end_) return false;
  line.begin = position_;
  char* found = findNext<true>(position_);
  line.equals = nullptr;
  if (*found == '=') {
    line.equals = found;
    found = findNext<false>(found + 1);
  }
  if (found - position_ >= kFirstRead) return nextLong(line);
  finish(line, position_, found);
  return true;
}

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

void tIniLineReader::finish(tIniLine& line, char* begin, char* end) {
  line.begin = begin;
  line.end = end;
  position_ = end;
  if (end < end_) {
    remembered_ = *end;
    ++position_;
  }
  ++lineNumber_;
}

}  // namespace varmex::inline nCORPXITOOLS000
