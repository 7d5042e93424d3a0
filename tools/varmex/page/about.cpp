#include "tools/varmex/page/about.h"

#include <algorithm>
#include <charconv>
#include <set>
#include <string_view>
#include <utility>

#include "tools/varmex/describe/faults.h"
#include "tools/varmex/describe/fields.h"
#include "tools/varmex/describe/lines.h"
#include "tools/varmex/describe/listing.h"
#include "tools/varmex/describe/modules.h"
#include "tools/varmex/describe/words.h"

namespace tool {

namespace {

void tell(tJson& told, const char* name, const std::string& text) {
  if (!text.empty()) told.push_back({name, text});
}

tJson toldOf(const tJson& slot, tPciNotation notation) {
  tJson told = tJson::array();
  tell(told, "Kind", slotTypeName(slot));
  tell(told, "Module", moduleOf(slot));
  tell(told, "PCI", addressesOf(slot, notation));
  tell(told, "Link", linkTextOf(slot));
  tell(told, "Trigger bus", textOf(slot, "TriggerBusNumber"));
  tell(told, "Star",
       triggerOf(slot, "StarTriggerNumber", "StarTriggerLine", "StarTriggerControllerName"));
  tell(told, "DStar",
       triggerOf(slot, "DStarTriggerNumber", "DStarTriggerSet", "DStarTriggerControllerName"));
  tell(told, "Local bus left", textOf(slot, "LocalBusLeft"));
  tell(told, "Local bus right", textOf(slot, "LocalBusRight"));
  return told;
}

// More buses than any chassis has, and more ways than anybody reads: what a description of
// thousands of bridges is held to. The page says where it leaves ways out.
constexpr std::size_t kMostBuses = 16;
constexpr std::size_t kMostWays = 16;

std::vector<varmex::BridgeMap> readableBridges(const tJson& chassis) {
  std::vector<varmex::BridgeMap> bridges;
  for (const tJson& bridge : chassis["TriggerBridges"]) {
    const auto source = numberOf(bridge, "BridgeSourceTriggerBus");
    const auto destination = numberOf(bridge, "BridgeDestinationTriggerBus");
    if (!source || !destination) continue;
    bridges.push_back(
        {numberOf(bridge, "BridgeNumber").value_or(0), *source, *destination, lineMasksOf(bridge)});
  }
  return bridges;
}

// In words that follow "From 1/2 (bus 1) to 1/9 (bus 2)", and the bridges that they tell of.
tJson jsonOf(const varmex::TriggerWays& ways) {
  tJson told = tJson::array();
  std::set<std::uint32_t> passed;
  for (const varmex::TriggerWay& way : ways.ways) {
    std::vector<std::string> bridges;
    for (const varmex::BridgeMap& bridge : way.bridges) {
      bridges.push_back(std::to_string(bridge.bridge));
      passed.insert(bridge.bridge);
    }
    told.push_back("by bridge " + joined(bridges, ", then ") + ": " + lineWordsOf(way.lines) + '.');
  }
  if (!ways.isComplete) {
    told.push_back("there may be more ways; varmex triggers tells them.");
  } else if (told.empty()) {
    told.push_back("no line gets over the bridges of the chassis.");
  }
  return {{"told", told}, {"bridges", passed}};
}

tJson waysOf(const tJson& chassis) {
  std::set<std::uint32_t> buses;
  for (const tJson& slot : chassis["Slots"]) {
    const auto bus = numberOf(slot, "TriggerBusNumber");
    if (bus && buses.size() < kMostBuses) buses.insert(*bus);
  }
  const std::vector<varmex::BridgeMap> bridges = readableBridges(chassis);
  tJson ways = tJson::object();
  for (const std::uint32_t from : buses) {
    for (const std::uint32_t to : buses) {
      if (from == to) continue;
      ways[std::to_string(from) + '>' + std::to_string(to)] = jsonOf(
          varmex::findTriggerWays(from, to, bridges, varmex::WaysWanted::shortest, kMostWays));
    }
  }
  return ways;
}

// "Star trigger of 1/10: SystemTimingSlot in section [Chassis1StarTrigger1] is no number."
std::string unreadText(const std::string& what, const tJson& failure) {
  return what + ": " + failure["sentence"].get<std::string>();
}

// What of a slot keeps its trigger lines from being told.
tJson unreadOfSlot(const tJson& slot) {
  constexpr std::pair<const char*, const char*> kNames[] = {
      {"opening", "Slot "},
      {"TriggerBusNumber", "Trigger bus of "},
      {"StarTriggerNumber", "Star trigger of "},
      {"DStarTriggerNumber", "DStar trigger of "}};
  const std::string place = textOf(slot, "ChassisNumber") + '/' + textOf(slot, "SlotNumber");
  tJson unread = tJson::array();
  if (!slot.contains("failures")) return unread;
  const tJson& failures = slot["failures"];
  for (const auto& [name, what] : kNames) {
    if (failures.contains(name)) unread.push_back(unreadText(what + place, failures[name]));
  }
  return unread;
}

tJson unreadOfBridges(const tJson& chassis) {
  constexpr const char* kHides = " can't be read in full, which may hide ways";
  tJson unread = tJson::array();
  if (!markOf(chassis, "TriggerBridges").empty()) {
    unread.push_back(unreadText(std::string("The list of bridges") + kHides,
                                chassis["failures"]["TriggerBridges"]));
  }
  for (const tJson& bridge : chassis["TriggerBridges"]) {
    if (!bridge.contains("failures")) continue;
    unread.push_back(unreadText("Bridge " + textOf(bridge, "BridgeNumber") + kHides,
                                *bridge["failures"].begin()));
  }
  return unread;
}

// What can't be told of an item and all below it, as `show` tells it.
tJson faultLinesOf(const tJson& item) {
  tJson lines = tJson::array();
  for (const tFault& fault : faultsOf(item)) lines.push_back(lineOf(fault));
  return lines;
}

constexpr const char* kColumns[] = {"place", "alias", "vendor",    "model", "addresses",
                                    "link",  "slots", "resources", "serial"};

std::string searchTextOf(const tJson& module) {
  std::vector<std::string> parts;
  for (const tModuleColumn* const column :
       moduleColumns({"place", "alias", "vendor", "model", "name", "resources", "serial"})) {
    parts.push_back(textOf(module, *column, tPciNotation::decimal));
  }
  for (const tPciNotation each : {tPciNotation::decimal, tPciNotation::hexadecimal}) {
    parts.push_back(textOf(module, *moduleColumns({"addresses"}).front(), each));
  }
  return joined(parts, " ");
}

// Takes a text apart from its front.
class tWords {
 public:
  explicit tWords(std::string_view text) : rest_(text) {}

