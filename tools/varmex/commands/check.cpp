#include "tools/varmex/check/check.h"

#include <iostream>

#include "tools/varmex/commands/list.h"
#include "tools/varmex/describe/installation.h"
#include "tools/varmex/machine/thisMachine.h"
#include "tools/varmex/saved/savedFile.h"
#include "tools/varmex/text/failures.h"
#include "tools/varmex/text/output.h"
#include "tools/varmex/text/shownPaths.h"

namespace tool {

namespace {

class tCheck : public tCommand {
 public:
  tCheck() : tCommand("check", "Report what is wrong or doubtful with the description") {}

  void addOptions(CLI::App& line) override {
    line.add_flag("--json", asJson_, "Print JSON");
    line.add_flag("--live", isLive_,
                  "Hold the description against the machine's PCI tree as well (Linux)");
    installation_.addFrom(line);
  }

  // The exit status tells findings from a description that can't be read.
  tExitStatus run() override {
    try {
      installation_.enter();
      const std::optional<tPciTree> machine = isLive_ ? readMachine() : std::nullopt;
      auto findings =
          checkDescription([this] { return installation_.open(); }, machine ? &*machine : nullptr);
      for (tFinding& finding : findings) finding.answer = withShownPaths(finding.answer);
      if (asJson_) {
        printJson(findingsJson(findings));
      } else {
        showFindings(findings, std::cout);
      }
      return findings.empty() ? kDone : kFailed;
    } catch (const std::exception& failure) {
      tellFailure(failure);
      return kBadUsage;
    }
  }

 private:
  std::optional<tPciTree> readMachine() const {
    const tSavedInstallation* const saved = installation_.saved();
    const std::string folder = pathBelowRoot(kPciFolder);
    std::optional<tPciTree> machine = saved ? saved->pci : tPciTree::read(folder);
    if (machine) return machine;
    throw std::runtime_error(saved ? *installation_.from() + " was saved without a PCI tree"
                                   : "there is no PCI tree to look at: no devices in " + folder);
  }

  tInstallation installation_;
  bool asJson_ = false;
  bool isLive_ = false;
};

}  // namespace

tCommandPtr makeCheck() { return std::make_unique<tCheck>(); }

}  // namespace tool
