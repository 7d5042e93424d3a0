#ifndef TOOLS_VARMEX_PICTURE_PICTURE_H
#define TOOLS_VARMEX_PICTURE_PICTURE_H

#include <ostream>
#include <vector>

#include "tools/varmex/describe/address.h"
#include "tools/varmex/describe/describe.h"

namespace tool {

// The chassis, as `describe` gives them, from the front, as one SVG picture: wide ones below each
// other, small ones side by side, and a legend of what occurs. Whatever the description says, the
// picture is well-formed XML, and its size is bounded for each chassis.
void drawChassis(const std::vector<tJson>& chassis, tPciNotation notation, std::ostream& out);

}  // namespace tool

#endif
