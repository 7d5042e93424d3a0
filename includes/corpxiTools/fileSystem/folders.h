#ifndef CORPXITOOLS_FILESYSTEM_FOLDERS_H
#define CORPXITOOLS_FILESYSTEM_FOLDERS_H

#include <optional>
#include <string>

namespace varmex::inline nCORPXITOOLS000 {

// The folder of the two description files, with its trailing separator. Always answers.
std::string getWindowsFolder();

// The PXISA folder below the common application data, with its trailing separator; nothing when the
// system cannot tell where that is.
std::optional<std::string> findPxiSaFolder();

// Whether a path stands for one place wherever the process is: it has a root name, where the
// platform has such, and a root directory.
bool isFullPath(const std::string& path);

// `file` below `folder`, with a separator put between the two where needed.
std::string appendPath(const std::string& folder, const std::string& file);

}  // namespace varmex::inline nCORPXITOOLS000

#endif
