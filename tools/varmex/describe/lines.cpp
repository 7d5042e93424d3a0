#include "tools/varmex/describe/lines.h"

#include <vector>

#include "tools/varmex/describe/faults.h"
#include "tools/varmex/describe/fields.h"

namespace tool {

std::string linesOf(std::uint32_t mask) {
  std::vector<std::string> runs;
  for (int line = 0; line < 8; ++line) {
    if (!(mask >> line & 1)) continue;
    int last = line;
    while (mask >> (last + 1) & 1) ++last;
    runs.push_back(line == last ? std::to_string(line)
                                : std::to_string(line) + '-' + std::to_string(last));
    line = last;
  }
  return joined(runs, ",");
}

varmex::LineMap lineMasksOf(const tJson& bridge) {
  varmex::LineMap lines{};
  for (std::size_t line = 0; line < lines.size(); ++line) {
    const std::string name = "BridgeLineMapping" + std::to_string(line);
    lines[line] = numberOf(bridge, name.c_str()).value_or(0);
  }
  return lines;
}

std::string lineWordsOf(const varmex::LineMap& lines) {
  const auto destinationsOf = [&](std::size_t line) {
    return lines[line] == 1U << line ? "the same" : linesOf(lines[line]);
  };
  std::vector<std::string> runs;
  for (std::size_t first = 0, last = 0; first < lines.size(); first = last + 1) {
    const std::string destinations = destinationsOf(first);
    last = first;
    while (last + 1 < lines.size() && destinationsOf(last + 1) == destinations) ++last;
    if (destinations.empty()) continue;
    const std::string line = std::to_string(first);
    runs.push_back(first == last ? line + " to " + destinations
                                 : line + '-' + std::to_string(last) + " each to " + destinations);
  }
  return runs.empty() ? "no lines" : "lines " + joined(runs, ", ");
}

std::string bridgeWordsOf(const tJson& bridge) {
  if (const std::string mark = markOf(bridge, "opening"); !mark.empty()) {
    return "can't be read: " + mark;
  }
  std::string words = "from bus " + textOf(bridge, "BridgeSourceTriggerBus") + " to bus " +
                      textOf(bridge, "BridgeDestinationTriggerBus") + ": " +
                      lineWordsOf(lineMasksOf(bridge));
  for (int line = 0; line < 8; ++line) {
    const std::string number = std::to_string(line);
    const std::string mark = markOf(bridge, ("BridgeLineMapping" + number).c_str());
    if (!mark.empty()) words += ", " + number + ": " + mark;
  }
  return words;
}

}  // namespace tool
