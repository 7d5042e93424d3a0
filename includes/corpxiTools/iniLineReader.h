#ifndef CORPXITOOLS_INILINEREADER_H
#define CORPXITOOLS_INILINEREADER_H

#include <emmintrin.h>

#include <bit>
#include <cstddef>
#include <cstdint>

namespace varmex::inline nCORPXITOOLS000 {

// A line of a description file without its end.
struct tIniLine {
  char* begin;
  char* end;
  char* equals;  // the first '=' of the line, null when it has none
};

// Cuts a text into lines, in place. A line ends at LF, CR or NUL. The end byte of each line is
// remembered, and a read that starts on a line-end byte other than the remembered one drops it: so
// CR LF counts as one line end and CR CR as two.
//
// A long line takes several reads: the first of 255 bytes, each further one as many as the line's
// buffer grows by when it doubles from 256 bytes. The rule above holds for each read, and a read
// that finds the end of the text ends it all. Both show where a line has exactly 255, 511, 1023 ...
// bytes: such a last line without an end is lost, and such a line whose end differs from the
// remembered one goes on with the next line. Writers of description files have seen this for years.
class tIniLineReader {
 public:
  // Bytes that the text must be followed by, all NUL.
  static constexpr std::size_t kPadding = 32;

  tIniLineReader(char* begin, char* end) : position_(begin), end_(end) {}

  // False when no line is left.
  bool next(tIniLine& line);

  // Of the line that `next` gave last, from 1.
  std::uint32_t lineNumber() const { return lineNumber_; }

 private:
  static constexpr std::ptrdiff_t kFirstRead = 255;
  static constexpr std::ptrdiff_t kBlock = 32;

  static bool isLineEnd(char byte) { return byte == '\n' || byte == '\r' || byte == '\0'; }
  static std::uint32_t markLineEnds(const char* block);  // the first mark alone is certain
  static std::uint32_t markEquals(const char* block);
  static char* firstMarked(char* block, std::uint32_t marks);

  char* dropForeignLineEnd(char* position) const;
  bool nextLong(tIniLine& line);
  void finish(tIniLine& line, char* begin, char* end);

  char* position_;
  char* end_;
  char remembered_ = '\0';
  std::uint32_t lineNumber_ = 0;
};

// Here for the sake of the loop around it, in which a load spends most of its time.
//
// Lines are searched in blocks of 32 bytes, sixteen at once, as every 64-bit x86 can; a bit marks
// each byte that was looked for. The padding behind the text ends the search. The end of a line is
// found without regard to its '=': the next line waits for nothing else.

inline std::uint32_t tIniLineReader::markLineEnds(const char* block) {
  const auto mark = [](const char* position) {
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(position));
    return _mm_movemask_epi8(_mm_cmpeq_epi8(_mm_min_epu8(bytes, _mm_set1_epi8('\r')), bytes));
  };
  auto marks = static_cast<std::uint32_t>(mark(block) | mark(block + kBlock / 2) << 16);
  // Whatever is not above CR is marked; tabs and the like are rare.
  while (marks != 0 && !isLineEnd(block[std::countr_zero(marks)])) marks &= marks - 1;
  return marks;
}

inline std::uint32_t tIniLineReader::markEquals(const char* block) {
  const auto mark = [](const char* position) {
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(position));
    return _mm_movemask_epi8(_mm_cmpeq_epi8(bytes, _mm_set1_epi8('=')));
  };
  return static_cast<std::uint32_t>(mark(block) | mark(block + kBlock / 2) << 16);
}

inline char* tIniLineReader::firstMarked(char* block, std::uint32_t marks) {
  return marks != 0 ? block + std::countr_zero(marks) : nullptr;
}

inline char* tIniLineReader::dropForeignLineEnd(char* position) const {
  return position < end_ && isLineEnd(*position) && *position != remembered_ ? position + 1
                                                                             : position;
}

inline bool tIniLineReader::next(tIniLine& line) {
  position_ = dropForeignLineEnd(position_);
  if (position_ == end_) return false;
  char* block = position_;
  char* equals = nullptr;
  std::uint32_t ends = 0;
  while ((ends = markLineEnds(block)) == 0) {
    if (!equals) equals = firstMarked(block, markEquals(block));
    block += kBlock;
  }
  if (!equals) equals = firstMarked(block, markEquals(block) & (ends - 1));
  char* const end = block + std::countr_zero(ends);
  if (end - position_ >= kFirstRead) [[unlikely]] {
    // With copies, so that the loop's own may stay in registers.
    tIniLineReader reader(*this);
    tIniLine longLine{};
    const bool found = reader.nextLong(longLine);
    *this = reader;
    line = longLine;
    return found;
  }
  line.equals = equals;
  finish(line, position_, end);
  return true;
}

inline void tIniLineReader::finish(tIniLine& line, char* begin, char* end) {
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

#endif
