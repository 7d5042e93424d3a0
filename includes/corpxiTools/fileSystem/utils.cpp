#include "corpxiTools/fileSystem/utils.h"

#include <sys/stat.h>

#include <cerrno>

#include "corpxiTools/fileSystem/folders.h"
#include "ostrel/quarks/failure.h"

namespace varmex::inline nCORPXITOOLS000 {

namespace {

constexpr tErrorCode kFolderNotFound{-50202, "(-202 + -50000)"};

std::int32_t codeOfFileError(int error) {
  switch (error) {
    case EACCES: return -50207;
    case EINVAL: return -52005;
    default: return -50202;
  }
}

}  // namespace

std::string getPxiSysPath() { return getWindowsFolder() + "pxisys.ini"; }

std::string getPxieSysPath() { return getWindowsFolder() + "pxiesys.ini"; }

std::string getPxiSaFolder(tStatusRecord& status) {
  if (isFailure(status)) return {};
  if (auto folder = findPxiSaFolder()) return *folder;
  tFailure(kFolderNotFound, OSTREL_HERE).reportTo(status);
  return {};
}

std::string getConfigurationPath(tStatusRecord& status) {
  return getPxiSaFolder(status) + "configuration.ini";
}

bool fileExists(const std::string& path, std::int32_t& status) {
  struct stat answer {};
  if (stat(path.c_str(), &answer) == 0) return status >= 0;
  if (errno == ENOENT) return false;
  const std::int32_t code = codeOfFileError(errno);
  if (replacesStatus(status, code)) status = code;
  return false;
}

}  // namespace varmex::inline nCORPXITOOLS000
