#include "source/varmex/DeviceMap.h"

#include <cstring>
#include <utility>
#include <vector>

#include "source/varmex/deviceReadings.h"
#include "source/varmex/errorCodes.h"

namespace varmex {

namespace {

// Calls `take(section, chassis, slot)` for each slot that the chassis list and that has a section,
// until it refuses. Slots mostly stand in the order of their list, and chassis of one model list
// the same.
template <class Take>
tResult<> forEachSlot(const tIniFile& file, tNumbers chassisNumbers, Take take) {
  const tIniSection* last = nullptr;  // that was found
  const char* read = nullptr;         // the list that the slots are from
  tNumbers slots;
  dropRepeats(chassisNumbers);
  for (const std::uint32_t chassis : chassisNumbers) {
    const tShortName name = chassisKey(chassis);
    const auto* const owner = file.findSectionBehind(last, {{}, "Chassis", chassis});
    const tIniPlace place = owner ? tIniPlace(*owner) : tIniPlace(name);
    const auto list = file.getItem(place, "SlotList");
    if (!list) return list.refusal();
    last = owner;
    if (!read || std::strcmp(read, (*list)->value) != 0) {
      slots.clear();
      const auto done = appendEachOnce(*owner, **list, slots);
      if (!done) return done.refusal();
      read = (*list)->value;
    }
    for (const std::uint32_t slot : slots) {
      const auto* const found = file.findSectionBehind(last, {name, "Slot", slot});
      if (!found) continue;
      last = found;
      const auto done = take(*found, chassis, slot);
      if (!done) return done.refusal();
    }
  }
  return kDone;
}

constexpr std::size_t kUsualFunctions = 8;  // of a slot, at most

// Out of the way of what finds no conflict.
[[gnu::noinline]] tResult<> conflictOf(const tDevicePlace& existing, const tDevicePlace& place,
                                       const tDeviceAddress& address) {
  return tRefusal(kErrorInformationConflict, OSTREL_HERE)
      .u32("existingChassis", existing.chassis)
      .u32("existingSlot", existing.slot)
      .u32("chassis", place.chassis)
      .u32("slot", place.slot)
      .i32("bus", static_cast<std::int32_t>(address.bus))
      .i32("dev", static_cast<std::int32_t>(address.device))
      .debug()
      .text("description", "Conflicting chassis/slot information was found  for a device");
}

// The devices of a slot. Refused when one of them is in another slot.
tResult<> enter(const std::vector<tDeviceAddress>& addresses, const tDevicePlace& place,
                tDevicePlaces& places) {
  for (const tDeviceAddress& address : addresses) {
    const auto [existing, isNew] = places.insert(address, place);
    if (!isNew && !(existing == place)) return conflictOf(existing, place, address);
  }
  return kDone;
}

}  // namespace

// The controller's own devices are no modules: slot 1 is left out here, and only here.
tResult<> DeviceMap::enterClassic(const tIniFile& pxiSys, tNumbers chassisNumbers) {
  tFunctionWalk walk(pxiSys);
  std::vector<tDeviceAddress> addresses;
  addresses.reserve(kUsualFunctions);
  const auto take = [&](const tIniSection& section, auto chassis, auto slot) -> tResult<> {
    if (slot == 1) return kDone;
    addresses.clear();
    const auto done = walk.walkSlotFunctions(section, addresses);
    if (!done) return done.refusal();
    return enter(addresses, {chassis, slot, 0}, places_);
  };
  return forEachSlot(pxiSys, std::move(chassisNumbers), take);
}

tResult<> DeviceMap::enterExpress(const tIniFile& pxieSys, tNumbers chassisNumbers) {
  std::vector<tDeviceAddress> addresses;
  addresses.reserve(kUsualFunctions);
  std::size_t place = 0;
  const auto take = [&](const tIniSection& section, auto chassis, auto slot) -> tResult<> {
    pxieSys.store().fetchBehind(section, place);
    const tIniItem* const names = pxieSys.findItem(section, "AddressInfo", place);
    if (!names) return kDone;
    addresses.clear();
    parseResourceNames(names->value, addresses);
    return enter(addresses, {chassis, slot, 1}, places_);
  };
  return forEachSlot(pxieSys, std::move(chassisNumbers), take);
}

tResult<tDevicePlace> DeviceMap::find(const tDeviceAddress& address) const {
  if (const tDevicePlace* const place = places_.find(address)) return *place;
  return tRefusal(kErrorUnknownItem, OSTREL_HERE)
      .debug()
      .text("msg", "Failed to find the device")
      .close()
      .u32("bus", address.bus)
      .u32("device", address.device)
      .u32("function", address.function)
      .text("type", "device");
}

}  // namespace varmex
