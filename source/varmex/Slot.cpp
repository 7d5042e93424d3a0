#include "source/varmex/Slot.h"

#include <algorithm>
#include <string_view>

#include "source/varmex/Chassis.h"
#include "source/varmex/slotTypes.h"

namespace varmex {

namespace {

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

constexpr tLiteral kNeedsPath = "Only non-express PXI slots have slot paths";
constexpr tLiteral kNeedsSystemSlot = "For the Slot class, only valid for System Slots";

template <class Record, class Value>
tResult<Value> valueOf(const tResult<const Record*>& record, Value Record::*member) {
  if (!record) return record.refusal();
  return (*record)->*member;
}

template <class Record, class Base>
tResult<const char*> textOf(const tResult<const Record*>& record, std::string Base::*text) {
  if (!record) return record.refusal();
  return ((*record)->*text).c_str();
}

// Which slots the modules of a chassis cover.
tSlotTable<std::uint32_t> readModules(const tIniFile& pxieSys, const tIniSection& chassis,
                                      std::uint32_t chassisNumber) {
  tSlotTable<std::uint32_t> table;
  const auto slots = listedOnce(pxieSys, tIniPlace(chassis), "SlotList");
  if (!slots) return endedBy(table, slots.refusal());
  for (const std::uint32_t slot : *slots) {
    const tIniSection* const section = pxieSys.findSection(slotKey(chassisNumber, slot));
    const tIniItem* const list = pxieSys.findItem(section, "PeripheralModuleOccupiedSlotList");
    if (!list) continue;
    const auto covered = tIniFile::numbersOf(*section, *list);
    if (!covered) return endedBy(table, covered.refusal());
    for (const std::uint32_t number : *covered) table.matches.insert(number, slot);
  }
  return table;
}

}  // namespace

Slot::Slot(const tSlotPlace& place) : place_(place) {}

tResult<tSlotPlace> Slot::find(std::uint32_t chassisNumber, std::uint32_t slotNumber,
                               const tDescription& description, const tSectionPair& earlier) {
  const tShortName chassis = chassisKey(chassisNumber);
  const tSectionPair sections = description.sections({chassis, "Slot", slotNumber}, earlier);
  if (sections) return tSlotPlace{chassisNumber, slotNumber, sections, &description};
  return tRefusal(kErrorUnknownItem, OSTREL_HERE)
      .text("type", "slot")
      .u32("slotNum", slotNumber)
      .u32("chassisNum", chassisNumber);
}

tResult<std::uint32_t> Slot::getU32Attribute(std::uint32_t attribute) const {
  switch (attribute) {
    case varmex_u32_ItemType: return varmex_itemType_Slot;
    case varmex_u32_ChassisNumber: return place_.chassis;
    case varmex_u32_SlotType: return slotType();
    case varmex_u32_PeripheralSlotLinkWidth1: return linkNumber("PeripheralSlotLinkWidth1");
    case varmex_u32_PeripheralSlotLinkWidth2: return linkNumber("PeripheralSlotLinkWidth2");
    case varmex_u32_SystemSlotLinkOrigin1: return linkNumber("SystemSlotLinkOrigin1");
    case varmex_u32_SystemSlotLinkOrigin2: return linkNumber("SystemSlotLinkOrigin2");
    case varmex_u32_TriggerBusNumber: return valueOf(triggerBus(), &TriggerBusInfo::number);
    case varmex_u32_StarTriggerLine: return valueOf(starLine(), &tStarMatch::line);
    case varmex_u32_DStarTriggerSet: return valueOf(dstarSet(), &tStarMatch::line);
    case varmex_u32_SlotNumber: return place_.slot;
    case varmex_u32_StarTriggerNumber: return valueOf(findStarTrigger(place_), &tStarMatch::number);
    case varmex_u32_DStarTriggerNumber:
      return valueOf(findDStarTrigger(place_), &tStarMatch::number);
    case varmex_u32_SystemSlotLinkCount: return systemLinkCount();
    case varmex_u32_PCISlotPathRootBus: return rootBus();
    case varmex_u32_OccupyingModuleSlot: return occupyingModuleSlot();
    default: return attributeNotApplicable(attribute, OSTREL_HERE);
  }
}

tResult<const char*> Slot::getStringAttribute(std::uint32_t attribute) const {
  switch (attribute) {
    case varmex_str_PCISlotPath: return slotPath();
    case varmex_str_TriggerBusName: return textOf(triggerBus(), &TriggerBusInfo::name);
    case varmex_str_StarTriggerLineName:
      return textOf(starNames(starLine()), &tStarNames::lineName);
    case varmex_str_DStarTriggerSetName:
      return textOf(dstarNames(dstarSet()), &tStarNames::lineName);
    case varmex_str_StarTriggerControllerName:
      return textOf(starNames(starController()), &tStarNames::controllerName);
    case varmex_str_DStarTriggerControllerName:
      return textOf(dstarNames(dstarController()), &tStarNames::controllerName);
    case varmex_str_SystemSlotVendor: return systemSlotText("Vendor");
    case varmex_str_SystemSlotModel: return systemSlotText("Model");
    case varmex_str_SystemSlotInstanceName: return systemSlotText("InstanceName");
    case varmex_str_SystemSlotAddressInfo: return systemSlotText("AddressInfo");
    case varmex_str_TriggerBusStableName: return textOf(triggerBus(), &TriggerBusInfo::busName);
    case varmex_str_LocalBusLeft: return localBusLeft();
    case varmex_str_LocalBusRight: return localBusRight();
    default: return attributeNotApplicable(attribute, OSTREL_HERE);
  }
}

tResult<std::unique_ptr<Item>> Slot::clone() const { return std::make_unique<Slot>(place_); }

tResult<std::unique_ptr<Item>> Slot::openContainingItem(std::uint32_t kind) const {
  return openChassisOrAbove(kind, place_.chassis, *place_.description);
}

bool Slot::isLess(const tRecord& a, const tRecord& b) {
  return a.chassis != b.chassis ? a.chassis < b.chassis : a.slot < b.slot;
}

bool Slot::lessThan(const Item& other) const {
  if (other.kind() != kKind) return kKind < other.kind();
  return isLess(place_, static_cast<const Slot&>(other).place_);
}

tResult<const TriggerBusInfo*> Slot::triggerBus() const {
  return triggerBus_.get([this] {
    return findTriggerBus(place_).then(
        [this](std::uint32_t bus) { return nameTriggerBus(place_, bus); });
  });
}

tResult<const tStarMatch*> Slot::starLine() const {
  auto star = findStarTrigger(place_);
  if (!star || !(*star)->isController) return star;
  return tRefusal(kErrorStarController, OSTREL_HERE)
      .u32("slot_num", place_.slot)
      .u32("chassis_num", place_.chassis)
      .text("trigBusType", "PXI_Star");
}

tResult<const tStarMatch*> Slot::starController() const {
  auto star = findStarTrigger(place_);
  if (!star || (*star)->isController) return star;
  return notConnected(place_, "PXI_Star_Controller", OSTREL_HERE);
}

// Asks for the line where the star trigger asks for the controller: a slot may be both here.
tResult<const tStarMatch*> Slot::dstarSet() const {
  auto dstar = findDStarTrigger(place_);
  if (!dstar || (*dstar)->line != kNoLine) return dstar;
  return notConnected(place_, "PXIe_DStar", OSTREL_HERE);
}

tResult<const tStarMatch*> Slot::dstarController() const {
  auto dstar = findDStarTrigger(place_);
  if (!dstar || (*dstar)->isController) return dstar;
  return notConnected(place_, "PXIe_DStar_Controller", OSTREL_HERE);
}

tResult<const StarTriggerInfo*> Slot::starNames(const tResult<const tStarMatch*>& star) const {
  if (!star) return star.refusal();
  return starNames_.get([&] { return nameStarTrigger(place_, **star); });
}

tResult<const DStarTriggerInfo*> Slot::dstarNames(const tResult<const tStarMatch*>& dstar) const {
  if (!dstar) return dstar.refusal();
  return dstarNames_.get([&] { return nameDStarTrigger(place_, **dstar); });
}

tIniPlace Slot::placeOf(const tIniSection* section) const {
  return section ? tIniPlace(*section) : tIniPlace(slotKey(place_.chassis, place_.slot));
}

tResult<std::uint32_t> Slot::slotType() const {
  const tIniFile& pxieSys = place_.description->pxieSys;
  if (place_.sections.express) {
    const auto text = pxieSys.getValueText(expressPlace(), "SlotType");
    if (!text) return text.refusal();
    if (const std::uint32_t type = slotTypeNamed(*text)) return type;
    return tRefusal(kErrorInformationNotAvailable, OSTREL_HERE)
        .debug()
        .text("bad_slot_type", *text);
  }
  if (place_.slot == 1) return kSlotTypePXISystem;
  // The second slot controls the star trigger in classic chassis only.
  const bool isClassic = place_.slot == 2 && !pxieSys.hasSection(chassisKey(place_.chassis));
  return isClassic ? kSlotTypePXIStarController : std::uint32_t{varmex_slotType_PXI1Peripheral};
}

tResult<> Slot::requireType(std::uint32_t bits, tLiteral message) const {
  const auto type = slotType();
  if (!type) return type.refusal();
  if ((*type & bits) == bits) return kDone;
  return tRefusal(kErrorAttributeNotApplicable, OSTREL_HERE)
      .debug()
      .u32("slotNumber", place_.slot)
      .u32("slotType", *type)
      .text("message", message)
      .u32("expectedSlotType", bits);
}

// Deliberately one test for all four link items: system slots are refused the link origins that are
// named for them, as they always were.
tResult<std::uint32_t> Slot::linkNumber(tLiteral item) const {
  const auto fits =
      requireType(varmex_slotType_PXIePeripheral, "This attribute requires a PXIe slot");
  if (!fits) return fits.refusal();
  return asUnsigned(place_.description->pxieSys.getNumber(expressPlace(), item));
}

tResult<std::uint32_t> Slot::systemLinkCount() const {
  const auto fits =
      requireType(varmex_slotType_PXIeSystem, "Number of links requires a PXIe system slot");
  if (!fits) return fits.refusal();
  const auto text = place_.description->pxieSys.getValueText(expressPlace(), "SlotType");
  if (!text) return text.refusal();
  for (const tLinkCountRow& row : kLinkCounts) {
    if (row.text == *text) return row.count;
  }
  return tRefusal(kErrorInformationNotAvailable, OSTREL_HERE)
      .debug()
      .text("msg", "unable to determine number of controller slot links")
      .text("systemSlotType", *text);
}

tResult<std::uint32_t> Slot::rootBus() const {
  const auto fits = requireType(varmex_slotType_PXI1Peripheral, kNeedsPath);
  if (!fits) return fits.refusal();
  return place_.description->pxiSys.getUnsigned(classicPlace(), "PCISlotPathRootBus");
}

tResult<const char*> Slot::slotPath() const {
  const auto fits = requireType(varmex_slotType_PXI1Peripheral, kNeedsPath);
  if (!fits) return fits.refusal();
  return place_.description->pxiSys.getValueText(classicPlace(), "PCISlotPath");
}

tResult<const char*> Slot::systemSlotText(tLiteral item) const {
  const auto fits = requireType(varmex_slotType_PXIeSystem, kNeedsSystemSlot);
  if (!fits) return fits.refusal();
  return place_.description->pxieSys.getValueText(expressPlace(), item);
}

tRefusal Slot::refusedForType(const tErrorCode& code, std::uint32_t type, tLiteral message,
                              const tSourcePosition& position) const {
  return tRefusal(code, position)
      .debug()
      .u32("slotNumber", place_.slot)
      .u32("slotType", type)
      .text("message", message);
}

tResult<const char*> Slot::expressLocalBus(tLiteral item, std::uint32_t type,
                                           tLiteral message) const {
  const tIniFile& pxieSys = place_.description->pxieSys;
  if (const char* const text = pxieSys.findValueText(place_.sections.express, item)) return text;
  return refusedForType(kErrorAttributeNotApplicable, type, message, OSTREL_HERE);
}

// A hybrid slot is asked about in the express file, in both local buses.
tResult<const char*> Slot::localBusLeft() const {
  const auto type = slotType();
  if (!type) return type.refusal();
  if (*type & varmex_slotType_PXIeSystem) {
    return refusedForType(kErrorAttributeNotApplicable, *type,
                          "System slots do not have a LocalBusLeft.", OSTREL_HERE);
  }
  if (*type & (varmex_slotType_PXIePeripheral | varmex_slotType_SystemTiming)) {
    return expressLocalBus("LocalBusLeft", *type,
                           "LocalBusLeft is not populated for this slot, this pxiesys.ini file may "
                           "have come from an older resource manager");
  }
  if (*type & kClassicTypes) {
    return place_.description->pxiSys.getValueText(classicPlace(), "LocalBusLeft");
  }
  return refusedForType(kSoftwareFault, *type, "Unknown Slot Type.", OSTREL_HERE);
}

// System slots do have a right neighbour, so they are served here.
tResult<const char*> Slot::localBusRight() const {
  const auto type = slotType();
  if (!type) return type.refusal();
  if (*type & (varmex_slotType_PXIePeripheral | varmex_slotType_PXIeSystem |
               varmex_slotType_SystemTiming)) {
    return expressLocalBus("LocalBusRight", *type,
                           "LocalBusRight is not populated for this slot, this pxiesys.ini file "
                           "may have come from an older resource manager");
  }
  if (*type & kClassicTypes) {
    return place_.description->pxiSys.getValueText(classicPlace(), "LocalBusRight");
  }
  return refusedForType(kSoftwareFault, *type, "Unknown Slot Type.", OSTREL_HERE);
}

tResult<std::uint32_t> Slot::occupyingModuleSlot() const {
  std::uint32_t module = occupyingModule_.load(std::memory_order_relaxed);
  if (module == 0) {
    const auto found = findOccupyingModule();
    if (!found) return found.refusal();
    module = *found;
    occupyingModule_.store(module, std::memory_order_relaxed);
  }
  if (module != kNoModule) return module;
  return tRefusal(kErrorInformationNotAvailable, OSTREL_HERE)
      .debug()
      .text("message", "There is no device occupying this slot");
}

// Only modules of the express file can be wider than one slot.
tResult<std::uint32_t> Slot::findOccupyingModule() const {
  const tIniFile& pxieSys = place_.description->pxieSys;
  const tIniSection* const chassis = pxieSys.findSection(chassisKey(place_.chassis));
  if (!pxieSys.hasItem(chassis, "SlotList")) return kNoModule;
  if (pxieSys.hasItem(place_.sections.express, "AddressInfo")) return place_.slot;
  const auto& modules = place_.description->tablesOf(place_.chassis).modules.get([&] {
    return readModules(pxieSys, *chassis, place_.chassis);
  });
  if (const std::uint32_t* const module = modules.find(place_.slot)) return *module;
  if (modules.end) return *modules.end;
  return kNoModule;
}

}  // namespace varmex
