#ifndef TOOLS_VARMEX_DRAWSTRIP_H
#define TOOLS_VARMEX_DRAWSTRIP_H

#include <string>

#include "tools/varmex/drawPlan.h"
#include "tools/varmex/drawSvg.h"

namespace tool {

// A strip from its upper left corner.
struct tPainted {
  int width;
  int height;
  std::string body;
};

tPainted paintStrip(const tStrip& strip);

// A slot's place in a star or dstar trigger; the legend shows it too.
void paintMarker(tSvg& svg, const tMarker& marker, bool isDStar, int x, int y);

}  // namespace tool

#endif