  bool take(std::string_view word) {
    if (!rest_.starts_with(word)) return false;
    rest_.remove_prefix(word.size());
    return true;
  }

  std::optional<std::uint32_t> takeNumber() {
    std::uint32_t number = 0;
    const auto [end, error] = std::from_chars(rest_.data(), rest_.data() + rest_.size(), number);
    if (error != std::errc()) return std::nullopt;
    rest_.remove_prefix(static_cast<std::size_t>(end - rest_.data()));
    return number;
  }

 private:
  std::string_view rest_;
};

// What a finding in a list tells of: "slot 5" or "slot 1/5" of that chassis, "bridge 3".
std::optional<std::uint32_t> numberNamedIn(const std::string& message, const std::string& what,
                                           std::uint32_t chassis) {
  const std::size_t at = message.find(what + ' ');
  if (at == std::string::npos) return std::nullopt;
  tWords words(std::string_view(message).substr(at + what.size() + 1));
  const auto first = words.takeNumber();
  if (!words.take("/")) return first;
  return first == chassis ? words.takeNumber() : std::nullopt;
}

}  // namespace

tJson aboutChassis(const tJson& chassis, tPciNotation notation) {
  tJson about = chassis;
  for (tJson& slot : about["Slots"]) {
    slot["told"] = toldOf(slot, notation);
    slot["faults"] = faultLinesOf(slot);
    slot["unread"] = unreadOfSlot(slot);
    const bool isBusUnread = !(markOf(slot, "opening") + markOf(slot, "TriggerBusNumber")).empty();
    if (isBusUnread) slot["noBus"] = "is on a trigger bus that can't be read";
  }
  for (tJson& bridge : about["TriggerBridges"]) {
    bridge["told"] = bridgeWordsOf(bridge);
    bridge["faults"] = faultLinesOf(bridge);
  }
  about["ways"] = waysOf(chassis);
  about["unread"] = unreadOfBridges(chassis);
  return about;
}

tJson aboutModules(const tJson& modules, tPciNotation notation) {
  tJson about = {{"titles", tJson::array()}, {"rows", tJson::array()}};
  const tModuleColumns columns = moduleColumns({std::begin(kColumns), std::end(kColumns)});
  for (const tModuleColumn* const column : columns) about["titles"].push_back(column->title);
  for (const tJson& module : modules["modules"]) {
    tJson cells = tJson::array();
    for (const tModuleColumn* const column : columns) {
      cells.push_back(textOf(module, *column, notation));
    }
    about["rows"].push_back(
        {{"place", cells.front()}, {"cells", cells}, {"find", searchTextOf(module)}});
  }
  return about;
}

std::string chassisTitle(const tJson& chassis) {
  const std::string serial = textOf(chassis, "ChassisSerialNumber");
  const std::string name = joined({markOf(chassis, "opening"), textOf(chassis, "ChassisVendor"),
                                   textOf(chassis, "ChassisModel")},
                                  " ");
  return joined({"Chassis " + textOf(chassis, "ChassisNumber") + (name.empty() ? "" : ": " + name),
                 serial.empty() ? serial : "serial number " + serial},
                ", ");
}

tLineMaps lineMapsOf(const varmex::Session& session, const tJson& description) {
  tLineMaps maps;
  try {
    const tListing listing(session);
    for (const tJson& chassis : description["Chassis"]) {
      const std::uint32_t number = numberOf(chassis, "ChassisNumber").value_or(0);
      for (const tJson& bridge : chassis["TriggerBridges"]) {
        if (!markOf(bridge, "opening").empty()) continue;
        const auto place = listing.openBridge(number, *numberOf(bridge, "BridgeNumber"));
        maps[{number, place.mapping}].push_back(place.number);
      }
    }
  } catch (const std::exception&) {
    // The files changed meanwhile: what is found in line maps stands below the chassis alone.
  }
  return maps;
}

tAboutPlace placeOf(const tFinding& finding, const tLineMaps& maps) {
  // "Chassis1Slot7", "Chassis1TriggerBridge2", and so on.
  tWords section(finding.position.section);
  tAboutPlace place;
  if (!section.take("Chassis")) return place;
  place.chassis = section.takeNumber();
  if (!place.chassis) return place;
  const auto add = [&](const char* kind, std::uint32_t number) {
    place.keys.push_back(kind + ('-' + std::to_string(number)));
  };
  constexpr std::pair<const char*, const char*> kKinds[] = {{"Slot", "slot"},
                                                            {"TriggerBridge", "bridge"},
                                                            {"TriggerBus", "bus"},
                                                            {"StarTrigger", "star"},
                                                            {"StarSystemTimingSets", "dstar"},
                                                            {"StarSystemTimingSet", "dstar"},
                                                            {"LineMappingSpec", "map"}};
  const auto* const found =
      std::find_if(std::begin(kKinds), std::end(kKinds),
                   [&](const auto& kind) { return section.take(kind.first); });
  const auto number = section.takeNumber();
  const std::string_view kind = found == std::end(kKinds) || !number ? "" : found->second;
  if (kind == "slot") {
    place.slot = number;
  } else if (kind == "map") {
    const auto bridges = maps.find({*place.chassis, *number});
    if (bridges == maps.end()) return place;
    for (const std::uint32_t bridge : bridges->second) add("bridge", bridge);
  } else if (!kind.empty()) {
    add(found->second, *number);
  } else if (const auto bridge = numberNamedIn(finding.message, "bridge", *place.chassis)) {
    add("bridge", *bridge);
  }
  if (!place.slot) place.slot = numberNamedIn(finding.message, "slot", *place.chassis);
  if (place.slot) add("slot", *place.slot);
  return place;
}

}  // namespace tool
