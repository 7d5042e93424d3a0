#include "corpxiTools/fileSystem/posix/fileSystemRoot.h"

#include <cstdlib>

namespace varmex::inline nCORPXITOOLS000 {

std::string fileSystemRoot() {
  const char* const root = secure_getenv("VARMEX_FSROOT");
  return root ? root : "";
}

}  // namespace varmex::inline nCORPXITOOLS000
