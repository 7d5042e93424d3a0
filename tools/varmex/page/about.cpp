#include "tools/varmex/page/about.h"

#include <charconv>
#include <set>
#include <string_view>
#include <utility>

#include "tools/varmex/describe/faults.h"
#include "tools/varmex/describe/fields.h"
#include "tools/varmex/describe/modules.h"
#include "tools/varmex/describe/ways.h"
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

// More buses than any chassis has; the ways between more of them are not worked out.
constexpr std::size_t kMostBuses = 16;

tJson waysOf(const tJson& chassis) {
  std::set<std::uint32_t> buses;
  for (const tJson& slot : chassis["Slots"]) {
    const auto bus = numberOf(slot, "TriggerBusNumber");
    if (bus && buses.size() < kMostBuses) buses.insert(*bus);
  }
  tJson ways = tJson::object();
  for (const std::uint32_t from : buses) {
    for (const std::uint32_t to : buses) {
      if (from == to) continue;
      tJson& list = ways[std::to_string(from) + '>' + std::to_string(to)] = tJson::array();
      for (const tTriggerWay& way : shortestWays(chassis, from, to)) {
        list.push_back({{"bridges", way.bridges}, {"lines", lineWordsOf(way.lines)}});
      }
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

}  // namespace

tJson aboutChassis(const tJson& chassis, tPciNotation notation) {
  tJson about = chassis;
  about["title"] = chassisTitle(chassis);
  for (tJson& slot : about["Slots"]) slot["told"] = toldOf(slot, notation);
  for (tJson& bridge : about["TriggerBridges"]) {
    bridge["lines"] = lineWordsOf(lineMasksOf(bridge));
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
  std::string_view section = finding.position.section;
  const auto takeName = [&section](std::string_view name) {
    if (!section.starts_with(name)) return false;
    section.remove_prefix(name.size());
    return true;
  };
  const auto takeNumber = [&section]() -> std::optional<std::uint32_t> {
    std::uint32_t number = 0;
    const auto [end, error] =
        std::from_chars(section.data(), section.data() + section.size(), number);
    if (error != std::errc()) return std::nullopt;
    section.remove_prefix(static_cast<std::size_t>(end - section.data()));
    return number;
  };
  tAboutPlace place;
  if (!takeName("Chassis")) return place;
  place.chassis = takeNumber();
  if (!place.chassis) return place;
  constexpr std::pair<const char*, const char*> kKeys[] = {{"Slot", "slot "},
                                                           {"TriggerBridge", "bridge "},
                                                           {"TriggerBus", "bus "},
                                                           {"StarTrigger", "star "},
                                                           {"DStarTrigger", "dstar "}};
  for (const auto& [name, key] : kKeys) {
    if (!takeName(name)) continue;
    const auto number = takeNumber();
    if (!number) return place;
    place.key = key + std::to_string(*number);
    if (std::string_view(name) == "Slot") place.slot = number;
    return place;
  }
  return place;
}

}  // namespace tool
