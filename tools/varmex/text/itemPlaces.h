#ifndef TOOLS_VARMEX_TEXT_ITEMPLACES_H
#define TOOLS_VARMEX_TEXT_ITEMPLACES_H

#include <string>

namespace tool {

// What is wrong with an item of the description.
enum class tItemFault { missing, noNumber, noList, differs };

// Where it stands, as the description's files are now, to go on behind a sentence: "\"z\" in
// /etc/pxi/pxisys.ini, line 68". The library's own words do not name the file. Empty where no file
// has that fault any more.
std::string placesOf(tItemFault fault, const std::string& section, const std::string& item);

// The files of the description that the library refuses for their encoding:
// "/etc/pxi/pxisys.ini is in UTF-16". Empty without any.
std::string refusedFiles();

}  // namespace tool

#endif
