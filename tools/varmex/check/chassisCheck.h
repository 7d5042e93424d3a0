#ifndef TOOLS_VARMEX_CHECK_CHASSISCHECK_H
#define TOOLS_VARMEX_CHECK_CHASSISCHECK_H

#include <map>
#include <set>

#include "tools/varmex/check/answers.h"
#include "tools/varmex/check/checkedFile.h"

namespace tool {

using tSections = std::set<std::string>;

// Who has claimed a PCI bus and device number.
struct tClaim {
  std::string place;  // "pxisys.ini, slot 1/3"
};
using tModules = std::map<std::pair<std::int64_t, std::int64_t>, tClaim>;

// What the check of every chassis has in common.
struct tCheckContext {
  const tCheckedFile& classic;
  const tCheckedFile& express;
  const tAnswers& answers;
  tFindings& findings;
  tSections& used;  // sections that something refers to
  tModules& modules;
};

// The numbers of a list, each once and in order. Adds a finding where the library finds no list,
// and where a number stands twice.
tNumbers takeList(const tCheckedFile& file, const std::string& section, const std::string& item,
                  tFindings& findings, const tAnswers& answers);

// One chassis with all that belongs to it.
class tChassisCheck {
 public:
  tChassisCheck(std::uint32_t number, const tCheckContext& context)
      : c_(context), number_(number), section_("Chassis" + std::to_string(number)) {}

  void run();

 private:
  // Slots that a bus, a star line or a module claims, with who did it first.
  using tOwners = std::map<std::int64_t, std::string>;

  void checkItself();
  void takeSlots(const tCheckedFile& file);
  void checkSlot(std::uint32_t slot);
  void checkExpressModule(std::uint32_t slot);
  void checkOccupiedSlots(std::uint32_t slot);
  void checkResourceNames(std::uint32_t slot, const std::string& names);
  void checkFunctions(std::uint32_t slot);
  void checkFunction(std::uint32_t slot, const std::string& section, const tPosition& namedBy);
  void claimAddress(std::uint32_t slot, std::int64_t bus, std::int64_t device,
                    std::int64_t function, const tPosition& position);
  void checkTriggerBuses(const tCheckedFile& file);
  void checkStarTriggers();
  void checkDStarTriggers();
  void checkStarLines(const tCheckedFile& file, const std::string& section,
                      const std::vector<std::string>& items, const char* family, tOwners& owners);
  void checkBridges();
  void checkBridge(std::uint32_t bridge);
  void checkBridgeBus(std::uint32_t bridge, const std::string& section, const char* item);
  void checkLineMap(std::uint32_t bridge, const std::string& mapping);

  void compare(const std::string& section, const std::string& item,
               const std::function<std::string()>& answer);
  void missingItem(const tCheckedFile& file, const std::string& section, const std::string& item,
                   const std::function<std::string()>& answer);
  bool isSlot(std::int64_t number) const { return slots_.contains(number); }
  std::string slotSection(std::uint32_t slot) const {
    return section_ + "Slot" + std::to_string(slot);
  }
  std::string slotName(std::int64_t slot) const {
    return "slot " + std::to_string(number_) + '/' + std::to_string(slot);
  }
  // The file that answers for a section that may stand in both.
  const tCheckedFile* firstWith(const std::string& section) const;
  std::function<std::string()> opensChassis() const {
    return [this] { return c_.answers.chassis(number_); };
  }
  std::function<std::string()> opensSession() const {
    return [this] { return c_.answers.session(); };
  }

  tCheckContext c_;
  std::uint32_t number_;
  std::string section_;
  std::map<std::int64_t, tPosition> slots_;  // with the list that names them
  std::set<std::int64_t> buses_;
};

}  // namespace tool

#endif
