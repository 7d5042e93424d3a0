#ifndef TOOLS_VARMEX_TEXT_TABLE_H
#define TOOLS_VARMEX_TEXT_TABLE_H

#include <ostream>
#include <string>
#include <vector>

namespace tool {

using tRow = std::vector<std::string>;

// What a cell ends with that tells of something below its best. It is shown in colour, as are cells
// that begin with the mark of a fault.
inline constexpr const char* kReducedMark = " reduced";

// Rows below their titles, each column as wide as its widest text; a column without any text is
// left out. Every row has as many texts as there are titles. Where the output is narrower than the
// table, the widest columns break their texts over several lines.
void showTable(const tRow& titles, const std::vector<tRow>& rows, std::ostream& out);

// A name and its value on a line of their own, unless there is no value; a long value goes on below
// itself where the output is narrow.
void showLine(const char* name, const std::string& value, std::ostream& out);

// A head and the text behind it, which goes on below itself where the output is narrow. Both are
// visible texts.
void showParagraph(const std::string& head, const std::string& text, std::ostream& out);

}  // namespace tool

#endif
