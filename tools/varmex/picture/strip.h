#ifndef TOOLS_VARMEX_PICTURE_STRIP_H
#define TOOLS_VARMEX_PICTURE_STRIP_H

#include <string>

#include "tools/varmex/picture/plan.h"
#include "tools/varmex/picture/svg.h"

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
