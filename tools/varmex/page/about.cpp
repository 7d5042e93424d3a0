#include "tools/varmex/page/about.h"

#include <charconv>
#include <set>
#include <string_view>
#include <utility>

#include "tools/varmex/describe/faults.h"
#include "tools/varmex/describe/fields.h"
#include "tools/varmex/describe/lines.h"
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

tJson jsonOf(const varmex::TriggerWays& ways) {
  tJson json = {{"list", tJson::array()}, {"isComplete", ways.isComplete}};
  for (const varmex::TriggerWay& way : ways.ways) {
    tJson bridges = tJson::array();
    for (const varmex::BridgeMap& bridge : way.bridges) bridges.push_back(bridge.bridge);
    json["list"].push_back({{"bridges", bridges}, {"lines", lineWordsOf(way.lines)}});
  }
  return json;
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

// The slot of that chassis that a finding in a list tells of: "slot 5" or "slot 1/5".
std::optional<std::uint32_t> slotNamedIn(const std::string& message, std::uint32_t chassis) {
  constexpr std::string_view kSlot = "slot ";
  const std::size_t at = message.find(kSlot);
  if (at == std::string::npos) return std::nullopt;
  tWords words(std::string_view(message).substr(at + kSlot.size()));
  const auto first = words.takeNumber();
  if (!words.take("/")) return first;
  return first == chassis ? words.takeNumber() : std::nullopt;
}

}  // namespace

tJson aboutChassis(const tJson& chassis, tPciNotation notation) {
  tJson about = chassis;
  about["title"] = chassisTitle(chassis);
  for (tJson& slot : about["Slots"]) slot["told"] = toldOf(slot, notation);
  for (tJson& bridge : about["TriggerBridges"]) {
    bridge["lines"] = bridgeLinesOf(bridge);
  }
  about["ways"] = waysOf(chassis);
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
        {{"place", textOf(module, "place")}, {"cells", cells}, {"find", searchTextOf(module)}});
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

tAboutPlace placeOf(const tFinding& finding) {
  // "Chassis1Slot7", "Chassis1TriggerBridge2", and so on.
  tWords section(finding.position.section);
  tAboutPlace place;
  if (!section.take("Chassis")) return place;
  place.chassis = section.takeNumber();
  if (!place.chassis) return place;
  constexpr std::pair<const char*, const char*> kKeys[] = {{"Slot", "slot"},
                                                           {"TriggerBridge", "bridge"},
                                                           {"TriggerBus", "bus"},
                                                           {"StarTrigger", "star"},
                                                           {"DStarTrigger", "dstar"}};
  for (const auto& [name, kind] : kKeys) {
    if (!section.take(name)) continue;
    const auto number = section.takeNumber();
    if (!number) return place;
    if (std::string_view(kind) == "slot") {
      place.slot = number;
    } else {
      place.keys.push_back(kind + ('-' + std::to_string(*number)));
    }
    break;
  }
  if (!place.slot) place.slot = slotNamedIn(finding.message, *place.chassis);
  if (place.slot) place.keys.push_back("slot-" + std::to_string(*place.slot));
  return place;
}

}  // namespace tool
