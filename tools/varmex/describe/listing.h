#ifndef TOOLS_VARMEX_DESCRIBE_LISTING_H
#define TOOLS_VARMEX_DESCRIBE_LISTING_H

#include <cstdint>
#include <vector>

#include "source/varmex/bridgeReadings.h"
#include "varmex/varmex.hpp"

namespace tool {

using tNumbers = std::vector<std::uint32_t>;

// What the lists of a description name, and the bridges, which the library opens through a list
// alone. Asked only where a list of the library fails as a whole, so that the rest is told all the
// same. Reads the files of a session as the library does, and throws what it would fail with.
class tListing {
 public:
  explicit tListing(const varmex::Session& session);

  // In ascending order, each once.
  tNumbers chassis() const;
  tNumbers slots(std::uint32_t chassis) const { return numbers(chassis, "SlotList"); }
  tNumbers bridges(std::uint32_t chassis) const { return numbers(chassis, "TriggerBridgeList"); }

  varmex::tBridgePlace openBridge(std::uint32_t chassis, std::uint32_t number) const;
  std::uint32_t numberOf(const varmex::tBridgePlace& bridge, std::uint32_t attribute) const;

 private:
  tNumbers numbers(std::uint32_t chassis, varmex::tLiteral list) const;

  varmex::tDescriptionFiles files_;
};

}  // namespace tool

#endif
