#include "tools/varmex/text/files.h"

#include <windows.h>

#include <cerrno>
#include <stdexcept>

#include "tools/varmex/text/windows/unicode.h"

namespace tool {

namespace {

// With the prefix that lifts the limit of 260 characters whatever the system's settings. It takes
// full paths alone.
std::wstring longPath(const std::string& path) {
  const std::wstring given = wideOf(path);
  std::wstring full(GetFullPathNameW(given.c_str(), 0, nullptr, nullptr), L'\0');
  full.resize(
      GetFullPathNameW(given.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr));
  if (full.starts_with(L"\\\\?\\") || full.starts_with(L"\\\\.\\")) return full;
  if (full.starts_with(L"\\\\")) return L"\\\\?\\UNC" + full.substr(1);
  return L"\\\\?\\" + full;
}

bool isFolder(const std::wstring& path) {
  const DWORD attributes = GetFileAttributesW(path.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool makeWith(const std::wstring& path) {
  if (isFolder(path) || CreateDirectoryW(path.c_str(), nullptr)) return true;
  if (GetLastError() != ERROR_PATH_NOT_FOUND) return false;
  const std::size_t end = path.find_last_of(L'\\');
  return end != std::wstring::npos && end > 0 && makeWith(path.substr(0, end)) &&
         CreateDirectoryW(path.c_str(), nullptr);
}

}  // namespace

std::filesystem::path filePath(const std::string& path) { return longPath(path); }

bool isThere(const std::string& path) {
  return GetFileAttributesW(longPath(path).c_str()) != INVALID_FILE_ATTRIBUTES;
}

void makeFolder(const std::string& path) {
  std::wstring folder = longPath(path);
  if (folder.ends_with(L'\\')) folder.pop_back();
  if (!makeWith(folder)) throw std::runtime_error("can't make the folder " + path);
}

bool renameOver(const std::filesystem::path& from, const std::filesystem::path& to) {
  if (MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING)) return true;
  errno = EACCES;  // another program has it open, or it is read-only
  return false;
}

tNewFile::tNewFile(const std::filesystem::path& path)
    : handle_(reinterpret_cast<std::intptr_t>(CreateFileW(
          path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
          nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr))) {
  if (isMade()) return;
  const DWORD error = GetLastError();
  const bool isMissing = error == ERROR_PATH_NOT_FOUND || error == ERROR_FILE_NOT_FOUND;
  errno = error == ERROR_FILE_EXISTS ? EEXIST : isMissing ? ENOENT : EACCES;
}

tNewFile::~tNewFile() {
  if (isMade()) CloseHandle(reinterpret_cast<HANDLE>(handle_));
}

// What anybody has open can't be opened for one alone.
void removeUnlessInUse(const std::filesystem::path& path) {
  const HANDLE file = CreateFileW(path.c_str(), DELETE, 0, nullptr, OPEN_EXISTING,
                                  FILE_FLAG_DELETE_ON_CLOSE, nullptr);
  if (file != INVALID_HANDLE_VALUE) CloseHandle(file);
}

}  // namespace tool
