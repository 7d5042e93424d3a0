#ifndef SOURCE_VARMEX_BRIDGEREADINGS_H
#define SOURCE_VARMEX_BRIDGEREADINGS_H

#include "source/varmex/description.h"

namespace varmex {

// What the description files say of trigger bridges.

// What a std::out_of_range tells that leaves for a destination line 8.
inline constexpr const char* kLineOutOfRange = "invalid bitset<N> position";

// Where a bridge stands.
struct tBridgePlace {
  std::uint32_t chassis;
  std::uint32_t number;
  std::uint32_t mapping;  // number of the section with the lines
};

// varmex_errorUnknownItem when neither file has the bridge.
tResult<tBridgePlace> findBridge(std::uint32_t chassis, std::uint32_t bridge,
                                 const tDescriptionFiles& files);

// A number of a bridge; `attribute` is one of its buses or of its lines.
tResult<std::uint32_t> readBridge(const tBridgePlace& place, std::uint32_t attribute,
                                  const tDescriptionFiles& files);

}  // namespace varmex

#endif
