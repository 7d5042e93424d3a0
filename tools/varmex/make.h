#ifndef TOOLS_VARMEX_MAKE_H
#define TOOLS_VARMEX_MAKE_H

#include <string>
#include <vector>

namespace tool {

// Writes the description of an installation that does not exist below `folder`, where a session
// finds it when VARMEX_FSROOT names the folder. Each of `chassis` is
// KIND[:SLOTS[:MODULES]][xCOUNT], with the kinds "express" and "classic". Throws
// std::invalid_argument for a text of another form, and std::runtime_error when a file can't be
// written or the folder holds a description already.
void makeInstallation(const std::string& folder, const std::vector<std::string>& chassis);

}  // namespace tool

#endif
