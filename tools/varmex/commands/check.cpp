#include "tools/varmex/check/check.h"

#include <iostream>

#include "tools/varmex/commands/list.h"
#include "tools/varmex/describe/installation.h"
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
    installation_.addFrom(line);
  }

  // The exit status tells findings from a description that can't be read.
  tExitStatus run() override {
    try {
      installation_.enter();
      auto findings = checkDescription([this] { return installation_.open(); });
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
  tInstallation installation_;
  bool asJson_ = false;
};

}  // namespace

tCommandPtr makeCheck() { return std::make_unique<tCheck>(); }

}  // namespace tool
