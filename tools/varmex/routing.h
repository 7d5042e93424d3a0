#ifndef TOOLS_VARMEX_ROUTING_H
#define TOOLS_VARMEX_ROUTING_H

#include <ostream>
#include <string>

#include "tools/varmex/tree.h"

namespace tool {

// The terminals of the module at a PCI address ("BUS.DEVICE.FUNCTION"), of every group of lines
// that its slot has, as objects of their attributes.
tJson listTerminals(const std::string& address);

void showTerminals(const tJson& terminals, std::ostream& out);

// Walks one route to a terminal through its life and tells what each step answered, in order.
tJson walkRoute(const std::string& address, const std::string& terminal, const std::string& token);

void showRoute(const tJson& steps, std::ostream& out);

}  // namespace tool

#endif
