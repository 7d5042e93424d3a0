#include "tests/support/testPlace.h"

#include <windows.h>

#include <cstdlib>
#include <string>

namespace test {

namespace fs = std::filesystem;

tTestPlace::tTestPlace(char**) {
  const fs::path own =
      fs::temp_directory_path() / ("varmex-test-place-" + std::to_string(GetCurrentProcessId()));
  fs::remove_all(own);
  fs::create_directories(own);
  _putenv_s(kVariable, own.string().c_str());
}

fs::path tTestPlace::programs() {
  wchar_t program[1024] = {};
  GetModuleFileNameW(nullptr, program, 1024);
  return fs::path(program).parent_path();
}

fs::path tTestPlace::libraries() {
  char folder[MAX_PATH] = {};
  GetSystemDirectoryA(folder, sizeof folder);
  return folder;
}

}  // namespace test
