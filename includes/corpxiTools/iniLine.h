#ifndef CORPXITOOLS_INILINE_H
#define CORPXITOOLS_INILINE_H

#include <cstring>

#include "corpxiTools/iniLineReader.h"
#include "ostrel/quarks/numbers.h"

namespace varmex::inline nCORPXITOOLS000 {

enum class tIniLineKind { unreadable, comment, header, item };

// What a line says. A header has a name, an item a name and a value, neither of them empty; the
// value is trimmed but has its quotes.
struct tIniLineContent {
  tIniLineKind kind;
  char* name = nullptr;
  char* nameEnd = nullptr;
  char* value = nullptr;
  char* valueEnd = nullptr;
};

// Most bytes take one comparison, most white space two.
inline bool isIniSpace(char byte) {
  if (static_cast<unsigned char>(byte) > ' ') return false;
  return byte == ' ' || isWhiteSpace(byte);
}

inline char* skipIniSpace(char* begin, const char* end) {
  while (begin < end && isIniSpace(*begin)) ++begin;
  return begin;
}

// Of a text that begins with something else.
inline char* trimIniEnd(char* end) {
  while (isIniSpace(end[-1])) --end;
  return end;
}

inline tIniLineContent parseIniHeader(char* begin, char* end) {
  begin = skipIniSpace(begin, end);
  void* const bracket = std::memchr(begin, ']', static_cast<std::size_t>(end - begin));
  if (!bracket || bracket == begin) return {tIniLineKind::unreadable};
  return {tIniLineKind::header, begin, trimIniEnd(static_cast<char*>(bracket))};
}

// A blank line is unreadable, and so is an item without a value.
inline tIniLineContent parseIniLine(const tIniLine& line) {
  char* const begin = skipIniSpace(line.begin, line.end);
  if (begin == line.end) return {tIniLineKind::unreadable};
  if (*begin == ';') return {tIniLineKind::comment};
  if (*begin == '[') return parseIniHeader(begin + 1, line.end);
  if (!line.equals || line.equals == begin) return {tIniLineKind::unreadable};
  char* const value = skipIniSpace(line.equals + 1, line.end);
  if (value == line.end) return {tIniLineKind::unreadable};
  return {tIniLineKind::item, begin, trimIniEnd(line.equals), value, trimIniEnd(line.end)};
}

}  // namespace varmex::inline nCORPXITOOLS000

#endif
