#include "ostrel/quarks/dynamicLibrary.h"

#include <dlfcn.h>

#include <cstdio>

namespace varmex::inline nOSTRELS100 {

void* loadDynamicLibrary(const char* name) {
  char file[64];
  const int length = std::snprintf(file, sizeof file, "lib%s.so", name);
  if (length < 0 || length >= static_cast<int>(sizeof file)) return nullptr;
  return dlopen(file, RTLD_NOW | RTLD_LOCAL);
}

tFunctionAddress findFunction(void* module, const char* name) {
  return reinterpret_cast<tFunctionAddress>(dlsym(module, name));
}

void freeDynamicLibrary(void* module) { dlclose(module); }

}  // namespace varmex::inline nOSTRELS100
