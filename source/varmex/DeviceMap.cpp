#include "source/varmex/DeviceMap.h"

#include <algorithm>

#include "source/varmex/deviceReadings.h"
#include "source/varmex/errorCodes.h"

namespace varmex {

namespace {

// Calls `take(section, chassis, slot)` for each slot that the chassis list and that has a section.
// Slots mostly stand in the order of their list.
template <class Take>
void forEachSlot(const tIniFile& file, const std::vector<std::uint32_t>& chassisNumbers,
                 Take take) {
  const tIniSection* section = nullptr;  // the last that was found
  for (const std::uint32_t chassis : withoutRepeats(chassisNumbers)) {
    const std::string owner = chassisKey(chassis);
    for (const std::uint32_t slot : withoutRepeats(file.getNumberList(owner, "SlotList"))) {
      const auto* const found = file.findSectionBehind(section, slotKey(chassis, slot));
      if (!found) continue;
      section = found;
      take(*section, chassis, slot);
    }
  }
}

}  // namespace

// The controller's own devices are no modules: slot 1 is left out here, and only here.
void DeviceMap::enterClassic(const tIniFile& pxiSys,
                             const std::vector<std::uint32_t>& chassisNumbers) {
  tFunctionWalk walk(pxiSys);
  std::vector<tDeviceAddress> addresses;
  forEachSlot(pxiSys, chassisNumbers, [&](const tIniSection& section, auto chassis, auto slot) {
    if (slot == 1) return;
    addresses.clear();
    walk.walkSlotFunctions(section, addresses);
    enter(addresses, {chassis, slot, 0});
  });
}

void DeviceMap::enterExpress(const tIniFile& pxieSys,
                             const std::vector<std::uint32_t>& chassisNumbers) {
  std::vector<tDeviceAddress> addresses;
  forEachSlot(pxieSys, chassisNumbers, [&](const tIniSection& section, auto chassis, auto slot) {
    const char* const names = tIniFile::findValueText(section, "AddressInfo");
    if (!names) return;
    addresses.clear();
    parseResourceNames(names, addresses);
    enter(addresses, {chassis, slot, 1});
  });
}

void DeviceMap::enter(const std::vector<tDeviceAddress>& addresses, const tDevicePlace& place) {
  for (const tDeviceAddress& address : addresses) {
    if (entries_.size() == index_.size() / 2) growIndex();
    std::uint32_t& number = index_[findSlot(address.bus, address.device)];
    if (number == 0) {
      entries_.push_back({address.bus, address.device, place});
      number = static_cast<std::uint32_t>(entries_.size());
      continue;
    }
    const tDevicePlace& existing = entries_[number - 1].place;
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

// Where the index has the device, or the empty slot where it would be.
std::size_t DeviceMap::findSlot(std::uint32_t bus, std::uint32_t device) const {
  const std::uint64_t hash = hashSeed_.scramble(std::uint64_t{bus} << 32 | device);
  const std::size_t mask = index_.size() - 1;
  std::size_t slot = hash & mask;
  for (; index_[slot]; slot = (slot + 1) & mask) {
    const tEntry& entry = entries_[index_[slot] - 1];
    if (entry.bus == bus && entry.device == device) break;
  }
  return slot;
}

// At most half of the index is in use.
void DeviceMap::growIndex() {
  constexpr std::size_t kSmallest = 64;
  index_.assign(std::max(kSmallest, 2 * index_.size()), 0);
  entries_.reserve(index_.size() / 2);
  std::uint32_t number = 0;
  for (const tEntry& entry : entries_) index_[findSlot(entry.bus, entry.device)] = ++number;
}

const tDevicePlace& DeviceMap::find(const tDeviceAddress& address) const {
  if (!index_.empty()) {
    const std::uint32_t number = index_[findSlot(address.bus, address.device)];
    if (number != 0) return entries_[number - 1].place;
  }
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
