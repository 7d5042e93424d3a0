#include "ostrel/quarks/dynamicLibrary.h"

#include <windows.h>

namespace varmex::inline nOSTRELS100 {

namespace {

// While it lives, what fails in this thread fails without a message box of the system, which nobody
// might be there to answer.
class tSilentErrors {
 public:
  tSilentErrors() { SetThreadErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX, &before_); }
  tSilentErrors(const tSilentErrors&) = delete;
  tSilentErrors& operator=(const tSilentErrors&) = delete;
  ~tSilentErrors() { SetThreadErrorMode(before_, nullptr); }

 private:
  DWORD before_ = 0;
};

}  // namespace

void* loadDynamicLibrary(const char* name) {
  const tSilentErrors silent;
  return LoadLibraryExA(name, nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
}

tFunctionAddress findFunction(void* module, const char* name) {
  return reinterpret_cast<tFunctionAddress>(GetProcAddress(static_cast<HMODULE>(module), name));
}

void freeDynamicLibrary(void* module) { FreeLibrary(static_cast<HMODULE>(module)); }

}  // namespace varmex::inline nOSTRELS100
