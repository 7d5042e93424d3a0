#ifndef CORPXITOOLS_FILESYSTEM_REGISTRY_H
#define CORPXITOOLS_FILESYSTEM_REGISTRY_H

#include <stdexcept>

#include "corpxiTools/fileSystem/registryKey.h"
#include "varmex/status.h"

namespace varmex::inline nCORPXITOOLS000 {

// A direct read of the registry failed. The model catches it where it reads.
class RegistryException : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

// The key of the PXI standard. A failure is reported to `status`, and the key is then not open.
tRegistryKey openPxiSaKey(tStatusRecord& status);

}  // namespace varmex::inline nCORPXITOOLS000

#endif
