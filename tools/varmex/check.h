#ifndef TOOLS_VARMEX_CHECK_H
#define TOOLS_VARMEX_CHECK_H

#include <ostream>

#include "tools/varmex/tree.h"

namespace tool {

// Everything that is wrong or doubtful with this machine's description, as objects with "id",
// "severity" ("wrong", "doubtful"), "file", "line", "section", "item", "message" and "answer".
// Throws std::runtime_error when there is no description or it can't be read.
tJson checkDescription();

void showFindings(const tJson& findings, std::ostream& out);

}  // namespace tool

#endif
