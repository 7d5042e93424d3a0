#include <functional>
#include <iomanip>
#include <iostream>
#include <optional>

#include "tools/varmex/commands/list.h"
#include "tools/varmex/describe/terminals.h"
#include "tools/varmex/text/columns.h"
#include "tools/varmex/text/failures.h"
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

// The steps of a route's life, and the first failure among them.
struct tWalk {
  tJson steps = tJson::array();
  std::optional<varmex::Error> failure;

  // Takes a step and adds what it answered: what `work` returns, or its failure.
  void add(const char* name, const std::function<tJson()>& work) {
    tJson step = {{"step", name}, {"code", 0}};
    try {
      if (const tJson reply = work(); !reply.is_null()) step["reply"] = reply;
    } catch (const varmex::Error& error) {
      step["code"] = error.code();
      step["sentence"] = toldFailure(error).sentence;
      step["status"] = tJson::parse(error.json(), nullptr, false);
      if (!failure) failure = error;
    }
    steps.push_back(std::move(step));
  }
};

void show(const tJson& steps) {
  for (const tJson& step : steps) {
    std::cout << std::left << std::setw(11) << step.value("step", "");
    if (step.value("code", 0) != 0) {
      const tJson& status = step["status"];
      std::cout << visible(failureText(status.is_object() ? status.value("error_constant", "") : "",
                                       step.value("code", 0), step.value("sentence", "")));
    } else {
      std::cout << (step.contains("reply") ? step["reply"].dump() : "done");
    }
    std::cout << '\n';
  }
}

class tRoute : public tCommand {
 public:
  tRoute()
      : tCommand("route", "Reserve a trigger line for a moment, and tell what each step answered") {
  }

  void addOptions(CLI::App& line) override {
    line.add_option("address", address_,
                    "PCI address of the module: 33.15.0 in decimal or 21:0f.0 as lspci writes it")
        ->required();
    line.add_option("terminal", terminal_,
                    "Name of the trigger line, such as PXI_Trig0; varmex terminals lists them")
        ->required();
    line.add_option("--token", token_, "Name to hold the line under")->type_name("NAME");
    line.add_flag("--json", asJson_, "Print JSON");
    installation_.addFrom(line);
  }

  tExitStatus run() override {
    const tWalk walked = walk();
    if (asJson_) {
      printJson(walked.steps);
    } else {
      show(walked.steps);
    }
    if (walked.failure) tellFailure(*walked.failure);
    const bool hasRoute = walked.steps.size() > 1;
    if (!walked.failure && !hasRoute) {
      tellFailure(std::runtime_error("no route to " + terminal_ +
                                     ": the module does not have this terminal, or it is held "
                                     "under another token"));
    }
    return hasRoute && !walked.failure ? kDone : kFailed;
  }

 private:
  // What each step of the route's life answered, in order.
  tWalk walk() const {
    const varmex::RoutingSession session =
        installation_.openLines(parseAddress(address_), linesOfTerminal(terminal_));
    tWalk walked;
    std::vector<varmex::Route> routes;
    walked.add("calculate", [&] {
      routes = session.calculateRoutes({{terminal_, token_}}, {terminal_});
      return describeRoutes(routes);
    });
    if (routes.empty()) return walked;
    const varmex::Route& route = routes.front();
    walked.add("reserve", [&] { return route.reserve(), tJson(); });
    walked.add("program", [&] { return route.program(), tJson(); });
    walked.add("unprogram", [&] { return route.unprogram(), tJson(); });
    walked.add("unreserve", [&] { return route.unreserve(), tJson(); });
    walked.add("destroy", [&] { return routes.clear(), tJson(); });
    return walked;
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
