#include "corpxiTools/fileSystem/fileStatus.h"

#include <sys/stat.h>

#include <cerrno>

namespace varmex::inline nCORPXITOOLS000 {

std::int32_t queryFileStatus(const char* path) {
  struct stat answer {};
  if (stat(path, &answer) == 0) return 0;
  switch (errno) {
    case ENOENT: return kFileNotFound;
    case EACCES: return kFileAccessDenied;
    case EINVAL: return kFilePathInvalid;
    default: return kFileStatusFault;
  }
}

}  // namespace varmex::inline nCORPXITOOLS000
