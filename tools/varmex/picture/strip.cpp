#include "tools/varmex/picture/strip.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <set>

#include "tools/varmex/picture/lanes.h"
#include "tools/varmex/picture/style.h"

namespace tool {

namespace {

// The labels of lanes stand in the gutter.
constexpr int kGutter = 60;
constexpr int kSlotWidth = 56;
constexpr int kLeastStripWidth = 338;
constexpr int kTitleLine = 16;
constexpr int kSubtitleLine = 32;
constexpr int kSlotTop = 46;
constexpr int kHeaderHeight = 34;
constexpr int kPanelHeight = 200;
constexpr int kSlotBottom = kSlotTop + kHeaderHeight + kPanelHeight;
constexpr int kBusTop = kSlotBottom + 14;
constexpr int kBusHeight = 18;
constexpr int kBusLane = 24;
constexpr int kBridgeLane = 18;
constexpr int kTriggerLane = 25;
constexpr int kNoteLine = 17;

int leftOf(std::size_t column) { return kGutter + static_cast<int>(column) * kSlotWidth; }
int centreOf(std::size_t column) { return leftOf(column) + kSlotWidth / 2; }
int spanOf(std::size_t first, std::size_t last) { return leftOf(last + 1) - leftOf(first); }

std::string point(int x, int y) { return std::to_string(x) + ' ' + std::to_string(y); }

std::string keyOf(const char* what, std::uint32_t number) {
  return std::string(what) + ' ' + std::to_string(number);
}

// From one height to another at one place.
std::string upright(int x, int from, int to) {
  return 'M' + point(x, from) + 'V' + std::to_string(to);
}

void paintSlot(tSvg& svg, const tColumn& slot, std::size_t column) {
  svg.openGroup("column", leftOf(column), kSlotTop, slot.about, keyOf("slot", slot.slot));
  const int height = kHeaderHeight + kPanelHeight;
  svg.box({0, 0, kSlotWidth, height}, std::string("slot ") + slot.kind->style);
  svg.box({4, kHeaderHeight, kSlotWidth - 8, kPanelHeight - 4}, "none", 2);
  const int middle = kSlotWidth / 2;
  svg.text(std::to_string(slot.slot), {middle, 15, kSlotWidth - 4, kSlotFont});
  svg.text(slot.label, {middle, 28, kSlotWidth - 4, kSmallMiddleFont});
  svg.closeGroup();
}

void paintFrame(tSvg& svg, std::size_t columns) {
  if (columns == 0) return;
  constexpr int kEdge = 6;
  svg.box({leftOf(0) - kEdge, kSlotTop - kEdge, spanOf(0, columns - 1) + 2 * kEdge,
           kSlotBottom - kSlotTop + 2 * kEdge},
          "frame", 5);
}

// Between slots whose numbers do not follow each other.
void paintGap(tSvg& svg, const tStrip& strip, std::size_t column) {
  const std::uint32_t before = strip.columns[column].slot;
  const std::uint32_t after = strip.columns[column + 1].slot;
  if (after == before + 1) return;
  svg.openGroup("jump", leftOf(column + 1), kSlotTop,
                "No slots between " + std::to_string(before) + " and " + std::to_string(after));
  svg.box({-9, -12, 18, 11}, "gap", 3);
  svg.text("\u2026", {0, -4, 18, kAliasFont});
  svg.closeGroup();
}

void paintPanel(tSvg& svg, const tPanel& panel) {
  constexpr int kFootHeight = 30;
  constexpr int kLineStep = 13;
  const int width = spanOf(panel.first, panel.last) - 8;
  const int height = kPanelHeight - 4;
  svg.openGroup("module", leftOf(panel.first) + 4, kSlotTop + kHeaderHeight, panel.about,
                keyOf("module", panel.slot));
  svg.box({0, 0, width, height}, "panel", 3);
  const int foot = panel.address.empty() ? 0 : kFootHeight;
  const std::pair<const std::string&, const tFont&> lines[] = {
      {panel.instance, kAliasFont}, {panel.model, kMiddleFont}, {panel.vendor, kSmallMiddleFont}};
  const auto count = std::count_if(std::begin(lines), std::end(lines),
                                   [](const auto& line) { return !line.first.empty(); });
  int x = width / 2 + 5 - (static_cast<int>(count) - 1) * kLineStep / 2;
  bool isFirst = true;
  for (const auto& [text, font] : lines) {
    if (text.empty()) continue;
    // Without an alias the model is the name that one looks for.
    const tFont& size = isFirst ? kAliasFont : font;
    svg.text(text, {x, (height - foot) / 2, height - foot - 8, size, true});
    x += kLineStep;
    isFirst = false;
  }
  svg.text(panel.address, {width / 2, height - 19, width - 2, kSmallMiddleFont});
  if (panel.isReduced) svg.box({2, height - 17, width - 4, 14}, "reduced", 3);
  svg.text(panel.link,
           {width / 2, height - 7, width - 6, panel.isReduced ? kMarkedFont : kSmallMiddleFont});
  svg.closeGroup();
}

using tBarPlaces = std::map<std::uint32_t, tBarPlace>;

// Side by side in one lane, as far as the buses' slots are.
tBarPlaces placeBuses(const std::map<std::uint32_t, tBusBar>& buses) {
  tLanes lanes;
  tBarPlaces places;
  for (const auto& [number, bus] : buses) {
    const int left = leftOf(bus.first) + 6;
    const int right = leftOf(bus.last + 1) - 6;
    const std::size_t lane = lanes.firstFree(left, right);
    lanes.take(lane, left, right);
    places[number] = {left, right, kBusTop + static_cast<int>(lane) * kBusLane + kBusHeight};
  }
  return places;
}

void paintBus(tSvg& svg, std::uint32_t number, const tBarPlace& bar) {
  const std::string name = "Trigger bus " + std::to_string(number);
  const int width = bar.right - bar.left;
  svg.openGroup("bus", 0, 0, name, keyOf("bus", number));
  svg.box({bar.left, bar.bottom - kBusHeight, width, kBusHeight}, "bar", 4);
  svg.text(width < kSlotWidth ? "Bus " + std::to_string(number) : name,
           {(bar.left + bar.right) / 2, bar.bottom - 5, width - 4, kInverseFont});
  svg.closeGroup();
}

void paintBuses(tSvg& svg, const tStrip& strip, const tBarPlaces& bars) {
  // Where bars are below each other, what leads to a lower one passes behind the upper ones.
  for (const auto& [number, bus] : strip.buses) {
    for (const std::size_t column : bus.columns) {
      svg.path(upright(centreOf(column), kSlotBottom, bars.at(number).bottom - 2), "stub",
               keyOf("stub", strip.columns[column].slot));
    }
  }
  for (const auto& [number, bar] : bars) paintBus(svg, number, bar);
}

// One end may be at no bus that is here: at one in another strip, at none, or not to be read.
struct tPlacedBridge {
  const tBridgeArrow* bridge;
  const tBarPlace* source;
  const tBarPlace* destination;

