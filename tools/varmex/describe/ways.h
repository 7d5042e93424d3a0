#ifndef TOOLS_VARMEX_DESCRIBE_WAYS_H
#define TOOLS_VARMEX_DESCRIBE_WAYS_H

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "tools/varmex/describe/json.h"

namespace tool {

// Where each of the eight lines of a trigger bus comes out on another: bit n for line n.
using tLineMap = std::array<std::uint32_t, 8>;

tLineMap lineMasksOf(const tJson& bridge);

// A chain of bridges from one trigger bus to another, and where the lines come out behind it.
struct tTriggerWay {
  std::vector<std::uint32_t> bridges;
  tLineMap lines;
};

// The shortest ways of any line between two trigger buses of a chassis, as `describe` gives it.
// None where no line gets through.
std::vector<tTriggerWay> shortestWays(const tJson& chassis, std::uint32_t from, std::uint32_t to);

}  // namespace tool

#endif
