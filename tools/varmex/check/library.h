#ifndef TOOLS_VARMEX_CHECK_LIBRARY_H
#define TOOLS_VARMEX_CHECK_LIBRARY_H

#include "tools/varmex/check/rules.h"
#include "varmex/varmex.hpp"

namespace tool {

// Items of a slot that a description need not have.
inline constexpr const char* kOptionalItems[] = {"PeripheralSlotLinkWidth1",
                                                 "PeripheralSlotLinkWidth2",
                                                 "SystemSlotLinkOrigin1",
                                                 "SystemSlotLinkOrigin2",
                                                 "PCISlotPath",
                                                 "PCISlotPathRootBus",
                                                 "LocalBusLeft",
                                                 "LocalBusRight",
                                                 "Vendor",
                                                 "Model",
                                                 "InstanceName",
                                                 "AddressInfo",
                                                 "PeripheralModuleOccupiedSlotList",
                                                 "PeripheralModuleLinkWidthMax",
                                                 "PeripheralModuleLinkWidthNegotiated"};

// Asks the library for everything about the chassis of the plan. Where it refuses something that
// no finding explains, though a file could be the cause, there is one more finding: nothing that
// the rules do not know passes in silence.
void checkAnswers(tRules& rules, const tPlan& plan, const varmex::Session& session);

// The same for a session that does not open.
void checkFailure(tRules& rules, const varmex::Error& failure);

}  // namespace tool

#endif
