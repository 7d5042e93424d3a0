#include "tools/varmex/picture/legend.h"

#include "tools/varmex/picture/strip.h"
#include "tools/varmex/picture/style.h"

namespace tool {

namespace {

constexpr int kLineHeight = 22;
constexpr int kBetweenEntries = 20;

// A sample, painted from a base line, and what it means.
struct tEntry {
  const char* meaning;
  int sampleWidth;
  void (*paint)(tSvg& svg, const char* style);
  const char* style;
};

void paintSwatch(tSvg& svg, const char* style) { svg.box({0, -11, 22, 14}, style); }

void paintBar(tSvg& svg, const char* style) { svg.box({0, -11, 22, 14}, style, 4); }

void paintArrow(tSvg& svg, const char* style) {
  svg.path("M0 -4H18", style);
  svg.path("M24 -4l-8 -4v8z", "head");
}

void paintStar(tSvg& svg, const char*) { paintMarker(svg, {0, "0", false}, false, 11, -4); }

void paintDStar(tSvg& svg, const char*) { paintMarker(svg, {0, "0", false}, true, 11, -4); }

void paintController(tSvg& svg, const char*) { paintMarker(svg, {0, "", true}, false, 11, -4); }

void paintText(tSvg& svg, const char* text) { svg.text(text, {0, 0, 80, kSmallFont}); }

void paintReduced(tSvg& svg, const char* text) {
  svg.box({0, -11, 32, 14}, "reduced", 3);
  svg.text(text, {16, 0, 30, kMarkedFont});
}

// In the order of tLegend::tSign.
constexpr tEntry kSigns[] = {
    {"no module listed", 28, paintSwatch, "none"},
    {"PCI bus.device.function in decimal, further functions", 56, paintText, "33.0.0 +1"},
    {"PCI Express lanes of the link", 22, paintText, "x4"},
    {"runs below the lanes that module and slot can", 38, paintReduced, "x1/4"},
    {"trigger bus", 28, paintBar, "bar"},
    {"bridge, to its destination", 30, paintArrow, "arrow"},
    {"line of a star trigger", 28, paintStar, ""},
    {"set of a dstar trigger", 28, paintDStar, ""},
    {"controller of the trigger", 28, paintController, ""},
};

// In the place of that for addresses.
constexpr tEntry kHexadecimal = {"PCI bus:device.function in hexadecimal, further functions", 56,
                                 paintText, "21:00.0 +1"};

}  // namespace

void tLegend::note(const tStrip& strip) {
  for (const tColumn& column : strip.columns) kinds_.insert(column.kind);
  notePanels(strip);
  if (!strip.buses.empty()) signs_.insert(tSign::bus);
  if (!strip.bridges.empty()) signs_.insert(tSign::bridge);
  for (const tTriggerLane& trigger : strip.triggers) noteTrigger(trigger);
}

void tLegend::notePanels(const tStrip& strip) {
  std::size_t covered = 0;
  for (const tPanel& panel : strip.panels) {
    covered += panel.last - panel.first + 1;
    if (!panel.address.empty()) signs_.insert(tSign::address);
    if (panel.link.find('x') != panel.link.npos) signs_.insert(tSign::link);
    if (panel.isReduced) signs_.insert(tSign::reduced);
  }
  if (covered < strip.columns.size()) signs_.insert(tSign::empty);
}

void tLegend::noteTrigger(const tTriggerLane& trigger) {
  for (const tMarker& marker : trigger.markers) {
    if (marker.isController) signs_.insert(tSign::controller);
    if (!marker.line.empty()) signs_.insert(trigger.isDStar ? tSign::dstar : tSign::star);
  }
}

int tLegend::paint(tSvg& svg, int width) const {
  std::vector<tEntry> entries;
  for (const tSlotKind* kind : kinds_) {
    entries.push_back({kind->name, 28, paintSwatch, kind->style});
  }
  for (const tSign sign : signs_) {
    const bool isHexadecimal = sign == tSign::address && notation_ == tPciNotation::hexadecimal;
    entries.push_back(isHexadecimal ? kHexadecimal : kSigns[static_cast<std::size_t>(sign)]);
  }
  int x = 0;
  int y = 14;
  for (const tEntry& entry : entries) {
    const int room = textWidth(entry.meaning, kPlainFont);
    if (x > 0 && x + entry.sampleWidth + room > width) {
      x = 0;
      y += kLineHeight;
    }
    svg.openGroup("entry", x, y);
    entry.paint(svg, entry.style);
    svg.text(entry.meaning, {entry.sampleWidth, 0, room, kPlainFont});
    svg.closeGroup();
    x += entry.sampleWidth + room + kBetweenEntries;
  }
  return y + 6;
}

}  // namespace tool
