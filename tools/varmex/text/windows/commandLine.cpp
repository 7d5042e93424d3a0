#include "tools/varmex/text/commandLine.h"

#include <windows.h>
// Behind windows.h, on which it relies.
#include <shellapi.h>

#include <memory>
#include <new>

#include "tools/varmex/text/windows/unicode.h"

namespace tool {

// Not the words that `main` got, which are in a code page and may lack characters.
std::vector<std::string> commandLine(int, char**) {
  int count = 0;
  const std::unique_ptr<LPWSTR[], decltype(&LocalFree)> words(
      CommandLineToArgvW(GetCommandLineW(), &count), LocalFree);
  if (!words) throw std::bad_alloc();
  std::vector<std::string> line;
  for (int n = 1; n < count; ++n) line.push_back(narrowOf(words[static_cast<std::size_t>(n)]));
  return line;
}

}  // namespace tool
