#include "tools/varmex/text/windows/unicode.h"

#include <windows.h>

namespace tool {

std::wstring wideOf(std::string_view text) {
  const int size = static_cast<int>(text.size());
  std::wstring wide(text.size(), L'\0');
  wide.resize(static_cast<std::size_t>(
      MultiByteToWideChar(CP_UTF8, 0, text.data(), size, wide.data(), size)));
  return wide;
}

std::string narrowOf(std::wstring_view text) {
  const int size = static_cast<int>(text.size());
  std::string narrow(3 * text.size(), '\0');  // no unit takes more
  narrow.resize(static_cast<std::size_t>(WideCharToMultiByte(
      CP_UTF8, 0, text.data(), size, narrow.data(), 3 * size, nullptr, nullptr)));
  return narrow;
}

}  // namespace tool
