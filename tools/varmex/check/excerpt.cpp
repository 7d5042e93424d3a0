#include "tools/varmex/check/excerpt.h"

#include <algorithm>
#include <string>

#include "corpxiTools/iniLine.h"
#include "tools/varmex/text/columns.h"
#include "tools/varmex/text/terminal.h"

namespace tool {

namespace {

constexpr std::size_t kWidest = 100;
constexpr std::size_t kTabStop = 8;
constexpr std::string_view kMore = "...";

// Tabs as wide as an editor shows them, all else as `visible` has it.
std::string shown(std::string_view line) {
  std::string text;
  while (!line.empty()) {
    const std::size_t tab = std::min(line.find('\t'), line.size());
    text += visible(line.substr(0, tab));
    if (tab == line.size()) break;
    text.append(kTabStop - columnsOf(text) % kTabStop, ' ');
    line.remove_prefix(tab + 1);
  }
  return text;
}

// Marks by where the bytes lie that they stand below.
class tMarks {
 public:
  explicit tMarks(const char* line) : line_(line) {}

  void blanksTo(const char* end) { fillTo(end, ' '); }
  void wavesTo(const char* end) { fillTo(end, '~'); }
  void arrowTo(const char* end) {
    marks_ += '^';
    wavesTo(end);
  }
  const std::string& text() const { return marks_; }

 private:
  void fillTo(const char* end, char mark) {
    const std::size_t columns = columnsOf(shown({line_, static_cast<std::size_t>(end - line_)}));
    marks_.resize(std::max(columns, marks_.size()), mark);
  }

  const char* line_;
  std::string marks_;
};

}  // namespace

std::string showExcerpt(std::uint32_t number, std::string_view line) {
  std::string bytes(line);
  char* const begin = bytes.data();
  char* const end = begin + bytes.size();
  char* const equals = std::find(begin, end, '=');
  const varmex::tIniLineContent content =
      varmex::parseIniLine({begin, end, equals == end ? nullptr : equals});
  char* const first = varmex::skipIniSpace(begin, end);
  if (first == end) return {};
  tMarks marks(begin);
  marks.blanksTo(first);
  if (content.kind == varmex::tIniLineKind::item) {
    marks.wavesTo(content.nameEnd);
    marks.blanksTo(content.value);
    marks.arrowTo(content.valueEnd);
  } else if (content.kind == varmex::tIniLineKind::header) {
    marks.blanksTo(content.name);
    marks.arrowTo(content.nameEnd);
  } else {
    marks.arrowTo(varmex::trimIniEnd(end));
  }
  const std::string margin = "  " + std::to_string(number) + " | ";
  const std::size_t least = margin.size() + 2 * kMore.size();
  const std::size_t columns = std::max(outputColumns().value_or(kWidest), least) - margin.size();
  std::string text = shown({begin, static_cast<std::size_t>(end - begin)});
  if (columnsOf(text) > columns) {
    text = text.substr(0, endWithin(text, columns - kMore.size())).append(kMore);
  }
  return margin + text + '\n' + std::string(margin.size() - 2, ' ') + "| " +
         marks.text().substr(0, columns) + '\n';
}

}  // namespace tool
