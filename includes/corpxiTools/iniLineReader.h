#ifndef CORPXITOOLS_INILINEREADER_H
#define CORPXITOOLS_INILINEREADER_H

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
  static constexpr std::size_t kPadding = 16;

  tIniLineReader(char* begin, char* end) : position_(begin), end_(end) {}

  // False when no line is left.
  bool next(tIniLine& line);

  // Of the line that `next` gave last, from 1.
  std::uint32_t lineNumber() const { return lineNumber_; }

 private:
  char* dropForeignLineEnd(char* position) const;
  bool nextLong(tIniLine& line);
  void finish(tIniLine& line, char* begin, char* end);

  char* position_;
  char* end_;
  char remembered_ = '\0';
  std::uint32_t lineNumber_ = 0;
};

}  // namespace varmex::inline nCORPXITOOLS000

#endif
