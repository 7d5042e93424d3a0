#include "source/varmex/slotTriggers.h"

#include <algorithm>

#include "corpxiTools/fileSystem/registryKey.h"
#include "source/varmex/Chassis.h"

namespace varmex {

namespace {

constexpr const char* kTriggerBus = "PXI_Trig";
constexpr const char* kStar = "PXI_Star";
constexpr const char* kDStar = "PXIe_DStar";

// One line more than a star trigger of today has; descriptions may use it.
constexpr std::uint32_t kLastStarLine = 16;

[[noreturn]] void raiseNothingFound(const tSlotPlace& place, const char* message,
                                    const char* triggerType, const tSourcePosition& position) {
  tFailure(kErrorNotConnected, position)
      .debug()
      .text("debug_msg", message)
      .u32("slot_num", place.slot)
      .u32("chassis_num", place.chassis)
      .text("trigBusType", triggerType)
      .raise();
}

[[noreturn]] void raiseNoList(const char* message, const char* triggerType,
                              const tSourcePosition& position) {
  tFailure(kErrorNotConnected, position)
      .debug()
      .text("message", message)
      .text("trigBusType", triggerType)
      .raise();
}

bool holds(const std::vector<std::uint32_t>& numbers, std::uint32_t number) {
  return std::find(numbers.begin(), numbers.end(), number) != numbers.end();
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

std::string chassisIdentity(const tSlotPlace& place) {
  const Chassis chassis(place.chassis, *place.description);
  return chassis.getStringAttribute(varmex_str_ChassisIdentity);
}

std::string triggerBusName(const tSlotPlace& place, const std::string& bus) {
  const std::string identity = chassisIdentity(place);
  if (usesStableBusNames()) return identity + "/TriggerBus" + bus;
  return "PXIChassis" + std::to_string(place.chassis) + "TriggerBus" + bus;
}

// Fills in the names of a place on the trigger that `family` and the number name.
template <class Info>
std::unique_ptr<const Info> makeStarInfo(const tSlotPlace& place, const char* family,
                                         const char* lineWord, tStarPlace found) {
  const std::string trigger = chassisIdentity(place) + '/' + family + std::to_string(found.number);
  if (found.line != kNoLine) found.lineName = trigger + lineWord + std::to_string(found.line);
  if (found.controller) found.controllerName = trigger + "Controller";
  return std::make_unique<const Info>(Info{std::move(found)});
}

std::unique_ptr<const StarTriggerInfo> makeStar(const tSlotPlace& place, std::uint32_t number,
                                                std::uint32_t line, bool controller) {
  return makeStarInfo<StarTriggerInfo>(place, "StarTrigger", "Line",
                                       {number, line, controller, {}, {}});
}

std::unique_ptr<const DStarTriggerInfo> makeDStar(const tSlotPlace& place, std::uint32_t number,
                                                  std::uint32_t line, bool controller) {
  return makeStarInfo<DStarTriggerInfo>(place, "DStarTrigger", "Set",
                                        {number, line, controller, {}, {}});
}

bool namesSlot(const tIniFile& file, const std::string& section, const std::string& item,
               const tSlotPlace& place) {
  return static_cast<std::uint32_t>(file.getNumber(section, item)) == place.slot;
}

// Of two accepted names the first that exists, else the first.
template <class Exists>
std::string preferredName(std::string first, std::string second, Exists exists) {
  if (!exists(first) && exists(second)) return second;
  return first;
}

// The names that a differential star set goes by, in the spellings of two generations of writers.
// The preferred controller name is the one without "Star", the preferred line name the one with it.
class tDStarSection {
 public:
  tDStarSection(const tIniFile& file, const std::string& chassis, std::uint32_t number)
      : file_(file),
        name_(preferredName(chassis + "StarSystemTimingSets" + std::to_string(number),
                            chassis + "StarSystemTimingSet" + std::to_string(number),
                            [&](const std::string& name) { return file.hasSection(name); })),
        controller_(preferredItem("SystemTimingSlot", "StarSystemTimingSlot")) {}

  bool hasLineTo(std::uint32_t line, const tSlotPlace& place) const {
    const std::string number = std::to_string(line);
    return names(preferredItem("StarSystemTimingSet" + number, "SystemTimingSet" + number), place);
  }

  bool hasController(const tSlotPlace& place) const { return names(controller_, place); }

 private:
  std::string preferredItem(std::string first, std::string second) const {
    return preferredName(std::move(first), std::move(second),
                         [&](const std::string& item) { return file_.hasItem(name_, item); });
  }

  bool names(const std::string& item, const tSlotPlace& place) const {
    return file_.hasItem(name_, item) && namesSlot(file_, name_, item, place);
  }

  const tIniFile& file_;
  std::string name_;
  std::string controller_;
};

}  // namespace

void raiseNotConnected(const tSlotPlace& place, const char* triggerType,
                       const tSourcePosition& position) {
  tFailure(kErrorNotConnected, position)
      .debug()
      .u32("slot_num", place.slot)
      .u32("chassis_num", place.chassis)
      .text("trigBusType", triggerType)
      .raise();
}

// Reads the file that describes the slot. A description without a bus list is incomplete, and the
// reader's own exception says so.
std::unique_ptr<const TriggerBusInfo> findTriggerBus(const tSlotPlace& place) {
  const tDescription& description = *place.description;
  const tIniFile& file =
      description.pxieSys.hasSection(place.section) ? description.pxieSys : description.pxiSys;
  const std::string chassis = chassisKey(place.chassis);
  for (const std::uint32_t number : withoutRepeats(file.getNumberList(chassis, "TriggerBusList"))) {
    const std::string bus = std::to_string(number);
    const std::string section = chassis + "TriggerBus" + bus;
    if (!file.hasSection(section)) continue;
    if (!holds(file.getNumberList(section, "SlotList"), place.slot)) continue;
    return std::make_unique<const TriggerBusInfo>(
        TriggerBusInfo{number, "TriggerBus" + bus, triggerBusName(place, bus)});
  }
  raiseNothingFound(place, "Could not find trigger bus information for slot", kTriggerBus,
                    OSTREL_HERE);
}

// Reads the file that describes the chassis, PXI Express first. A trigger must name its controller,
// even if the slot would be found on a later trigger; and a slot that is both on a line and the
// controller of one trigger is reported on its line alone.
std::unique_ptr<const StarTriggerInfo> findStarTrigger(const tSlotPlace& place) {
  const tDescription& description = *place.description;
  const std::string chassis = chassisKey(place.chassis);
  const bool isExpress = description.pxieSys.hasSection(chassis);
  const tIniFile& file = isExpress ? description.pxieSys : description.pxiSys;
  const char* const controller = isExpress ? "SystemTimingSlot" : "ControllerSlot";
  if (!file.hasItem(chassis, "StarTriggerList")) {
    raiseNoList("StarTriggerList item doesn't exist", kStar, OSTREL_HERE);
  }
  for (const std::uint32_t number :
       withoutRepeats(file.getNumberList(chassis, "StarTriggerList"))) {
    const std::string section = chassis + "StarTrigger" + std::to_string(number);
    if (!file.hasSection(section)) continue;
    for (std::uint32_t line = 0; line <= kLastStarLine; ++line) {
      const std::string item = "PXI_STAR" + std::to_string(line);
      if (file.hasItem(section, item) && namesSlot(file, section, item, place)) {
        return makeStar(place, number, line, false);
      }
    }
    if (namesSlot(file, section, controller, place)) return makeStar(place, number, kNoLine, true);
  }
  raiseNothingFound(place, "Could not find star trigger bus information for slot", kStar,
                    OSTREL_HERE);
}

// Reads the PXI Express file alone. A set without a controller is passed over, and a slot that is
// both on a line and the controller of one set is reported as both.
std::unique_ptr<const DStarTriggerInfo> findDStarTrigger(const tSlotPlace& place) {
  const tIniFile& file = place.description->pxieSys;
  const std::string chassis = chassisKey(place.chassis);
  if (!file.hasItem(chassis, "StarSystemTimingSetList")) {
    raiseNoList("This slot isn't connected to DStar", kDStar, OSTREL_HERE);
  }
  for (const std::uint32_t number :
       withoutRepeats(file.getNumberList(chassis, "StarSystemTimingSetList"))) {
    const tDStarSection section(file, chassis, number);
    for (std::uint32_t line = 0; line <= kLastStarLine; ++line) {
      if (!section.hasLineTo(line, place)) continue;
      return makeDStar(place, number, line, section.hasController(place));
    }
    if (section.hasController(place)) return makeDStar(place, number, kNoLine, true);
  }
  raiseNothingFound(place, "Could not find dstar trigger bus information for slot", kDStar,
                    OSTREL_HERE);
}

}  // namespace varmex
