// How a trigger gets from one slot of a chassis to another, in C++17 over varmex.hpp: the ways over
// trigger buses and bridges, whose line maps are easy to read wrongly, and the star triggers.
#ifndef VARMEX_TRIGGERS_HPP
#define VARMEX_TRIGGERS_HPP

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <utility>
#include <vector>

#include "varmex/varmex.hpp"

namespace varmex {
inline namespace cpp1 {

// For each line 0 to 7 the lines that a signal on it comes out on, bit n for line n.
using LineMap = std::array<std::uint32_t, 8>;

// What a trigger bridge does: it takes signals from one bus and hands them to another, never back.
struct BridgeMap {
  std::uint32_t bridge = 0;
  std::uint32_t sourceBus = 0;
  std::uint32_t destinationBus = 0;
  LineMap lines{};
};

// A chain of bridges through which a signal gets from one trigger bus to another; none where the
// two are the same bus, all lines of which both have.
struct TriggerWay {
  std::vector<BridgeMap> bridges;  // in the order in which the signal passes them
  LineMap lines{};                 // of the whole chain: from the first bus to the last
};

enum class WaysWanted { shortest, all };

struct TriggerWays {
  std::vector<TriggerWay> ways;
  bool isComplete = true;  // false where there are more than were asked for, or too many to look at
};

namespace detail {

// Where a signal can be on a bus, for each line that it may have started on.
inline LineMap passed(const LineMap& before, const LineMap& bridge) {
  LineMap after{};
  for (std::size_t start = 0; start < 8; ++start) {
    for (std::size_t line = 0; line < 8; ++line) {
      if (before[start] >> line & 1) after[start] |= bridge[line];
    }
  }
  return after;
}

class WayFinder {
 public:
  WayFinder(const std::vector<BridgeMap>& bridges, std::size_t most)
      : bridges_(bridges), most_(most) {}

  TriggerWays run(std::uint32_t from, std::uint32_t to, WaysWanted wanted) {
    const LineMap straight = {1, 2, 4, 8, 16, 32, 64, 128};
    if (from == to) return {{{{}, straight}}, true};
    measure(to);
    const std::size_t shortest = distance(from, straight);
    if (shortest == unreachable) return {};
    if (shortest > longestWay) return {{}, false};
    goal_ = to;
    visited_ = {from};
    // The shortest chains may come to a bus twice, on another line; longer ones may not.
    isShortest_ = true;
    extend(from, straight, shortest);
    if (wanted == WaysWanted::all) {
      isShortest_ = false;
      const std::size_t longest = std::min(bridges_.size(), longestWay);
      for (std::size_t length = shortest + 1; length <= longest; ++length) {
        extend(from, straight, length);
      }
    }
    return std::move(found_);
  }

 private:
  static constexpr std::size_t unreachable = static_cast<std::size_t>(-1);
  static constexpr std::size_t longestSearch = 10000000;  // bridges looked at
  static constexpr std::size_t longestWay = 255;          // no chassis has more buses

  // For each bus and line the number of bridges that a signal has before it, from the end
  // backwards.
  void measure(std::uint32_t to) {
    std::multimap<std::uint32_t, const BridgeMap*> byDestination;
    for (const BridgeMap& bridge : bridges_) byDestination.emplace(bridge.destinationBus, &bridge);
    steps_[to].fill(0);
    std::deque<std::pair<std::uint32_t, std::size_t>> reached;  // buses and lines, nearest first
    for (std::size_t line = 0; line < 8; ++line) reached.emplace_back(to, line);
    for (; !reached.empty(); reached.pop_front()) {
      const auto [bus, line] = reached.front();
      const std::size_t next = steps_[bus][line] + 1;
      const auto [first, last] = byDestination.equal_range(bus);
      for (auto each = first; each != last; ++each) {
        const BridgeMap& bridge = *each->second;
        Steps& before = steps_.try_emplace(bridge.sourceBus, unreachableSteps()).first->second;
        for (std::size_t source = 0; source < 8; ++source) {
          if (!(bridge.lines[source] >> line & 1) || before[source] != unreachable) continue;
          before[source] = next;
          reached.emplace_back(bridge.sourceBus, source);
        }
      }
    }
  }

  // Of the signals that have got to a bus, the number of bridges that the nearest has before it.
  std::size_t distance(std::uint32_t bus, const LineMap& lines) const {
    std::size_t least = unreachable;
    const auto steps = steps_.find(bus);
    if (steps == steps_.end()) return least;
    for (const std::uint32_t mask : lines) {
      for (std::size_t line = 0; line < 8; ++line) {
        if (mask >> line & 1) least = std::min(least, steps->second[line]);
      }
    }
    return least;
  }

  bool isOver() const { return found_.ways.size() >= most_ || looked_ >= longestSearch; }

  // Adds the chains of `left` more bridges that begin with the one so far.
  void extend(std::uint32_t bus, const LineMap& lines, std::size_t left) {
    if (left == 0) {
      if (bus == goal_) found_.ways.push_back({chain_, lines});
      return;
    }
    for (const BridgeMap& bridge : bridges_) {
      ++looked_;
      if (bridge.sourceBus != bus) continue;
      if (isOver()) {
        found_.isComplete = false;
        return;
      }
      const LineMap after = passed(lines, bridge.lines);
      const std::size_t rest = distance(bridge.destinationBus, after);
      if (rest == unreachable || rest > left - 1 || !mayEnter(bridge.destinationBus)) continue;
      if (!isShortest_ && bridge.destinationBus == goal_ && left > 1) continue;
      chain_.push_back(bridge);
      visited_.push_back(bridge.destinationBus);
      extend(bridge.destinationBus, after, left - 1);
      visited_.pop_back();
      chain_.pop_back();
    }
  }

  bool mayEnter(std::uint32_t bus) const {
    return isShortest_ || std::find(visited_.begin(), visited_.end(), bus) == visited_.end();
  }

  using Steps = std::array<std::size_t, 8>;
  static Steps unreachableSteps() {
    Steps steps;
    steps.fill(unreachable);
    return steps;
  }

  const std::vector<BridgeMap>& bridges_;
  std::size_t most_;
  std::map<std::uint32_t, Steps> steps_;
  std::uint32_t goal_ = 0;
  bool isShortest_ = true;
  std::size_t looked_ = 0;
  std::vector<BridgeMap> chain_;
  std::vector<std::uint32_t> visited_;
  TriggerWays found_;
};

}  // namespace detail

// The ways of a trigger from one bus of a chassis to another: those of the fewest bridges, or also
// all longer ones that come to no bus twice. A chain through which no line gets is no way. Never
// more than `most`, which isComplete tells.
inline TriggerWays findTriggerWays(std::uint32_t fromBus, std::uint32_t toBus,
                                   const std::vector<BridgeMap>& bridges,
                                   WaysWanted wanted = WaysWanted::shortest,
                                   std::size_t most = 1000) {
  return detail::WayFinder(bridges, most).run(fromBus, toBus, wanted);
}

// The bridges of a chassis with their maps. Throws what the list of the bridges or an attribute of
// one fails with, std::out_of_range for a destination line 8 among that.
inline std::vector<BridgeMap> bridgeMaps(const Chassis& chassis) {
  std::vector<BridgeMap> maps;
  for (const TriggerBridge& bridge : chassis.triggerBridges()) {
    BridgeMap map{bridge.number(), bridge.sourceTriggerBus(), bridge.destinationTriggerBus(), {}};
    for (std::uint32_t line = 0; line < 8; ++line) map.lines[line] = bridge.lineMapping(line);
    maps.push_back(map);
  }
  return maps;
}

// The ways of a trigger from one slot to another. None between chassis; throws where a slot is on
// no trigger bus, and as bridgeMaps does where the two are on different buses.
inline TriggerWays findTriggerWays(const Slot& from, const Slot& to,
                                   WaysWanted wanted = WaysWanted::shortest,
                                   std::size_t most = 1000) {
  const std::uint32_t source = from.triggerBusNumber();
  const std::uint32_t destination = to.triggerBusNumber();
  if (from.chassisNumber() != to.chassisNumber()) return {};
  if (source == destination) return findTriggerWays(source, destination, {}, wanted, most);
  return findTriggerWays(source, destination, bridgeMaps(from.chassis()), wanted, most);
}

// A star or differential star trigger that two slots of one chassis are both on. A slot has a line
// of its own (or a set), is the controller from which the lines go out, or both.
struct StarRelation {
  enum class Family { star, dstar };

  Family family;
  std::uint32_t trigger = 0;
  std::optional<std::uint32_t> fromLine;
  std::optional<std::uint32_t> toLine;
  bool fromIsController = false;
  bool toIsController = false;

  // Whether one of the lines runs between the two; otherwise both have lines to a third slot.
  bool isDirect() const { return (fromIsController && toLine) || (toIsController && fromLine); }
};

inline std::vector<StarRelation> findStarRelations(const Slot& from, const Slot& to) {
  std::vector<StarRelation> relations;
  if (from.chassisNumber() != to.chassisNumber()) return relations;
  const auto star = from.starTriggerNumberIfAny();
  if (star && star == to.starTriggerNumberIfAny()) {
    relations.push_back({StarRelation::Family::star, *star, from.starTriggerLineIfAny(),
                         to.starTriggerLineIfAny(),
                         from.starTriggerControllerNameIfAny().has_value(),
                         to.starTriggerControllerNameIfAny().has_value()});
  }
  const auto dstar = from.dstarTriggerNumberIfAny();
  if (dstar && dstar == to.dstarTriggerNumberIfAny()) {
    relations.push_back({StarRelation::Family::dstar, *dstar, from.dstarTriggerSetIfAny(),
                         to.dstarTriggerSetIfAny(),
                         from.dstarTriggerControllerNameIfAny().has_value(),
                         to.dstarTriggerControllerNameIfAny().has_value()});
  }
  return relations;
}

}  // namespace cpp1
}  // namespace varmex

#endif
