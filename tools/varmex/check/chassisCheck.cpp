#include "tools/varmex/check/chassisCheck.h"

#include <algorithm>
#include <initializer_list>
#include <string_view>

#include "ostrel/quarks/numbers.h"

namespace tool {

namespace {

constexpr std::int64_t kLineCount = 8;
constexpr int kLastStarLine = 16;

// The numbers of a text, each behind one of these literals, as far as the text has them.
std::vector<std::int32_t> readNumbers(const std::string& text,
                                      std::initializer_list<std::string_view> literals) {
  std::vector<std::int32_t> numbers;
  const char* position = text.c_str();
  for (const std::string_view literal : literals) {
    if (std::string_view(position).substr(0, literal.size()) != literal) break;
    const varmex::tSignedText number = varmex::readSigned(position + literal.size());
    if (!number.end) break;
    numbers.push_back(number.value);
    position = number.end;
  }
  return numbers;
}

}  // namespace

tNumbers takeList(const tCheckedFile& file, const std::string& section, const std::string& item,
                  tFindings& findings, const tAnswers& answers) {
  const auto numbers = file.list(section, item);
  if (!numbers) {
    const bool isThere = file.hasItem(section, item);
    findings.add(tSeverity::wrong, isThere ? "bad-list" : "missing-item", file.at(section, item),
                 isThere ? "the value is no list of numbers between commas" : "the item is missing",
                 [&] { return answers.session(); });
    return {};
  }
  std::set<std::uint32_t> once;
  tNumbers list;
  for (const std::uint32_t number : *numbers) {
    if (once.insert(number).second) {
      list.push_back(number);
    } else {
      findings.add(tSeverity::doubtful, "repeated-number", file.at(section, item),
                   "names " + std::to_string(number) + " again", [] { return "as if named once"; });
    }
  }
  return list;
}

void tChassisCheck::run() {
  c_.used.insert(section_);
  const std::size_t before = c_.findings.size();
  checkItself();
  takeSlots(c_.classic);
  takeSlots(c_.express);
  for (const auto& [slot, namedBy] : slots_) {
    if (c_.findings.isFull()) return;
    checkSlot(static_cast<std::uint32_t>(slot));
  }
  checkTriggerBuses(c_.express);
  checkTriggerBuses(c_.classic);
  checkStarTriggers();
  checkDStarTriggers();
  checkBridges();
  if (c_.findings.size() != before || !c_.answers.opensSession()) return;
  const std::string answer = c_.answers.chassis(number_);
  if (!c_.answers.fails(answer)) return;
  const tCheckedFile* const file = firstWith(section_);
  c_.findings.add(tSeverity::wrong, "chassis-fails", (file ? *file : c_.classic).at(section_),
                  "the chassis does not open", [&] { return answer; });
}

const tCheckedFile* tChassisCheck::firstWith(const std::string& section) const {
  if (c_.classic.hasSection(section)) return &c_.classic;
  return c_.express.hasSection(section) ? &c_.express : nullptr;
}

void tChassisCheck::missingItem(const tCheckedFile& file, const std::string& section,
                                const std::string& item,
                                const std::function<std::string()>& answer) {
  c_.findings.add(tSeverity::wrong, "missing-item", file.at(section, item), "the item is missing",
                  answer);
}

void tChassisCheck::compare(const std::string& section, const std::string& item,
                            const std::function<std::string()>& answer) {
  const auto classic = c_.classic.text(section, item);
  const auto express = c_.express.text(section, item);
  if (!classic || !express || *classic == *express) return;
  c_.findings.add(tSeverity::wrong, "files-disagree", c_.express.at(section, item),
                  "\"" + *express + "\" here and \"" + *classic + "\" in pxisys.ini, line " +
                      std::to_string(c_.classic.at(section, item).line),
                  answer);
}

void tChassisCheck::checkItself() {
  const auto& answers = c_.answers;
  const auto attribute = [&](std::uint32_t id, const char* name) {
    return [this, &answers, id, name] {
      return answers.chassis(number_, name,
                             [id](const varmex::Chassis& chassis) { return chassis.text(id); });
    };
  };
  compare(section_, "Vendor", opensChassis());
  compare(section_, "Model", opensChassis());
  compare(section_, "TriggerManager",
          attribute(varmex_str_ChassisTriggerManagerIdentifier, "ChassisTriggerManagerIdentifier"));
  compare(section_, "TriggerBusList",
          attribute(varmex_str_ChassisTriggerBusList, "ChassisTriggerBusList"));
  compare(section_, "DescriptionFile",
          attribute(varmex_str_ChassisDescriptionFile, "ChassisDescriptionFile"));
  const tCheckedFile* const file = firstWith(section_);
  if (!file) return;
  for (const char* item : {"Vendor", "Model"}) {
    const bool isThere = c_.classic.hasItem(section_, item) || c_.express.hasItem(section_, item);
    if (!isThere) missingItem(*file, section_, item, opensChassis());
  }
  if (c_.express.hasSection(section_)) {
    if (!c_.express.hasItem(section_, "SerialNumber")) {
      missingItem(c_.express, section_, "SerialNumber", opensChassis());
    }
    return;
  }
  const std::string path = slotSection(2);
  if (!c_.classic.hasItem(path, "PCISlotPath")) {
    missingItem(c_.classic, path, "PCISlotPath", opensChassis());
  }
}

void tChassisCheck::takeSlots(const tCheckedFile& file) {
  if (!file.hasSection(section_)) return;
  for (const std::uint32_t slot : takeList(file, section_, "SlotList", c_.findings, c_.answers)) {
    slots_.emplace(slot, file.at(section_, "SlotList"));
  }
}

void tChassisCheck::checkSlot(std::uint32_t slot) {
  const std::string section = slotSection(slot);
  c_.used.insert(section);
  if (!firstWith(section)) {
    c_.findings.add(tSeverity::wrong, "missing-section", slots_[slot],
                    "names slot " + std::to_string(slot) + ", which has no section [" + section +
                        "] in either file",
                    [&] { return c_.answers.slot(number_, slot); });
    return;
  }
  if (c_.express.hasSection(section)) {
    const std::string answer = c_.answers.slot(
        number_, slot, "SlotType", [](const varmex::Slot& item) { return item.type(); });
    if (!c_.express.hasItem(section, "SlotType")) {
      // A classic slot that the other file describes needs none.
      if (!c_.classic.hasSection(section)) {
        missingItem(c_.express, section, "SlotType", [&] { return answer; });
      }
    } else if (c_.answers.fails(answer) && !c_.answers.fails(c_.answers.chassis(number_))) {
      c_.findings.add(tSeverity::wrong, "unknown-slot-type", c_.express.at(section, "SlotType"),
                      "no type that the library knows: \"" +
                          c_.express.text(section, "SlotType").value_or("") + '"',
                      [&] { return answer; });
    }
    checkExpressModule(slot);
  }
  if (c_.classic.hasSection(section)) checkFunctions(slot);
}

void tChassisCheck::checkExpressModule(std::uint32_t slot) {
  const auto names = c_.express.text(slotSection(slot), "AddressInfo");
  if (names) checkResourceNames(slot, *names);
  checkOccupiedSlots(slot);
}

void tChassisCheck::checkResourceNames(std::uint32_t slot, const std::string& names) {
  const tPosition position = c_.express.at(slotSection(slot), "AddressInfo");
  std::size_t begin = 0;
  while (begin < names.size()) {
    const std::size_t end = std::min(names.find_first_of(";+", begin), names.size());
    const std::string name = names.substr(begin, end - begin);
    begin = end + 1;
    if (name.empty()) continue;
    const auto newForm = readNumbers(name, {"PXI", "::", "-", "."});
    const auto oldForm = readNumbers(name, {"PXI", "::", "::"});
    if (name.ends_with("::INSTR") && (newForm.size() == 4 || oldForm.size() == 3)) {
      // In the older form the bus takes the place of the domain.
      const auto& numbers = newForm.size() == 4 ? newForm : oldForm;
      const std::size_t bus = numbers.size() - 3;
      claimAddress(slot, numbers[bus], numbers[bus + 1], numbers[bus + 2], position);
    } else {
      c_.findings.add(tSeverity::wrong, "address-unreadable", position,
                      "no address of a device: \"" + name + '"',
                      [] { return "as without this address"; });
    }
  }
}

void tChassisCheck::checkOccupiedSlots(std::uint32_t slot) {
  constexpr const char* kItem = "PeripheralModuleOccupiedSlotList";
  const std::string section = slotSection(slot);
  if (c_.express.text(section, kItem).value_or("").empty()) return;
  for (const std::uint32_t covered :
       takeList(c_.express, section, kItem, c_.findings, c_.answers)) {
    const auto answer = [&] {
      return c_.answers.slot(number_, covered, "OccupyingModuleSlot",
                             [](const varmex::Slot& item) { return item.occupyingModuleSlot(); });
    };
    if (!isSlot(covered)) {
      c_.findings.add(tSeverity::wrong, "missing-slot", c_.express.at(section, kItem),
                      "names slot " + std::to_string(covered) + ", which the chassis does not have",
                      answer);
    } else if (covered != slot && c_.express.hasItem(slotSection(covered), "AddressInfo")) {
      c_.findings.add(
          tSeverity::doubtful, "slot-covered-twice", c_.express.at(section, kItem),
          "covers slot " + std::to_string(covered) + ", which holds a module of its own", answer);
    }
  }
}

// The tree of functions and bridge devices, each section once however often it is named.
void tChassisCheck::checkFunctions(std::uint32_t slot) {
  const std::string section = slotSection(slot);
  if (!c_.classic.hasItem(section, "FunctionList")) {
    checkFunction(slot, section, slots_[slot]);
    return;
  }
  std::vector<std::pair<std::string, const char*>> open = {{section, "FunctionList"}};
  while (!open.empty() && !c_.findings.isFull()) {
    const auto [parent, list] = open.back();
    open.pop_back();
    const bool toFunctions = list == std::string("FunctionList");
    for (const std::uint32_t number : takeList(c_.classic, parent, list, c_.findings, c_.answers)) {
      const std::string child =
          parent + (toFunctions ? "Function" : "Device") + std::to_string(number);
      if (!c_.used.insert(child).second) continue;
      if (toFunctions) checkFunction(slot, child, c_.classic.at(parent, list));
      const char* const next = toFunctions ? "DeviceList" : "FunctionList";
      if (!toFunctions || c_.classic.hasItem(child, next)) open.emplace_back(child, next);
    }
  }
}

void tChassisCheck::checkFunction(std::uint32_t slot, const std::string& section,
                                  const tPosition& namedBy) {
  if (!c_.classic.hasSection(section)) {
    c_.findings.add(tSeverity::wrong, "missing-section", namedBy,
                    "names a function that has no section [" + section + ']',
                    [] { return "as without the function"; });
    return;
  }
  const auto bus = c_.classic.text(section, "PCIBusNumber");
  const auto device = c_.classic.text(section, "PCIDeviceNumber");
  if (!bus || !device || *bus == "None" || *device == "None") return;
  for (const char* item : {"PCIBusNumber", "PCIDeviceNumber"}) {
    if (c_.classic.number(section, item)) continue;
    c_.findings.add(tSeverity::wrong, "bad-number", c_.classic.at(section, item),
                    "no number: \"" + c_.classic.text(section, item).value_or("") + '"',
                    opensSession());
    return;
  }
  // The controller's own devices are on no list of the library's.
  if (slot == 1) return;
  claimAddress(slot, *c_.classic.number(section, "PCIBusNumber"),
               *c_.classic.number(section, "PCIDeviceNumber"), 0,
               c_.classic.at(section, "PCIBusNumber"));
}

void tChassisCheck::claimAddress(std::uint32_t slot, std::int64_t bus, std::int64_t device,
                                 std::int64_t function, const tPosition& position) {
  const auto isWithin = [](std::int64_t number, std::int64_t most) {
    return number >= 0 && number <= most;
  };
  if (!isWithin(bus, 255) || !isWithin(device, 31) || !isWithin(function, 7)) {
    c_.findings.add(tSeverity::doubtful, "address-out-of-range", position,
                    "no PCI system has " + std::to_string(bus) + ':' + std::to_string(device) +
                        '.' + std::to_string(function),
                    [] { return "the device at this address"; });
  }
  const std::string place = position.file + ", " + slotName(slot);
  const auto [claim, isNew] = c_.modules.try_emplace({bus, device}, tClaim{place});
  if (isNew || claim->second.place == place) return;
  c_.findings.add(tSeverity::wrong, "duplicate-address", position,
                  "bus " + std::to_string(bus) + ", device " + std::to_string(device) +
                      " is that of " + claim->second.place + " already",
                  opensSession());
}

void tChassisCheck::checkTriggerBuses(const tCheckedFile& file) {
  if (!file.hasSection(section_)) return;
  const auto busOf = [this](std::int64_t slot) {
    return [this, slot] {
      return c_.answers.slot(number_, static_cast<std::uint32_t>(slot), "TriggerBusNumber",
                             [](const varmex::Slot& item) { return item.triggerBusNumber(); });
    };
  };
  tOwners owners;
  if (!file.hasItem(section_, "TriggerBusList")) {
    if (slots_.empty()) return;
    return missingItem(file, section_, "TriggerBusList", busOf(slots_.begin()->first));
  }
  for (const std::uint32_t bus :
       takeList(file, section_, "TriggerBusList", c_.findings, c_.answers)) {
    buses_.insert(bus);
    const std::string name = "TriggerBus" + std::to_string(bus);
    const std::string section = section_ + name;
    c_.used.insert(section);
    if (!file.hasSection(section)) {
      c_.findings.add(
          tSeverity::wrong, "missing-section", file.at(section_, "TriggerBusList"),
          "names bus " + std::to_string(bus) + ", which has no section [" + section + ']',
          [] { return "as without the bus"; });
      continue;
    }
    for (const std::uint32_t slot : takeList(file, section, "SlotList", c_.findings, c_.answers)) {
      const auto [owner, isNew] = owners.try_emplace(slot, name);
      if (!isSlot(slot)) {
        c_.findings.add(tSeverity::wrong, "missing-slot", file.at(section, "SlotList"),
                        "names slot " + std::to_string(slot) + ", which the chassis does not have",
                        [] { return "nothing: the slot does not open"; });
      } else if (!isNew) {
        c_.findings.add(tSeverity::wrong, "slot-on-two-buses", file.at(section, "SlotList"),
                        slotName(slot) + " is on " + owner->second + " already", busOf(slot));
      }
    }
  }
  for (const auto& [slot, namedBy] : slots_) {
    const std::string section = slotSection(static_cast<std::uint32_t>(slot));
    const tCheckedFile& describing = c_.express.hasSection(section) ? c_.express : c_.classic;
    if (&describing != &file || !file.hasSection(section) || owners.contains(slot)) continue;
    c_.findings.add(tSeverity::doubtful, "slot-without-bus", file.at(section),
                    slotName(slot) + " is on no trigger bus of this file", busOf(slot));
  }
}

void tChassisCheck::checkStarLines(const tCheckedFile& file, const std::string& section,
                                   const std::vector<std::string>& items, const char* family,
                                   tOwners& owners) {
  for (const std::string& item : items) {
    if (!file.hasItem(section, item)) continue;
    const auto slot = file.number(section, item);
    const auto answer = [&, this] {
      const auto first = slots_.empty() ? 0 : slots_.begin()->first;
      return c_.answers.slot(
          number_, static_cast<std::uint32_t>(slot && isSlot(*slot) ? *slot : first), family,
          [&](const varmex::Slot& found) {
            return family[0] == 'S' ? found.starTriggerLine() : found.dstarTriggerSet();
          });
    };
    if (!slot) {
      c_.findings.add(tSeverity::wrong, "bad-number", file.at(section, item), "no slot number",
                      answer);
    } else if (!isSlot(*slot)) {
      c_.findings.add(tSeverity::wrong, "missing-slot", file.at(section, item),
                      "names slot " + std::to_string(*slot) + ", which the chassis does not have",
                      [] { return "nothing: the slot does not open"; });
    } else if (const auto [owner, isNew] = owners.try_emplace(*slot, section + ' ' + item);
               !isNew) {
      c_.findings.add(tSeverity::wrong, "slot-on-two-lines", file.at(section, item),
                      slotName(*slot) + " is on " + owner->second + " already", answer);
    }
  }
}

void tChassisCheck::checkStarTriggers() {
  const bool isExpress = c_.express.hasSection(section_);
  const tCheckedFile& file = isExpress ? c_.express : c_.classic;
  if (!file.hasItem(section_, "StarTriggerList")) return;
  tOwners owners;
  for (const std::uint32_t number :
       takeList(file, section_, "StarTriggerList", c_.findings, c_.answers)) {
    const std::string section = section_ + "StarTrigger" + std::to_string(number);
    c_.used.insert(section);
    if (!file.hasSection(section)) {
      c_.findings.add(tSeverity::wrong, "missing-section", file.at(section_, "StarTriggerList"),
                      "names star trigger " + std::to_string(number) + ", which has no section [" +
                          section + ']',
                      [] { return "as without the star trigger"; });
      continue;
    }
    std::vector<std::string> items = {isExpress ? "SystemTimingSlot" : "ControllerSlot"};
    if (!file.hasItem(section, items[0])) {
      missingItem(file, section, items[0], [&] {
        const auto slot = slots_.empty() ? 0 : slots_.rbegin()->first;
        return c_.answers.slot(number_, static_cast<std::uint32_t>(slot), "StarTriggerNumber",
                               [](const varmex::Slot& item) { return item.starTriggerNumber(); });
      });
    }
    for (int line = 0; line <= kLastStarLine; ++line) {
      items.push_back("PXI_STAR" + std::to_string(line));
    }
    checkStarLines(file, section, items, "StarTriggerLine", owners);
  }
}

// The set and its items go by either of two names.
void tChassisCheck::checkDStarTriggers() {
  const tCheckedFile& file = c_.express;
  if (!file.hasItem(section_, "StarSystemTimingSetList")) return;
  tOwners owners;
  for (const std::uint32_t number :
       takeList(file, section_, "StarSystemTimingSetList", c_.findings, c_.answers)) {
    const std::string preferred = section_ + "StarSystemTimingSets" + std::to_string(number);
    const std::string other = section_ + "StarSystemTimingSet" + std::to_string(number);
    const std::string& section = file.hasSection(preferred) ? preferred : other;
    c_.used.insert(section);
    if (!file.hasSection(section)) {
      c_.findings.add(
          tSeverity::wrong, "missing-section", file.at(section_, "StarSystemTimingSetList"),
          "names set " + std::to_string(number) + ", which has no section [" + preferred + ']',
          [] { return "as without the set"; });
      continue;
    }
    std::vector<std::string> items = {"SystemTimingSlot", "StarSystemTimingSlot"};
    for (int line = 0; line <= kLastStarLine; ++line) {
      items.push_back("StarSystemTimingSet" + std::to_string(line));
      items.push_back("SystemTimingSet" + std::to_string(line));
    }
    checkStarLines(file, section, items, "DStarTriggerSet", owners);
  }
}

void tChassisCheck::checkBridges() {
  std::set<std::uint32_t> bridges;
  for (const tCheckedFile* file : {&c_.classic, &c_.express}) {
    if (!file->hasItem(section_, "TriggerBridgeList")) continue;
    for (const std::uint32_t bridge :
         takeList(*file, section_, "TriggerBridgeList", c_.findings, c_.answers)) {
      bridges.insert(bridge);
    }
  }
  for (const std::uint32_t bridge : bridges) checkBridge(bridge);
}

void tChassisCheck::checkBridge(std::uint32_t bridge) {
  const std::string section = section_ + "TriggerBridge" + std::to_string(bridge);
  c_.used.insert(section);
  const auto opens = [&] {
    return c_.answers.bridge(number_, bridge, "BridgeNumber",
                             [](const varmex::TriggerBridge& item) { return item.number(); });
  };
  const bool isNamedByClassic = c_.classic.hasItem(section_, "TriggerBridgeList");
  const tPosition list =
      (isNamedByClassic ? c_.classic : c_.express).at(section_, "TriggerBridgeList");
  if (!firstWith(section)) {
    c_.findings.add(
        tSeverity::wrong, "missing-section", list,
        "names bridge " + std::to_string(bridge) + ", which has no section [" + section + ']',
        opens);
    return;
  }
  // The library reads the line mapping of every bridge from this file.
  if (!c_.classic.hasSection(section)) {
    c_.findings.add(tSeverity::wrong, "bridge-not-in-pxisys", c_.express.at(section),
                    "the bridge stands in pxiesys.ini alone", opens);
    return;
  }
  checkBridgeBus(bridge, section, "SourceTriggerBus");
  checkBridgeBus(bridge, section, "DestinationTriggerBus");
  if (c_.classic.text(section, "SourceTriggerBus") &&
      c_.classic.text(section, "SourceTriggerBus") ==
          c_.classic.text(section, "DestinationTriggerBus")) {
    c_.findings.add(tSeverity::doubtful, "bridge-onto-itself", c_.classic.at(section),
                    "source and destination are one bus", opens);
  }
  const auto mapping = c_.classic.number(section, "LineMappingSpec");
  if (!mapping) return missingItem(c_.classic, section, "LineMappingSpec", opens);
  checkLineMap(bridge, section_ + "LineMappingSpec" + std::to_string(*mapping));
}

void tChassisCheck::checkBridgeBus(std::uint32_t bridge, const std::string& section,
                                   const char* item) {
  const bool isSource = item[0] == 'S';
  const auto answer = [&, this] {
    return c_.answers.bridge(
        number_, bridge, isSource ? "BridgeSourceTriggerBus" : "BridgeDestinationTriggerBus",
        [&](const varmex::TriggerBridge& found) {
          return isSource ? found.sourceTriggerBus() : found.destinationTriggerBus();
        });
  };
  compare(section, item, answer);
  const auto bus = c_.classic.number(section, item);
  if (!c_.classic.hasItem(section, item)) {
    missingItem(c_.classic, section, item, answer);
  } else if (!bus || !buses_.contains(*bus)) {
    c_.findings.add(tSeverity::wrong, "bridge-to-missing-bus", c_.classic.at(section, item),
                    "no trigger bus of the chassis: " + c_.classic.text(section, item).value_or(""),
                    answer);
  }
}

void tChassisCheck::checkLineMap(std::uint32_t bridge, const std::string& mapping) {
  // Bridges share maps.
  if (!c_.used.insert(mapping).second) return;
  const tCheckedFile* const file = firstWith(mapping);
  const auto answer = [this, bridge](std::uint32_t line) {
    return [this, bridge, line] {
      return c_.answers.bridge(
          number_, bridge, "BridgeLineMapping" + std::to_string(line),
          [line](const varmex::TriggerBridge& found) { return found.lineMapping(line); });
    };
  };
  if (!file) {
    const std::string section = section_ + "TriggerBridge" + std::to_string(bridge);
    c_.findings.add(tSeverity::wrong, "missing-section", c_.classic.at(section, "LineMappingSpec"),
                    "names a line map that has no section [" + mapping + ']', answer(0));
    return;
  }
  for (std::uint32_t line = 0; line < kLineCount; ++line) {
    const std::string item = "PXI_TRIG" + std::to_string(line);
    compare(mapping, item, answer(line));
    const auto numbers = file->list(mapping, item);
    if (!numbers) {
      const bool isThere = file->hasItem(mapping, item);
      c_.findings.add(
          tSeverity::wrong, isThere ? "bad-list" : "missing-item", file->at(mapping, item),
          isThere ? "the value is no list of line numbers" : "the item is missing", answer(line));
      continue;
    }
    for (const std::uint32_t number : *numbers) {
      if (number < kLineCount) continue;
      c_.findings.add(tSeverity::wrong, "line-map-out-of-range", file->at(mapping, item),
                      "no trigger line: " + std::to_string(static_cast<std::int32_t>(number)),
                      answer(line));
    }
  }
}

}  // namespace tool
