#ifndef TOOLS_VARMEX_PAGE_ABOUT_H
#define TOOLS_VARMEX_PAGE_ABOUT_H

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tools/varmex/check/findings.h"
#include "tools/varmex/describe/address.h"
#include "tools/varmex/describe/json.h"
#include "varmex/varmex.hpp"

namespace tool {

// What the page's script is told, in words and numbers that it has no rules for itself.

// A chassis as `describe` gives it: its slots and bridges, each with what is told of it in words
// ("told") and what can't be ("faults"); the ways of a trigger between each two of its buses, in
// words ("ways", by "1>3"), and what may hide others ("unread").
tJson aboutChassis(const tJson& chassis, tPciNotation notation);

// The table of all modules: its titles, and a row each with the slot that it leads to and a text
// that a search looks at.
tJson aboutModules(const tJson& modules, tPciNotation notation);

// "Chassis 1: Orlindt ORX-1820, serial number 0A41F27C".
std::string chassisTitle(const tJson& chassis);

// The bridges of each line map, by chassis and number of the map.
using tLineMaps = std::map<std::pair<std::uint32_t, std::uint32_t>, std::vector<std::uint32_t>>;
tLineMaps lineMapsOf(const varmex::Session& session, const tJson& description);

// What of the pictures a finding is about: what its section tells of, which of a line map are its
// bridges, and a slot that it names. The keys are those of a picture's groups, with a hyphen:
// "bus-1", "slot-7".
struct tAboutPlace {
  std::optional<std::uint32_t> chassis;
  std::optional<std::uint32_t> slot;
  std::vector<std::string> keys;
};
tAboutPlace placeOf(const tFinding& finding, const tLineMaps& maps);

}  // namespace tool

#endif
