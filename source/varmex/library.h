#ifndef SOURCE_VARMEX_LIBRARY_H
#define SOURCE_VARMEX_LIBRARY_H

#include <stdexcept>

#include "ostrel/quarks/dynamicLibrary.h"
#include "ostrel/quarks/exception.h"
#include "ostrel/quarks/fixedStatus.h"

namespace varmex {

// A runtime error whose message takes no memory: that of its base, which may take some even when it
// is empty, is shared with one from the time of loading.
class tLibraryNotAvailable : public std::runtime_error {
 public:
  tLibraryNotAvailable();
  const char* what() const noexcept override { return "ERROR: Library not available."; }
};

// The service library can't be loaded. Each base has a `what` of its own: the status text and the
// message. Making and copying one throws nothing, so that a host short of memory sees this failure
// and no other.
class LibraryNotAvailableException : public virtual corerr::ExceptionBase,
                                     public tLibraryNotAvailable {
 public:
  explicit LibraryNotAvailableException(const char* path);
};

// One loading of the service library, for the length of one operation.
class tServiceLibrary {
 public:
  tServiceLibrary();
  tServiceLibrary(const tServiceLibrary&) = delete;
  tServiceLibrary& operator=(const tServiceLibrary&) = delete;
  ~tServiceLibrary() { release(); }

  // False where there is none to be loaded, and once it is released.
  bool isLoaded() const { return module_ != nullptr; }

  // Throws LibraryNotAvailableException unless it is loaded.
  void requireLoaded() const;

  // The library's function of that name. Null when there is none or the library was released, which
  // is reported to `status`.
  template <class Function>
  Function* resolve(const char* name, tFixedStatus& status) const {
    return reinterpret_cast<Function*>(findAddress(name, status));
  }

  void release();

 private:
  tFunctionAddress findAddress(const char* name, tFixedStatus& status) const;

  void* module_;
};

}  // namespace varmex

#endif
