#include "tools/varmex/text/table.h"

#include <algorithm>
#include <iomanip>

namespace tool {

namespace {

void showRow(const tRow& row, const std::vector<std::size_t>& widths, std::ostream& out) {
  std::string text = "  ";
  for (std::size_t n = 0; n < row.size(); ++n) {
    if (widths[n] > 0) text += row[n] + std::string(widths[n] - row[n].size() + 2, ' ');
  }
  out << text.substr(0, text.find_last_not_of(' ') + 1) << '\n';
}

}  // namespace

void showTable(const tRow& titles, const std::vector<tRow>& rows, std::ostream& out) {
  std::vector<std::size_t> widths(titles.size());
  for (const tRow& row : rows) {
    for (std::size_t n = 0; n < row.size(); ++n) widths[n] = std::max(widths[n], row[n].size());
  }
  tRow shownTitles = titles;
  for (std::size_t n = 0; n < titles.size(); ++n) {
    if (widths[n] == 0) shownTitles[n].clear();
    widths[n] = std::max(widths[n], shownTitles[n].size());
  }
  showRow(shownTitles, widths, out);
  for (const tRow& row : rows) showRow(row, widths, out);
}

void showLine(const char* name, const std::string& value, std::ostream& out) {
  if (!value.empty()) out << "  " << std::left << std::setw(18) << name << value << '\n';
}

}  // namespace tool
