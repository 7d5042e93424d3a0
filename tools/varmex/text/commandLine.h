#ifndef TOOLS_VARMEX_TEXT_COMMANDLINE_H
#define TOOLS_VARMEX_TEXT_COMMANDLINE_H

#include <string>
#include <vector>

namespace tool {

// The words behind the program's name, in UTF-8, from what `main` got. A pair: one source for each
// platform.
std::vector<std::string> commandLine(int count, char** words);

}  // namespace tool

#endif
