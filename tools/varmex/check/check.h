#ifndef TOOLS_VARMEX_CHECK_CHECK_H
#define TOOLS_VARMEX_CHECK_CHECK_H

#include <ostream>

#include "tools/varmex/describe/installation.h"
#include "tools/varmex/describe/json.h"

namespace tool {

// Everything that is wrong or doubtful with the description of an installation, as objects with
// "id", "severity" ("wrong", "doubtful"), "file", "line", "section", "item", "message" and
// "answer". Throws std::runtime_error when there is no description or it can't be read.
tJson checkDescription(const tInstallation& installation);

void showFindings(const tJson& findings, std::ostream& out);

}  // namespace tool

#endif
