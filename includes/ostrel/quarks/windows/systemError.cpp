#include "ostrel/quarks/systemError.h"

#include <windows.h>

#include <algorithm>
#include <cstring>

namespace varmex::inline nOSTRELS100 {

namespace {

constexpr DWORD kFormatFlags =
    FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_FROM_SYSTEM;
constexpr DWORD kUserDefaultLanguage = 1024;

}  // namespace

tSystemError describeSystemError(std::uint32_t code) {
  tSystemError error{"win32", code, {}};
  char* text = nullptr;
  const DWORD length = FormatMessageA(kFormatFlags, nullptr, code, kUserDefaultLanguage,
                                      reinterpret_cast<char*>(&text), 0, nullptr);
  if (length == 0) return error;
  std::memcpy(error.text, text, std::min<std::size_t>(length, sizeof error.text - 1));
  LocalFree(text);
  return error;
}

tSystemError lastSystemError() { return describeSystemError(GetLastError()); }

}  // namespace varmex::inline nOSTRELS100
