#ifndef TOOLS_VARMEX_MACHINE_THISMACHINE_H
#define TOOLS_VARMEX_MACHINE_THISMACHINE_H

#include <string>

namespace tool {

// What is told of the machine that this runs on. A pair: one source for each platform.

std::string hostName();
const char* platformName();

// Where a file lies that the description names by a full path.
std::string pathBelowRoot(const std::string& path);

}  // namespace tool

#endif
