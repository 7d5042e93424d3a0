#include "tools/varmex/describe/terminals.h"

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

tJson listTerminals(const tInstallation& installation, const tPciAddress& address) {
  tJson terminals = tJson::array();
  for (const tGroup& group : kGroups) {
    try {
      const RoutingSession session = installation.openLines(address, group.lines);
      for (const varmex::Terminal& terminal : session.terminals()) {
        terminals.push_back(describeTerminal(terminal));
      }
    } catch (const varmex::Error& error) {
      if (!varmex::meansNothing(error.code())) throw;  // else the slot has no lines of this group
    }
  }
  return terminals;
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
