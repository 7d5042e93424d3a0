#include "tools/varmex/picture/plan.h"

#include <algorithm>

#include "tools/varmex/describe/faults.h"
#include "tools/varmex/describe/fields.h"
#include "tools/varmex/describe/lines.h"
#include "tools/varmex/describe/words.h"

namespace tool {

namespace {

// More than any real chassis has; slots beyond are counted in a note.
constexpr std::size_t kMostStrips = 4;
constexpr std::size_t kMostMarks = 24;
constexpr std::size_t kMostFaults = 6;  // that left no mark
constexpr std::size_t kMostBridges = 12;

using tSlots = std::vector<const tJson*>;

const tSlotKind* kindOf(const tJson& slot) {
  const std::uint32_t type = numberOf(slot, "SlotType").value_or(0);
  return std::find_if(std::begin(kSlotKinds), std::end(kSlotKinds),
                      [type](const tSlotKind& kind) { return (type & kind.type) == kind.type; });
}

bool holdsModule(const tJson& slot) {
  return !slot["Devices"].empty() || slot.contains("SystemSlotModel");
}

// The width now, and beside it what slot and module can where that is more or can't be read.
std::string shortLinkOf(const tJson& slot) {
  const tLink link = linkOf(slot);
  const std::string now = link.now ? 'x' + std::to_string(*link.now) : link.nowMark;
  return joined({now, link.isReduced() ? std::to_string(*link.possible) : link.possibleMark}, "/");
}

void addFunctions(tPanel& panel, const tJson& slot, tPciNotation notation) {
  const tJson& devices = slot["Devices"];
  if (devices.empty()) return;
  const tJson& first = devices.front();
  if (panel.model.empty()) panel.model = textOf(first, "DeviceName");
  panel.address = addressOf(first, notation);
  const std::string more = devices.size() > 1 ? '+' + std::to_string(devices.size() - 1) : "";
  panel.link = joined({more, shortLinkOf(slot)}, " ");
  panel.isReduced = linkOf(slot).isReduced();
  for (const tJson& device : devices) panel.about += "\nPCI " + addressOf(device, notation);
}

tPanel panelOf(const tJson& slot, std::size_t column, tPciNotation notation) {
  const tJson& devices = slot["Devices"];
  const bool isSystem = slot.contains("SystemSlotModel");
  const tJson& source = isSystem || devices.empty() ? slot : devices.front();
  tPanel panel{};
  panel.first = panel.last = column;
  panel.slot = numberOf(slot, "SlotNumber").value_or(0);
  panel.vendor = textOf(source, isSystem ? "SystemSlotVendor" : "DeviceVendor");
  panel.model = textOf(source, isSystem ? "SystemSlotModel" : "DeviceModel");
  panel.instance = textOf(source, isSystem ? "SystemSlotInstanceName" : "DeviceInstanceName");
  panel.about = joined({panel.instance, panel.vendor, panel.model}, " ");
  addFunctions(panel, slot, notation);
  return panel;
}

// The column whose module sits in this one too; none for a slot with a module of its own, and for
// one whose module is in no column.
std::optional<std::size_t> anchorOf(const tSlots& slots, std::size_t column) {
  if (holdsModule(*slots[column])) return std::nullopt;
  const auto anchor = numberOf(*slots[column], "OccupyingModuleSlot");
  if (!anchor) return std::nullopt;
  for (std::size_t other = 0; other < slots.size(); ++other) {
    if (numberOf(*slots[other], "SlotNumber") == anchor && holdsModule(*slots[other])) return other;
  }
  return std::nullopt;
}

void addPanels(tStrip& strip, const tSlots& slots, tPciNotation notation) {
  std::vector<std::optional<std::size_t>> anchors;
  for (std::size_t column = 0; column < slots.size(); ++column) {
    anchors.push_back(anchorOf(slots, column));
  }
  std::vector<bool> isTaken(slots.size());
  for (std::size_t column = 0; column < slots.size(); ++column) {
    if (!holdsModule(*slots[column])) continue;
    tPanel panel = panelOf(*slots[column], column, notation);
    while (panel.first > 0 && anchors[panel.first - 1] == column) --panel.first;
    while (panel.last + 1 < slots.size() && anchors[panel.last + 1] == column) ++panel.last;
    for (std::size_t n = panel.first; n <= panel.last; ++n) isTaken[n] = true;
    strip.panels.push_back(std::move(panel));
  }
  // Covered by a module that is not beside it.
  for (std::size_t column = 0; column < slots.size(); ++column) {
    const std::string anchor = textOf(*slots[column], "OccupyingModuleSlot");
    if (isTaken[column] || !numberOf(*slots[column], "OccupyingModuleSlot")) continue;
    if (anchor == textOf(*slots[column], "SlotNumber")) continue;
    tPanel panel{};
    panel.first = panel.last = column;
    panel.slot = *numberOf(*slots[column], "OccupyingModuleSlot");
    panel.instance = panel.about = "module of slot " + anchor;
    strip.panels.push_back(std::move(panel));
  }
}

void addColumn(tStrip& strip, const tJson& slot) {
  const tSlotKind* const kind = kindOf(slot);
  const std::string number = textOf(slot, "SlotNumber");
  const std::string bus = textOf(slot, "TriggerBusNumber");
  const std::string module = moduleOf(slot);
  const std::string mark = joined({markOf(slot, "opening"), markOf(slot, "SlotType")}, " ");
  strip.columns.push_back(
      {numberOf(slot, "SlotNumber").value_or(0), kind, mark.empty() ? kind->label : mark,
       joined({"Slot " + number, kind->name, textOf(slot, "PCISlotPath"),
               bus.empty() ? bus : "trigger bus " + bus, module == "-" ? "no module" : module},
              ", ")});
}

void addBus(tStrip& strip, const tJson& slot, std::size_t column) {
  const auto number = numberOf(slot, "TriggerBusNumber");
  if (!number) return;
  tBusBar& bus = strip.buses.try_emplace(*number, tBusBar{column, column, {}}).first->second;
  bus.last = column;
  bus.columns.push_back(column);
}

struct tTriggerNames {
  const char* label;
  const char* number;
  const char* line;
  const char* controller;
  bool isDStar;
};

constexpr tTriggerNames kTriggers[] = {
    {"Star ", "StarTriggerNumber", "StarTriggerLine", "StarTriggerControllerName", false},
    {"DStar ", "DStarTriggerNumber", "DStarTriggerSet", "DStarTriggerControllerName", true}};

void addTriggers(tStrip& strip, const tSlots& slots, const tTriggerNames& names) {
  std::map<std::uint32_t, tTriggerLane> lanes;
  for (std::size_t column = 0; column < slots.size(); ++column) {
    const tJson& slot = *slots[column];
    const auto number = numberOf(slot, names.number);
    if (!number) continue;
    tTriggerLane& lane = lanes[*number];
    lane.label = names.label + std::to_string(*number);
    lane.number = *number;
    lane.isDStar = names.isDStar;
    lane.markers.push_back({column, textOf(slot, names.line), slot.contains(names.controller)});
  }
  for (auto& [number, lane] : lanes) strip.triggers.push_back(std::move(lane));
}

void addBridges(tStrip& strip, const tJson& bridges) {
  for (const tJson& bridge : bridges) {
    const std::string number = textOf(bridge, "BridgeNumber");
    const auto end = [&](const char* name) {
      return tBridgeEnd{numberOf(bridge, name), textOf(bridge, name)};
    };
    strip.bridges.push_back({number, end("BridgeSourceTriggerBus"),
                             end("BridgeDestinationTriggerBus"),
                             "Bridge " + number + ' ' + bridgeWordsOf(bridge)});
  }
}

tStrip makeStrip(const tJson& chassis, const tSlots& slots, tPciNotation notation) {
  tStrip strip;
  strip.title = "Chassis " + textOf(chassis, "ChassisNumber") + ": " + markOf(chassis, "opening") +
                joined({textOf(chassis, "ChassisVendor"), textOf(chassis, "ChassisModel")}, " ");
  const std::string serial = textOf(chassis, "ChassisSerialNumber");
  strip.subtitle = serial.empty() ? "no serial number" : "serial number " + serial;
  for (std::size_t column = 0; column < slots.size(); ++column) {
    addColumn(strip, *slots[column]);
    addBus(strip, *slots[column], column);
  }
  addPanels(strip, slots, notation);
  for (const tTriggerNames& names : kTriggers) addTriggers(strip, slots, names);
  if (slots.empty()) strip.notes.push_back({"No slots", {}});
  addBridges(strip, chassis["TriggerBridges"]);
  return strip;
}

void addBridgeNotes(tStrip& strip) {
  for (std::size_t n = 0; n < strip.bridges.size() && n < kMostBridges; ++n) {
    strip.notes.push_back({strip.bridges[n].about, strip.bridges[n].number});
  }
  if (strip.bridges.size() > kMostBridges) {
    strip.notes.push_back(
        {"And " + std::to_string(strip.bridges.size() - kMostBridges) + " more bridges", {}});
  }
}

// All that is painted and may hold marks.
std::string textOf(const std::vector<tStrip>& strips) {
  std::vector<std::string> texts;
  for (const tStrip& strip : strips) {
    texts.insert(texts.end(), {strip.title, strip.subtitle});
    for (const tColumn& column : strip.columns) texts.push_back(column.label);
    for (const tPanel& panel : strip.panels) {
      texts.insert(texts.end(),
                   {panel.instance, panel.model, panel.vendor, panel.address, panel.link});
    }
    for (const tTriggerLane& trigger : strip.triggers) {
      for (const tMarker& marker : trigger.markers) texts.push_back(marker.line);
    }
    for (const tNote& note : strip.notes) texts.push_back(note.text);
  }
  return joined(texts, "\n");
}

bool holds(const std::string& text, const std::string& mark) {
  std::size_t at = text.find(mark);
  // "!1" is no part of "!12".
  while (at != text.npos && text.find_first_of("0123456789", at + mark.size()) == at + mark.size())
    at = text.find(mark, at + 1);
  return at != text.npos;
}

// What the marks in the picture stand for, then what left none, as far as one reads that.
void addFaults(std::vector<tStrip>& strips, const tJson& chassis) {
  std::vector<tFault> faults = faultsOf(chassis);
  const std::string text = textOf(strips);
  const auto rest = std::stable_partition(
      faults.begin(), faults.end(), [&](const tFault& fault) { return holds(text, fault.mark); });
  const auto marks = std::min(static_cast<std::size_t>(rest - faults.begin()), kMostMarks);
  const std::size_t most = std::min(faults.size(), std::max(marks, kMostFaults));
  std::vector<tNote>& notes = strips.back().notes;
  for (std::size_t n = 0; n < most; ++n) notes.push_back({lineOf(faults[n]), {}});
  if (!faults.empty()) notes.push_back({summaryOf(faults), {}});
}

}  // namespace

std::vector<tStrip> planStrips(const tJson& chassis, tPciNotation notation) {
  const tJson& all = chassis["Slots"];
  std::vector<tStrip> strips;
  std::size_t drawn = 0;
  do {
    tSlots slots;
    for (; drawn < all.size() && slots.size() < kMostColumns; ++drawn) {
      slots.push_back(&all[drawn]);
    }
    strips.push_back(makeStrip(chassis, slots, notation));
    if (strips.size() > 1) strips.back().title += " (continued)";
  } while (drawn < all.size() && strips.size() < kMostStrips);
  if (drawn < all.size()) {
    strips.back().notes.push_back({"And " + std::to_string(all.size() - drawn) +
                                       " more slots, to " + textOf(all.back(), "SlotNumber"),
                                   {}});
  }
  addBridgeNotes(strips.back());
  addFaults(strips, chassis);
  return strips;
}

}  // namespace tool
