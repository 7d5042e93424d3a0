#ifndef TOOLS_VARMEX_TEXT_WINDOWS_UNICODE_H
#define TOOLS_VARMEX_TEXT_WINDOWS_UNICODE_H

#include <string>
#include <string_view>

namespace tool {

// Between UTF-8 and the system's UTF-16; what is neither becomes U+FFFD.
std::wstring wideOf(std::string_view text);
std::string narrowOf(std::wstring_view text);

}  // namespace tool

#endif
