#ifndef TOOLS_VARMEX_PICTURE_PICTURE_H
#define TOOLS_VARMEX_PICTURE_PICTURE_H

#include <ostream>
#include <string>
#include <vector>

#include "tools/varmex/describe/address.h"
#include "tools/varmex/describe/describe.h"

namespace tool {

// The chassis, as `describe` gives them, from the front, as one SVG picture: wide ones below each
// other, small ones side by side, a legend of what occurs, and a line of text at the foot. Whatever
// the description says, the picture is well-formed XML, and its size is bounded for each chassis.
// On paper a browser begins a chassis on a sheet of its own where it does not fit another.
void drawChassis(const std::vector<tJson>& chassis, tPciNotation notation, const std::string& foot,
                 std::ostream& out);

// The same of one chassis as an element of a page, without a style sheet and a foot. Its groups
// tell in data-key what they show: "slot 7", "module 7", "bus 2", "bridge 3", "star 1", "dstar 1",
// and "star 1 7" for what slot 7 is on star trigger 1; "stub 7" and "guide 7" lead from slot 7 to
// its bus and its star lines.
std::string pictureElement(const tJson& chassis, tPciNotation notation);

// The pattern that all pictures share, which a page has once. Their style is kPictureStyle.
extern const char* const kPicturePattern;

}  // namespace tool

#endif
