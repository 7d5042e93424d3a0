#ifndef CORPXITOOLS_FILESYSTEM_FILEBYTES_H
#define CORPXITOOLS_FILESYSTEM_FILEBYTES_H

#include <memory>

#include "corpxiTools/fileSystem/inputFile.h"
#include "ostrel/quarks/contentDigest.h"

namespace varmex::inline nCORPXITOOLS000 {

// The content of a file, and behind it as many NUL bytes as were asked for.
struct tFileBytes {
  std::unique_ptr<char[]> bytes;
  std::size_t size = 0;
};

// Reads a file that was opened just now, to its end, wherever that is by then. Takes no more memory
// than twice the file's size and the padding; a file that does not tell its size may have 16 MB.
// False, with `errno` set, when it can't be read. Throws std::bad_alloc. A new digester, if one is
// given, gets the content share by share, while the processor has it at hand.
bool readWholeFile(tInputFile& file, std::size_t padding, tFileBytes& content,
                   tContentDigester* digester = nullptr);

}  // namespace varmex::inline nCORPXITOOLS000

#endif
