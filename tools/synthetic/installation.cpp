#include "tools/synthetic/installation.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <numeric>
#include <set>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "tools/synthetic/layout.h"

namespace synthetic {

namespace {

constexpr std::uint32_t kTriggerLines = 8;

std::string decimal(std::uint32_t number) { return std::to_string(number); }

std::string listText(const tNumbers& numbers) {
  std::string list;
  for (const std::uint32_t number : numbers) list += (list.empty() ? "" : ",") + decimal(number);
  return list;
}

tNumbers numbersUpTo(std::uint32_t last) {
  tNumbers numbers(last);
  std::iota(numbers.begin(), numbers.end(), 1U);
  return numbers;
}

// The text of one description file.
class tDescription {
 public:
  void addSection(const std::string& name) {
    text_ += (text_.empty() ? "[" : "\n[") + name + "]\n";
  }
  void addText(std::string_view item, std::string_view value) { addLine(item, "\"", value, "\""); }
  void addNumber(std::string_view item, std::uint32_t value) {
    addLine(item, "", decimal(value), "");
  }
  void addList(std::string_view item, const tNumbers& numbers) { addText(item, listText(numbers)); }

  std::string take() { return std::move(text_); }

 private:
  void addLine(std::string_view item, std::string_view before, std::string_view value,
               std::string_view behind) {
    text_.append(item).append(" = ").append(before).append(value).append(behind).append("\n");
  }

  std::string text_;
};

struct tAddress {
  std::uint32_t bus;
  std::uint32_t device;
};

// Hands out the PCI addresses of a machine: a bus for each module as long as they last, then the
// same buses again, each time with another device number.
class tNumbering {
 public:
  // `preferred` is the device number, or one behind it where the bus has that already.
  tAddress take(std::uint32_t preferred) {
    if (taken_.size() == std::size_t{kBuses} * kDevices) {
      throw std::invalid_argument("the modules are more than a machine has PCI addresses for");
    }
    const std::uint32_t bus = kFirstBus + static_cast<std::uint32_t>(taken_.size()) % kBuses;
    std::uint32_t device = preferred;
    while (!taken_.emplace(bus, device).second) device = (device + 1) % kDevices;
    return {bus, device};
  }

 private:
  static constexpr std::uint32_t kFirstBus = 2;  // those below are the controller's own
  static constexpr std::uint32_t kBuses = 256 - kFirstBus;
  static constexpr std::uint32_t kDevices = 32;

  std::set<std::pair<std::uint32_t, std::uint32_t>> taken_;
};

struct tProduct {
  const char* vendor;
  const char* model;
  std::uint32_t linkWidth;
};

constexpr tProduct kProducts[] = {{"Orlindt Instruments, Inc.", "ORX-5105 Digitizer", 8},
                                  {"Tessmere Labs", "TL-310 Switch", 4},
                                  {"Havrel Modular", "HM-6220 Digital I/O", 4},
                                  {"Orlindt Instruments, Inc.", "ORX-4081 Multimeter", 1},
                                  {"Tessmere Labs", "TL-950 RF Generator", 8}};

// Writes one chassis after the other into the two files.
class tMaker {
 public:
  tTexts make(const std::vector<tPlan>& plans) {
    tNumbers express;
    for (std::uint32_t number = 1; number <= plans.size(); ++number) {
      if (tLayout(plans[number - 1]).isExpress()) express.push_back(number);
    }
    pxiSys_.addSection("System");
    pxiSys_.addList("ChassisList", numbersUpTo(static_cast<std::uint32_t>(plans.size())));
    if (!express.empty()) {
      pxieSys_.addSection("System");
      pxieSys_.addList("ChassisList", express);
    }
    for (const tPlan& plan : plans) {
      ++number_;
      layout_ = tLayout(plan);
      addChassis();
    }
    return {pxiSys_.take(), pxieSys_.take(), std::move(functions_)};
  }

 private:
  std::string chassisKey() const { return "Chassis" + decimal(number_); }