  bool isLoose() const { return !source || !destination; }
};

// Neighbours first.
std::vector<tPlacedBridge> bridgesAt(const tStrip& strip, const tBarPlaces& bars) {
  const auto barOf = [&](const tBridgeEnd& end) {
    const auto bar = end.bus ? bars.find(*end.bus) : bars.end();
    return bar == bars.end() ? nullptr : &bar->second;
  };
  std::vector<tPlacedBridge> found;
  for (const tBridgeArrow& bridge : strip.bridges) {
    found.push_back({&bridge, barOf(bridge.source), barOf(bridge.destination)});
    if (!found.back().source && !found.back().destination) found.pop_back();
  }
  const auto distance = [](const tPlacedBridge& placed) {
    if (placed.isLoose()) return std::numeric_limits<int>::max();
    return std::abs(placed.source->left - placed.destination->left);
  };
  std::stable_sort(found.begin(), found.end(),
                   [&](const auto& a, const auto& b) { return distance(a) < distance(b); });
  return found;
}

void paintName(tSvg& svg, const tBridgeArrow& bridge, int from, int to, int y) {
  const std::string name = "bridge " + bridge.number;
  const int width = std::min(textWidth(name, kSmallMiddleFont) + 4, std::abs(to - from) - 8);
  svg.box({(from + to - width) / 2, y - 7, width, 14}, "page");
  svg.text(name, {(from + to) / 2, y + 4, width, kSmallMiddleFont});
}

void paintHead(tSvg& svg, int x, const tBarPlace& bar) {
  svg.path('M' + point(x, bar.bottom + 1) + "l-4 8h8z", "head");
}

void paintBridge(tSvg& svg, const tPlacedBridge& placed, const tArrowPlace& place, int y) {
  svg.path('M' + point(place.from, placed.source->bottom) + 'V' + std::to_string(y) + 'H' +
               std::to_string(place.to) + 'V' + std::to_string(placed.destination->bottom + 6),
           "arrow");
  paintHead(svg, place.to, *placed.destination);
  paintName(svg, *placed.bridge, place.from, place.to, y);
}

// The bus that is not here stands at the left end.
void paintLooseBridge(tSvg& svg, const tPlacedBridge& placed, const tArrowPlace& place, int y) {
  constexpr int kHalf = 16;
  const bool isInward = placed.destination != nullptr;
  const tBarPlace& bar = isInward ? *placed.destination : *placed.source;
  const tBridgeEnd& other = isInward ? placed.bridge->source : placed.bridge->destination;
  const int left = place.from + kHalf;
  svg.path('M' + point(left, y) + 'H' + std::to_string(place.to) + 'V' +
               std::to_string(bar.bottom + (isInward ? 6 : 0)),
           "arrow");
  if (isInward) {
    paintHead(svg, place.to, bar);
  } else {
    svg.path('M' + point(left, y) + "l8 -4v8z", "head");
  }
  svg.text(other.bus ? "bus " + other.name : other.name,
           {place.from, y + 4, 2 * kHalf, kSmallMiddleFont});
  paintName(svg, *placed.bridge, left, place.to, y);
}

// Answers how far down they reach.
int paintBridges(tSvg& svg, const tStrip& strip, const tBarPlaces& bars) {
  int bottom = kSlotBottom;
  for (const auto& [number, bar] : bars) bottom = std::max(bottom, bar.bottom);
  const int top = bottom + 18;
  tArrowLanes lanes;
  for (const tPlacedBridge& placed : bridgesAt(strip, bars)) {
    const auto place = placed.isLoose()
                           ? lanes.placeLoose(placed.source ? *placed.source : *placed.destination)
                           : lanes.place(*placed.source, *placed.destination);
    if (!place) continue;
    svg.openGroup("bridge", 0, 0, placed.bridge->about, "bridge " + placed.bridge->number);
    const auto paint = placed.isLoose() ? paintLooseBridge : paintBridge;
    paint(svg, placed, *place, top + place->lane * kBridgeLane);
    svg.closeGroup();
  }
  return lanes.count() > 0 ? top + (lanes.count() - 1) * kBridgeLane + 6 : bottom;
}

std::string aboutMarker(const tTriggerLane& trigger, const tMarker& marker, const tColumn& slot) {
  std::string about = trigger.label;
  if (!marker.line.empty()) about += (trigger.isDStar ? ", set " : ", line ") + marker.line;
  return about + (marker.isController ? ": controller in slot " : ": slot ") +
         std::to_string(slot.slot);
}

void paintTrigger(tSvg& svg, const tStrip& strip, const tTriggerLane& trigger, int y) {
  const std::string key = keyOf(trigger.isDStar ? "dstar" : "star", trigger.number);
  svg.openGroup("trigger", 0, 0, trigger.label, key);
  svg.text(trigger.label, {0, y + 4, kGutter - 6, kLaneFont});
  const int from = centreOf(trigger.markers.front().column);
  const int to = centreOf(trigger.markers.back().column);
  svg.path('M' + point(from, y) + 'H' + std::to_string(to), trigger.isDStar ? "dlane" : "lane");
  for (const tMarker& marker : trigger.markers) {
    const tColumn& slot = strip.columns[marker.column];
    svg.openGroup("line", 0, 0, aboutMarker(trigger, marker, slot),
                  key + ' ' + std::to_string(slot.slot));
    paintMarker(svg, marker, trigger.isDStar, centreOf(marker.column), y);
    svg.closeGroup();
  }
  svg.closeGroup();
}

// As wide as its slots, and as its texts as far as the widest strip goes.
int widthOf(const tStrip& strip) {
  int texts = textWidth(strip.title, kTitleFont);
  for (const tNote& note : strip.notes) {
    texts = std::max(texts, textWidth(note.text, kPlainFont));
  }
  return std::max(
      {kLeastStripWidth, leftOf(strip.columns.size()), std::min(texts, leftOf(kMostColumns))});
}

void paintGuides(tSvg& svg, const tStrip& strip, int bottom) {
  std::set<std::size_t> columns;
  for (const tTriggerLane& trigger : strip.triggers) {
    for (const tMarker& marker : trigger.markers) columns.insert(marker.column);
  }
  for (const std::size_t column : columns) {
    svg.path(upright(centreOf(column), kSlotBottom, bottom), "guide",
             keyOf("guide", strip.columns[column].slot));
  }
}

}  // namespace

void paintMarker(tSvg& svg, const tMarker& marker, bool isDStar, int x, int y) {
  if (marker.isController) {
    const std::string label = marker.line.empty() ? "C" : "C " + marker.line;
    const int half = marker.line.empty() ? 11 : 18;
    svg.box({x - half, y - 10, 2 * half, 20}, "controller", 2);
    svg.text(label, {x, y + 4, 2 * half, kInverseFont});
    return;
  }
  if (isDStar) {
    svg.box({x - 10, y - 9, 20, 18}, "mark", 2);
  } else {
    svg.circle(x, y, 10, "mark");
  }
  svg.text(marker.line, {x, y + 4, 19, kSmallMiddleFont});
}

tPainted paintStrip(const tStrip& strip) {
  tSvg upper;
  const int width = widthOf(strip);
  upper.text(strip.title, {0, kTitleLine, width, kTitleFont});
  upper.text(strip.subtitle, {0, kSubtitleLine, width, kPlainFont});
  paintFrame(upper, strip.columns.size());
  for (std::size_t n = 0; n < strip.columns.size(); ++n) paintSlot(upper, strip.columns[n], n);
  for (std::size_t n = 0; n + 1 < strip.columns.size(); ++n) paintGap(upper, strip, n);
  for (const tPanel& panel : strip.panels) paintPanel(upper, panel);

  tSvg lower;
  const tBarPlaces bars = placeBuses(strip.buses);
  paintBuses(lower, strip, bars);
  const int bottom = paintBridges(lower, strip, bars);
  int y = strip.columns.empty() ? kSubtitleLine : bottom;
  for (const tTriggerLane& trigger : strip.triggers)
    paintTrigger(lower, strip, trigger, y += kTriggerLane);
  tSvg guides;
  paintGuides(guides, strip, y);
  y += strip.triggers.empty() ? 4 : 14;
  for (const tNote& note : strip.notes) {
    if (!note.bridge.empty()) lower.openGroup("note", 0, 0, note.text, "bridge " + note.bridge);
    lower.text(note.text, {0, y += kNoteLine, width, kPlainFont});
    if (!note.bridge.empty()) lower.closeGroup();
  }
  return {width, y, guides.body() + upper.body() + lower.body()};
}

}  // namespace tool
