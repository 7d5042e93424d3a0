#include "ostrel/quarks/dynamicLibrary.h"

#include <dlfcn.h>
#include <link.h>

#include <cstdio>

namespace varmex::inline nOSTRELS100 {

void* loadDynamicLibrary(const char* name) {
  char file[64];
  const int length = std::snprintf(file, sizeof file, "lib%s.so", name);
  if (length < 0 || length >= static_cast<int>(sizeof file)) return nullptr;
  return dlopen(file, RTLD_NOW | RTLD_LOCAL);
}

// The system's search goes on in the libraries that the module needs.
tFunctionAddress findFunction(void* module, const char* name) {
  void* const address = dlsym(module, name);
  const link_map* searched = nullptr;
  void* owner = nullptr;
  Dl_info unread;
  const bool isOwn = address && dlinfo(module, RTLD_DI_LINKMAP, &searched) == 0 &&
                     dladdr1(address, &unread, &owner, RTLD_DL_LINKMAP) != 0 && owner == searched;
  return isOwn ? reinterpret_cast<tFunctionAddress>(address) : nullptr;
}

void freeDynamicLibrary(void* module) { dlclose(module); }

}  // namespace varmex::inline nOSTRELS100
