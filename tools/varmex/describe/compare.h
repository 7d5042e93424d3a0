#ifndef TOOLS_VARMEX_DESCRIBE_COMPARE_H
#define TOOLS_VARMEX_DESCRIBE_COMPARE_H

#include <string>
#include <vector>

#include "tools/varmex/describe/json.h"

namespace tool {

// What came, went or changed between two descriptions of a session: one line each, for chassis and
// for the modules in their slots.
std::vector<std::string> compareSessions(const tJson& before, const tJson& after);

}  // namespace tool

#endif
