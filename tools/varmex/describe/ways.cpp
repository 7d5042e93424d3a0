#include "tools/varmex/describe/ways.h"

#include <set>

#include "tools/varmex/describe/fields.h"

namespace tool {

namespace {

// More than anybody reads, and what a description with thousands of bridges is held to.
constexpr std::size_t kMostWays = 16;

struct tPartWay {
  std::uint32_t bus;
  tTriggerWay way;
};

tLineMap throughBoth(const tLineMap& first, const tLineMap& second) {
  tLineMap lines{};
  for (std::size_t source = 0; source < lines.size(); ++source) {
    for (std::size_t middle = 0; middle < second.size(); ++middle) {
      if (first[source] >> middle & 1) lines[source] |= second[middle];
    }
  }
  return lines;
}

}  // namespace

tLineMap lineMasksOf(const tJson& bridge) {
  tLineMap lines{};
  for (std::size_t line = 0; line < lines.size(); ++line) {
    const std::string name = "BridgeLineMapping" + std::to_string(line);
    lines[line] = numberOf(bridge, name.c_str()).value_or(0);
  }
  return lines;
}

std::vector<tTriggerWay> shortestWays(const tJson& chassis, std::uint32_t from, std::uint32_t to) {
  std::vector<tPartWay> reached = {{from, {{}, {1, 2, 4, 8, 16, 32, 64, 128}}}};
  std::set<std::uint32_t> seen = {from};
  while (!reached.empty()) {
    std::vector<tTriggerWay> found;
    std::vector<tPartWay> next;
    for (const tPartWay& part : reached) {
      for (const tJson& bridge : chassis["TriggerBridges"]) {
        const auto end = numberOf(bridge, "BridgeDestinationTriggerBus");
        if (numberOf(bridge, "BridgeSourceTriggerBus") != part.bus || !end) continue;
        if (seen.contains(*end) || next.size() + found.size() >= kMostWays) continue;
        tTriggerWay way{part.way.bridges, throughBoth(part.way.lines, lineMasksOf(bridge))};
        if (way.lines == tLineMap{}) continue;
        way.bridges.push_back(numberOf(bridge, "BridgeNumber").value_or(0));
        if (*end == to) {
          found.push_back(std::move(way));
        } else {
          next.push_back({*end, std::move(way)});
        }
      }
    }
    if (!found.empty()) return found;
    for (const tPartWay& part : next) seen.insert(part.bus);
    reached = std::move(next);
  }
  return {};
}

}  // namespace tool
