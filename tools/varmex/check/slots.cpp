// A slot: its type, the numbers in its section, and the module that covers it.

#include "source/varmex/slotTypes.h"
#include "tools/varmex/check/rules.h"

namespace tool {

namespace {

constexpr const char* kLinkItems[] = {"PeripheralSlotLinkWidth1", "PeripheralSlotLinkWidth2",
                                      "SystemSlotLinkOrigin1", "SystemSlotLinkOrigin2"};

constexpr const char* kModuleItems[] = {"PeripheralModuleLinkWidthMax",
                                        "PeripheralModuleLinkWidthNegotiated"};

class tSlotCheck {
 public:
  tSlotCheck(tRules& rules, const tChassisPlan& chassis, std::uint32_t slot)
      : rules_(rules), chassis_(chassis), slot_(slot), section_(chassis.slotSection(slot)) {}

  void run(const tPosition& namedBy) {
    if (!rules_.firstWith(section_)) {
      rules_.findings.addRefused("missing-section", namedBy,
                                 "names slot " + std::to_string(slot_) +
                                     ", which has no section [" + section_ + "] in either file",
                                 question(""),
                                 unknownItem({{"type", "slot"},
                                              {"slotNum", std::to_string(slot_)},
                                              {"chassisNum", std::to_string(chassis_.number)}}));
      return;
    }
    const std::uint32_t type = takeType();
    for (const char* item : kLinkItems) {
      checkNumber(item, (type & varmex_slotType_PXIePeripheral) != 0, item);
    }
    const auto names = rules_.express.text(section_, "AddressInfo");
    const bool hasDevices = names && !readResourceNames(*names).addresses.empty();
    for (const char* item : kModuleItems) {
      checkNumber(item, hasDevices, std::string("device, ") + item);
    }
    checkRootBus((type & varmex_slotType_PXI1Peripheral) != 0);
  }

 private:
  tQuestion question(const std::string& attribute) const {
    return aboutSlot(chassis_.number, slot_, attribute);
  }

  // 0 for a type that the library does not know: it then asks for nothing that depends on it.
  std::uint32_t takeType() {
    constexpr const char* kItem = "SlotType";
    const tCheckedFile& file = rules_.express;
    if (!file.hasSection(section_)) return classicType();
    const auto text = file.text(section_, kItem);
    if (const std::uint32_t type = text ? varmex::slotTypeNamed(*text) : 0) return type;
    if (text) {
      rules_.findings.addRefused("unknown-slot-type", file.at(section_, kItem),
                                 "no type that the library knows: \"" + *text + '"',
                                 question(kItem), notAvailable({{"bad_slot_type", *text}}));
    } else {
      rules_.findings.addRefused("missing-item", file.at(section_, kItem),
                                 std::string(kItem) + " is missing", question(kItem),
                                 itemNotFound(section_, kItem));
    }
    return 0;
  }

  // The controller of a chassis that pxisys.ini alone has is not told from other PXI-1 slots here:
  // what is read of it is the same.
  std::uint32_t classicType() const {
    return slot_ == 1 ? std::uint32_t{varmex_slotType_PXISystem}
                      : std::uint32_t{varmex_slotType_PXI1Peripheral};
  }

  void checkNumber(const char* item, bool isAsked, const std::string& attribute) {
    if (!rules_.express.hasItem(section_, item)) return;
    rules_.takeNumber(rules_.express, section_, item,
                      isAsked ? std::optional(question(attribute)) : std::nullopt);
  }

  void checkRootBus(bool isAsked) {
    constexpr const char* kItem = "PCISlotPathRootBus";
    if (!rules_.classic.hasItem(section_, kItem)) return;
    rules_.takeUnsigned(rules_.classic, section_, kItem,
                        isAsked ? std::optional(question(kItem)) : std::nullopt);
  }

  tRules& rules_;
  const tChassisPlan& chassis_;
  std::uint32_t slot_;
  std::string section_;
};

// Slots that the library looks for a module over: those without one of their own. Each list is read
// for those alone that no earlier one names.
void checkCovered(tRules& rules, const tChassisPlan& chassis) {
  constexpr const char* kItem = "PeripheralModuleOccupiedSlotList";
  const tCheckedFile& file = rules.express;
  std::set<std::uint32_t> remaining;
  for (const auto& [slot, namedBy] : chassis.slots) {
    const std::string section = chassis.slotSection(slot);
    if (rules.firstWith(section) && !file.hasItem(section, "AddressInfo")) remaining.insert(slot);
  }
  for (const std::uint32_t slot : chassis.expressSlots) {
    const std::string section = chassis.slotSection(slot);
    if (!file.hasItem(section, kItem)) continue;
    std::optional<tQuestion> question;
    if (!remaining.empty()) {
      question = aboutSlot(chassis.number, *remaining.begin(), "OccupyingModuleSlot");
    }
    const auto covered = rules.takeList(file, section, kItem, question);
    for (const std::uint32_t other : covered.value_or(tNumbers())) {
      remaining.erase(other);
      const std::string name = std::to_string(other);
      if (!chassis.has(other)) {
        rules.doubt("missing-slot", file.at(section, kItem),
                    "names slot " + name + ", which the chassis does not have",
                    "as without this slot");
      } else if (other != slot && file.hasItem(chassis.slotSection(other), "AddressInfo")) {
        rules.doubt("slot-covered-twice", file.at(section, kItem),
                    "covers slot " + name + ", which holds a module of its own",
                    chassis.slotName(other) + ", OccupyingModuleSlot: " + name);
      }
    }
  }
}

}  // namespace

void checkSlots(tRules& rules, const tChassisPlan& chassis) {
  for (const auto& [slot, namedBy] : chassis.slots) {
    if (rules.findings.isFull()) return;
    tSlotCheck(rules, chassis, slot).run(namedBy);
  }
  checkCovered(rules, chassis);
}

}  // namespace tool
