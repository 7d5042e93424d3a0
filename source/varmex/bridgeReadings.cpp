#include "source/varmex/bridgeReadings.h"

#include <stdexcept>

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

// An item that the chosen file lacks is not looked for in the other.
tResult<std::uint32_t> busNumber(const tBridgePlace& place, tLiteral item,
                                 const tDescriptionFiles& files) {
  const tShortName section = bridgeKey(place.chassis, place.number);
  const tSectionPair bridge = files.sections(section);
  if (bridge.classic) return files.pxiSys.getUnsigned(tIniPlace(*bridge.classic), item);
  if (bridge.express) return files.pxieSys.getUnsigned(tIniPlace(*bridge.express), item);
  return tRefusal(kErrorInformationNotAvailable, OSTREL_HERE)
      .debug()
      .text("itemName", item)
      .name("bridgeSection_", section);
}

tResult<std::uint32_t> lineMapping(const tBridgePlace& place, tLiteral item,
                                   const tDescriptionFiles& files) {
  const tShortName section = chassisKey(place.chassis, "LineMappingSpec", place.mapping);
  const tSectionPair lines = files.sections(section);
  if (!lines) {
    return tRefusal(kErrorInformationNotAvailable, OSTREL_HERE)
        .debug()
        .text("itemName", item)
        .name("mappingSection_", section);
  }
  const auto numbers = lines.classic ? files.pxiSys.getNumberList(tIniPlace(*lines.classic), item)
                                     : files.pxieSys.getNumberList(tIniPlace(*lines.express), item);
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

}  // namespace

tResult<tBridgePlace> findBridge(std::uint32_t chassis, std::uint32_t bridge,
                                 const tDescriptionFiles& files) {
  const tShortName section = bridgeKey(chassis, bridge);
  if (!files.sections(section)) {
    return tRefusal(kErrorUnknownItem, OSTREL_HERE)
        .text("type", "triggerBridge")
        .u32("bridgeNum", bridge)
        .u32("chassisNum", chassis);
  }
  // Deliberately the classic file in all cases: a bridge that stands in the express file alone
  // cannot be opened.
  const tIniFile& pxiSys = files.pxiSys;
  const auto mapping = pxiSys.getUnsigned(pxiSys.placeOf(section), "LineMappingSpec");
  if (!mapping) return mapping.refusal();
  return tBridgePlace{chassis, bridge, *mapping};
}

tResult<std::uint32_t> readBridge(const tBridgePlace& place, std::uint32_t attribute,
                                  const tDescriptionFiles& files) {
  switch (attribute) {
    case varmex_u32_BridgeSourceTriggerBus: return busNumber(place, "SourceTriggerBus", files);
    case varmex_u32_BridgeDestinationTriggerBus:
      return busNumber(place, "DestinationTriggerBus", files);
    default: break;
  }
  return lineMapping(place, kLineItems[attribute - varmex_u32_BridgeLineMapping0], files);
}

}  // namespace varmex
