#include "source/varmex/serviceLibrary.h"

#include "ostrel/quarks/throwingStatus.h"
#include "source/varmex/library.h"

namespace varmex {

namespace {

// The closed interface of the service library. Nobody knows what the argument that is always zero
// means, nor how wide it is: a register full of zeros serves for all widths.
using tInitialize = void(std::int32_t, std::uintptr_t, std::int32_t* status);
using tOpenSession = void*(tFixedStatus* status);
using tCloseSession = void(void* session);
using tGetTriggerManagerMode = void(void* session, const char* vendor, const char* model,
                                    const char* triggerManager, std::uint32_t* mode,
                                    tFixedStatus* status);

template <class Function>
Function* require(const tServiceLibrary& library, const char* name) {
  tThrowingStatus<tFixedStatus> status;
  return library.resolve<Function>(name, status);
}

// A session of the service library. Both of its functions are found before it is opened, so that
// what was opened can be closed.
class tServiceSession {
 public:
  explicit tServiceSession(const tServiceLibrary& library) {
    const auto open = require<tOpenSession>(library, "nCORPXIINIT100_openPXISession");
    close_ = require<tCloseSession>(library, "nCORPXIINIT100_closePXISession");
    tThrowingStatus<tFixedStatus> status;
    handle_ = open(status.get());
  }
  tServiceSession(const tServiceSession&) = delete;
  tServiceSession& operator=(const tServiceSession&) = delete;
  ~tServiceSession() { close_(handle_); }

  void* handle() const { return handle_; }

 private:
  tCloseSession* close_;
  void* handle_;
};

}  // namespace

void initializeServiceLibrary() {
  const tServiceLibrary library;
  library.requireLoaded();
  const auto initialize = require<tInitialize>(library, "initPXIEx");
  tThrowingStatus<std::int32_t> status;
  initialize(-1, 0, status.get());
}

std::int32_t getChassisTriggerManagerMode(const char* vendor, const char* model,
                                          const char* triggerManager) {
  const tServiceLibrary library;
  if (!library.isLoaded()) return kServiceLibraryMissing;
  tFixedStatus found;
  const auto getMode =
      library.resolve<tGetTriggerManagerMode>("nCORPXIINIT100_getChassisTriggerManagerMode", found);
  if (found.code < 0) return kModeFunctionMissing;
  const tServiceSession session(library);
  std::uint32_t mode = 0;
  {
    tThrowingStatus<tFixedStatus> status;
    getMode(session.handle(), vendor, model, triggerManager, &mode, status.get());
  }
  return mode != 0 ? kModeOther : kModeZero;
}

}  // namespace varmex
