#include "ostrel/quarks/dynamicLibrary.h"

#include <windows.h>

namespace varmex::inline nOSTRELS100 {

void* loadDynamicLibrary(const char* name) {
  return LoadLibraryExA(name, nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
}

tFunctionAddress findFunction(void* module, const char* name) {
  return reinterpret_cast<tFunctionAddress>(GetProcAddress(static_cast<HMODULE>(module), name));
}

void freeDynamicLibrary(void* module) { FreeLibrary(static_cast<HMODULE>(module)); }

}  // namespace varmex::inline nOSTRELS100
