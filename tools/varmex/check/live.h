#ifndef TOOLS_VARMEX_CHECK_LIVE_H
#define TOOLS_VARMEX_CHECK_LIVE_H

#include "tools/varmex/check/rules.h"
#include "tools/varmex/machine/pciTree.h"
#include "varmex/varmex.hpp"

namespace tool {

// Holds what the description says against the PCI tree of the machine: modules that are not there,
// devices behind the bridges of a chassis that it does not list, missing drivers, links below what
// both ends can.
void checkLive(tRules& rules, const tPlan& plan, const varmex::Session& session,
               const tPciTree& tree);

}  // namespace tool

#endif
