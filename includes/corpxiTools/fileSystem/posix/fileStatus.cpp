#include "corpxiTools/fileSystem/fileStatus.h"

#include <sys/stat.h>

#include <cerrno>

namespace varmex::inline nCORPXITOOLS000 {

namespace {

std::int32_t codeOf(int error) {
  switch (error) {
    case ENOENT: return kFileNotFound;
    case EACCES: return kFileAccessDenied;
    case EINVAL: return kFilePathInvalid;
    default: return kFileStatusFault;
  }
}

}  // namespace

tFileStatus queryFileStatus(const char* path) {
  struct stat answer {};
  if (stat(path, &answer) != 0) return {codeOf(errno), false};
  return {0, S_ISREG(answer.st_mode)};
}

}  // namespace varmex::inline nCORPXITOOLS000
