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

bool fileExists(const std::string& path, std::int32_t& status, tLooked* looked) {
  const auto [code, isRegular] = queryFileStatus(path.c_str());
  if (looked) *looked = isRegular ? tLooked::yes : tLooked::no;
  if (code == 0) return status >= 0;
  if (code == kFileNotFound) return false;
  if (replacesStatus(status, code)) status = code;
  return false;
}

}  // namespace varmex::inline nCORPXITOOLS000
