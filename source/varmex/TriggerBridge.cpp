#include "source/varmex/TriggerBridge.h"

#include <stdexcept>

#include "source/varmex/Chassis.h"
#include "source/varmex/errorCodes.h"

namespace varmex {

namespace {

constexpr std::int32_t kLineCount = 8;

// By source line, which is the attribute less that of line 0.
constexpr tLiteral kLineItems[kLineCount] = {"PXI_TRIG0", "PXI_TRIG1", "PXI_TRIG2", "PXI_TRIG3",
                                             "PXI_TRIG4", "PXI_TRIG5", "PXI_TRIG6", "PXI_TRIG7"};

tShortName bridgeKey(std::uint32_t chassis, std::uint32_t bridge) {
  return chassisKey(chassis, "TriggerBridge", bridge);
}

}  // namespace

tResult<TriggerBridge::tPlace> TriggerBridge::find(std::uint32_t chassisNumber,
                                                   std::uint32_t bridgeNumber,
                                                   const tDescription& description) {
  const tShortName section = bridgeKey(chassisNumber, bridgeNumber);
  if (!description.sections(section)) {
    return tRefusal(kErrorUnknownItem, OSTREL_HERE)
        .text("type", "triggerBridge")
        .u32("bridgeNum", bridgeNumber)
        .u32("chassisNum", chassisNumber);
  }
  // Deliberately the classic file in all cases: a bridge that stands in the express file alone
  // cannot be opened.
  const tIniFile& pxiSys = description.pxiSys;
  const auto mapping = pxiSys.getUnsigned(pxiSys.placeOf(section), "LineMappingSpec");
  if (!mapping) return mapping.refusal();
  return tPlace{chassisNumber, bridgeNumber, *mapping, &description};
}

tResult<std::uint32_t> TriggerBridge::getU32Attribute(std::uint32_t attribute) const {
  switch (attribute) {
    case varmex_u32_ItemType: return varmex_itemType_TriggerBridge;
    case varmex_u32_ChassisNumber: return place_.chassis;
    case varmex_u32_BridgeNumber: return place_.number;
    case varmex_u32_BridgeSourceTriggerBus: return busNumber("SourceTriggerBus");
    case varmex_u32_BridgeDestinationTriggerBus: return busNumber("DestinationTriggerBus");
    default: break;
  }
  const std::uint32_t line = attribute - varmex_u32_BridgeLineMapping0;
  if (line >= kLineCount) return attributeNotApplicable(attribute, OSTREL_HERE);
  return lineMapping(kLineItems[line]);
}

tResult<const char*> TriggerBridge::getStringAttribute(std::uint32_t attribute) const {
  return attributeNotApplicable(attribute, OSTREL_HERE);
}

// An item that the chosen file lacks is not looked for in the other.
tResult<std::uint32_t> TriggerBridge::busNumber(tLiteral item) const {
  const tShortName section = bridgeKey(place_.chassis, place_.number);
  const tDescription& description = *place_.description;
  const tSectionPair bridge = description.sections(section);
  if (bridge.classic) return description.pxiSys.getUnsigned(tIniPlace(*bridge.classic), item);
  if (bridge.express) return description.pxieSys.getUnsigned(tIniPlace(*bridge.express), item);
  return tRefusal(kErrorInformationNotAvailable, OSTREL_HERE)
      .debug()
      .text("itemName", item)
      .name("bridgeSection_", section);
}

tResult<std::uint32_t> TriggerBridge::lineMapping(tLiteral item) const {
  const tShortName section = chassisKey(place_.chassis, "LineMappingSpec", place_.mapping);
  const tDescription& description = *place_.description;
  const tSectionPair lines = description.sections(section);
  if (!lines) {
    return tRefusal(kErrorInformationNotAvailable, OSTREL_HERE)
        .debug()
        .text("itemName", item)
        .name("mappingSection_", section);
  }
  const auto numbers = lines.classic
                           ? description.pxiSys.getNumberList(tIniPlace(*lines.classic), item)
                           : description.pxieSys.getNumberList(tIniPlace(*lines.express), item);
  if (!numbers) return numbers.refusal();
  std::uint32_t mask = 0;
  for (const std::uint32_t number : *numbers) {
    const auto line = static_cast<std::int32_t>(number);
    // The bound is one too high, and what lies on it leaves the library as an exception of its own
    // kind. Clients that catch it exist, so it stays.
    if (line < 0 || line > kLineCount) {
      return tRefusal(kErrorInformationConflict, OSTREL_HERE)
          .debug()
          .text("attribute", item)
          .i32("destinationLine", line);
    }
    if (line == kLineCount) throw std::out_of_range(kLineOutOfRange);
    mask |= 1U << line;
  }
  return mask;
}

tResult<std::unique_ptr<Item>> TriggerBridge::clone() const {
  return std::make_unique<TriggerBridge>(place_);
}

tResult<std::unique_ptr<Item>> TriggerBridge::openContainingItem(std::uint32_t kind) const {
  return openChassisOrAbove(kind, place_.chassis, *place_.description);
}

bool TriggerBridge::lessThan(const Item& other) const {
  if (other.kind() != kind()) return kind() < other.kind();
  const tPlace& place = static_cast<const TriggerBridge&>(other).place_;
  if (place_.chassis != place.chassis) return place_.chassis < place.chassis;
  return place_.number < place.number;
}

}  // namespace varmex
