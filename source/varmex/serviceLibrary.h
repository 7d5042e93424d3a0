#ifndef SOURCE_VARMEX_SERVICELIBRARY_H
#define SOURCE_VARMEX_SERVICELIBRARY_H

#include <cstdint>

namespace varmex {

// What only the PXI service library can do. It is a closed library of its own, which is loaded,
// used and freed once for each call; without it the rest of the system works on. Both operations
// keep no state and may run on any thread; calls in parallel reach that library in parallel. Its
// functions must not throw: it is gone by the time that an exception of its own would be caught.

// Brings the system description up to date. Throws LibraryNotAvailableException, and
// corerr::Exception when the library lacks the function or reports a failure; nothing else of its
// own, whatever memory does.
void initializeServiceLibrary();

enum : std::int32_t {
  kModeZero = 0,
  kModeOther = 1,
  kServiceLibraryMissing = 2,
  kModeFunctionMissing = 3
};

// The mode in which a chassis of that vendor and model works with that trigger manager, as one of
// the values above. Throws corerr::Exception when the library can't open or close a session or
// reports a failure.
std::int32_t getChassisTriggerManagerMode(const char* vendor, const char* model,
                                          const char* triggerManager);

}  // namespace varmex

#endif
