#ifndef TOOLS_VARMEX_DESCRIBE_DESCRIBE_H
#define TOOLS_VARMEX_DESCRIBE_DESCRIBE_H

#include "tools/varmex/describe/json.h"
#include "varmex/varmex.hpp"

namespace tool {

// An item with every attribute that applies to it, by the attribute's name without its prefix, and
// with all that is below it: "Chassis" of a session, "Slots" and "TriggerBridges" of a chassis,
// "Devices" of a slot.
tJson describe(const varmex::ItemBase& item);

// Its own attributes alone.
tJson describeAttributes(const varmex::ItemBase& item);

}  // namespace tool

#endif
