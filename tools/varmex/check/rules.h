#ifndef TOOLS_VARMEX_CHECK_RULES_H
#define TOOLS_VARMEX_CHECK_RULES_H

#include <map>
#include <set>

#include "tools/varmex/check/checkedFile.h"

namespace tool {

// What the rules know and collect. A rule finds what it finds in the files alone: what is wrong in
// one place keeps it from nothing that it can find in another.
class tRules {
 public:
  tRules(const tCheckedFile& classicFile, const tCheckedFile& expressFile, tFindings& collected)
      : classic(classicFile), express(expressFile), findings(collected) {}

  // The file that answers for a section that may stand in both.
  const tCheckedFile* firstWith(const std::string& section) const;

  void doubt(const char* id, const tPosition& position, const std::string& message,
             const std::string& answer) {
    findings.add(tSeverity::doubtful, id, position, message, answer);
  }

  // What a reading of an item says that gave no value. The library refuses the question because of
  // it; without a question it never reads the item as things stand.
  template <class Value>
  void refuse(const tReading<Value>& reading, const tPosition& position,
              const std::optional<tQuestion>& question) {
    if (question) {
      findings.addRefused(reading.id, position, reading.message, *question, reading.refusal);
    } else if (std::string_view(reading.id) != "missing-item") {
      doubt(reading.id, position, reading.message, "nothing: the library does not read it here");
    }
  }

  // The value of an item as the library reads it; nothing, and a finding, where it can't.
  // `otherwise` is the position of what needs the item, should even its section be missing.
  std::optional<std::int32_t> takeNumber(const tCheckedFile& file, const std::string& section,
                                         const std::string& item,
                                         const std::optional<tQuestion>& question);
  std::optional<std::uint32_t> takeUnsigned(const tCheckedFile& file, const std::string& section,
                                            const std::string& item,
                                            const std::optional<tQuestion>& question);
  // Each number once and in order; doubts numbers that stand there twice.
  std::optional<tNumbers> takeList(const tCheckedFile& file, const std::string& section,
                                   const std::string& item,
                                   const std::optional<tQuestion>& question,
                                   const std::optional<tPosition>& otherwise = std::nullopt);

  // Whether a list that can't be read may lead to the section.
  bool mayUse(const std::string& section) const;

  // Both files have the item and do not agree.
  bool disagree(const std::string& section, const std::string& item) const;
  void doubtDisagreement(const std::string& section, const std::string& item);
  std::string disagreement(const std::string& section, const std::string& item) const;

  const tCheckedFile& classic;
  const tCheckedFile& express;
  tFindings& findings;
  std::set<std::string> used;       // sections that something refers to
  std::set<std::string> mayBeUsed;  // beginnings of the names that a list has which can't be read
};

// A chassis that a list or a section names.
struct tChassisPlan {
  std::uint32_t number = 0;
  std::string section;
  bool isInClassicList = false;
  bool isInExpressList = false;
  std::map<std::uint32_t, tPosition> slots;  // named by a list or a section, with where
  tNumbers classicSlots;                     // of each file's list, in its order
  tNumbers expressSlots;
  std::set<std::uint32_t> buses;  // that a list names
  bool areBusesKnown = true;      // no list of them is unreadable

  std::string slotSection(std::uint32_t slot) const {
    return section + "Slot" + std::to_string(slot);
  }
  std::string slotName(std::uint32_t slot) const {
    return "slot " + std::to_string(number) + '/' + std::to_string(slot);
  }
  bool has(std::uint32_t slot) const { return slots.contains(slot); }
};

// The chassis of an installation, and those of each file's list in its order.
struct tPlan {
  std::map<std::uint32_t, tChassisPlan> chassis;
  tNumbers classicOrder;
  tNumbers expressOrder;
  bool isWhole = true;  // all lists of chassis could be read
};

// The rules, a group a file. The first makes the plan that the others go by.
tPlan checkLists(tRules& rules);
void checkDevices(tRules& rules, const tPlan& plan);
void checkChassis(tRules& rules, const tChassisPlan& chassis);
void checkSlots(tRules& rules, const tChassisPlan& chassis);
void checkTriggers(tRules& rules, tChassisPlan& chassis);
void checkBridges(tRules& rules, const tChassisPlan& chassis);
void checkRegistry(tRules& rules, const tPlan& plan);
void checkUnused(tRules& rules);

// The PCI addresses in a text of resource names, as far as they can be read.
struct tResourceNames {
  struct tAddress {
    std::int32_t bus;
    std::int32_t device;
    std::int32_t function;
  };
  std::vector<tAddress> addresses;
  std::vector<std::string> unreadable;
};
tResourceNames readResourceNames(const std::string& text);

}  // namespace tool

#endif
