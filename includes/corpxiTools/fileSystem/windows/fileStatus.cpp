#include "corpxiTools/fileSystem/fileStatus.h"

#include <windows.h>

namespace varmex::inline nCORPXITOOLS000 {

namespace {

std::int32_t codeOf(DWORD error) {
  switch (error) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND: return kFileNotFound;
    case ERROR_ACCESS_DENIED: return kFileAccessDenied;
    case ERROR_INVALID_PARAMETER:
    case ERROR_INVALID_NAME: return kFilePathInvalid;
    default: return kFileStatusFault;
  }
}

}  // namespace

// Not by the C library, which takes denied access for a file that is not there.
tFileStatus queryFileStatus(const char* path) {
  WIN32_FILE_ATTRIBUTE_DATA answer{};
  if (!GetFileAttributesExA(path, GetFileExInfoStandard, &answer)) {
    return {codeOf(GetLastError()), false};
  }
  return {0, true};
}

}  // namespace varmex::inline nCORPXITOOLS000
