#ifndef TOOLS_VARMEX_PICTURE_PLAN_H
#define TOOLS_VARMEX_PICTURE_PLAN_H

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tools/varmex/describe/address.h"
#include "tools/varmex/describe/describe.h"

namespace tool {

// What there is to draw, counted in columns: the slots of a strip from the left, from 0 on.

struct tSlotKind {
  std::uint32_t type;  // the bits of the slot type that all must be there
  const char* name;
  const char* label;
  const char* style;
};

// From the most special to the one that fits anything.
inline constexpr tSlotKind kSlotKinds[] = {
    {varmex_slotType_PXIeSystem, "PXIe system slot", "PXIe sys", "kind0"},
    {varmex_slotType_PXISystem, "PXI system slot", "PXI sys", "kind1"},
    {varmex_slotType_SystemTiming, "PXIe system timing slot", "Timing", "kind2"},
    {varmex_slotType_StarController, "PXI star controller slot", "Star ctl", "kind3"},
    {varmex_slotType_PXI1Peripheral | varmex_slotType_PXIePeripheral, "PXIe hybrid slot", "Hybrid",
     "kind4"},
    {varmex_slotType_PXIePeripheral, "PXIe peripheral slot", "PXIe", "kind5"},
    {varmex_slotType_PXI1Peripheral, "PXI-1 slot", "PXI-1", "kind6"},
    {0, "slot of unknown kind", "unknown", "kind7"}};

struct tColumn {
  std::uint32_t slot;
  const tSlotKind* kind;
  std::string label;  // that of the kind, or the mark of what can't be read
  std::string about;  // all of the slot, for who points at it
};

// A module over the columns that it covers, side by side.
struct tPanel {
  std::size_t first;
  std::size_t last;
  std::uint32_t slot;    // that it belongs to
  std::string instance;  // its alias
  std::string model;
  std::string vendor;
  std::string address;     // PCI address of its first function
  std::string link;        // number of further functions, link width
  bool isReduced = false;  // the link runs below what slot and module can
  std::string about;
};

struct tBusBar {
  std::size_t first;
  std::size_t last;
  std::vector<std::size_t> columns;
};

struct tBridgeEnd {
  std::optional<std::uint32_t> bus;
  std::string name;  // its number, or the mark of why it can't be read
};

struct tBridgeArrow {
  std::string number;
  tBridgeEnd source;
  tBridgeEnd destination;
  std::string about;
};

// A line of text below all else.
struct tNote {
  std::string text;
  std::string bridge;  // the number of the one that it tells of
};

struct tMarker {
  std::size_t column;
  std::string line;  // empty for a controller that is on no line
  bool isController;
};

struct tTriggerLane {
  std::string label;
  std::uint32_t number;
  bool isDStar;
  std::vector<tMarker> markers;
};

// A chassis, or a part of one that has more slots than fit side by side.
struct tStrip {
  std::string title;
  std::string subtitle;
  std::vector<tColumn> columns;
  std::vector<tPanel> panels;
  std::map<std::uint32_t, tBusBar> buses;
  std::vector<tBridgeArrow> bridges;
  std::vector<tTriggerLane> triggers;
  std::vector<tNote> notes;  // the lines of bridges, and what can't be drawn
};

inline constexpr std::size_t kMostColumns = 18;

std::vector<tStrip> planStrips(const tJson& chassis, tPciNotation notation);

}  // namespace tool

#endif
