#include <functional>
#include <iomanip>
#include <iostream>

#include "tools/varmex/commands/list.h"
#include "tools/varmex/describe/terminals.h"
#include "tools/varmex/text/output.h"

namespace tool {

namespace {

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

void show(const tJson& steps) {
  for (const tJson& step : steps) {
    std::cout << std::left << std::setw(11) << step.value("step", "");
    if (step.value("code", 0) != 0) {
      std::cout << "error " << step.value("code", 0) << ' '
                << step["status"].value("error_constant", "unnamed");
    } else {
      std::cout << (step.contains("reply") ? step["reply"].dump() : "done");
    }
    std::cout << '\n';
  }
}

class tRoute : public tCommand {
 public:
  tRoute() : tCommand("route", "Walks one route through its life and shows each answer") {}

  void addOptions(CLI::App& line) override {
    line.add_option("address", address_, "PCI address: BUS.DEVICE.FUNCTION")->required();
    line.add_option("terminal", terminal_, "The terminal, such as PXI_Trig0")->required();
    line.add_option("--token", token_, "The token to hold it under");
    line.add_flag("--json", asJson_, "For a program");
  }

  tExitStatus run() override {
    const tJson steps = walk();
    if (asJson_) {
      printJson(steps);
    } else {
      show(steps);
    }
    return kDone;
  }

 private:
  // What each step of the route's life answered, in order.
  tJson walk() const {
    const varmex::RoutingSession session =
        installation_.openLines(address_, linesOfTerminal(terminal_));
    tJson steps = tJson::array();
    std::vector<varmex::Route> routes;
    addStep(steps, "calculate", [&] {
      routes = session.calculateRoutes({{terminal_, token_}}, {terminal_});
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

  tInstallation installation_;
  std::string address_;
  std::string terminal_;
  std::string token_;
  bool asJson_ = false;
};

}  // namespace

tCommandPtr makeRoute() { return std::make_unique<tRoute>(); }

}  // namespace tool
