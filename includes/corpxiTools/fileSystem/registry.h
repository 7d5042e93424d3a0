#ifndef CORPXITOOLS_FILESYSTEM_REGISTRY_H
#define CORPXITOOLS_FILESYSTEM_REGISTRY_H

#include "corpxiTools/fileSystem/registryKey.h"
#include "varmex/status.h"

namespace varmex::inline nCORPXITOOLS000 {

// The key of the PXI standard. A failure is reported to `status`, and the key is then not open.
tRegistryKey openPxiSaKey(tStatusRecord& status);

}  // namespace varmex::inline nCORPXITOOLS000

#endif
