#include "tools/varmex/commands/list.h"

#include <iostream>

#include "tools/varmex/describe/describe.h"
#include "tools/varmex/describe/fields.h"
#include "tools/varmex/describe/installation.h"
#include "tools/varmex/describe/modules.h"
#include "tools/varmex/describe/place.h"
#include "tools/varmex/describe/triggers.h"
#include "tools/varmex/text/columns.h"
#include "tools/varmex/text/failures.h"
#include "tools/varmex/text/output.h"
#include "tools/varmex/text/table.h"

namespace tool {

namespace {

// "bus 1 > bridge 1 > bus 2 > bridge 3 > bus 3"
std::string chainText(const tJson& way) {
  std::string text = "bus " + way["bridges"].front()["sourceBus"].dump();
  for (const tJson& bridge : way["bridges"]) {
    text += " > bridge " + bridge["bridge"].dump() + " > bus " + bridge["destinationBus"].dump();
  }
  return text;
}

std::string endText(const tJson& end, bool isUnread) {
  const std::string place = end["place"];
  if (end.contains("bus")) return place + " on trigger bus " + end["bus"].dump();
  return place + (isUnread ? ": trigger bus can't be read" : " on no trigger bus");
}

void showWays(const tJson& document) {
  const tJson& ways = document["ways"];
  for (std::size_t n = 0; n < ways.size(); ++n) {
    std::cout << '\n';
    if (ways[n]["bridges"].empty()) {
      const bool isSame = document["from"] == document["to"];
      std::cout << (isSame ? "Both are one slot, on trigger bus " : "Both are on trigger bus ")
                << document["from"]["bus"]
                << (isSame ? ": it has its own signals on lines 0 to 7.\n"
                           : ": lines 0 to 7 reach from each to the other.\n");
      continue;
    }
    std::cout << "Way " << n + 1 << ": " << chainText(ways[n]) << '\n';
    for (const tJson& bridge : ways[n]["bridges"]) {
      showLine(("bridge " + bridge["bridge"].dump()).c_str(), lineMapText(bridge["lines"]),
               std::cout);
    }
    showLine("end to end", lineMapText(ways[n]["lines"]), std::cout);
  }
  if (!document["isComplete"]) std::cout << "\nThere are more ways than these.\n";
}

std::string starEndText(const tJson& star, const std::string& end) {
  const std::string line = textOf(star, (end + "Line").c_str());
  const std::string kind = star["family"] == "star" ? "line " : "set ";
  return joined(
      {star[end + "IsController"] ? "the controller" : "", line.empty() ? line : kind + line},
      " and ");
}

void showStars(const tJson& document) {
  for (const tJson& star : document["stars"]) {
    std::cout << '\n'
              << (star["family"] == "star" ? "Star" : "DStar") << " trigger " << star["trigger"]
              << ": " << textOf(document["from"], "place") << " is " << starEndText(star, "from")
              << ", " << textOf(document["to"], "place") << " is " << starEndText(star, "to")
              << (star["isDirect"] ? "; this line joins the two.\n"
                                   : "; the controller can join the two.\n");
  }
}

class tTriggers : public tCommand {
 public:
  tTriggers() : tCommand("triggers", "Tell how a trigger gets from one slot to another") {}

  void addOptions(CLI::App& line) override {
    const std::string place = ": 1/9, or a module's alias, resource name or PCI address";
    line.add_option("source", from_, "Where the trigger comes from" + place)->required();
    line.add_option("destination", to_, "Where it goes to")->required();
    line.add_flag("--all", isAllAsked_, "Also the ways over more bridges than need be");
    line.add_flag("--json", asJson_, "Print JSON");
    installation_.addFrom(line);
  }

  tExitStatus run() override {
    const varmex::Session session = installation_.open();
    const auto [document, unread, isFromUnread, isToUnread] =
        describeTriggers(session, openSlot(session, from_), openSlot(session, to_),
                         isAllAsked_ ? varmex::WaysWanted::all : varmex::WaysWanted::shortest);
    if (asJson_) {
      printJson(document);
    } else {
      std::cout << "From  " << visible(endText(document["from"], isFromUnread)) << "\nTo    "
                << visible(endText(document["to"], isToUnread)) << '\n';
      showWays(document);
      showStars(document);
    }
    tellFaults(unread, "ways or stars");
    const bool isFound = !document["ways"].empty() || !document["stars"].empty();
    if (!isFound) tellFailure(std::runtime_error(document["reason"]));
    return isFound && unread.empty() ? kDone : kFailed;
  }

 private:
  // A place that is no module's is that of an empty slot.
  static varmex::Slot openSlot(const varmex::Session& session, const std::string& text) {
    if (text.find_first_not_of("0123456789/") == std::string::npos) {
      const tPlace place = parsePlace(text);
      if (place.slot) return session.chassis(*place.chassis).slot(*place.slot);
    }
    const varmex::Module module = moduleCalled(session, text);
    return session.chassis(module.chassisNumber).slot(module.slotNumber);
  }

  tInstallation installation_;
  std::string from_;
  std::string to_;
  bool isAllAsked_ = false;
  bool asJson_ = false;
};

}  // namespace

tCommandPtr makeTriggers() { return std::make_unique<tTriggers>(); }

}  // namespace tool
