#include "tools/varmex/routing.h"

#include <functional>
#include <iomanip>

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

RoutingSession openGroup(const std::string& address, const tGroup& group) {
  return RoutingSession(address + ':' + std::to_string(group.lines));
}

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

const tGroup& groupOf(const std::string& terminal) {
  for (const tGroup& group : kGroups) {
    if (terminal.starts_with(group.prefix)) return group;
  }
  throw std::invalid_argument("no such terminal: " + terminal);
}

tJson describeRoutes(const std::vector<varmex::Route>& routes) {
  tJson list = tJson::array();
  for (const varmex::Route& route : routes) {
    list.push_back({{"ticket", route.ticket()}, {"destination", route.destination()}});
  }
  return list;
}

// Takes a step and adds what it answered: what `work` returns, or its failure.
void addStep(tJson& steps, const char* name, const std::function<tJson()>& work) {
  tJson step = {{"step", name}, {"code", 0}};
  try {
    if (const tJson reply = work(); !reply.is_null()) step["reply"] = reply;
  } catch (const varmex::Error& error) {
    step["code"] = error.code();
    step["status"] = tJson::parse(error.json(), nullptr, false);
  }
  steps.push_back(std::move(step));
}

}  // namespace

tJson listTerminals(const std::string& address) {
  tJson terminals = tJson::array();
  for (const tGroup& group : kGroups) {
    try {
      for (const varmex::Terminal& terminal : openGroup(address, group).terminals()) {
        terminals.push_back(describeTerminal(terminal));
      }
    } catch (const varmex::Error& error) {
      if (!varmex::meansNothing(error.code())) throw;  // else the slot has no lines of this group
    }
  }
  return terminals;
}

void showTerminals(const tJson& terminals, std::ostream& out) {
  for (const tJson& terminal : terminals) {
    out << std::left << std::setw(14) << terminal.value("name", "") << std::setw(4)
        << terminal.value("busLine", 0U) << terminal.value("busName", "") << '\n';
  }
}

tJson walkRoute(const std::string& address, const std::string& terminal, const std::string& token) {
  const RoutingSession session = openGroup(address, groupOf(terminal));
  tJson steps = tJson::array();
  std::vector<varmex::Route> routes;
  addStep(steps, "calculate", [&] {
    routes = session.calculateRoutes({{terminal, token}}, {terminal});
    return describeRoutes(routes);
  });
  if (routes.empty()) return steps;
  const varmex::Route& route = routes.front();
  addStep(steps, "reserve", [&] { return route.reserve(), tJson(); });
  addStep(steps, "program", [&] { return route.program(), tJson(); });
  addStep(steps, "unprogram", [&] { return route.unprogram(), tJson(); });
  addStep(steps, "unreserve", [&] { return route.unreserve(), tJson(); });
  addStep(steps, "destroy", [&] { return routes.clear(), tJson(); });
  return steps;
}

void showRoute(const tJson& steps, std::ostream& out) {
  for (const tJson& step : steps) {
    out << std::left << std::setw(11) << step.value("step", "");
    if (step.value("code", 0) != 0) {
      out << "error " << step.value("code", 0) << ' '
          << step["status"].value("error_constant", "unnamed");
    } else {
      out << (step.contains("reply") ? step["reply"].dump() : "done");
    }
    out << '\n';
  }
}

}  // namespace tool
