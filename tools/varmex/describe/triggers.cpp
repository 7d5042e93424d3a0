#include "tools/varmex/describe/triggers.h"

#include "tools/varmex/describe/describe.h"
#include "tools/varmex/describe/fields.h"
#include "tools/varmex/describe/lines.h"
#include "tools/varmex/describe/listing.h"
#include "tools/varmex/describe/reason.h"
#include "tools/varmex/text/failures.h"

namespace tool {

namespace {

tJson jsonOf(const varmex::LineMap& map) {
  tJson lines = tJson::array();
  for (const std::uint32_t mask : map) {
    tJson destinations = tJson::array();
    for (int line = 0; line < 8; ++line) {
      if (mask >> line & 1) destinations.push_back(line);
    }
    lines.push_back(std::move(destinations));
  }
  return lines;
}

tJson jsonOf(const varmex::TriggerWay& way) {
  tJson json = {{"bridges", tJson::array()}, {"lines", jsonOf(way.lines)}};
  for (const varmex::BridgeMap& bridge : way.bridges) {
    json["bridges"].push_back({{"bridge", bridge.bridge},
                               {"sourceBus", bridge.sourceBus},
                               {"destinationBus", bridge.destinationBus},
                               {"lines", jsonOf(bridge.lines)}});
  }
  return json;
}

tJson jsonOf(const varmex::StarRelation& relation) {
  tJson json = {
      {"family", relation.family == varmex::StarRelation::Family::star ? "star" : "dstar"},
      {"trigger", relation.trigger}};
  if (relation.fromLine) json["fromLine"] = *relation.fromLine;
  if (relation.toLine) json["toLine"] = *relation.toLine;
  json["fromIsController"] = relation.fromIsController;
  json["toIsController"] = relation.toIsController;
  json["isDirect"] = relation.isDirect();
  return json;
}

// A slot on its bus; without a bus why that is.
struct tEnd {
  std::uint32_t chassis;
  std::uint32_t slot;
  std::optional<std::uint32_t> bus;
  std::string failure;
  bool isUnread = false;
};

std::string placeOf(const tEnd& end) {
  return std::to_string(end.chassis) + '/' + std::to_string(end.slot);
}

tJson jsonOf(const tEnd& end) {
  tJson json = {{"place", placeOf(end)}, {"chassis", end.chassis}, {"slot", end.slot}};
  if (end.bus) json["bus"] = *end.bus;
  return json;
}

using tBridges = std::vector<varmex::BridgeMap>;

// What can't be read, in the order in which it was to be.
class tUnread {
 public:
  void add(const std::string& where, const std::exception& failure, const tAsked& asked) {
    const tReason reason = reasonOf(failure, asked);
    const std::string text = failureText(reason.constant, reason.code, reason.sentence);
    sentences_.push_back(where + ": " + text);
    addFault(faults_, "", where, text);
  }

  const tJson& sentences() const { return sentences_; }
  const tFaults& faults() const { return faults_; }

