#ifndef CORPXITOOLS_FILESYSTEM_POSIX_REGISTRYFILE_H
#define CORPXITOOLS_FILESYSTEM_POSIX_REGISTRYFILE_H

#include <cstdint>
#include <memory>

#include "corpxiTools/fileSystem/posix/registryText.h"

namespace varmex::inline nCORPXITOOLS000 {

// The registry of the moment, in `text`; null when there is none, which a file that nobody may read
// counts as. Otherwise the error that kept it from being read just now. The text of a file is kept
// for all threads until the file changes. Throws std::bad_alloc.
std::uint32_t readRegistry(std::shared_ptr<const tRegistryText>& text);

}  // namespace varmex::inline nCORPXITOOLS000

#endif