  void addChassis() {
    addClassicHead();
    addBuses(pxiSys_);
    addBridges(pxiSys_);
    if (layout_.isExpress()) {
      addExpressHead();
      addBuses(pxieSys_);
      addBridges(pxieSys_);
      addStarTrigger(pxieSys_, "SystemTimingSlot");
      addStarSystemTimingSets();
    } else {
      addStarTrigger(pxiSys_, "ControllerSlot");
    }
    for (std::uint32_t slot = 1; slot <= layout_.slots; ++slot) {
      slot_ = slot;
      if (layout_.isExpress()) addExpressSlot(slot);
      if (layout_.takesClassic(slot)) addClassicSlot(slot);
    }
  }

  // What both files hold and must agree in.
  void addHead(tDescription& file) {
    file.addSection(chassisKey());
    file.addText("Vendor", "Orlindt Instruments, Inc.");
    file.addText("Model", (layout_.isExpress() ? "ORX-" : "ORP-") + decimal(100 + layout_.slots));
    file.addText("TriggerManager", "Orlindt\\Backplane Manager");
    file.addText("DescriptionFile", "orlindt/chassis" + decimal(layout_.slots) + ".ini");
    file.addList("TriggerBusList", numbersUpTo(layout_.buses()));
    if (layout_.bridges() > 0) file.addList("TriggerBridgeList", numbersUpTo(layout_.bridges()));
  }

  void addClassicHead() {
    addHead(pxiSys_);
    pxiSys_.addList("SlotList", layout_.classicSlots());
    if (!layout_.isExpress()) pxiSys_.addText("StarTriggerList", "1");
  }

