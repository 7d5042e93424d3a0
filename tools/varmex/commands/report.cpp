#include <algorithm>
#include <iostream>

#include "corpxiTools/fileSystem/utils.h"
#include "tools/varmex/check/check.h"
#include "tools/varmex/check/registryText.h"
#include "tools/varmex/commands/list.h"
#include "tools/varmex/describe/describe.h"
#include "tools/varmex/describe/faults.h"
#include "tools/varmex/describe/installation.h"
#include "tools/varmex/describe/lockNotice.h"
#include "tools/varmex/describe/modules.h"
#include "tools/varmex/page/page.h"
#include "tools/varmex/saved/collect.h"
#include "tools/varmex/text/output.h"
#include "tools/varmex/text/shownPaths.h"

namespace tool {

namespace {

class tReportCommand : public tCommand {
 public:
  tReportCommand() : tCommand("report", "Write the installation as a page for a browser") {}

  void addOptions(CLI::App& line) override {
    line.add_option("-o,--output", output_,
                    "The file, which ends with .html; the standard output for - and without it")
        ->type_name("FILE");
    addPciOption(line, notation_);
    installation_.addFrom(line);
  }

  tExitStatus run() override {
    if (output_ != "-" && !output_.ends_with(".html")) {
      throw CLI::ValidationError("--output",
                                 "pages are HTML, and " + output_ + " does not end with .html");
    }
    installation_.enter();
    tReport report;
    report.saved = take();
    // With a PCI tree, where the description and the machine differ is among the findings.
    const std::optional<tPciTree>& machine = report.saved.pci;
    report.findings =
        checkDescription([this] { return installation_.open(); }, machine ? &*machine : nullptr);
    for (tFinding& finding : report.findings) finding.answer = withShownPaths(finding.answer);
    report.files = filesOf(report.saved);
    describeInto(report);
    markFaults(report.description);
    markFaults(report.modules);
    save(pageOf(report, notation_), output_);
    showFaults(report.description, std::cerr);
    return report.description["failureCount"] == 0 ? kDone : kFailed;
  }

 private:
  tSavedInstallation take() const {
    if (installation_.saved()) return *installation_.saved();
    const tLockNotice notice;
    tSavedInstallation saved = takeInstallation();
    saved.version = VARMEX_VERSION;
    return saved;
  }

  static std::vector<std::string> filesOf(const tSavedInstallation& saved) {
    const std::string paths[] = {varmex::getPxiSysPath(), varmex::getPxieSysPath(),
                                 configurationPath()};
    std::vector<std::string> files;
    for (const tFileContent& file : saved.files) {
      const auto* const place =
          std::find(std::begin(kSavedPaths), std::end(kSavedPaths), file.path);
      files.push_back(withShownPaths(paths[place - std::begin(kSavedPaths)]));
    }
    if (!saved.registry.empty()) {
      const std::string text = registryTextPath();
      files.push_back(text.empty() ? "the registry" : withShownPaths(text));
    }
    for (const tFileContent& file : saved.chassisFiles) files.push_back(file.path);
    return files;
  }

  // A description that can't be opened is a page of findings.
  void describeInto(tReport& report) const {
    report.modules = {{"modules", tJson::array()}};
    try {
      const varmex::Session session = installation_.open();
      report.description = describe(session);
      report.modules = describeModules(session);
      report.lineMaps = lineMapsOf(session, report.description);
    } catch (const varmex::Error& failure) {
      tTreeMaker tree;
      describeUnreadable(failure, tree);
      report.description = tree.takeTree();
    }
  }

  tInstallation installation_;
  std::string output_ = "-";
  tPciNotation notation_ = tPciNotation::decimal;
};

}  // namespace

tCommandPtr makeReport() { return std::make_unique<tReportCommand>(); }

}  // namespace tool
