// Trigger buses, star triggers and differential stars. The library walks each family's list for a
// slot until it finds the slot, so what comes later is read for those slots alone that nothing has
// named before.

#include "tools/varmex/check/rules.h"

namespace tool {

namespace {

constexpr int kLastStarLine = 16;

// Slots that have not been found yet, and who has claimed the others.
class tSearch {
 public:
  tSearch(tRules& rules, const tChassisPlan& chassis, const char* attribute, const char* claim)
      : rules_(rules), chassis_(chassis), attribute_(attribute), claim_(claim) {}

  void add(std::uint32_t slot) { remaining_.insert(slot); }
  const std::set<std::uint32_t>& remaining() const { return remaining_; }

  // What fails where the library can't read on.
  std::optional<tQuestion> question() const {
    if (remaining_.empty()) return std::nullopt;
    return aboutSlot(chassis_.number, *remaining_.begin(), attribute_);
  }

  // `owner` at that position names the slot.
  void claim(std::uint32_t slot, const std::string& owner, const tPosition& position) {
    remaining_.erase(slot);
    const auto [first, isNew] = owners_.try_emplace(slot, owner);
    if (!chassis_.has(slot)) {
      rules_.doubt("missing-slot", position,
                   "names slot " + std::to_string(slot) + ", which the chassis does not have",
                   "as without this slot");
    } else if (!isNew) {
      rules_.doubt(claim_, position,
                   chassis_.slotName(slot) + " is on " + first->second + " already",
                   chassis_.slotName(slot) + " is on " + first->second);
    }
  }

  // A slot that is found without being on a line of its own.
  void find(std::uint32_t slot) { remaining_.erase(slot); }

  bool isClaimed(std::uint32_t slot) const { return owners_.contains(slot); }

 private:
  tRules& rules_;
  const tChassisPlan& chassis_;
  const char* attribute_;
  const char* claim_;  // the finding's identifier for a slot that is named twice
  std::set<std::uint32_t> remaining_;
  std::map<std::uint32_t, std::string> owners_;
};

class tTriggerCheck {
 public:
  tTriggerCheck(tRules& rules, tChassisPlan& chassis) : rules_(rules), chassis_(chassis) {}

  void run() {
    checkBuses(rules_.express);
    checkBuses(rules_.classic);
    const bool isExpress = rules_.express.hasSection(chassis_.section);
    checkStars(isExpress ? rules_.express : rules_.classic,
               isExpress ? "SystemTimingSlot" : "ControllerSlot");
    checkDStars(rules_.express);
  }

 private:
  void missSection(const tCheckedFile& file, const char* list, const std::string& what,
                   const std::string& section) {
    rules_.doubt("missing-section", file.at(chassis_.section, list),
                 "names " + what + ", which has no section [" + section + ']',
                 "as without this " + what.substr(0, what.rfind(' ')));
  }

  bool opens(std::uint32_t slot) const {
    return rules_.firstWith(chassis_.slotSection(slot)) != nullptr;
  }

  // A slot's bus is looked for in the file that describes the slot.
  void checkBuses(const tCheckedFile& file) {
    constexpr const char* kList = "TriggerBusList";
    tSearch search(rules_, chassis_, "TriggerBusNumber", "slot-on-two-buses");
    for (const auto& [slot, namedBy] : chassis_.slots) {
      const bool isExpress = rules_.express.hasSection(chassis_.slotSection(slot));
      if (opens(slot) && isExpress == (&file == &rules_.express)) search.add(slot);
    }
    const auto users = search.remaining();
    if (users.empty() && !file.hasItem(chassis_.section, kList)) return;
    std::optional<tPosition> user;
    if (!users.empty()) user = file.at(chassis_.slotSection(*users.begin()));
    const auto buses = rules_.takeList(file, chassis_.section, kList, search.question(), user);
    if (!buses) {
      chassis_.areBusesKnown &= !file.hasItem(chassis_.section, kList);
      return;
    }
    bool isRead = true;
    for (const std::uint32_t bus : *buses) isRead &= checkBus(file, bus, search);
    // Where a bus can't be read, slots that nothing else names may be on it.
    if (!isRead) return;
    for (const std::uint32_t slot : search.remaining()) {
      rules_.doubt("slot-without-bus", file.at(chassis_.slotSection(slot)),
                   chassis_.slotName(slot) + " is on no trigger bus of this file",
                   chassis_.slotName(slot) + " is on no trigger bus");
    }
  }

