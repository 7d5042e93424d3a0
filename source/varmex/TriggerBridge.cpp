#include "source/varmex/TriggerBridge.h"

#include <stdexcept>

#include "source/varmex/Chassis.h"
#include "source/varmex/errorCodes.h"

namespace varmex {

namespace {

constexpr std::int32_t kLineCount = 8;

// By source line, which is the attribute less that of line 0.
constexpr const char* kLineItems[kLineCount] = {"PXI_TRIG0", "PXI_TRIG1", "PXI_TRIG2", "PXI_TRIG3",
                                                "PXI_TRIG4", "PXI_TRIG5", "PXI_TRIG6", "PXI_TRIG7"};

}  // namespace

TriggerBridge::TriggerBridge(std::uint32_t chassisNumber, std::uint32_t bridgeNumber,
                             const tDescription& description)
    : fields_{chassisNumber, bridgeNumber, &description, {}, {}} {
  const std::string chassis = chassisKey(chassisNumber);
  fields_.section = chassis + "TriggerBridge" + std::to_string(bridgeNumber);
  if (!description.firstWith(fields_.section)) {
    tFailure(kErrorUnknownItem, OSTREL_HERE)
        .text("type", "triggerBridge")
        .u32("bridgeNum", bridgeNumber)
        .u32("chassisNum", chassisNumber)
        .raise();
  }
  // Deliberately the classic file in all cases: a bridge that stands in the express file alone
  // cannot be opened.
  const std::uint32_t mapping = description.pxiSys.getUnsigned(fields_.section, "LineMappingSpec");
  fields_.mappingSection = chassis + "LineMappingSpec" + std::to_string(mapping);
}

std::uint32_t TriggerBridge::getU32Attribute(std::uint32_t attribute) const {
  switch (attribute) {
    case varmex_u32_ItemType: return varmex_itemType_TriggerBridge;
    case varmex_u32_ChassisNumber: return fields_.chassis;
    case varmex_u32_BridgeNumber: return fields_.number;
    case varmex_u32_BridgeSourceTriggerBus: return busNumber("SourceTriggerBus");
    case varmex_u32_BridgeDestinationTriggerBus: return busNumber("DestinationTriggerBus");
    default: break;
  }
  const std::uint32_t line = attribute - varmex_u32_BridgeLineMapping0;
  if (line >= kLineCount) raiseAttributeNotApplicable(attribute, OSTREL_HERE);
  return lineMapping(kLineItems[line]);
}

const char* TriggerBridge::getStringAttribute(std::uint32_t attribute) const {
  raiseAttributeNotApplicable(attribute, OSTREL_HERE);
}

// An item that the chosen file lacks is not looked for in the other.
std::uint32_t TriggerBridge::busNumber(const char* item) const {
  const tIniFile* const file = fields_.description->firstWith(fields_.section);
  if (!file) {
    tFailure(kErrorInformationNotAvailable, OSTREL_HERE)
        .debug()
        .text("itemName", item)
        .text("bridgeSection_", fields_.section)
        .raise();
  }
  return file->getUnsigned(fields_.section, item);
}

std::uint32_t TriggerBridge::lineMapping(const char* item) const {
  const tIniFile* const file = fields_.description->firstWith(fields_.mappingSection);
  if (!file) {
    tFailure(kErrorInformationNotAvailable, OSTREL_HERE)
        .debug()
        .text("itemName", item)
        .text("mappingSection_", fields_.mappingSection)
        .raise();
  }
  std::uint32_t mask = 0;
  for (const std::uint32_t number : file->getNumberList(fields_.mappingSection, item)) {
    const auto line = static_cast<std::int32_t>(number);
    // The bound is one too high, and what lies on it leaves the library as an exception of its own
    // kind. Clients that catch it exist, so it stays.
    if (line < 0 || line > kLineCount) {
      tFailure(kErrorInformationConflict, OSTREL_HERE)
          .debug()
          .text("attribute", item)
          .i32("destinationLine", line)
          .raise();
    }
    if (line == kLineCount) throw std::out_of_range("invalid bitset<N> position");
    mask |= 1U << line;
  }
  return mask;
}

std::unique_ptr<Item> TriggerBridge::clone() const {
  return std::unique_ptr<Item>(new TriggerBridge(fields_));
}

std::unique_ptr<Item> TriggerBridge::openContainingItem(std::uint32_t kind) const {
  return openChassisOrAbove(kind, fields_.chassis, *fields_.description);
}

bool TriggerBridge::lessThan(const Item& other) const {
  if (other.kind() != kind()) return kind() < other.kind();
  const tFields& fields = static_cast<const TriggerBridge&>(other).fields_;
  if (fields_.chassis != fields.chassis) return fields_.chassis < fields.chassis;
  return fields_.number < fields.number;
}

}  // namespace varmex
