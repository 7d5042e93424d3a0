#include "corpxiTools/fileSystem/folders.h"

#include <windows.h>
// Behind windows.h, on which both rely.
#include <shlobj.h>
#include <shlwapi.h>

namespace varmex::inline nCORPXITOOLS000 {

namespace {

bool isSeparator(char byte) { return byte == '\\' || byte == '/'; }

bool isLetter(char byte) { return (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z'); }

// The length of the drive ("C:") or of the server ("\\name") that a path starts with.
std::size_t rootNameLength(const std::string& path) {
  if (path.size() >= 2 && isLetter(path[0]) && path[1] == ':') return 2;
  const bool isNetwork =
      path.size() >= 3 && isSeparator(path[0]) && isSeparator(path[1]) && !isSeparator(path[2]);
  if (!isNetwork) return 0;
  const std::size_t end = path.find_first_of("\\/", 2);
  return end == std::string::npos ? path.size() : end;
}

}  // namespace

std::string getWindowsFolder() {
  char folder[MAX_PATH] = {};
  if (GetWindowsDirectoryA(folder, sizeof folder) == 0) return "c:\\";
  return std::string(folder) + '\\';
}

std::optional<std::string> findPxiSaFolder() {
  char folder[MAX_PATH] = {};
  const HRESULT result = SHGetFolderPathA(nullptr, CSIDL_COMMON_APPDATA, nullptr, 0, folder);
  if (FAILED(result) || result == S_FALSE) return std::nullopt;
  if (!PathAppendA(folder, "PXISA\\")) return std::nullopt;
  return folder;
}

bool isFullPath(const std::string& path) {
  const std::size_t name = rootNameLength(path);
  return name > 0 && name < path.size() && isSeparator(path[name]);
}

std::string appendPath(const std::string& folder, const std::string& file) {
  const bool needsSeparator = !folder.empty() && !file.empty() && !isSeparator(folder.back()) &&
                              folder.back() != ':' && !isSeparator(file.front());
  return folder + (needsSeparator ? "\\" : "") + file;
}

}  // namespace varmex::inline nCORPXITOOLS000
