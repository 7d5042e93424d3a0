#ifndef SOURCE_VARMEX_FILESTAMP_H
#define SOURCE_VARMEX_FILESTAMP_H

#include <string>

#include "halden/tools/FileModificationTime.h"

namespace varmex {

// The stamp of a file as it is now. Lacking rights may be a matter of the moment while a file is
// being replaced: they are asked for again, for a second. Failures are exceptions: -52026 then,
// -52008 as when the folder is missing.
halden::tFileTimeStamp stampWithRetry(const std::string& path);

}  // namespace varmex

#endif
