#ifndef SOURCE_VARMEX_SLOTTYPES_H
#define SOURCE_VARMEX_SLOTTYPES_H

#include <cstdint>
#include <string_view>

#include "varmex/varmex.h"

namespace varmex {

struct tSlotTypeRow {
  std::string_view text;
  std::uint32_t type;
};

// The types of slots that pxiesys.ini names.
inline constexpr tSlotTypeRow kSlotTypes[] = {
    {"PXI-1Slot", varmex_slotType_PXI1Peripheral},
    {"PXIePeripheralSlot", varmex_slotType_PXIePeripheral},
    {"PXIeHybridSlot", varmex_slotType_PXI1Peripheral | varmex_slotType_PXIePeripheral},
    {"PXIeSystemSlot2Link", varmex_slotType_PXIeSystem},
    {"PXIeSystemSlot4Link", varmex_slotType_PXIeSystem},
    {"PXIeSystemTimingSlot", varmex_slotType_PXIePeripheral | varmex_slotType_SystemTiming},
};

// 0 for a name of no type.
constexpr std::uint32_t slotTypeNamed(std::string_view name) {
  for (const tSlotTypeRow& row : kSlotTypes) {
    if (row.text == name) return row.type;
  }
  return 0;
}

}  // namespace varmex

#endif
