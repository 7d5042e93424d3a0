#ifndef CORPXITOOLS_FILESYSTEM_FILESTATUS_H
#define CORPXITOOLS_FILESYSTEM_FILESTATUS_H

#include <cstdint>

namespace varmex::inline nCORPXITOOLS000 {

inline constexpr std::int32_t kFileNotFound = -50204;
inline constexpr std::int32_t kFileAccessDenied = -50207;
inline constexpr std::int32_t kFilePathInvalid = -52005;
inline constexpr std::int32_t kFileStatusFault = -50202;  // any other failure

struct tFileStatus {
  std::int32_t code;  // 0 when the file is there, else one of the codes above
  bool isRegular;     // or of a kind that the platform doesn't tell; only of one that is there
};

// Asks the system about a file.
tFileStatus queryFileStatus(const char* path);

}  // namespace varmex::inline nCORPXITOOLS000

#endif
