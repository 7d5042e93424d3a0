// varmex_agreement [COUNT [FIRST]] : whether `varmex check` and the library agree.
//
// Makes COUNT descriptions with faults, by numbers from FIRST on, and compares both ways: whatever
// the library refuses for what the files say has a finding with its place, and whatever a finding
// calls wrong is refused in the very words that it gives, unless another finding's fault comes
// first. A fault that keeps the session from opening must hide none of the others.

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <map>
#include <set>

#include "corpxiTools/iniFile.h"
#include "tests/agreement/mutations.h"
#include "tests/agreement/questions.h"
#include "tests/support/testMachine.h"
#include "tests/support/texts.h"
#include "tools/varmex/check/check.h"
#include "tools/varmex/check/library.h"

namespace agreement {

namespace {

using namespace std::string_literals;
using test::cut;
using tFindings = std::vector<tool::tFinding>;

constexpr const char* kRefusal = "a refusal of the library";

// Each finding that can be wrong; a long run must have met them all, and refusals.
const std::vector<std::string> kWrong = test::split(
    kRefusal +
        "|bad-list|bad-number|bad-slot-path|bridge-not-in-pxisys|duplicate-address|"s
        "empty-trigger-manager|files-disagree|line-map-out-of-range|missing-item|missing-section|"
        "unknown-slot-type|wrong-encoding",
    "|");

// All eight lines of a map that isn't there are one finding.
std::string withoutLine(std::string words) {
  const std::size_t place = words.find("itemName: PXI_TRIG");
  if (place != std::string::npos) words[place + std::string("itemName: PXI_TRIG").size()] = '0';
  return words;
}

class tCase {
 public:
  tCase(test::tTestMachine& machine, std::uint32_t number) : machine_(machine), random_(number) {
    description_ = makeRight(random_);
    const std::uint32_t count = number % 10 == 0 ? 0 : number % 2 == 0 ? 1 : 1 + random_() % 4;
    for (std::uint32_t n = 0; n < count; ++n) changes_.push_back(mutate(description_, random_));
  }

  // Whether check and library agree; tells of what they do not.
  bool run(std::set<std::string>& met) {
    write();
    const tFindings findings = check();
    if (changes_.empty() && !findings.empty())
      complain("a right installation", findings.front().answer);
    for (const tool::tFinding& finding : findings) {
      checkPlace(finding);
      if (finding.severity != tool::tSeverity::wrong) continue;
      words_.emplace(withoutLine(finding.refusal), asText(finding));
      met.insert(finding.id);
    }
    checkSound(findings);
    const auto refusals = askEverything();
    if (!refusals.empty()) met.insert(kRefusal);
    checkComplete(refusals);
    if (refusals.empty() || refusals.front().question != "session") checkWithoutSession(findings);
    return isRight_;
  }

 private:
  void write() const {
    machine_.writePxiSys(description_.text(0));
    machine_.writePxieSys(description_.text(1));
  }

  static tFindings check() {
    return tool::checkDescription([] { return varmex::Session(); });
  }

  void complain(const std::string& what, const std::string& detail) {
    if (isRight_) {
      for (const std::string& change : changes_) std::cout << "  " << change << '\n';
    }
    isRight_ = false;
    std::cout << "  " << what << ": " << detail << '\n';
  }

  void checkPlace(const tool::tFinding& finding) {
    const tool::tPosition& position = finding.position;
    const std::string text = asText(finding);
    if (finding.id == "unexplained-failure" || finding.id == "session-fails") {
      complain("no rule", text);
    }
    const bool isFile = position.file == "pxisys.ini" || position.file == "pxiesys.ini";
    if (!isFile || position.line == 0) complain("no place", text);
    const bool isValue = finding.id == "bad-list" || finding.id == "bad-number" ||
                         finding.id == "files-disagree" || finding.id == "unknown-slot-type";
    const bool isThere = finding.source.find(position.item) != std::string::npos;
    if (isValue && (position.item.empty() || !isThere)) {
      complain("another line", text + " in " + finding.source);
    }
  }

  // Where another fault comes first, that one must have a finding too.
  void checkSound(const tFindings& findings) {
    for (const tool::tFinding& finding : findings) {
      if (finding.severity != tool::tSeverity::wrong) continue;
      const std::string expected = finding.refusal;
      const std::string words = askAgain(finding.question);
      if (expected.empty() || words.empty()) {
        complain("not refused", finding.id + ": " + finding.answer);
      } else if (words != expected && !isExplainedElsewhere(words, asText(finding))) {
        complain("refused otherwise", finding.question + ": " + expected + ", but " + words);
      }
    }
  }

