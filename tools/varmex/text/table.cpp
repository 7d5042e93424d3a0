#include "tools/varmex/text/table.h"

#include <algorithm>
#include <numeric>
#include <sstream>

#include "tools/varmex/text/columns.h"
#include "tools/varmex/text/terminal.h"

namespace tool {

namespace {

constexpr std::size_t kMargin = 2;       // ahead of a row, and between two columns
constexpr std::size_t kLeast = 6;        // a column is not squeezed below this
constexpr std::size_t kLabelWidth = 18;  // of showLine

using tWidths = std::vector<std::size_t>;

std::size_t widthOf(const tWidths& widths) {
  return std::accumulate(
      widths.begin(), widths.end(), std::size_t{0},
      [](std::size_t sum, std::size_t width) { return width > 0 ? sum + kMargin + width : sum; });
}

// Takes from the column with the most to spare until all fit, as far as they can.
void squeeze(tWidths& widths, const tWidths& floors, std::size_t columns) {
  const auto spare = [&](std::size_t n) { return widths[n] - std::min(widths[n], floors[n]); };
  while (widthOf(widths) > columns) {
    std::size_t most = 0;
    for (std::size_t n = 1; n < widths.size(); ++n) {
      if (spare(n) > spare(most)) most = n;
    }
    if (spare(most) == 0) return;
    --widths[most];
  }
}

std::size_t longestWord(const std::string& text) {
  std::size_t longest = 0;
  std::istringstream words(text);
  for (std::string word; words >> word;) longest = std::max(longest, columnsOf(word));
  return longest;
}

// Words are kept whole as long as that is enough.
void fit(tWidths& widths, const tRow& titles, const std::vector<tRow>& rows, std::size_t columns) {
  tWidths floors;
  for (const std::string& title : titles) floors.push_back(longestWord(title));
  for (const tRow& row : rows) {
    for (std::size_t n = 0; n < row.size(); ++n)
      floors[n] = std::max(floors[n], longestWord(row[n]));
  }
  squeeze(widths, floors, columns);
  squeeze(widths, tWidths(widths.size(), kLeast), columns);
}

tWidths widthsOf(const tRow& titles, const std::vector<tRow>& rows) {
  tWidths widths(titles.size());
  for (const tRow& row : rows) {
    for (std::size_t n = 0; n < row.size(); ++n) widths[n] = std::max(widths[n], columnsOf(row[n]));
  }
  for (std::size_t n = 0; n < titles.size(); ++n) {
    if (widths[n] > 0) widths[n] = std::max(widths[n], columnsOf(titles[n]));
  }
  return widths;
}

bool isWarning(const std::string& cell) {
  return cell.starts_with('!') || cell.ends_with(kReducedMark);
}

// A block of lines for a row, where there is no room for columns beside each other.
void showBlock(const tRow& titles, const tRow& row, std::ostream& out) {
  out << std::string(kMargin, ' ') << coloured(row.front(), tColour::heading) << '\n';
  for (std::size_t n = 1; n < row.size(); ++n) showLine(titles[n].c_str(), row[n], out);
}

// A row takes as many lines as its longest cell.
void showRow(const tRow& row, const tWidths& widths, bool isTitle, std::ostream& out) {
  std::vector<std::vector<std::string>> cells;
  std::size_t height = 0;
  for (std::size_t n = 0; n < row.size(); ++n) {
    cells.push_back(widths[n] > 0 ? wrapped(row[n], widths[n]) : std::vector<std::string>{});
    height = std::max(height, cells.back().size());
  }
  for (std::size_t line = 0; line < height; ++line) {
    std::string text;
    std::size_t blanks = 0;
    for (std::size_t n = 0; n < row.size(); ++n) {
      if (widths[n] == 0) continue;
      blanks += kMargin;
      const std::string cell = line < cells[n].size() ? cells[n][line] : std::string();
      if (!cell.empty()) {
        text += std::string(blanks, ' ');
        text += isTitle             ? coloured(cell, tColour::heading)
                : isWarning(row[n]) ? coloured(cell, tColour::bad)
                                    : cell;
        blanks = 0;
      }
      blanks += widths[n] - std::min(widths[n], columnsOf(cell));
    }
    out << text << '\n';
  }
}

}  // namespace

void showTable(const tRow& titles, const std::vector<tRow>& rows, std::ostream& out) {
  std::vector<tRow> shown = rows;
  for (tRow& row : shown) {
    for (std::string& cell : row) cell = visible(cell);
  }
  tWidths widths = widthsOf(titles, shown);
  if (const auto columns = outputColumns()) {
    fit(widths, titles, shown, *columns);
    if (widthOf(widths) > *columns) {
      for (const tRow& row : shown) showBlock(titles, row, out);
      return;
    }
  }
  showRow(titles, widths, true, out);
  for (const tRow& row : shown) showRow(row, widths, false, out);
}

void showLine(const char* name, const std::string& value, std::ostream& out) {
  if (value.empty()) return;
  const std::string shown = visible(value);
  const auto columns = outputColumns();
  const std::size_t beside = kMargin + kLabelWidth;
  const bool isNarrow = columns && *columns > beside + kLeast;
  const auto lines = isNarrow ? wrapped(shown, *columns - beside) : std::vector{shown};
  std::string label(kMargin, ' ');
  label += name;
  for (const std::string& line : lines) {
    out << label << std::string(label.size() < beside ? beside - label.size() : 1, ' ') << line
        << '\n';
    label.clear();
  }
}

void showParagraph(const std::string& head, const std::string& text, std::ostream& out) {
  const std::size_t margin = columnsOf(head);
  const std::size_t columns = outputColumns().value_or(std::string::npos);
  std::string label = head;
  for (const std::string& line : wrapped(text, columns > 2 * margin ? columns - margin : columns)) {
    out << label << line << '\n';
    label.assign(margin, ' ');
  }
}

}  // namespace tool
