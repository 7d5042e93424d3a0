// The way down the model: what each class hands to a visitor. The classes themselves know only the
// way up.

#include <vector>

#include "source/varmex/Chassis.h"
#include "source/varmex/Device.h"
#include "source/varmex/Session.h"
#include "source/varmex/Slot.h"
#include "source/varmex/TriggerBridge.h"
#include "source/varmex/deviceReadings.h"

namespace varmex {

namespace {

// All places are found before the visitor sees the first item: a bad number ends the walk with
// nothing seen.
template <class Class, class Find>
auto placesOf(const tNumbers& numbers, Find find) -> tResult<std::vector<typename Class::tPlace>> {
  std::vector<typename Class::tPlace> places;
  places.reserve(numbers.size());
  for (const std::uint32_t number : numbers) {
    const auto place = find(number);
    if (!place) return place.refusal();
    places.push_back(*place);
  }
  return places;
}

template <class Class, class Place>
tResult<> handOver(const std::vector<Place>& places, ItemVisitor& visitor) {
  for (const auto& place : places) {
    const auto done = visitor.visit(Class(place));
    if (!done) return done.refusal();
  }
  return kDone;
}

// On the way down nobody asks for the description file, which the registry would have to be read
// for.
struct tPassedChassis : Chassis {
  explicit tPassedChassis(const tPlace& place) : Chassis(tRecord{place, {}}) {}
};

}  // namespace

tResult<> Session::acceptVisitor(ItemVisitor& visitor) const {
  auto numbers = description().pxieSysChassisNumbers();
  if (!numbers) return numbers.refusal();
  const auto classic = description().pxiSysChassisNumbers();
  if (!classic) return classic.refusal();
  numbers->insert(numbers->end(), classic->begin(), classic->end());
  sortWithoutRepeats(*numbers);
  const auto chassis = placesOf<Chassis>(
      *numbers, [&](std::uint32_t number) { return Chassis::find(number, description()); });
  if (!chassis) return chassis.refusal();
  if (visitor.keeps(Chassis::kKind)) return handOver<Chassis>(*chassis, visitor);
  return handOver<tPassedChassis>(*chassis, visitor);
}

tResult<> Chassis::acceptVisitor(ItemVisitor& visitor) const {
  const auto slotNumbers = mergedNumbers("SlotList");
  if (!slotNumbers) return slotNumbers.refusal();
  tSectionPair last;  // slots mostly stand in the order of their numbers
  const auto slots = placesOf<Slot>(*slotNumbers, [&](std::uint32_t slot) {
    auto place = Slot::find(number(), slot, description(), last);
    if (place) last = place->sections;
    return place;
  });
  if (!slots) return slots.refusal();
  const auto bridgeNumbers = mergedNumbers("TriggerBridgeList");
  if (!bridgeNumbers) return bridgeNumbers.refusal();
  const auto bridges = placesOf<TriggerBridge>(*bridgeNumbers, [&](std::uint32_t bridge) {
    return TriggerBridge::find(number(), bridge, description());
  });
  if (!bridges) return bridges.refusal();
  const auto done = handOver<Slot>(*slots, visitor);
  if (!done) return done.refusal();
  return handOver<TriggerBridge>(*bridges, visitor);
}

// Unlike the device map this leaves no slot out.
tResult<> Slot::acceptVisitor(ItemVisitor& visitor) const {
  const tDescription& description = *place_.description;
  const bool keepsDevices = visitor.keeps(Device::kKind);
  if (!keepsDevices && !place_.sections.classic) return kDone;
  std::vector<tDeviceAddress> addresses;
  Device::tRecord device{{place_.chassis, place_.slot, 0}, {}, &description};
  const tIniItem* const names =
      place_.sections.express ? description.pxieSys.findItem(*place_.sections.express,
                                                             "AddressInfo", visitor.namesPlace)
                              : nullptr;
  if (names) {
    if (!keepsDevices) return kDone;
    parseResourceNames(names->value, addresses);
    device.place.isExpress = 1;
  } else if (place_.sections.classic) {
    tFunctionWalk walk(description.pxiSys);
    const auto done = walk.walkSlotFunctions(*place_.sections.classic, addresses);
    if (!done) return done.refusal();
  }
  if (!keepsDevices) return kDone;
  for (const tDeviceAddress& address : addresses) {
    device.address = address;
    const auto done = visitor.visit(Device(device));
    if (!done) return done.refusal();
  }
  return kDone;
}

tResult<> Device::acceptVisitor(ItemVisitor&) const { return kDone; }

tResult<> TriggerBridge::acceptVisitor(ItemVisitor&) const { return kDone; }

}  // namespace varmex
