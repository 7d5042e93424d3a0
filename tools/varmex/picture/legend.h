#ifndef TOOLS_VARMEX_PICTURE_LEGEND_H
#define TOOLS_VARMEX_PICTURE_LEGEND_H

#include <set>

#include "tools/varmex/describe/address.h"
#include "tools/varmex/picture/plan.h"
#include "tools/varmex/picture/svg.h"

namespace tool {

// What the signs that occur in strips mean.
class tLegend {
 public:
  explicit tLegend(tPciNotation notation) : notation_(notation) {}

  void note(const tStrip& strip);

  // As wide as given; answers its height.
  int paint(tSvg& svg, int width) const;

 private:
  enum class tSign { empty, address, link, reduced, bus, bridge, star, dstar, controller };

  void notePanels(const tStrip& strip);
  void noteTrigger(const tTriggerLane& trigger);

  tPciNotation notation_;
  std::set<const tSlotKind*> kinds_;
  std::set<tSign> signs_;
};

}  // namespace tool

#endif
