#include "tools/varmex/draw.h"

#include <algorithm>
#include <set>

#include "tools/varmex/drawPlan.h"
#include "tools/varmex/drawSvg.h"

namespace tool {

namespace {

// The page, in units of which a landscape sheet is some 1100 wide.
constexpr int kMargin = 20;
constexpr int kPageWidth = 1072;
constexpr int kLeastPageWidth = 700;
constexpr int kBetweenStrips = 28;

// A strip, from its upper left corner. The labels of lanes stand in the gutter.
constexpr int kGutter = 60;
constexpr int kSlotWidth = 56;
constexpr int kLeastStripWidth = 330;
constexpr int kTitleLine = 16;
constexpr int kSubtitleLine = 32;
constexpr int kSlotTop = 46;
constexpr int kHeaderHeight = 34;
constexpr int kPanelHeight = 196;
constexpr int kSlotBottom = kSlotTop + kHeaderHeight + kPanelHeight;
constexpr int kBusTop = kSlotBottom + 14;
constexpr int kBusHeight = 18;
constexpr int kBusLane = 24;
constexpr int kBridgeLane = 18;
constexpr int kTriggerLane = 25;
constexpr int kNoteLine = 15;
constexpr int kLegendLine = 22;

constexpr tFont kTitleFont = {"title", 15, 114};
constexpr tFont kPlainFont = {"plain", 11};
constexpr tFont kSmallFont = {"plain", 10};
constexpr tFont kLaneFont = {"title", 11, 114};
constexpr tFont kSlotFont = {"strong", 13, 114};
constexpr tFont kModelFont = {"strong", 12, 114};
constexpr tFont kMiddleFont = {"middle", 11};
constexpr tFont kSmallMiddleFont = {"middle", 10};
constexpr tFont kInverseFont = {"light", 11, 114};

constexpr const char* kStyleSheet = R"svg(<style>
text { font-family: Arial, Helvetica, 'Liberation Sans', 'DejaVu Sans', sans-serif; fill: #111 }
.page { fill: #fff }
.frame { fill: #e4e4e4; stroke: #333; stroke-width: 1.5 }
.title { font-weight: bold }
.middle, .strong, .light { text-anchor: middle }
.strong { font-weight: bold }
.light { text-anchor: middle; font-weight: bold; fill: #fff }
.slot { stroke: #333; stroke-width: 1 }
.kind0 { fill: #f2aaa2 }
.kind1 { fill: #f7c796 }
.kind2 { fill: #c9b5f2 }
.kind3 { fill: #eab4df }
.kind4 { fill: #a9dfbb }
.kind5 { fill: #abd0f5 }
.kind6 { fill: #f4e79b }
.kind7 { fill: #d9d9d9 }
.none { fill: url(#hatch); stroke: #777; stroke-width: 1 }
.panel { fill: #fff; stroke: #111; stroke-width: 1.5 }
.gap { fill: #fff; stroke: #111; stroke-width: 1 }
.bar { fill: #2b3a55 }
.stub { stroke: #2b3a55; stroke-width: 3; fill: none }
.arrow { stroke: #a03000; stroke-width: 1.5; fill: none }
.head { fill: #a03000 }
.guide { stroke: #ddd; stroke-width: 1; fill: none }
.lane { stroke: #555; stroke-width: 1.5; fill: none }
.dlane { stroke: #555; stroke-width: 1.5; stroke-dasharray: 4 3; fill: none }
.mark { fill: #fff; stroke: #222; stroke-width: 1.5 }
.controller { fill: #222 }
</style>
<defs><pattern id="hatch" width="7" height="7" patternUnits="userSpaceOnUse" patternTransform="rotate(45)">
<rect width="7" height="7" fill="#fff"/><path d="M0 0V7" stroke="#aaa" stroke-width="2"/></pattern></defs>
)svg";

int leftOf(std::size_t column) { return kGutter + static_cast<int>(column) * kSlotWidth; }
int centreOf(std::size_t column) { return leftOf(column) + kSlotWidth / 2; }
int spanOf(std::size_t first, std::size_t last) { return leftOf(last + 1) - leftOf(first); }

std::string point(int x, int y) { return std::to_string(x) + ' ' + std::to_string(y); }

// From one height to another at one place.
std::string upright(int x, int from, int to) {
  return 'M' + point(x, from) + 'V' + std::to_string(to);
}

// Lanes below each other, in which nothing overlaps.
class tLanes {
 public:
  bool isFree(std::size_t lane, int from, int to) const {
    if (lane >= lanes_.size()) return true;
    return std::none_of(lanes_[lane].begin(), lanes_[lane].end(),
                        [&](const auto& other) { return from < other.second && other.first < to; });
  }
  void take(std::size_t lane, int from, int to) {
    if (lane >= lanes_.size()) lanes_.resize(lane + 1);
    lanes_[lane].emplace_back(from, to);
  }
  std::size_t firstFree(int from, int to) const {
    std::size_t lane = 0;
    while (!isFree(lane, from, to)) ++lane;
    return lane;
  }
  int count() const { return static_cast<int>(lanes_.size()); }

 private:
  std::vector<std::vector<std::pair<int, int>>> lanes_;
};

void paintSlot(tSvg& svg, const tColumn& slot, std::size_t column) {
  svg.openGroup("column", leftOf(column), kSlotTop, slot.about);
  const int height = kHeaderHeight + kPanelHeight;
  svg.box({0, 0, kSlotWidth, height}, std::string("slot ") + slot.kind->style);
  svg.box({4, kHeaderHeight, kSlotWidth - 8, kPanelHeight - 4}, "none", 2);
  const int middle = kSlotWidth / 2;
  svg.text(std::to_string(slot.slot), {middle, 15, kSlotWidth - 4, kSlotFont});
  svg.text(slot.kind->label, {middle, 28, kSlotWidth - 4, kSmallMiddleFont});
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
  svg.box({-8, 11, 16, 12}, "gap", 3);
  svg.text("\u2026", {0, 19, 16, kModelFont});
  svg.closeGroup();
}

void paintPanel(tSvg& svg, const tPanel& panel) {
  constexpr int kFootHeight = 34;
  constexpr int kLineHeight = 15;
  const int width = spanOf(panel.first, panel.last) - 8;
  const int height = kPanelHeight - 4;
  svg.openGroup("module", leftOf(panel.first) + 4, kSlotTop + kHeaderHeight, panel.about);
  svg.box({0, 0, width, height}, "panel", 3);
  const int foot = panel.address.empty() ? 0 : kFootHeight;
  const int middle = (height - foot) / 2;
  const int room = height - foot - 10;
  int x = width / 2 + 4;
  if (!panel.vendor.empty() || !panel.instance.empty()) x -= kLineHeight;
  svg.text(panel.model, {x, middle, room, kModelFont, true});
  svg.text(panel.instance, {x + kLineHeight, middle, room, kMiddleFont, true});
  svg.text(panel.vendor, {x + 2 * kLineHeight, middle, room, kSmallMiddleFont, true});
  svg.text(panel.address, {width / 2, height - 19, width - 2, kSmallMiddleFont});
  svg.text(panel.link, {width / 2, height - 7, width - 2, kSmallMiddleFont});
  svg.closeGroup();
}

struct tBarPlace {
  int left;
  int right;
  int bottom;
};

using tBarPlaces = std::map<std::uint32_t, tBarPlace>;

// Bars side by side in one lane, as far as the buses' slots are. Answers where they are.
tBarPlaces paintBuses(tSvg& svg, const std::map<std::uint32_t, tBusBar>& buses) {
  tLanes lanes;
  tBarPlaces places;
  std::vector<std::pair<std::uint32_t, int>> tops;
  for (const auto& [number, bus] : buses) {
    const int left = leftOf(bus.first) + 6;
    const int right = leftOf(bus.last + 1) - 6;
    const std::size_t lane = lanes.firstFree(left, right);
    lanes.take(lane, left, right);
    const int top = kBusTop + static_cast<int>(lane) * kBusLane;
    places[number] = {left, right, top + kBusHeight};
    const std::string name = "Trigger bus " + std::to_string(number);
    svg.openGroup("bus", 0, 0, name);
    for (const std::size_t column : bus.columns) {
      svg.path(upright(centreOf(column), kSlotBottom, top + 1), "stub");
    }
    svg.box({left, top, right - left, kBusHeight}, "bar", 4);
    const bool isNarrow = right - left < kSlotWidth;
    svg.text(isNarrow ? "Bus " + std::to_string(number) : name,
             {(left + right) / 2, top + 13, right - left - 4, kInverseFont});
    svg.closeGroup();
  }
  return places;
}

// Where an arrow leaves and reaches the bars: near the ends that face each other, further inside in
// a lower lane.
std::pair<int, int> endsOf(const tBarPlace& source, const tBarPlace& destination, int lane) {
  const auto inside = [lane](const tBarPlace& bar) {
    return std::min(30 + 16 * lane, (bar.right - bar.left) / 2);
  };
  if (source.right <= destination.left) {
    return {source.right - inside(source), destination.left + inside(destination)};
  }
  if (destination.right <= source.left) {
    return {source.left + inside(source), destination.right - inside(destination)};
  }
  const int middle = (source.left + source.right) / 2;
  return {middle - 30, middle + 30};
}

void paintBridge(tSvg& svg, const tBridgeArrow& bridge, const tBarPlaces& bars, tLanes& lanes,
                 int top) {
  const tBarPlace& source = bars.at(bridge.source);
  const tBarPlace& destination = bars.at(bridge.destination);
  std::size_t lane = 0;
  std::pair<int, int> ends = endsOf(source, destination, 0);
  while (!lanes.isFree(lane, std::min(ends.first, ends.second) - 6,
                       std::max(ends.first, ends.second) + 6)) {
    ends = endsOf(source, destination, static_cast<int>(++lane));
  }
  const auto [from, to] = ends;
  lanes.take(lane, std::min(from, to) - 6, std::max(from, to) + 6);
  const int y = top + static_cast<int>(lane) * kBridgeLane;
  svg.openGroup("bridge", 0, 0, bridge.about);
  svg.path('M' + point(from, source.bottom) + 'V' + std::to_string(y) + 'H' + std::to_string(to) +
               'V' + std::to_string(destination.bottom + 6),
           "arrow");
  svg.path('M' + point(to, destination.bottom + 1) + "l-4 8h8z", "head");
  const std::string name = "bridge " + bridge.number;
  const int width = std::min(textWidth(name, kSmallFont) + 4, std::abs(to - from) - 8);
  svg.box({(from + to - width) / 2, y - 7, width, 14}, "page");
  svg.text(name, {(from + to) / 2, y + 4, width, kSmallMiddleFont});
  svg.closeGroup();
}

// Answers where the arrows end.
int paintBridges(tSvg& svg, const tStrip& strip, const tBarPlaces& bars) {
  int bottom = kSlotBottom;
  for (const auto& [number, bar] : bars) bottom = std::max(bottom, bar.bottom);
  const int top = bottom + 18;
  tLanes lanes;
  for (const tBridgeArrow& bridge : strip.bridges) paintBridge(svg, bridge, bars, lanes, top);
  return lanes.count() == 0 ? bottom : top + (lanes.count() - 1) * kBridgeLane + 6;
}

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

void paintTrigger(tSvg& svg, const tTriggerLane& trigger, int y) {
  svg.openGroup("trigger", 0, 0, trigger.label);
  svg.text(trigger.label, {0, y + 4, kGutter - 6, kLaneFont});
  const int from = centreOf(trigger.markers.front().column);
  const int to = centreOf(trigger.markers.back().column);
  svg.path('M' + point(from, y) + 'H' + std::to_string(to), trigger.isDStar ? "dlane" : "lane");
  for (const tMarker& marker : trigger.markers) {
    paintMarker(svg, marker, trigger.isDStar, centreOf(marker.column), y);
  }
  svg.closeGroup();
}

int widthOf(const tStrip& strip) {
  return std::max(kLeastStripWidth, leftOf(strip.columns.size()));
}

void paintGuides(tSvg& svg, const tStrip& strip, int bottom) {
  std::set<std::size_t> columns;
  for (const tTriggerLane& trigger : strip.triggers) {
    for (const tMarker& marker : trigger.markers) columns.insert(marker.column);
  }
  for (const std::size_t column : columns) {
    svg.path(upright(centreOf(column), kSlotBottom, bottom), "guide");
  }
}

struct tPainted {
  int width;
  int height;
  std::string body;
};

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
  int y = strip.columns.empty() ? kSubtitleLine : kSlotBottom;
  if (!strip.buses.empty()) y = paintBridges(lower, strip, paintBuses(lower, strip.buses));
  for (const tTriggerLane& trigger : strip.triggers)
    paintTrigger(lower, trigger, y += kTriggerLane);
  tSvg guides;
  paintGuides(guides, strip, y);
  if (!strip.triggers.empty()) y += 10;
  for (const std::string& note : strip.notes) {
    lower.text(note, {0, y += kNoteLine + 2, width, kPlainFont});
  }
  return {width, y + 4, guides.body() + upper.body() + lower.body()};
}

// A sample and what it means.
struct tLegendEntry {
  std::string meaning;
  int sampleWidth;
  void (*paint)(tSvg& svg, const char* style);
  const char* style;
};

void paintSwatch(tSvg& svg, const char* style) { svg.box({0, -11, 22, 14}, style); }
void paintBarSample(tSvg& svg, const char* style) { svg.box({0, -10, 22, 12}, style, 4); }
void paintArrowSample(tSvg& svg, const char*) {
  svg.path("M0 -4H18", "arrow");
  svg.path("M24 -4l-8 -4v8z", "head");
}
void paintMarkerSample(tSvg& svg, const char* style) {
  const std::string kind = style;
  paintMarker(svg, {0, kind == "controller" ? "" : "0", kind == "controller"}, kind == "dstar", 11,
              -4);
}
void paintTextSample(tSvg& svg, const char* style) { svg.text(style, {0, 0, 80, kSmallFont}); }

class tLegend {
 public:
  void note(const tStrip& strip) {
    for (const tColumn& column : strip.columns) kinds_.insert(column.kind);
    std::size_t covered = 0;
    for (const tPanel& panel : strip.panels) {
      covered += panel.last - panel.first + 1;
      hasFunctions_ |= !panel.address.empty();
      hasLinks_ |= panel.link.find('/') != panel.link.npos;
    }
    hasEmpty_ |= covered < strip.columns.size();
    hasBuses_ |= !strip.buses.empty();
    hasBridges_ |= !strip.bridges.empty();
    for (const tTriggerLane& trigger : strip.triggers) noteTrigger(trigger);
  }

  std::vector<tLegendEntry> entries() const {
    std::vector<tLegendEntry> all;
    for (const tSlotKind* kind : kinds_) {
      all.push_back({std::string(kind->name) + " slot", 28, paintSwatch, kind->style});
    }
    const auto add = [&all](bool occurs, const tLegendEntry& entry) {
      if (occurs) all.push_back(entry);
    };
    add(hasEmpty_, {"no module listed", 28, paintSwatch, "none"});
    add(hasFunctions_,
        {"PCI bus:device.function, number of further ones", 56, paintTextSample, "5:0.0 +1"});
    add(hasLinks_, {"link width negotiated/possible", 34, paintTextSample, "x4/8"});
    add(hasBuses_, {"trigger bus", 28, paintBarSample, "bar"});
    add(hasBridges_, {"bridge, to its destination", 30, paintArrowSample, ""});
    add(hasStar_, {"line of a star trigger", 28, paintMarkerSample, "star"});
    add(hasDStar_, {"set of a dstar trigger", 28, paintMarkerSample, "dstar"});
    add(hasController_, {"controller of the trigger", 28, paintMarkerSample, "controller"});
    return all;
  }

 private:
  void noteTrigger(const tTriggerLane& trigger) {
    for (const tMarker& marker : trigger.markers) {
      hasController_ |= marker.isController;
      (trigger.isDStar ? hasDStar_ : hasStar_) |= !marker.line.empty();
    }
  }

  std::set<const tSlotKind*> kinds_;
  bool hasEmpty_ = false;
  bool hasFunctions_ = false;
  bool hasLinks_ = false;
  bool hasBuses_ = false;
  bool hasBridges_ = false;
  bool hasStar_ = false;
  bool hasDStar_ = false;
  bool hasController_ = false;
};

// Answers its height.
int paintLegend(tSvg& svg, const tLegend& legend, int width) {
  int x = 0;
  int y = 14;
  for (const tLegendEntry& entry : legend.entries()) {
    const int room = textWidth(entry.meaning, kPlainFont);
    const int entryWidth = entry.sampleWidth + room + 18;
    if (x > 0 && x + entryWidth > width) {
      x = 0;
      y += kLegendLine;
    }
    svg.openGroup("entry", x, y);
    entry.paint(svg, entry.style);
    svg.text(entry.meaning, {entry.sampleWidth, 0, room, kPlainFont});
    svg.closeGroup();
    x += entryWidth;
  }
  return y + 6;
}

// Puts strips side by side as far as the page is wide.
class tPage {
 public:
  void add(const tPainted& strip) {
    if (x_ > 0 && x_ + strip.width > kPageWidth) endRow();
    svg_ += "<g class=\"chassis\" transform=\"translate(" + point(kMargin + x_, kMargin + y_) +
            ")\">\n" + strip.body + "</g>\n";
    width_ = std::max(width_, x_ + strip.width);
    rowHeight_ = std::max(rowHeight_, strip.height);
    x_ += strip.width + kBetweenStrips;
  }

  void addLegend(const tLegend& legend) {
    endRow();
    tSvg svg;
    const int height = paintLegend(svg, legend, width_);
    svg_ += "<g class=\"legend\" transform=\"translate(" + point(kMargin, kMargin + y_) + ")\">\n" +
            svg.body() + "</g>\n";
    y_ += height;
  }

  void write(std::ostream& out) const {
    const int width = width_ + 2 * kMargin;
    const int height = y_ + 2 * kMargin;
    out << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        << "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" << width << "\" height=\"" << height
        << "\" viewBox=\"0 0 " << width << ' ' << height
        << "\" style=\"width:100%;height:auto\">\n<title>PXI chassis</title>\n"
        << kStyleSheet << "<rect class=\"page\" width=\"" << width << "\" height=\"" << height
        << "\"/>\n"
        << svg_ << "</svg>\n";
  }

 private:
  void endRow() {
    y_ += rowHeight_ + kBetweenStrips;
    x_ = 0;
    rowHeight_ = 0;
  }

  std::string svg_;
  int x_ = 0;
  int y_ = 0;
  int rowHeight_ = 0;
  int width_ = kLeastPageWidth;
};

}  // namespace

void drawChassis(const std::vector<tJson>& chassis, std::ostream& out) {
  tPage page;
  tLegend legend;
  for (const tJson& one : chassis) {
    for (const tStrip& strip : planStrips(one)) {
      page.add(paintStrip(strip));
      legend.note(strip);
    }
  }
  page.addLegend(legend);
  page.write(out);
}

}  // namespace tool
