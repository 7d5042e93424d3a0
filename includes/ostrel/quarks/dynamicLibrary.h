#ifndef OSTREL_QUARKS_DYNAMICLIBRARY_H
#define OSTREL_QUARKS_DYNAMICLIBRARY_H

namespace varmex::inline nOSTRELS100 {

using tFunctionAddress = void (*)();

// Loads a dynamic library by its bare name, without prefix, path and extension, from where the
// system looks for such. Null when it can't; otherwise to be freed. Throws nothing.
void* loadDynamicLibrary(const char* name);

// The address of an exported function, null when there is none.
tFunctionAddress findFunction(void* module, const char* name);

void freeDynamicLibrary(void* module);

}  // namespace varmex::inline nOSTRELS100

#endif
