#include "corpxiTools/fileSystem/registry.h"

#include "ostrel/quarks/failure.h"

namespace varmex::inline nCORPXITOOLS000 {

namespace {

constexpr tErrorCode kOsFault{-52008, "kOSTRELStatusOSFault"};

}  // namespace

tRegistryKey openPxiSaKey(tStatusRecord& status) {
  tRegistryKey key;
  if (isFailure(status)) return key;
  const std::uint32_t error = key.open(tRegistryRoot::localMachine,
                                       "SOFTWARE\\PXISA\\CurrentVersion", tRegistryView::process);
  if (error != 0) {
    tFailure(kOsFault, OSTREL_HERE).systemError(describeSystemError(error)).reportTo(status);
  }
  return key;
}

}  // namespace varmex::inline nCORPXITOOLS000
