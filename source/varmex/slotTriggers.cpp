#include "source/varmex/slotTriggers.h"

#include "corpxiTools/fileSystem/registryKey.h"
#include "source/varmex/Chassis.h"

namespace varmex {

namespace {

constexpr tLiteral kTriggerBus = "PXI_Trig";
constexpr tLiteral kStar = "PXI_Star";
constexpr tLiteral kDStar = "PXIe_DStar";

constexpr tLiteral kControllerSlot = "ControllerSlot";      // in the classic file
constexpr tLiteral kSystemTimingSlot = "SystemTimingSlot";  // in the express file

// One line more than a star trigger of today has; descriptions may use it.
constexpr std::uint32_t kLastStarLine = 16;

tRefusal nothingFound(const tSlotPlace& place, tLiteral message, tLiteral triggerType,
                      const tSourcePosition& position) {
  return tRefusal(kErrorNotConnected, position)
      .debug()
      .text("debug_msg", message)
      .u32("slot_num", place.slot)
      .u32("chassis_num", place.chassis)
      .text("trigBusType", triggerType);
}

tRefusal noList(tLiteral message, tLiteral triggerType, const tSourcePosition& position) {
  return tRefusal(kErrorNotConnected, position)
      .debug()
      .text("message", message)
      .text("trigBusType", triggerType);
}

// Always asked of the 32-bit view, whose key the driver's installer writes. A value of any type
// counts by its first four bytes; none counts as 0.
bool usesStableBusNames() {
  tRegistryKey key;
  if (key.open(tRegistryRoot::localMachine, "SOFTWARE\\Corvane\\COR-VARMEX",
               tRegistryView::bits32) != 0) {
    return false;
  }
  std::uint32_t flag = 0;
  std::uint32_t type = 0;
  std::uint32_t size = sizeof flag;
  return key.queryValue("PXITrigUseStableBusNameFormat", type, &flag, size) == 0 && flag > 0;
}

// What a match comes to. A place on a trigger bears the name of its chassis, so there is none where
// the chassis's identity can't be formed.
tResult<const tStarMatch*> matched(const tSlotPlace& place, const tStarMatch& match) {
  const auto& identity = identityOf(place.chassis, *place.description);
  if (!identity) return identity.refusal();
  return &match;
}

// Fills in the names of a place on the trigger that `family` and the number name.
template <class Info>
tResult<Info> starNames(const tSlotPlace& place, const char* family, const char* lineWord,
                        const tStarMatch& match) {
  const auto& identity = identityOf(place.chassis, *place.description);
  if (!identity) return identity.refusal();
  const std::string trigger = *identity + '/' + family + std::to_string(match.number);
  Info names;
  if (match.line != kNoLine) names.lineName = trigger + lineWord + std::to_string(match.line);
  if (match.isController) names.controllerName = trigger + "Controller";
  return names;
}

// A description without a bus list is incomplete, and the reader's own refusal says so.
tSlotTable<std::uint32_t> readTriggerBuses(const tIniFile& file, std::uint32_t chassis) {
  tSlotTable<std::uint32_t> table;
  const tShortName owner = chassisKey(chassis);
  const auto numbers = listedOnce(file, file.placeOf(owner), "TriggerBusList");
  if (!numbers) return endedBy(table, numbers.refusal());
  for (const std::uint32_t number : *numbers) {
    const tIniPlace bus = file.placeOf(chassisKey(chassis, "TriggerBus", number));
    if (!bus.found) continue;
    const auto slots = file.getNumberList(bus, "SlotList");
    if (!slots) return endedBy(table, slots.refusal());
    for (const std::uint32_t slot : *slots) table.matches.insert(slot, number);
  }
  return table;
}

tResult<std::uint32_t> slotNamedBy(const tIniSection& section, const tIniItem& item) {
  return asUnsigned(tIniFile::numberOf(section, item));
}

// A trigger must name its controller, even if the slot would be found on a later trigger; and a
// slot that is both on a line and the controller of one trigger is reported on its line alone.
tStarTable readStarTriggers(const tIniFile& file, std::uint32_t chassis, bool isExpress) {
  tStarTable table;
  const tIniPlace owner = file.placeOf(chassisKey(chassis));
  table.hasList = file.hasItem(owner.found, "StarTriggerList");
  if (!table.hasList) return table;
  const auto numbers = listedOnce(file, owner, "StarTriggerList");
  if (!numbers) return endedBy(table, numbers.refusal());
  for (const std::uint32_t number : *numbers) {
    const tIniPlace trigger = file.placeOf(chassisKey(chassis, "StarTrigger", number));
    if (!trigger.found) continue;
    for (std::uint32_t line = 0; line <= kLastStarLine; ++line) {
      const tIniItem* const item = file.findItem(trigger.found, tShortName("PXI_STAR", line));
      if (!item) continue;
      const auto slot = slotNamedBy(*trigger.found, *item);
      if (!slot) return endedBy(table, slot.refusal());
      table.matches.insert(*slot, {number, line, false, false});
    }
    const auto controller =
        asUnsigned(file.getNumber(trigger, isExpress ? kSystemTimingSlot : kControllerSlot));
    if (!controller) return endedBy(table, controller.refusal());
    table.matches.insert(*controller, {number, kNoLine, true, false});
  }
  return table;
}

// Of two accepted names what goes by the first, else what goes by the second. The preferred
// controller name is the one without "Star", the preferred line name the one with it; writers of
// two generations are behind that.
const tIniItem* eitherItem(const tIniFile& file, const tIniSection* section, std::string_view first,
                           std::string_view second) {
  const tIniItem* const found = file.findItem(section, first);
  return found ? found : file.findItem(section, second);
}

const tIniSection* dstarSection(const tIniFile& file, std::uint32_t chassis, std::uint32_t set) {
  const tIniSection* const found =
      file.findSection(chassisKey(chassis, "StarSystemTimingSets", set));
  return found ? found : file.findSection(chassisKey(chassis, "StarSystemTimingSet", set));
}

// A set without a controller is passed over, and a slot that is both on a line and the controller
// of one set is reported as both.
tStarTable readDStarSets(const tIniFile& file, std::uint32_t chassis) {
  tStarTable table;
  const tIniPlace owner = file.placeOf(chassisKey(chassis));
  table.hasList = file.hasItem(owner.found, "StarSystemTimingSetList");
  if (!table.hasList) return table;
  const auto numbers = listedOnce(file, owner, "StarSystemTimingSetList");
  if (!numbers) return endedBy(table, numbers.refusal());
  for (const std::uint32_t number : *numbers) {
    const tIniSection* const section = dstarSection(file, chassis, number);
    if (!section) continue;
    const tIniItem* const item =
        eitherItem(file, section, "SystemTimingSlot", "StarSystemTimingSlot");
    const auto controller = item ? slotNamedBy(*section, *item) : tResult<std::uint32_t>(0U);
    if (!controller) table.refusedControllers.insert(number, controller.refusal());
    for (std::uint32_t line = 0; line <= kLastStarLine; ++line) {
      const tIniItem* const lineItem =
          eitherItem(file, section, tShortName("StarSystemTimingSet", line),
                     tShortName("SystemTimingSet", line));
      if (!lineItem) continue;
      const auto slot = slotNamedBy(*section, *lineItem);
      if (!slot) return endedBy(table, slot.refusal());
      const bool isController = item && controller && *controller == *slot;
      table.matches.insert(*slot, {number, line, isController, !controller});
    }
    if (!controller) return endedBy(table, controller.refusal());
    if (item) table.matches.insert(*controller, {number, kNoLine, true, false});
  }
  return table;
}

}  // namespace

tRefusal notConnected(const tSlotPlace& place, tLiteral triggerType,
                      const tSourcePosition& position) {
  return tRefusal(kErrorNotConnected, position)
      .debug()
      .u32("slot_num", place.slot)
      .u32("chassis_num", place.chassis)
      .text("trigBusType", triggerType);
}

// Asks the file that describes the slot.
tResult<std::uint32_t> findTriggerBus(const tSlotPlace& place) {
  const tDescription& description = *place.description;
  const bool isExpress = place.sections.express != nullptr;
  const tChassisTables& tables = description.tablesOf(place.chassis);
  const auto& buses = (isExpress ? tables.expressBuses : tables.classicBuses).get([&] {
    return readTriggerBuses(isExpress ? description.pxieSys : description.pxiSys, place.chassis);
  });
  if (const std::uint32_t* const bus = buses.find(place.slot)) return *bus;
  if (buses.end) return *buses.end;
  return nothingFound(place, "Could not find trigger bus information for slot", kTriggerBus,
                      OSTREL_HERE);
}

// Asks the file that describes the chassis, PXI Express first.
tResult<const tStarMatch*> findStarTrigger(const tSlotPlace& place) {
  const tDescription& description = *place.description;
  const tStarTable& stars = description.tablesOf(place.chassis).stars.get([&] {
    const bool isExpress = description.pxieSys.hasSection(chassisKey(place.chassis));
    return readStarTriggers(isExpress ? description.pxieSys : description.pxiSys, place.chassis,
                            isExpress);
  });
  if (const tStarMatch* const star = stars.find(place.slot)) return matched(place, *star);
  if (!stars.hasList) return noList("StarTriggerList item doesn't exist", kStar, OSTREL_HERE);
  if (stars.end) return *stars.end;
  return nothingFound(place, "Could not find star trigger bus information for slot", kStar,
                      OSTREL_HERE);
}

// Asks the PXI Express file alone.
tResult<const tStarMatch*> findDStarTrigger(const tSlotPlace& place) {
  const tIniFile& file = place.description->pxieSys;
  const tStarTable& dstars = place.description->tablesOf(place.chassis).dstars.get([&] {
    return readDStarSets(file, place.chassis);
  });
  const tStarMatch* const dstar = dstars.find(place.slot);
  if (dstar && dstar->isRefused) return *dstars.refusedControllers.find(dstar->number);
  if (dstar) return matched(place, *dstar);
  if (!dstars.hasList) return noList("This slot isn't connected to DStar", kDStar, OSTREL_HERE);
  if (dstars.end) return *dstars.end;
  return nothingFound(place, "Could not find dstar trigger bus information for slot", kDStar,
                      OSTREL_HERE);
}

tResult<TriggerBusInfo> nameTriggerBus(const tSlotPlace& place, std::uint32_t bus) {
  const auto& identity = identityOf(place.chassis, *place.description);
  if (!identity) return identity.refusal();
  const std::string number = std::to_string(bus);
  return TriggerBusInfo{bus, "TriggerBus" + number,
                        usesStableBusNames()
                            ? *identity + "/TriggerBus" + number
                            : "PXIChassis" + std::to_string(place.chassis) + "TriggerBus" + number};
}

tResult<StarTriggerInfo> nameStarTrigger(const tSlotPlace& place, const tStarMatch& match) {
  return starNames<StarTriggerInfo>(place, "StarTrigger", "Line", match);
}

tResult<DStarTriggerInfo> nameDStarTrigger(const tSlotPlace& place, const tStarMatch& match) {
  return starNames<DStarTriggerInfo>(place, "DStarTrigger", "Set", match);
}

}  // namespace varmex
