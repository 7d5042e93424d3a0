#include "source/varmex/DeviceMap.h"

#include <charconv>

#include "source/varmex/deviceReadings.h"
#include "source/varmex/errorCodes.h"

namespace varmex {

namespace {

// Calls `take(chassis, slot, section)` for each slot that the chassis list.
template <class Take>
void forEachSlot(const tIniFile& file, const std::vector<std::uint32_t>& chassisNumbers,
                 Take take) {
  std::string section;  // one text for all, so that its space is there
  for (const std::uint32_t chassis : withoutRepeats(chassisNumbers)) {
    const std::string owner = chassisKey(chassis);
    for (const std::uint32_t slot : withoutRepeats(file.getNumberList(owner, "SlotList"))) {
      char number[16];
      const char* const end = std::to_chars(number, number + sizeof number, slot).ptr;
      section.assign(owner).append("Slot").append(number, static_cast<std::size_t>(end - number));
      take(chassis, slot, section);
    }
  }
}

}  // namespace

// The controller's own devices are no modules: slot 1 is left out here, and only here.
void DeviceMap::enterClassic(const tIniFile& pxiSys,
                             const std::vector<std::uint32_t>& chassisNumbers) {
  std::vector<tDeviceAddress> addresses;
  forEachSlot(pxiSys, chassisNumbers, [&](auto chassis, auto slot, const std::string& section) {
    if (slot == 1 || !pxiSys.hasSection(section)) return;
    addresses.clear();
    walkSlotFunctions(pxiSys, section, addresses);
    enter(addresses, {chassis, slot, 0});
  });
}

void DeviceMap::enterExpress(const tIniFile& pxieSys,
                             const std::vector<std::uint32_t>& chassisNumbers) {
  std::vector<tDeviceAddress> addresses;
  forEachSlot(pxieSys, chassisNumbers, [&](auto chassis, auto slot, const std::string& section) {
    const char* const names = pxieSys.findValueText(section, "AddressInfo");
    if (!names) return;
    addresses.clear();
    parseResourceNames(names, addresses);
    enter(addresses, {chassis, slot, 1});
  });
}

void DeviceMap::enter(const std::vector<tDeviceAddress>& addresses, const tDevicePlace& place) {
  for (const tDeviceAddress& address : addresses) {
    // Descriptions list buses in ascending order, mostly.
    const auto entry =
        places_.try_emplace(places_.end(), std::pair(address.bus, address.device), place);
    const tDevicePlace& existing = entry->second;
    if (existing == place) continue;
    tFailure(kErrorInformationConflict, OSTREL_HERE)
        .u32("existingChassis", existing.chassis)
        .u32("existingSlot", existing.slot)
        .u32("chassis", place.chassis)
        .u32("slot", place.slot)
        .i32("bus", static_cast<std::int32_t>(address.bus))
        .i32("dev", static_cast<std::int32_t>(address.device))
        .debug()
        .text("description", "Conflicting chassis/slot information was found  for a device")
        .raise();
  }
}

const tDevicePlace& DeviceMap::find(const tDeviceAddress& address) const {
  const auto entry = places_.find({address.bus, address.device});
  if (entry != places_.end()) return entry->second;
  tFailure(kErrorUnknownItem, OSTREL_HERE)
      .debug()
      .text("msg", "Failed to find the device")
      .close()
      .u32("bus", address.bus)
      .u32("device", address.device)
      .u32("function", address.function)
      .text("type", "device")
      .raise();
}

}  // namespace varmex
