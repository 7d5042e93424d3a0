#ifndef TOOLS_VARMEX_SAVED_COLLECT_H
#define TOOLS_VARMEX_SAVED_COLLECT_H

#include "tools/varmex/saved/savedFile.h"

namespace tool {

// The installation that the process reads, taken under the shared lock on the description; without
// the version, which is the caller's. Throws std::runtime_error when there is no description, when
// it can't be read, or when another program keeps the lock for 10 s.
tSavedInstallation takeInstallation();

}  // namespace tool

#endif
