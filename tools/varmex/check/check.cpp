#include "tools/varmex/check/check.h"

#include "corpxiTools/fileSystem/utils.h"
#include "tools/varmex/check/excerpt.h"
#include "tools/varmex/check/library.h"
#include "tools/varmex/check/live.h"
#include "tools/varmex/text/columns.h"
#include "tools/varmex/text/failures.h"
#include "tools/varmex/text/table.h"
#include "tools/varmex/text/terminal.h"

namespace tool {

namespace {

constexpr const char* kMargin = "    ";

void checkFiles(tRules& rules, tPlan& plan) {
  rules.classic.checkLines(rules.findings);
  rules.express.checkLines(rules.findings);
  plan = checkLists(rules);
  checkDevices(rules, plan);
  for (auto& [number, chassis] : plan.chassis) {
    if (rules.findings.isFull()) return;
    checkChassis(rules, chassis);
    checkSlots(rules, chassis);
    checkTriggers(rules, chassis);
    checkBridges(rules, chassis);
  }
  checkRegistry(rules, plan);
  if (plan.isWhole) checkUnused(rules);
}

// "[Chassis1Slot5] PCIBusNumber"
std::string placeInFile(const tPosition& position) {
  if (position.section.empty()) return position.item;
  return '[' + position.section + ']' + (position.item.empty() ? "" : ' ' + position.item);
}

// The description's own texts may hold anything.
void showFinding(const tFinding& finding, std::ostream& out) {
  const tPosition& position = finding.position;
  const std::string severity = severityName(finding.severity);
  const std::string place = textOf(position) + ": ";
  const std::string id = ": " + finding.id;
  const std::string item = visible(placeInFile(position));
  const std::size_t columns = columnsOf(place + severity + id + ": " + item);
  out << place << coloured(severity, tColour::bad) << id;
  if (!item.empty())
    out << (columns > outputColumns().value_or(columns) ? ":\n    " : ": ") << item;
  out << '\n' << showExcerpt(position.line, finding.source);
  showParagraph(kMargin, visible(finding.message), out);
  showParagraph(kMargin, visible("varmex answers: " + finding.answer), out);
}

}  // namespace

std::vector<tFinding> checkDescription(const std::function<varmex::Session()>& open,
                                       const tPciTree* machine) {
  const tCheckedFile classic("pxisys.ini", varmex::getPxiSysPath());
  const tCheckedFile express("pxiesys.ini", varmex::getPxieSysPath());
  if (!classic.exists() && !express.exists()) {
    throw tNoDescription();
  }
  tFindings collected;
  tRules rules(classic, express, collected);
  tPlan plan;
  checkFiles(rules, plan);
  try {
    const varmex::Session session = open();
    // Of a file that is not read as it stands the answers are those of an empty one.
    if (!classic.isMisread() && !express.isMisread()) checkAnswers(rules, plan, session);
    if (machine != nullptr) checkLive(rules, plan, session, *machine);
  } catch (const varmex::Error& failure) {
    checkFailure(rules, failure);
  }
  std::vector<tFinding> findings = collected.sorted();
  for (tFinding& finding : findings) {
    for (const tCheckedFile* file : {&classic, &express}) {
      if (finding.position.file == file->name()) {
        finding.source = file->lineText(finding.position.line);
      }
    }
  }
  return findings;
}

tJson findingsJson(const std::vector<tFinding>& findings) {
  tJson list = tJson::array();
  for (const tFinding& finding : findings) {
    list.push_back({{"id", finding.id},
                    {"severity", severityName(finding.severity)},
                    {"file", finding.position.file},
                    {"line", finding.position.line},
                    {"section", finding.position.section},
                    {"item", finding.position.item},
                    {"message", finding.message},
                    {"answer", finding.answer}});
  }
  return list;
}

void showFindings(const std::vector<tFinding>& findings, std::ostream& out) {
  for (const tFinding& finding : findings) showFinding(finding, out);
  if (findings.size() >= tFindings::kMost) {
    out << "There may be more: the check ends after " << tFindings::kMost << " findings.\n";
  } else if (findings.empty()) {
    out << "No findings.\n";
  } else {
    out << findings.size() << (findings.size() == 1 ? " finding.\n" : " findings.\n");
  }
}

}  // namespace tool
