#include "corpxiTools/fileSystem/utils.h"

#include "corpxiTools/fileSystem/fileStatus.h"
#include "corpxiTools/fileSystem/folders.h"
#include "ostrel/quarks/failure.h"

namespace varmex::inline nCORPXITOOLS000 {

namespace {

constexpr tErrorCode kFolderNotFound{-50202, "(-202 + -50000)"};

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

tFileLook fileExists(const std::string& path, std::int32_t& status) {
  const auto [code, isRegular] = queryFileStatus(path.c_str());
  const bool isUnknown = code != 0 && code != kFileNotFound;
  if (isUnknown && replacesStatus(status, code)) status = code;
  return {code == 0 && status >= 0, isRegular ? tLooked::yes : tLooked::no};
}

}  // namespace varmex::inline nCORPXITOOLS000
