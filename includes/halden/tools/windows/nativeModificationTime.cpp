#include "halden/tools/nativeModificationTime.h"

#include <windows.h>

#include "halden/tools/widePath.h"

namespace halden {

tTimeAnswer queryLastWriteTime(const char* path, std::uint64_t& time, tStatusRecord& status) {
  std::u16string wide;
  if (!widenPath(path, wide, status)) return tTimeAnswer::failed;
  WIN32_FILE_ATTRIBUTE_DATA answer{};
  if (GetFileAttributesExW(reinterpret_cast<const wchar_t*>(wide.c_str()), GetFileExInfoStandard,
                           &answer)) {
    time = std::uint64_t{answer.ftLastWriteTime.dwHighDateTime} << 32 |
           answer.ftLastWriteTime.dwLowDateTime;
    return tTimeAnswer::found;
  }
  switch (GetLastError()) {
    case ERROR_FILE_NOT_FOUND: return tTimeAnswer::notFound;
    case ERROR_ACCESS_DENIED: return tTimeAnswer::denied;
    default: return tTimeAnswer::failed;
  }
}

}  // namespace halden
