#ifndef TOOLS_VARMEX_TREE_H
#define TOOLS_VARMEX_TREE_H

#include <nlohmann/json.hpp>

#include "varmex/varmex.hpp"

namespace tool {

using tJson = nlohmann::ordered_json;

// An item with every attribute that applies to it, by the attribute's name without its prefix, and
// with all that is below it: "Chassis" of a session, "Slots" and "TriggerBridges" of a chassis,
// "Devices" of a slot.
tJson describe(const varmex::ItemBase& item);

// Its own attributes alone.
tJson describeAttributes(const varmex::ItemBase& item);

}  // namespace tool

#endif
