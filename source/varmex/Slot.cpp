#include "source/varmex/Slot.h"

#include <algorithm>
#include <mutex>
#include <string_view>

#include "ostrel/quarks/throwingStatus.h"
#include "source/varmex/Chassis.h"

namespace varmex {

namespace {

struct tSlotTypeRow {
  std::string_view text;
  std::uint32_t type;
};

constexpr tSlotTypeRow kSlotTypes[] = {
    {"PXI-1Slot", varmex_slotType_PXI1Peripheral},
    {"PXIePeripheralSlot", varmex_slotType_PXIePeripheral},
    {"PXIeHybridSlot", varmex_slotType_PXI1Peripheral | varmex_slotType_PXIePeripheral},
    {"PXIeSystemSlot2Link", varmex_slotType_PXIeSystem},
    {"PXIeSystemSlot4Link", varmex_slotType_PXIeSystem},
    {"PXIeSystemTimingSlot", varmex_slotType_PXIePeripheral | varmex_slotType_SystemTiming},
};

constexpr std::uint32_t kSlotTypePXISystem = varmex_slotType_PXISystem;
constexpr std::uint32_t kSlotTypePXIStarController =
    varmex_slotType_PXI1Peripheral | varmex_slotType_StarController;

// Not the table above: both system slots have one type and different link counts.
struct tLinkCountRow {
  std::string_view text;
  std::uint32_t count;
};

constexpr tLinkCountRow kLinkCounts[] = {
    {"PXIeSystemSlot2Link", 2},
    {"PXIeSystemSlot4Link", 4},
};

// Slots whose local bus stands in the classic file.
constexpr std::uint32_t kClassicTypes =
    varmex_slotType_PXI1Peripheral | varmex_slotType_PXISystem | varmex_slotType_StarController;

constexpr std::uint32_t kNoModule = 0xFFFFFFFF;

constexpr const char* kNeedsPath = "Only non-express PXI slots have slot paths";
constexpr const char* kNeedsSystemSlot = "For the Slot class, only valid for System Slots";

}  // namespace

Slot::Slot(const tSlotPlace& place) : place_(place), lock_(tThrowingStatus<tFixedStatus>()) {}

Slot::Slot(std::uint32_t chassisNumber, std::uint32_t slotNumber, const tDescription& description)
    : Slot(
          tSlotPlace{chassisNumber, slotNumber, slotKey(chassisNumber, slotNumber), &description}) {
  if (!description.firstWith(place_.section)) {
    tFailure(kErrorUnknownItem, OSTREL_HERE)
        .text("type", "slot")
        .u32("slotNum", slotNumber)
        .u32("chassisNum", chassisNumber)
        .raise();
  }
}

std::uint32_t Slot::getU32Attribute(std::uint32_t attribute) const {
  switch (attribute) {
    case varmex_u32_ItemType: return varmex_itemType_Slot;
    case varmex_u32_ChassisNumber: return place_.chassis;
    case varmex_u32_SlotType: return slotType();
    case varmex_u32_PeripheralSlotLinkWidth1: return linkNumber("PeripheralSlotLinkWidth1");
    case varmex_u32_PeripheralSlotLinkWidth2: return linkNumber("PeripheralSlotLinkWidth2");
    case varmex_u32_SystemSlotLinkOrigin1: return linkNumber("SystemSlotLinkOrigin1");
    case varmex_u32_SystemSlotLinkOrigin2: return linkNumber("SystemSlotLinkOrigin2");
    case varmex_u32_TriggerBusNumber: return triggerBus().number;
    case varmex_u32_StarTriggerLine: return starLine().line;
    case varmex_u32_DStarTriggerSet: return dstarSet().line;
    case varmex_u32_SlotNumber: return place_.slot;
    case varmex_u32_StarTriggerNumber: return starTrigger().number;
    case varmex_u32_DStarTriggerNumber: return dstarTrigger().number;
    case varmex_u32_SystemSlotLinkCount: return systemLinkCount();
    case varmex_u32_PCISlotPathRootBus:
      requireType(varmex_slotType_PXI1Peripheral, kNeedsPath);
      return place_.description->pxiSys.getUnsigned(place_.section, "PCISlotPathRootBus");
    case varmex_u32_OccupyingModuleSlot: return occupyingModuleSlot();
    default: raiseAttributeNotApplicable(attribute, OSTREL_HERE);
  }
}

const char* Slot::getStringAttribute(std::uint32_t attribute) const {
  switch (attribute) {
    case varmex_str_PCISlotPath:
      requireType(varmex_slotType_PXI1Peripheral, kNeedsPath);
      return place_.description->pxiSys.getValueText(place_.section, "PCISlotPath");
    case varmex_str_TriggerBusName: return triggerBus().name.c_str();
    case varmex_str_StarTriggerLineName: return starLine().lineName.c_str();
    case varmex_str_DStarTriggerSetName: return dstarSet().lineName.c_str();
    case varmex_str_StarTriggerControllerName: return starController().controllerName.c_str();
    case varmex_str_DStarTriggerControllerName: return dstarController().controllerName.c_str();
    case varmex_str_SystemSlotVendor: return systemSlotText("Vendor");
    case varmex_str_SystemSlotModel: return systemSlotText("Model");
    case varmex_str_SystemSlotInstanceName: return systemSlotText("InstanceName");
    case varmex_str_SystemSlotAddressInfo: return systemSlotText("AddressInfo");
    case varmex_str_TriggerBusStableName: return triggerBus().busName.c_str();
    case varmex_str_LocalBusLeft: return localBusLeft();
    case varmex_str_LocalBusRight: return localBusRight();
    default: raiseAttributeNotApplicable(attribute, OSTREL_HERE);
  }
}

std::unique_ptr<Item> Slot::clone() const { return std::unique_ptr<Item>(new Slot(place_)); }

std::unique_ptr<Item> Slot::openContainingItem(std::uint32_t kind) const {
  return openChassisOrAbove(kind, place_.chassis, *place_.description);
}

bool Slot::lessThan(const Item& other) const {
  if (other.kind() != kind()) return kind() < other.kind();
  const tSlotPlace& place = static_cast<const Slot&>(other).place_;
  if (place_.chassis != place.chassis) return place_.chassis < place.chassis;
  return place_.slot < place.slot;
}

const TriggerBusInfo& Slot::triggerBus() const {
  return triggerBus_.get(lock_, [this] { return findTriggerBus(place_); });
}

const StarTriggerInfo& Slot::starTrigger() const {
  return starTrigger_.get(lock_, [this] { return findStarTrigger(place_); });
}

const StarTriggerInfo& Slot::starLine() const {
  const StarTriggerInfo& star = starTrigger();
  if (star.controller) {
    tFailure(kErrorStarController, OSTREL_HERE)
        .u32("slot_num", place_.slot)
        .u32("chassis_num", place_.chassis)
        .text("trigBusType", "PXI_Star")
        .raise();
  }
  return star;
}

const StarTriggerInfo& Slot::starController() const {
  const StarTriggerInfo& star = starTrigger();
  if (!star.controller) raiseNotConnected(place_, "PXI_Star_Controller", OSTREL_HERE);
  return star;
}

const DStarTriggerInfo& Slot::dstarTrigger() const {
  return dstarTrigger_.get(lock_, [this] { return findDStarTrigger(place_); });
}

// Asks for the line where the star trigger asks for the controller: a slot may be both here.
const DStarTriggerInfo& Slot::dstarSet() const {
  const DStarTriggerInfo& dstar = dstarTrigger();
  if (dstar.line == kNoLine) raiseNotConnected(place_, "PXIe_DStar", OSTREL_HERE);
  return dstar;
}

const DStarTriggerInfo& Slot::dstarController() const {
  const DStarTriggerInfo& dstar = dstarTrigger();
  if (!dstar.controller) raiseNotConnected(place_, "PXIe_DStar_Controller", OSTREL_HERE);
  return dstar;
}

std::uint32_t Slot::slotType() const {
  const tIniFile& pxieSys = place_.description->pxieSys;
  if (pxieSys.hasSection(place_.section)) {
    const char* const text = pxieSys.getValueText(place_.section, "SlotType");
    for (const tSlotTypeRow& row : kSlotTypes) {
      if (row.text == text) return row.type;
    }
    tFailure(kErrorInformationNotAvailable, OSTREL_HERE)
        .debug()
        .text("bad_slot_type", text)
        .raise();
  }
  if (place_.slot == 1) return kSlotTypePXISystem;
  // The second slot controls the star trigger in classic chassis only.
  const bool isClassic = !pxieSys.hasSection(chassisKey(place_.chassis));
  return place_.slot == 2 && isClassic ? kSlotTypePXIStarController
                                       : std::uint32_t{varmex_slotType_PXI1Peripheral};
}

void Slot::requireType(std::uint32_t bits, const char* message) const {
  const std::uint32_t type = slotType();
  if ((type & bits) == bits) return;
  tFailure(kErrorAttributeNotApplicable, OSTREL_HERE)
      .debug()
      .u32("slotNumber", place_.slot)
      .u32("slotType", type)
      .text("message", message)
      .u32("expectedSlotType", bits)
      .raise();
}

// Deliberately one test for all four link items: system slots are refused the link origins that are
// named for them, as they always were.
std::uint32_t Slot::linkNumber(const char* item) const {
  requireType(varmex_slotType_PXIePeripheral, "This attribute requires a PXIe slot");
  return static_cast<std::uint32_t>(place_.description->pxieSys.getNumber(place_.section, item));
}

std::uint32_t Slot::systemLinkCount() const {
  requireType(varmex_slotType_PXIeSystem, "Number of links requires a PXIe system slot");
  const char* const text = place_.description->pxieSys.getValueText(place_.section, "SlotType");
  for (const tLinkCountRow& row : kLinkCounts) {
    if (row.text == text) return row.count;
  }
  tFailure(kErrorInformationNotAvailable, OSTREL_HERE)
      .debug()
      .text("msg", "unable to determine number of controller slot links")
      .text("systemSlotType", text)
      .raise();
}

const char* Slot::systemSlotText(const char* item) const {
  requireType(varmex_slotType_PXIeSystem, kNeedsSystemSlot);
  return place_.description->pxieSys.getValueText(place_.section, item);
}

void Slot::raiseForType(const tErrorCode& code, std::uint32_t type, const char* message,
                        const tSourcePosition& position) const {
  tFailure(code, position)
      .debug()
      .u32("slotNumber", place_.slot)
      .u32("slotType", type)
      .text("message", message)
      .raise();
}

const char* Slot::expressLocalBus(const char* item, std::uint32_t type, const char* message) const {
  const tIniFile& pxieSys = place_.description->pxieSys;
  if (!pxieSys.hasItem(place_.section, item)) {
    raiseForType(kErrorAttributeNotApplicable, type, message, OSTREL_HERE);
  }
  return pxieSys.getValueText(place_.section, item);
}

// A hybrid slot is asked about in the express file, in both local buses.
const char* Slot::localBusLeft() const {
  const std::uint32_t type = slotType();
  if (type & varmex_slotType_PXIeSystem) {
    raiseForType(kErrorAttributeNotApplicable, type, "System slots do not have a LocalBusLeft.",
                 OSTREL_HERE);
  }
  if (type & (varmex_slotType_PXIePeripheral | varmex_slotType_SystemTiming)) {
    return expressLocalBus("LocalBusLeft", type,
                           "LocalBusLeft is not populated for this slot, this pxiesys.ini file may "
                           "have come from an older resource manager");
  }
  if (type & kClassicTypes) {
    return place_.description->pxiSys.getValueText(place_.section, "LocalBusLeft");
  }
  raiseForType(kSoftwareFault, type, "Unknown Slot Type.", OSTREL_HERE);
}

// System slots do have a right neighbour, so they are served here.
const char* Slot::localBusRight() const {
  const std::uint32_t type = slotType();
  if (type & (varmex_slotType_PXIePeripheral | varmex_slotType_PXIeSystem |
              varmex_slotType_SystemTiming)) {
    return expressLocalBus("LocalBusRight", type,
                           "LocalBusRight is not populated for this slot, this pxiesys.ini file "
                           "may have come from an older resource manager");
  }
  if (type & kClassicTypes) {
    return place_.description->pxiSys.getValueText(place_.section, "LocalBusRight");
  }
  raiseForType(kSoftwareFault, type, "Unknown Slot Type.", OSTREL_HERE);
}

std::uint32_t Slot::occupyingModuleSlot() const {
  std::uint32_t module = occupyingModule_.load(std::memory_order_relaxed);
  if (module == 0) {
    const std::lock_guard<tCriticalSection> held(lock_);
    module = occupyingModule_.load(std::memory_order_relaxed);
    if (module == 0) module = findOccupyingModule();
    occupyingModule_.store(module, std::memory_order_relaxed);
  }
  if (module != kNoModule) return module;
  tFailure(kErrorInformationNotAvailable, OSTREL_HERE)
      .debug()
      .text("message", "There is no device occupying this slot")
      .raise();
}

// Only modules of the express file can be wider than one slot.
std::uint32_t Slot::findOccupyingModule() const {
  constexpr const char* kOccupied = "PeripheralModuleOccupiedSlotList";
  const tIniFile& pxieSys = place_.description->pxieSys;
  const std::string chassis = chassisKey(place_.chassis);
  if (!pxieSys.hasItem(chassis, "SlotList")) return kNoModule;
  if (pxieSys.hasItem(place_.section, "AddressInfo")) return place_.slot;
  for (const std::uint32_t number : withoutRepeats(pxieSys.getNumberList(chassis, "SlotList"))) {
    const tSlotName section = slotKey(place_.chassis, number);
    if (!pxieSys.hasItem(section, kOccupied)) continue;
    const auto covered = pxieSys.getNumberList(section, kOccupied);
    if (std::find(covered.begin(), covered.end(), place_.slot) != covered.end()) return number;
  }
  return kNoModule;
}

}  // namespace varmex