 private:
  tJson sentences_ = tJson::array();
  tFaults faults_;
};

tEnd endOf(const varmex::Slot& slot, tUnread& unread) {
  tEnd end{slot.chassisNumber(), slot.number(), std::nullopt, {}};
  try {
    end.bus = slot.triggerBusNumber();
  } catch (const varmex::Error& error) {
    end.isUnread = !isAbsence(error, "TriggerBusNumber");
    end.failure = reasonOf(error).sentence;
    if (end.isUnread) {
      unread.add("slot " + placeOf(end) + ", TriggerBusNumber", error, {end.chassis, end.slot});
    }
  }
  return end;
}

std::string noBusText(const tEnd& end) {
  if (end.isUnread) return "the trigger bus of slot " + placeOf(end) + " can't be read";
  return "slot " + placeOf(end) + " is on no trigger bus: " + end.failure;
}

// What star relations are made of.
constexpr tAttribute kStarAttributes[] = {
    {"StarTriggerNumber", varmex_u32_StarTriggerNumber, false, nullptr},
    {"StarTriggerLine", varmex_u32_StarTriggerLine, false, nullptr},
    {"StarTriggerControllerName", varmex_str_StarTriggerControllerName, true, nullptr},
    {"DStarTriggerNumber", varmex_u32_DStarTriggerNumber, false, nullptr},
    {"DStarTriggerSet", varmex_u32_DStarTriggerSet, false, nullptr},
    {"DStarTriggerControllerName", varmex_str_DStarTriggerControllerName, true, nullptr}};

void addUnreadStars(const varmex::Slot& slot, const tEnd& end, tUnread& unread) {
  for (const tAttribute& attribute : kStarAttributes) {
    varmex::Status status;
    if (attribute.isText) {
      varmex_getStringAttribute(slot.handle(), attribute.number, status);
    } else {
      varmex_getU32Attribute(slot.handle(), attribute.number, status);
    }
    if (status.code() < 0 && !isAbsence(status, attribute)) {
      unread.add("slot " + placeOf(end) + ", " + attribute.name, status.error(),
                 {end.chassis, end.slot});
    }
  }
}

// The stars that both are on, as far as they can be read; `unread` tells of the rest.
tJson readStars(const varmex::Slot& from, const varmex::Slot& to, const tEnd (&ends)[2],
                tUnread& unread) {
  tJson stars = tJson::array();
  if (ends[0].chassis != ends[1].chassis) return stars;
  addUnreadStars(from, ends[0], unread);
  addUnreadStars(to, ends[1], unread);
  try {
    for (const auto& star : varmex::findStarRelations(from, to)) stars.push_back(jsonOf(star));
  } catch (const varmex::Error&) {  // is among what was unread
  }
  return stars;
}

std::string nameOf(const tAsked& bridge) { return "bridge " + std::to_string(*bridge.bridge); }

// A bridge with what can be read of it: a line that can't leads nowhere, and `unread` tells of it.
template <class Read>
void addBridge(const tAsked& bridge, Read read, tBridges& bridges, tUnread& unread) {
  varmex::BridgeMap map;
  map.bridge = *bridge.bridge;
  try {
    map.sourceBus = read(varmex_u32_BridgeSourceTriggerBus);
    map.destinationBus = read(varmex_u32_BridgeDestinationTriggerBus);
  } catch (const std::exception& failure) {
    return unread.add(nameOf(bridge), failure, bridge);
  }
  for (std::uint32_t line = 0; line < 8; ++line) {
    try {
      map.lines[line] = read(varmex_u32_BridgeLineMapping0 + line);
    } catch (const std::exception& failure) {
      tAsked asked = bridge;
      asked.line = line;
      unread.add(nameOf(bridge) + ", line " + std::to_string(line), failure, asked);
    }
  }
  bridges.push_back(map);
}

// Where the library's list fails as a whole, each for itself.
tBridges readBridges(const varmex::Session& session, std::uint32_t chassis, tUnread& unread) {
  tBridges bridges;
  try {
    for (const auto& bridge : session.chassis(chassis).triggerBridges()) {
      const auto read = [&](std::uint32_t attribute) { return bridge.u32(attribute); };
      addBridge({chassis, std::nullopt, bridge.number()}, read, bridges, unread);
    }
    return bridges;
  } catch (const varmex::Error&) {
    bridges.clear();
  }
  const tListing listing(session);
  for (const std::uint32_t number : listing.bridges(chassis)) {
    const tAsked asked{chassis, std::nullopt, number};
    try {
      const auto bridge = listing.openBridge(chassis, number);
      const auto read = [&](std::uint32_t attribute) {
        return listing.numberOf(bridge, attribute);
      };
      addBridge(asked, read, bridges, unread);
    } catch (const std::exception& failure) {
      unread.add(nameOf(asked), failure, asked);
    }
  }
  return bridges;
}

std::string noWayText(std::uint32_t from, std::uint32_t to, const tBridges& bridges) {
  const std::string text = "no line gets from trigger bus " + std::to_string(from) + " to bus " +
                           std::to_string(to) + " over the bridges of the chassis";
  if (bridges.empty()) return text + ", which has none";
  const bool isBackOnly = !varmex::findTriggerWays(to, from, bridges).ways.empty();
  return isBackOnly ? text + ", only the other way round" : text;
}

}  // namespace

std::string lineMapText(const tJson& lines) {
  std::vector<std::string> parts;
  for (std::size_t source = 0; source < lines.size(); ++source) {
    std::uint32_t mask = 0;
    for (const std::uint32_t line : lines[source]) mask |= 1U << line;
    if (mask != 0) parts.push_back(std::to_string(source) + '>' + linesOf(mask));
  }
  return joined(parts, " ");
}

tTriggerAnswer describeTriggers(const varmex::Session& session, const varmex::Slot& from,
                                const varmex::Slot& to, varmex::WaysWanted wanted) {
  const bool isOneSlot = from.chassisNumber() == to.chassisNumber() && from.number() == to.number();
  tUnread unread;
  const tEnd first = endOf(from, unread);
  const tEnd ends[] = {first, isOneSlot ? first : endOf(to, unread)};
  const auto& [source, destination] = ends;
  varmex::TriggerWays ways;
  std::string reason;
  if (source.chassis != destination.chassis) {
    reason = "the slots are in two chassis, between which no trigger line runs";
  } else if (!source.bus || !destination.bus) {
    reason = noBusText(source.bus ? destination : source);
  } else {
    tBridges bridges;
    if (*source.bus != *destination.bus) bridges = readBridges(session, source.chassis, unread);
    ways = varmex::findTriggerWays(*source.bus, *destination.bus, bridges, wanted);
    if (ways.ways.empty()) {
      reason = ways.isComplete ? noWayText(*source.bus, *destination.bus, bridges)
                               : "the bridges are too many to find a way over them";
    }
  }
  tJson document = {{"schemaVersion", kSchemaVersion}, {"from", jsonOf(source)},
                    {"to", jsonOf(destination)},       {"ways", tJson::array()},
                    {"isComplete", ways.isComplete},   {"stars", tJson::array()}};
  for (const varmex::TriggerWay& way : ways.ways) document["ways"].push_back(jsonOf(way));
  // A slot's own line of a star trigger joins it to nothing but the controller.
  if (!isOneSlot) document["stars"] = readStars(from, to, ends, unread);
  if (!reason.empty()) document["reason"] = reason;
  document["unread"] = unread.sentences();
  return {std::move(document), unread.faults(), source.isUnread, destination.isUnread};
}

}  // namespace tool
