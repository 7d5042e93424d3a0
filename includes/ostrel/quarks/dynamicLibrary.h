#ifndef OSTREL_QUARKS_DYNAMICLIBRARY_H
#define OSTREL_QUARKS_DYNAMICLIBRARY_H

namespace varmex::inline nOSTRELS100 {

using tFunctionAddress = void (*)();

// Loads a dynamic library by its bare name, without prefix, path and extension, from where the
// system looks for such. Null when it can't; otherwise to be freed. Throws nothing.
void* loadDynamicLibrary(const char* name);

// The address of a function that the library itself exports, null when there is none. Those of the
// libraries that it needs do not count.
tFunctionAddress findFunction(void* module, const char* name);

void freeDynamicLibrary(void* module);

}  // namespace varmex::inline nOSTRELS100

#endif
