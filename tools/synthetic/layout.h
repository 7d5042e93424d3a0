#ifndef TOOLS_SYNTHETIC_LAYOUT_H
#define TOOLS_SYNTHETIC_LAYOUT_H

#include <cstdint>
#include <vector>

#include "tools/synthetic/installation.h"

namespace synthetic {

using tNumbers = std::vector<std::uint32_t>;

enum class tSlotKind { system, timing, peripheral, hybrid, pxi1 };

// What stands in a slot; `covered` is the second slot of a wide module.
enum class tModule { none, covered, express, wideExpress, classic, classicBridge };

// Where things are in a chassis.
class tLayout : public tPlan {
 public:
  explicit tLayout(const tPlan& plan) : tPlan(plan) {}

  bool isExpress() const { return kind == tChassisKind::express; }

  std::uint32_t buses() const;
  std::uint32_t bridges() const;
  tNumbers slotsOfBus(std::uint32_t bus) const;

  // The slot that drives the star triggers.
  std::uint32_t controller() const;

  tSlotKind slotKind(std::uint32_t slot) const;
  tModule module(std::uint32_t slot) const;

  // Whether a classic module fits in the slot; pxisys.ini holds such slots.
  bool takesClassic(std::uint32_t slot) const;
  tNumbers classicSlots() const;

 private:
  tModule moduleWithoutLimit(std::uint32_t slot) const;
};

}  // namespace synthetic

#endif
