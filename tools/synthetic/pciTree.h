#ifndef TOOLS_SYNTHETIC_PCITREE_H
#define TOOLS_SYNTHETIC_PCITREE_H

#include <string>
#include <vector>

#include "tools/synthetic/installation.h"

namespace synthetic {

// What a machine has that its description does not say, each of one module where a check can find
// it; those that have links come first, and no two faults share a module.
inline constexpr const char* kPciFaults[] = {"missing", "unlisted", "driverless", "narrow", "slow"};

// Writes the PCI tree of a machine that has these functions, as the system shows one below
// /sys/bus/pci/devices: a root port and a switch for each chassis, with a port for each slot that
// holds a module. Throws std::invalid_argument for a fault that is none of the above or finds no
// such module, and where the buses don't last; std::runtime_error when a file can't be written.
void writePciTree(const std::vector<tFunction>& functions, const std::vector<std::string>& faults,
                  const std::string& folder);

}  // namespace synthetic

#endif
