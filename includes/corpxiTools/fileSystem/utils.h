#ifndef CORPXITOOLS_FILESYSTEM_UTILS_H
#define CORPXITOOLS_FILESYSTEM_UTILS_H

#include <cstdint>
#include <string>

#include "corpxiTools/fileSystem/inputFile.h"
#include "varmex/status.h"

namespace varmex::inline nCORPXITOOLS000 {

// Where the files of the system description are. Each call asks the system afresh.

std::string getPxiSysPath();
std::string getPxieSysPath();

// Empty on failure, which is reported to `status`; asks nothing when that holds an error already.
std::string getPxiSaFolder(tStatusRecord& status);

// On failure the bare file name, and `status` tells why.
std::string getConfigurationPath(tStatusRecord& status);

struct tFileLook {
  bool isThere;
  tLooked looked;  // whether the file may be opened without another look

  explicit operator bool() const { return isThere; }
};

// Not there is also a file that could not be asked about; that sets a plain code: -50207 access
// denied, -52005 invalid path, -50202 anything else.
tFileLook fileExists(const std::string& path, std::int32_t& status);

}  // namespace varmex::inline nCORPXITOOLS000

#endif
