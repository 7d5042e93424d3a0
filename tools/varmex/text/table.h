#ifndef TOOLS_VARMEX_TEXT_TABLE_H
#define TOOLS_VARMEX_TEXT_TABLE_H

#include <ostream>
#include <string>
#include <vector>

namespace tool {

using tRow = std::vector<std::string>;

// Rows below their titles, each column as wide as its widest text; a column without any text is
// left out. Every row has as many texts as there are titles.
void showTable(const tRow& titles, const std::vector<tRow>& rows, std::ostream& out);

// A name and its value on a line of their own, unless there is no value.
void showLine(const char* name, const std::string& value, std::ostream& out);

}  // namespace tool

#endif