  // False when it can't be told which slots are on it.
  bool checkBus(const tCheckedFile& file, std::uint32_t bus, tSearch& search) {
    const std::string name = "TriggerBus" + std::to_string(bus);
    const std::string section = chassis_.section + name;
    chassis_.buses.insert(bus);
    rules_.used.insert(section);
    if (!file.hasSection(section)) {
      missSection(file, "TriggerBusList", "bus " + std::to_string(bus), section);
      return true;
    }
    const auto slots = rules_.takeList(file, section, "SlotList", search.question());
    for (const std::uint32_t slot : slots.value_or(tNumbers())) {
      search.claim(slot, name, file.at(section, "SlotList"));
    }
    return slots.has_value();
  }

  // The numbers of a family's list; nothing where there is no such family.
  tNumbers takeTriggers(const tCheckedFile& file, const char* list, tSearch& search) {
    if (!file.hasItem(chassis_.section, list)) return {};
    for (const auto& [slot, namedBy] : chassis_.slots) {
      if (opens(slot)) search.add(slot);
    }
    return rules_.takeList(file, chassis_.section, list, search.question()).value_or(tNumbers());
  }

  void takeLine(const tCheckedFile& file, const std::string& section, const std::string& item,
                tSearch& search) {
    if (!file.hasItem(section, item)) return;
    const auto slot = rules_.takeNumber(file, section, item, search.question());
    if (slot) {
      search.claim(static_cast<std::uint32_t>(*slot), section + ' ' + item, file.at(section, item));
    }
  }

  // Every star trigger that the walk comes by must name its controller.
  void checkStars(const tCheckedFile& file, const char* controllerItem) {
    constexpr const char* kList = "StarTriggerList";
    tSearch search(rules_, chassis_, "StarTriggerNumber", "slot-on-two-lines");
    for (const std::uint32_t number : takeTriggers(file, kList, search)) {
      const std::string section = chassis_.section + "StarTrigger" + std::to_string(number);
      rules_.used.insert(section);
      if (!file.hasSection(section)) {
        missSection(file, kList, "star trigger " + std::to_string(number), section);
        continue;
      }
      for (int line = 0; line <= kLastStarLine; ++line) {
        takeLine(file, section, "PXI_STAR" + std::to_string(line), search);
      }
      const auto controller = rules_.takeNumber(file, section, controllerItem, search.question());
      if (!controller) continue;
      const auto slot = static_cast<std::uint32_t>(*controller);
      if (search.isClaimed(slot) || !chassis_.has(slot)) {
        search.claim(slot, section, file.at(section, controllerItem));
      }
      search.find(slot);
    }
  }

  std::string preferred(const tCheckedFile& file, const std::string& section,
                        const std::string& first, const std::string& second) {
    if (!file.hasItem(section, first)) return file.hasItem(section, second) ? second : first;
    if (file.hasItem(section, second) && file.text(section, first) != file.text(section, second)) {
      rules_.doubt("spelled-twice", file.at(section, second),
                   first + " stands there as well, with another value", "as without " + second);
    }
    return first;
  }

  // The set and its items go by either of two names. A slot may be on a line and the controller.
  void checkDStars(const tCheckedFile& file) {
    constexpr const char* kList = "StarSystemTimingSetList";
    tSearch search(rules_, chassis_, "DStarTriggerNumber", "slot-on-two-lines");
    for (const std::uint32_t number : takeTriggers(file, kList, search)) {
      const std::string first = chassis_.section + "StarSystemTimingSets" + std::to_string(number);
      const std::string second = chassis_.section + "StarSystemTimingSet" + std::to_string(number);
      const std::string& section =
          file.hasSection(first) || !file.hasSection(second) ? first : second;
      rules_.used.insert(section);
      if (!file.hasSection(section)) {
        missSection(file, kList, "set " + std::to_string(number), section);
        continue;
      }
      checkDStar(file, section, search);
    }
  }

  void checkDStar(const tCheckedFile& file, const std::string& section, tSearch& search) {
    const auto before = search.remaining();
    for (int line = 0; line <= kLastStarLine; ++line) {
      const std::string number = std::to_string(line);
      takeLine(file, section,
               preferred(file, section, "StarSystemTimingSet" + number, "SystemTimingSet" + number),
               search);
    }
    const std::string item = preferred(file, section, "SystemTimingSlot", "StarSystemTimingSlot");
    if (!file.hasItem(section, item)) return;
    // Asked for each slot that comes by here, whether or not it was found on a line.
    std::optional<tQuestion> question;
    if (!before.empty())
      question = aboutSlot(chassis_.number, *before.begin(), "DStarTriggerNumber");
    const auto controller = rules_.takeNumber(file, section, item, question);
    if (!controller) return;
    const auto slot = static_cast<std::uint32_t>(*controller);
    if (!chassis_.has(slot)) search.claim(slot, section, file.at(section, item));
    search.find(slot);
  }

  tRules& rules_;
  tChassisPlan& chassis_;
};

}  // namespace

void checkTriggers(tRules& rules, tChassisPlan& chassis) { tTriggerCheck(rules, chassis).run(); }

}  // namespace tool
