#ifndef CORPXITOOLS_FILESYSTEM_POSIX_FILESYSTEMROOT_H
#define CORPXITOOLS_FILESYSTEM_POSIX_FILESYSTEMROOT_H

#include <string>

namespace varmex::inline nCORPXITOOLS000 {

// What stands ahead of every path: the environment variable VARMEX_FSROOT as it is now, empty when
// it is unset or when the process runs with another user's rights.
std::string fileSystemRoot();

}  // namespace varmex::inline nCORPXITOOLS000

#endif