  bool isExplainedElsewhere(const std::string& words, const std::string& finding) const {
    const auto [begin, end] = words_.equal_range(withoutLine(words));
    return std::any_of(begin, end, [&](const auto& found) { return found.second != finding; });
  }

  void checkComplete(const std::vector<tRefusal>& refusals) {
    varmex::tIniFile express;
    try {
      express.read(machine_.pxieSys().string());
    } catch (const varmex::tIniException&) {
      // and then the session does not open
    }
    for (const tRefusal& refusal : refusals) {
      if (isAbsence(refusal.words, express)) continue;
      if (words_.contains(withoutLine(refusal.words))) continue;
      complain("no finding", refusal.question + " fails with " + refusal.words);
    }
  }

  // Nothing in the files is at fault. Link numbers count as absent where they are blank, too.
  static bool isAbsence(const std::string& words, const varmex::tIniFile& express) {
    const auto holds = [&words](const std::string& text) {
      return words.find(text) != std::string::npos;
    };
    if (holds("There is no device occupying this slot")) return true;
    for (const std::string item : {"TriggerManager", "TriggerBusList"}) {
      if (holds("(-380757): itemName: " + item + ", sectionName_: Chassis")) return true;
    }
    if (holds("attribute: 4102")) return true;  // of a relative path, without a registry
    const std::string section =
        "Chassis" + cut(cut(words, "Section Chassis").second, " item: ").first;
    if (!holds(" not found") || section.find("Slot") == std::string::npos) return false;
    for (const std::string item : tool::kOptionalItems) {
      if (!words.ends_with(" item: " + item + " not found")) continue;
      return item.find("Link") == std::string::npos ||
             !express.hasItem(express.findSection(section), item);
    }
    return false;
  }

  // One more chassis in the list, without a section.
  void checkWithoutSession(const tFindings& before) {
    for (std::string& line : description_.files[0]) {
      const std::size_t last = line.find_last_of("0123456789");
      if (line.starts_with("ChassisList = ") && last != std::string::npos) {
        line.insert(last + 1, ",9");
      }
    }
    write();
    if (askAgain("session").empty()) return;
    std::set<std::string> after;
    for (const tool::tFinding& finding : check()) after.insert(asText(finding));
    for (const tool::tFinding& finding : before) {
      const bool isWrong = finding.severity == tool::tSeverity::wrong;
      if (isWrong && !after.contains(asText(finding))) complain("hidden", asText(finding));
    }
  }

  static std::string asText(const tool::tFinding& finding) {
    return tool::textOf(finding.position) + ' ' + finding.id + ' ' + finding.position.item + ": " +
           finding.answer;
  }

  test::tTestMachine& machine_;
  tRandom random_;
  tDescription description_;
  std::vector<std::string> changes_;
  // In which findings say that the library refuses something, to these.
  std::multimap<std::string, std::string> words_;
  bool isRight_ = true;
};

// A list that breaks between the check's own look at it and the session's.
bool placesLateFault(test::tTestMachine& machine) {
  machine.writePxieSys("");
  machine.writePxiSys("[System]\nChassisList = \"\"\n");
  const tFindings findings = tool::checkDescription([&] {
    machine.writePxiSys("[System]\nChassisList = x\n");
    return varmex::Session();
  });
  const tool::tPosition position = findings.empty() ? tool::tPosition() : findings.front().position;
  if (position.line == 2 && position.item == "ChassisList") return true;
  std::cout << "a late fault: at " << tool::textOf(position) << '\n';
  return false;
}

int compare(std::uint32_t count, std::uint32_t first) {
  test::tTestMachine machine;
  std::set<std::string> met;
  std::uint32_t passed = 0;
  for (std::uint32_t number = first; number < first + count; ++number) {
    const bool isRight = tCase(machine, number).run(met);
    if (!isRight) std::cout << "in case " << number << '\n';
    passed += isRight ? 1 : 0;
  }
  constexpr std::uint32_t kLong = 1000;
  std::uint32_t failed = count - passed + (placesLateFault(machine) ? 0 : 1);
  for (const std::string& id : kWrong) {
    if (count < kLong || met.contains(id)) continue;
    std::cout << "never met: " << id << '\n';
    ++failed;
  }
  std::cout << passed << " passed, " << failed << " failed\n";
  return failed == 0 ? 0 : 1;
}

}  // namespace

}  // namespace agreement

int main(int argc, char** argv) {
  const auto number = [&](int n, const char* otherwise) {
    return static_cast<std::uint32_t>(std::atol(argc > n ? argv[n] : otherwise));
  };
  return agreement::compare(number(1, "1000"), number(2, "1"));
}
