// The way down the model: what each class hands to a visitor. The classes themselves know only the
// way up.

#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>
#include <vector>

#include "source/varmex/Chassis.h"
#include "source/varmex/Device.h"
#include "source/varmex/Session.h"
#include "source/varmex/Slot.h"
#include "source/varmex/TriggerBridge.h"
#include "source/varmex/deviceReadings.h"

namespace varmex {

namespace {

using tItems = std::vector<boost::shared_ptr<const Item>>;

void handOver(const tItems& items, ItemVisitor& visitor) {
  for (const auto& item : items) visitor.visit(*item);
}

}  // namespace

void Session::acceptVisitor(ItemVisitor& visitor) const {
  auto numbers = description().pxieSysChassisNumbers();
  numbers = sortedUnion(std::move(numbers), description().pxiSysChassisNumbers());
  tItems items;
  for (const std::uint32_t number : numbers) {
    items.push_back(boost::make_shared<Chassis>(number, description()));
  }
  handOver(items, visitor);
}

// All items exist before the visitor sees the first: a bad number ends the walk with nothing seen.
void Chassis::acceptVisitor(ItemVisitor& visitor) const {
  tItems items;
  for (const std::uint32_t slot : mergedNumbers("SlotList")) {
    items.push_back(boost::make_shared<Slot>(number(), slot, description()));
  }
  for (const std::uint32_t bridge : mergedNumbers("TriggerBridgeList")) {
    items.push_back(boost::make_shared<TriggerBridge>(number(), bridge, description()));
  }
  handOver(items, visitor);
}

// Unlike the device map this leaves no slot out.
void Slot::acceptVisitor(ItemVisitor& visitor) const {
  const tDescription& description = *place_.description;
  std::vector<tDeviceAddress> addresses;
  tDevicePlace place{place_.chassis, place_.slot, 0};
  if (const char* names = description.pxieSys.findValueText(place_.section, "AddressInfo")) {
    parseResourceNames(names, addresses);
    place.isExpress = 1;
  } else if (const tIniSection* section = description.pxiSys.findSection(place_.section)) {
    tFunctionWalk(description.pxiSys).walkSlotFunctions(*section, addresses);
  }
  for (const tDeviceAddress& address : addresses) {
    visitor.visit(Device(place, address, description));
  }
}

void Device::acceptVisitor(ItemVisitor&) const {}

void TriggerBridge::acceptVisitor(ItemVisitor&) const {}

}  // namespace varmex
