#ifndef TOOLS_VARMEX_DESCRIBE_TERMINALS_H
#define TOOLS_VARMEX_DESCRIBE_TERMINALS_H

#include <string>

#include "tools/varmex/describe/faults.h"
#include "tools/varmex/describe/installation.h"
#include "tools/varmex/describe/json.h"

namespace tool {

// The terminals of the module at a PCI address, of every group of lines that its slot has, as
// objects of their attributes; and the groups that can't be read, by the names that theirs begin
// with, for programs and for people.
struct tTerminalList {
  tJson terminals = tJson::array();
  tJson failures = tJson::object();
  tFaults unread = {};
};
tTerminalList listTerminals(const tInstallation& installation, const tPciAddress& address);

// The group of lines that a terminal of this name belongs to. Throws CLI::ValidationError for a
// name of no group.
varmex::RoutingSession::Lines linesOfTerminal(const std::string& terminal);

}  // namespace tool

#endif
