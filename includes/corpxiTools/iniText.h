#ifndef CORPXITOOLS_INITEXT_H
#define CORPXITOOLS_INITEXT_H

#include <cstddef>
#include <string_view>

#include "corpxiTools/fileSystem/fileBytes.h"

namespace varmex::inline nCORPXITOOLS000 {

// Results of reading and of a load. Not negative: loaded.
enum tIniResult : int {
  kIniLoaded = 0,
  kIniUnsupportedEncoding = -3,
  kIniOutOfMemory = -12,
  kIniNotOpened = -22,
  kIniReadFailed = -5002,
};

// A text with the padding behind it that the line reader needs.
tFileBytes copyPadded(std::string_view text);

// The bytes of a description file as they stand on the disk.
class tIniText {
 public:
  // Replaces the content by that of the file; on failure nothing is left. For a file that holds
  // what is `expected` no memory is kept: the bytes are then the expected ones themselves, which
  // have to outlive the content.
  int read(const char* path, std::string_view expected = {});

  std::string_view bytes() const { return bytes_; }

  // Keeps bytes that are as expected in memory of its own, so that they may outlive those.
  void makeOwn();

  // The text's own memory, padded, for a reader that cuts it up; the text is empty afterwards. Not
  // for one that was as expected.
  tFileBytes takePadded();

 private:
  int readFrom(tInputFile& file, std::string_view expected);
  int readOwn(tInputFile& file, std::string_view known, std::string_view further);
  void clear();

  tFileBytes own_;
  std::string_view bytes_;
};

}  // namespace varmex::inline nCORPXITOOLS000

#endif
