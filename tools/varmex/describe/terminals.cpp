#include "tools/varmex/describe/terminals.h"

#include "tools/varmex/describe/reason.h"
#include "tools/varmex/text/failures.h"

namespace tool {

namespace {

using varmex::RoutingSession;

struct tGroup {
  const char* prefix;  // of its terminals' names
  RoutingSession::Lines lines;
};

constexpr tGroup kGroups[] = {{"PXI_Trig", RoutingSession::triggerBus},
                              {"PXI_Star", RoutingSession::star},
                              {"PXIe_DStar", RoutingSession::dstar}};

tJson describeTerminal(const varmex::Terminal& terminal) {
  return {{"name", terminal.name},
          {"busType", terminal.busType},
          {"busName", terminal.busName},
          {"canonicalName", terminal.canonicalName},
          {"visibility", terminal.visibility},
          {"busLine", terminal.busLine},
          {"isExternal", terminal.isExternal},
          {"isOwned", terminal.isOwned},
          {"isAlias", terminal.isAlias},
          {"isMaskedOut", terminal.isMaskedOut}};
}

}  // namespace

tTerminalList listTerminals(const tInstallation& installation, const tPciAddress& address) {
  tTerminalList list;
  for (const tGroup& group : kGroups) {
    try {
      const RoutingSession session = installation.openLines(address, group.lines);
      for (const varmex::Terminal& terminal : session.terminals()) {
        list.terminals.push_back(describeTerminal(terminal));
      }
    } catch (const varmex::Error& error) {
      if (!varmex::meansNothing(error.code())) throw;
      if (isAbsence(error, group.prefix)) continue;  // the slot has no lines of this group
      const tReason reason = reasonOf(error);
      list.failures[group.prefix] = jsonOf(reason);
      addFault(list.unread, "", std::string("terminals ") + group.prefix,
               failureText(reason.constant, reason.code, reason.sentence));
    }
  }
  return list;
}

varmex::RoutingSession::Lines linesOfTerminal(const std::string& terminal) {
  for (const tGroup& group : kGroups) {
    if (terminal.starts_with(group.prefix)) return group.lines;
  }
  throw CLI::ValidationError("terminal", "no such terminal: " + terminal +
                                             "; there are PXI_Trig0 to 7, PXI_Star and "
                                             "PXIe_DStarA, B and C");
}

}  // namespace tool
