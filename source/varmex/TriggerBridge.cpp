#include "source/varmex/TriggerBridge.h"

#include "source/varmex/Chassis.h"

namespace varmex {

tResult<TriggerBridge::tPlace> TriggerBridge::find(std::uint32_t chassisNumber,
                                                   std::uint32_t bridgeNumber,
                                                   const tDescription& description) {
  const auto bridge = findBridge(chassisNumber, bridgeNumber, description);
  if (!bridge) return bridge.refusal();
  return tPlace{*bridge, &description};
}

tResult<std::uint32_t> TriggerBridge::getU32Attribute(std::uint32_t attribute) const {
  switch (attribute) {
    case varmex_u32_ItemType: return varmex_itemType_TriggerBridge;
    case varmex_u32_ChassisNumber: return place_.chassis;
    case varmex_u32_BridgeNumber: return place_.number;
    default: break;
  }
  if (attribute < varmex_u32_BridgeSourceTriggerBus || attribute > varmex_u32_BridgeLineMapping7) {
    return attributeNotApplicable(attribute, OSTREL_HERE);
  }
  return readBridge(place_, attribute, *place_.description);
}

tResult<const char*> TriggerBridge::getStringAttribute(std::uint32_t attribute) const {
  return attributeNotApplicable(attribute, OSTREL_HERE);
}

tResult<std::unique_ptr<Item>> TriggerBridge::clone() const {
  return std::make_unique<TriggerBridge>(place_);
}

tResult<std::unique_ptr<Item>> TriggerBridge::openContainingItem(std::uint32_t kind) const {
  return openChassisOrAbove(kind, place_.chassis, *place_.description);
}

bool TriggerBridge::isLess(const tRecord& a, const tRecord& b) {
  return a.chassis != b.chassis ? a.chassis < b.chassis : a.number < b.number;
}

bool TriggerBridge::lessThan(const Item& other) const {
  if (other.kind() != kKind) return kKind < other.kind();
  return isLess(place_, static_cast<const TriggerBridge&>(other).place_);
}

}  // namespace varmex
