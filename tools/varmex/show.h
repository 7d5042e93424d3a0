#ifndef TOOLS_VARMEX_SHOW_H
#define TOOLS_VARMEX_SHOW_H

#include <ostream>
#include <string>

#include "tools/varmex/tree.h"

namespace tool {

// Lays items out for a person, from what `describe` tells of them.
void showSession(const tJson& session, std::ostream& out);
void showChassis(const tJson& chassis, std::ostream& out);
void showSlot(const tJson& slot, std::ostream& out);

}  // namespace tool

#endif
