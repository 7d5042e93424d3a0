#include "tools/varmex/check/check.h"

#include <stdexcept>

#include "corpxiTools/fileSystem/utils.h"
#include "tools/varmex/check/chassisCheck.h"

namespace tool {

namespace {

class tDescriptionCheck {
 public:
  explicit tDescriptionCheck(const tInstallation& installation) : answers_(installation) {}

  void run() {
    if (!classic_.exists() && !express_.exists()) {
      throw std::runtime_error("there is neither pxisys.ini nor pxiesys.ini");
    }
    classic_.checkLines(findings_);
    express_.checkLines(findings_);
    tSections used = {"System", "PXI System"};
    std::set<std::uint32_t> numbers;
    takeChassisList(classic_, classic_.hasSection("System") ? "System" : "PXI System", numbers);
    if (express_.hasSection("System")) takeChassisList(express_, "System", numbers);
    tModules modules;
    for (const std::uint32_t number : numbers) {
      if (findings_.isFull()) break;
      tChassisCheck(number, {classic_, express_, answers_, findings_, used, modules}).run();
    }
    if (areChassisKnown_) {
      checkUnused(classic_, used);
      checkUnused(express_, used);
    }
    if (!answers_.opensSession() && findings_.size() == 0) {
      findings_.add(tSeverity::wrong, "session-fails", {}, "the session does not open",
                    [this] { return answers_.session(); });
    }
  }

  std::vector<tFinding> findings() const { return findings_.sorted(); }

 private:
  void takeChassisList(const tCheckedFile& file, const char* section,
                       std::set<std::uint32_t>& numbers) {
    if (!file.exists() || !file.hasSection(section)) return;
    areChassisKnown_ = areChassisKnown_ && file.list(section, "ChassisList");
    const auto list = takeList(file, section, "ChassisList", findings_, answers_);
    numbers.insert(list.begin(), list.end());
    for (const std::uint32_t number : std::set<std::uint32_t>(list.begin(), list.end())) {
      const std::string chassis = "Chassis" + std::to_string(number);
      if (file.hasSection(chassis)) continue;
      findings_.add(tSeverity::wrong, "missing-section", file.at(section, "ChassisList"),
                    "names chassis " + std::to_string(number) + ", which has no section [" +
                        chassis + "] in this file",
                    [&] { return answers_.chassis(number); });
    }
  }

  void checkUnused(const tCheckedFile& file, const tSections& used) {
    for (const std::string& section : file.sections()) {
      if (used.contains(section)) continue;
      findings_.add(tSeverity::doubtful, "unreferenced-section", file.at(section),
                    "nothing refers to the section", [] { return "as without the section"; });
    }
  }

  tCheckedFile classic_{"pxisys.ini", varmex::getPxiSysPath()};
  tCheckedFile express_{"pxiesys.ini", varmex::getPxieSysPath()};
  tAnswers answers_;
  tFindings findings_;
  bool areChassisKnown_ = true;
};

}  // namespace

tJson checkDescription(const tInstallation& installation) {
  tDescriptionCheck check(installation);
  check.run();
  tJson list = tJson::array();
  for (const tFinding& finding : check.findings()) {
    list.push_back({{"id", finding.id},
                    {"severity", finding.severity == tSeverity::wrong ? "wrong" : "doubtful"},
                    {"file", finding.position.file},
                    {"line", finding.position.line},
                    {"section", finding.position.section},
                    {"item", finding.position.item},
                    {"message", finding.message},
                    {"answer", finding.answer}});
  }
  return list;
}

void showFindings(const tJson& findings, std::ostream& out) {
  for (const tJson& finding : findings) {
    out << finding.value("file", "") << ':' << finding.value("line", 0U) << ": "
        << finding.value("severity", "") << ": " << finding.value("id", "");
    if (!finding["section"].empty()) out << ": [" << finding.value("section", "") << ']';
    if (finding.value("item", "") != "") out << ' ' << finding.value("item", "");
    out << "\n    " << finding.value("message", "")
        << "\n    varmex answers: " << finding.value("answer", "") << '\n';
  }
  if (findings.size() >= tFindings::kMost) {
    out << "There may be more: the check ends after " << tFindings::kMost << " findings.\n";
  } else if (findings.empty()) {
    out << "No findings.\n";
  } else {
    out << findings.size() << (findings.size() == 1 ? " finding.\n" : " findings.\n");
  }
}

}  // namespace tool
