#ifndef TOOLS_VARMEX_SAVED_THISMACHINE_H
#define TOOLS_VARMEX_SAVED_THISMACHINE_H

#include <string>

namespace tool {

// What a saved file tells of the machine it is from. A pair: one source for each platform.

std::string hostName();
const char* platformName();

// Where a file lies that the description names by a full path.
std::string pathBelowRoot(const std::string& path);

}  // namespace tool

#endif
