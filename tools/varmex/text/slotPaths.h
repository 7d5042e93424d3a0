#ifndef TOOLS_VARMEX_TEXT_SLOTPATHS_H
#define TOOLS_VARMEX_TEXT_SLOTPATHS_H

#include <cstdint>
#include <optional>
#include <string_view>

namespace tool {

// How the library reads the way to slot 2, by which it knows a chassis that stands in pxisys.ini
// alone.
inline constexpr const char* kSlotPathItem = "PCISlotPath";
inline constexpr const char* kRootBusItem = "PCISlotPathRootBus";

// Decimal digits behind an optional sign, which negates modulo 2^32; unlike elsewhere, where the
// same item is a number in base 0.
std::optional<std::uint32_t> rootBusOf(std::string_view text);

inline constexpr std::uint32_t kLastRootBus = 0xFF;

inline bool isSlotPath(std::string_view text) { return text.find(',') != text.npos; }

}  // namespace tool

#endif