  void addExpressHead() {
    addHead(pxieSys_);
    char serialNumber[16];
    std::snprintf(serialNumber, sizeof serialNumber, "%08X", 0x0A40'0000U + 0x2F * number_);
    pxieSys_.addText("SerialNumber", serialNumber);
    pxieSys_.addList("SlotList", numbersUpTo(layout_.slots));
    pxieSys_.addText("StarTriggerList", "1");
    pxieSys_.addText("StarSystemTimingSetList", "1");
  }

  void addBuses(tDescription& file) {
    for (std::uint32_t bus = 1; bus <= layout_.buses(); ++bus) {
      file.addSection(chassisKey() + "TriggerBus" + decimal(bus));
      file.addList("SlotList", layout_.slotsOfBus(bus));
    }
  }

  // Two bridges, one in each direction, between each bus and the next.
  void addBridges(tDescription& file) {
    if (layout_.bridges() == 0) return;
    for (std::uint32_t bridge = 1; bridge <= layout_.bridges(); ++bridge) {
      const std::uint32_t left = (bridge + 1) / 2;
      const bool leftToRight = bridge % 2 == 1;
      file.addSection(chassisKey() + "TriggerBridge" + decimal(bridge));
      file.addNumber("SourceTriggerBus", leftToRight ? left : left + 1);
      file.addNumber("DestinationTriggerBus", leftToRight ? left + 1 : left);
      file.addNumber("LineMappingSpec", leftToRight ? 1 : 2);
    }
    const tNumbers lines{0, 1, 2, 3, 4, 5, 6, 7};
    addLineMap(file, 1, [&](std::uint32_t) { return lines; });
    addLineMap(file, 2, [&](std::uint32_t line) {
      return line + 1 == kTriggerLines ? tNumbers{} : tNumbers{line};
    });
  }

  template <class Destinations>
  void addLineMap(tDescription& file, std::uint32_t map, Destinations destinations) {
    file.addSection(chassisKey() + "LineMappingSpec" + decimal(map));
    for (std::uint32_t line = 0; line < kTriggerLines; ++line) {
      file.addList("PXI_TRIG" + decimal(line), destinations(line));
    }
  }

  void addStarTrigger(tDescription& file, const char* controllerItem) {
    file.addSection(chassisKey() + "StarTrigger1");
    file.addNumber(controllerItem, layout_.controller());
    addLines(file, "PXI_STAR");
  }

  void addStarSystemTimingSets() {
    pxieSys_.addSection(chassisKey() + "StarSystemTimingSets1");
    pxieSys_.addNumber("SystemTimingSlot", layout_.controller());
    addLines(pxieSys_, "StarSystemTimingSet");
  }

  // One line from the controller to each slot but itself and the system slot.
  void addLines(tDescription& file, const std::string& item) {
    std::uint32_t line = 0;
    for (std::uint32_t slot = 2; slot <= layout_.slots; ++slot) {
      if (slot != layout_.controller()) file.addNumber(item + decimal(line++), slot);
    }
  }

  const char* slotType(std::uint32_t slot) const {
    switch (layout_.slotKind(slot)) {
      case tSlotKind::system:
        return layout_.buses() > 1 ? "PXIeSystemSlot4Link" : "PXIeSystemSlot2Link";
      case tSlotKind::timing: return "PXIeSystemTimingSlot";
      case tSlotKind::hybrid: return "PXIeHybridSlot";
      case tSlotKind::pxi1: return "PXI-1Slot";
      case tSlotKind::peripheral: break;
    }
    return "PXIePeripheralSlot";
  }

  std::uint32_t slotLanes(std::uint32_t slot) const {
    return layout_.slotKind(slot) == tSlotKind::peripheral ? 8 : 4;
  }

  void addExpressSlot(std::uint32_t slot) {
    const tSlotKind kind = layout_.slotKind(slot);
    pxieSys_.addSection(chassisKey() + "Slot" + decimal(slot));
    pxieSys_.addText("SlotType", slotType(slot));
    if (kind != tSlotKind::system && kind != tSlotKind::pxi1) {
      pxieSys_.addNumber("PeripheralSlotLinkWidth1", slotLanes(slot));
      pxieSys_.addNumber("PeripheralSlotLinkWidth2", 0);
      pxieSys_.addNumber("SystemSlotLinkOrigin1", 1 + (slot - 1) / 5);
      pxieSys_.addNumber("SystemSlotLinkOrigin2", 0);
    }
    if (kind != tSlotKind::pxi1) addLocalBuses(pxieSys_, slot);
    const tModule module = layout_.module(slot);
    if (module == tModule::express || module == tModule::wideExpress) addExpressModule(slot);
  }

  void addLocalBuses(tDescription& file, std::uint32_t slot) {
    const bool hasLeft = slot > 1 || !layout_.isExpress();  // no item for an Express system slot
    if (hasLeft) file.addText("LocalBusLeft", slot > 1 ? decimal(slot - 1) : "None");
    file.addText("LocalBusRight", slot < layout_.slots ? decimal(slot + 1) : "None");
  }

  void addExpressModule(std::uint32_t slot) {
    const tProduct& product = kProducts[(slot + number_) % std::size(kProducts)];
    const tAddress address = numbering_.take(0);
    const std::string device =
        "PXI0::" + decimal(address.bus) + '-' + decimal(address.device) + '.';
    const bool isWide = layout_.module(slot) == tModule::wideExpress;
    const std::uint32_t lanes = std::min(product.linkWidth, slotLanes(slot));
    noteFunctions(address, 2, lanes);
    pxieSys_.addText("Vendor", product.vendor);
    pxieSys_.addText("Model", product.model);
    pxieSys_.addText("InstanceName", "MODULE-" + decimal(number_) + "-" + decimal(slot));
    pxieSys_.addText("AddressInfo", device + "0::INSTR;" + device + "1::INSTR");
    pxieSys_.addText("PeripheralModuleOccupiedSlotList", isWide ? decimal(slot + 1) : "");
    pxieSys_.addNumber("PeripheralModuleLinkWidthMax", product.linkWidth);
    pxieSys_.addNumber("PeripheralModuleLinkWidthNegotiated", lanes);
  }

  void addClassicSlot(std::uint32_t slot) {
    const std::string key = chassisKey() + "Slot" + decimal(slot);
    pxiSys_.addSection(key);
    if (layout_.slotKind(slot) != tSlotKind::system) {
      char path[16];
      std::snprintf(path, sizeof path, "%02X,%02X,E4", (31 - slot) << 3, number_ & 0xF8);
      pxiSys_.addText("PCISlotPath", path);
      pxiSys_.addNumber("PCISlotPathRootBus", 0);
    }
    if (layout_.slotKind(slot) != tSlotKind::hybrid) addLocalBuses(pxiSys_, slot);
    switch (layout_.module(slot)) {
      case tModule::classic: return addClassicModule(key, 31 - slot);
      case tModule::classicBridge: return addClassicBridge(key, 31 - slot);
      default: return addNoAddress();
    }
  }

  void noteFunctions(const tAddress& address, std::uint32_t count, std::uint32_t lanes,
                     std::uint32_t bridgedBus = 0) {
    for (std::uint32_t function = 0; function < count; ++function) {
      functions_.push_back(
          {number_, slot_, address.bus, address.device, function, lanes, bridgedBus});
    }
  }

  void addNoAddress() {
    pxiSys_.addText("PCIBusNumber", "None");
    pxiSys_.addText("PCIDeviceNumber", "None");
  }

  void addFunction(const std::string& section, const tAddress& address) {
    pxiSys_.addSection(section);
    pxiSys_.addNumber("PCIBusNumber", address.bus);
    pxiSys_.addNumber("PCIDeviceNumber", address.device);
  }

  void addClassicModule(const std::string& key, std::uint32_t device) {
    const tAddress address = numbering_.take(device);
    noteFunctions(address, 2, 0);
    pxiSys_.addText("FunctionList", "0,1");
    addFunction(key + "Function0", address);
    addFunction(key + "Function1", address);
  }

  // A module whose two functions lie behind a PCI bridge of its own.
  void addClassicBridge(const std::string& key, std::uint32_t device) {
    pxiSys_.addText("FunctionList", "0");
    const tAddress address = numbering_.take(device);
    addFunction(key + "Function0", address);
    const tAddress behind = numbering_.take(4);
    noteFunctions(address, 1, 0, behind.bus);
    noteFunctions(behind, 2, 0);
    const std::string bridge = key + "Function0Device" + decimal(behind.device);
    pxiSys_.addText("DeviceList", decimal(behind.device));
    pxiSys_.addSection(bridge);
    pxiSys_.addText("FunctionList", "0,1");
    addFunction(bridge + "Function0", behind);
    addFunction(bridge + "Function1", behind);
  }

  tDescription pxiSys_;
  tDescription pxieSys_;
  tLayout layout_{tPlan()};   // of the chassis that is being added
  std::uint32_t number_ = 0;  // its number
  std::uint32_t slot_ = 0;    // that is being added
  tNumbering numbering_;
  std::vector<tFunction> functions_;
};

void writeFile(const std::string& path, const std::string& content) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file.write(content.data(), static_cast<std::streamsize>(content.size()));
  file.close();
  if (!file) throw std::runtime_error("can't write " + path);
}

}  // namespace

tTexts makeInstallation(const std::vector<tPlan>& plans) {
  if (plans.empty() || plans.size() > kMostChassis) {
    throw std::invalid_argument("the number of chassis is not within 1 to 255");
  }
  for (const tPlan& plan : plans) {
    if (plan.slots < kFewestSlots || plan.slots > kMostSlots) {
      throw std::invalid_argument("the number of slots is not within 2 to 18");
    }
  }
  return tMaker().make(plans);
}

void writeInstallation(const tTexts& texts, const std::string& pxiSysPath,
                       const std::string& pxieSysPath) {
  writeFile(pxiSysPath, texts.pxiSys);
  writeFile(pxieSysPath, texts.pxieSys);
}

}  // namespace synthetic
