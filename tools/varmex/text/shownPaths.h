#ifndef TOOLS_VARMEX_TEXT_SHOWNPATHS_H
#define TOOLS_VARMEX_TEXT_SHOWNPATHS_H

#include <string>

namespace tool {

// From now on paths below that root, of which nobody but this process knows, are told as those of
// what has this name: "rack.json:/etc/pxi/pxisys.ini". An empty root ends it.
void showPathsBelow(const std::string& root, const std::string& name);

// A text with its paths as they are told.
std::string withShownPaths(std::string text);

// The file whose lock keeps readers of the description and its writers apart.
std::string configurationPath();

}  // namespace tool

#endif
