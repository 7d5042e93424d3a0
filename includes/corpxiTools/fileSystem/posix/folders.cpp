#include "corpxiTools/fileSystem/folders.h"

#include "corpxiTools/fileSystem/posix/fileSystemRoot.h"

namespace varmex::inline nCORPXITOOLS000 {

std::string getWindowsFolder() { return fileSystemRoot() + "/etc/pxi/"; }

std::optional<std::string> findPxiSaFolder() { return fileSystemRoot() + "/var/lib/PXISA/"; }

bool isFullPath(const std::string& path) { return path.starts_with('/'); }

std::string appendPath(const std::string& folder, const std::string& file) {
  const bool needsSeparator =
      !folder.empty() && !file.empty() && !folder.ends_with('/') && !file.starts_with('/');
  return folder + (needsSeparator ? "/" : "") + file;
}

}  // namespace varmex::inline nCORPXITOOLS000
