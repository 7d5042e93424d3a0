#include <iomanip>
#include <iostream>
#include <sstream>

#include "tools/varmex/commands/list.h"
#include "tools/varmex/describe/terminals.h"
#include "tools/varmex/text/columns.h"
#include "tools/varmex/text/output.h"
#include "tools/varmex/text/table.h"

namespace tool {

namespace {

class tTerminals : public tCommand {
 public:
  tTerminals() : tCommand("terminals", "List the trigger lines that a module can use, by name") {}

  void addOptions(CLI::App& line) override {
    line.add_option("address", address_,
                    "PCI address of the module: 33.15.0 in decimal or 21:0f.0 as lspci writes it")
        ->required();
    line.add_flag("--json", asJson_, "Print JSON");
    installation_.addFrom(line);
  }

  tExitStatus run() override {
    const tTerminalList list = listTerminals(installation_, parseAddress(address_));
    if (asJson_) {
      tJson document = list.terminals;
      if (!list.failures.empty()) document.push_back({{"failures", list.failures}});
      printJson(document);
    } else {
      show(list.terminals);
    }
    tellFaults(list.unread, "terminals");
    return list.unread.empty() ? kDone : kFailed;
  }

 private:
  static void show(const tJson& terminals) {
    for (const tJson& terminal : terminals) {
      std::ostringstream head;
      head << std::left << std::setw(14) << terminal.value("name", "") << std::setw(4)
           << terminal.value("busLine", 0U);
      showParagraph(head.str(), visible(terminal.value("busName", "")), std::cout);
    }
  }

  tInstallation installation_;
  std::string address_;
  bool asJson_ = false;
};

}  // namespace

tCommandPtr makeTerminals() { return std::make_unique<tTerminals>(); }

}  // namespace tool
